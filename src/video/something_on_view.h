// Whether there is a frame to work on.
#pragma once

#include <string_view>

namespace kelvo {

// A file is on view or the camera is on. False after the reason is told on the status line: "There is nothing to
// measure: open an image or turn the camera on", with the verb that is handed in.
bool SomethingOnView(std::string_view verb);

}  // namespace kelvo
