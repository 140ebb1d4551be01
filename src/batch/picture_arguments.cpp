#include "batch/picture_arguments.h"

#include "config/data_directory.h"
#include "display/color_map.h"
#include "display/units.h"
#include "platform/application.h"
#include "platform/files.h"
#include "regions/regions_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <string_view>
#include <system_error>
#include <utility>

namespace kelvo {

namespace {

constexpr std::string_view kOptions[] = {"--range", "--colors", "--data",        "--scale",
                                         "--unit",  "--time",   "--draw-regions"};
constexpr std::pair<std::string_view, std::int32_t> kUnits[] = {
    {"counts", kUnitCounts}, {"celsius", kUnitCelsius}, {"kelvin", kUnitKelvin}, {"fahrenheit", kUnitFahrenheit}};
constexpr std::string_view kColors[] = {"gray", "inverted", "color"};
constexpr std::size_t kLongestPalette = std::size_t{1} << 20;

std::optional<std::int16_t> CountAt(std::string_view text)
{
    std::int16_t count = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    return error == std::errc() && stop == text.data() + text.size() ? std::optional(count) : std::nullopt;
}

// "3000:9000"
std::optional<CountRange> RangeOf(std::string_view text)
{
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) return std::nullopt;
    const auto low = CountAt(text.substr(0, colon));
    const auto high = CountAt(text.substr(colon + 1));
    if (!low || !high || *low >= *high) return std::nullopt;
    return CountRange{*low, *high};
}

using ColorMapArray = std::array<std::uint8_t, kColorMapBytes>;

ColorMapArray MapOf(const PictureWish& wish)
{
    ColorMapArray map{};
    const bool isInverted = wish.colors == "inverted";
    for (std::size_t i = 0; i < map.size(); ++i) {
        const std::size_t gray = i % kColorMapEntries;
        map.at(i) = static_cast<std::uint8_t>(isInverted ? kColorMapEntries - 1 - gray : gray);
    }
    if (wish.colors != "color") return map;
    std::optional<std::string> palette = ReadWholeFile(wish.palette, kLongestPalette);
    if (!palette) palette = ResourceText("defaults/MATROX.PAL");
    ReadPalette(*palette, map);
    return map;
}

void StartWithoutDisplay()
{
    CommandLine none;
    none.offscreen = true;
    StartApplication(none);
}

// Of a file's frames; empty: they can be read in it.
std::string WhyNotIn(std::int32_t unit, const Provenance& provenance)
{
    if (unit == kUnitCounts) return {};
    const UnitScope scope(provenance.header, provenance.source);
    if (IsUnitAvailable(unit) == 0) return provenance.source + " has no calibration with two temperatures";
    if (provenance.pixels == kRawPixels) return provenance.source + " isn't corrected: a calibration set is needed";
    return {};
}

}  // namespace

std::optional<PictureWish> PictureWishOf(const BatchArguments& taken, ExportFormat format, std::string& why)
{
    PictureWish wish;
    const bool isAsked = std::ranges::any_of(
        kOptions, [&taken](std::string_view name) { return taken.Has(name) || taken.Value(name).has_value(); });
    if (!NamesOf(format).isPicture) {
        if (!isAsked) return wish;
        why = "--range, --colors, --data, --scale, --unit, --time and --draw-regions are of pictures: png and mp4";
        return std::nullopt;
    }
    const auto range = taken.Value("--range");
    if (range) wish.range = RangeOf(*range);
    wish.colors = taken.Value("--colors").value_or("gray");
    wish.palette = AbsolutePath(taken.Value("--data").value_or(DataDirectoryByDefault())) + "/MATROX.PAL";
    wish.scale = taken.Has("--scale");
    wish.time = taken.Has("--time");
    const std::string unit = taken.Value("--unit").value_or("counts");
    const auto* const named = std::ranges::find(kUnits, unit, &std::pair<std::string_view, std::int32_t>::first);
    if (range && !wish.range) {
        why = "--range LOW:HIGH says which counts the colors are spread over, -32768 to 32767, the low one first";
    } else if (std::ranges::find(kColors, wish.colors) == std::end(kColors)) {
        why = "--colors says which: gray, inverted or color";
    } else if (named == std::end(kUnits)) {
        why = "--unit says what the scale is in: counts, celsius, kelvin or fahrenheit";
    } else if (const auto path = taken.Value("--draw-regions")) {
        const std::optional<RegionsFile> file = ReadRegionsFile(*path, why);
        std::ranges::replace(why, '\n', ' ');
        if (file) wish.regions = file->regions;
    }
    if (!why.empty()) return std::nullopt;
    wish.unit = named->second;
    return wish;
}

std::optional<PictureOptions> PictureOptionsOf(const PictureWish& wish, const Provenance& provenance, std::string& why)
{
    const CountRange ofHeader{provenance.header.DisplayLow, provenance.header.DisplayHigh};
    const CountRange range = wish.range.value_or(ofHeader);
    if (range.Span() <= 0) {
        why =
            provenance.source + " has no display range: --range LOW:HIGH says which counts the colors are spread over";
        return std::nullopt;
    }
    if (wish.scale) why = WhyNotIn(wish.unit, provenance);
    if (!why.empty()) return std::nullopt;
    PictureOptions options{.look = PictureLook::Over(range, MapOf(wish)), .time = wish.time, .regions = wish.regions};
    if (!options.look) {
        why = "No memory is left.";
        return std::nullopt;
    }
    if (wish.scale) options.scale = ScaleOfExport(*options.look, ExportWhat::kFile, provenance, wish.unit);
    const bool hasText = wish.scale || wish.time || !wish.regions.empty();
    if (hasText) StartWithoutDisplay();
    return options;
}

}  // namespace kelvo
