#include "fileboard/file_settings.h"

#include "platform/files.h"
#include "platform/profile.h"
#include "platform/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <span>
#include <system_error>

namespace kelvo {

namespace {

constexpr std::size_t kLongestFile = 1 << 20;
constexpr std::size_t kLongestQuote = 80;
constexpr double kSlowestClockHz = 1e5;
constexpr double kFastestClockHz = 1e9;

constexpr std::array<const char*, kFileSources> kFileKeys{"Low", "High", "Scene"};
constexpr std::array<std::string_view, 2> kModels{"InSb", "HgCdTe"};
constexpr std::array<std::string_view, 2> kEnds{"loop", "once"};

// One key of the file: its text, and what is said where that is wrong.
struct Key {
    const std::string& path;
    const char* section;
    const char* key;

    bool IsThere() const { return HasProfileKey(section, key, path); }
    std::string Text() const { return GetPrivateProfileString(section, key, "", path); }
    std::string Wrong(const std::string& allowed) const
    {
        return Format("%s:\n%s of [%s] is \"%s\". It has to be %s.", path.c_str(), key, section,
                      Text().substr(0, kLongestQuote).c_str(), allowed.c_str());
    }
};

// The place of the key's text among names, 0 where the key is missing; nullopt with the reason in error.
std::optional<std::size_t> ReadChoice(const Key& key, std::span<const std::string_view> names, std::string& error)
{
    if (!key.IsThere()) return 0;
    const auto found =
        std::ranges::find_if(names, [&](std::string_view name) { return EqualIgnoringCase(name, key.Text()); });
    if (found != names.end()) return static_cast<std::size_t>(found - names.begin());
    std::string allowed = "one of: ";
    for (const std::string_view name : names) allowed += (name == names.front() ? "" : ", ") + std::string(name);
    error = key.Wrong(allowed);
    return std::nullopt;
}

// A number within the limits, or 0 where that is allowed; value stays where the key is missing.
bool ReadNumber(const Key& key, double lowest, double highest, bool zeroIsAllowed, double& value, std::string& error)
{
    if (!key.IsThere()) return true;
    const std::string text = key.Text();
    const std::string_view trimmed = Trimmed(text);
    double number = 0;
    const auto [end, code] = std::from_chars(trimmed.data(), trimmed.data() + trimmed.size(), number);
    const bool isNumber = code == std::errc{} && end == trimmed.data() + trimmed.size();
    if (isNumber && ((number >= lowest && number <= highest) || (zeroIsAllowed && number == 0))) {
        value = number;
        return true;
    }
    error = key.Wrong(Format("%sa number from %g to %g", zeroIsAllowed ? "0 or " : "", lowest, highest));
    return false;
}

// The source in front at the start; where none is named, the first of scene, low and high that has a file.
bool ReadSource(const std::string& path, FileSettings& settings, std::string& error)
{
    const Key key{path, "Bench", "Source"};
    const auto hasFile = [&](FileSource source) {
        return !settings.files.at(static_cast<std::size_t>(source)).empty();
    };
    if (!key.IsThere()) {
        for (const FileSource source : {FileSource::kScene, FileSource::kLow, FileSource::kHigh}) {
            settings.source = source;
            if (hasFile(source)) return true;
        }
        error = path + ":\n[Frames] names no file: Low, High and Scene are empty.";
        return false;
    }
    const std::optional<std::size_t> source = ReadChoice(key, kFileSourceNames, error);
    if (!source) return false;
    settings.source = static_cast<FileSource>(*source);
    if (hasFile(settings.source)) return true;
    error = key.Wrong("a source that has a file in [Frames]");
    return false;
}

}  // namespace

std::optional<FileSettings> ReadFileSettings(const std::string& path, std::string& error)
{
    if (!ReadWholeFile(path, kLongestFile)) {
        error = path + ":\nThe file of the recorded camera can't be read.";
        return std::nullopt;
    }
    FileSettings settings;
    const std::optional<std::size_t> model = ReadChoice({path, "Head", "Model"}, kModels, error);
    if (!model) return std::nullopt;
    settings.model = *model == 0 ? HeadModel::kInSb : HeadModel::kHgCdTe;
    if (!ReadNumber({path, "Head", "Clock"}, kSlowestClockHz, kFastestClockHz, false, settings.clockHz, error) ||
        !ReadNumber({path, "Frames", "Rate"}, kSlowestPlayHz, kFastestPlayHz, true, settings.rateHz, error)) {
        return std::nullopt;
    }
    const std::optional<std::size_t> end = ReadChoice({path, "Frames", "End"}, kEnds, error);
    if (!end) return std::nullopt;
    settings.end = *end == 0 ? EndOfFile::kLoop : EndOfFile::kOnce;
    for (std::size_t source = 0; source < kFileSources; ++source) {
        settings.files.at(source) = Key{path, "Frames", kFileKeys.at(source)}.Text();
    }
    if (!ReadSource(path, settings, error)) return std::nullopt;
    return settings;
}

}  // namespace kelvo
