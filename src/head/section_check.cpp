#include "head/section_check.h"

#include "grabber/frame_size.h"
#include "head/head_settings.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "state/camera_config.h"
#include "state/windows.h"

#include <cstdint>

namespace kelvo {

namespace {

constexpr std::int32_t kLargestByte = 255;

struct Range {
    const char* key;
    std::int32_t defaultValue;
    std::int32_t lowest;
    std::int32_t highest;
};

constexpr Range kRanges[] = {
    {"Hroi", 125, 1, kLargestFrameSide},
    {"Vroi", 124, 1, kLargestFrameSide},
    {"Hactive", 125, 1, kLargestFrameSide},
    {"Vactive", 124, 1, kLargestFrameSide},
    {"QVF1058_MasterClockFrequency", 48000000, 1, 2147483647},
    {"QVF1058_MasterClockMinIndex", 2, 0, kLargestByte},
    {"QVF1058_MasterClockMaxIndex", 63, 0, kLargestByte},
};

std::string OutOfRange(const char* key, std::int32_t value, std::int32_t lowest, std::int32_t highest)
{
    return Format("%s=%d must lie between %d and %d.", key, value, lowest, highest);
}

std::optional<std::string> CheckRanges()
{
    for (const Range& each : kRanges) {
        const std::int32_t value = HeadKey(each.key, each.defaultValue);
        if (value < each.lowest || value > each.highest) return OutOfRange(each.key, value, each.lowest, each.highest);
    }
    return std::nullopt;
}

// The clock index is a byte: the row of the frame rate list, counted from the lowest index.
std::optional<std::string> CheckFrameRateIndex()
{
    const std::int32_t lowestIndex = HeadKey("QVF1058_MasterClockMinIndex", 2);
    const std::int32_t index = HeadKey("IndexFrameRate", 3);
    const std::int64_t clockIndex = std::int64_t{index} + lowestIndex;
    if (clockIndex >= 0 && clockIndex <= kLargestByte) return std::nullopt;
    return OutOfRange("IndexFrameRate", index, -lowestIndex, kLargestByte - lowestIndex);
}

// Channels into which a scheme deals a line: half and quarter lines divide by their width.
std::int32_t PartsOfLine(std::int32_t scheme)
{
    if (scheme == 4 || scheme == 5) return 2;
    return scheme == 7 ? 4 : 1;
}

std::optional<std::string> CheckScheme()
{
    const std::int32_t scheme = HeadKey("DecomScheme", 0);
    const std::int32_t columns = HeadKey("Hroi", 125);
    if (columns >= PartsOfLine(scheme)) return std::nullopt;
    return Format("DecomScheme=%d needs Hroi to be at least %d.", scheme, PartsOfLine(scheme));
}

// The first sample of an image lies inside its frame. A text that is no number leaves the value that was read before.
std::optional<std::string> CheckCalDelay()
{
    const std::string text = GetPrivateProfileString(ActiveCameraSection(), "CalDelay", "0", CameraFilePath);
    const std::int32_t delay = ScanDecimal(text).value_or(ActiveConfig.CalDelay);
    const std::int32_t pixels = HeadKey("Hroi", 125) * HeadKey("Vroi", 124);  // both have been checked
    if (delay < pixels) return std::nullopt;
    return Format("CalDelay=%d must be less than %d, the pixels of a frame.", delay, pixels);
}

}  // namespace

std::optional<std::string> WhyCameraCantRun()
{
    for (const auto check : {CheckRanges, CheckFrameRateIndex, CheckScheme, CheckCalDelay}) {
        if (auto reason = check()) return reason;
    }
    return std::nullopt;
}

}  // namespace kelvo
