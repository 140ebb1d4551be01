// The variables behind pixel/bad_pixels.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "pixel/bad_pixels.h"

namespace kelvo {

struct BadPixelVariables {
    BadDetMap BadDetList;
    std::vector<std::uint32_t> ReplacedPixels;
};

namespace write {
extern BadPixelVariables badPixels;
}

}  // namespace kelvo
