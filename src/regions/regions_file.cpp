#include "regions/regions_file.h"

#include "grabber/frame_size.h"
#include "platform/box.h"
#include "platform/files.h"
#include "platform/json.h"
#include "platform/text.h"
#include "platform/transcript.h"
#include "regions/region_list.h"
#include "state/windows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <set>
#include <span>
#include <utility>

namespace kelvo {

namespace {

constexpr const char* kFormat = "Kelvo regions";
constexpr std::size_t kLongestFile = std::size_t{1} << 20;
constexpr std::int32_t kMostSide = 32767;

constexpr std::array<std::string_view, 5> kFileKeys{"format", "version", "columns", "rows", "regions"};
constexpr std::array<std::string_view, 8> kRegionKeys{"name", "shape", "x1",         "y1",
                                                      "x2",   "y2",    "emissivity", "reflected"};

// A file's members, taken apart; the first that isn't as it should be says why, and the rest doesn't count.
class Members {
  public:
    Members(const JsonValue& value, std::string where, std::string& why)
        : value_(value), where_(std::move(where)), why_(why)
    {
    }

    // An object that has none but these.
    void Expect(std::span<const std::string_view> known)
    {
        if (!value_.Object()) return Refuse("isn't an object");
        for (const auto& [name, member] : *value_.Object()) {
            if (std::ranges::find(known, name) == known.end()) return Refuse("unknown key \"" + name + "\"");
        }
    }
    std::int32_t Whole(const char* name, std::int32_t least, std::int32_t most)
    {
        const double* const number = NumberOf(name);
        if (!number) return 0;
        if (!(*number >= least && *number <= most) || *number != std::floor(*number)) {
            Refuse(Format("\"%s\" isn't a whole number from %d to %d", name, least, most));
            return 0;
        }
        return static_cast<std::int32_t>(*number);
    }
    std::string Text(const char* name)
    {
        const JsonValue* const member = value_.Member(name);
        if (member && member->Text()) return *member->Text();
        Refuse(Format(member ? "\"%s\" isn't a text" : "\"%s\" is missing", name));
        return {};
    }
    std::optional<double> Optional(const char* name)
    {
        if (!value_.Member(name)) return std::nullopt;
        const double* const number = NumberOf(name);
        return number ? std::optional(*number) : std::nullopt;
    }
    bool Has(const char* name) const { return value_.Member(name) != nullptr; }

    void Refuse(const std::string& reason)
    {
        if (why_.empty()) why_ = where_.empty() ? reason : where_ + ": " + reason;
    }

  private:
    const double* NumberOf(const char* name)
    {
        const JsonValue* const member = value_.Member(name);
        const double* const number = member ? member->Number() : nullptr;
        if (!number) Refuse(Format(member ? "\"%s\" isn't a number" : "\"%s\" is missing", name));
        return number;
    }

