// The look of the program's own themes: one style, a light and a dark set of colours.
#pragma once

#include "platform/application.h"

namespace kelvo {

// Sets style and colours for the whole application. kDesktop is the desktop's look as it was found; where there is no
// desktop, the light one.
void ApplyTheme(Theme theme);

}  // namespace kelvo
