// An export from its source to its files: what the window, the command line and scripts run.
#pragma once

#include "export/export_source.h"
#include "export/frame_sink.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace kelvo {

struct ExportOutcome {
    std::int64_t frames = 0;  // that stand in each file, or as files
    bool stopped = false;     // before all were there; the files have those that were, or none was made
    std::string failure;      // why it isn't whole; what stood under a name that isn't one of files stands
    // That stand whole, part by part and in the order of the frames: one a part, or one a frame.
    std::vector<std::string> files;
};

// Told before each frame, and once at the end, how many are done; false stops before the next one.
using ExportProgress = std::function<bool(std::int64_t done, std::int64_t all)>;

// Writes all frames of the source; never over the file that they come from. Stopped, the file is closed with the frames
// that it has; before the first one none is made. Where each frame is a file those that were written before a stop or a
// failure are whole and stay.
ExportOutcome RunExport(ExportSource& source, FrameSink& sink, const ExportProgress& progress);

// The same of a source of several parts, a file each, as many sinks as parts: all files have the same frames, and
// unless all can be written none is. Where the last step of one fails, taking its name, those before it stand, which
// the failure then says.
ExportOutcome RunExport(ExportSource& source, std::span<const std::unique_ptr<FrameSink>> sinks,
                        const ExportProgress& progress);

// "x-spot.tif" of "x.tif" for a region "spot", one of each. What can't stand in a name of a file, on this machine or
// another, is a low line there: separators, : * ? " < > |; of names that are then alike, whatever their case, the later
// ones end in "-2", "-3".
std::vector<std::string> PathsOfRegions(const std::string& path, std::span<const Region> regions);

}  // namespace kelvo
