#include "export/exported_picture.h"

#include "platform/clock.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "regions/region_picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace kelvo {

namespace {

// Pixels.
constexpr int kLabelRight = 10;  // behind the longest label
constexpr int kTimeLeft = 6;
constexpr int kTimeGap = 4;  // above and below

// As long as a time gets.
constexpr std::string_view kLongestTime = "2026-11-18T11:06:40.123456789Z";

int ScaleHeight()
{
    constexpr int kLines = 12;  // three ticks at least
    return kLines * PictureTextHeight();
}

std::vector<ScaleTick> TicksOf(const PictureScale& scale, const ScaleBar& bar)
{
    return PlaceScaleTicks(scale.line, bar.top, bar.bottom, PictureTextHeight());
}

int ScaleWidth(const PictureScale& scale, const ScaleBar& bar)
{
    int width = kScaleBarLeft + PictureTextWidth(scale.title);
    for (const ScaleTick& tick : TicksOf(scale, bar)) {
        width = std::max(width, kScaleLabelLeft + PictureTextWidth(tick.label));
    }
    return std::max(width, kScaleTickRight) + kLabelRight;
}

void Fill(DeviceBitmap& picture, const Rect& area, std::uint32_t color)
{
    for (int y = area.top; y < area.bottom; ++y) {
        const auto row = picture.pixels.begin() + static_cast<std::ptrdiff_t>(y) * picture.width;
        std::fill(row + area.left, row + area.right, color);
    }
}

// Rows of one picture as they stand into another, from that row on.
void Place(const DeviceBitmap& part, DeviceBitmap& picture, int row)
{
    std::ranges::copy(part.pixels, picture.pixels.begin() + static_cast<std::ptrdiff_t>(row) * picture.width);
}

bool MakeGround(DeviceBitmap& picture, int width, int height)
{
    picture.width = width;
    picture.height = height;
    const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    if (!AllocateBlock(picture.pixels, pixels)) return false;
    std::ranges::fill(picture.pixels, kScaleGround);
    return true;
}

}  // namespace

std::string TimeOfPicture(const FrameTiming& timing, std::string_view localTime, bool isSequence)
{
    if (timing.utcNs != 0) return UtcText(timing.utcNs);
    if (isSequence && timing.seconds) return Format("%.6f s", *timing.seconds);
    return localTime.empty() ? std::string() : std::string(localTime) + " local time";
}

std::optional<ExportedPicture> ExportedPicture::Make(const ExportDescription& description, PictureOptions options)
{
    ExportedPicture made;
    made.options_ = std::move(options);
    if (!made.options_.look) made.options_.look = PictureLook::OnView();
    const bool isMade =
        made.options_.look && made.LayOut(description) && made.DrawScale() && made.DrawRegions(description.provenance);
    return isMade ? std::optional(std::move(made)) : std::nullopt;
}

bool ExportedPicture::LayOut(const ExportDescription& description)
{
    columns_ = description.columns;
    rows_ = description.rows;
    localTime_ = LocalTimeText(description.provenance.header);
    isSequence_ = description.frames > 1 || description.provenance.header.FrameCount > 1;
    int width = static_cast<int>(columns_);
    bodyHeight_ = static_cast<int>(rows_);
    if (options_.scale) {
        bodyHeight_ = std::max(bodyHeight_, ScaleHeight());
        width += ScaleWidth(*options_.scale, PlaceScaleBar(bodyHeight_, PictureTextHeight()));
    }
    if (!options_.time) return MakeGround(picture_, width, bodyHeight_);
    width = std::max(width, kTimeLeft + PictureTextWidth(kLongestTime) + kTimeLeft);
    const int timeHeight = kTimeGap + PictureTextHeight() + kTimeGap;
    return MakeGround(picture_, width, bodyHeight_ + timeHeight) && MakeGround(timeLine_, width, timeHeight);
}

