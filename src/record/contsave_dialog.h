// The dialog CONTSAVE: continuous save from the operator's side. Until it is started it shows live video, then the run
// goes on (record/continuous_save.h) until it is stopped; a second run in the same dialog may go on in the same file. A
// second integration time can be switched to and back at any moment.
#pragma once

#include "platform/types.h"
#include "ui/command_end.h"

namespace kelvo {

constexpr int kContSaveName = 1460;
constexpr int kContSaveUpdateTime = 1630;  // s, 0: every frame
constexpr int kContSaveMultiFrame = 1784;
constexpr int kContSaveFrameHeaders = 1785;
constexpr int kContSaveShow = 1030;
constexpr int kContSaveCalibrated = 1395;
constexpr int kContSaveCorrectAfter = 1397;
constexpr int kContSaveSync = 1346;
constexpr int kContSaveIntegration = 626;
constexpr int kContSaveSwitch = 1038;
constexpr int kContSaveStartStop = 124;
constexpr int kContSaveFigures = 20700;  // "Frames in the file: 120   lost: 0"
constexpr int kContSaveBrowse = 20701;

// Runs the dialog, its settings those of section ContSave of kelvo.ini, its file SeqFilePath. Without a camera that is
// on and without a file on view nothing happens: 1. Otherwise 1 after Ok, 0 after Cancel or "Unable to display dialog".
// Timers of live video rest meanwhile; afterwards live video begins anew.
int ContinuousSaveDialog(HWND parent);

// Stops a run as the dialog's button does, but corrects nothing and shows no box: for who ends the program or the
// session. The dialog stays. Nothing happens where none runs.
void StopContinuousSave();

LRESULT fnCONTSAVEDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

// The menu's command.
CommandEnd SaveContinuously();

// As at start.
void ResetContinuousSaveDialog();

}  // namespace kelvo
