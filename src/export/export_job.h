// An export from its source to its file: what the window, the command line and scripts run.
#pragma once

#include "export/export_source.h"
#include "export/frame_sink.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace kelvo {

struct ExportOutcome {
    std::int64_t frames = 0;  // that stand in the file
    bool stopped = false;     // before all were there; the file has those that were, or none was made
    std::string failure;  // why there is no file; what stood under its name stands. Of a file a frame, which are whole
    std::vector<std::string> files;  // that stand, in the order of the frames; one, or one a frame
};

// Told before each frame, and once at the end, how many are done; false stops before the next one.
using ExportProgress = std::function<bool(std::int64_t done, std::int64_t all)>;

// Writes all frames of the source; never over the file that they come from. Stopped, the file is closed with the frames
// that it has; before the first one none is made. Where each frame is a file those that were written before a stop or a
// failure are whole and stay.
ExportOutcome RunExport(ExportSource& source, FrameSink& sink, const ExportProgress& progress);

}  // namespace kelvo
