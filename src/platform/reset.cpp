#include "platform/reset.h"

#include "platform/clock.h"
#include "platform/end_request.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/help_pages.h"
#include "platform/long_run.h"
#include "platform/memory.h"
#include "platform/one_process.h"
#include "platform/pointer.h"
#include "platform/profile.h"
#include "platform/qt_window.h"
#include "platform/serial.h"
#include "platform/timers.h"
#include "platform/transcript.h"
#include "platform/undo_stack.h"

namespace kelvo {

void ResetPlatform()
{
    ForgetEndWatch();  // it belongs to the application object
    ResetPointer();
    ForgetTurns();  // while there is a dispatcher to take its alarm off
    ForgetWindows();
    ForgetWindowClasses();
    ForgetDroppedFiles();
    ForgetKeys();
    ReleaseDataDirectory();  // its line belongs to the application object
    EndApplication();
    ForgetTurns();  // what the last widgets have posted

    ClearUndoSteps();
    ClearFaults();
    FailAllocation(0);
    ResetSerial();
    ForgetProfiles();
    ForgetFilledPages();
    SetKelvoDirectory({});
    ResetTranscript();
    ResetLongRuns();
    ResetClock();
}

}  // namespace kelvo
