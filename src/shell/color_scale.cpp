#include "shell/color_scale.h"

#include "display/color_map.h"
#include "display/difference_view.h"
#include "display/display_pipeline_write.h"
#include "display/units.h"
#include "imagefile/header.h"
#include "platform/menu.h"
#include "platform/paint.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "resources/ids.h"
#include "state/display_state.h"
#include "state/frame_state.h"
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

// One dark ground in all themes: colours are judged against it.
constexpr ColorRef kGround = 0x00262626;
constexpr ColorRef kInk = 0x00E6E6E6;

// Logical pixels.
constexpr int kWidth = 116;
constexpr int kBarLeft = 12;
constexpr int kBarRight = 36;
constexpr int kTickRight = 42;
constexpr int kLabelLeft = 47;
constexpr int kTitleTop = 6;
constexpr int kLeastLines = 6;  // a window lower than that many lines of text has no scale

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

// A window's lists of units may be open: nothing is refilled here.
std::int32_t UnitOnView()
{
    if (IsUnitAvailable(DisplayUnit)) return DisplayUnit;
    for (std::int32_t unit = 0; unit < kUnitCount; ++unit) {
        if (IsUnitAvailable(unit)) return unit;
    }
    return kUnitCounts;
}

bool ValuesAreCounts(const ScaleLine& line)
{
    return line.lowValue == line.counts.low && line.highValue == line.counts.high;
}

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

struct BarPlace {
    int top = 0;
    int bottom = 0;
};

// Below the title, with room for half a label at each end.
BarPlace PlaceBar(int height)
{
    const int line = LabelHeight();
    return {kTitleTop + line + line, height - line};
}

std::string TitleOf(std::int32_t unit)
{
    std::string name;
    std::string text;
    GetUnitName(unit, name, text);
    const std::string title = text.empty() ? name : text;
    return DifferenceOnView() ? "+/- " + title : title;
}

void PaintBar(const BarPlace& bar)
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
    StretchPixels(scaleWindow, {kBarLeft, bar.top, kBarRight, bar.bottom},
                  {grays.data(), 1, 1, static_cast<int>(grays.size()), colors.data()});
}

// Of a difference on view the values above and below none.
ScaleLine LineShown(CountRange counts, std::int32_t unit)
{
    ScaleLine line = ScaleLineOf(counts, unit);
    if (!DifferenceOnView()) return line;
    const auto none = static_cast<double>(CountsToUnit(DifferenceZero(), unit, nullptr));
    line.lowValue -= none;
    line.highValue -= none;
    return line;
}

void PaintTicks(const BarPlace& bar)
{
    const ScaleLine line = LineShown(shown.counts, shown.unit);
    for (const ScaleTick& tick : PlaceScaleTicks(line, bar.top, bar.bottom, LabelHeight())) {
        FillSurface(scaleWindow, {kBarRight, tick.y, kTickRight, tick.y + 1}, kInk);
        DrawTextLine(scaleWindow, kLabelLeft, tick.y - LabelHeight() / 2, tick.label, TextAlign::kLeft, kInk, kGround);
    }
}

void PaintScale()
{
    const Rect client = GetClientRect(scaleWindow);
    FillSurface(scaleWindow, client, kGround);
    const BarPlace bar = PlaceBar(client.Height());
    if (client.Height() < kLeastLines * LabelHeight()) return;
    DrawTextLine(scaleWindow, kBarLeft, kTitleTop, TitleOf(shown.unit), TextAlign::kLeft, kInk, kGround);
    PaintBar(bar);
    PaintTicks(bar);
}

Shown StateOnView()
{
    Shown state;
    state.place = PlaceInMain();
    state.counts = SpreadCountsOnView();
    state.unit = UnitOnView();
    const ScaleLine line = LineShown(state.counts, state.unit);
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
    RegisterWindowClass({"ColorScaleClass", ColorScaleProc, {}, false, kGround});
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

CountRange SpreadCounts(const LutWindow& window, CountRange live)
{
    // The table's first entry takes live.low: what stands above it moves down by that amount.
    const std::int64_t low = std::clamp<std::int64_t>(window.start - live.low, 0, INT32_MAX);
    const std::int64_t length = std::clamp<std::int64_t>(window.end - window.start, 0, INT32_MAX - low);
    return {static_cast<std::int32_t>(low), static_cast<std::int32_t>(low + length)};
}

CountRange SpreadCountsOnView()
{
    const CountRange live{DisplayLow, DisplayHigh};
    const CountRange range = LutRange(live, ViewingFile ? &ImageHeader : nullptr);
    return SpreadCounts(WindowOf(range.Span(), Contrast, Brightness), live);
}

ScaleLine ScaleLineOf(CountRange counts, std::int32_t unit)
{
    ScaleLine line{counts, static_cast<double>(CountsToUnit(counts.low, unit, nullptr)),
                   static_cast<double>(CountsToUnit(counts.high, unit, nullptr)), false};
    line.whole = ValuesAreCounts(line);
    return line;
}

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
