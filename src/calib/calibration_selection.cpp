// Choosing the .cal file to load or to save as.
#include "calib/cal_state.h"
#include "calib/calibration.h"
#include "calib/last_set.h"
#include "config/camera_config.h"
#include "platform/box.h"
#include "platform/file_dialog.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "shell/status.h"
#include "shell/windows.h"

namespace kelvo {

namespace {

constexpr int kLeftAligned = 0;
constexpr int kChooseHint = 24;  // status string
constexpr std::int32_t kNoCamera = 999;

std::string SettingsDirectory()
{
    std::string drive;
    std::string directory;
    SplitPath(IniFilePath, &drive, &directory, nullptr, nullptr);
    return drive + directory;
}

// Whose sets these are.
std::string CameraOfSets()
{
    return ActiveConfig.Description;
}

bool IsForThisCamera(HWND window, const std::string& path)
{
    FilePathBuf = path;
    if (GetPrivateProfileInt("Calibration", "DriverNumber", kNoCamera, path) == ActiveCamera) return true;
    MessageBeep(Sound::kExclamation);
    MessageBox(window, "The calibration file selected is not for this camera", kMessageCaption);
    return false;
}

// The lists of the set take its name with endings of their own: a settings file of another ending could be one of them,
// or share them with the set that has the name.
bool MaySaveAs(HWND window, const std::string& path)
{
    if (!IsCalFile(path)) {
        MessageBox(window, "The name of a calibration ends in .cal:\n" + path, kMessageCaption);
        return false;
    }
    if (!FileExists(path)) return true;
    return MessageBox(window, "File already exists, replace it?", kMessageCaption, BoxIcon::kExclamation,
                      BoxButtons::kOkCancel, Button::kCancel) == Button::kOk;
}

int Choose(const FileDialogRequest& request)
{
    const FileDialogResult result = RunFileDialog(request);
    if (result.error != 0) MessageBox(request.owner, "Unable to display dialog", "System Error");
    if (result.paths.empty()) return 0;
    FilePathBuf = result.paths.front();
    return 1;
}

}  // namespace

int ChooseCalibrationToOpen(HWND window)
{
    const std::string statusBefore = StatusText;
    const int alignBefore = StatusAlign;
    StatusString(kChooseHint, kLeftAligned);
    const int chosen = Choose({.owner = window,
                               .mode = FileDialogMode::kOpen,
                               .title = "Load Calibration",
                               .filters = {{"*.cal", "*.cal"}, {"*.*", "*.*"}},
                               .directory = SettingsDirectory(),
                               .name = "*.cal",
                               .defaultExtension = {},
                               .note = CameraOfSets(),
                               .accept = [window](const std::string& path) { return IsForThisCamera(window, path); }});
    if (!chosen) StatusMessage(statusBefore, alignBefore);
    return chosen;
}

int ChooseCalibrationToSave(HWND window)
{
    if (CalType == 0) {
        MessageBox(window, "A calibration must be loaded\nin order to save it.", "Kelvo Message");
        return 0;
    }
    return Choose({.owner = window,
                   .mode = FileDialogMode::kSave,
                   .title = "Save Calibration",
                   .filters = {{"*.cal", "*.cal"}},
                   .directory = SettingsDirectory(),
                   .name = "*.cal",
                   .defaultExtension = "cal",
                   .note = CameraOfSets(),
                   .accept = [window](const std::string& path) { return MaySaveAs(window, path); }});
}

}  // namespace kelvo
