#include "calib/calibration.h"

#include "config/camera_config.h"
#include "grabber/frame_state.h"
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

bool FileOpens(const std::string& path)
{
    return File::Open(path, FileMode::kRead).has_value();
}

// The operator's choice; empty if cancelled.
std::string AskForCalibration(HWND window)
{
    const FileDialogRequest request{.owner = window,
                                    .mode = FileDialogMode::kOpen,
                                    .title = "Load Calibration",
                                    .filters = {{"*.cal", "*.cal"}, {"*.*", "*.*"}},
                                    .directory = DefaultDir,
                                    .name = "*.cal",
                                    .defaultExtension = {}};
    const FileDialogResult result = RunFileDialog(request);
    return result.paths.empty() ? std::string() : result.paths.front();
}

bool IsForActiveCamera(const std::string& path)
{
    return GetPrivateProfileInt("Calibration", "DriverNumber", kNoCamera, path) == ActiveCamera;
}

}  // namespace

int ChooseCalibrationToOpen(HWND window)
{
    StatusString(kChooseHint, kLeftAligned);
    for (std::string path = AskForCalibration(window); !path.empty(); path = AskForCalibration(window)) {
        if (!FileOpens(path)) continue;
        FilePathBuf = path;
        if (IsForActiveCamera(path)) return 1;
        MessageBeep(Sound::kExclamation);
        MessageBox(window, "The calibration file selected is not for this camera", kMessageCaption);
    }
    return 0;
}

int LoadCalibration(HWND window, const std::string& calPath)
{
    if (FileOpens(calPath)) return 1;
    MessageBox(window, "Failed to get ActiveCamera from calibration file:\n" + calPath, kMessageCaption);
    return 0;
}

int RunCalibrationDialog(HWND window)
{
    if (!CameraOn) MessageBox(window, "Camera must be turned on before calibrating", "Kelvo Message");
    return 0;
}

}  // namespace kelvo
