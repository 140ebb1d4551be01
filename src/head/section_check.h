// Whether a camera can be turned on with the section of the settings that describes it. Reading a section never fails;
// this is where values that would break an image are found.
#pragma once

#include <optional>
#include <string>

namespace kelvo {

// Reads the active camera's section as it stands in the file and names the first key that rules out a turn-on, with its
// value and what it must be; nullopt if there is none. Nothing is stored.
std::optional<std::string> WhyCameraCantRun();

}  // namespace kelvo
