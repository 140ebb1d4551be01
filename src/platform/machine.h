// The wiring of this machine: platform.ini beside the other settings files. It is a file of its own, since kelvo.ini
// travels inside calibration sets and the wiring of a machine must not.
#pragma once

#include <string>
#include <string_view>

namespace kelvo {

// The path of platform.ini in the program's directory (KelvoDirectory of platform/files.h).
std::string PlatformFilePath();

// A key of platform.ini; the default where it is missing.
std::string MachineSetting(std::string_view section, std::string_view key, std::string_view defaultValue);

}  // namespace kelvo
