// The dialog of the triggered save, BIORAD_SAVE.
#pragma once

#include "platform/types.h"

namespace kelvo {

// Runs it with the keys of section Trigger as they stand in kelvo.ini. 1: Ok, which has written NumTriggers,
// NumFramesToAverage and VgaOffDuringSave; 0: cancelled, or "Unable to display dialog" under "System Error".
//
// Button 124 begins a run, and while one is under way stops it; the window's own button stops it too. A run begins live
// video where it was frozen. It goes on by timer 1, the next test of the trigger, and timer 2, the delay behind it.
int TrigSaveDialog(HWND parent);
void SaveOnTriggers();  // the command

// Stops a run that is under way as the dialog's button does: for who ends the program or the session. The dialog stays.
void StopTriggeredSave();

// As before it was first opened.
void ResetTriggeredSaveDialog();

}  // namespace kelvo
