#include "record/recorder_window.h"

#include "grabber/capture.h"
#include "grabber/recording.h"
#include "platform/clock.h"
#include "platform/dialog.h"
#include "platform/file_dialog.h"
#include "platform/files.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "record/recorder_controls.h"
#include "record/recorder_form.h"
#include "record/recorder_outlook.h"
#include "record/recorder_run.h"
#include "regions/region_list.h"
#include "resources/help_contexts.h"
#include "state/camera_config.h"
#include "state/frame_state.h"
#include "state/head_state.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/docking.h"
#include "ui/select_file.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kelvo {

namespace {

constexpr std::uint32_t kRefreshTimer = 1;
constexpr std::uint32_t kMeasureTimer = 2;
constexpr std::int64_t kRefreshMs = 250;
constexpr std::int64_t kMeasureSoonMs = 100;  // the window is seen before
constexpr double kSecondsPerMinute = 60;
constexpr std::int64_t kNsPerSecond = 1'000'000'000;

HWND hDlgRecorder = nullptr;

// What the window holds beside its fields.
struct Shown {
    RecorderSettings settings{};  // as they were read last
    RecorderSettings kept{};      // and as the file has them
    std::string measuredDirectory{};
    std::optional<double> writesBytesPerSecond{};
    RecorderState state = RecorderState::kIdle;
    bool canChange = true;
    std::uint32_t regionsVersion = 0;
};
Shown shown;
std::optional<DirectoryForSaving> firstDirectory;  // where the operator's files lie, until a recording keeps it

// ---- what happens now

bool CanChange()
{
    return !RecorderRuns() && !RecordingRuns();
}

void Tell(HWND dialog, std::string_view text, bool warns)
{
    SetDlgItemText(dialog, kRecMessage, text);
    WarnDlgItem(dialog, kRecMessage, warns);
}

std::string RingText(const RecorderStatus& status)
{
    if (status.ringFrames == 0) return "-";
    std::string text = Format("%lld of %zu frames", static_cast<long long>(status.counts.waiting), status.ringFrames);
    if (status.ringSeconds > 0) text += Format(" (%.1f s)", status.ringSeconds);
    return text;
}

std::string EventText(const RecorderStatus& status)
{
    if (status.event == 0) return "-";
    std::string text = Format("%lld", static_cast<long long>(status.event));
    if (SettingsOfRun().trigger == RecordTrigger::kNone) return text;
    if (SettingsOfRun().events > 0) text += Format(" of %lld", static_cast<long long>(SettingsOfRun().events));
    if (status.state == RecorderState::kArmed) {
        text += Format(", %lld before it", static_cast<long long>(status.preTriggerWaiting));
    }
    return text;
}

std::string FileText(const RecorderStatus& status)
{
    if (status.files.empty()) return "-";
    std::string name;
    std::string extension;
    SplitPath(status.files.back(), nullptr, nullptr, &name, &extension);
    return name + extension;
}

void ShowFigures(HWND dialog, const RecorderStatus& status)
{
    SetDlgItemText(dialog, kRecLamp, RecorderStateText(status, SettingsOfRun()));
    WarnDlgItem(dialog, kRecLamp, status.state == RecorderState::kRecording);
    SetDlgItemText(dialog, kRecFrames, Format("%lld", static_cast<long long>(status.frames)));
    SetDlgItemText(dialog, kRecLost, LostFramesText(status));
    WarnDlgItem(dialog, kRecLost, status.lostByTransport + status.lostByBoard.value_or(0) + status.lostByRing > 0);
    SetDlgItemText(dialog, kRecTime, Format("%.1f s", status.seconds));
    SetDlgItemText(dialog, kRecEvent, EventText(status));
    SetDlgItemText(dialog, kRecMarks, Format("%lld", static_cast<long long>(status.marks)));
    SetDlgItemText(dialog, kRecRing, RingText(status));
    SetDlgItemText(dialog, kRecLeft, status.secondsLeft < 0 ? "-" : RoomText(status.secondsLeft));
    SetDlgItemText(dialog, kRecFile, FileText(status));
}

void ShowMean(HWND dialog, const RecorderStatus& status)
{
    std::optional<double> mean = status.state == RecorderState::kArmed ? status.mean : std::nullopt;
    const bool live = CameraOn && LiveVideo && !ViewingFile;
    const RecordTrigger trigger = shown.settings.trigger;
    const bool wanted = trigger == RecordTrigger::kMean || trigger == RecordTrigger::kRegion;
    if (!mean && wanted && live) mean = TriggerMeanOf(LiveFrame, ActiveConfig.Hroi, shown.settings);
    SetDlgItemText(dialog, kRecMeanNow, mean ? Format("%.1f", *mean) : "-");
}

void EnableButtons(HWND dialog, const RecorderStatus& status)
{
    const bool runs = status.state != RecorderState::kIdle;
    EnableDlgItem(dialog, kRecStart, CanChange());
    EnableDlgItem(dialog, kRecStop, runs);
    EnableDlgItem(dialog, kRecTrigger,
                  status.state == RecorderState::kArmed && SettingsOfRun().trigger == RecordTrigger::kButton);
    EnableDlgItem(dialog, kRecMark, status.state == RecorderState::kRecording);
}

// ---- before

void ShowNameExample(HWND dialog)
{
    const RecorderSettings& settings = shown.settings;
    const bool usable = PatternIsUsable(settings.namePattern);
    const std::int64_t nowNs = std::int64_t{WallClockSeconds()} * kNsPerSecond;
    SetDlgItemText(
        dialog, kRecNameExample,
        usable ? EventName(settings.namePattern, 1, nowNs, settings.sampleName) + ".seq" : "This makes no file name.");
    WarnDlgItem(dialog, kRecNameExample, !usable);
}

void ShowRingSize(HWND dialog, const RecorderOutlook& outlook)
{
    std::string text = Format("%lld frames", static_cast<long long>(outlook.ringFrames));
    if (outlook.frameRateHz > 0) {
        text = Format("%.1f s, ", static_cast<double>(outlook.ringFrames) / outlook.frameRateHz) + text;
    }
    SetDlgItemText(dialog, kRecRingHolds, CameraOn ? text : "-");
}

void ShowOutlook(HWND dialog)
{
    const bool measured = shown.settings.directory == shown.measuredDirectory;
    const RecorderOutlook outlook =
        TakeOutlook(shown.settings, measured ? shown.writesBytesPerSecond : std::optional<double>());
    const std::optional<double> room = RoomSeconds(outlook);
    SetDlgItemText(dialog, kRecWriteRate, RateText(outlook.writesBytesPerSecond));
    SetDlgItemText(dialog, kRecNeeded, RateText(outlook.neededBytesPerSecond));
    SetDlgItemText(dialog, kRecRoom, room ? Format("%.1f min", *room / kSecondsPerMinute) : "-");
    SetDlgItemText(dialog, kRecWarning, OutlookWarning(outlook, shown.settings));
    WarnDlgItem(dialog, kRecWarning, true);
    ShowRingSize(dialog, outlook);
}

void Measure(HWND dialog)
{
    KillTimer(dialog, kMeasureTimer);
    if (!CanChange()) return;
    shown.measuredDirectory = shown.settings.directory;
    shown.writesBytesPerSecond = MeasureWriteRate(shown.settings.directory);
    ShowOutlook(dialog);
}

// ---- the fields

std::optional<std::int64_t> RingMegabytesIn(HWND dialog)
{
    const std::string text = GetDlgItemText(dialog, kRecRingSize);
    std::int64_t megabytes = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), megabytes);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    return whole && megabytes >= 0 && megabytes <= kMostRingMegabytes ? std::optional(megabytes) : std::nullopt;
}

