// "kelvo export --traces": what regions of a file measure frame by frame, as the window of traces saves it.
#pragma once

#include "regions/region.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

struct TracesWish {
    std::string in;
    std::string out;
    std::vector<Region> regions{};  // none: the whole picture, as "picture"
    // Frames from 0, and one behind the last; below 0: to the end.
    std::pair<std::int64_t, std::int64_t> frames = {0, -1};
    bool replace = false;
};

// Measures (regions/trace_file.h) and writes the text of TraceCsv (analysis/trace_csv.h), in UTF-8, with the progress
// on the error stream. frames becomes the number of frames traced. The reason where it can't be, or interrupted: what
// stood under the name stands, and of a new one nothing does.
std::optional<std::string> ExportTraces(const TracesWish& wish, std::int64_t& frames);

}  // namespace kelvo
