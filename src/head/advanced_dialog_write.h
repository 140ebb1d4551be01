// The variables behind head/advanced_dialog.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "head/advanced_dialog.h"

namespace kelvo {

struct PixelOrderVariables {
    std::int32_t AdPixelOrder = 1;
};

namespace write {
extern PixelOrderVariables pixelOrder;
}

}  // namespace kelvo
