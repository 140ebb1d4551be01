// GigE Vision and USB3 Vision cameras by Aravis.
#pragma once

#include "genicam/camera_device.h"

#include <memory>
#include <string>

namespace kelvo {

// A CameraOpener. It looks the cameras of this machine's networks up, which takes about a second where the device isn't
// an address.
std::unique_ptr<CameraDevice> OpenAravisCamera(const std::string& device, const DeviceSettings& settings,
                                               std::string& error);

}  // namespace kelvo
