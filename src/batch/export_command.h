// "kelvo export IN OUT": frames of a file for other programs, without a window.
#pragma once

#include <span>
#include <string>

namespace kelvo {

// The arguments behind the word. 0; 1 where it was stopped (Ctrl+C) and OUT, or each of several files, has the frames
// up to there, or where it was stopped before the first one; 2 with the reason on the error stream, where the progress
// is shown too. With --json the standard output gets an object a file: "file", "format", "form", "unit", of a region
// "region", "frames", "stopped". Traces (batch/export_traces.h) that are stopped end as TellBatchFailure has it.
int ExportCommand(std::span<const std::string> arguments);

}  // namespace kelvo