std::optional<FieldRefusal> ReadFields(HWND dialog)
{
    std::optional<FieldRefusal> refusal = ReadRecorderForm(dialog, shown.settings);
    const std::optional<std::int64_t> ring = RingMegabytesIn(dialog);
    if (ring) SetRingBytes(*ring << 20);
    if (!ring && !refusal) {
        refusal = FieldRefusal{.control = kRecRingSize, .why = "Ring: please enter a whole number from 0 to 2047 MB."};
    }
    return refusal;
}

void KeepFields(HWND dialog)
{
    ReadFields(dialog);
    if (shown.settings != shown.kept) WriteRecorderSettings(shown.settings);
    shown.kept = shown.settings;
    const std::int64_t ringKept = ReadRingMegabytes();
    WriteRingMegabytes(RingMegabytesIn(dialog).value_or(ringKept));
}

// What was typed shows its consequences at once; what can't be read yet leaves them as they were.
void FollowFields(HWND dialog)
{
    if (!shown.canChange) return;
    ReadFields(dialog);
    ShowNameExample(dialog);
    ShowOutlook(dialog);
}

void ShowRegions(HWND dialog)
{
    ListRecorderRegions(dialog, shown.settings.region);
    shown.regionsVersion = RegionsVersion;
}

void Refresh(HWND dialog)
{
    const RecorderStatus status = CurrentRecorderStatus();
    ShowFigures(dialog, status);
    ShowMean(dialog, status);
    EnableButtons(dialog, status);
    const bool canChange = CanChange();
    if (std::exchange(shown.canChange, canChange) != canChange) EnableRecorderFields(dialog, canChange);
    if (canChange) ShowOutlook(dialog);
    if (canChange && shown.regionsVersion != RegionsVersion) ShowRegions(dialog);
    const bool ended = shown.state != RecorderState::kIdle && status.state == RecorderState::kIdle;
    if (ended) Tell(dialog, status.verdict, status.exitCode != 0);
    shown.state = status.state;
}

