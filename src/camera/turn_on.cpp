#include "camera/turn_on.h"

#include "calib/calibration_selection.h"
#include "calib/calibration_set.h"
#include "grabber/board.h"
#include "head/camera_head.h"
#include "head/camera_report.h"
#include "head/head_transaction.h"
#include "head/program_head.h"
#include "head/section_check.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/files.h"
#include "platform/pointer.h"
#include "platform/text.h"
#include "resources/ids.h"
#include "state/cal_state_write.h"
#include "state/camera_config.h"
#include "state/frame_state_write.h"
#include "state/head_state_write.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/menu_state.h"
#include "ui/select_file.h"
#include "ui/status.h"
#include "video/video.h"

#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

namespace {

constexpr int kVideoSetupButton = 1070;
constexpr int kAutoloadLastButton = 1072;
constexpr int kAutoloadSelectedButton = 1074;

// Results of the dialog.
constexpr int kNothing = 0;
constexpr int kVideoSetupFollows = 1;
constexpr int kCalibrationLoaded = 2;

constexpr std::string_view kAutoStart = "AUTOSTART";
constexpr std::size_t kShortestName = 4;
constexpr std::size_t kShortestDrive = 2;
constexpr std::size_t kShortestDirectory = 3;

// The word may stand before the file's name or behind it, in any case and parted by one character; the name alone
// remains.
std::string WithoutAutoStart(std::string text)
{
    const std::size_t place = UpperAscii(text).find(kAutoStart);
    if (place == std::string::npos) return text;
    if (place == 0) return text.erase(0, kAutoStart.size() + 1);
    return text.erase(place - 1);
}

bool SectionCanRun()
{
    const std::optional<std::string> reason = WhyCameraCantRun();
    if (!reason) return true;
    MessageBox(hWndMain,
               "The camera can't be turned on with these settings.\n" + ActiveCameraSection() + ": " + *reason,
               "Kelvo configuration warning");
    return false;
}

// Nothing goes to the head while the grab runs.
void StopLiveVideo()
{
    write::frames.LiveVideo = 1;
    ToggleLiveVideo();
}

void FreezeForTurnOn()
{
    write::frames.LiveVideo = 1;
    StatusMessage("Freeze image...", kLeftAligned);
    ToggleLiveVideo();
    StatusMessage("Set Matrox sync...", kLeftAligned);  // this and the next tell of work that no board needs any more
    StatusMessage("Set LUT bar at side of image...", kLeftAligned);
}

// A board that doesn't come up and can't tell why shows itself at the first frame.
void BeginLiveView()
{
    write::frames.LiveVideo = 0;
    ForgetCameraReport();
    const bool cameUp = init_itex() != 0;
    write::frames.CameraOn = 1;
    write::head.VideoSetupMissing = 1;
    if (cameUp) {
        AskCamera();
    } else {
        FollowCamera();  // the board may know why
    }
    ToggleLiveVideo();
}

bool LoadNamedCalibration(const std::string& path)
{
    if (path.empty()) return true;
    StatusMessage("Loading previous calibration...", kLeftAligned);
    return LoadCalibration(hWndMain, path) != 0;
}

void TurnCameraOff()
{
    const HeadHearing hearing;
    const Hourglass hourglass;
    StopLiveVideo();
    ShowTurnOnInMenu(false);
    StatusMessage("Turning camera head electronics off", kLeftAligned);
    TurnCameraHeadOff();
    write::cal.CalType = 0;
    write::frames.CameraOn = 0;
    ForgetCameraReport();
    StatusMessage("Wait - Closing Frame Grabber", kLeftAligned);
    ReleaseBoard();
    StatusString(kIdleHint, kLeftAligned);
    hearing.TellIfUnheard(hWndMain, "Its electronics may still be on.");
}

void AskToTurnOff()
{
    StatusString(kTurnOffHint, kLeftAligned);
    MessageBeep(Sound::kDefault);
    const Button answer = MessageBox(hWndMain, "Do you wish to turn the Vantir camera OFF?", "Turn off camera?",
                                     BoxIcon::kQuestion, BoxButtons::kYesNo);
    if (answer == Button::kYes) {
        TurnCameraOff();
    } else {
        StatusString(kIdleHint, kLeftAligned);
    }
}

std::string LastCalibrationPath()
{
    return DirectoryOf(IniFilePath) + "last.cal";
}

void OfferVideoSetupInstead(HWND dialog)
{
    EnableDlgItem(dialog, kAutoloadLastButton, false);
    SetDlgItemTip(
        dialog, kAutoloadLastButton,
        "There is no last calibration yet. Every calibration that is made becomes it:\n" + LastCalibrationPath());
    SetDefaultButton(dialog, kVideoSetupButton);
}

void Open(HWND dialog)
{
    if (CameraOn) {
        AskToTurnOff();
        EndDialog(dialog, kNothing);
        return;
    }
    CentreDialog(dialog);
    StatusString(kTurnOnHint, kLeftAligned);
    const bool hasLast = FileExists(LastCalibrationPath());
    if (!hasLast) OfferVideoSetupInstead(dialog);
    FocusDlgItem(dialog, hasLast ? kAutoloadLastButton : kVideoSetupButton);
}

void TurnOnForVideoSetup(HWND dialog)
{
    StatusString(kGoOnHint, kLeftAligned);
    if (TurnCameraOn("", 1)) {
        write::head.FirstSetupPending = 1;
        EndDialog(dialog, kVideoSetupFollows);
        return;
    }
    MessageBeep(Sound::kExclamation);
    MessageBox(dialog, "Unable to turn camera head on!", "Camera Head Error!");
}

// A failure is silent here: what failed has told it, and the dialog stays.
void TurnOnWithCalibration(HWND dialog, const std::string& path)
{
    StatusString(kGoOnHint, kLeftAligned);
    if (!TurnCameraOn(path.c_str(), 1)) return;
    StatusString(kIdleHint, kLeftAligned);
    EndDialog(dialog, kCalibrationLoaded);
}

void TurnOnWithSelection(HWND dialog)
{
    if (ChooseCalibrationToOpen(dialog)) {
        TurnOnWithCalibration(dialog, FilePathBuf);
        return;
    }
    StatusString(kIdleHint, kLeftAligned);
    EndDialog(dialog, kNothing);
}

constexpr DialogEntry kEntries[] = {
    {kVideoSetupButton, TurnOnForVideoSetup},
    {kAutoloadLastButton, [](HWND dialog) { TurnOnWithCalibration(dialog, LastCalibrationPath()); }},
    {kAutoloadSelectedButton, TurnOnWithSelection},
};
constexpr DialogFrame kFrame{.name = "CLOCK_ON",
                             .procedure = fnCLOCKONDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .closed = CancelDialog,
                             .cantOpenIcon = BoxIcon::kStop,
                             .cantOpenResult = kNothing};

}  // namespace

