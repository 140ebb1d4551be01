// The frame account: what the board delivered and what became of it. Silent loss is what a measurement can't afford.
//
// Lost = delivered minus read while the live cycle or a burst runs. Frames that pass while a dialog or a long command
// holds the cycle up are counted apart, as missed. Delivered = read + lost + missed + waiting; a frame that is read is
// shown by the live cycle, or used by who records.
//
// While a capture runs (grabber/capture.h) its own counts hold, for every frame is in its hands: what it recorded is
// used, what it passed over on purpose is missed, and frames that wait in its ring are counted apart. The live view
// takes nothing away from it: it only counts what it shows.
//
// The board counts from 0 with each grab: whoever starts or stops one, or changes the frame's size, first has the
// account take what was delivered so far (AccountCycleStops).
#pragma once

#include <cstdint>

namespace kelvo {

struct FrameAccount {
    std::int64_t delivered = 0;  // by the board since the account began
    std::int64_t shown = 0;
    std::int64_t used = 0;  // by averaging, in bursts
    std::int64_t lost = 0;  // between two reads of a running live cycle or burst, not readable, or by the transport
    std::int64_t lostByTransport = 0;  // of the lost ones: damaged or gone on the way to the board, at any time
    std::int64_t missed = 0;           // during dialogs and long commands, or left out on purpose
    std::int64_t waiting = 0;          // in the ring of a capture that runs
    bool lostIsKnown = true;  // false: the board doesn't count, and delivered and lost tell only of what was read
    double deliveredHz = 0;   // over about the last second; 0 once no frame has been read for two
    double shownHz = 0;
};

FrameAccount CurrentFrameAccount();
void ClearFrameAccount();  // what the board has delivered by then isn't told any more

// The live cycle stops here: what was delivered since the last read was never read and is told now, as lost while the
// cycle ran; what passes from here to the next read is missed. To be called before each start and stop of the grab,
// before the frame changes its size, before a box.
void AccountCycleStops();
// A dialog or a long command stood between the last read and the next: what passes between the two counts as missed.
void AccountHeldUp();

// A dialog or a long command that holds the cycle up for as long as it lives, whatever it reads itself.
class CycleHoldUp {
  public:
    CycleHoldUp();
    ~CycleHoldUp();
    CycleHoldUp(const CycleHoldUp&) = delete;
    CycleHoldUp& operator=(const CycleHoldUp&) = delete;
};

// The grab has been started: the board counts from 0.
void AccountGrabStarted();
// A frame has been read by the live cycle; shown: it was drawn too.
void AccountFrameRead(bool shown);
// A frame has been read by a burst, which has its own cycle: what passes before its next read is lost.
void AccountFrameUsed();
// The newest frame came but couldn't be read: it is lost.
void AccountReadFailed();

// A capture begins; it has ended.
void AccountCaptureBegins();
void AccountCaptureEnds();

// As at start; ClearFrameAccount begins a new count in a running program.
void ResetFrameAccount();

}  // namespace kelvo
