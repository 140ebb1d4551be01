// "kelvo recover FILE...": after a kill, a full disk or a cut cable every whole frame of a sequence is readable, and
// told.
#pragma once

#include "imagefile/frames_file.h"

#include <cstdint>
#include <span>
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
    std::vector<std::int64_t> badFrames;  // whose pixels don't fit their checksum; they stay
    std::vector<FrameGap> gaps;
};

// Repairs the sequence, or with dryRun only says what it would do. Part of a frame is cut off, the header's count made
// true, the journal made to fit and closed, each frame's checksum checked. Nothing that is whole is touched; where it
// is killed itself, it can be run again. A sequence without a journal gets none. Bad frames can't be had back: kFailed,
// with everything else repaired.
RecoveryReport RecoverSequence(std::string_view path, bool dryRun);

// recover [--dry-run] [--json] FILE...: 0 all clean, 1 something was (or would be) repaired, 2 something can't. With
// --json an object a line and file.
int RecoverCommand(std::span<const std::string> arguments);

}  // namespace kelvo
