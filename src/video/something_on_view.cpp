#include "video/something_on_view.h"

#include "state/frame_state.h"
#include "ui/status.h"

#include <string>

namespace kelvo {

bool SomethingOnView(std::string_view verb)
{
    if (ViewingFile || CameraOn) return true;
    StatusMessage("There is nothing to " + std::string(verb) + ": open an image or turn the camera on", kLeftAligned);
    return false;
}

}  // namespace kelvo
