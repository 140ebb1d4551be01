// The order in which the simulated focal plane sends its pixels: how many channels there are, and which part of a line
// each one reads.
#pragma once

#include <cstdint>
#include <vector>

namespace kelvo {

// For each sample of the readout, in time, the pixel of the window that it carries (row x columns + column). rows and
// columns are multiples of 8. scheme is the number that the camera section calls DecomScheme:
// 1, 4  two channels side by side: the left half of the line on even samples, the right half on odd ones
// 5     the same with the channels exchanged
// 6     two lines at once, sample by sample
// 7     four channels, a quarter of the line each
// 8     column by column from the middle of the array outward, above and below in turn; the four lines of a group start
//       one column after each other
// any other: one channel, line by line
// flipColumns sends each line from its right end, flipRows the lines from the last: the channels then take their parts
// of the line as it is sent.
std::vector<std::uint32_t> ReadoutOrder(std::int32_t scheme, std::int32_t rows, std::int32_t columns, bool flipRows,
                                        bool flipColumns);

}  // namespace kelvo
