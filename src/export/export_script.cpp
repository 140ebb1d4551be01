#include "export/export_script.h"

#include "export/export_formats.h"
#include "export/export_job.h"
#include "export/export_source.h"
#include "platform/interrupt.h"
#include "platform/pointer.h"
#include "regions/region_list.h"
#include "regions/regions_file.h"
#include "state/display_state.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

ScriptFields lastExport;

struct Wish {
    ExportRequest request{.what = ExportWhat::kOnView};
    std::optional<ExportFormat> given;  // where "to" says it
    ExportFormat format = ExportFormat::kNpy;
    std::string out;
    std::vector<std::string> outs;  // a file for each part
    std::int64_t count = -1;
    bool replace = false;
    std::string region;      // of the view's, or of those of a file
    std::string regions;     // that file
    bool areOfView = false;  // regions = true
    bool scale = false;
    bool time = false;
    std::vector<Region> drawn;
};

template <typename Value>
bool Take(const ScriptValue& value, Value& field)
{
    const auto* const given = std::get_if<Value>(&value);
    if (given != nullptr) field = *given;
    return given != nullptr;
}

bool TakeWhat(const ScriptValue& value, ExportWhat& what)
{
    const auto* const word = std::get_if<std::string>(&value);
    if (word == nullptr || (*word != "view" && *word != "file" && *word != "host frames")) return false;
    what = *word == "view" ? ExportWhat::kOnView : *word == "file" ? ExportWhat::kFile : ExportWhat::kHostFrames;
    return true;
}

bool TakeForm(const ScriptValue& value, ExportForm& form)
{
    const auto* const word = std::get_if<std::string>(&value);
    const auto found = word ? ExportFormOf(*word) : std::nullopt;
    if (found) form = *found;
    return found.has_value();
}

bool TakeFormat(const ScriptValue& value, std::optional<ExportFormat>& format)
{
    const auto* const word = std::get_if<std::string>(&value);
    if (word != nullptr) format = ExportFormatOf(*word);
    return format.has_value();
}

bool TakePlace(const ScriptValue& value, std::optional<RegionPlace>& place)
{
    const auto* const sides = std::get_if<std::vector<double>>(&value);
    const auto isPixel = [](double side) { return side == std::floor(side) && std::fabs(side) <= 32767; };
    if (sides == nullptr || sides->size() != 4 || !std::ranges::all_of(*sides, isPixel)) return false;
    const auto at = [sides](std::size_t i) { return static_cast<std::int32_t>((*sides)[i]); };
    place = RegionPlace{at(0), at(1), at(2), at(3)};
    return true;
}

bool TakeRegions(const ScriptValue& value, Wish& wish)
{
    const bool* const ofView = std::get_if<bool>(&value);
    if (ofView != nullptr) wish.areOfView = *ofView;
    return ofView != nullptr ? *ofView : Take(value, wish.regions) && !wish.regions.empty();
}

// true: those of the view; otherwise the path of a file.
bool TakeRegionsToDraw(const ScriptValue& value, std::vector<Region>& regions)
{
    if (const auto* const ofView = std::get_if<bool>(&value)) {
        if (*ofView) regions = Regions;
        return true;
    }
    const auto* const path = std::get_if<std::string>(&value);
    std::string why;
    const auto file = path ? ReadRegionsFile(*path, why) : std::nullopt;
    if (file) regions = file->regions;
    return file.has_value();
}

struct Field {
    std::string_view name;
    bool (*take)(const ScriptValue& value, Wish& wish);
};
constexpr Field kFields[] = {
    {"out", [](const ScriptValue& value, Wish& wish) { return Take(value, wish.out); }},
    {"of", [](const ScriptValue& value, Wish& wish) { return TakeWhat(value, wish.request.what); }},
    {"file", [](const ScriptValue& value, Wish& wish) { return Take(value, wish.request.path); }},
    {"to", [](const ScriptValue& value, Wish& wish) { return TakeFormat(value, wish.given); }},
    {"as", [](const ScriptValue& value, Wish& wish) { return TakeForm(value, wish.request.form); }},
    {"first", [](const ScriptValue& value, Wish& wish) { return Take(value, wish.request.first); }},
    {"count", [](const ScriptValue& value, Wish& wish) { return Take(value, wish.count) && wish.count > 0; }},
    {"set", [](const ScriptValue& value, Wish& wish) { return Take(value, wish.request.set); }},
    {"in_force", [](const ScriptValue& value, Wish& wish) { return Take(value, wish.request.listsInForce); }},
    {"rectangle", [](const ScriptValue& value, Wish& wish) { return TakePlace(value, wish.request.place); }},
    {"region", [](const ScriptValue& value, Wish& wish) { return Take(value, wish.region) && !wish.region.empty(); }},
    {"regions", [](const ScriptValue& value, Wish& wish) { return TakeRegions(value, wish); }},
    {"scale", [](const ScriptValue& value, Wish& wish) { return Take(value, wish.scale); }},
    {"time", [](const ScriptValue& value, Wish& wish) { return Take(value, wish.time); }},
    {"draw_regions", [](const ScriptValue& value, Wish& wish) { return TakeRegionsToDraw(value, wish.drawn); }},
    {"replace", [](const ScriptValue& value, Wish& wish) { return Take(value, wish.replace); }},
};

