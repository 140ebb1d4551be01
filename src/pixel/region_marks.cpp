#include "pixel/region_marks.h"

#include "imagefile/header.h"
#include "platform/memory.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/frame_state_write.h"
#include "state/state_registry.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

namespace kelvo {

namespace {

std::int16_t centreValue = 0;

}  // namespace

constinit const std::int16_t& CrossCentreValue = centreValue;

namespace {

const StateNames kStateNames{Named("CrossCentreValue", CrossCentreValue)};

constexpr std::int64_t kArm = 6;  // an arm of the cross ends before this distance

// The frame as a grid. Columns and rows are 64-bit, so that one beyond the last of 32 bits is a place too: outside.
class Grid {
  public:
    explicit Grid(std::span<std::int16_t> frame)
        : frame_(frame),
          width_(ViewingFile ? ImageHeader.ImageWidth : ActiveConfig.Hroi),
          height_(ViewingFile ? ImageHeader.ImageHeight : ActiveConfig.Vroi)
    {
    }
    std::int64_t Width() const { return width_; }
    std::int64_t Height() const { return height_; }
    bool IsWhole() const { return width_ > 0 && height_ > 0 && std::ssize(frame_) >= width_ * height_; }
    std::span<const std::int16_t> Frame() const { return frame_.first(static_cast<std::size_t>(width_ * height_)); }

    std::int16_t Value(std::int64_t x, std::int64_t y) const
    {
        return Holds(x, y) ? frame_[static_cast<std::size_t>(y * width_ + x)] : std::int16_t{0};
    }
    void Set(std::int64_t x, std::int64_t y, std::int16_t value) const
    {
        if (Holds(x, y)) frame_[static_cast<std::size_t>(y * width_ + x)] = value;
    }
    void Blacken(std::int64_t x, std::int64_t y, FrameOrder order = FrameOrder::kImage) const
    {
        if (!Holds(x, y)) return;
        const auto pixel = static_cast<std::size_t>(y * width_ + x);
        const bool direct = order == FrameOrder::kImage || pixel >= DecomList.size();
        const std::size_t place = direct ? pixel : DecomList[pixel];
        if (place < Frame().size()) frame_[place] = 0;
    }

  private:
    bool Holds(std::int64_t x, std::int64_t y) const { return x >= 0 && x < width_ && y >= 0 && y < height_; }

    std::span<std::int16_t> frame_;
    std::int64_t width_;
    std::int64_t height_;
};

// ImageBuffer holds the frame as it is before a mark is drawn.
bool KeepUnmarked(std::span<const std::int16_t> frame)
{
    if (ViewingFile) return true;
    const std::int32_t prefix = ImageHeader.ImageHeaderDataOffset;
    const std::size_t bytes = frame.size_bytes() + static_cast<std::size_t>(std::max(prefix, 0));
    if (ImageBuffer.size() < bytes && !AllocateBlock(write::frames.ImageBuffer, bytes)) return false;
    std::ranges::copy(frame, write::ImageBufferPixels(prefix).begin());
    return true;
}

// A line as its steps: along the axis of more pixels, and across.
struct Steps {
    std::int64_t alongStart = 0;
    std::int64_t acrossStart = 0;
    std::int64_t acrossEnd = 0;
    std::int64_t alongSign = 1;
    std::int64_t acrossSign = 1;
    std::int64_t last = 0;  // steps are 0 to last
    float slope = 0.0F;

