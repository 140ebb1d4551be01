#include "display/frame_bitmap.h"

#include "dibapi32/dibapi32.h"
#include "display/color_map.h"
#include "display/gray_lookup.h"
#include "imagefile/header.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/frame_state.h"

#include <algorithm>
#include <limits>

namespace kelvo {

namespace {

constexpr int kBits = 8;

// The colour table of the map in force, kept so that a new frame doesn't rebuild it.
const RgbQuadTable& CachedPalette()
{
    constexpr std::uint16_t kNoMap = 0xFFFF;
    static RgbQuadTable table{};
    static std::uint16_t tableColor = kNoMap;
    static std::uint32_t tableGeneration = 0;
    const auto color = static_cast<std::uint16_t>(ImageColor);
    // The display dialog shows a map before ImageColor takes its number: the filling counts too.
    if (tableColor != color || tableGeneration != ColorMapGeneration()) {
        BuildDibPalette(table);
        tableColor = color;
        tableGeneration = ColorMapGeneration();
    }
    return table;
}

// The part of one source row that lies in the frame, as counts and their place in the row.
struct RowPart {
    std::span<const std::int16_t> counts;
    std::size_t column = 0;
};

RowPart PartInFrame(std::span<const std::int16_t> frame, std::int64_t start, std::int64_t width)
{
    const auto size = static_cast<std::int64_t>(frame.size());
    const std::int64_t first = std::clamp<std::int64_t>(start, 0, size);
    const std::int64_t end = std::clamp<std::int64_t>(start + width, first, size);
    if (first == end) return {};
    return {frame.subspan(static_cast<std::size_t>(first), static_cast<std::size_t>(end - first)),
            static_cast<std::size_t>(first - start)};
}

void LookUpRows(std::span<const std::int16_t> frame, const FrameRect& rect, std::span<std::uint8_t> bits)
{
    static GrayTable table;
    FillGrayTable(table, DisplayLut);
    const auto rowBytes = static_cast<std::size_t>(DibRowBytes(kBits, rect.Width()));
    const std::int64_t stride = rect.Width() + rect.left;
    // Bitmaps are stored from the bottom up.
    for (std::int64_t row = rect.Height() - 1; row >= 0; --row, bits = bits.subspan(rowBytes)) {
        const RowPart part = PartInFrame(frame, row * stride + rect.left, rect.Width());
        LookUpGrays(part.counts, table, bits.subspan(part.column, part.counts.size()));
    }
}

bool HoldsFileOnView(std::span<const std::int16_t> frame)
{
    const std::int64_t pixels = std::int64_t{ImageHeader.ImageWidth} * ImageHeader.ImageHeight;
    return ImageHeader.ImageWidth > 0 && ImageHeader.ImageHeight > 0 &&
           pixels <= static_cast<std::int64_t>(frame.size());
}

bool FitsBitmap(const FrameRect& rect)
{
    constexpr std::int64_t kLongest = std::numeric_limits<std::int32_t>::max();
    return rect.Width() >= 0 && rect.Width() <= kLongest && rect.Height() >= 0 && rect.Height() <= kLongest;
}

}  // namespace

FrameRect DefaultFrameRect()
{
    if (ViewingFile) return {0, 0, ImageHeader.ImageWidth - 1, ImageHeader.ImageHeight - 1};
    const CameraConfig& config = ActiveConfig;
    return {std::max(Xpan, -config.Hroi), std::max(Ypan, -config.Vroi), config.Hroi - 1, config.Vroi - 1};
}

Dib MakeFrameBitmap(std::span<const std::int16_t> frame, const FrameRect* rectangle)
{
    if (!rectangle && ViewingFile && !HoldsFileOnView(frame)) return nullptr;
    const FrameRect rect = rectangle ? *rectangle : DefaultFrameRect();
    if (!FitsBitmap(rect)) return nullptr;

    Dib dib = CreateDIB(static_cast<int>(rect.Width()), static_cast<int>(rect.Height()), kBits);
    if (!dib) return nullptr;
    ReadyColorMap();
    std::ranges::copy(CachedPalette(), DibPalette(*dib).begin());
    if (!DisplayLut.empty()) LookUpRows(frame, rect, DibBits(*dib));
    return dib;
}

void BuildDibPalette(RgbQuadTable& table)
{
    table.fill(0);
    if (ColorMap.size() < kColorMapBytes) return;
    for (std::size_t i = 0; i < kColorMapEntries; ++i) {
        table[4 * i] = ColorMap[kBluePlane + i];
        table[4 * i + 1] = ColorMap[kGreenPlane + i];
        table[4 * i + 2] = ColorMap[kRedPlane + i];
    }
}

}  // namespace kelvo
