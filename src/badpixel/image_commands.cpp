#include "badpixel/image_commands.h"

#include "badpixel/geometry_dialog.h"
#include "calib/orientation.h"
#include "state/display_state.h"
#include "state/windows.h"
#include "ui/menu_state.h"

namespace kelvo {

CommandEnd ImageSetup()
{
    GeometryDialog(hWndMain);
    ShowReplacementInMenu(SubstBadPixels != 0);
    return CommandEnd::kResetStatus;
}

CommandEnd ReplaceBadPixels()
{
    ToggleBadPixelReplacement(hWndMain);
    return CommandEnd::kResetStatus;
}

}  // namespace kelvo
