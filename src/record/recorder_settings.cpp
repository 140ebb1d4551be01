#include "record/recorder_settings.h"

#include "grabber/capture.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "state/windows.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <ctime>
#include <optional>
#include <system_error>

namespace kelvo {

namespace {

constexpr const char* kSection = "Recorder";
constexpr std::int64_t kNsPerSecond = 1'000'000'000;
constexpr std::int64_t kSecondsPerMinute = 60;
constexpr std::int64_t kMinutesPerHour = 60;
constexpr std::int64_t kHoursPerDay = 24;
constexpr std::int64_t kSecondsPerDay = kHoursPerDay * kMinutesPerHour * kSecondsPerMinute;

// A value of the settings, and what it may be.
struct TextKey {
    const char* key;
    std::string RecorderSettings::*value;
};
struct NumberKey {
    const char* key;
    double RecorderSettings::*value;
    double least;
    double most;
};
struct CountKey {
    const char* key;
    std::int64_t RecorderSettings::*value;
    std::int64_t least;
    std::int64_t most;
};
struct PlaceKey {
    const char* key;
    std::int32_t RecorderSettings::*value;
    std::int32_t most;
};

constexpr double kLongest = 1e9;  // seconds
constexpr std::int64_t kMostFrames = std::int64_t{1} << 40;
constexpr std::int32_t kLastPlace = 1023;  // of the largest frame
constexpr double kCountLimit = 32768;

constexpr TextKey kTexts[] = {
    {"Directory", &RecorderSettings::directory}, {"NamePattern", &RecorderSettings::namePattern},
    {"StartTime", &RecorderSettings::startTime}, {"SampleName", &RecorderSettings::sampleName},
    {"Comment", &RecorderSettings::comment},     {"Region", &RecorderSettings::region},
};
constexpr NumberKey kNumbers[] = {
    {"Seconds", &RecorderSettings::seconds, 0.001, kLongest},
    {"IntervalSeconds", &RecorderSettings::intervalSeconds, 0, kLongest},
    {"PreTriggerSeconds", &RecorderSettings::preTriggerSeconds, 0, kLongest},
    {"MeanLow", &RecorderSettings::meanLow, -kCountLimit, kCountLimit},
    {"MeanHigh", &RecorderSettings::meanHigh, -kCountLimit, kCountLimit},
    {"RegionLevel", &RecorderSettings::regionLevel, -kCountLimit, kCountLimit},
    {"SplitGigabytes", &RecorderSettings::splitGigabytes, 0, 1e6},
    {"SplitMinutes", &RecorderSettings::splitMinutes, 0, 1e6},
    {"SyncSeconds", &RecorderSettings::syncSeconds, 0.1, 60},
};
constexpr CountKey kCounts[] = {
    {"Frames", &RecorderSettings::frames, 1, kMostFrames},
    {"PreTriggerFrames", &RecorderSettings::preTriggerFrames, 0, kMostFrames},
    {"Events", &RecorderSettings::events, 0, kMostFrames},
};
constexpr PlaceKey kPlaces[] = {
    {"MeanLeft", &RecorderSettings::meanLeft, kLastPlace},
    {"MeanTop", &RecorderSettings::meanTop, kLastPlace},
    {"MeanRight", &RecorderSettings::meanRight, kLastPlace},
    {"MeanBottom", &RecorderSettings::meanBottom, kLastPlace},
};
constexpr const char* kPixelsKey = "Pixels";
constexpr const char* kLengthKey = "Length";
constexpr const char* kTriggerKey = "Trigger";
constexpr const char* kRegionPassKey = "RegionPass";
constexpr const char* kRingKey = "RingMegabytes";
constexpr std::int64_t kMegabyte = std::int64_t{1} << 20;

std::string SettingsPath()
{
    return MakePath({}, DefaultDir, "recorder", "ini");
}

template <typename Number>
std::optional<Number> NumberOf(std::string_view text)
{
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() ? std::optional(number) : std::nullopt;
}

// The shortest text that reads back as the same number, in the C locale.
template <typename Number>
std::string TextOf(Number number)
{
    std::array<char, 32> text{};
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), number);
    return {text.data(), end};
}

std::string StoredText(const char* key, std::string_view otherwise)
{
    return GetPrivateProfileString(kSection, key, otherwise, SettingsPath());
}

