// Paper: one picture on one page of the default printer.
//
// The machine's wiring (platform.ini) may name a file instead: with File= in section [Printer] each print is written
// there as a PDF page, the former one replaced. Offscreen there is no printer, only such a file.
#pragma once

#include "platform/paint.h"

#include <string_view>

namespace kelvo {

// As wide as the page, in the picture's own proportions, from the top left; a picture that would be taller than the
// page is as tall as it instead. The transcript tells {"kind":"print","text":title}. False, with nothing printed, where
// there is no printer, the file can't be made, or the picture is empty. Blocks until the page is handed over.
bool PrintPicture(const DeviceBitmap& picture, std::string_view title);

}  // namespace kelvo
