#include "imagefile/frame_file.h"

#include "platform/memory.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace kelvo {

namespace {

constexpr std::int16_t kBadDetectorCount = 4000;
constexpr double kLeastFloatSpan = 1.0;
constexpr double kSpanOfEqualEntries = 100.0;
constexpr std::size_t kFloatBytes = 4;
constexpr std::size_t kCountBytes = 2;

std::size_t FrameHeaderBytes(const ImageHeaderRecord& header)
{
    return static_cast<std::size_t>(std::max<std::int32_t>(header.ImageHeaderDataOffset, 0));
}

// Bounded before it is truncated, so that the conversion is defined for every float.
std::int16_t Truncated(double value)
{
    using Limits = std::numeric_limits<std::int16_t>;
    if (std::isnan(value)) return 0;
    return static_cast<std::int16_t>(std::clamp<double>(value, Limits::min(), Limits::max()));
}

float FloatAt(std::span<const std::uint8_t> block, std::size_t position)
{
    float value = 0;
    if (position + kFloatBytes <= block.size()) std::memcpy(&value, block.data() + position, kFloatBytes);
    return value;
}

template <typename Entry>
void Rescale(std::span<const Entry> list, const CountScale& scale, std::span<std::int16_t> counts)
{
    const std::size_t size = std::min(list.size(), counts.size());
    for (std::size_t i = 0; i < size; ++i) {
        counts[i] = Truncated((static_cast<double>(list[i]) - double{scale.offset}) * double{scale.gain});
    }
}

CountScale ScaleOver(double smallest, double span, std::int32_t displayLow, std::int32_t displayHigh)
{
    const double range = static_cast<double>(displayHigh) - static_cast<double>(displayLow);
    return {.gain = static_cast<float>(range / span), .offset = static_cast<float>(smallest)};
}

}  // namespace

std::size_t PixelCount(const ImageHeaderRecord& header)
{
    if (header.ImageWidth <= 0 || header.ImageHeight <= 0) return 0;
    return static_cast<std::size_t>(header.ImageWidth) * static_cast<std::size_t>(header.ImageHeight);
}

std::optional<std::int64_t> FrameRecordPosition(const ImageHeaderRecord& header, std::int32_t headerBytes,
                                                std::uint32_t frame)
{
    if (PixelCount(header) == 0 || header.SampleBytes <= 0 || header.ImageHeaderDataOffset < 0) return std::nullopt;
    const std::int64_t recordBytes = FrameRecordBytes(header);
    constexpr std::int64_t kLast = std::numeric_limits<std::int64_t>::max();
    if (std::int64_t{frame} > (kLast - headerBytes) / recordBytes - 1) return std::nullopt;
    return headerBytes + frame * recordBytes;
}

bool EnsureBlock(std::vector<std::uint8_t>& block, std::size_t bytes)
{
    return (!block.empty() && block.size() >= bytes) || AllocateBlock(block, bytes);
}

FrameRead ReadFrameRecord(File& file, const ImageHeaderRecord& header, std::int32_t headerBytes, std::uint32_t frame,
                          std::vector<std::uint8_t>& block)
{
    const std::optional<std::int64_t> position = FrameRecordPosition(header, headerBytes, frame);
    if (!position) return FrameRead::kShort;
    const std::int64_t recordBytes = FrameRecordBytes(header);
    if (*position + recordBytes > file.Length()) return FrameRead::kShort;

    const auto bytes = static_cast<std::size_t>(recordBytes);
    if (!EnsureBlock(block, bytes)) return FrameRead::kNoMemory;
    if (!file.Seek(*position)) return FrameRead::kShort;
    const std::span<std::uint8_t> record = std::span(block).first(bytes);
    return file.Read(std::as_writable_bytes(record)) == bytes ? FrameRead::kComplete : FrameRead::kShort;
}

std::int16_t CountOfFloat(float value)
{
    return Truncated(double{value} + 0.5);
}

void FloatRecordToCounts(std::span<const std::uint8_t> record, const ImageHeaderRecord& header,
                         std::span<std::uint8_t> counts)
{
    const std::size_t frameHeader = FrameHeaderBytes(header);
    std::copy_n(record.begin(), std::min({frameHeader, record.size(), counts.size()}), counts.begin());

    const std::size_t firstFloat = kFloatBytes * frameHeader;
    const std::size_t firstCount = std::min(kCountBytes * frameHeader, counts.size());
    const std::size_t size = std::min(PixelCount(header), (counts.size() - firstCount) / kCountBytes);
    for (std::size_t i = 0; i < size; ++i) {
        const std::int16_t count = CountOfFloat(FloatAt(record, firstFloat + i * kFloatBytes));
        std::memcpy(counts.data() + firstCount + i * kCountBytes, &count, kCountBytes);
    }
}

void SwapRecordWords(std::span<std::uint8_t> record, const ImageHeaderRecord& header)
{
    SwapDataBytes(std::as_writable_bytes(record), PixelCount(header));
}

void BadMapToCounts(std::span<const std::uint8_t> map, std::span<std::int16_t> counts)
{
    const std::size_t size = std::min(map.size(), counts.size());
    for (std::size_t i = 0; i < size; ++i) counts[i] = map[i] != 0 ? kBadDetectorCount : std::int16_t{0};
}

void BytesToCounts(std::span<const std::uint8_t> list, std::span<std::int16_t> counts)
{
    std::copy_n(list.begin(), std::min(list.size(), counts.size()), counts.begin());
}

void IntegersToCounts(std::span<const std::int16_t> list, std::span<std::int16_t> counts)
{
    std::copy_n(list.begin(), std::min(list.size(), counts.size()), counts.begin());
}

CountScale LongsToCounts(std::span<const std::int32_t> list, std::int32_t displayLow, std::int32_t displayHigh,
                         std::span<std::int16_t> counts)
{
    std::int64_t smallest = 0x7FFFFFFF;
    std::int64_t largest = 0;
    for (const std::int32_t entry : list) {
        smallest = std::min<std::int64_t>(smallest, entry);
        largest = std::max<std::int64_t>(largest, entry);
    }
    const double span =
        largest == smallest ? kSpanOfEqualEntries : static_cast<double>(largest) - static_cast<double>(smallest);
    const CountScale scale = ScaleOver(static_cast<double>(smallest), span, displayLow, displayHigh);
    Rescale(list, scale, counts);
    return scale;
}

CountScale FloatsToCounts(std::span<const float> list, std::int32_t displayLow, std::int32_t displayHigh,
                          std::span<std::int16_t> counts)
{
    float smallest = 2147483648.0F;
    float largest = -2147483648.0F;
    for (const float entry : list) {
        if (entry < smallest) smallest = entry;
        if (entry > largest) largest = entry;
    }
    double span = double{largest} - double{smallest};
    if (span < kLeastFloatSpan) span = kSpanOfEqualEntries;
    const CountScale scale = ScaleOver(smallest, span, displayLow, displayHigh);
    Rescale(list, scale, counts);
    return scale;
}

}  // namespace kelvo
