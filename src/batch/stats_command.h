// "kelvo stats FILE": what regions of a file measure in each of its frames, as a table or as JSON.
#pragma once

#include <span>
#include <string>

namespace kelvo {

// stats [options] FILE: 0, or 2 with the reason on the error stream. A line for each frame and region on the standard
// output, frames in order; lines that were written before a frame couldn't be read stand.
//
// Values are those of regions/region_measure.h and regions/region_value.h: a mean and a deviation in double, least and
// most as single. Two threads share the frames, so that it goes about as fast as a disk delivers the file.
int StatsCommand(std::span<const std::string> arguments);

}  // namespace kelvo
