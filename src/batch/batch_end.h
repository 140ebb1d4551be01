// The interrupt of the keyboard while a command without a window works: it finishes the frame at hand, closes its
// files, leaves no half result, and the process then ends by that signal, as whoever sent it expects.
#pragma once

#include <csignal>
#include <string_view>

namespace kelvo {

// Watches for SIGINT as long as it lives; one that is ignored by then (a job in the background) stays ignored. A second
// one ends the process at once. The end of life puts back what stood before, and where the signal came it comes again.
class InterruptWatch {
  public:
    InterruptWatch();
    ~InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;

  private:
    struct sigaction former_ = {};
    bool watches_ = false;
};

// Asked between two frames, by any thread: true once the signal has come. The command gives up then, for this reason.
bool Interrupted();
inline constexpr std::string_view kInterrupted = "interrupted";

}  // namespace kelvo
