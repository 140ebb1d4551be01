// The bench of the recorded camera: a small window in which the operator puts a recording in front of the camera, or
// chooses another file for one. It stays usable while a dialog is open.
#pragma once

#include "platform/types.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

HWND FileBenchWindow();  // null while it isn't open

// True while a recorded camera is connected.
bool FileBenchIsThere();
// Opens the window in the lower right corner of the main window, or brings it to the front. A recorded camera is there.
void OpenFileBench(HWND owner);
void CloseFileBench();
LRESULT fnFILEBENCHDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

// sim.source: "low", "high" or "scene", whose recording begins then; empty, or why it can't be. A recording has the
// temperature that it was made at: none can be given.
std::string PutFileBenchSource(std::string_view source, std::optional<double> value);
// sim.head: what the head's registers hold.
std::vector<std::pair<std::string, double>> FileBenchRegisters();

// The window is gone.
void ResetFileBench();

}  // namespace kelvo
