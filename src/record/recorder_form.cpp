#include "record/recorder_form.h"

#include "platform/dialog.h"
#include "platform/text.h"
#include "record/recorder_controls.h"
#include "regions/region_list.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <system_error>

namespace kelvo {

namespace {

// A field with its setting, what it may be, and its name in a refusal.
struct NumberField {
    int control;
    double RecorderSettings::*value;
    double least;
    double most;
    const char* name;
};
struct CountField {
    int control;
    std::int64_t RecorderSettings::*value;
    std::int64_t least;
    std::int64_t most;
    const char* name;
};
struct TextField {
    int control;
    std::string RecorderSettings::*value;
};
struct PlaceField {
    int control;
    std::int32_t RecorderSettings::*value;
    const char* name;
};

constexpr double kLongest = 1e9;  // s
constexpr double kMostSplit = 1e6;
constexpr double kCountLimit = 32768;
constexpr std::int64_t kMostFrames = 1'000'000'000'000;
constexpr std::int64_t kLastPlace = 1023;  // of the largest frame

constexpr TextField kTexts[] = {
    {kRecDirectory, &RecorderSettings::directory}, {kRecName, &RecorderSettings::namePattern},
    {kRecSample, &RecorderSettings::sampleName},   {kRecComment, &RecorderSettings::comment},
    {kRecStartTime, &RecorderSettings::startTime},
};
constexpr NumberField kSplitGigabytesField = {kRecSplitGigabytes, &RecorderSettings::splitGigabytes, 0, kMostSplit,
                                              "A new file at GB"};
constexpr NumberField kSplitMinutesField = {kRecSplitMinutes, &RecorderSettings::splitMinutes, 0, kMostSplit,
                                            "A new file at minutes"};
constexpr NumberField kSyncField = {kRecSync, &RecorderSettings::syncSeconds, 0.1, 60, "On the disk each"};
constexpr NumberField kIntervalField = {kRecInterval, &RecorderSettings::intervalSeconds, 0, kLongest,
                                        "One frame each"};
constexpr NumberField kSecondsField = {kRecLength, &RecorderSettings::seconds, 0.001, kLongest, "Length in seconds"};
constexpr CountField kFramesField = {kRecLength, &RecorderSettings::frames, 1, kMostFrames, "Length in frames"};
constexpr NumberField kPreSecondsField = {kRecPre, &RecorderSettings::preTriggerSeconds, 0, kLongest,
                                          "Before the trigger"};
constexpr CountField kPreFramesField = {kRecPre, &RecorderSettings::preTriggerFrames, 0, kMostFrames,
                                        "Before the trigger"};
constexpr CountField kEventsField = {kRecEvents, &RecorderSettings::events, 0, kMostFrames, "Events"};
constexpr PlaceField kPlaces[] = {
    {kRecLeftColumn, &RecorderSettings::meanLeft, "Left column"},
    {kRecTopRow, &RecorderSettings::meanTop, "Top row"},
    {kRecRightColumn, &RecorderSettings::meanRight, "Right column"},
    {kRecBottomRow, &RecorderSettings::meanBottom, "Bottom row"},
};
constexpr NumberField kMeans[] = {
    {kRecMeanLow, &RecorderSettings::meanLow, -kCountLimit, kCountLimit, "Mean from"},
    {kRecMeanHigh, &RecorderSettings::meanHigh, -kCountLimit, kCountLimit, "Mean to"},
};

constexpr NumberField kLevelField = {kRecRegionLevel, &RecorderSettings::regionLevel, -kCountLimit, kCountLimit,
                                     "Value"};

constexpr int kPreInFrames = 1;

constexpr int kWithTrigger[] = {kRecPre, kRecPreUnit, kRecEvents};
constexpr int kWithMean[] = {kRecLeftColumn, kRecTopRow, kRecRightColumn, kRecBottomRow, kRecMeanLow, kRecMeanHigh};
constexpr int kWithRegion[] = {kRecRegion, kRecRegionPass, kRecRegionLevel};
constexpr int kAlways[] = {kRecDirectory, kRecBrowse,         kRecName,         kRecSample,   kRecComment,
                           kRecPixels,    kRecSplitGigabytes, kRecSplitMinutes, kRecSync,     kRecLengthUnit,
                           kRecInterval,  kRecStartTime,      kRecTriggerKind,  kRecRingSize, kRecMeasure};

// The whole text as a number; nullopt where it is more, less or not finite.
template <typename Number>
std::optional<Number> NumberIn(std::string_view text)
{
    text = Trimmed(text);
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

class FormReader {
  public:
    FormReader(HWND dialog, RecorderSettings& settings) : dialog_(dialog), settings_(settings) {}

    void Read(const NumberField& field)
    {
        const auto number = NumberIn<double>(GetDlgItemText(dialog_, field.control));
        if (number && *number >= field.least && *number <= field.most) {  // false of what is no number in earnest
            settings_.*field.value = *number;
        } else {
            Refuse(field.control,
                   Format("%s: please enter a number from %g to %g.", field.name, field.least, field.most));
        }
    }
    void Read(const CountField& field)
    {
        const auto number = NumberIn<std::int64_t>(GetDlgItemText(dialog_, field.control));
        if (number && *number >= field.least && *number <= field.most) {
            settings_.*field.value = *number;
        } else {
            Refuse(field.control, Format("%s: please enter a whole number from %lld to %lld.", field.name,
                                         static_cast<long long>(field.least), static_cast<long long>(field.most)));
        }
    }
    void Read(const PlaceField& field)
    {
        const auto number = NumberIn<std::int32_t>(GetDlgItemText(dialog_, field.control));
        if (number && *number >= 0 && *number <= kLastPlace) {
            settings_.*field.value = *number;
        } else {
            Refuse(field.control, Format("%s: please enter a whole number from 0 to %lld.", field.name,
                                         static_cast<long long>(kLastPlace)));
        }
    }
    std::optional<FieldRefusal> TakeRefusal() { return std::move(refusal_); }

  private:
    void Refuse(int control, std::string why)
    {
        if (!refusal_) refusal_ = FieldRefusal{.control = control, .why = std::move(why)};
    }

    HWND dialog_;
    RecorderSettings& settings_;
    std::optional<FieldRefusal> refusal_;
};

template <typename Choice>
Choice PickedIn(HWND dialog, int list)
{
    return static_cast<Choice>(std::max(ListSelection(dialog, list), 0));
}

void ReadLength(FormReader& reader, HWND dialog, RecorderSettings& settings)
{
    settings.length = PickedIn<RecordLength>(dialog, kRecLengthUnit);
    if (settings.length == RecordLength::kFrames) reader.Read(kFramesField);
    if (settings.length == RecordLength::kSeconds) reader.Read(kSecondsField);
}

void ReadTrigger(FormReader& reader, HWND dialog, RecorderSettings& settings)
{
    settings.trigger = PickedIn<RecordTrigger>(dialog, kRecTriggerKind);
    if (settings.trigger == RecordTrigger::kNone) return;
    if (ListSelection(dialog, kRecPreUnit) == kPreInFrames) {
        reader.Read(kPreFramesField);
    } else {
        reader.Read(kPreSecondsField);
        settings.preTriggerFrames = 0;
    }
    reader.Read(kEventsField);
    if (settings.trigger == RecordTrigger::kRegion) {
        const int chosen = ListSelection(dialog, kRecRegion);
        settings.region = chosen < 0 ? std::string() : ListItemText(dialog, kRecRegion, chosen);
        settings.regionPass = PickedIn<RegionPass>(dialog, kRecRegionPass);
        reader.Read(kLevelField);
    }
    if (settings.trigger != RecordTrigger::kMean) return;
    for (const PlaceField& field : kPlaces) reader.Read(field);
    for (const NumberField& field : kMeans) reader.Read(field);
}

void ShowNumber(HWND dialog, int control, double value)
{
    SetDlgItemText(dialog, control, Format("%.10g", value));
}

void ShowCount(HWND dialog, int control, std::int64_t value)
{
    SetDlgItemText(dialog, control, Format("%lld", static_cast<long long>(value)));
}

}  // namespace

void ShowRecorderSettings(HWND dialog, const RecorderSettings& settings)
{
    for (const TextField& field : kTexts) SetDlgItemText(dialog, field.control, settings.*field.value);
    ListSelect(dialog, kRecPixels, static_cast<int>(settings.pixels));
    ListSelect(dialog, kRecLengthUnit, static_cast<int>(settings.length));
    ListSelect(dialog, kRecTriggerKind, static_cast<int>(settings.trigger));
    ListSelect(dialog, kRecPreUnit, settings.preTriggerFrames > 0 ? kPreInFrames : 0);
    for (const NumberField& field : {kSplitGigabytesField, kSplitMinutesField, kSyncField, kIntervalField}) {
        ShowNumber(dialog, field.control, settings.*field.value);
    }
    ShowLengthOf(dialog, settings);
    ShowPreTriggerOf(dialog, settings);
    ShowCount(dialog, kRecEvents, settings.events);
    for (const PlaceField& field : kPlaces) ShowCount(dialog, field.control, settings.*field.value);
    for (const NumberField& field : kMeans) ShowNumber(dialog, field.control, settings.*field.value);
    ListRecorderRegions(dialog, settings.region);
    ListSelect(dialog, kRecRegionPass, static_cast<int>(settings.regionPass));
    ShowNumber(dialog, kRecRegionLevel, settings.regionLevel);
}

void ListRecorderRegions(HWND dialog, std::string_view chosen)
{
    ListClear(dialog, kRecRegion);
    for (const Region& region : Regions) {
        const int item = ListAdd(dialog, kRecRegion, region.name);
        if (region.name == chosen) ListSelect(dialog, kRecRegion, item);
    }
    const bool isMissing = !chosen.empty() && FindRegion(chosen) == nullptr;
    if (isMissing) ListSelect(dialog, kRecRegion, ListAdd(dialog, kRecRegion, chosen));
}

std::optional<FieldRefusal> ReadRecorderForm(HWND dialog, RecorderSettings& settings)
{
    FormReader reader(dialog, settings);
    for (const TextField& field : kTexts) settings.*field.value = GetDlgItemText(dialog, field.control);
    settings.pixels = PickedIn<RecordPixels>(dialog, kRecPixels);
    for (const NumberField& field : {kSplitGigabytesField, kSplitMinutesField, kSyncField}) reader.Read(field);
    ReadLength(reader, dialog, settings);
    reader.Read(kIntervalField);
    ReadTrigger(reader, dialog, settings);
    return reader.TakeRefusal();
}

void ShowLengthOf(HWND dialog, const RecorderSettings& settings)
{
    const bool inFrames = ListSelection(dialog, kRecLengthUnit) == static_cast<int>(RecordLength::kFrames);
    if (inFrames) {
        ShowCount(dialog, kRecLength, settings.frames);
    } else {
        ShowNumber(dialog, kRecLength, settings.seconds);
    }
}

void ShowPreTriggerOf(HWND dialog, const RecorderSettings& settings)
{
    if (ListSelection(dialog, kRecPreUnit) == kPreInFrames) {
        ShowCount(dialog, kRecPre, settings.preTriggerFrames);
    } else {
        ShowNumber(dialog, kRecPre, settings.preTriggerSeconds);
    }
}

void EnableRecorderFields(HWND dialog, bool canChange)
{
    const auto trigger = PickedIn<RecordTrigger>(dialog, kRecTriggerKind);
    const auto length = PickedIn<RecordLength>(dialog, kRecLengthUnit);
    const bool triggered = canChange && trigger != RecordTrigger::kNone;
    const bool byMean = canChange && trigger == RecordTrigger::kMean;
    for (const int id : kAlways) EnableDlgItem(dialog, id, canChange);
    for (const int id : kWithTrigger) EnableDlgItem(dialog, id, triggered);
    for (const int id : kWithMean) EnableDlgItem(dialog, id, byMean);
    for (const int id : kWithRegion) EnableDlgItem(dialog, id, canChange && trigger == RecordTrigger::kRegion);
    EnableDlgItem(dialog, kRecLength, canChange && length != RecordLength::kUntilStopped);
}

}  // namespace kelvo
