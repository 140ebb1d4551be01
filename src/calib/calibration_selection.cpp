// Choosing the .cal file to load or to save as.
#include "calib/cal_state.h"
#include "calib/calibration.h"
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

bool IsForThisCamera(HWND window, const std::string& path)
{
    FilePathBuf = path;
    if (GetPrivateProfileInt("Calibration", "DriverNumber", kNoCamera, path) == ActiveCamera) return true;
    MessageBeep(Sound::kExclamation);
    MessageBox(window, "The calibration file selected is not for this camera", kMessageCaption);
    return false;
}

bool MayReplace(HWND window, const std::string& path)
{
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
    StatusString(kChooseHint, kLeftAligned);
    return Choose({.owner = window,
                   .mode = FileDialogMode::kOpen,
                   .title = "Load Calibration",
                   .filters = {{"*.cal", "*.cal"}, {"*.*", "*.*"}},
                   .directory = SettingsDirectory(),
                   .name = "*.cal",
                   .defaultExtension = {},
                   .accept = [window](const std::string& path) { return IsForThisCamera(window, path); }});
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
                   .accept = [window](const std::string& path) { return MayReplace(window, path); }});
}

}  // namespace kelvo