void PickChoice(HWND dialog)
{
    FollowFields(dialog);
    EnableRecorderFields(dialog, shown.canChange);
}

void PickLengthUnit(HWND dialog)
{
    ShowLengthOf(dialog, shown.settings);
    PickChoice(dialog);
}

void PickPreUnit(HWND dialog)
{
    ShowPreTriggerOf(dialog, shown.settings);
    PickChoice(dialog);
}

void LeaveDirectory(HWND dialog)
{
    if (shown.settings.directory != shown.measuredDirectory) SetTimer(dialog, kMeasureTimer, 0);
}

// Where, and under what name: the pattern is offered as it stands.
void Browse(HWND dialog)
{
    FileDialogRequest request;
    request.owner = dialog;
    request.mode = FileDialogMode::kSave;
    request.title = "Record to";
    request.filters = {{"Sequences (*.seq)", "*.seq"}};
    request.directory = shown.settings.directory;
    request.name = shown.settings.namePattern;
    request.accept = [](const std::string& /*path*/) { return true; };  // no recording overwrites another
    const FileDialogResult chosen = RunFileDialog(request);
    if (chosen.error != 0) TellFileDialogError(chosen.error);
    if (chosen.paths.empty() || !hDlgRecorder) return;
    std::string directory;
    std::string name;
    SplitPath(chosen.paths.front(), nullptr, &directory, &name, nullptr);
    if (directory.size() > 1) directory.pop_back();  // its closing separator
    SetDlgItemText(dialog, kRecDirectory, directory);
    SetDlgItemText(dialog, kRecName, name);
    LeaveDirectory(dialog);
}

// ---- the buttons

void Start(HWND dialog)
{
    if (const std::optional<FieldRefusal> refusal = ReadFields(dialog)) {
        MessageBeep(Sound::kDefault);
        Tell(dialog, refusal->why, true);
        FocusDlgItem(dialog, refusal->control);
        return;
    }
    KillTimer(dialog, kMeasureTimer);
    std::string why;
    if (BeginRecorderRun(shown.settings, RecorderCaller::kOperator, why)) {
        KeepFields(dialog);
        if (firstDirectory) firstDirectory->Keep();
        Tell(dialog, "", false);
    } else {
        MessageBeep(Sound::kDefault);
        Tell(dialog, "Not started. " + why, true);
    }
    if (hDlgRecorder) Refresh(dialog);
}

void Stop(HWND dialog)
{
    StopRecorderRun();
    if (hDlgRecorder) Refresh(dialog);
}

void Trigger(HWND dialog)
{
    TriggerByHand();
    Refresh(dialog);
}

