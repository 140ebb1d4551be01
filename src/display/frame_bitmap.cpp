#include "display/frame_bitmap.h"

#include "dibapi32/dibapi32.h"
#include "display/color_map.h"
#include "imagefile/header.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/frame_state.h"

#include <algorithm>
#include <limits>

namespace kelvo {

namespace {

constexpr int kBits = 8;

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

// DisplayLut as it stands now, which isn't empty.
const GrayTable& TableInForce()
{
    static GrayTable table;
    FillGrayTable(table, DisplayLut);
    return table;
}

// Every pixel of the bitmap is written: what stood there may be an older picture.
void LookUpRows(std::span<const std::int16_t> frame, const FrameRect& rect, std::span<std::uint8_t> bits)
{
    const GrayTable& table = TableInForce();
    const auto width = static_cast<std::size_t>(rect.Width());
    const auto rowBytes = static_cast<std::size_t>(DibRowBytes(kBits, rect.Width()));
    const std::int64_t stride = rect.Width() + rect.left;
    // Bitmaps are stored from the bottom up.
    for (std::int64_t row = rect.Height() - 1; row >= 0; --row, bits = bits.subspan(rowBytes)) {
        const RowPart part = PartInFrame(frame, row * stride + rect.left, rect.Width());
        const std::span<std::uint8_t> grays = bits.first(width);
        std::ranges::fill(grays.first(part.column), std::uint8_t{0});
        LookUpGrays(part.counts, table, grays.subspan(part.column, part.counts.size()));
        std::ranges::fill(grays.subspan(part.column + part.counts.size()), std::uint8_t{0});
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

// A bitmap of that size with the colours in force, and any pixels.
bool ReadyColoredDib(Dib& dib, const FrameRect& rect)
{
    if (!FitsBitmap(rect)) return false;
    if (!ReadyDIB(dib, static_cast<int>(rect.Width()), static_cast<int>(rect.Height()), kBits)) return false;
    static DibPaletteCache palette;
    ReadyColorMap();
    std::ranges::copy(palette.InForce(), DibPalette(*dib).begin());
    return true;
}

}  // namespace

FrameRect DefaultFrameRect()
{
    if (ViewingFile) return {0, 0, ImageHeader.ImageWidth - 1, ImageHeader.ImageHeight - 1};
    const CameraConfig& config = ActiveConfig;
    return {std::max(Xpan, -config.Hroi), std::max(Ypan, -config.Vroi), config.Hroi - 1, config.Vroi - 1};
}

// Rows of the bitmap follow each other in the frame as those of LookUpRows do.
Point FramePixelOf(Point bitmapPixel, const FrameRect& rectangle)
{
    if (rectangle.right < 0 || rectangle.bottom < 0) return {};
    const std::int64_t lastRow =
        std::min<std::int64_t>(rectangle.bottom, std::max<std::int64_t>(rectangle.Height(), 1) - 1);
    const std::int64_t row = std::clamp<std::int64_t>(bitmapPixel.y, 0, lastRow);
    const std::int64_t lastColumn = std::max<std::int64_t>(rectangle.Width(), 1) - 1;
    const std::int64_t column = rectangle.left + std::clamp<std::int64_t>(bitmapPixel.x, 0, lastColumn);
    const std::int64_t stride = std::int64_t{rectangle.right} + 1;
    const std::int64_t element = row * stride + std::min<std::int64_t>(column, rectangle.right);
    if (element < 0) return {};
    return {static_cast<int>(element % stride), static_cast<int>(element / stride)};
}

Point BitmapPixelOf(Point framePixel, const FrameRect& rectangle)
{
    return {
        static_cast<int>(std::clamp<std::int64_t>(std::int64_t{framePixel.x} - rectangle.left, 0,
                                                  std::max<std::int64_t>(rectangle.Width(), 1) - 1)),
        static_cast<int>(std::clamp<std::int64_t>(framePixel.y, 0, std::max<std::int64_t>(rectangle.Height(), 1) - 1))};
}

Dib MakeFrameBitmap(std::span<const std::int16_t> frame, const FrameRect* rectangle)
{
    Dib dib;
    return FillFrameBitmap(dib, frame, rectangle) ? dib : nullptr;
}

bool FillFrameBitmap(Dib& dib, std::span<const std::int16_t> frame, const FrameRect* rectangle)
{
    if (!rectangle && ViewingFile && !HoldsFileOnView(frame)) return false;
    const FrameRect rect = rectangle ? *rectangle : DefaultFrameRect();
    if (!ReadyColoredDib(dib, rect)) return false;
    if (DisplayLut.empty()) {
        std::ranges::fill(DibBits(*dib), std::uint8_t{0});
    } else {
        LookUpRows(frame, rect, DibBits(*dib));
    }
    return true;
}

GrayRows ReadyCameraBitmap(Dib& dib)
{
    const FrameRect rect = DefaultFrameRect();
    const bool inFrame = rect.left >= 0 && rect.top >= 0 && rect.Width() > 0 && rect.Height() > 0;
    if (ViewingFile || DisplayLut.empty() || !inFrame || !ReadyColoredDib(dib, rect)) return {};

    const std::int64_t rowBytes = DibRowBytes(kBits, rect.Width());
    const std::int64_t lastRow = rect.Height() - 1;
    return {.table = &TableInForce(),
            .top = DibBits(*dib).data() + lastRow * rowBytes,
            .rowStride = -rowBytes,
            .rows = static_cast<std::size_t>(rect.Height()),
            .firstColumn = static_cast<std::size_t>(rect.left)};
}

const RgbQuadTable& DibPaletteCache::InForce()
{
    const auto color = static_cast<std::uint16_t>(ImageColor);
    // The display dialog shows a map before ImageColor takes its number: the filling counts too.
    if (color_ != color || generation_ != ColorMapGeneration()) {
        BuildDibPalette(table_);
        color_ = color;
        generation_ = ColorMapGeneration();
    }
    return table_;
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
