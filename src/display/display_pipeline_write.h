// The variables behind display/display_pipeline.h, for those who write them: tests/structure/state_writers.txt lists
// them.
#pragma once

#include "display/display_pipeline.h"

namespace kelvo {

struct PictureVariables {
    Dib FrameBitmap;
    std::int32_t PictureRightMargin = 0;
    std::int32_t PictureBottomMargin = 0;
};

namespace write {
extern PictureVariables picture;
}

}  // namespace kelvo
