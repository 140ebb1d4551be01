#include "imagefile/foreign_layout.h"

namespace kelvo {

namespace {

constexpr std::int64_t kSampleBytes = 2;

}  // namespace

std::string WhyNotAnImage(const ForeignLayout& layout)
{
    if (layout.rows <= 0 || layout.columns <= 0 || layout.frames <= 0) return "holds no pixels";
    if (layout.rows > kMostForeignSide || layout.columns > kMostForeignSide) {
        return "has sides of more than 32767 pixels";
    }
    if (layout.frames > kMostForeignFrames) return "holds more than 2147483647 frames";
    return {};
}

std::int64_t ForeignFrameBytes(const ForeignLayout& layout)
{
    return layout.rows * layout.columns * kSampleBytes;
}

std::string WhyNotInTheFile(const ForeignLayout& layout, std::int64_t fileBytes)
{
    std::string why = WhyNotAnImage(layout);
    if (!why.empty()) return why;
    // At most 2^31 frames of 2^31 bytes: below 2^62.
    const bool isThere = layout.dataPosition >= 0 && layout.dataPosition <= fileBytes &&
                         layout.frames * ForeignFrameBytes(layout) <= fileBytes - layout.dataPosition;
    return isThere ? std::string() : "is cut short";
}

}  // namespace kelvo
