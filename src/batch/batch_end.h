// The interrupt of the keyboard, a terminal that is closed, or another's wish that the process end, while a command
// without a window works: it finishes the frame at hand, closes its files, leaves no half result, and the process then
// ends by that signal, as whoever sent it expects.
#pragma once

#include <array>
#include <csignal>
#include <string_view>

namespace kelvo {

// Watches for SIGINT, SIGTERM and SIGHUP as long as it lives; one that is ignored by then (a job in the background,
// nohup) stays ignored. A second one ends the process at once. The end of life puts back what stood before, and where
// the signal came and wasn't answered it comes again.
class InterruptWatch {
  public:
    InterruptWatch();
    ~InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;

  private:
    static constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};
    std::array<struct sigaction, kSignals.size()> former_ = {};
    std::array<bool, kSignals.size()> watches_ = {};
};

// Asked between two frames, by any thread: true once the signal has come. The command gives up then, for this reason.
bool Interrupted();
inline constexpr std::string_view kInterrupted = "interrupted";
// The command has closed its file with what it had by then and tells so by an exit code of its own: the signal doesn't
// come again.
void AnswerInterrupt();

}  // namespace kelvo
