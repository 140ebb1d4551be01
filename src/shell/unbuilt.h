// Commands and calls whose subsystem isn't part of this version. They do no harm; a command says once, in one place,
// that it isn't there.
#pragma once

namespace kelvo {

// Tells the operator that the command isn't available in this version.
void TellNotAvailable();

// Start-up calls. Each leaves its subsystem's state as it stands at start.
void LoadVideoSettings();
void LoadCalibrationSettings();
void ReadGraphicsKeys();
void InitUserModules();
void RegisterExternalSignal();
void BuildTiffTemplate();

// No head answers: 0. With "a head answers" set (platform/faults.h) 1, so that the start behind it can be tested.
int IdentifyCameraHead();
// 0: not turned on; with "the camera turns on" set, 1.
int TurnCameraOn(const char* argument, int flag);
int TurnOnDialog();

void SignalExternalThread();

}  // namespace kelvo
