// This machine: its wiring, and where one user's programs meet. The wiring is platform.ini beside the other settings
// files. It is a file of its own, since kelvo.ini travels inside calibration sets and the wiring of a machine must not.
#pragma once

#include <string>
#include <string_view>

namespace kelvo {

// The path of platform.ini in the program's directory (KelvoDirectory of platform/files.h).
std::string PlatformFilePath();

// A key of platform.ini; the default where it is missing.
std::string MachineSetting(std::string_view section, std::string_view key, std::string_view defaultValue);

// A directory of this user's that nobody else may enter; links aren't followed.
bool IsPrivateDirectory(const std::string& directory);

// Where this user's programs put the sockets on which they meet: a directory that nobody else may enter; empty if there
// is none. It doesn't follow from the environment, so that a start from a desktop and one from a terminal meet.
std::string SocketDirectory();

}  // namespace kelvo
