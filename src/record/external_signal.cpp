#include "record/external_signal.h"

#include "platform/clock.h"
#include "platform/main_thread.h"
#include "platform/signal_socket.h"
#include "platform/window.h"
#include "state/state_registry.h"
#include "state/windows.h"

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

namespace kelvo {

namespace {

constexpr std::string_view kMessageName = "{C8E148F1-A6A2-11d0-AC11-00A024BBB05E}";

std::uint32_t externalSignalMessage = 0;
ExternalThreadHandle externalThread = 0;

// From the start to the exit.
struct Signal {
    Event stop;
    Event named;
    std::unique_ptr<SignalSocket> socket;
};
std::unique_ptr<Signal> theSignal;

// One that waits. Without a thread it is the arrival of the signal that goes on.
struct Wait {
    HWND dialog = nullptr;
    std::unique_ptr<SignalThread> thread;
    bool withoutThread = false;
};
std::optional<Wait> wait;
ExternalThreadHandle lastHandle = 0;

const StateNames kStateNames{Named("ExternalThread", externalThread)};

void Post(ExternalThreadHandle thread)
{
    // A stop that came in between has the last word.
    if (wait && externalThread == thread) PostMessage(wait->dialog, externalSignalMessage, 0, 0);
}

void TakeWithoutThread()
{
    if (!wait || !wait->withoutThread || !theSignal->named.Take()) return;
    wait->withoutThread = false;  // one wait, one signal
    Post(externalThread);
}

void OnSignal()
{
    theSignal->named.Set();
    TakeWithoutThread();
}

}  // namespace

constinit const std::uint32_t& ExternalSignalMessage = externalSignalMessage;
constinit const ExternalThreadHandle& ExternalThread = externalThread;

void InitExternalSignal()
{
    externalSignalMessage = RegisterWindowMessage(kMessageName);
    if (!theSignal) theSignal = std::make_unique<Signal>();
    if (!theSignal->socket) theSignal->socket = SignalSocket::Open(SignalSocketPath(DefaultDir), OnSignal);
}

bool ExternalSignalCanCome()
{
    return theSignal && theSignal->socket;
}

ExternalThreadHandle StartExternalThread(HWND dialog)
{
    if (!theSignal || wait) return 0;
    wait.emplace();
    wait->dialog = dialog;
    externalThread = ++lastHandle;
    if (ClockIsVirtual()) {
        wait->withoutThread = true;
        TakeWithoutThread();
        return externalThread;
    }
    wait->thread = SignalThread::Start(theSignal->stop, theSignal->named,
                                       [thread = externalThread] { RunOnMainThread([thread] { Post(thread); }); });
    if (!wait->thread) {
        wait.reset();
        externalThread = 0;
    }
    return externalThread;
}

void StopExternalThread(ExternalThreadHandle thread)
{
    if (thread == 0 || thread != externalThread || !wait) return;
    wait.reset();
    externalThread = 0;
}

bool SendExternalSignal()
{
    if (!ExternalSignalCanCome() || !SendSignal(SignalSocketPath(DefaultDir))) return false;
    theSignal->socket->TakeSignals();
    return true;
}

void CloseExternalSignal()
{
    StopExternalThread(externalThread);
    theSignal.reset();
}

void ResetExternalSignal()
{
    CloseExternalSignal();
    externalSignalMessage = 0;
    lastHandle = 0;
}

}  // namespace kelvo
