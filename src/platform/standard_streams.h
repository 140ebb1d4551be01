// The three streams with which a process begins, as whoever started it left them.
#pragma once

#include <string_view>

namespace kelvo {

// Before the first file is opened. A stream that was closed (a shell's ">&-") gets something in its place that gives
// and takes nothing, so that no file of ours becomes that stream and has told texts in the midst of its frames. What is
// written to it fails, as it would have.
void HoldStandardStreams();

// Writes to the error stream, and waits where that is a pipe that is full. A reader that has gone, or a signal, ends
// the writing and nothing else: what is told on the way isn't worth the work.
void WriteErrorStream(std::string_view text);

}  // namespace kelvo
