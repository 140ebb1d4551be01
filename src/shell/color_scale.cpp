#include "shell/color_scale.h"

#include "display/color_map.h"
#include "display/display_pipeline_write.h"
#include "display/scale_line.h"
#include "display/scale_ticks.h"
#include "platform/menu.h"
#include "platform/paint.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "resources/ids.h"
#include "state/display_state.h"
#include "state/windows.h"
#include "ui/docking.h"
#include "ui/view_switch.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <numeric>

namespace kelvo {

namespace {

constexpr ViewSwitch kSwitch{kCmdViewColorScale, "ColorScale"};
constexpr std::uint32_t kFollowTimer = 1;
constexpr std::int64_t kFollowMs = 250;

constexpr int kWidth = 116;  // logical pixels

// What the scale shows: painted again when one of them changes.
struct Shown {
    Rect place;
    CountRange counts;
    double lowValue = 0;
    double highValue = 0;
    std::int32_t unit = -1;
    std::uint32_t mapGeneration = 0;
    friend bool operator==(const Shown&, const Shown&) = default;
};

HWND scaleWindow = nullptr;
Shown shown;

Rect PlaceInMain()
{
    const Rect seen = GetPictureArea(hWndMain);
    const int top = std::max(seen.top, PanelHeight());
    const int bottom = std::min(seen.bottom, ClientHeight - TextHeight);
    return {std::max(seen.right - kWidth, 0), top, seen.right, std::max(top, bottom)};
}

int LabelHeight()
{
    return TextLineHeight(scaleWindow);
}

void PaintBar(const ScaleBar& bar)
{
    const std::span<const std::uint8_t> map = ReadyColorMap();
    if (map.size() < kColorMapBytes) return;
    std::array<std::uint8_t, kColorMapEntries> grays{};
    std::iota(grays.rbegin(), grays.rend(), std::uint8_t{0});  // the last colour on top
    std::array<std::uint32_t, kColorMapEntries> colors{};
    for (std::size_t i = 0; i < colors.size(); ++i) {
        colors[i] =
            std::uint32_t{map[kRedPlane + i]} << 16 | std::uint32_t{map[kGreenPlane + i]} << 8 | map[kBluePlane + i];
    }
    StretchPixels(scaleWindow, {kScaleBarLeft, bar.top, kScaleBarRight, bar.bottom},
                  {grays.data(), 1, 1, static_cast<int>(grays.size()), colors.data()});
}

void PaintTicks(const ScaleBar& bar)
{
    const ScaleLine line = ScaleLineOnView(shown.counts, shown.unit);
    for (const ScaleTick& tick : PlaceScaleTicks(line, bar.top, bar.bottom, LabelHeight())) {
        FillSurface(scaleWindow, {kScaleBarRight, tick.y, kScaleTickRight, tick.y + 1}, kScaleInk);
        DrawTextLine(scaleWindow, kScaleLabelLeft, tick.y - LabelHeight() / 2, tick.label, TextAlign::kLeft, kScaleInk,
                     kScaleGround);
    }
}

void PaintScale()
{
    const Rect client = GetClientRect(scaleWindow);
    FillSurface(scaleWindow, client, kScaleGround);
    const ScaleBar bar = PlaceScaleBar(client.Height(), LabelHeight());
    if (client.Height() < kScaleLeastLines * LabelHeight()) return;
    DrawTextLine(scaleWindow, kScaleBarLeft, kScaleTitleTop, ScaleTitleOnView(shown.unit), TextAlign::kLeft, kScaleInk,
                 kScaleGround);
    PaintBar(bar);
    PaintTicks(bar);
}

Shown StateOnView()
{
    Shown state;
    state.place = PlaceInMain();
    state.counts = SpreadCountsOnView();
    state.unit = ReadableUnit(DisplayUnit);
    const ScaleLine line = ScaleLineOnView(state.counts, state.unit);
    state.lowValue = line.lowValue;
    state.highValue = line.highValue;
    state.mapGeneration = ColorMapGeneration();
    return state;
}

// What the pointer does over the scale it does over the picture beneath.
LRESULT HandToPicture(std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    const auto at = static_cast<WPARAM>(lParam);
    const Point origin = GetScrollOrigin(hWndMain);
    return SendMessage(hWndMain, message, wParam,
                       static_cast<LPARAM>(MakeLong(SignedLowWord(at) + shown.place.left + origin.x,
                                                    SignedHighWord(at) + shown.place.top + origin.y)));
}

LRESULT ColorScaleProc(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
        case WM_PAINT:
            PaintScale();
            return 0;
        case WM_TIMER:
            FollowDisplay();
            return 0;
        case WM_MOUSEMOVE:
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
        case WM_RBUTTONDOWN:
        case WM_MBUTTONDOWN:
        case WM_MBUTTONUP:
        case WM_MOUSEWHEEL:
            return HandToPicture(message, wParam, lParam);
        case WM_DESTROY:
            scaleWindow = nullptr;
            return 0;
        default:
            return DefWindowProc(window, message, wParam, lParam);
    }
}

void PaintLayer(bool /*newFrame*/)
{
    FollowDisplay();
}

void Show()
{
    RegisterWindowClass({"ColorScaleClass", ColorScaleProc, {}, false, kScaleGround});
    write::picture.PictureRightMargin = kWidth;
    scaleWindow = CreateChildWindow("ColorScaleClass", hWndMain, PlaceInMain());
    if (!scaleWindow) return;
    shown = {};
    FollowDisplay();
    SetTimer(scaleWindow, kFollowTimer, kFollowMs);
    AddPictureLayer(PaintLayer);
    RepaintPicture();
}

void Hide()
{
    RemovePictureLayer(PaintLayer);
    write::picture.PictureRightMargin = 0;
    DestroyWindow(scaleWindow);
    scaleWindow = nullptr;
    RepaintPicture();
}

}  // namespace

void OpenColorScale()
{
    const bool on = ViewSwitchIsOn(kSwitch);
    CheckMenuItem(hWndMain, kCmdViewColorScale, on);
    if (on) Show();
}

void ToggleColorScale()
{
    if (scaleWindow) {
        Hide();
    } else {
        Show();
    }
    KeepViewSwitch(kSwitch, scaleWindow != nullptr);
}

void PlaceColorScale()
{
    FollowDisplay();
}

void FollowDisplay()
{
    if (!scaleWindow) return;
    const Shown state = StateOnView();
    if (state == shown) return;
    if (state.place != shown.place) MoveWindow(scaleWindow, state.place);
    shown = state;
    InvalidateRect(scaleWindow, nullptr, false);
}

void ResetColorScale()
{
    scaleWindow = nullptr;
    shown = {};
}

}  // namespace kelvo
