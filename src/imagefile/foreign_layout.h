// How frames lie in a file of another program: what its head tells, before a sample is read. Every reader of such files
// gives one of these, or a reason that goes on behind the file's name: "holds floats", "is cut short".
#pragma once

#include <cstdint>
#include <string>

namespace kelvo {

enum class ForeignSamples {
    kSigned,    // -32768 to 32767, as they stand
    kUnsigned,  // 0 to 65535, as they stand
    kBiased,    // 0 to 65535, stored with sign and 32768 lower
};

// All samples have 16 bits; rows follow each other without gaps, and so do frames.
struct ForeignLayout {
    std::int64_t frames = 1;
    std::int64_t rows = 0;
    std::int64_t columns = 0;
    std::int64_t dataPosition = 0;  // of the first sample in the file; of no meaning where frames are compressed
    ForeignSamples samples = ForeignSamples::kSigned;
    bool isBigEndian = false;
    bool isBottomUp = false;   // the first row stored is the lowest one of the picture
    double integrationMs = 0;  // 0: not told
};

// The sides and the number of frames that an image header can tell of.
constexpr std::int64_t kMostForeignSide = 32767;
constexpr std::int64_t kMostForeignFrames = 2147483647;

// The reason where whoever asked for the frames wanted no more of them.
inline constexpr const char* kNotLookedThrough = "wasn't looked through";

// Empty, or why no image header can tell of them: "holds no pixels", "has sides of more than 32767 pixels", "holds more
// than 2147483647 frames".
std::string WhyNotAnImage(const ForeignLayout& layout);

std::int64_t ForeignFrameBytes(const ForeignLayout& layout);

// The same for frames that lie uncompressed in a file of that length: beside the above "is cut short". No product
// leaves 64 bits.
std::string WhyNotInTheFile(const ForeignLayout& layout, std::int64_t fileBytes);

}  // namespace kelvo
