// Gathering many frames, for an average, a calibration or a save, is one long command. After each frame the windows are
// painted and Escape is looked for; nothing else is dispatched until the gather has ended (platform/interrupt.h). While
// it runs "Esc stops" stands at the right of the status line.
//
//     const Gather gather(frames > 1);
//     for (each frame) {
//         if (!GatherGoesOn()) return failure;   // as where the frames don't come
//         ...
//     }
#pragma once

#include <string_view>

namespace kelvo {

// One gather; one at a time. isLong: it can be stopped. A short one is over before anyone could.
class Gather {
  public:
    explicit Gather(bool isLong);
    ~Gather();
    Gather(const Gather&) = delete;
    Gather& operator=(const Gather&) = delete;
};

// False once Escape was pressed in the gather that runs; always true where none does.
bool GatherGoesOn();
// True where the last gather ended so, until the next one begins.
bool GatherWasStopped();
// What the operator reads about a gather that gave nothing: failure, or that he stopped it.
std::string_view WhyNothingWasGathered(std::string_view failure);

// None runs, and none was stopped: for who may fail before a gather begins.
void ResetGather();

}  // namespace kelvo
