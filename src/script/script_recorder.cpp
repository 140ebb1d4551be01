#include "script/script_recorder.h"

#include "platform/box.h"
#include "platform/clock.h"
#include "platform/dialog.h"
#include "platform/front.h"
#include "platform/text.h"
#include "state/frame_state.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace kelvo {

namespace {

using Kind = OperatorAct::Kind;

struct Named {
    int number;
    std::string_view name;
};
constexpr Named kButtonNames[] = {{static_cast<int>(Button::kOk), "ok"},
                                  {static_cast<int>(Button::kCancel), "cancel"},
                                  {static_cast<int>(Button::kYes), "yes"},
                                  {static_cast<int>(Button::kNo), "no"},
                                  {static_cast<int>(Button::kReport), "report"}};
constexpr Named kDirectionNames[] = {
    {kDirectionUp, "up"}, {kDirectionRight, "right"}, {kDirectionDown, "down"}, {kDirectionLeft, "left"}};
constexpr Named kMouseNames[] = {{0, "move"},      {1, "left"},       {2, "right"},       {4, "double"},
                                 {5, "wheel up"},  {6, "wheel down"}, {7, "middle down"}, {8, "middle up"},
                                 {9, "left down"}, {10, "left up"}};
// What the calls name the windows that they know by a word; others go by their dialog's name.
constexpr std::pair<std::string_view, std::string_view> kWindowWords[] = {
    {"PANEL", "panel"}, {"PLAYBAR", "player"}, {"RECORDER", "recorder"}, {"REGIONS", "regions"}};

constexpr int kPointerMoves = 0;
constexpr int kLeftClick = 1;
constexpr int kDoubleClick = 4;
constexpr int kLeftDown = 9;
constexpr int kLeftUp = 10;

template <std::size_t N>
std::string_view NameOf(const Named (&names)[N], int number)
{
    const auto* const found = std::ranges::find(names, number, &Named::number);
    return found == std::end(names) ? std::string_view() : found->name;
}

std::string Quoted(std::string_view text)
{
    std::string quoted = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            quoted.append(1, '\\').append(1, c);
        } else if (byte < 0x20 || byte == 0x7F) {
            quoted += Format("\\%03u", static_cast<unsigned>(byte));
        } else {
            quoted += c;
        }
    }
    return quoted + "\"";
}

std::string OnControl(std::string_view call, const OperatorAct& act, const std::string& value)
{
    std::string line = std::string(call) + "(";
    if (!act.window.empty()) {
        const auto* const word = std::ranges::find(kWindowWords, std::string_view(act.window),
                                                   &std::pair<std::string_view, std::string_view>::first);
        line += Quoted(word == std::end(kWindowWords) ? std::string_view(act.window) : word->second) + ", ";
    }
    line += std::to_string(act.id);
    if (!value.empty()) line += ", " + value;
    return line + ")";
}

std::string OnPaths(std::string_view call, const std::vector<std::string>& paths)
{
    std::string line = std::string(call) + "(";
    for (const std::string& path : paths) line += (&path == paths.data() ? "" : ", ") + Quoted(path);
    return line + ")";
}

// The later of two such acts, one right after the other, says it all.
bool Replaces(const OperatorAct& next, const OperatorAct& before)
{
    if (next.kind != before.kind) return false;
    switch (next.kind) {
        case Kind::kSet:
        case Kind::kScroll:
            return next.window == before.window && next.id == before.id;
        case Kind::kMouse:
            return before.value == kPointerMoves && next.value == kPointerMoves;
        default:
            return false;
    }
}

// The left button goes up where it went down: the two are a click, and a double click's own end says nothing.
bool EndsClick(const OperatorAct& next, OperatorAct& before)
{
    const bool goesUp = next.kind == Kind::kMouse && next.value == kLeftUp;
    if (!goesUp || before.kind != Kind::kMouse || before.place != next.place) return false;
    if (before.value == kLeftDown) before.value = kLeftClick;
    return before.value == kLeftClick || before.value == kDoubleClick;
}

struct Recording {
    std::vector<RecordedAct> acts;
    std::optional<std::int64_t> waitsSinceMs;  // for the operator
    std::int64_t frames = 0;                   // since then
};
std::optional<Recording> recording;

