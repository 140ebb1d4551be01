#include "shell/shutdown.h"

#include "config/settings.h"
#include "grabber/board.h"
#include "head/comm_link.h"
#include "platform/help.h"
#include "platform/pointer.h"
#include "platform/profile.h"
#include "platform/window.h"
#include "shell/unbuilt.h"
#include "simcam/bench_window.h"
#include "state/frame_state.h"

namespace kelvo {

namespace {

bool shutDown = false;

}  // namespace

void ShutDown()
{
    if (shutDown) return;  // a quit that is under way is not begun again by the window's end
    shutDown = true;
    SaveDisplayState();
    FlushProfiles();
    ReleasePointerClip();
    CloseCommLink();
    QuitHelp();
    CloseBenchWindow();
    SignalExternalThread();
    PostQuitMessage(0);
    if (GrabberPresent) ExitBoard();
}

void ResetShutDown()
{
    shutDown = false;
}

}  // namespace kelvo