// Those of the file, or else of the view; of a name that one alone.
bool TakeRegionsOf(Wish& wish, std::string& why)
{
    wish.outs = {wish.out};
    if (wish.region.empty() && wish.regions.empty() && !wish.areOfView) return true;
    if (wish.request.place) {
        why = "\"rectangle\" doesn't go with regions";
        return false;
    }
    std::optional<RegionsFile> file = RegionsOnView();
    if (!wish.regions.empty()) file = ReadRegionsFile(wish.regions, why);
    if (!file) return false;
    if (!wish.region.empty()) std::erase_if(file->regions, [&](const Region& one) { return one.name != wish.region; });
    if (file->regions.empty()) {
        why = wish.region.empty() ? "there is no region" : "there is no region \"" + wish.region + "\"";
        return false;
    }
    if (wish.region.empty()) wish.outs = PathsOfRegions(wish.out, file->regions);
    wish.request.regions = std::move(file->regions);
    return true;
}

std::optional<Wish> WishOf(const ScriptFields& table, std::string& why)
{
    Wish wish;
    for (const auto& [name, value] : table) {
        const auto* const field = std::ranges::find(kFields, name, &Field::name);
        if (field == std::end(kFields)) {
            why = "no setting \"" + name + "\"";
        } else if (!field->take(value, wish)) {
            why = "\"" + name + "\" can't have that value";
        }
        if (!why.empty()) return std::nullopt;
    }
    const std::optional<ExportFormat> format = wish.given ? wish.given : ExportFormatByExtension(wish.out);
    if (wish.out.empty()) {
        why = "\"out\" names the new file";
    } else if (!format) {
        why = "\"to\" says which format";
    } else if ((wish.request.what == ExportWhat::kFile) != !wish.request.path.empty()) {
        why = "\"file\" goes with of = \"file\"";
    } else if (!NamesOf(*format).isPicture && (wish.scale || wish.time || !wish.drawn.empty())) {
        why = "\"scale\", \"time\" and \"draw_regions\" are of pictures";
    } else if (NamesOf(*format).isPicture && IsFloatForm(wish.request.form)) {
        why = std::string(kPictureOfCounts);
    } else if (TakeRegionsOf(wish, why)) {
        wish.format = *format;
        wish.request.asShown = NamesOf(*format).isPicture;
        if (wish.count > 0) wish.request.end = wish.request.first + wish.count;
        return wish;
    }
    return std::nullopt;
}

// What is on view now, for all frames; nullopt where memory is refused.
std::optional<PictureOptions> PictureOf(const Wish& wish, const Provenance& provenance)
{
    PictureOptions options{.time = wish.time, .regions = wish.drawn};
    if (!wish.request.asShown) return options;
    options.look = PictureLook::OnView();
    if (!options.look) return std::nullopt;
    if (wish.scale) options.scale = ScaleOfExport(*options.look, wish.request.what, provenance, DisplayUnit);
    return options;
}

ScriptFields FieldsOf(const Wish& wish, const ExportDescription& description, const ExportOutcome& outcome)
{
    const Provenance& provenance = description.provenance;
    return {
        {"file", outcome.files.empty() ? wish.outs.front() : outcome.files.front()},
        {"files", outcome.files},
        {"format", std::string(NamesOf(wish.format).word)},
        {"form", std::string(WordOf(provenance.form))},
        {"unit", provenance.unit},
        {"frames", outcome.frames},
        {"columns", static_cast<std::int64_t>(description.columns)},
        {"rows", static_cast<std::int64_t>(description.rows)},
        {"bad_detectors", provenance.badKnown ? ScriptValue(provenance.badDetectors) : ScriptValue()},
        {"stopped", outcome.stopped},
    };
}

}  // namespace

std::string ExportByScript(const ScriptFields& table)
{
    std::string why;
    const std::optional<Wish> wish = WishOf(table, why);
    if (!wish) return why;
    std::optional<ExportSource> source = ExportSource::Open(wish->request, why);
    if (!source) return why;
    std::optional<PictureOptions> options = PictureOf(*wish, source->Description().provenance);
    if (!options) return "No memory is left.";
    const Hourglass hourglass;
    const auto sinks = MakeFrameSinks(wish->format, wish->outs, wish->replace, *options);
    const ExportOutcome outcome = RunExport(*source, sinks, [](std::int64_t, std::int64_t) { return !EscapeCame(); });
    if (outcome.failure.empty()) lastExport = FieldsOf(*wish, source->Description(), outcome);
    return outcome.failure;
}

ScriptFields LastExportFields()
{
    return lastExport;
}

void ResetExportScript()
{
    lastExport.clear();
}

}  // namespace kelvo
