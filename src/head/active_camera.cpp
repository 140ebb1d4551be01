#include "head/active_camera.h"

#include "grabber/board.h"
#include "head/comm_link.h"

namespace kelvo {

void ReadActiveCamera()
{
    const std::int32_t port = CommPortNumber();
    ReadActiveSection();
    if (CommPortNumber() != port) CloseCommLink();
}

}  // namespace kelvo
