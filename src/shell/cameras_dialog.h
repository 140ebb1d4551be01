// The dialog CAMERAS: the GenICam cameras in reach, what each says of itself with a still picture, and the one chosen
// made this machine's camera. What is written and which settings follow is genicam/camera_wiring.h and
// genicam/camera_section.h.
#pragma once

#include "platform/types.h"
#include "ui/command_end.h"

namespace kelvo {

constexpr int kCamerasList = 22601;     // "Kelvo Loopback, KELVO1, 127.0.0.1", in the order of FindCameras
constexpr int kCamerasSearch = 22602;   // looks anew
constexpr int kCamerasPicture = 22603;  // of the camera that is chosen
constexpr int kCamerasText = 22604;     // what it says, and what the network lacks
constexpr int kCamerasFormat = 22605;   // the pixel formats that Kelvo takes, the deepest first
constexpr int kCamerasState = 22606;    // "2 cameras found"

// Command 2260. Cameras are looked for once the dialog is open, and asked when they are chosen; both block some
// seconds. Ok asks before anything is written, writes all or nothing, and begins again with the new camera
// (RestartWithCamera); a camera that is on has to be turned off before. Cancel changes nothing.
CommandEnd OpenCameras();
LRESULT fnCAMERASDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

}  // namespace kelvo
