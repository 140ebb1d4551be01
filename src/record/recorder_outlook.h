// Before a recording: whether disk, ring and file system will do for it. Pure but for TakeOutlook, which asks the
// machine.
#pragma once

#include "record/recorder_settings.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace kelvo {

struct RecorderOutlook {
    bool directoryIsThere = false;
    double neededBytesPerSecond = 0;             // 0: there is no frame rate
    std::optional<double> writesBytesPerSecond;  // as it was measured last; nullopt: not yet
    std::optional<double> freeBytes;             // nullopt: it can't be told
    double frameRateHz = 0;
    std::int64_t ringFrames = 0;
    std::int64_t longestPreTrigger = 0;  // frames
};
// With the present camera, ring and disk. Asks the file system how much is free, nothing more.
RecorderOutlook TakeOutlook(const RecorderSettings& settings, std::optional<double> writesBytesPerSecond);

// Why it won't do, as a sentence; empty: nothing speaks against it. The gravest first: no directory, a pre-trigger
// longer than the ring, a disk that is too slow, one without the room for the length that is set, or for a minute.
std::string OutlookWarning(const RecorderOutlook& outlook, const RecorderSettings& settings);

std::optional<double> RoomSeconds(const RecorderOutlook& outlook);
// "12.3 MB/s" (10^6), "-" for nothing.
std::string RateText(std::optional<double> bytesPerSecond);
// "850 min", "12.3 min", "42 s", "-" for nothing.
std::string RoomText(std::optional<double> seconds);

// The mean of the settings' rectangle or region in a picture of that many columns; nullopt where it isn't in it.
std::optional<double> TriggerMeanOf(std::span<const std::int16_t> picture, std::int32_t columns,
                                    const RecorderSettings& settings);

}  // namespace kelvo
