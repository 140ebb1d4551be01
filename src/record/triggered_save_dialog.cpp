#include "record/triggered_save_dialog.h"

#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/directory.h"
#include "platform/files.h"
#include "platform/long_run.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "record/external_signal.h"
#include "record/live_video.h"
#include "record/triggered_save_write.h"
#include "resources/help_contexts.h"
#include "state/buffer_state_write.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/file_lists.h"
#include "ui/select_file.h"
#include "ui/status.h"

#include <charconv>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace kelvo {

namespace {

constexpr int kTriggers = 102;
constexpr int kFrames = 109;
constexpr int kMissingControl = 104;  // a bad number of frames was put right there; no dialog has it
constexpr int kStartButton = 124;
constexpr int kVgaOffBox = 1029;  // in other looks of this dialog; without it the display runs on
constexpr int kTriggerText = 20810;
constexpr int kProgressText = 20811;
constexpr int kBeginText = 20812;
constexpr int kInputControls[] = {kTriggers, kFrames, kNameToFile, kBrowse, kVgaOffBox, kIdOk, kIdCancel, kIdHelp};

constexpr std::uint32_t kStepTimer = 1;
constexpr std::uint32_t kDelayTimer = 2;
constexpr std::int64_t kRetryMs = 20;
constexpr std::int64_t kPollMs = 10;
constexpr std::string_view kPattern = "*.seq";
constexpr std::string_view kExtension = ".seq";

std::string lastName;
std::string directoryAtOpening;
std::optional<DirectoryForSaving> firstDirectory;
struct Numbers {
    std::int32_t triggers = 0;
    std::int32_t frames = 0;
};
Numbers numbersAtOpening;
HWND openDialog = nullptr;
std::string fileOfRun;  // name and extension, for questions

void Beep()
{
    MessageBeep(Sound::kDefault);
}

// ---- What the dialog shows

std::string_view NameOfTrigger(std::int32_t type)
{
    constexpr std::string_view kNames[] = {"Software", "Intensity", "ExtSync,-", "RS-232"};
    return type >= 0 && type < std::ssize(kNames) ? kNames[type] : "at once";
}

void ShowTrigger(HWND dialog)
{
    const std::string name(NameOfTrigger(triggerSettings.Type1));
    const bool onKey = triggerSettings.Type1 == kTriggerSoftware && triggerSettings.SoftwareAll != 0;
    SetDlgItemText(dialog, kTriggerText, name + (onKey ? ", Enter key for each trigger" : ""));
    SetDlgItemText(dialog, kBeginText, triggerSettings.CodeTrigger != 0 ? "on the external signal" : "at once");
}

void ShowProgress(HWND dialog)
{
    SetDlgItemText(dialog, kProgressText, Format("%d of %d", TriggersDone(), triggerSettings.NumTriggers));
}

void EnableInputs(HWND dialog, bool enabled)
{
    for (const int id : kInputControls) EnableDlgItem(dialog, id, enabled);
}

// ---- Opening and leaving

// The program's own directory is no place for what is saved.
void EnterDirectoryForSaving()
{
    directoryAtOpening = CurrentDirectory();
    if (FirstFileDirectory.empty() || directoryAtOpening != DefaultDir) return;
    firstDirectory.emplace();
    ChangeDirectory(firstDirectory->Path());
}

void Open(HWND dialog)
{
    openDialog = dialog;
    ReadTriggerKeys();
    numbersAtOpening = {.triggers = triggerSettings.NumTriggers, .frames = triggerSettings.NumFramesToAverage};
    EnterDirectoryForSaving();
    OpenFileLists(dialog, kPattern);
    SetDlgItemText(dialog, kNameToFile, lastName);
    SetDlgItemInt(dialog, kTriggers, triggerSettings.NumTriggers);
    SetDlgItemInt(dialog, kFrames, triggerSettings.NumFramesToAverage);
    CheckDlgButton(dialog, kVgaOffBox, triggerSettings.VgaOffDuringSave != 0);
    ShowTrigger(dialog);
    SetDlgItemText(dialog, kProgressText, "-");
    CentreDialog(dialog);
    FocusDlgItem(dialog, kNameToFile);
}

void Browse(HWND dialog)
{
    const FilterList list = FiltersFor(kPattern);
    BrowseForFile(dialog, {.mode = FileDialogMode::kSave,
                           .title = "Save File",
                           .filters = list.filters,
                           .defaultExtension = list.defaultExtension});
}

std::optional<std::int32_t> NumberIn(HWND dialog, int id, std::int32_t most)
{
    const std::string field = GetDlgItemText(dialog, id);
    const std::string_view text = Trimmed(field);
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < 1 || number > most) return std::nullopt;
    return number;
}

