#include "fileboard/file_bench.h"

#include "fileboard/file_camera.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/file_dialog.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "resources/dialog_ids.h"
#include "resources/help_contexts.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/docking.h"

#include <algorithm>
#include <memory>

namespace kelvo {

namespace {

HWND hDlgFileBench = nullptr;

constexpr std::uint32_t kRefreshTimer = 1;
constexpr std::int64_t kRefreshMs = 500;
constexpr const char* kNothing = "-";
constexpr const char* kNoFile = "no file";
constexpr int kSources = static_cast<int>(kFileSources);

bool showing = false;  // the window shows what the camera has

// --- What the window shows ------------------------------------------------------------------------------------------

// A text that stands already isn't painted again.
void ShowText(HWND dialog, int id, const std::string& text)
{
    if (GetDlgItemText(dialog, id) != text) SetDlgItemText(dialog, id, text);
}

// A long name loses its middle: the end tells which one of several it is, and its kind.
std::string FittingName(const std::string& name)
{
    constexpr std::size_t kRoom = 26;
    constexpr std::size_t kFront = 12;
    constexpr std::string_view kMark = "...";
    if (name.size() <= kRoom) return name;
    const auto isInside = [&](std::size_t at) { return at < name.size() && (name[at] & 0xC0) == 0x80; };
    std::size_t front = kFront;
    while (isInside(front)) --front;  // a character of UTF-8 stays whole
    std::size_t back = name.size() - (kRoom - kFront - kMark.size());
    while (isInside(back)) ++back;
    return name.substr(0, front) + std::string(kMark) + name.substr(back);
}

// Only a source that has a file can be put in front.
void ShowSource(HWND dialog, const FileCamera& camera, int source)
{
    const FileSourceState state = StateOfSource(camera, static_cast<FileSource>(source));
    EnableDlgItem(dialog, kFileBenchSource + source, !state.name.empty());
    ShowText(dialog, kFileBenchFile + source, state.name.empty() ? kNoFile : FittingName(state.name));
}

void ShowPlaying(HWND dialog, const FileSourceState& state)
{
    ShowText(dialog, kFileBenchSize,
             Format("%lld x %lld at %.2f Hz", static_cast<long long>(state.columns), static_cast<long long>(state.rows),
                    state.rateHz));
    ShowText(dialog, kFileBenchFrame,
             Format("%lld of %lld%s", static_cast<long long>(state.playing), static_cast<long long>(state.frames),
                    state.ended ? ", ended" : ""));
    ShowText(dialog, kFileBenchLost, std::to_string(state.lost));
}

void ShowCamera(HWND dialog)
{
    const std::shared_ptr<FileCamera> camera = CurrentFileCamera();
    for (int source = 0; source < kSources; ++source) EnableDlgItem(dialog, kFileBenchLoad + source, camera != nullptr);
    EnableDlgItem(dialog, kFileBenchAgain, camera != nullptr);
    if (!camera) {
        for (const int id : {kFileBenchSize, kFileBenchFrame, kFileBenchLost}) ShowText(dialog, id, kNothing);
        return;
    }
    showing = true;
    for (int source = 0; source < kSources; ++source) ShowSource(dialog, *camera, source);
    const FileSource inFront = FileSourceInFront(*camera);
    CheckDlgButton(dialog, kFileBenchSource + static_cast<int>(inFront), true);
    ShowPlaying(dialog, StateOfSource(*camera, inFront));
    showing = false;
}

// --- What the operator does -----------------------------------------------------------------------------------------

// Null too while the window shows what the camera has: its buttons are not the operator's then.
std::shared_ptr<FileCamera> CameraToWork()
{
    return showing ? nullptr : CurrentFileCamera();
}

void PickSource(HWND dialog, int id)
{
    const std::shared_ptr<FileCamera> camera = CameraToWork();
    if (!camera) return;
    PutFileSource(*camera, static_cast<FileSource>(id - kFileBenchSource));
    ShowCamera(dialog);
}

void LoadFile(HWND dialog, int id)
{
    const std::shared_ptr<FileCamera> camera = CameraToWork();
    if (!camera) return;
    FileDialogRequest request;
    request.owner = dialog;
    request.mode = FileDialogMode::kOpen;
    request.title = "Choose recorded frames";
    request.filters = {{"Raw frames (*.seq *.img *.buf *.npy *.fits *.tif)", "*.seq;*.img;*.buf;*.npy;*.fits;*.tif"},
                       {"All Files (*.*)", "*.*"}};
    request.directory = DefaultDir;
    const FileDialogResult chosen = RunFileDialog(request);
    if (chosen.paths.empty() || !hDlgFileBench) return;

    const auto source = static_cast<FileSource>(id - kFileBenchLoad);
    const std::string why = SetFileOfSource(*camera, source, chosen.paths.front());
    if (!why.empty()) {
        MessageBox(hDlgFileBench, "These frames can't be played.\n" + why, kMessageCaption);
        return;
    }
    PutFileSource(*camera, source);
    ShowCamera(dialog);
}

void PlayAgain(HWND dialog)
{
    const std::shared_ptr<FileCamera> camera = CameraToWork();
    if (!camera) return;
    BeginRecording(*camera);
    ShowCamera(dialog);
}

void Open(HWND dialog)
{
    hDlgFileBench = dialog;
    ShowCamera(dialog);
    DockInCorner(dialog, LowerCorner::kRight);
    SetTimer(dialog, kRefreshTimer, kRefreshMs);
}

void Forget(HWND /*dialog*/)
{
    hDlgFileBench = nullptr;
}

constexpr DialogEntry kEntries[] = {
    OnTimer(kRefreshTimer, ShowCamera), {kFileBenchSource, PickSource}, {kFileBenchSource + 1, PickSource},
    {kFileBenchSource + 2, PickSource}, {kFileBenchLoad, LoadFile},     {kFileBenchLoad + 1, LoadFile},
    {kFileBenchLoad + 2, LoadFile},     {kFileBenchAgain, PlayAgain},
};
static_assert(kSources == 3, "each source has a row");
constexpr DialogFrame kFrame{.name = "FILEBENCH",
                             .procedure = fnFILEBENCHDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpBench,
                             .destroyed = Forget};

}  // namespace

HWND FileBenchWindow()
{
    return hDlgFileBench;
}

bool FileBenchIsThere()
{
    return CurrentFileCamera() != nullptr;
}

void OpenFileBench(HWND owner)
{
    if (hDlgFileBench) {
        BringToFront(hDlgFileBench, {});
    } else {
        OpenModelessDialog(kFrame, owner);
    }
}

void CloseFileBench()
{
    if (hDlgFileBench) EndDialog(hDlgFileBench, 0);
}

LRESULT fnFILEBENCHDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

std::string PutFileBenchSource(std::string_view source, std::optional<double> value)
{
    const std::shared_ptr<FileCamera> camera = CurrentFileCamera();
    if (!camera) return "no recorded camera";
    const auto* const found = std::ranges::find(kFileSourceNames, source);
    if (found == kFileSourceNames.end()) return "no source \"" + std::string(source) + "\": low, high or scene";
    if (value) return "a recording has the temperature that it was made at";
    if (!PutFileSource(*camera, static_cast<FileSource>(found - kFileSourceNames.begin()))) {
        return "no file for the source \"" + std::string(source) + '"';
    }
    if (hDlgFileBench) ShowCamera(hDlgFileBench);
    return {};
}

std::vector<std::pair<std::string, double>> FileBenchRegisters()
{
    const std::shared_ptr<FileCamera> camera = CurrentFileCamera();
    return camera ? FileHeadRegisters(*camera) : std::vector<std::pair<std::string, double>>();
}

void ResetFileBench()
{
    hDlgFileBench = nullptr;
    showing = false;
}

}  // namespace kelvo
