// Traces of regions over the frames of a file.
#pragma once

#include "imagefile/stored_frames.h"
#include "regions/region.h"
#include "regions/trace.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

namespace kelvo {

// Both included, from 0; a last one below 0 is the file's last.
struct StoredRange {
    std::int64_t first = 0;
    std::int64_t last = -1;
};

struct FileTraceOptions {
    StoredRange range{};
    // Non-zero for each pixel, image order, that is left out; empty: none is. And who says so, for the trace's origin.
    std::span<const std::uint8_t> bad{};
    std::string badBy{};
};

// Called about ten times a second with the frames that have been read, of how many; false: it shall stop.
using TraceProgress = std::function<bool(std::int64_t read, std::int64_t of)>;

// One point for each frame of the range, of the counts that viewing the file shows. Times and missing frames are those
// of the journal where it tells of every frame of the range; otherwise the frames follow each other at the header's
// rate, and without one no time is known. Its units are those of the file's header; not while another UnitScope lives.
// nullopt with a sentence in why: the range lies outside of the file, a region outside of its frames or has but bad
// pixels, a frame can't be read, memory is refused; with an empty one where progress stopped it. Blocks.
std::optional<Trace> TraceOfFile(StoredFrames& file, std::span<const Region> regions, const FileTraceOptions& options,
                                 const TraceProgress& progress, std::string& why);

}  // namespace kelvo