template <typename Number>
void ReadNumber(const char* key, Number least, Number most, Number& value)
{
    const std::optional<Number> stored = NumberOf<Number>(StoredText(key, ""));
    if (stored && *stored >= least && *stored <= most) value = *stored;
}

template <typename Choice>
void ReadChoice(const char* key, Choice last, Choice& value)
{
    auto number = static_cast<std::int32_t>(value);
    ReadNumber<std::int32_t>(key, 0, static_cast<std::int32_t>(last), number);
    value = static_cast<Choice>(number);
}

// Each key with its value as text.
template <typename Visit>
void ForEachKey(const RecorderSettings& settings, Visit visit)
{
    for (const TextKey& each : kTexts) visit(each.key, settings.*each.value);
    visit(kPixelsKey, TextOf(static_cast<std::int32_t>(settings.pixels)));
    visit(kLengthKey, TextOf(static_cast<std::int32_t>(settings.length)));
    visit(kTriggerKey, TextOf(static_cast<std::int32_t>(settings.trigger)));
    visit(kRegionPassKey, TextOf(static_cast<std::int32_t>(settings.regionPass)));
    for (const NumberKey& each : kNumbers) visit(each.key, TextOf(settings.*each.value));
    for (const CountKey& each : kCounts) visit(each.key, TextOf(settings.*each.value));
    for (const PlaceKey& each : kPlaces) visit(each.key, TextOf(settings.*each.value));
}

// ---- names

struct NameParts {
    std::string date;
    std::string time;
    std::string sample;
    std::int64_t number = 0;
};

constexpr std::size_t kMostDigits = 9;

// "n" is 0, "n:03" is 3; nullopt: it isn't the number's word.
std::optional<std::size_t> DigitsOfNumberWord(std::string_view word)
{
    if (word == "n") return 0;
    if (word.size() != 4 || !word.starts_with("n:0") || word[3] < '1' || word[3] > '9') return std::nullopt;
    return std::min(static_cast<std::size_t>(word[3] - '0'), kMostDigits);
}

// What a word in braces stands for; nullopt: nothing.
std::optional<std::string> Replacement(std::string_view word, const NameParts& parts)
{
    if (word == "date") return parts.date;
    if (word == "time") return parts.time;
    if (word == "sample") return parts.sample;
    const std::optional<std::size_t> digits = DigitsOfNumberWord(word);
    if (!digits) return std::nullopt;
    return Format("%0*lld", static_cast<int>(*digits), static_cast<long long>(parts.number));
}

// The pattern with its words replaced; nullopt where one stands for nothing.
std::optional<std::string> Filled(std::string_view pattern, const NameParts& parts)
{
    std::string name;
    while (!pattern.empty()) {
        const std::size_t open = std::min(pattern.find('{'), pattern.size());
        name += pattern.substr(0, open);
        pattern.remove_prefix(open);
        if (pattern.empty()) break;
        const std::size_t close = pattern.find('}');
        if (close == std::string_view::npos) return std::nullopt;
        const std::optional<std::string> text = Replacement(pattern.substr(1, close - 1), parts);
        if (!text) return std::nullopt;
        name += *text;
        pattern.remove_prefix(close + 1);
    }
    return name;
}

std::tm LocalTime(std::int64_t utcSeconds)
{
    const auto seconds = static_cast<std::time_t>(utcSeconds);
    std::tm local{};
    localtime_r(&seconds, &local);
    return local;
}

// A sample's name may hold what a file's name can't.
std::string ForFileName(std::string_view text)
{
    std::string name(text);
    std::ranges::replace_if(
        name, [](char c) { return c == '/' || c == '\\' || c == ':' || static_cast<unsigned char>(c) < ' '; }, '_');
    return name;
}

// "14" of "14:30": two digits at most, below limit. Takes it off the front.
std::optional<std::int64_t> TakeTimePart(std::string_view& text, std::int64_t limit)
{
    const std::size_t end = std::min(text.find(':'), text.size());
    const std::string_view digits = text.substr(0, end);
    if (digits.empty() || digits.size() > 2 || digits.find_first_not_of("0123456789") != std::string_view::npos) {
        return std::nullopt;
    }
    text.remove_prefix(std::min(end + 1, text.size()));
    const std::optional<std::int64_t> value = NumberOf<std::int64_t>(digits);
    return value && *value < limit ? value : std::nullopt;
}

