#include "video/picture_commands.h"

#include "display/color_map.h"
#include "display/display_dialog.h"
#include "display/display_pipeline.h"
#include "display/unit_list.h"
#include "resources/ids.h"
#include "state/display_state_write.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "video/video.h"

#include <cstdint>

namespace kelvo {

namespace {

CommandEnd ShowColorMap(int id)
{
    write::display.ImageColor = static_cast<std::int16_t>(id);
    SetColorMap(ImageColor);
    RedrawPicture();
    return CommandEnd::kResetStatus;
}

}  // namespace

CommandEnd FreezeFrame()
{
    ToggleLiveVideo();
    if (LiveVideo) KeepUnitAvailable();
    return CommandEnd::kResetStatus;
}

CommandEnd ShowNormalGray()
{
    return ShowColorMap(kNormalGray);
}

CommandEnd ShowInvertedGray()
{
    return ShowColorMap(kInvertedGray);
}

CommandEnd ShowNormalColor()
{
    return ShowColorMap(kNormalColor);
}

CommandEnd ShowNextColorMap()
{
    NextColorMap();
    return ShowColorMap(ImageColor);
}

CommandEnd DisplaySetup()
{
    DisplayDialog(hWndMain);
    return CommandEnd::kResetStatus;
}

}  // namespace kelvo