void Mark(HWND dialog)
{
    MarkByHand();
    Refresh(dialog);
}

// ---- opening and leaving

void Open(HWND dialog)
{
    hDlgRecorder = dialog;
    shown = {.settings = ReadRecorderSettings()};
    if (shown.settings.directory.empty()) shown.settings.directory = firstDirectory.emplace().Path();
    const RecorderStatus status = CurrentRecorderStatus();
    if (status.state != RecorderState::kIdle) shown.settings = SettingsOfRun();
    shown.canChange = CanChange();
    const RecorderSettings settings = shown.settings;  // filling one field has the others read
    SetDlgItemText(dialog, kRecRingSize, Format("%lld", static_cast<long long>(ReadRingMegabytes())));
    ShowRecorderSettings(dialog, settings);
    shown.regionsVersion = RegionsVersion;
    shown.settings = shown.kept = settings;
    EnableRecorderFields(dialog, shown.canChange);
    ShowNameExample(dialog);
    Tell(dialog, status.verdict, status.exitCode != 0);
    ShowOutlook(dialog);
    Refresh(dialog);
    DockDialog(dialog);
    FocusDlgItem(dialog, shown.canChange ? kRecStart : kRecStop);
    SetTimer(dialog, kRefreshTimer, kRefreshMs);
    SetTimer(dialog, kMeasureTimer, kMeasureSoonMs);
}

void Close(HWND dialog)
{
    if (CanChange()) KeepFields(dialog);  // otherwise they were kept when it began
    EndDialog(dialog, 0);
}

void Forget(HWND /*dialog*/)
{
    hDlgRecorder = nullptr;
    firstDirectory.reset();
}

constexpr DialogEntry kEntries[] = {
    {kRecStart, Start},
    {kRecStop, Stop},
    {kRecTrigger, Trigger},
    {kRecMark, Mark},
    {kRecBrowse, Browse},
    {kRecMeasure, Measure},
    {kRecLengthUnit, PickLengthUnit, kSelectionChanged},
    {kRecPreUnit, PickPreUnit, kSelectionChanged},
    {kRecTriggerKind, PickChoice, kSelectionChanged},
    {kRecPixels, PickChoice, kSelectionChanged},
    {kRecDirectory, LeaveDirectory, kEditFocusLost},
    {kRecDirectory, FollowFields, kEditChanged},
    {kRecName, FollowFields, kEditChanged},
    {kRecSample, FollowFields, kEditChanged},
    {kRecComment, FollowFields, kEditChanged},
    {kRecLength, FollowFields, kEditChanged},
    {kRecInterval, FollowFields, kEditChanged},
    {kRecPre, FollowFields, kEditChanged},
    {kRecLeftColumn, FollowFields, kEditChanged},
    {kRecTopRow, FollowFields, kEditChanged},
    {kRecRightColumn, FollowFields, kEditChanged},
    {kRecBottomRow, FollowFields, kEditChanged},
    {kRecRegion, FollowFields, kSelectionChanged},
    {kRecRegionPass, FollowFields, kSelectionChanged},
    {kRecRegionLevel, FollowFields, kEditChanged},
    {kRecRingSize, FollowFields, kEditChanged},
    OnTimer(kRefreshTimer, Refresh),
    OnTimer(kMeasureTimer, Measure),
    {kIdCancel, Close},
};
constexpr DialogFrame kFrame{.name = "RECORDER",
                             .procedure = fnRECORDERDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpRecorder,
                             .destroyed = Forget};

}  // namespace

HWND RecorderWindow()
{
    return hDlgRecorder;
}

void OpenRecorderWindow()
{
    if (hDlgRecorder) {
        BringToFront(hDlgRecorder, {});
        return;
    }
    OpenModelessDialog(kFrame, hWndMain);
}

void CloseRecorderWindow()
{
    if (hDlgRecorder) Close(hDlgRecorder);
}

LRESULT fnRECORDERDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

void ResetRecorderWindow()
{
    hDlgRecorder = nullptr;
    shown = {};
    firstDirectory.reset();
}

}  // namespace kelvo
