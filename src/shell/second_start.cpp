#include "shell/second_start.h"

#include "calib/calibration_set.h"
#include "calib/last_set.h"
#include "camera/turn_on.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/files.h"
#include "platform/front.h"
#include "platform/one_process.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "resources/ids.h"
#include "shell/start_options.h"
#include "state/buffer_state.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/menu_state.h"
#include "ui/status.h"
#include "viewing/view_commands.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr int kGivenToAnother = 0;
constexpr int kNothingGiven = 3;
constexpr std::int64_t kTryAgainMs = 200;

std::vector<std::vector<std::string>> handedFiles;  // that wait to be opened, of each start its own
bool opensHandedFiles = false;

// What the bare arguments name: a calibration, or a file that is there.
std::string BareFile(const std::string& arguments)
{
    if (arguments.size() < kShortestCommandLine) return {};
    std::string calibration = CalibrationNamed(arguments);
    if (!calibration.empty()) return calibration;
    return FileExists(arguments) ? AbsolutePath(arguments) : std::string();
}

Handover HandoverOf(const CommandLine& commandLine)
{
    Handover handover;
    if (const char* const token = std::getenv("XDG_ACTIVATION_TOKEN")) handover.activation = token;
    if (!commandLine.scriptFile.empty()) return handover;  // its files are the script's, and that can't be given away
    handover.files = commandLine.viewFiles;
    if (std::string file = BareFile(commandLine.rest); !file.empty()) handover.files.push_back(std::move(file));
    return handover;
}

void NoteHandover(const Handover& handover)
{
    if (!handover.files.empty()) handedFiles.push_back(handover.files);
    if (!hWndMain) return;
    BringToFront(hWndMain, handover.activation);
    if (opensHandedFiles && !handedFiles.empty()) PostMessage(hWndMain, kOpenHandedFiles, 0, 0);
}

bool OperatorIsBusy()
{
    if (!PeriodicUpdates) return true;
    if (!ModalIsOpen()) return false;
    HWND const dialog = DialogInFront();
    return !dialog || DialogName(dialog) != "CLOCK_ON";
}

void LoadHandedCalibration(const std::string& path)
{
    if (!CameraOn) {
        MessageBox(hWndMain, "Camera must be on in order\nto load a calibration", kMessageCaption);
        return;
    }
    if (LoadCalibration(hWndMain, path)) StatusString(kIdleHint, kLeftAligned);
    ShowReplacementInMenu(SubstBadPixels != 0);
}

void TellRefusal(const std::string& text, bool windowIsSeen)
{
    std::fprintf(stderr, "kelvo: %s\n", text.c_str());
    if (!windowIsSeen && !RunsOffscreen()) MessageBox(nullptr, text, kMessageCaption);
}

}  // namespace

std::optional<int> EndBesideAnotherStart(const CommandLine& commandLine)
{
    const std::string directory = ResolvePath(startOptions.dataDirectory);
    MakeDirectories(directory);  // where that fails the start says so
    const Handover handover = HandoverOf(commandLine);
    const ClaimResult result = ClaimDataDirectory(directory, handover, NoteHandover);
    if (result.claim == Claim::kHeld || result.claim == Claim::kUnlocked) return std::nullopt;
    const std::string inUse = "Kelvo runs already with the data directory " + directory + " (" + result.owner + ")";
    if (result.claim == Claim::kRefused) {
        TellRefusal(inUse + ", and doesn't answer. If it isn't there any more, remove " + directory + "/kelvo.lock.",
                    false);
        return kNothingGiven;
    }
    if (!handover.files.empty()) return kGivenToAnother;
    const bool script = !commandLine.scriptFile.empty();
    TellRefusal(inUse + (script ? "; a script needs one of its own." : "."), true);
    return kNothingGiven;
}

DataDirectoryHold::~DataDirectoryHold()
{
    ReleaseDataDirectory();
}

void TakeHandovers()
{
    opensHandedFiles = true;
    if (!handedFiles.empty()) PostMessage(hWndMain, kOpenHandedFiles, 0, 0);
}

void OpenHandedFiles()
{
    if (handedFiles.empty()) return;
    if (OperatorIsBusy()) {
        SetTimer(hWndMain, kHandedTimer, kTryAgainMs);
        return;
    }
    // One start's at a time: opening them may ask the operator, and others come meanwhile.
    std::vector<std::string> files = std::move(handedFiles.front());
    handedFiles.erase(handedFiles.begin());
    if (!handedFiles.empty()) PostMessage(hWndMain, kOpenHandedFiles, 0, 0);
    const auto calibrations = std::ranges::stable_partition(files, [](const auto& path) { return !IsCalFile(path); });
    for (const std::string& path : calibrations) LoadHandedCalibration(path);
    files.erase(calibrations.begin(), calibrations.end());
    OpenStoredFiles(files);
}

void ForgetHandovers()
{
    handedFiles.clear();
    opensHandedFiles = false;
}

}  // namespace kelvo
