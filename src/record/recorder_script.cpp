#include "record/recorder_script.h"

#include "record/recorder_run.h"
#include "state/frame_state.h"
#include "state/windows.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <optional>
#include <variant>
#include <vector>

namespace kelvo {

namespace {

constexpr std::string_view kPixels[] = {"raw", "corrected", "both"};
constexpr std::string_view kTriggers[] = {"none", "button", "input", "mean", "signal", "region"};
constexpr std::string_view kPasses[] = {"rising", "falling"};
constexpr std::string_view kStates[] = {"idle", "waiting", "armed", "recording"};
constexpr std::string_view kEnds[] = {"",       "stopped", "complete", "disk full", "write failed", "file deleted",
                                      "no file"};

// ---- a value of the table into the settings; false: it is of another kind

bool Take(const ScriptValue& value, std::string& text)
{
    const auto* const given = std::get_if<std::string>(&value);
    if (given) text = *given;
    return given != nullptr;
}

bool Take(const ScriptValue& value, std::int64_t& number)
{
    const auto* const given = std::get_if<std::int64_t>(&value);
    if (given) number = *given;
    return given != nullptr;
}

bool Take(const ScriptValue& value, double& number)
{
    if (std::int64_t whole = 0; Take(value, whole)) {
        number = static_cast<double>(whole);
        return true;
    }
    const auto* const given = std::get_if<double>(&value);
    if (given) number = *given;
    return given != nullptr;
}

template <typename Choice, std::size_t N>
bool TakeChoice(const ScriptValue& value, const std::string_view (&names)[N], Choice& choice)
{
    std::string text;
    if (!Take(value, text)) return false;
    const auto* const found = std::ranges::find(names, text);
    if (found != std::end(names)) choice = static_cast<Choice>(found - std::begin(names));
    return found != std::end(names);
}

template <std::size_t N>
bool TakeNumbers(const ScriptValue& value, std::array<double, N>& numbers)
{
    const auto* const given = std::get_if<std::vector<double>>(&value);
    if (!given || given->size() != N) return false;
    std::ranges::copy(*given, numbers.begin());
    return true;
}

bool TakeRectangle(const ScriptValue& value, RecorderSettings& settings)
{
    constexpr double kMostPlace = 1023;  // of the largest frame
    std::array<double, 4> sides{};
    const auto isPlace = [](double side) { return side >= 0 && side <= kMostPlace; };
    if (!TakeNumbers(value, sides) || !std::ranges::all_of(sides, isPlace)) return false;
    settings.meanLeft = static_cast<std::int32_t>(sides[0]);
    settings.meanTop = static_cast<std::int32_t>(sides[1]);
    settings.meanRight = static_cast<std::int32_t>(sides[2]);
    settings.meanBottom = static_cast<std::int32_t>(sides[3]);
    return true;
}

bool TakeWindow(const ScriptValue& value, RecorderSettings& settings)
{
    std::array<double, 2> ends{};
    if (!TakeNumbers(value, ends)) return false;
    settings.meanLow = ends[0];
    settings.meanHigh = ends[1];
    return true;
}

bool TakeFrames(const ScriptValue& value, RecorderSettings& settings)
{
    settings.length = RecordLength::kFrames;
    return Take(value, settings.frames);
}

bool TakeSeconds(const ScriptValue& value, RecorderSettings& settings)
{
    settings.length = RecordLength::kSeconds;
    return Take(value, settings.seconds);
}

template <auto member>
bool TakeMember(const ScriptValue& value, RecorderSettings& settings)
{
    return Take(value, settings.*member);
}

struct TableField {
    std::string_view name;
    bool (*take)(const ScriptValue& value, RecorderSettings& settings);
};
constexpr TableField kFields[] = {
    {"directory", TakeMember<&RecorderSettings::directory>},
    {"name", TakeMember<&RecorderSettings::namePattern>},
    {"sample", TakeMember<&RecorderSettings::sampleName>},
    {"comment", TakeMember<&RecorderSettings::comment>},
    {"pixels", [](const ScriptValue& v, RecorderSettings& s) { return TakeChoice(v, kPixels, s.pixels); }},
    {"frames", TakeFrames},
    {"seconds", TakeSeconds},
    {"interval", TakeMember<&RecorderSettings::intervalSeconds>},
    {"start", TakeMember<&RecorderSettings::startTime>},
    {"split_gb", TakeMember<&RecorderSettings::splitGigabytes>},
    {"split_minutes", TakeMember<&RecorderSettings::splitMinutes>},
    {"sync", TakeMember<&RecorderSettings::syncSeconds>},
    {"trigger", [](const ScriptValue& v, RecorderSettings& s) { return TakeChoice(v, kTriggers, s.trigger); }},
    {"before", TakeMember<&RecorderSettings::preTriggerSeconds>},
    {"before_frames", TakeMember<&RecorderSettings::preTriggerFrames>},
    {"events", TakeMember<&RecorderSettings::events>},
    {"rectangle", TakeRectangle},
    {"window", TakeWindow},
    {"region", TakeMember<&RecorderSettings::region>},
    {"level", TakeMember<&RecorderSettings::regionLevel>},
    {"pass", [](const ScriptValue& v, RecorderSettings& s) { return TakeChoice(v, kPasses, s.regionPass); }},
};

std::string_view NameOfState(RecorderState state)
{
    return kStates[static_cast<std::size_t>(state)];
}

ScriptValue Known(std::optional<std::int64_t> number)
{
    return number ? ScriptValue(*number) : ScriptValue();
}

}  // namespace

std::string BeginScriptRecording(const ScriptFields& table)
{
    RecorderSettings settings;
    settings.directory = DefaultDir;
    for (const auto& [name, value] : table) {
        const auto* const field = std::ranges::find(kFields, name, &TableField::name);
        if (field == std::end(kFields)) return "no setting \"" + name + "\"";
        if (!field->take(value, settings)) return "\"" + name + "\" can't have that value";
    }
    const auto isGiven = [&table](std::string_view name) {
        return std::ranges::find(table, name, &ScriptFields::value_type::first) != table.end();
    };
    if (isGiven("frames") && isGiven("seconds")) return "give frames or seconds, not both";
    if (!CameraOn) return "No camera is on.";  // without the box that an operator gets
    std::string why;
    BeginRecorderRun(settings, RecorderCaller::kScript, why);
    return why;
}

std::string RecorderWord(std::string_view word)
{
    const RecorderState state = CurrentRecorderStatus().state;
    if (word == "stop") {
        StopRecorderRun();
    } else if (word == "trigger") {
        if (state != RecorderState::kArmed || SettingsOfRun().trigger != RecordTrigger::kButton) {
            return "the recorder isn't armed for a trigger by hand";
        }
        TriggerByHand();
    } else if (word == "mark") {
        if (state != RecorderState::kRecording) return "a mark needs a recording that runs";
        MarkByHand();
    } else {
        return "no word \"" + std::string(word) + "\": stop, trigger or mark";
    }
    return {};
}

ScriptFields RecorderStatusFields()
{
    const RecorderStatus status = CurrentRecorderStatus();
    return {
        {"state", std::string(NameOfState(status.state))},
        {"ended", std::string(kEnds[static_cast<std::size_t>(status.end)])},
        {"files", status.files},
        {"event", status.event},
        {"frames", status.frames},
        {"frames_of_event", status.framesOfEvent},
        {"seconds", status.seconds},
        {"marks", status.marks},
        {"lost", Known(status.Lost())},
        {"lost_by_board", Known(status.lostByBoard)},
        {"lost_by_ring", status.lostByRing},
        {"lost_by_transport", status.lostByTransport},
        {"delivered", status.counts.delivered},
        {"passed_over", status.counts.passedOver},
        {"bytes", status.bytes},
        {"mean", status.mean ? ScriptValue(*status.mean) : ScriptValue()},
        {"before", status.preTriggerWaiting},
        {"ring_frames", static_cast<std::int64_t>(status.ringFrames)},
        {"ring_seconds", status.ringSeconds},
        {"seconds_left", status.secondsLeft >= 0 ? ScriptValue(status.secondsLeft) : ScriptValue()},
        {"verdict", status.verdict},
        {"message", status.message},
        {"exit_code", static_cast<std::int64_t>(status.exitCode)},
    };
}

}  // namespace kelvo
