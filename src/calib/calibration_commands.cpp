#include "calib/calibration_commands.h"

#include "calib/apply_dialog.h"
#include "calib/calibration_dialog.h"
#include "calib/calibration_run.h"
#include "calib/calibration_selection.h"
#include "calib/calibration_set.h"
#include "calib/former_calibration.h"
#include "calib/one_point_run.h"
#include "calib/two_point_run.h"
#include "calib/voltage_calibration.h"
#include "pixel/unsaved_set.h"
#include "platform/box.h"
#include "state/cal_settings_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/menu_state.h"
#include "ui/status.h"
#include "viewing/playback.h"
#include "viewing/written_note.h"

#include <string>

namespace kelvo {

namespace {

// A one-point run determines offsets alone. The calibration that it was to replace comes back if it doesn't complete:
// where it has begun its work and failed, as its files have it, if they are its own.
void RunNewOnePoint(FormerCalibration& former)
{
    write::cal.CalType = 0;
    if (RunOnePoint(hWndMain, former) != RunEnd::kFailed || !former.IsCalibration()) return;
    former.PutBack();
    if (!SetWithoutFiles()) LoadCalibration(hWndMain, std::string(CalSettings.CalFile));
}

}  // namespace

bool CalibrateByDialog(bool (*agrees)())
{
    FormerCalibration former;
    if (!RunCalibrationDialog(hWndMain)) return true;
    if (!agrees()) {
        former.PutBackChoices();
        return false;
    }
    if (CalSettings.ChosenType == 1) {
        RunNewOnePoint(former);
    } else {
        RunTwoPoint(hWndMain, ActiveConfig, write::calSet.CalDone, former);
    }
    return true;
}

CommandEnd NewCalibration()
{
    CalibrateByDialog([] { return true; });
    return CommandEnd::kResetStatus;
}

CommandEnd UpdateCalibration()
{
    OnePointCalibrate(hWndMain);
    return CommandEnd::kResetStatus;
}

CommandEnd SaveCalibration()
{
    const bool nothingToSave = CalType == 0;  // the selection tells it
    if (!ChooseCalibrationToSave(hWndMain)) return nothingToSave ? CommandEnd::kResetStatus : CommandEnd::kLeaveStatus;
    const std::string path = FilePathBuf;
    if (SaveCalibrationAs(path)) return NoteSavedSet(path);
    MessageBox(hWndMain, "Failed to save file: " + path, "Kelvo File Error!");
    return CommandEnd::kResetStatus;
}

CommandEnd LoadPreviousCalibration()
{
    if (!CameraOn) {
        MessageBox(hWndMain, "Camera must be on in order\nto load a calibration", kMessageCaption);
        return CommandEnd::kResetStatus;
    }
    if (!ChooseCalibrationToOpen(hWndMain)) return CommandEnd::kLeaveStatus;
    ShowReplacementInMenu(SubstBadPixels != 0);
    if (!LoadCalibration(hWndMain, FilePathBuf)) return CommandEnd::kResetStatus;
    StatusString(kIdleHint, kLeftAligned);
    return CommandEnd::kLeaveStatus;
}

CommandEnd ApplyCalibrationToData()
{
    StopPlaying();
    ShowApplyCalDialog(hWndMain);
    return CommandEnd::kResetStatus;
}

CommandEnd CalibrateVoltage()
{
    if (!CameraOn) {
        MessageBox(hWndMain, "Camera must be turned on before calibrating", "Kelvo Message");
        return CommandEnd::kResetStatus;
    }
    RunVoltageCalibration(hWndMain);
    return CommandEnd::kLeaveStatus;
}

}  // namespace kelvo
