// The start that only sends the external signal.
#pragma once

#include <string>

namespace kelvo {

// Sends it to the Kelvo that holds the data directory. The process's exit code: 0; 4 where none runs there, which is
// told on the error stream. Needs no application.
int SendSignalTo(const std::string& dataDirectory);

}  // namespace kelvo