std::string CalibrationNamed(std::string_view argument)
{
    const std::string text = WithoutAutoStart(std::string(argument));
    if (text.size() < kShortestName) return {};
    std::string drive;
    std::string directory;
    std::string name;
    std::string extension;
    SplitPath(text, &drive, &directory, &name, &extension);
    if (drive.size() < kShortestDrive) drive = "c:";
    if (directory.size() < kShortestDirectory) directory = "\\KELVO\\";
    if (extension.empty()) extension = ".cal";
    if (!EqualIgnoringCase(extension, ".cal")) return {};
    return ResolvePath(MakePath(drive, directory, name, extension));
}

int TurnCameraOn(const char* argument, int /*flag*/)
{
    if (!SectionCanRun()) return 0;
    const std::string calibration = CalibrationNamed(argument ? argument : "");
    const Pointer before = CurrentPointer();
    SetPointer(Pointer::kHourglass);
    FreezeForTurnOn();
    write::cal.CalType = 0;
    write::frames.CameraOn = 0;
    StatusString(kIdleHint, kLeftAligned);
    if (!LoadCameraHead()) {
        write::frames.LiveVideo = 0;  // frozen, with the hourglass: who asked for the camera tells the operator
        return 0;
    }
    BeginLiveView();
    ShowTurnOnInMenu(CameraOn != 0);
    const bool loaded = LoadNamedCalibration(calibration);
    SetPointer(before);
    return loaded ? 1 : 0;
}

int TurnOnDialog(HWND parent)
{
    const int result = RunDialog(kFrame, parent);
    if (result != kCalibrationLoaded) return result;
    ShowTurnOnInMenu(CameraOn != 0);
    return kNothing;
}

LRESULT fnCLOCKONDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

}  // namespace kelvo
