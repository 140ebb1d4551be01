#include "camera/camera_commands.h"

#include "calib/calibration_commands.h"
#include "camera/configuration_dialog.h"
#include "camera/turn_on.h"
#include "display/display_pipeline.h"
#include "display/unit_list.h"
#include "head/video_setup_dialog.h"
#include "platform/box.h"
#include "platform/pointer.h"
#include "platform/window.h"
#include "resources/ids.h"
#include "state/camera_config.h"
#include "state/display_state_write.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/menu_state.h"
#include "ui/status.h"
#include "video/image_cursor.h"
#include "video/video.h"

#include <cstdint>

namespace kelvo {

namespace {

void ShowFittingPointer()
{
    if (TrackballMode) {
        SetPointer(Pointer::kTrackball);
    } else {
        SetPointer(ImageCursorOn ? Pointer::kCross : Pointer::kArrow);
    }
}

// With two cameras the operator makes sure of the one that is calibrated.
bool IsCameraToCalibrate()
{
    if (!ActiveConfig.DualCamera) return true;
    return MessageBox(hWndMain, "About to start calibration of camera:\n\n" + ActiveConfig.Description, kMessageCaption,
                      BoxIcon::kExclamation, BoxButtons::kOkCancel) == Button::kOk;
}

// After a turn-on without a calibration: the operator sets the video up, then calibrates. False: the calibration was
// cancelled at the last question, which ends the command.
bool SetUpVideo()
{
    RefreshPicture();
    VideoSetupDialog(hWndMain);
    if (CameraOn && !CalibrateByDialog(IsCameraToCalibrate)) return false;
    ShowReplacementInMenu(SubstBadPixels != 0);
    return true;
}

void ToggleCursorIf(bool on)
{
    if (on) SendMessage(hWndMain, WM_COMMAND, kCmdImageCursor, 0);
}

}  // namespace

CommandEnd TurnOn()
{
    if (TurnOnDialog(hWndMain) && !SetUpVideo()) return CommandEnd::kLeaveStatus;
    RefreshPicture();
    KeepUnitAvailable();
    write::display.TempScale = 1;
    BuildDisplayLut(Contrast, Brightness);
    DrawColorBar();
    StatusString(kIdleHint, kLeftAligned);
    ShowFittingPointer();
    return CommandEnd::kLeaveStatus;
}

CommandEnd VideoSetup()
{
    const std::int32_t cameraWasOn = CameraOn;
    VideoSetupDialog(hWndMain);
    if (CameraOn == cameraWasOn) return CommandEnd::kResetStatus;
    ShowTurnOnInMenu(CameraOn != 0);
    return CommandEnd::kResetStatus;
}

CommandEnd Configure()
{
    const bool cursorWasOn = ImageCursorOn != 0;
    ToggleCursorIf(cursorWasOn);
    ConfigurationDialog(hWndMain);
    ToggleCursorIf(cursorWasOn);
    return CommandEnd::kResetStatus;
}

}  // namespace kelvo
