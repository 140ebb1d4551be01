#include "analysis/line_settings.h"

#include "analysis/line_settings_write.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "state/state_registry.h"

namespace kelvo {

namespace write {
LineVariables line;
}

constinit const LinePlotSettings& LineSettings = write::line.LineSettings;
constinit const std::vector<std::int16_t>& LineScratchFrame = write::line.LineScratchFrame;

namespace {

constexpr std::string_view kSection = "LinePlot";

struct LineKey {
    std::string_view name;
    std::int32_t LinePlotSettings::*field;
};
constexpr LineKey kKeys[] = {
    {"Xstart", &LinePlotSettings::Xstart},
    {"Ystart", &LinePlotSettings::Ystart},
    {"Xend", &LinePlotSettings::Xend},
    {"Yend", &LinePlotSettings::Yend},
    {"Yautoscale", &LinePlotSettings::Yautoscale},
    {"Ygridlines", &LinePlotSettings::Ygridlines},
    {"Xgridlines", &LinePlotSettings::Xgridlines},
};

// The fields in their order, for scripts.
std::vector<double> FieldsOf(const LinePlotSettings& settings)
{
    std::vector<double> fields;
    for (const std::int32_t field :
         {settings.Xstart, settings.Ystart, settings.Xend, settings.Yend, settings.YplotMin, settings.YplotMax,
          settings.Yautoscale, settings.Xgridlines, settings.Ygridlines}) {
        fields.push_back(field);
    }
    return fields;
}

const StateNames kStateNames{
    {"LineSettings", []() -> StateValue { return FieldsOf(LineSettings); }},
    Digest("LineScratchFrame", LineScratchFrame),
};

}  // namespace

LinePlotSettings LineInside(LinePlotSettings settings, Point size)
{
    const auto inside = [](std::int32_t place, int count) { return place >= 0 && place < count; };
    if (inside(settings.Xstart, size.x) && inside(settings.Xend, size.x) && inside(settings.Ystart, size.y) &&
        inside(settings.Yend, size.y)) {
        return settings;
    }
    settings.Xstart = (size.x - 1) / 2;
    settings.Ystart = (size.y - 1) / 2;
    settings.Xend = (size.x - 1) / 8;
    settings.Yend = (size.y - 1) / 8;
    return settings;
}

void FitLineSettings(Point size, CountRange range)
{
    LinePlotSettings& settings = write::line.LineSettings;
    settings = LineInside(settings, size);
    settings.YplotMin = range.low;
    settings.YplotMax = range.high;
}

void ReadLineSettings(std::string_view file, Point size, CountRange range)
{
    LinePlotSettings& settings = write::line.LineSettings;
    settings = {.Xend = size.x - 1, .Yend = size.y - 1};
    for (const LineKey& key : kKeys) {
        settings.*key.field = GetPrivateProfileInt(kSection, key.name, settings.*key.field, file);
    }
    FitLineSettings(size, range);
}

void WriteLineSettings(std::string_view file)
{
    for (const LineKey& key : kKeys) {
        WritePrivateProfileString(kSection, key.name, Format("%d", LineSettings.*key.field), file);
    }
}

void ResetLineSettings()
{
    write::line = {};
}

}  // namespace kelvo
