// The bench: a small window in which the operator puts a source in front of the simulated camera. It stays usable while
// a dialog is open.
#pragma once

#include "platform/types.h"

#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

// Opens the window, or brings it to the front; tells in a box where there is no simulated camera.
void OpenBenchWindow(HWND owner);
void CloseBenchWindow();

// sim.source: "low", "high", "scene" or "raw", at a temperature in °C if one is given; empty, or why it can't be.
std::string PutBenchSource(std::string_view source, std::optional<double> degrees);

}  // namespace kelvo