void Record(const OperatorAct& act)
{
    if (!recording) return;
    const std::int64_t nowMs = TickMs();
    const std::int64_t pauseMs = LiveVideo ? nowMs - recording->waitsSinceMs.value_or(nowMs) : 0;
    recording->waitsSinceMs.reset();
    JoinAct(recording->acts, {act, pauseMs, std::exchange(recording->frames, 0)});
}

std::string PauseOf(const RecordedAct& recorded)
{
    if (recorded.frames > 0) return "frames(" + std::to_string(recorded.frames) + ")";
    return "wait(" + std::to_string(recorded.pauseMs) + ")";
}

void NoteWait()
{
    if (!recording || recording->waitsSinceMs) return;
    recording->waitsSinceMs = TickMs();
    recording->frames = 0;
}

}  // namespace

std::string ScriptLineOf(const OperatorAct& act)
{
    switch (act.kind) {
        case Kind::kCommand:
            return "command(" + std::to_string(act.id) + ")";
        case Kind::kPress:
            return OnControl("press", act, act.value == 0 ? "" : Quoted(NameOf(kDirectionNames, act.value)));
        case Kind::kSet:
            return OnControl("set", act, Quoted(act.text));
        case Kind::kCheck:
            return OnControl("check", act, act.value ? "true" : "false");
        case Kind::kPick:
            return OnControl("pick", act, std::to_string(act.value));
        case Kind::kScroll:
            return OnControl("scroll", act, std::to_string(act.value));
        case Kind::kAnswer:
            return "answer(" + Quoted(NameOf(kButtonNames, act.value)) + ")";
        case Kind::kChoose:
            return OnPaths("choose", act.paths);
        case Kind::kCancel:
            return "cancel()";
        case Kind::kClose:
            return "close()";
        case Kind::kMouse:
            return Format("mouse(%d, %d, ", act.place.x, act.place.y) + Quoted(NameOf(kMouseNames, act.value)) + ")";
        case Kind::kKey:
            return "key(" + Quoted(act.text) + ")";
        case Kind::kDrop:
            return OnPaths("drop", act.paths);
    }
    return {};
}

void JoinAct(std::vector<RecordedAct>& acts, RecordedAct next)
{
    const bool endsClick = !acts.empty() && EndsClick(next.act, acts.back().act);
    const bool replaces = !endsClick && !acts.empty() && Replaces(next.act, acts.back().act);
    if (!endsClick && !replaces) {
        acts.push_back(std::move(next));
        return;
    }
    if (replaces) acts.back().act = std::move(next.act);
    if (next.pauseMs >= kShortestWaitMs) {
        acts.back().pauseMs += next.pauseMs;
        acts.back().frames += next.frames;
    }
}

std::string ScriptOf(const std::vector<RecordedAct>& acts)
{
    std::string script = "-- Recorded by Kelvo " KELVO_VERSION ". Run it from where the recording began.\n";
    for (const RecordedAct& recorded : acts) {
        if (recorded.pauseMs >= kShortestWaitMs) script += PauseOf(recorded) + "\n";
        script += ScriptLineOf(recorded.act) + "\n";
    }
    return script;
}

void NoteRecordedFrame()
{
    if (recording) ++recording->frames;
}

void BeginScriptRecording()
{
    recording = Recording{};
    SetOperatorActHook(Record);
    SetIdleHook(NoteWait, IdleUser::kRecorder);
}

bool ScriptIsRecorded()
{
    return recording.has_value();
}

std::optional<std::string> EndScriptRecording(int lastCommand)
{
    if (!recording) return std::nullopt;
    SetOperatorActHook(nullptr);
    SetIdleHook(nullptr, IdleUser::kRecorder);
    std::vector<RecordedAct> acts = std::move(recording->acts);
    recording.reset();
    const bool endsWithIt =
        !acts.empty() && acts.back().act.kind == Kind::kCommand && acts.back().act.id == lastCommand;
    if (endsWithIt) acts.pop_back();
    return ScriptOf(acts);
}

}  // namespace kelvo
