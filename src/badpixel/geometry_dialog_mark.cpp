#include "badpixel/geometry_dialog_mark.h"

#include "display/color_map.h"
#include "display/display_pipeline.h"
#include "display/frame_bitmap.h"
#include "grabber/frame_size.h"
#include "platform/paint.h"
#include "platform/window.h"
#include "state/display_state.h"
#include "state/windows.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <span>

namespace kelvo {

namespace {

constexpr std::uint8_t kMark = 1;

std::optional<PixelPair> markedPixel;

// One byte a pixel of the bitmap on the screen.
struct PictureMarks {
    std::vector<std::uint8_t> marks;
    int width = 0;
    int height = 0;
};

std::uint32_t ColorOfCountZero()
{
    const std::span<const std::uint8_t> map = ReadyColorMap();
    if (map.size() < kColorMapBytes || DisplayLut.empty()) return 0;
    const std::size_t gray = DisplayLut.front();
    return std::uint32_t{map[kRedPlane + gray]} << 16 | std::uint32_t{map[kGreenPlane + gray]} << 8 |
           map[kBluePlane + gray];
}

// The bitmap's rows start where those of the picture's rectangle start in the frame.
PictureMarks MarksOf(const PixelPair& pixel, const Point& size)
{
    constexpr std::int64_t kLongest = std::numeric_limits<std::int16_t>::max();
    const FrameRect rect = DefaultFrameRect();
    PictureMarks picture;
    picture.width = static_cast<int>(std::clamp<std::int64_t>(rect.Width(), 0, kLongest));
    picture.height = static_cast<int>(std::clamp<std::int64_t>(rect.Height(), 0, kLongest));
    picture.marks.resize(static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height));
    const std::int64_t stride = rect.Width() + rect.left;
    if (stride <= 0) return picture;
    for (const PixelPair& each : OutlineOf(pixel, size)) {
        const std::int64_t fromLeft = std::int64_t{each.row} * size.x + each.column - rect.left;
        const std::int64_t row = fromLeft / stride;
        const std::int64_t column = fromLeft % stride;
        if (fromLeft < 0 || row >= picture.height || column >= picture.width) continue;
        picture.marks[static_cast<std::size_t>(row * picture.width + column)] = kMark;
    }
    return picture;
}

void PaintMark(bool /*newFrame*/)
{
    if (!markedPixel) return;
    const PictureMarks picture = MarksOf(*markedPixel, FrameSizeOnView());
    if (picture.marks.empty()) return;
    const std::array<std::uint32_t, 2> colors{0, ColorOfCountZero()};
    StretchMarks(hWndMain, PicturePlace(),
                 {picture.marks.data(), picture.width, picture.width, picture.height, colors.data()});
}

}  // namespace

PixelPair DisplayedPlace(const PixelPair& detector, const Orientation& orientation, const CameraConfig& config)
{
    PixelPair place = detector;
    if (orientation.rotateCcw) place = {.row = config.Hactive - detector.column, .column = detector.row};
    if (orientation.mirrorVert) place.column = config.Hactive - place.column;
    if (orientation.mirrorHoriz) place.row = config.Vactive - place.row;
    return place;
}

std::vector<PixelPair> OutlineOf(const PixelPair& pixel, const Point& size)
{
    // In 64 bits: a list may name a place at the end of all numbers.
    const std::int64_t left = std::int64_t{pixel.column} - 1;
    const std::int64_t top = std::int64_t{pixel.row} - 1;
    const std::int64_t right = std::min<std::int64_t>(size.x - 1, left + 2);
    const std::int64_t bottom = std::min<std::int64_t>(size.y - 1, top + 2);
    std::vector<PixelPair> outline;
    const auto add = [&](std::int64_t row, std::int64_t column) {
        if (row < 0 || column < 0 || row >= size.y || column >= size.x) return;
        outline.push_back({.row = static_cast<std::int32_t>(row), .column = static_cast<std::int32_t>(column)});
    };
    for (std::int64_t column = left; column <= right; ++column) {
        if (top > 0) add(top, column);
        add(bottom, column);
    }
    for (std::int64_t row = std::max<std::int64_t>(top, 0); row <= bottom; ++row) {
        if (left > 0) add(row, left);
        add(row, right);
    }
    return outline;
}

void MarkPixel(const PixelPair& pixel)
{
    markedPixel = pixel;
    AddPictureLayer(PaintMark);
    RepaintPicture();
}

void RemoveMark()
{
    markedPixel.reset();
    RemovePictureLayer(PaintMark);
    RepaintPicture();
}

void ResetMark()
{
    markedPixel.reset();
}

}  // namespace kelvo
