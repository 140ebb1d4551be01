// The variables behind video/image_cursor.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "video/image_cursor.h"

namespace kelvo {

struct TrackballVariables {
    std::int32_t TrackballMode = 0;
};

namespace write {
extern TrackballVariables trackball;
}

}  // namespace kelvo
