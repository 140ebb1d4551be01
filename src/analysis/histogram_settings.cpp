#include "analysis/histogram_settings.h"

#include "analysis/histogram_settings_write.h"
#include "analysis/measured_frame.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "state/state_registry.h"
#include "state/windows.h"

#include <algorithm>
#include <limits>
#include <span>

namespace kelvo {

namespace write {
HistogramVariables histogram;
}

constinit const HistSettingsRecord& HistSettings = write::histogram.HistSettings;
constinit const std::vector<std::int16_t>& HistScratchFrame = write::histogram.HistScratchFrame;

namespace {

const StateNames kStateNames{
    Named("HistSettings.Xsize", HistSettings.Xsize),
    Named("HistSettings.Ysize", HistSettings.Ysize),
    Named("HistSettings.Xposition", HistSettings.Xposition),
    Named("HistSettings.Yposition", HistSettings.Yposition),
    Named("HistSettings.XplotMin", HistSettings.XplotMin),
    Named("HistSettings.YplotMin", HistSettings.YplotMin),
    Named("HistSettings.XplotMax", HistSettings.XplotMax),
    Named("HistSettings.YplotMax", HistSettings.YplotMax),
    Named("HistSettings.Xautoscale", HistSettings.Xautoscale),
    Named("HistSettings.Yautoscale", HistSettings.Yautoscale),
    Named("HistSettings.Xgridlines", HistSettings.Xgridlines),
    Named("HistSettings.Ygridlines", HistSettings.Ygridlines),
    Named("HistSettings.Yscaling", HistSettings.Yscaling),
    Digest("HistScratchFrame", HistScratchFrame),
};

constexpr const char* kSection = "Histogram";
constexpr std::int32_t kLeastNumberMax = 2;

struct Key {
    const char* name;
    std::int32_t HistSettingsRecord::*field;
};
constexpr Key kRectangleKeys[] = {{"Xposition", &HistSettingsRecord::Xposition},
                                  {"Yposition", &HistSettingsRecord::Yposition},
                                  {"Xsize", &HistSettingsRecord::Xsize},
                                  {"Ysize", &HistSettingsRecord::Ysize}};
constexpr Key kAxisEndKeys[] = {{"XplotMax", &HistSettingsRecord::XplotMax},
                                {"YplotMax", &HistSettingsRecord::YplotMax},
                                {"XplotMin", &HistSettingsRecord::XplotMin},
                                {"YplotMin", &HistSettingsRecord::YplotMin}};
constexpr Key kBoxKeys[] = {{"Xautoscale", &HistSettingsRecord::Xautoscale},
                            {"Yautoscale", &HistSettingsRecord::Yautoscale},
                            {"Xgridlines", &HistSettingsRecord::Xgridlines},
                            {"Ygridlines", &HistSettingsRecord::Ygridlines},
                            {"Yscaling", &HistSettingsRecord::Yscaling}};

std::int32_t ReadKey(const Key& key, std::int32_t missing)
{
    return GetPrivateProfileInt(kSection, key.name, missing, IniFilePath);
}

void WriteKeys(std::span<const Key> keys)
{
    for (const Key& key : keys) {
        WritePrivateProfileString(kSection, key.name, Format("%d", HistSettings.*key.field), IniFilePath);
    }
}

// Sizes that a file names may be any numbers.
std::int32_t QuarterOf(const HistSettingsRecord& settings)
{
    const std::int64_t samples = std::int64_t{settings.Xsize} * settings.Ysize;
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(samples / 4, kLeastNumberMax, std::numeric_limits<std::int32_t>::max()));
}

}  // namespace

void ReadHistSettings()
{
    const Point size = FrameSizeOnView();
    HistSettingsRecord settings{
        .Xsize = size.x / 4, .Ysize = size.y / 4, .Xposition = size.x / 2, .Yposition = size.y / 2};
    for (const Key& key : kRectangleKeys) settings.*key.field = ReadKey(key, settings.*key.field);
    settings.YplotMax =
        std::max(GetPrivateProfileInt(kSection, "YplotMax", QuarterOf(settings), IniFilePath), kLeastNumberMax);
    for (const Key& key : kBoxKeys) settings.*key.field = ReadKey(key, settings.*key.field) != 0 ? 1 : 0;
    write::histogram.HistSettings = settings;
    SuitHistSettingsToView();
}

void SuitHistSettingsToView()
{
    HistSettingsRecord& settings = write::histogram.HistSettings;
    const CountRange range = RangeOnView();
    settings.XplotMin = std::clamp(range.low, kLowestCount, kHighestCount - 1);
    settings.XplotMax = std::clamp(range.high, settings.XplotMin + 1, kHighestCount);
    const Point size = FrameSizeOnView();
    if (!RectangleFits(settings, size)) CentreRectangle(settings, size);
}

void WriteHistRectangle()
{
    WriteKeys(kRectangleKeys);
}

void WriteHistAxes()
{
    WriteKeys(kAxisEndKeys);
    WriteKeys(kBoxKeys);
}

void ResetHistSettings()
{
    write::histogram = {};
}

}  // namespace kelvo
