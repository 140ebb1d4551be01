#include "regions/region_script.h"

#include "display/units.h"
#include "regions/frame_on_view.h"
#include "regions/region_list.h"
#include "regions/region_table.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>
#include <utility>
#include <variant>

namespace kelvo {

namespace {

std::optional<double> NumberOf(const ScriptValue& value)
{
    if (const auto* const whole = std::get_if<std::int64_t>(&value)) return static_cast<double>(*whole);
    const auto* const number = std::get_if<double>(&value);
    return number ? std::optional(*number) : std::nullopt;
}

bool TakeText(const ScriptValue& value, Region& region)
{
    const auto* const text = std::get_if<std::string>(&value);
    if (text) region.name = *text;
    return text != nullptr;
}

bool TakeShape(const ScriptValue& value, Region& region)
{
    const auto* const text = std::get_if<std::string>(&value);
    const std::optional<RegionShape> shape = text ? ShapeNamed(*text) : std::nullopt;
    if (shape) region.shape = *shape;
    return shape.has_value();
}

template <auto member>
bool TakePlace(const ScriptValue& value, Region& region)
{
    const std::optional<double> number = NumberOf(value);
    if (!number || *number != std::floor(*number) || *number < kLeastRegionPlace || *number > kMostRegionPlace) {
        return false;
    }
    region.place.*member = static_cast<std::int32_t>(*number);
    return true;
}

bool TakeEmissivity(const ScriptValue& value, Region& region)
{
    const std::optional<double> number = NumberOf(value);
    if (number) region.emissivity = *number;
    return number.has_value();
}

bool TakeReflected(const ScriptValue& value, Region& region)
{
    region.reflectedC = NumberOf(value);
    return region.reflectedC.has_value();
}

struct TableField {
    std::string_view name;
    bool (*take)(const ScriptValue& value, Region& region);
};
constexpr TableField kTableFields[] = {
    {"name", TakeText},
    {"shape", TakeShape},
    {"x1", TakePlace<&RegionPlace::x1>},
    {"y1", TakePlace<&RegionPlace::y1>},
    {"x2", TakePlace<&RegionPlace::x2>},
    {"y2", TakePlace<&RegionPlace::y2>},
    {"emissivity", TakeEmissivity},
    {"reflected", TakeReflected},
    {"selected", [](const ScriptValue& /*value*/, Region& /*region*/) { return true; }},
};

std::optional<Region> RegionOf(const ScriptFields& table, std::string& why)
{
    Region region;
    for (const auto& [name, value] : table) {
        const auto* const field = std::ranges::find(kTableFields, name, &TableField::name);
        if (field == std::end(kTableFields)) {
            why = "there is no \"" + name + "\"";
            return std::nullopt;
        }
        if (!field->take(value, region)) {
            why = "\"" + name + "\" makes no sense";
            return std::nullopt;
        }
    }
    return region;
}

ScriptValue ValueOrNone(const std::optional<std::size_t>& number)
{
    return number ? ScriptValue(static_cast<std::int64_t>(*number)) : ScriptValue();
}

ScriptFields FieldsOf(const RegionReading& reading)
{
    std::string name;
    std::string unitText;
    GetUnitName(UnitOfRegions(), name, unitText);
    const RegionFigures& figures = reading.figures;
    const RegionValues& values = reading.values;
    ScriptFields fields{{"pixels", static_cast<std::int64_t>(figures.pixels)},
                        {"left_out", static_cast<std::int64_t>(figures.leftOut)},
                        {"unit", unitText},
                        {"emissivity_applies", reading.emissivityApplies}};
    if (figures.pixels == 0) return fields;
    const auto whole = [](std::int32_t number) { return ScriptValue(std::int64_t{number}); };
    const ScriptFields measured{{"mean", figures.mean},
                                {"deviation", figures.deviation},
                                {"min", whole(figures.least.count)},
                                {"min_x", whole(figures.least.x)},
                                {"min_y", whole(figures.least.y)},
                                {"max", whole(figures.most.count)},
                                {"max_x", whole(figures.most.x)},
                                {"max_y", whole(figures.most.y)},
                                {"saturated", ValueOrNone(figures.saturated)},
                                {"outside", ValueOrNone(figures.outsideSources)},
                                {"unit_mean", values.mean},
                                {"unit_deviation", values.deviation},
                                {"unit_min", values.least},
                                {"unit_max", values.most}};
    fields.insert(fields.end(), measured.begin(), measured.end());
    return fields;
}

ScriptFields StatsOf(const Region& region, std::string& why)
{
    if (CountsOnView().empty()) {
        why = "there is no frame on view";
        return {};
    }
    return FieldsOf(ReadRegion(region));
}

}  // namespace

std::vector<ScriptFields> RegionsForScript()
{
    std::vector<ScriptFields> tables;
    for (const Region& region : Regions) {
        const auto& [x1, y1, x2, y2] = region.place;
        tables.push_back({{"name", region.name},
                          {"shape", std::string(ShapeName(region.shape))},
                          {"x1", std::int64_t{x1}},
                          {"y1", std::int64_t{y1}},
                          {"x2", std::int64_t{x2}},
                          {"y2", std::int64_t{y2}},
                          {"emissivity", region.emissivity},
                          {"reflected", region.reflectedC ? ScriptValue(*region.reflectedC) : ScriptValue()},
                          {"selected", region.number == SelectedRegion}});
    }
    return tables;
}

std::string SetRegionsFromScript(const std::vector<ScriptFields>& tables)
{
    std::vector<Region> regions;
    std::string why;
    for (const ScriptFields& table : tables) {
        std::optional<Region> region = RegionOf(table, why);
        if (!region) return "region " + std::to_string(regions.size() + 1) + ": " + why;
        if (region->name.empty()) region->name = "R" + std::to_string(regions.size() + 1);
        regions.push_back(std::move(*region));
    }
    return SetRegions(std::move(regions), why) ? std::string() : why;
}

ScriptFields StatsOfNamed(const std::string& name, std::string& why)
{
    const Region* const region = FindRegion(std::string_view(name));
    if (region) return StatsOf(*region, why);
    why = "there is no region \"" + name + "\"";
    return {};
}

ScriptFields StatsOfTable(const ScriptFields& table, std::string& why)
{
    std::optional<Region> region = RegionOf(table, why);
    if (!region) return {};
    if (region->name.empty()) region->name = "R1";
    why = WhyNoRegion(*region);
    return why.empty() ? StatsOf(*region, why) : ScriptFields();
}

}  // namespace kelvo
