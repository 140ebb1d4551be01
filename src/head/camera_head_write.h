// The variables behind head/camera_head.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "head/camera_head.h"

namespace kelvo {

struct RegisterVariables {
    HeadTimingRecord HeadTiming;
    FpaSerialWordRecord FpaSerialWord;
};

namespace write {
extern RegisterVariables registers;
}

}  // namespace kelvo
