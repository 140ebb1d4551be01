#include "head/active_camera.h"

#include "config/camera_config.h"
#include "config/settings.h"
#include "grabber/board.h"
#include "head/comm_link.h"

namespace kelvo {

void ReadActiveCamera()
{
    const std::int32_t port = CommPortNumber();
    const std::int32_t columns = ActiveConfig.Hroi;
    const std::int32_t rows = ActiveConfig.Vroi;
    const bool wasRead = columns != 0 || rows != 0;
    ReadCameraConfig(ActiveCamera, 1, ActiveConfig);
    if (CommPortNumber() != port) CloseCommLink();
    if (!wasRead) return;
    if (ActiveConfig.Hroi != columns || ActiveConfig.Vroi != rows) FrameSizeChanged();
}

}  // namespace kelvo