std::nullopt_t PutRight(HWND dialog, int id, int control)
{
    SetDlgItemInt(dialog, control, 1);
    Beep();
    FocusDlgItem(dialog, id);
    return std::nullopt;
}

// The two numbers; a bad one becomes 1 in its control, with a beep and the focus.
std::optional<Numbers> ReadNumbers(HWND dialog, int controlOfFrames)
{
    const auto triggers = NumberIn(dialog, kTriggers, kMostTriggers);
    if (!triggers) return PutRight(dialog, kTriggers, kTriggers);
    const auto frames = NumberIn(dialog, kFrames, kMostTriggerFrames);
    if (!frames) return PutRight(dialog, kFrames, controlOfFrames);
    return Numbers{.triggers = *triggers, .frames = *frames};
}

void TakeNumbers(const Numbers& numbers)
{
    write::triggered.triggerSettings.NumTriggers = numbers.triggers;
    write::triggered.triggerSettings.NumFramesToAverage = numbers.frames;
}

void Leave(HWND dialog, int result)
{
    ChangeDirectory(directoryAtOpening);
    firstDirectory.reset();
    EndDialog(dialog, result);
}

// ---- The end of a run

void ShowStopped(HWND dialog)
{
    SetDlgItemText(dialog, kStartButton, "Start acquisition");
    EnableInputs(dialog, true);
}

void EndRun()
{
    EndTriggeredRun();
    write::buffer.PeriodicUpdates = 1;
}

// Whatever runs on ends: the thread, the timers, the board's trigger.
void BreakOff(HWND dialog)
{
    StopExternalThread(ExternalThread);
    KillTimer(dialog, kStepTimer);
    KillTimer(dialog, kDelayTimer);
    if (triggerSettings.Type1 == kTriggerExternal) {
        constexpr std::int32_t kLastWaitMs = 10;
        WaitExternalTrigger(kLastWaitMs);
        ArmExternalTrigger(0);
    }
    EndRun();
}

void Stop(HWND dialog)
{
    BreakOff(dialog);
    StatusMessage(" Acquisition stopped", kLeftAligned);
    ShowStopped(dialog);
}

void Complete(HWND dialog)
{
    StopExternalThread(ExternalThread);
    EndRun();
    Beep();
    MessageBox(dialog, "Acquisition completed", kMessageCaption, BoxIcon::kInformation);
    StatusMessage(" Ready for new acquisition sequence", kLeftAligned);
    ShowStopped(dialog);
    FocusDlgItem(dialog, kIdOk);
}

void FailAndLeave(HWND dialog, const std::string& text, std::string_view caption)
{
    Beep();
    MessageBox(dialog, text, caption);
    Leave(dialog, 0);
}

// ---- A step

// True: once more. Otherwise nothing goes on until the operator stops the run.
void AskToRetry(HWND dialog, std::uint32_t timer)
{
    Beep();
    const std::int32_t number = timer == kStepTimer ? TriggersDone() + 1 : TriggersDone();
    const Button answer = MessageBox(dialog, Format("Retry getting data:\nTriggerNumber = %d", number),
                                     "Unable to get data!", BoxIcon::kQuestion, BoxButtons::kYesNo);
    if (!AcquisitionRunning) return;  // the program is about to end
    if (answer == Button::kYes) SetTimer(dialog, timer, kRetryMs);
}

