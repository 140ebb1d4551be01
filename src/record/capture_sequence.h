// The burst: frames of a sequence straight into the host frames, at the rate of the camera, none lost in between.
#pragma once

#include "record/sequence_library.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace kelvo {

// Results of a burst below 0.
inline constexpr int kBurstNoStore = -7;           // no host frames, or no memory for the ring
inline constexpr int kBurstWholeRate = -8;         // the whole part of the rate is below 0
inline constexpr int kBurstTrigger = -9;           // a later subsequence has a trigger other than 0, 2 and 3
inline constexpr int kBurstNoFrame = -10;          // no frame came within two seconds
inline constexpr int kBurstFrameUnreadable = -11;  // one came that couldn't be read
inline constexpr int kBurstRate = -13;             // the rate is below 0

// What the last burst stored: also where it ended early.
struct Burst {
    std::int32_t firstSlot = 0;
    std::int32_t frames = 0;  // stored
    double seconds = 0;       // it took, in whole milliseconds
    double MegabytesPerSecond() const;
};
const Burst& LastBurst();

// Stores the subsequences that the letters of composition name in list, one after the other, from slot HostFrameNext
// on; behind the last slot (numBufFrames - 1) it goes on at slot 0. Of each subsequence Frames frames are stored, each
// Skip frames apart, which are passed over: frame times 0, Skip + 1, 2 (Skip + 1), ... A composition without a letter
// stores nothing and gives 1.
//
// Live video runs. A frame is stored as the camera's picture without its calibration: image order, with DataOffset,
// and nothing drawn into it; nothing is shown meanwhile. Afterwards, where a calibration is in force, the slots from
// the first one on below the number of frames of this burst are corrected in place: all of them for a burst into an
// empty store, and not those of one that is appended behind as many frames or more. " Captured %u frames to Host RAM
// in %6.3f seconds (%6.3f MB/s)." stands on the status line.
//
// 1; also where Escape ended it (ui/gather.h), with the frames that were stored by then. Otherwise a code above, and
// nothing is told but that memory was refused: the frames before the failure are stored, uncorrected. After
// kBurstTrigger CalType stays 0. Blocks; a Recording while it runs.
int CaptureSequence(float frameRate, int wholeRate, std::string_view composition, std::span<const SubSeqRecord> list);

// No burst yet.
void ResetCaptureSequence();

}  // namespace kelvo
