#include "pixel/region_marks.h"

#include "imagefile/header.h"
#include "platform/memory.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/frame_state_write.h"

#include <algorithm>
#include <cstddef>

namespace kelvo {

namespace {

// Where the pixels of a frame lie in its block.
class Places {
  public:
    explicit Places(std::span<std::int16_t> frame)
        : frame_(frame),
          width_(ViewingFile ? ImageHeader.ImageWidth : ActiveConfig.Hroi),
          height_(ViewingFile ? ImageHeader.ImageHeight : ActiveConfig.Vroi)
    {
    }
    std::int64_t Width() const { return width_; }
    std::int64_t Height() const { return height_; }
    std::int64_t Values() const { return width_ * height_; }

    void Blacken(std::int64_t x, std::int64_t y) const
    {
        const std::int64_t pixel = y * width_ + x;
        if (ViewingFile) {
            Clear(pixel);
        } else {
            BlackenDetector(x, y);
        }
    }
    void BlackenDetector(std::int64_t x, std::int64_t y) const
    {
        const std::int64_t pixel = y * width_ + x;
        if (pixel < std::ssize(DecomList)) Clear(DecomList[static_cast<std::size_t>(pixel)]);
    }

  private:
    void Clear(std::int64_t index) const
    {
        if (index < std::min<std::int64_t>(Values(), std::ssize(frame_))) frame_[static_cast<std::size_t>(index)] = 0;
    }

    std::span<std::int16_t> frame_;
    std::int64_t width_;
    std::int64_t height_;
};

// The frame without marks.
bool KeepFrame(std::span<const std::int16_t> frame)
{
    const std::int32_t prefix = ImageHeader.ImageHeaderDataOffset;
    const std::size_t bytes = frame.size_bytes() + static_cast<std::size_t>(std::max(prefix, 0));
    if (ImageBuffer.size() < bytes && !AllocateBlock(write::frames.ImageBuffer, bytes)) return false;
    std::ranges::copy(frame, write::ImageBufferPixels(prefix).begin());
    return true;
}

}  // namespace

int MarkRectangle(std::span<std::int16_t> frame, std::int32_t left, std::int32_t top, std::int32_t right,
                  std::int32_t bottom)
{
    const Places places(frame);
    if (places.Width() < 1 || places.Height() < 1 || std::ssize(frame) < places.Values()) return 0;
    if (!ViewingFile && !KeepFrame(frame.first(static_cast<std::size_t>(places.Values())))) return 0;

    const std::int64_t x1 = std::int64_t{left} - 1;
    const std::int64_t y1 = std::int64_t{top} - 1;
    const std::int64_t x2 = std::min<std::int64_t>(places.Width() - 1, std::int64_t{right} + 1);
    const std::int64_t y2 = std::min<std::int64_t>(places.Height() - 1, std::int64_t{bottom} + 1);
    const std::int64_t firstColumn = std::max<std::int64_t>(x1, 0);
    const std::int64_t firstRow = std::max<std::int64_t>(y1, 0);
    if (y1 > 0 && y1 < places.Height()) {
        for (std::int64_t x = firstColumn; x <= x2; ++x) places.Blacken(x, y1);
    }
    if (x1 > 0 && x1 < places.Width()) {
        for (std::int64_t y = firstRow; y <= y2; ++y) places.Blacken(x1, y);
    }
    if (x2 >= 0) {
        for (std::int64_t y = firstRow; y <= y2; ++y) places.BlackenDetector(x2, y);
    }
    if (y2 >= 0) {
        for (std::int64_t x = firstColumn; x <= x2; ++x) places.Blacken(x, y2);
    }
    return 1;
}

}  // namespace kelvo
