#include "shell/saturation_overlay.h"

#include "display/color_map.h"
#include "display/display_pipeline.h"
#include "imagefile/header.h"
#include "platform/menu.h"
#include "platform/paint.h"
#include "platform/window.h"
#include "regions/frame_on_view.h"
#include "resources/ids.h"
#include "state/cal_state.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/view_switch.h"

#include <algorithm>
#include <array>
#include <limits>

namespace kelvo {

namespace {

constexpr ViewSwitch kSwitch{kCmdViewSaturation, "SaturationOverlay"};

bool isOn = false;
bool isOffered = true;
FrameRect rectOfPicture;  // of the bitmap on the screen
SaturationMarks marksOfPicture;

std::uint8_t MarkOf(std::int16_t count)
{
    if (count <= kConverterLow) return kSaturatedLow;
    return count >= kConverterHigh ? kSaturatedHigh : kNotSaturated;
}

// markAt(i) is asked for each pixel of the frame that the picture shows.
template <typename MarkAt>
void MarkPicture(std::int64_t frameSize, const FrameRect& rect, SaturationMarks& result, MarkAt markAt)
{
    constexpr std::int64_t kLongest = std::numeric_limits<std::int32_t>::max();
    const std::int64_t width = std::clamp<std::int64_t>(rect.Width(), 0, kLongest);
    const std::int64_t height = std::clamp<std::int64_t>(rect.Height(), 0, kLongest / std::max<std::int64_t>(width, 1));
    result.width = static_cast<int>(width);
    result.height = static_cast<int>(height);
    result.marks.resize(static_cast<std::size_t>(width * height));
    const std::int64_t stride = rect.Width() + rect.left;
    auto mark = result.marks.begin();
    for (std::int64_t row = 0; row < height; ++row) {
        const std::int64_t start = row * stride + rect.left;
        for (std::int64_t i = start; i < start + width; ++i) {
            *mark++ = i >= 0 && i < frameSize ? markAt(static_cast<std::size_t>(i)) : std::uint8_t{kNotSaturated};
        }
    }
}

void FindMarks()
{
    if (ViewingFile) {
        MarkStoredCounts(ImageBufferPixels(ImageHeader.ImageHeaderDataOffset), rectOfPicture, marksOfPicture);
    } else {
        MarkRawCounts(RawFrame, DecomList, rectOfPicture, marksOfPicture);
    }
}

const MarkColors& ColorsInForce()
{
    static MarkColors colors;
    static std::uint32_t generation = 0;
    static bool made = false;
    const std::span<const std::uint8_t> map = ReadyColorMap();
    if (!made || generation != ColorMapGeneration()) {
        colors = ColorsAgainst(map);
        generation = ColorMapGeneration();
        made = true;
    }
    return colors;
}

void PaintMarks()
{
    if (marksOfPicture.marks.empty()) return;
    const MarkColors& colors = ColorsInForce();
    const std::array<std::uint32_t, 3> byMark{0, colors.low, colors.high};
    StretchMarks(hWndMain, PicturePlace(),
                 {marksOfPicture.marks.data(), marksOfPicture.width, marksOfPicture.width, marksOfPicture.height,
                  byMark.data()});
}

void OfferItem(bool offered)
{
    if (offered == isOffered) return;
    isOffered = offered;
    EnableMenuItem(hWndMain, kCmdViewSaturation, offered);
}

void PaintLayer(bool newFrame)
{
    if (newFrame) {
        rectOfPicture = DefaultFrameRect();
        OfferItem(!ViewingFile || StoredCountsAreRaw());
        if (isOn && isOffered) FindMarks();
    }
    if (isOn && isOffered) PaintMarks();
}

int SquareDistance(std::uint32_t a, std::uint32_t b)
{
    int sum = 0;
    for (const int shift : {0, 8, 16}) {
        const int difference = static_cast<int>((a >> shift) & 0xFF) - static_cast<int>((b >> shift) & 0xFF);
        sum += difference * difference;
    }
    return sum;
}

}  // namespace

void MarkStoredCounts(std::span<const std::int16_t> counts, const FrameRect& rect, SaturationMarks& result)
{
    MarkPicture(std::ssize(counts), rect, result, [counts](std::size_t i) { return MarkOf(counts[i]); });
}

void MarkRawCounts(std::span<const std::int16_t> raw, std::span<const std::uint32_t> decomList, const FrameRect& rect,
                   SaturationMarks& result)
{
    MarkPicture(std::ssize(decomList), rect, result, [raw, decomList](std::size_t i) {
        const std::size_t detector = decomList[i];
        return detector < raw.size() ? MarkOf(raw[detector]) : std::uint8_t{kNotSaturated};
    });
}

MarkColors ColorsAgainst(std::span<const std::uint8_t> colorMap)
{
    // Pure hues, the most striking first: of equal ones the first is taken. White and black end the list for maps
    // that run through all hues.
    constexpr std::array<std::uint32_t, 8> kCandidates{0xFF0000, 0x00FFFF, 0xFF00FF, 0x00FF00,
                                                       0xFFFF00, 0x0000FF, 0xFFFFFF, 0x000000};
    std::array<int, kCandidates.size()> distances{};
    const auto away = [&](std::uint32_t color) {
        for (std::size_t i = 0; i < kCandidates.size(); ++i) {
            distances[i] = std::min(distances[i], SquareDistance(kCandidates[i], color));
        }
    };
    distances.fill(std::numeric_limits<int>::max());
    for (std::size_t i = 0; colorMap.size() >= kColorMapBytes && i < kColorMapEntries; ++i) {
        away(std::uint32_t{colorMap[kRedPlane + i]} << 16 | std::uint32_t{colorMap[kGreenPlane + i]} << 8 |
             colorMap[kBluePlane + i]);
    }
    const auto farthest = [&] {
        return kCandidates[static_cast<std::size_t>(std::ranges::max_element(distances) - distances.begin())];
    };
    MarkColors colors;
    colors.high = farthest();
    away(colors.high);
    colors.low = farthest();
    return colors;
}

void OpenSaturationOverlay()
{
    isOn = ViewSwitchIsOn(kSwitch);
    CheckMenuItem(hWndMain, kCmdViewSaturation, isOn);
    AddPictureLayer(PaintLayer);
}

void ToggleSaturationOverlay()
{
    isOn = !isOn;
    KeepViewSwitch(kSwitch, isOn);
    if (isOn && FrameBitmap) FindMarks();
    RepaintPicture();
}

void ResetSaturationOverlay()
{
    isOn = false;
    isOffered = true;
    rectOfPicture = {};
    marksOfPicture = {};
}

}  // namespace kelvo
