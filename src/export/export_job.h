// An export from its source to its file: what the window, the command line and scripts run.
#pragma once

#include "export/export_source.h"
#include "export/frame_sink.h"

#include <cstdint>
#include <functional>
#include <string>

namespace kelvo {

struct ExportOutcome {
    std::int64_t frames = 0;  // that stand in the file
    bool stopped = false;     // before all were there; the file has those that were, or none was made
    std::string failure;      // why there is no file; what stood under its name stands
};

// Told before each frame, and once at the end, how many are done; false stops before the next one.
using ExportProgress = std::function<bool(std::int64_t done, std::int64_t all)>;

// Writes all frames of the source; never over the file that they come from. Stopped, the file is closed with the frames
// that it has; before the first one none is made.
ExportOutcome RunExport(ExportSource& source, FrameSink& sink, const ExportProgress& progress);

}  // namespace kelvo
