#include "shell/shutdown.h"

#include "config/settings.h"
#include "grabber/board.h"
#include "head/comm_link.h"
#include "platform/box.h"
#include "platform/end_request.h"
#include "platform/help.h"
#include "platform/pointer.h"
#include "platform/profile.h"
#include "platform/window.h"
#include "record/external_signal.h"
#include "record/live_trace.h"
#include "record/recorder_window.h"
#include "record/trace_window.h"
#include "record/what_records.h"
#include "regions/region_window.h"
#include "regions/regions_file.h"
#include "shell/benches.h"
#include "shell/script_recording.h"
#include "shell/window_state.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/status.h"

#include <string_view>

namespace kelvo {

namespace {

constexpr std::string_view kCaption = "QVF Vantir";
constexpr std::string_view kWhileRecording = "A recording is running.\nStop it and quit?";
constexpr std::string_view kWhileTracing = "Live video is traced, and no file has the trace.\nEnd it and quit?";

bool shutDown = false;

bool AgreeToExit()
{
    if (SomethingRecords() || LiveTraceRuns()) return AgreeToEndWhatRuns();
    return MessageBox(hWndMain, "\nDo you wish to exit?", kCaption, BoxIcon::kQuestion, BoxButtons::kYesNo) ==
           Button::kYes;
}

void KeepState()
{
    SaveDisplayState();
    KeepWindowPlace();
    KeepRegions();
    FlushProfiles();
}

void EndUnasked()
{
    if (hWndMain) {
        ShutDown();
    } else {
        PostQuitMessage(0);
    }
}

void PrepareForEndOfSession()
{
    EndWhatRecords();
    KeepState();
}

}  // namespace

CommandEnd AskToExit()
{
    StatusString(CameraOn ? kExitCameraOnHint : kExitCameraOffHint, kLeftAligned);
    MessageBeep(Sound::kDefault);
    if (!AgreeToExit()) return CommandEnd::kResetStatus;
    ShutDown();
    return CommandEnd::kLeaveStatus;
}

bool AgreeToEndWhatRuns()
{
    const bool records = SomethingRecords();
    if (!records && !LiveTraceRuns()) return true;
    return MessageBox(hWndMain, records ? kWhileRecording : kWhileTracing, kCaption, BoxIcon::kQuestion,
                      BoxButtons::kOkCancel, Button::kCancel) == Button::kOk;
}

void ShutDown()
{
    if (shutDown) return;  // a quit that is under way is not begun again by the window's end
    shutDown = true;
    KeepScriptRecording();
    EndWhatRecords();
    CloseRecorderWindow();
    CloseTraceWindow();
    CloseRegionsWindow();
    KeepState();
    ReleasePointerClip();
    CloseCommLink();
    QuitHelp();
    CloseBenches();
    CloseExternalSignal();
    PostQuitMessage(0);
    if (GrabberPresent) ExitBoard();
}

void ShutDownWhenAsked()
{
    WatchForEnd({.end = EndUnasked, .sessionEnds = PrepareForEndOfSession});
}

void ResetShutDown()
{
    shutDown = false;
}

}  // namespace kelvo
