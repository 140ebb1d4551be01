// The frame account: what the board delivered and what became of it. Silent loss is what a measurement can't afford.
//
// Lost = delivered minus read while the live cycle runs. Frames that pass while a dialog or a long command holds the
// cycle up are counted apart, as missed.
#pragma once

#include <cstdint>

namespace kelvo {

struct FrameAccount {
    std::int64_t delivered = 0;  // by the board since the account began
    std::int64_t shown = 0;
    std::int64_t lost = 0;    // between two reads of a running live cycle
    std::int64_t missed = 0;  // during dialogs and long commands
    double deliveredHz = 0;   // over about the last second; 0 once no frame has been read for two
    double shownHz = 0;
};

const FrameAccount& CurrentFrameAccount();
void ClearFrameAccount();

// The grab has been started: the board counts from 0.
void AccountGrabStarted();
// A frame has been read by the live cycle; shown: it was drawn too.
void AccountFrameRead(bool shown);
// A dialog or a long command stood between the last read and the next: what passes between the two counts as missed.
void AccountHeldUp();

// As at start; ClearFrameAccount begins a new count in a running program.
void ResetFrameAccount();

}  // namespace kelvo
