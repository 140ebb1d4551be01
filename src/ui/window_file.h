// window.ini of StateDir: how the windows look on this machine. Its place and size, the theme and the switches of the
// View menu belong to the workstation, not to a calibration: no calibration set carries them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo {

std::string WindowFilePath();
// A key that is missing gives the default, and so does a file that can't be read.
std::int32_t WindowFileInt(std::string_view section, std::string_view key, std::int32_t defaultValue);
std::string WindowFileText(std::string_view section, std::string_view key);  // default empty
// Nothing is written where the key has the value already.
void WriteWindowFile(std::string_view section, std::string_view key, std::string_view value);

}  // namespace kelvo
