#include "ui/scroll_rule.h"

#include "platform/window.h"

#include <algorithm>

namespace kelvo {

namespace {

int PageStep(const ScrollBarState& bar)
{
    return std::max((bar.maximum - bar.minimum + 1) / 16, 2);
}

ScrollKeys HeldKeys()
{
    return {KeyIsDown(Key::kUp), KeyIsDown(Key::kDown), KeyIsDown(Key::kPageUp), KeyIsDown(Key::kPageDown)};
}

}  // namespace

int ScrolledPosition(const ScrollBarState& bar, bool horizontal, ScrollCode code, int thumb, const ScrollKeys& keys)
{
    const auto moved = [&](int step, bool turnedAbout) { return bar.position + (turnedAbout ? -step : step); };

    int position = bar.position;
    switch (code) {
        case ScrollCode::kLineUp:
            position = moved(-1, horizontal && keys.up);
            break;
        case ScrollCode::kLineDown:
            position = moved(1, horizontal && keys.down);
            break;
        case ScrollCode::kPageUp:
            position = moved(-PageStep(bar), horizontal && keys.pageUp);
            break;
        case ScrollCode::kPageDown:
            position = moved(PageStep(bar), horizontal && keys.pageDown);
            break;
        case ScrollCode::kThumbPosition:
        case ScrollCode::kThumbTrack:
            position = thumb;
            break;
        case ScrollCode::kTop:
            position = bar.minimum;
            break;
        case ScrollCode::kBottom:
            position = bar.maximum;
            break;
        case ScrollCode::kEnd:
            break;
    }
    return std::max(std::min(position, bar.maximum), bar.minimum);
}

int ScrollTo(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    const int bar = static_cast<int>(lParam);
    const ScrollBarState state{GetScrollMin(dialog, bar), GetScrollMax(dialog, bar), GetScrollPos(dialog, bar)};
    const int position = ScrolledPosition(state, message == WM_HSCROLL, static_cast<ScrollCode>(LowWord(wParam)),
                                          SignedHighWord(wParam), HeldKeys());
    SetScrollPos(dialog, bar, position);
    return position;
}

}  // namespace kelvo
