#include "record/recorder_run.h"

#include "platform/box.h"
#include "platform/front.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "record/external_signal.h"
#include "script/script.h"
#include "state/buffer_state.h"
#include "state/windows.h"
#include "ui/panel_readouts.h"
#include "ui/status.h"

namespace kelvo {

namespace {

constexpr std::int64_t kLampMs = 200;

struct Followed {
    RecorderSettings settings{};
    RecorderCaller caller = RecorderCaller::kOperator;
    bool runs = false;
    ExternalThreadHandle signal = 0;
};
Followed followed;

void WaitForSignal()
{
    if (followed.settings.trigger == RecordTrigger::kSignal) followed.signal = StartExternalThread(hWndMain);
}

void StopWaitingForSignal()
{
    StopExternalThread(followed.signal);
    followed.signal = 0;
}

std::string LampWord(RecorderState state)
{
    switch (state) {
        case RecorderState::kWaiting:
            return "Waiting";
        case RecorderState::kArmed:
            return "Armed";
        case RecorderState::kRecording:
            return "● REC";
        case RecorderState::kIdle:
            break;
    }
    return {};
}

void ShowLamp(const RecorderStatus& status)
{
    const std::string word = LampWord(status.state);
    ShowRecorderInPanel(word);
    ShowStatusField(word.empty() ? word : word + Format("  %lld frames", static_cast<long long>(status.frames)));
}

void TellEnd(const RecorderStatus& status)
{
    StopWaitingForSignal();
    if (hWndMain) KillTimer(hWndMain, kRecorderLampTimer);
    StatusNote(" Recorded: " + status.verdict);
    if (status.exitCode != 0) NoteScriptExitCode(status.exitCode, "a recording isn't whole: " + status.verdict);
    if (status.message.empty() || followed.caller == RecorderCaller::kScript) return;
    MessageBox(hWndMain, status.message + "\n\n" + status.verdict, "Kelvo Warning");
}

void Refuse(std::string_view text)
{
    MessageBeep(Sound::kDefault);
    StatusNote(text);
}

}  // namespace

bool BeginRecorderRun(const RecorderSettings& settings, RecorderCaller caller, std::string& why)
{
    FollowRecorderRun();  // of a run that has just come to its end
    if (ModalIsOpen() || PeriodicUpdates == 0) {
        why = "Something else is open that may need the camera: close it first.";
        return false;
    }
    if (settings.trigger == RecordTrigger::kSignal && !ExternalSignalCanCome()) {
        why = "No signal from outside can come: its socket couldn't be made at the start.";
        return false;
    }
    if (!StartRecorder(settings, why)) return false;
    followed = {.settings = settings, .caller = caller, .runs = true, .signal = 0};
    WaitForSignal();
    if (hWndMain) SetTimer(hWndMain, kRecorderLampTimer, kLampMs);
    ShowLamp(CurrentRecorderStatus());
    return true;
}

void StopRecorderRun()
{
    StopRecorder();
    FollowRecorderRun();
}

void FollowRecorderRun()
{
    if (!followed.runs) return;
    TendRecorder();
    const RecorderStatus status = CurrentRecorderStatus();
    ShowLamp(status);
    if (status.state == RecorderState::kIdle) {
        followed.runs = false;
        TellEnd(status);
    } else if (hWndMain) {
        SetTimer(hWndMain, kRecorderLampTimer, kLampMs);
    }
}

void OnRecorderSignal()
{
    StopWaitingForSignal();
    if (!followed.runs) return;
    SignalRecorder();
    WaitForSignal();
}

void TriggerByHand()
{
    const bool armed = CurrentRecorderStatus().state == RecorderState::kArmed;
    if (!armed || followed.settings.trigger != RecordTrigger::kButton) {
        Refuse(" The recorder isn't armed for a trigger by hand");
        return;
    }
    TriggerRecorder();
    StatusNote(" Triggered");
}

void MarkByHand()
{
    const std::int64_t mark = MarkRecorder();
    if (mark == 0) {
        Refuse(" A mark needs a recording that runs");
        return;
    }
    StatusNote(Format(" Mark %lld", static_cast<long long>(mark)));
}

std::string RecorderStateText(const RecorderStatus& status, const RecorderSettings& settings)
{
    switch (status.state) {
        case RecorderState::kWaiting:
            return "○ Waiting for " + settings.startTime;
        case RecorderState::kArmed:
            return "◎ Armed";
        case RecorderState::kRecording:
            return "● Recording";
        case RecorderState::kIdle:
            break;
    }
    return "○ Idle";
}

std::string LostFramesText(const RecorderStatus& status)
{
    const auto byRing = static_cast<long long>(status.lostByRing);
    if (!status.lostByBoard) return Format("%lld by the ring, unknown by the board", byRing);
    return status.Lost() == 0 ? "none" : LostPlacesText(status);
}

const RecorderSettings& SettingsOfRun()
{
    return followed.settings;
}

void ResetRecorderRun()
{
    followed = {};
}

}  // namespace kelvo
