// The ends of the program that nobody asks for in a window: a signal (SIGTERM, SIGHUP, SIGINT), and the end of the
// desktop's session.
#pragma once

#include <functional>

namespace kelvo {

// Each is called on the main thread, from inside any event handling, the loop of a dialog or box too, but never in the
// midst of a command.
struct EndWatch {
    // The program is to end now, and nobody is there to be asked. Once, however many signals come.
    std::function<void()> end;
    // The session is about to end, which may still be called off: what must not be lost is safe when it returns.
    std::function<void()> sessionEnds;
};
// Once, after StartApplication. A signal that is ignored by then, as nohup has it, stays ignored.
void WatchForEnd(EndWatch watch);

// True from the signal on, before `end` has been called. Long commands break off as at Escape (platform/interrupt.h),
// and a box (platform/box.h) is written to the error stream and answered as Escape would. Any thread may ask.
bool EndIsAsked();

// The last line of the program: where a signal has asked for its end it ends by that signal, as whoever sent it
// expects. Otherwise, and where nobody watches, nothing happens.
void EndBySignal();

// Nobody watches: signals do again what they did before.
void ForgetEndWatch();

}  // namespace kelvo
