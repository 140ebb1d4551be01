// The operator's hand on the picture's own scroll bars (SetScrollExtent): what the main window hears of it.
#pragma once

#include <cstdint>

namespace kelvo {

// wParam: a PictureScroll. Each move of the picture comes between kStep and kEnds, which may stand between kThumbTaken
// and its own kEnds.
constexpr std::uint32_t WM_PICTURESCROLL = 0x0118;

enum class PictureScroll : std::uint32_t { kEnds, kThumbTaken, kStep };

}  // namespace kelvo
