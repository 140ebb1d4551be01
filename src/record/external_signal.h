// The signal from outside that begins a run: another application sets it (docs/how-to/external-signal.md), and the
// dialog that waits gets one message. One signal, one wait: a signal that comes while nobody waits stays until the next
// wait, and several count as one.
//
// While a run waits, a thread of its own does; it touches nothing but the two events, and posts. Under the virtual
// clock the signal's arrival itself posts, without a thread.
#pragma once

#include "platform/types.h"

#include <cstdint>
#include <string>

namespace kelvo {

// What the dialog gets, without parameters. 0 before InitExternalSignal.
extern const std::uint32_t& ExternalSignalMessage;

using ExternalThreadHandle = std::int64_t;
extern const ExternalThreadHandle& ExternalThread;  // of the thread that waits, or has waited; 0: none

// At start-up, and harmless again: makes the stop event and the event that the signal sets, and opens its socket for
// DefaultDir (platform/signal_socket.h). Where the socket can't be made no signal comes: ExternalSignalCanCome tells.
void InitExternalSignal();
bool ExternalSignalCanCome();

// Makes the thread, for one signal, and returns its handle. 0 where one exists, or no thread can be made.
ExternalThreadHandle StartExternalThread(HWND dialog);
// Sets the stop event and waits for the thread without limit: no message comes from it any more. Any other handle than
// ExternalThread does nothing.
void StopExternalThread(ExternalThreadHandle thread);

// As another application does it. False where no signal can come.
bool SendExternalSignal();

// At exit: the thread is stopped, the socket removed.
void CloseExternalSignal();

// As before the start.
void ResetExternalSignal();

}  // namespace kelvo
