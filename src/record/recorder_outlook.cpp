#include "record/recorder_outlook.h"

#include "grabber/capture.h"
#include "grabber/frame_size.h"
#include "platform/disk_space.h"
#include "platform/files.h"
#include "platform/text.h"
#include "record/recorder.h"
#include "regions/region_list.h"
#include "regions/region_measure.h"
#include "state/head_state.h"

#include <algorithm>
#include <cmath>

namespace kelvo {

namespace {

constexpr double kBytesPerMegabyte = 1e6;
constexpr double kSecondsPerMinute = 60;
constexpr double kLeastRoomSeconds = 60;
constexpr double kMinutesWithAFraction = 100;

double Megabytes(double bytes)
{
    return bytes / kBytesPerMegabyte;
}

std::string PreTriggerWarning(const RecorderOutlook& outlook, const RecorderSettings& settings)
{
    const bool tooLong =
        settings.trigger != RecordTrigger::kNone && PreTriggerFramesOf(settings) > outlook.longestPreTrigger;
    return tooLong ? "The pre-trigger is too long. " + LongestPreTriggerText() : std::string();
}

std::string DiskSpeedWarning(const RecorderOutlook& outlook)
{
    const double writes = outlook.writesBytesPerSecond.value_or(outlook.neededBytesPerSecond);
    const double missing = outlook.neededBytesPerSecond - writes;
    if (missing <= 0) return {};
    std::string text = Format("The disk is too slow: it takes %.1f MB/s of %.1f MB/s.", Megabytes(writes),
                              Megabytes(outlook.neededBytesPerSecond));
    if (outlook.frameRateHz <= 0) return text;
    // The ring fills by the share of the frames that the disk doesn't take.
    const double ringSeconds = static_cast<double>(outlook.ringFrames) / outlook.frameRateHz;
    return text + Format(" The ring bridges %.1f s.", ringSeconds * outlook.neededBytesPerSecond / missing);
}

// What the operator has said of the run's length; nullopt: it has none.
std::optional<double> SecondsWished(const RecorderOutlook& outlook, const RecorderSettings& settings)
{
    if (settings.length == RecordLength::kSeconds) return settings.seconds;
    if (settings.length != RecordLength::kFrames) return std::nullopt;
    const double period = outlook.frameRateHz > 0 ? 1 / outlook.frameRateHz : 0;
    return static_cast<double>(settings.frames) * std::max(period, settings.intervalSeconds);
}

std::string RoomWarning(const RecorderOutlook& outlook, const RecorderSettings& settings)
{
    const std::optional<double> room = RoomSeconds(outlook);
    if (!room) return {};
    const std::optional<double> wished = SecondsWished(outlook, settings);
    if (*room >= wished.value_or(kLeastRoomSeconds)) return {};
    std::string text = "The disk has room for " + RoomText(room) + " only.";
    return wished ? text + " The recording takes " + RoomText(wished) + "." : text;
}

}  // namespace

RecorderOutlook TakeOutlook(const RecorderSettings& settings, std::optional<double> writesBytesPerSecond)
{
    RecorderOutlook outlook = {.directoryIsThere = DirectoryExists(settings.directory),
                               .neededBytesPerSecond = BytesPerSecondNeeded(settings),
                               .writesBytesPerSecond = writesBytesPerSecond,
                               .freeBytes = std::nullopt,
                               .frameRateHz = double{FrameRate},
                               .ringFrames = 0,
                               .longestPreTrigger = LongestPreTrigger()};
    if (outlook.directoryIsThere) {
        if (const auto bytes = FreeDiskBytes(settings.directory)) outlook.freeBytes = static_cast<double>(*bytes);
    }
    outlook.ringFrames = static_cast<std::int64_t>(RingFrames(static_cast<std::int64_t>(CameraFrameValues())));
    return outlook;
}

std::string OutlookWarning(const RecorderOutlook& outlook, const RecorderSettings& settings)
{
    if (!outlook.directoryIsThere) return "The directory of the recordings isn't there.";
    if (outlook.neededBytesPerSecond <= 0) return {};  // without a camera nothing is known
    for (const std::string& warning :
         {PreTriggerWarning(outlook, settings), DiskSpeedWarning(outlook), RoomWarning(outlook, settings)}) {
        if (!warning.empty()) return warning;
    }
    return {};
}

std::optional<double> RoomSeconds(const RecorderOutlook& outlook)
{
    if (!outlook.freeBytes || outlook.neededBytesPerSecond <= 0) return std::nullopt;
    return *outlook.freeBytes / outlook.neededBytesPerSecond;
}

std::string RateText(std::optional<double> bytesPerSecond)
{
    return bytesPerSecond && *bytesPerSecond > 0 ? Format("%.1f MB/s", Megabytes(*bytesPerSecond)) : "-";
}

std::string RoomText(std::optional<double> seconds)
{
    if (!seconds) return "-";
    if (*seconds < kSecondsPerMinute) return Format("%.0f s", std::floor(*seconds));
    const double minutes = *seconds / kSecondsPerMinute;
    return Format(minutes < kMinutesWithAFraction ? "%.1f min" : "%.0f min", minutes);
}

std::optional<double> TriggerMeanOf(std::span<const std::int16_t> picture, std::int32_t columns,
                                    const RecorderSettings& settings)
{
    const std::int32_t rows = columns > 0 ? static_cast<std::int32_t>(std::ssize(picture) / columns) : 0;
    Region measured;
    if (settings.trigger == RecordTrigger::kRegion) {
        const Region* const region = FindRegion(settings.region);
        if (!region) return std::nullopt;
        measured = *region;
    } else {
        const bool inside = settings.meanLeft >= 0 && settings.meanTop >= 0 &&
                            settings.meanLeft <= settings.meanRight && settings.meanTop <= settings.meanBottom &&
                            settings.meanRight < columns;
        if (!inside || settings.meanBottom >= rows) return std::nullopt;
        measured.place = {settings.meanLeft, settings.meanTop, settings.meanRight, settings.meanBottom};
    }
    const std::vector<PixelRun> runs = PixelsOf(measured.shape, measured.place, columns, rows);
    const RegionFigures figures = MeasureRegion(picture, columns, rows, runs, {});
    return figures.pixels > 0 ? std::optional(figures.mean) : std::nullopt;
}

}  // namespace kelvo
