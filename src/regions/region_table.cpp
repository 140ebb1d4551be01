#include "regions/region_table.h"

#include "display/units.h"
#include "grabber/frame_size.h"
#include "platform/text.h"
#include "regions/bad_detectors.h"
#include "regions/frame_on_view.h"
#include "regions/region_list.h"
#include "state/display_state.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <string_view>

namespace kelvo {

namespace {

// Characters of each column; a negative width begins at the left.
enum Column {
    kName,
    kShape,
    kPlace,
    kPixels,
    kBad,
    kMean,
    kDeviation,
    kLeast,
    kLeastAt,
    kMost,
    kMostAt,
    kSaturated,
    kOutside
};
constexpr std::array<int, 13> kWidths{-11, -10, -16, 7, 5, 12, 11, 10, -9, 10, -9, 5, 8};

constexpr int kMeanDecimals = 4;
constexpr int kExtremeDecimals = 3;

// Characters, not bytes.
int Length(std::string_view utf8)
{
    return static_cast<int>(
        std::ranges::count_if(utf8, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::string Shortened(std::string text, int most)
{
    if (Length(text) <= most) return text;
    while (Length(text) > most - 2) {
        text.pop_back();
        while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xC0) == 0x80) text.pop_back();
        if (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xC0) == 0xC0) text.pop_back();
    }
    return text + "..";
}

// A cell with a blank before the next one.
void Put(std::string& line, Column column, std::string_view bytes)
{
    const int width = kWidths[column];
    const std::string text = ToUtf8(bytes);
    const std::string blanks(static_cast<std::size_t>(std::max(std::abs(width) - 1 - Length(text), 0)), ' ');
    line += width < 0 ? text + blanks + ' ' : blanks + text + ' ';
}

std::string At(const PixelCount& pixel)
{
    return Format("@%d,%d", pixel.x, pixel.y);
}

std::string NumberText(const std::optional<std::size_t>& number)
{
    return number ? std::to_string(*number) : "-";
}

std::string ExtremeText(double value, std::int32_t unit, bool emissivityApplies)
{
    const bool isWhole = unit == kUnitCounts && !emissivityApplies;
    return Format("%.*f", isWhole ? 0 : kExtremeDecimals, value);
}

}  // namespace

RegionReading ReadRegion(const Region& region)
{
    const Point size = FrameSizeOnView();
    const BadDetMap& bad = BadDetectorsOnView();
    const std::vector<PixelRun> runs = PixelsOf(region.shape, region.place, size.x, size.y);
    RegionReading reading;
    reading.figures = MeasureRegion(CountsOnView(), size.x, size.y, runs, OptionsOnView(bad));
    reading.values = ValuesOf(reading.figures, region, UnitOfRegions());
    reading.emissivityApplies = EmissivityApplies(region);
    return reading;
}

std::vector<RegionReading> ReadRegions()
{
    const Point size = FrameSizeOnView();
    const std::span<const std::int16_t> frame = CountsOnView();
    const MeasureOptions options = OptionsOnView(BadDetectorsOnView());
    const std::int32_t unit = UnitOfRegions();
    std::vector<RegionReading> readings;
    for (const Region& region : Regions) {
        const std::vector<PixelRun> runs = PixelsOf(region.shape, region.place, size.x, size.y);
        const RegionFigures figures = MeasureRegion(frame, size.x, size.y, runs, options);
        readings.push_back({figures, ValuesOf(figures, region, unit), EmissivityApplies(region)});
    }
    return readings;
}

std::int32_t UnitOfRegions()
{
    return IsUnitAvailable(DisplayUnit) ? DisplayUnit : kUnitCounts;
}

std::string RegionTableHead(std::int32_t unit)
{
    std::string name;
    std::string unitText;
    GetUnitName(unit, name, unitText);
    std::string line;
    Put(line, kName, "Name");
    Put(line, kShape, "Shape");
    Put(line, kPlace, "Place");
    Put(line, kPixels, "Pixels");
    Put(line, kBad, "Bad");
    Put(line, kMean, unitText.empty() || unit == kUnitCounts ? "Mean" : "Mean " + unitText);
    Put(line, kDeviation, "Deviation");
    Put(line, kLeast, "Minimum");
    Put(line, kLeastAt, "");
    Put(line, kMost, "Maximum");
    Put(line, kMostAt, "");
    Put(line, kSaturated, "Sat.");
    Put(line, kOutside, "Outside");
    return line;
}

std::string RegionTableLine(const Region& region, const RegionReading& reading, std::int32_t unit)
{
    const RegionFigures& figures = reading.figures;
    const RegionValues& values = reading.values;
    const bool any = figures.pixels != 0;
    const auto measured = [any](const std::string& text) { return any ? text : std::string("-"); };
    std::string line;
    Put(line, kName, Shortened(ToUtf8(region.name), -kWidths[kName] - 1));
    Put(line, kShape, ShapeName(region.shape));
    Put(line, kPlace, PlaceText(region));
    Put(line, kPixels, std::to_string(figures.pixels));
    Put(line, kBad, std::to_string(figures.leftOut));
    Put(line, kMean, measured(Format("%.*f", kMeanDecimals, values.mean) + (reading.emissivityApplies ? "*" : "")));
    Put(line, kDeviation, measured(Format("%.*f", kMeanDecimals, values.deviation)));
    Put(line, kLeast, measured(ExtremeText(values.least, unit, reading.emissivityApplies)));
    Put(line, kLeastAt, any ? At(figures.least) : "");
    Put(line, kMost, measured(ExtremeText(values.most, unit, reading.emissivityApplies)));
    Put(line, kMostAt, any ? At(figures.most) : "");
    Put(line, kSaturated, measured(NumberText(figures.saturated)));
    Put(line, kOutside, measured(NumberText(figures.outsideSources)));
    return line;
}

std::string PlaceText(const Region& region)
{
    const RegionPlace& place = region.place;
    std::string text = Format("%d,%d", place.x1, place.y1);
    if (region.shape != RegionShape::kPoint) text += Format("-%d,%d", place.x2, place.y2);
    return text;
}

}  // namespace kelvo
