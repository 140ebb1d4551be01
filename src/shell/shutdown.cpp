#include "shell/shutdown.h"

#include "config/settings.h"
#include "grabber/board.h"
#include "head/comm_link.h"
#include "platform/box.h"
#include "platform/help.h"
#include "platform/pointer.h"
#include "platform/profile.h"
#include "platform/window.h"
#include "record/external_signal.h"
#include "record/recorder.h"
#include "record/recorder_window.h"
#include "shell/window_state.h"
#include "simcam/bench_window.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/status.h"

namespace kelvo {

namespace {

bool shutDown = false;

}  // namespace

CommandEnd AskToExit()
{
    StatusString(CameraOn ? kExitCameraOnHint : kExitCameraOffHint, kLeftAligned);
    MessageBeep(Sound::kDefault);
    const Button answer =
        MessageBox(hWndMain, "\nDo you wish to exit?", "QVF Vantir", BoxIcon::kQuestion, BoxButtons::kYesNo);
    if (answer != Button::kYes) return CommandEnd::kResetStatus;
    ShutDown();
    return CommandEnd::kLeaveStatus;
}

void ShutDown()
{
    if (shutDown) return;  // a quit that is under way is not begun again by the window's end
    shutDown = true;
    StopRecorder();
    SaveDisplayState();
    KeepWindowPlace();
    FlushProfiles();
    ReleasePointerClip();
    CloseCommLink();
    QuitHelp();
    CloseBenchWindow();
    CloseRecorderWindow();
    CloseExternalSignal();
    PostQuitMessage(0);
    if (GrabberPresent) ExitBoard();
}

void ResetShutDown()
{
    shutDown = false;
}

}  // namespace kelvo
