#include "shell/undo.h"

#include "platform/clock.h"
#include "platform/menu.h"
#include "platform/undo_stack.h"
#include "resources/ids.h"
#include "shell/undo_snapshot.h"
#include "state/cal_settings.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/status.h"
#include "ui/undo.h"
#include "video/image_cursor.h"
#include "viewing/fitted_contrast.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace kelvo {

namespace {

constexpr std::int64_t kRunMs = 1000;  // how long after a turn of the wheel the next one is still the same run

// The menu commands that can be taken back.
struct UndoableCommand {
    int first = 0;
    int last = 0;
    GestureKind kind;
};
constexpr UndoableCommand kUndoable[] = {
    {kCmdZoomPanFirst, kCmdZoomPanLast, {.repeats = true}},
    {kCmdNormalGray, kCmdNormalColor, {}},
    {kCmdNextColorMap, kCmdNextColorMap, {}},
    {kCmdViewFitContrast, kCmdViewFitContrast, {}},
    {kCmdViewFit, kCmdViewCentre, {}},
    {kCmdViewKeepFitted, kCmdViewKeepFitted, {}},
    {kCmdDisplaySetup, kCmdDisplaySetup, {.name = "display setup"}},
    {kCmdImageSetup, kCmdImageSetup, {.name = "image setup", .badPixels = true}},
    {kCmdReplaceBadPixels, kCmdReplaceBadPixels, {.name = "bad pixel replacement", .badPixels = true}},
};

// What the steps stand on.
struct Ground {
    std::int32_t cameraOn = 0;
    std::string camera;
    std::int32_t calType = 0;
    std::string calFile;
    std::uint32_t lists = 0;  // CalibrationListsVersion
    friend bool operator==(const Ground&, const Ground&) = default;
};
Ground ground;

// The gesture under way.
int depth = 0;
GestureKind kind;
UndoSnapshot before;

using SharedSnapshot = std::shared_ptr<const UndoSnapshot>;

// The step that was entered last, as long as it may go on: nothing has been taken back since.
struct LastStep {
    std::string name;
    SharedSnapshot before;
    SharedSnapshot after;
    std::int64_t endMs = 0;  // on the TickMs scale
    bool repeats = false;    // a drag stands alone, whatever follows it
};
std::optional<LastStep> lastStep;

// What the menu shows, so that it is written only where it changes.
std::optional<std::string> shownUndo;
std::optional<std::string> shownRedo;

Ground GroundNow()
{
    return {CameraOn, ActiveCameraSection(), CalType, CalSettings.CalFile, CalibrationListsVersion};
}

void ForgetSteps()
{
    ClearUndoSteps();
    lastStep.reset();
}

// Another camera or calibration: there is no way back to what was before it.
void FollowGround()
{
    if (GroundNow() == std::exchange(ground, GroundNow())) return;
    ForgetSteps();
}

void ShowItem(int id, const std::string& text, const char* key, std::optional<std::string>& shown, bool enabled)
{
    const std::string whole = text + key;
    if (shown == whole) return;
    shown = whole;
    SetMenuText(hWndMain, id, whole);
    EnableMenuItem(hWndMain, id, enabled);
}

void ShowStepsInMenu()
{
    if (!hWndMain) return;
    const std::optional<std::string> undo = NextUndoName();
    const std::optional<std::string> redo = NextRedoName();
    ShowItem(kCmdUndo, undo ? "&Undo " + *undo : "&Undo", "\tCtrl+Z", shownUndo, undo.has_value());
    ShowItem(kCmdRedo, redo ? "R&edo " + *redo : "R&edo", "\tCtrl+Shift+Z", shownRedo, redo.has_value());
}

void TakeBadPixels(UndoSnapshot& snapshot)
{
    snapshot.badPixels = std::make_shared<const BadPixelState>(TakeBadPixelState());
}

void OnGestureBegun(const GestureKind& begun)
{
    if (depth++ == 0) {
        FollowGround();
        kind = begun;
        before = TakeSnapshot();
    }
    if (!begun.badPixels || before.badPixels) return;
    kind.badPixels = true;
    TakeBadPixels(before);
}

bool GoesOn(const std::string& name)
{
    return kind.repeats && lastStep && lastStep->repeats && lastStep->name == name &&
           TickMs() - lastStep->endMs <= kRunMs;
}

std::function<bool()> Way(const SharedSnapshot& from, const SharedSnapshot& to)
{
    return [from, to] { return PutBackDifference(*to, *from); };
}

void Enter(const std::string& name, UndoSnapshot snapshot)
{
    const auto from = std::make_shared<const UndoSnapshot>(std::move(before));
    const auto to = std::make_shared<const UndoSnapshot>(std::move(snapshot));
    PushUndoStep({.name = name, .takeBack = Way(to, from), .doAgain = Way(from, to)});
    lastStep = {name, from, to, TickMs(), kind.repeats};
}

void GoOn(LastStep& step, UndoSnapshot snapshot)
{
    if (!snapshot.badPixels) snapshot.badPixels = step.after->badPixels;  // this gesture couldn't change them
    step.after = std::make_shared<const UndoSnapshot>(std::move(snapshot));
    step.endMs = TickMs();
    if (DifferenceOf(*step.before, *step.after).empty() && SameKeys(*step.before, *step.after)) {
        DropLastUndoStep();
        lastStep.reset();
    } else {
        ExtendLastUndoStep(Way(step.after, step.before), Way(step.before, step.after));
    }
}

void KeepStep()
{
    UndoSnapshot snapshot = TakeSnapshot();
    if (kind.badPixels) TakeBadPixels(snapshot);
    const std::string difference = DifferenceOf(before, snapshot);
    const std::string name = kind.name.empty() ? difference : std::string(kind.name);
    const bool keysAlone = difference.empty() && !SameKeys(before, snapshot);
    if (lastStep && (keysAlone || (!difference.empty() && GoesOn(name)))) {
        GoOn(*lastStep, std::move(snapshot));  // keys that are written later are the last step's
    } else if (!difference.empty()) {
        Enter(name, std::move(snapshot));
    }
}

void OnGestureEnded()
{
    if (depth == 0 || --depth > 0) return;
    EndTakenOverFit();  // by this gesture
    Ground now = GroundNow();
    if (kind.badPixels) now.lists = ground.lists;  // its own table
    if (now == ground) {
        KeepStep();
    } else {
        ForgetSteps();
    }
    ground = GroundNow();
    before = {};
    ShowStepsInMenu();
}

CommandEnd Move(std::optional<std::string> (*nextName)(), bool (*move)(), const char* done)
{
    if (TrackballMode) TrackballToggle();
    FollowGround();
    const std::optional<std::string> name = nextName();
    if (!name || depth > 0) return CommandEnd::kResetStatus;
    lastStep.reset();
    const bool moved = move();
    ground = GroundNow();
    ShowStepsInMenu();
    if (!moved) return CommandEnd::kResetStatus;
    StatusMessage(done + *name, kLeftAligned);
    return CommandEnd::kLeaveStatus;
}

const UndoableCommand* UndoableCommandOf(int id)
{
    return std::ranges::find_if(kUndoable, [id](const auto& row) { return row.first <= id && id <= row.last; });
}

}  // namespace

void OpenUndo()
{
    SetGestureHooks({.begun = OnGestureBegun, .ended = OnGestureEnded});
    ground = GroundNow();
    ShowStepsInMenu();
}

CommandGesture::CommandGesture(int id)
{
    const UndoableCommand* const row = UndoableCommandOf(id);
    canBeTakenBack_ = row != std::end(kUndoable);
    if (canBeTakenBack_) BeginGesture(row->kind);
}

CommandGesture::~CommandGesture()
{
    if (canBeTakenBack_) {
        EndGesture();
    } else if (depth == 0) {
        FollowGround();
        ShowStepsInMenu();
    }
}

CommandEnd Undo()
{
    return Move(NextUndoName, TakeBackUndoStep, "Undone: ");
}

CommandEnd Redo()
{
    return Move(NextRedoName, DoUndoStepAgain, "Done again: ");
}

void ResetUndo()
{
    SetGestureHooks({});
    ForgetSteps();
    ground = {};
    depth = 0;
    kind = {};
    before = {};
    shownUndo.reset();
    shownRedo.reset();
}

}  // namespace kelvo