// False: the run has ended, or the operator ends it.
bool WriteStep(HWND dialog)
{
    switch (WriteTriggeredFrame()) {
        case StepWritten::kNotOpened:
            BreakOff(dialog);
            FailAndLeave(dialog, fileOfRun + "\nSave Error: Open file failure", kMessageCaption);
            return false;
        case StepWritten::kNoHeader:
            BreakOff(dialog);
            FailAndLeave(dialog, "Failure writing header for image file\nDisk Full ??", "File Error");
            return false;
        case StepWritten::kCut: {
            Beep();
            const Button answer =
                MessageBox(dialog, Format("Unable to save\n%s\n  Continue sequence?", fileOfRun.c_str()),
                           "File Save Error!", BoxIcon::kQuestion, BoxButtons::kYesNo);
            if (!AcquisitionRunning) return false;
            if (answer == Button::kYes) return true;
            BreakOff(dialog);
            Leave(dialog, 0);
            return false;
        }
        default:
            return true;
    }
}

void GatherAndWrite(HWND dialog)
{
    StatusMessage(" Wait...Gathering data...", kLeftAligned);
    const int gathered = GatherTriggeredFrame();
    if (!AcquisitionRunning) return;
    if (!gathered) {
        AskToRetry(dialog, kDelayTimer);
        return;
    }
    if (!WriteStep(dialog)) return;
    ShowProgress(dialog);
    if (TriggersLeft > 0) {
        SetTimer(dialog, kStepTimer, 0);
    } else {
        Complete(dialog);
    }
}

// A test that waits for a frame or a slice needs no pause behind it.
bool TestTakesTime()
{
    return triggerSettings.Type1 == kTriggerIntensity || triggerSettings.Type1 == kTriggerExternal;
}

void OnStepTimer(HWND dialog)
{
    constexpr std::int32_t kLongestUntold = 900;
    KillTimer(dialog, kStepTimer);
    if (!AcquisitionRunning) return;
    const bool fired = TriggerHasFired();
    if (!AcquisitionRunning) return;
    if (TriggerTestFailed()) {
        AskToRetry(dialog, kStepTimer);
        return;
    }
    if (!fired) {
        SetTimer(dialog, kStepTimer, TestTakesTime() ? 0 : kPollMs);
        return;
    }
    const std::int32_t delay = triggerSettings.TriggerDelay;
    if (delay <= 0) {
        GatherAndWrite(dialog);
        return;
    }
    if (delay > kLongestUntold) {
        StatusMessage(Format(" Waiting %d msec", delay), kLeftAligned);
    }
    SetTimer(dialog, kDelayTimer, delay);
}

void OnDelayTimer(HWND dialog)
{
    KillTimer(dialog, kDelayTimer);
    if (AcquisitionRunning) GatherAndWrite(dialog);
}

// ---- Start

void RefuseFile(HWND dialog, const std::string& text)
{
    EndTriggeredRun();
    Beep();
    RefuseField(dialog, kNameToFile, text);
}

// The whole path of the name in the field; nullopt after a box, or where what stands there is to stay.
std::optional<std::string> FileForRun(HWND dialog)
{
    const std::string typed(Trimmed(GetDlgItemText(dialog, kNameToFile)));
    std::string stem;
    std::string extension;
    SplitPath(typed, nullptr, nullptr, &stem, &extension);
    if (stem.empty()) {
        RefuseFile(dialog, "Please enter the name of a file.");
        return std::nullopt;
    }
    const bool bare = extension.size() < 2;
    fileOfRun = stem + (bare ? std::string(kExtension) : extension);
    std::string path = AbsolutePath(bare ? typed + std::string(kExtension) : typed);
    if (FileExists(path)) {
        Beep();
        const Button answer = MessageBox(dialog, fileOfRun + "\nFile already exists!\nReplace it?", "Replace File?",
                                         BoxIcon::kQuestion, BoxButtons::kOkCancel, Button::kCancel);
        if (answer != Button::kOk) {
            EndTriggeredRun();
            return std::nullopt;
        }
    }
    // Now, and not when the first trigger comes.
    if (!NewFile::Begin(path)) {
        RefuseFile(dialog, fileOfRun + "\nSave Error: Open file failure");
        return std::nullopt;
    }
    lastName = path;
    return path;
}

