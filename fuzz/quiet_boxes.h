// A program without windows tells its boxes on the error stream, where they would drown all else. The sanitizers and
// the fuzzer write past it.
#pragma once

#include <cstdio>

namespace kelvo {

inline int QuietBoxes()
{
    stderr = std::fopen("/dev/null", "w");
    return stderr ? 0 : 1;
}

}  // namespace kelvo
