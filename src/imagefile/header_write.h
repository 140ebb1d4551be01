// The variables behind imagefile/header.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "imagefile/header.h"

namespace kelvo {

struct HeaderVariables {
    ImageHeaderRecord ImageHeader;
    SpiffHeaderRecord SpiffHeader;
    std::uint32_t ByteSwap = 0xFFFF;
    std::int32_t IrigEnable = 0;
};

namespace write {
extern HeaderVariables file;
}

// As at the start of the program.
void ResetHeader();

}  // namespace kelvo
