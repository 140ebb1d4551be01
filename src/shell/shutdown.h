// The program's orderly exit.
#pragma once

#include "ui/command_end.h"

namespace kelvo {

// The Exit command: asks "\nDo you wish to exit?" under "QVF Vantir", while the status line tells whether the camera
// stays on, or while something records or is traced AgreeToEndWhatRuns alone. Yes: ShutDown, and the status is left.
CommandEnd AskToExit();

// Asks "A recording is running.\nStop it and quit?" under "QVF Vantir" where something records, "Live video is traced,
// and no file has the trace.\nEnd it and quit?" where that alone runs. True: nothing does, or Ok. False: Cancel, and it
// goes on.
bool AgreeToEndWhatRuns();

// Ends what records, its files closed; saves the state of the display, gives everything back and ends the message loop.
// The camera head stays on. Runs once: the Exit command calls it, and so does the main window's end.
void ShutDown();

// From here on a signal (platform/end_request.h), or the end of the desktop's session, is such an end, without a
// question. Where the session's end is called off after all, what recorded has been stopped, and no more.
void ShutDownWhenAsked();

// ShutDown would run again: for another start in the same process.
void ResetShutDown();

}  // namespace kelvo