    std::int64_t Along(std::int64_t i) const { return alongStart + alongSign * i; }
    // A step times a single is exact in double, as it was in the floating-point unit's own width.
    std::int64_t Across(std::int64_t i) const
    {
        return acrossStart + acrossSign * static_cast<std::int64_t>(static_cast<double>(i) * double{slope});
    }
};

Steps StepsOf(std::int64_t along1, std::int64_t across1, std::int64_t along2, std::int64_t across2)
{
    const std::int64_t along = std::abs(along2 - along1);
    const std::int64_t across = std::abs(across2 - across1);
    return {.alongStart = along1,
            .acrossStart = across1,
            .acrossEnd = across2,
            .alongSign = along2 < along1 ? -1 : 1,
            .acrossSign = across2 < across1 ? -1 : 1,
            .last = along,
            .slope = static_cast<float>(across) / static_cast<float>(along)};
}

// The steps, at most, that lie between 0 and size along the axis: a line may begin and end far outside.
struct StepRange {
    std::int64_t first;
    std::int64_t last;
};

StepRange StepsInside(const Steps& steps, std::int64_t size)
{
    const std::int64_t toFirst = steps.alongSign > 0 ? -steps.alongStart : steps.alongStart - (size - 1);
    return {.first = std::max<std::int64_t>(toFirst, 0), .last = std::min(steps.last, toFirst + size - 1)};
}

// size: columns or rows of the frame along the line; place(along, across, value) writes a pixel.
void MarkSides(const Steps& steps, std::int64_t size, const auto& place)
{
    const auto high = static_cast<std::int16_t>(DisplayHigh);
    place(steps.Along(-1), steps.acrossStart, high);
    place(steps.Along(steps.last + 1), steps.acrossEnd, high);
    const auto [first, last] = StepsInside(steps, size);
    for (std::int64_t i = first; i <= last; ++i) {
        place(steps.Along(i), steps.Across(i) - 1, 0);
        place(steps.Along(i), steps.Across(i) + 1, 0);
    }
}

}  // namespace

int MarkRectangle(std::span<std::int16_t> frame, std::int32_t left, std::int32_t top, std::int32_t right,
                  std::int32_t bottom, FrameOrder order)
{
    const Grid grid(frame);
    if (!grid.IsWhole() || !KeepUnmarked(grid.Frame())) return 0;
    if (ViewingFile) order = FrameOrder::kImage;

    const std::int64_t x1 = std::int64_t{left} - 1;
    const std::int64_t y1 = std::int64_t{top} - 1;
    const std::int64_t x2 = std::min(grid.Width() - 1, std::int64_t{right} + 1);
    const std::int64_t y2 = std::min(grid.Height() - 1, std::int64_t{bottom} + 1);
    const std::int64_t firstColumn = std::max<std::int64_t>(x1, 0);
    const std::int64_t firstRow = std::max<std::int64_t>(y1, 0);
    if (y1 > 0) {
        for (std::int64_t x = firstColumn; x <= x2; ++x) grid.Blacken(x, y1, order);
    }
    if (x1 > 0) {
        for (std::int64_t y = firstRow; y <= y2; ++y) grid.Blacken(x1, y, order);
    }
    for (std::int64_t y = firstRow; y <= y2; ++y) grid.Blacken(x2, y, FrameOrder::kReadout);
    for (std::int64_t x = firstColumn; x <= x2; ++x) grid.Blacken(x, y2, order);
    return 1;
}

int MarkCross(std::span<std::int16_t> frame, std::int32_t x, std::int32_t y)
{
    const Grid grid(frame);
    if (!grid.IsWhole()) return 0;
    centreValue = grid.Value(x, y);

    const std::int64_t column = x;
    const std::int64_t row = y;
    const auto endBefore = [](std::int64_t centre) { return std::max<std::int64_t>(centre - kArm, 0); };
    for (std::int64_t i = column + 1; i < std::min(column + kArm, grid.Width()); ++i) grid.Blacken(i, row);
    for (std::int64_t i = column - 1; i > endBefore(column); --i) grid.Blacken(i, row);
    for (std::int64_t i = row + 1; i < std::min(row + kArm, grid.Width()); ++i) grid.Blacken(column, i);
    for (std::int64_t i = row - 1; i > endBefore(row); --i) grid.Blacken(column, i);
    return 1;
}

int MarkLine(std::span<std::int16_t> frame, std::int32_t x1, std::int32_t y1, std::int32_t x2, std::int32_t y2)
{
    const Grid grid(frame);
    if (!grid.IsWhole() || !KeepUnmarked(grid.Frame())) return 0;

    const std::int64_t dx = std::int64_t{x2} - x1;
    const std::int64_t dy = std::int64_t{y2} - y1;
    if (std::abs(dx) > std::abs(dy)) {
        MarkSides(StepsOf(x1, y1, x2, y2), grid.Width(),
                  [&](std::int64_t x, std::int64_t y, std::int16_t value) { grid.Set(x, y, value); });
    } else if (dy != 0) {
        MarkSides(StepsOf(y1, x1, y2, x2), grid.Height(),
                  [&](std::int64_t y, std::int64_t x, std::int16_t value) { grid.Set(x, y, value); });
    } else {
        // The pixel below is never drawn: its row would have to lie beyond the last.
        grid.Blacken(std::int64_t{x1} - 1, y1);
        grid.Blacken(std::int64_t{x1} + 1, y1);
        grid.Blacken(x1, std::int64_t{y1} - 1);
    }
    return 1;
}

void ResetRegionMarks()
{
    centreValue = 0;
}

}  // namespace kelvo
