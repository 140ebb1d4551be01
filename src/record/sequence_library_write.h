// The variables behind record/sequence_library.h, for those who write them: tests/structure/state_writers.txt lists
// them.
#pragma once

#include "record/sequence_library.h"

namespace kelvo {

struct SequenceLibraryVariables {
    std::array<SubSeqRecord, kSubSequences> SubSeqList;
    std::array<SeqRecord, kSequences> SeqList;
    std::int32_t SubSeqNum = 0;
    std::int32_t SeqNum = 0;
    bool read = false;
};

namespace write {
extern SequenceLibraryVariables sequences;
}

}  // namespace kelvo
