// A calibration set in one line, for whoever chooses among several.
#pragma once

#include <string>

namespace kelvo {

// "22 Nov 2026, 11:20    InSb 320 x 256    2.500 ms": when the .cal was last written (local time), the description of
// its camera ("Camera.3" where there is none), its integration time. That is worked out for the camera whose head is
// known; otherwise the index into its table stands, "integration 10". "Not a calibration, or it can't be read." for any
// other file. Changes nothing.
std::string DescribeSet(const std::string& calPath);

}  // namespace kelvo