    const JsonValue& value_;
    std::string where_;
    std::string& why_;
};

Region RegionOf(const JsonValue& value, const std::string& where, std::string& why)
{
    Members members(value, where, why);
    members.Expect(kRegionKeys);
    Region region;
    region.name = members.Text("name");
    const std::string shapeName = members.Text("shape");
    const std::optional<RegionShape> shape = ShapeNamed(shapeName);
    if (!shape) members.Refuse("unknown shape " + JsonString(shapeName));
    region.shape = shape.value_or(RegionShape::kPoint);
    const auto place = [&](const char* name) { return members.Whole(name, kLeastRegionPlace, kMostRegionPlace); };
    region.place = {.x1 = place("x1"), .y1 = place("y1")};
    region.place.x2 = region.place.x1;
    region.place.y2 = region.place.y1;
    const bool isPoint = region.shape == RegionShape::kPoint;
    if (!isPoint || members.Has("x2")) region.place.x2 = place("x2");
    if (!isPoint || members.Has("y2")) region.place.y2 = place("y2");
    region.emissivity = members.Optional("emissivity").value_or(1.0);
    region.reflectedC = members.Optional("reflected");
    const std::string no = why.empty() ? WhyNoRegion(region) : "";
    if (!no.empty()) members.Refuse(no);
    return region;
}

std::string LineOf(const Region& region)
{
    const auto number = [](const char* key, double value) { return Format(", \"%s\": ", key) + JsonNumber(value); };
    std::string line = "    {\"name\": " + JsonString(ToUtf8(region.name)) + ", \"shape\": \"" +
                       std::string(ShapeName(region.shape)) + '"' + number("x1", region.place.x1) +
                       number("y1", region.place.y1);
    if (region.shape != RegionShape::kPoint) line += number("x2", region.place.x2) + number("y2", region.place.y2);
    if (region.emissivity < 1) line += number("emissivity", region.emissivity);
    if (region.reflectedC) line += number("reflected", *region.reflectedC);
    return line + '}';
}

void CheckList(const std::vector<Region>& regions, std::string& why)
{
    std::set<std::string_view> names;
    for (const Region& region : regions) {
        if (why.empty() && !names.insert(region.name).second) why = "two regions are named " + JsonString(region.name);
    }
}

// What stands in view.regions.
std::optional<std::vector<Region>> kept;
bool failureIsTold = false;

}  // namespace

std::optional<RegionsFile> RegionsOfText(std::string_view text, std::string& why)
{
    why.clear();
    const std::optional<JsonValue> json = ReadJson(text, why);
    if (!json) return std::nullopt;
    Members members(*json, "", why);
    if (!json->Object() || !json->Member("format") || members.Text("format") != kFormat) {
        why = "it isn't a file of regions";
        return std::nullopt;
    }
    const std::int32_t version = members.Whole("version", 1, kMostSide);
    if (why.empty() && version != kRegionsFileVersion) {
        why = Format("it is of version %d, which a newer Kelvo reads", version);
    }
    members.Expect(kFileKeys);
    RegionsFile file;
    file.columns = members.Whole("columns", 0, kMostSide);
    file.rows = members.Whole("rows", 0, kMostSide);
    const JsonValue* const member = json->Member("regions");
    const JsonItems* const list = member ? member->Array() : nullptr;
    if (!list) members.Refuse("\"regions\" isn't a list");
    if (list && list->size() > kMostRegions) {
        members.Refuse(Format("it holds more than %zu regions", kMostRegions));
    }
    if (!why.empty() || !list) return std::nullopt;
    for (const JsonValue& region : *list) {
        file.regions.push_back(RegionOf(region, Format("region %zu", file.regions.size() + 1), why));
        if (!why.empty()) return std::nullopt;
    }
    CheckList(file.regions, why);
    return why.empty() ? std::optional(std::move(file)) : std::nullopt;
}

std::string TextOfRegions(const RegionsFile& file)
{
    std::string text =
        Format("{\n  \"format\": \"%s\",\n  \"version\": %d,\n  \"columns\": %d,\n  \"rows\": %d,\n  \"regions\": [",
               kFormat, kRegionsFileVersion, file.columns, file.rows);
    for (const Region& region : file.regions) text += (&region == file.regions.data() ? "\n" : ",\n") + LineOf(region);
    return text + (file.regions.empty() ? "]\n}\n" : "\n  ]\n}\n");
}

std::optional<RegionsFile> ReadRegionsFile(const std::string& path, std::string& why)
{
    const std::optional<std::string> text = ReadWholeFile(path, kLongestFile);
    std::optional<RegionsFile> file;
    if (text) {
        file = RegionsOfText(*text, why);
    } else {
        why = FileExists(path) ? "it can't be read, or is no file of regions" : "there is no such file";
    }
    if (!file) why = path + "\n" + why;
    return file;
}

bool WriteRegionsFile(const std::string& path, const RegionsFile& file, std::string& why)
{
    if (ReplaceFile(path, TextOfRegions(file))) return true;
    why = "Could not save file: " + path;
    return false;
}

std::optional<NamedRegions> ReadNamedRegions(const std::string& text, std::string& why)
{
    constexpr std::string_view kDivider = ".regions:";
    std::size_t colon = text.rfind(kDivider);
    colon = colon == std::string::npos ? text.rfind(':') : colon + kDivider.size() - 1;
    NamedRegions named{.areAll = colon == std::string::npos || FileExists(text)};
    const std::string path = named.areAll ? text : text.substr(0, colon);
    std::optional<RegionsFile> file = ReadRegionsFile(path, why);
    if (!file) {
        // A reason that is made for a box names the file on a line of its own.
        if (const std::size_t end = why.find('\n'); end != std::string::npos) why.replace(end, 1, ": ");
        return std::nullopt;
    }
    const std::string name = named.areAll ? std::string() : text.substr(colon + 1);
    for (Region& region : file->regions) {
        if (named.areAll || region.name == name) named.regions.push_back(std::move(region));
    }
    if (!named.regions.empty()) return named;
    why = path + (named.areAll ? " has no region" : " has no region " + name);
    return std::nullopt;
}

RegionsFile RegionsOnView()
{
    const Point size = FrameSizeOnView();
    return {.columns = std::clamp(size.x, 0, kMostSide), .rows = std::clamp(size.y, 0, kMostSide), .regions = Regions};
}

std::string KeptRegionsPath()
{
    return DefaultDir + "/view.regions";
}

void LoadKeptRegions()
{
    const std::string path = KeptRegionsPath();
    kept = std::vector<Region>();
    if (!FileExists(path)) return;
    std::string why;
    std::optional<RegionsFile> file = ReadRegionsFile(path, why);
    if (!file || !SetRegions(std::move(file->regions), why)) {
        MoveFileTo(path, path + ".bad");
        MessageBox(hWndMain,
                   "The regions of the last time can't be read:\n" + why + "\n\nThe file is kept as view.regions.bad.",
                   kMessageCaption);
    }
    kept = Regions;
}

void KeepRegions()
{
    if (!kept) return;
    if (*kept == Regions) {
        failureIsTold = false;  // nothing is lost any more
        return;
    }
    std::string why;
    if (WriteRegionsFile(KeptRegionsPath(), RegionsOnView(), why)) {
        kept = Regions;
        failureIsTold = false;
    } else if (!std::exchange(failureIsTold, true)) {
        MessageBox(hWndMain, why, kMessageCaption);
    }
}

void ResetKeptRegions()
{
    kept.reset();
    failureIsTold = false;
}

}  // namespace kelvo
