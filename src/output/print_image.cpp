#include "output/print_image.h"

#include "dibapi32/dibapi32.h"
#include "platform/box.h"
#include "platform/print.h"
#include "platform/window.h"

namespace kelvo {

int PrintImage(HWND window)
{
    const auto picture = CaptureWindowBitmap(window, kCaptureWindow);
    if (picture && PrintPicture(*picture, GetWindowText(window))) return 1;
    MessageBox(window, "The plot could not be printed.\nIs there a printer that is switched on?", kMessageCaption);
    return 0;
}

}  // namespace kelvo
