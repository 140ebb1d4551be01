// GigE Vision and USB3 Vision cameras as board and head. The head is "genicam:DEVICE" at a serial port of platform.ini,
// where DEVICE is a serial number, an address or the transport's name, or nothing for the first camera that is found.
// The board is "genicam"; the file that a section's cnfFile names may choose the camera and how it is read:
//
//     [GenICam]
//     Device=192.168.1.20    ; as behind "genicam:"; without it, or without the file, the camera of the head
//     Format=Mono12p         ; of its pixels; without it the one that the camera has
//     PacketSize=8000        ; bytes; 0, as without it: the largest that comes through
//     Buffers=32             ; of a frame each, 24 to 512
//     Pedestal=32768         ; counts that are taken off, 0 to 65535
//     Shift=1                ; bits to the right, 0 to 8; without both: 1 for 16 bits, otherwise 0
#pragma once

#include "genicam/camera_device.h"
#include "genicam/shared_camera.h"

#include <memory>
#include <optional>
#include <string>

namespace kelvo {

// Makes "genicam:DEVICE" ports known to platform/serial.h, and the board "genicam" to grabber/copm2.h.
void RegisterGenicamHeads();
void RegisterGenicamBoard();

// The camera of a device; whoever names the same device gets the same camera. It isn't opened yet.
std::shared_ptr<SharedCamera> GenicamCamera(const std::string& device);

struct BoardFile {
    std::optional<std::string> device;  // nullopt: the head's camera
    DeviceSettings settings;
};
// A file by its whole path, "" for none. nullopt, with a sentence in error, where a value isn't one.
std::optional<BoardFile> ReadBoardFile(const std::string& path, std::string& error);

// Cameras are opened by this one from now on; an empty one: by Aravis again. For tests.
void SetCameraOpener(CameraOpener opener);

// No camera is known, none is open; cameras are opened by Aravis.
void ResetGenicam();

}  // namespace kelvo