bool ExportedPicture::DrawScale()
{
    if (!options_.scale) return true;
    const auto left = static_cast<int>(columns_);
    const int line = PictureTextHeight();
    const ScaleBar bar = PlaceScaleBar(bodyHeight_, line);
    const auto draw = [&](int x, int y, std::string_view text) {
        return DrawPictureText(picture_, left + x, y, text, kScaleInk, kScaleGround);
    };
    bool isDrawn = draw(kScaleBarLeft, kScaleTitleTop, options_.scale->title);
    constexpr int kShades = 256;
    const int height = bar.bottom - bar.top;
    for (int y = 0; y < height; ++y) {
        const int shade = kShades - 1 - y * kShades / height;  // the last one on top
        Fill(picture_, {left + kScaleBarLeft, bar.top + y, left + kScaleBarRight, bar.top + y + 1},
             Look().ColorOfGray(static_cast<std::uint8_t>(shade)));
    }
    for (const ScaleTick& tick : TicksOf(*options_.scale, bar)) {
        Fill(picture_, {left + kScaleBarRight, tick.y, left + kScaleTickRight, tick.y + 1}, kScaleInk);
        isDrawn = draw(kScaleLabelLeft, tick.y - line / 2, tick.label) && isDrawn;
    }
    return isDrawn;
}

void ExportedPicture::MarkLine(std::span<const Point> line, const Rect& frame, std::uint32_t color)
{
    for (const Point& at : PolylinePixels(line, frame)) {
        marks_.push_back({static_cast<std::size_t>(at.y * picture_.width + at.x), color});
    }
}

bool ExportedPicture::DrawName(const Region& region, const Point& place, const Point& size)
{
    DeviceBitmap label;
    if (!MakeGround(label, size.x, size.y)) return false;
    if (!DrawPictureText(label, 0, 0, region.name, kRegionTone, kRegionRim)) return false;
    for (int i = 0; i < size.x * size.y; ++i) {
        const int pixel = (place.y + i / size.x) * picture_.width + place.x + i % size.x;
        marks_.push_back({static_cast<std::size_t>(pixel), label.pixels[static_cast<std::size_t>(i)]});
    }
    return true;
}

bool ExportedPicture::DrawRegions(const Provenance& provenance)
{
    const PictureMap map{.originX = -static_cast<double>(provenance.left),
                         .originY = -static_cast<double>(provenance.top)};
    const Rect frame{0, 0, static_cast<int>(columns_), static_cast<int>(rows_)};
    for (const Region& region : options_.regions) {
        for (const std::vector<Point>& line : OutlineOf(region, map)) {
            std::vector<Point> rim = line;
            for (Point& point : rim) point = {point.x + 1, point.y + 1};
            MarkLine(rim, frame, kRegionRim);
            MarkLine(line, frame, kRegionTone);
        }
        const Point size{PictureTextWidth(region.name), PictureTextHeight()};
        const std::optional<Point> place = PlaceOfName(region, map, frame, size);
        if (place && size.x > 0 && !DrawName(region, *place, size)) return false;
    }
    return true;
}

bool ExportedPicture::DrawTime(const FrameTiming& timing)
{
    std::ranges::fill(timeLine_.pixels, kScaleGround);
    const std::string text = TimeOfPicture(timing, localTime_, isSequence_);
    if (!DrawPictureText(timeLine_, kTimeLeft, kTimeGap, text, kScaleInk, kScaleGround)) return false;
    Place(timeLine_, picture_, bodyHeight_);
    return true;
}

bool ExportedPicture::Show(const ExportedFrame& frame)
{
    for (std::size_t row = 0; row < rows_; ++row) {
        const auto counts = frame.counts.subspan(row * columns_, columns_);
        const auto out = picture_.pixels.begin() + static_cast<std::ptrdiff_t>(row) * picture_.width;
        std::ranges::transform(counts, out, [&look = Look()](std::int16_t count) { return look.ColorOf(count); });
    }
    for (const Mark& mark : marks_) picture_.pixels[mark.pixel] = mark.color;
    return !options_.time || DrawTime(frame.timing);
}

}  // namespace kelvo