// Seconds since midnight.
std::optional<std::int64_t> TimeOfDay(std::string_view text)
{
    text = Trimmed(text);
    if (text.ends_with(':')) return std::nullopt;
    const std::optional<std::int64_t> hours = TakeTimePart(text, kHoursPerDay);
    if (!hours) return std::nullopt;
    const std::optional<std::int64_t> minutes = TakeTimePart(text, kMinutesPerHour);
    if (!minutes) return std::nullopt;
    std::int64_t seconds = 0;
    if (!text.empty()) {
        const std::optional<std::int64_t> given = TakeTimePart(text, kSecondsPerMinute);
        if (!given || !text.empty()) return std::nullopt;
        seconds = *given;
    }
    return (*hours * kMinutesPerHour + *minutes) * kSecondsPerMinute + seconds;
}

}  // namespace

RecorderSettings ReadRecorderSettings()
{
    RecorderSettings settings;
    for (const TextKey& each : kTexts) settings.*each.value = StoredText(each.key, settings.*each.value);
    ReadChoice(kPixelsKey, RecordPixels::kBoth, settings.pixels);
    ReadChoice(kLengthKey, RecordLength::kSeconds, settings.length);
    ReadChoice(kTriggerKey, RecordTrigger::kRegion, settings.trigger);
    ReadChoice(kRegionPassKey, RegionPass::kFalling, settings.regionPass);
    for (const NumberKey& each : kNumbers) ReadNumber(each.key, each.least, each.most, settings.*each.value);
    for (const CountKey& each : kCounts) ReadNumber(each.key, each.least, each.most, settings.*each.value);
    for (const PlaceKey& each : kPlaces) ReadNumber(each.key, 0, each.most, settings.*each.value);
    return settings;
}

void WriteRecorderSettings(const RecorderSettings& settings)
{
    ForEachKey(settings, [](const char* key, const std::string& value) {
        WritePrivateProfileString(kSection, key, value, SettingsPath());
    });
}

std::int64_t ReadRingMegabytes()
{
    std::int64_t megabytes = 0;
    ReadNumber<std::int64_t>(kRingKey, 0, kMostRingMegabytes, megabytes);
    SetRingBytes(megabytes * kMegabyte);
    return megabytes;
}

void WriteRingMegabytes(std::int64_t megabytes)
{
    if (TextOf(megabytes) != StoredText(kRingKey, "0")) {
        WritePrivateProfileString(kSection, kRingKey, TextOf(megabytes), SettingsPath());
    }
    SetRingBytes(megabytes * kMegabyte);
}

std::string RecorderSettingsText(const RecorderSettings& settings)
{
    std::string text;
    ForEachKey(settings,
               [&text](const char* key, const std::string& value) { text += std::string(key) + '=' + value + '\n'; });
    return text;
}

std::string EventName(std::string_view pattern, std::int64_t n, std::int64_t utcNs, std::string_view sampleName)
{
    const std::tm local = LocalTime(utcNs / kNsPerSecond);
    const NameParts parts = {.date = Format("%04d%02d%02d", local.tm_year + 1900, local.tm_mon + 1, local.tm_mday),
                             .time = Format("%02d%02d%02d", local.tm_hour, local.tm_min, local.tm_sec),
                             .sample = ForFileName(sampleName),
                             .number = n};
    return Filled(pattern, parts).value_or(std::string(pattern));
}

bool PatternIsUsable(std::string_view pattern)
{
    const std::optional<std::string> name = Filled(pattern, {.date = "d", .time = "t", .sample = "s", .number = 1});
    return name && !name->empty() && name->find_first_of("/\\:") == std::string::npos && *name != "." && *name != "..";
}

bool PatternCounts(std::string_view pattern)
{
    return Filled(pattern, {{}, {}, {}, 1}) != Filled(pattern, {{}, {}, {}, 2});
}

std::int64_t SecondsUntil(std::string_view timeOfDay, std::int64_t nowUtcSeconds)
{
    const std::optional<std::int64_t> wanted = TimeOfDay(timeOfDay);
    if (!wanted) return -1;
    const std::tm local = LocalTime(nowUtcSeconds);
    const std::int64_t now =
        (std::int64_t{local.tm_hour} * kMinutesPerHour + local.tm_min) * kSecondsPerMinute + local.tm_sec;
    return (*wanted - now + kSecondsPerDay) % kSecondsPerDay;
}

}  // namespace kelvo