bool MakeFrames(HWND dialog)
{
    const RunBegan began = BeginTriggeredRun();
    if (began == RunBegan::kYes) return true;
    EndTriggeredRun();
    const bool integers = began == RunBegan::kNoIntegerMemory;
    FailAndLeave(dialog,
                 integers ? "Failure to allocate && lock INTEGER global memory!"
                          : "Failure to allocate && lock FLOAT global memory!",
                 kMessageCaption);
    return false;
}

void BeginRun(HWND dialog)
{
    write::buffer.PeriodicUpdates = IsDlgButtonChecked(dialog, kVgaOffBox) ? 0 : 1;
    EnableInputs(dialog, false);
    SetDlgItemText(dialog, kStartButton, "Stop acquisition");
    StatusMessage(" Acquisition in progress", kLeftAligned);
    ShowProgress(dialog);
    write::triggered.AcquisitionRunning = 1;
    BeginLongRun(LongRun::kTriggeredSave);
    if (triggerSettings.CodeTrigger == 0) {
        SetTimer(dialog, kStepTimer, 0);
        return;
    }
    if (ExternalSignalCanCome() && StartExternalThread(dialog) != 0) return;
    Stop(dialog);
    MessageBox(dialog, "No signal can come from outside.", "System Error");
}

void Start(HWND dialog)
{
    const auto numbers = ReadNumbers(dialog, kFrames);
    if (!numbers || !BeginLiveVideo()) return;
    TakeNumbers(*numbers);
    if (!MakeFrames(dialog)) return;
    const auto path = FileForRun(dialog);
    if (!path) return;
    NameTriggeredFile(*path);
    if (firstDirectory) firstDirectory->Keep();
    BeginRun(dialog);
}

void StartOrStop(HWND dialog)
{
    if (AcquisitionRunning) {
        Stop(dialog);
    } else {
        Start(dialog);
    }
}

// ---- Ok and Cancel

void Accept(HWND dialog)
{
    const auto numbers = ReadNumbers(dialog, kMissingControl);
    if (!numbers) return;
    TakeNumbers(*numbers);
    write::triggered.triggerSettings.VgaOffDuringSave = IsDlgButtonChecked(dialog, kVgaOffBox) ? 1 : 0;
    WriteTriggerKey("NumTriggers", numbers->triggers);
    WriteTriggerKey("NumFramesToAverage", numbers->frames);
    WriteTriggerKey("VgaOffDuringSave", triggerSettings.VgaOffDuringSave);
    Leave(dialog, 1);
}

void Cancel(HWND dialog)
{
    TakeNumbers(numbersAtOpening);
    Leave(dialog, 0);
}

// The window's own button.
void Close(HWND dialog)
{
    if (AcquisitionRunning) {
        Stop(dialog);
    } else {
        Cancel(dialog);
    }
}

void OnDestroyed(HWND dialog)
{
    if (AcquisitionRunning) BreakOff(dialog);  // the program ends
    firstDirectory.reset();
    openDialog = nullptr;
}

// ---- The procedure

constexpr DialogEntry kEntries[] = {
    {kStartButton, StartOrStop},
    {kBrowse, Browse},
    {kIdOk, Accept},
    {kIdCancel, Cancel},
    OnTimer(kStepTimer, OnStepTimer),
    OnTimer(kDelayTimer, OnDelayTimer),
};

LRESULT fnBIORAD_SAVEDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
constexpr DialogFrame kFrame{.name = "BIORAD_SAVE",
                             .procedure = fnBIORAD_SAVEDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpTriggeredSave,
                             .closed = Close,
                             .destroyed = OnDestroyed};
LRESULT fnBIORAD_SAVEDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    if (message == ExternalSignalMessage && message != 0) {
        if (AcquisitionRunning) SetTimer(dialog, kStepTimer, 0);
        return 1;
    }
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

}  // namespace

int TrigSaveDialog(HWND parent)
{
    return RunDialog(kFrame, parent);
}

void SaveOnTriggers()
{
    TrigSaveDialog(hWndMain);
}

void StopTriggeredSave()
{
    if (AcquisitionRunning) Stop(openDialog);
}

void ResetTriggeredSaveDialog()
{
    openDialog = nullptr;
    lastName.clear();
    directoryAtOpening.clear();
    firstDirectory.reset();
    fileOfRun.clear();
    numbersAtOpening = {};
}

}  // namespace kelvo
