// Making a recorded sequence whole after a kill, a full disk or a cut cable: every whole frame of it is readable, and
// what was wrong is told. No window and no box.
#pragma once

#include "imagefile/frames_file.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

enum class Recovery { kClean, kRepaired, kFailed };

struct RecoveryReport {
    Recovery outcome = Recovery::kFailed;
    std::string why;  // of kFailed: "it is being recorded"
    std::int64_t frames = 0;
    std::int64_t bytesCut = 0;        // of a part of a frame at the end
    std::int64_t headerCount = 0;     // of frames, as the header had it
    std::int64_t recordsDropped = 0;  // of the journal, whose frames never reached the disk
    std::int64_t recordsMade = 0;     // that were missing or broken, from the frames themselves (kRecoveredFrame)
    bool hasJournal = false;
    bool wasClosed = false;               // the journal had its end
    bool journalWasDamaged = false;       // its head: it was made anew, the old one is kept as NAME.seq.frames.damaged
    bool diskRefused = false;             // what had to be repaired is as it was
    std::vector<std::int64_t> badFrames;  // whose pixels don't fit their checksum; they stay
    std::vector<FrameGap> gaps;
};

// Asked before each frame that is checked: how many have been, and of how many. False stops the recovery, which has
// changed nothing by then.
using RecoveryProgress = std::function<bool(std::int64_t checked, std::int64_t frames)>;

// Repairs the sequence, or with dryRun only says what it would do. Part of a frame is cut off, the header's count made
// true, the journal made to fit and closed, each frame's checksum checked. Nothing that is whole is touched; where it
// is killed itself, it can be run again. A sequence without a journal gets none. Bad frames can't be had back: kFailed,
// with everything else repaired. kFailed with "it was stopped": by the progress.
RecoveryReport RecoverSequence(std::string_view path, bool dryRun, const RecoveryProgress& progress = {});

}  // namespace kelvo
