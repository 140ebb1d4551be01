// The variables behind grabber/board_state.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "grabber/board_state.h"

namespace kelvo {

struct BoardVariables {
    BoardModule IcpModule = 0;
    BoardModule AcqModule = 0;
    BoardModule CmpModule = 0;
    BoardModule CmClu = 0;
    BoardModule CmMmp = 0;
    BoardModule CmHf = 0;
    BoardModule CmPa = 0;
    BoardModule CmMem = 0;
    BoardFrame FrameA = kNoBoardFrame;
    std::int32_t FramePitch = 0;
    std::int32_t FrameRows = 0;
    std::int32_t DataOffset = 0;
    std::vector<std::uint8_t> VideoCopy;
};

namespace write {
extern BoardVariables board;
}

}  // namespace kelvo
