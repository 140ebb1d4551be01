#include "record/contsave_dialog.h"

#include "grabber/board.h"
#include "grabber/frame_read.h"
#include "head/camera_head.h"
#include "head/head_transaction.h"
#include "head/oscilloscope.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/files.h"
#include "platform/pointer.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "record/continuous_save.h"
#include "record/live_video.h"
#include "resources/help_contexts.h"
#include "state/buffer_state_write.h"
#include "state/cal_state.h"
#include "state/frame_state.h"
#include "state/head_state.h"
#include "state/state_registry.h"
#include "state/windows_write.h"
#include "ui/dialog_frame.h"
#include "ui/docking.h"
#include "ui/select_file.h"
#include "ui/status.h"
#include "video/video.h"

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace kelvo {

namespace {

constexpr std::string_view kSection = "ContSave";

constexpr float kLongestUpdateTime = 2000;      // s, of a run
constexpr float kLongestUpdateTimeKept = 4000;  // s, of the setting
constexpr double kLeastSecondsOfRoom = 10;      // below it a run asks first
constexpr float kMsPerSecond = 1000;

constexpr std::uint32_t kSaveTimer = 21;
constexpr std::uint32_t kFiguresTimer = 22;
constexpr std::uint32_t kPreviewTimer = 23;
constexpr std::int64_t kPreviewMs = 20;
constexpr std::int64_t kFiguresMs = 200;

// What can't be worked while a run is on; all but Stop and the switch of the integration time.
constexpr int kRestOfTheControls[] = {
    kContSaveName,
    kContSaveBrowse,
    kContSaveUpdateTime,
    kContSaveFrameHeaders,
    kContSaveShow,
    kContSaveCalibrated,
    kContSaveCorrectAfter,
    kContSaveSync,
    kContSaveIntegration,
    kIdOk,
    kIdCancel,
    kIdHelp,
};

// The keys of the section, as they were read or chosen last.
struct Settings {
    float UpdateRate = 0.5F;
    std::int32_t HeaderStoredEachFrame = 0;
    std::int32_t VgaOnDuringSave = 1;
    std::int32_t DisplayWithCalib = 1;
    std::int32_t ApplyCalibAfterSave = 1;
    std::int32_t SyncOut = 0;
};
Settings settings;

// What holds from the dialog's opening to its end.
struct Session {
    HWND dialog = nullptr;
    std::string nameAtOpening;
    std::int32_t SaveFirstStart = 1;     // 0: a run has been started, and its file may be added to
    std::int32_t SavePrimaryActive = 1;  // 0: the second integration time is in effect
    std::int32_t primaryIndex = 0;
    float primaryTime = 0;  // ms
    std::int32_t AltIntegrationIndex = 0;
    float AltIntegrationTime = 0;  // ms
    std::set<int> greyInRun{};     // controls that the run has taken away
};
Session session;

// Of a run: each kind is told once, and not over another box; the others are counted.
struct Troubles {
    std::set<std::string, std::less<>> told;
    bool boxIsOpen = false;
    std::int64_t notRead = 0;
    std::int64_t notWritten = 0;
};
Troubles troubles;

const StateNames kStateNames{
    Named("UpdateRate", settings.UpdateRate),
    Named("HeaderStoredEachFrame", settings.HeaderStoredEachFrame),
    Named("VgaOnDuringSave", settings.VgaOnDuringSave),
    Named("DisplayWithCalib", settings.DisplayWithCalib),
    Named("ApplyCalibAfterSave", settings.ApplyCalibAfterSave),
    Named("SyncOut", settings.SyncOut),
    Named("SaveFirstStart", session.SaveFirstStart),
    Named("SavePrimaryActive", session.SavePrimaryActive),
    Named("AltIntegrationIndex", session.AltIntegrationIndex),
    Named("AltIntegrationTime", session.AltIntegrationTime),
};

void BeepAndTell(HWND dialog, std::string_view text, std::string_view caption)
{
    MessageBeep(Sound::kDefault);
    MessageBox(dialog, text, caption);
}

// ---- Settings

void ReadSettings()
{
    const auto number = [](std::string_view key, std::int32_t otherwise) {
        return GetPrivateProfileInt(kSection, key, otherwise, IniFilePath);
    };
    settings = {
        .UpdateRate = ScanFloat(GetPrivateProfileString(kSection, "UpdateRate", "0.5", IniFilePath)).value_or(0.0F),
        .HeaderStoredEachFrame = number("HeaderStoredEachFrame", 0),
        .VgaOnDuringSave = number("VgaOnDuringSave", 1),
        .DisplayWithCalib = number("DisplayWithCalib", 1),
        .ApplyCalibAfterSave = number("ApplyCalibAfterSave", 1),
        .SyncOut = number("SyncOut", 0),
    };
}

void KeepBox(HWND dialog, int box, std::string_view key, std::int32_t& setting)
{
    setting = IsDlgButtonChecked(dialog, box) ? 1 : 0;
    WritePrivateProfileString(kSection, key, setting != 0 ? "1" : "0", IniFilePath);
}

void KeepSettings(HWND dialog, float updateRate)
{
    settings.UpdateRate = updateRate;
    WritePrivateProfileString(kSection, "UpdateRate", Format("%.3f", static_cast<double>(updateRate)), IniFilePath);
    KeepBox(dialog, kContSaveFrameHeaders, "HeaderStoredEachFrame", settings.HeaderStoredEachFrame);
    KeepBox(dialog, kContSaveShow, "VgaOnDuringSave", settings.VgaOnDuringSave);
    KeepBox(dialog, kContSaveSync, "SyncOut", settings.SyncOut);
    if (CalType == 0) return;
    KeepBox(dialog, kContSaveCalibrated, "DisplayWithCalib", settings.DisplayWithCalib);
    KeepBox(dialog, kContSaveCorrectAfter, "ApplyCalibAfterSave", settings.ApplyCalibAfterSave);
}

void ShowUpdateRate(HWND dialog)
{
    SetDlgItemText(dialog, kContSaveUpdateTime, Format("%5.3f", static_cast<double>(settings.UpdateRate)));
}

std::nullopt_t RefuseUpdateTime(HWND dialog, std::string_view text)
{
    MessageBox(dialog, text, kMessageCaption);
    ShowUpdateRate(dialog);
    FocusDlgItem(dialog, kContSaveUpdateTime);
    return std::nullopt;
}

std::optional<float> ReadUpdateTime(HWND dialog, float longest, std::string_view noNumber, std::string_view outside)
{
    const std::optional<float> seconds = ScanFloat(GetDlgItemText(dialog, kContSaveUpdateTime));
    if (!seconds) return RefuseUpdateTime(dialog, noNumber);
    const bool inRange = *seconds >= 0 && *seconds <= longest;  // false of what is no number in earnest
    if (!inRange) return RefuseUpdateTime(dialog, outside);
    return seconds;
}

// ---- Integration time

float TimeOf(std::int32_t index)
{
    return static_cast<float>(IntegrationTimeMsec(FrameRate, index));
}

void ShowSwitch(HWND dialog)
{
    const float time = session.SavePrimaryActive != 0 ? session.AltIntegrationTime : session.primaryTime;
    SetDlgItemText(dialog, kContSaveSwitch, Format("Set &integration to %.3f msec", static_cast<double>(time)));
}

void SetPrimary(bool primary)
{
    session.SavePrimaryActive = primary ? 1 : 0;
    SetFrameIntegrationTime(primary ? session.primaryTime : session.AltIntegrationTime);
    SetIntegrationIndex(primary ? session.primaryIndex : session.AltIntegrationIndex, IntegrationSlot);
}

void SwitchIntegration(HWND dialog)
{
    SetPrimary(session.SavePrimaryActive == 0);
    ShowSwitch(dialog);
}

void PickSecondTime(HWND dialog)
{
    if (KeyIsDown(Key::kPageUp)) ListSelect(dialog, kContSaveIntegration, PageBack(session.primaryIndex));
    if (KeyIsDown(Key::kPageDown)) {
        const int count = ListCount(dialog, kContSaveIntegration);
        ListSelect(dialog, kContSaveIntegration, PageOn(session.primaryIndex, count));
    }
    const int index = ListSelection(dialog, kContSaveIntegration);
    if (index == -1) {
        MessageBox(dialog, "Error getting integration ComboBox value!", kMessageCaption);
        return;
    }
    session.AltIntegrationIndex = index;
    session.AltIntegrationTime = TimeOf(index);
    ShowSwitch(dialog);
}

// A viewer has no head to set.
void OpenIntegration(HWND dialog)
{
    if (CameraOn && LinkIsReady()) {
        session.primaryIndex = session.AltIntegrationIndex = IndexIntegrationTime.at(SlotInUse());
        FillIntegrationCombo(dialog, IndexFrameRate, session.primaryIndex);
        session.primaryTime = session.AltIntegrationTime = TimeOf(session.primaryIndex);
    } else {
        EnableDlgItem(dialog, kContSaveIntegration, false);
        EnableDlgItem(dialog, kContSaveSwitch, false);
    }
    SetFrameIntegrationTime(session.primaryTime);
    ShowSwitch(dialog);
}

// ---- The preview

void StartPreview(HWND dialog)
{
    SetTimer(dialog, kPreviewTimer, kPreviewMs);
}

// A frame that doesn't come has its box: the next one isn't asked for behind it.
void Preview(HWND dialog)
{
    KillTimer(dialog, kPreviewTimer);
    if (LiveVideo && !ViewingFile && ShowPreviewFrame() && !SaveRuns()) StartPreview(dialog);
}

// ---- A run

void ShowFigures(HWND dialog)
{
    std::string text = Format("Frames in the file: %d", SaveFrameCount);
    const std::optional<std::int64_t> lost = LostFrames();
    if (SaveRuns()) text += lost ? Format("   lost: %lld", static_cast<long long>(*lost)) : "   lost: unknown";
    SetDlgItemText(dialog, kContSaveFigures, text);
}

void ShowTroubles()
{
    StatusMessage(Format(" Frames not read: %lld   not written: %lld", static_cast<long long>(troubles.notRead),
                         static_cast<long long>(troubles.notWritten)),
                  kLeftAligned);
}

// Of what goes wrong again and again the operator reads once a run.
void TellOnce(HWND dialog, std::string_view text, std::string_view caption)
{
    if (troubles.told.emplace(text).second) BeepAndTell(dialog, text, caption);
}

void TellTrouble(HWND dialog, SaveTrouble trouble)
{
    constexpr std::string_view kCaption = "File Save Error!";
    const bool noFrame = trouble == SaveTrouble::kNoFrame;
    ++(noFrame ? troubles.notRead : troubles.notWritten);
    ShowTroubles();
    if (std::exchange(troubles.boxIsOpen, true)) return;
    if (noFrame) {
        const FrameReadFault fault = LastFrameReadFault();
        if (!fault.text.empty()) TellOnce(dialog, fault.text, fault.caption);
        TellOnce(dialog, "Unable to get data from frame grabber!", kCaption);
    } else {
        TellOnce(dialog, "Unable to save to file!", kCaption);
    }
    troubles.boxIsOpen = false;
}

void ArmSave(HWND dialog)
{
    SetTimer(dialog, kSaveTimer, static_cast<std::int64_t>(settings.UpdateRate * kMsPerSecond));
}

// The timer is set before a box comes up: the run goes on behind it.
void Save(HWND dialog)
{
    KillTimer(dialog, kSaveTimer);
    const SaveTrouble trouble = SaveTick();
    ArmSave(dialog);
    if (trouble != SaveTrouble::kNone) TellTrouble(dialog, trouble);
}

void Between(HWND dialog)
{
    PassOverWhatWaits();
    ShowFigures(dialog);
}

void GreyForRun(HWND dialog)
{
    for (const int id : kRestOfTheControls) {
        if (!DlgItemEnabled(dialog, id)) continue;
        EnableDlgItem(dialog, id, false);
        session.greyInRun.insert(id);
    }
}

void UngreyAfterRun(HWND dialog)
{
    for (const int id : std::exchange(session.greyInRun, {})) EnableDlgItem(dialog, id, true);
}

void RefuseName(HWND dialog, std::string_view text, std::string_view caption)
{
    BeepAndTell(dialog, text, caption);
    FocusDlgItem(dialog, kContSaveName);
}

void TellStart(HWND dialog, SaveStart start, const std::string& path)
{
    switch (start) {
        case SaveStart::kCantOpen:
            MessageBeep(Sound::kDefault);
            MessageBox(dialog, "Unable to save to this filename!", "Filename Error!");
            SetDlgItemText(dialog, kContSaveName, SeqFilePath);
            FocusDlgItem(dialog, kContSaveName);
            break;
        case SaveStart::kShortHeader:
            MessageBox(dialog, "Error reading Image File Header\n" + path, kMessageCaption);
            break;
        case SaveStart::kOtherFrames:
            RefuseName(dialog, path + "\nholds frames of another size or kind: none can be added to it.",
                       "Filename Error!");
            break;
        case SaveStart::kBegun:
        case SaveStart::kNoMemory:
            break;
    }
}

// A file that stands under the name is deleted or added to, as the operator says; false: neither.
bool AgreeAboutFile(HWND dialog, SaveOptions& options)
{
    if (!FileExists(options.path)) return true;
    options.addsToFile = session.SaveFirstStart == 0;
    const std::string_view question =
        options.addsToFile ? "File already exists: Add to it?" : "File already exists: Delete it?";
    if (MessageBox(dialog, question, "File Exists", BoxIcon::kQuestion, BoxButtons::kYesNo) == Button::kYes) {
        return true;
    }
    FocusDlgItem(dialog, kContSaveName);
    return false;
}

std::int64_t BytesOfFile(const std::string& path)
{
    const std::optional<File> file = File::Open(path, FileMode::kRead);
    return file ? file->Length() : 0;
}

bool AgreeAboutRoom(HWND dialog, const SaveOptions& options)
{
    const std::int64_t freed = options.addsToFile ? 0 : BytesOfFile(options.path);
    const std::optional<double> seconds = SecondsOfRoom(options, freed);
    if (!seconds || *seconds >= kLeastSecondsOfRoom) return true;
    return MessageBox(dialog, Format("The disk has room for %.1f s of frames.\nStart all the same?", *seconds),
                      "Kelvo Warning", BoxIcon::kQuestion, BoxButtons::kYesNo, Button::kNo) == Button::kYes;
}

SaveOptions OptionsOf(HWND dialog)
{
    return {
        .path = GetDlgItemText(dialog, kContSaveName),
        .frameHeaders = IsDlgButtonChecked(dialog, kContSaveFrameHeaders),
        .calibrated = IsDlgButtonChecked(dialog, kContSaveCalibrated),
        .shows = IsDlgButtonChecked(dialog, kContSaveShow),
        .syncOut = IsDlgButtonChecked(dialog, kContSaveSync),
        .updateRate = settings.UpdateRate,
    };
}

void Run(HWND dialog, const SaveOptions& options)
{
    const SaveStart start = BeginSave(options);
    if (start != SaveStart::kBegun) {
        TellStart(dialog, start, options.path);
        return;
    }
    write::windows.SeqFilePath = options.path;
    session.SaveFirstStart = 0;
    troubles = {};
    KillTimer(dialog, kPreviewTimer);
    ArmSave(dialog);
    SetTimer(dialog, kFiguresTimer, kFiguresMs);
    GreyForRun(dialog);
    SetDlgItemText(dialog, kContSaveStartStop, "&Stop acquisition");
    FocusDlgItem(dialog, kContSaveStartStop);
    StatusMessage(" Saving to " + options.path + (SaveKeepsJournal() ? "" : ", without a journal of its frames"),
                  kLeftAligned);
    ShowFigures(dialog);
}

void Start(HWND dialog)
{
    if (IsDlgButtonChecked(dialog, kContSaveCalibrated)) CheckDlgButton(dialog, kContSaveCorrectAfter, false);
    const std::optional<float> updateRate =
        ReadUpdateTime(dialog, kLongestUpdateTime, "Update time must be in range: 0.0 to 2000.0 seconds",
                       "Update rate must be in range: 0.0 to 2000.0 seconds");
    if (!updateRate) return;
    settings.UpdateRate = *updateRate;
    if (!BeginLiveVideo()) return;
    SaveOptions options = OptionsOf(dialog);
    if (AgreeAboutFile(dialog, options) && AgreeAboutRoom(dialog, options)) Run(dialog, options);
}

void Correct(HWND dialog, const SavedRun& saved)
{
    const Hourglass hourglass;
    StatusMessage(Format(" Applying calibration to %d frames", saved.frames), kLeftAligned);
    switch (CorrectSavedRun(saved)) {
        case CorrectionEnd::kDone:
            break;
        case CorrectionEnd::kCantOpen:
            BeepAndTell(dialog, "Unable to open file!", "Filename Error!");
            break;
        case CorrectionEnd::kNoMemory:
            BeepAndTell(dialog, "Failure to allocate memory!", "Kelvo Warning");
            break;
        case CorrectionEnd::kCantRead:
            BeepAndTell(dialog, "Unable to read uncalibrated data from file!", "File Read Error!");
            break;
        case CorrectionEnd::kCantWrite:
            BeepAndTell(dialog, "Unable to write calibrated data to file!", "File Write Error!");
            break;
    }
}

// untold: what else there is to know.
void TellVerdict(const SavedRun& saved, std::string_view untold)
{
    const std::optional<std::int64_t> lost = LostFrames();
    std::string text = Format(" %d frames saved to ", saved.frames) + saved.path;
    if (lost) text += *lost == 0 ? ", none lost" : Format(", %lld lost", static_cast<long long>(*lost));
    if (const std::int64_t failed = troubles.notRead + troubles.notWritten; failed > 0) {
        text += Format(", %lld failed", static_cast<long long>(failed));
    }
    StatusMessage(text += untold, kLeftAligned);
}

SavedRun EndRun(HWND dialog)
{
    KillTimer(dialog, kSaveTimer);
    KillTimer(dialog, kFiguresTimer);
    return EndSave();
}

bool WantsCorrection(HWND dialog)
{
    return CalType != 0 && IsDlgButtonChecked(dialog, kContSaveCorrectAfter);
}

void ShowStopped(HWND dialog)
{
    UngreyAfterRun(dialog);
    StartPreview(dialog);
    SetDlgItemText(dialog, kContSaveStartStop, "&Start acquisition");
    ShowFigures(dialog);
}

void Stop(HWND dialog)
{
    const SavedRun saved = EndRun(dialog);
    if (!saved.closed) BeepAndTell(dialog, "Unable to save to file!", "File Save Error!");
    if (WantsCorrection(dialog)) Correct(dialog, saved);
    ShowStopped(dialog);
    TellVerdict(saved, {});
}

void StartOrStop(HWND dialog)
{
    constexpr std::size_t kTellingLetter = 3;
    if (GetDlgItemText(dialog, kContSaveStartStop).at(kTellingLetter) == 'a') {
        Start(dialog);
    } else {
        Stop(dialog);
    }
}

// ---- The dialog

void Leave(HWND dialog, int result)
{
    KillTimer(dialog, kPreviewTimer);
    FreeSaveBuffer();
    EndDialog(dialog, result);
}

void OpenBoxes(HWND dialog)
{
    CheckDlgButton(dialog, kContSaveMultiFrame, true);
    EnableDlgItem(dialog, kContSaveMultiFrame, false);
    CheckDlgButton(dialog, kContSaveFrameHeaders, settings.HeaderStoredEachFrame != 0);
    CheckDlgButton(dialog, kContSaveShow, settings.VgaOnDuringSave != 0);
    CheckDlgButton(dialog, kContSaveSync, settings.SyncOut != 0);
    if (CalType == 0) {
        EnableDlgItem(dialog, kContSaveCalibrated, false);
        EnableDlgItem(dialog, kContSaveCorrectAfter, false);
        return;
    }
    CheckDlgButton(dialog, kContSaveCalibrated, settings.DisplayWithCalib != 0);
    CheckDlgButton(dialog, kContSaveCorrectAfter, settings.DisplayWithCalib == 0 && settings.ApplyCalibAfterSave != 0);
}

void Open(HWND dialog)
{
    session = {.dialog = dialog, .nameAtOpening = SeqFilePath};
    ReadSettings();
    ShowUpdateRate(dialog);
    SetDlgItemText(dialog, kContSaveName, SeqFilePath);
    if (!AllocateSaveBuffer()) {
        MessageBox(dialog, "Unable to allocate memory to store data to disk!", "Kelvo Warning");
        EndDialog(dialog, 0);
        return;
    }
    OpenBoxes(dialog);
    OpenIntegration(dialog);
    SetWindowText(dialog, Format("Continuous Save: %.1f Hz, %.3f msec", static_cast<double>(FrameRate),
                                 static_cast<double>(session.primaryTime)));
    ShowFigures(dialog);
    CentreDialog(dialog);
    DockDialog(dialog);  // beside the picture
    if (CameraOn) BeginLiveVideo();
    StatusString(kContinuousSaveHint, kLeftAligned);
    StartPreview(dialog);
}

void Browse(HWND dialog)
{
    std::string path = "*.seq";
    // What becomes of a file that stands there is asked at the start.
    if (SelectFile(dialog, path, kSelectToSave, [](const std::string&) { return true; })) {
        SetDlgItemText(dialog, kContSaveName, path);
    }
}

void ChangeSync(HWND dialog)
{
    ExternalSyncOn(IsDlgButtonChecked(dialog, kContSaveSync) ? 1 : 0);
}

void Accept(HWND dialog)
{
    constexpr std::string_view kRange = "Update time must be in range: 0.0 to 4000.0 seconds";
    const std::optional<float> updateRate = ReadUpdateTime(dialog, kLongestUpdateTimeKept, kRange, kRange);
    if (!updateRate) return;
    KeepSettings(dialog, *updateRate);
    StatusString(kIdleHint, kLeftAligned);
    Leave(dialog, 1);
}

// The buttons are grey during a run; what closes the program, or the window itself, comes here all the same.
void GiveUp(HWND dialog)
{
    if (SaveRuns()) Stop(dialog);
    if (session.SavePrimaryActive == 0) SetPrimary(true);
    Leave(dialog, 0);
}

void Cancel(HWND dialog)
{
    GiveUp(dialog);
    write::windows.SeqFilePath = session.nameAtOpening;
    StatusString(kIdleHint, kLeftAligned);
}

// Where the program ends under the dialog the file is still closed as it should be.
void Destroyed(HWND /*dialog*/)
{
    if (SaveRuns()) EndSave();
    FreeSaveBuffer();
    session.dialog = nullptr;
}

constexpr DialogEntry kEntries[] = {
    {kContSaveStartStop, StartOrStop},
    {kContSaveSwitch, SwitchIntegration},
    {kContSaveIntegration, PickSecondTime, kSelectionChanged},
    {kContSaveSync, ChangeSync},
    {kContSaveBrowse, Browse},
    OnTimer(kSaveTimer, Save),
    OnTimer(kFiguresTimer, Between),
    OnTimer(kPreviewTimer, Preview),
    {kIdOk, Accept},
    {kIdCancel, Cancel},
};
constexpr DialogFrame kFrame{.name = "CONTSAVE",
                             .procedure = fnCONTSAVEDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpContinuousSave,
                             .closed = GiveUp,
                             .destroyed = Destroyed};

}  // namespace

int ContinuousSaveDialog(HWND parent)
{
    if (!ViewingFile && !CameraOn) return 1;
    const std::int32_t updatesBefore = std::exchange(write::buffer.PeriodicUpdates, 0);
    const HeadHearing hearing;
    const int result = RunDialog(kFrame, parent);
    if (CameraOn) CloseLinkAfterUse();
    write::buffer.PeriodicUpdates = updatesBefore;
    if (LiveVideo) RestartGrab();
    hearing.TellIfUnheard(parent, "The integration time may not be as it is set.");
    return result;
}

void StopContinuousSave()
{
    if (!SaveRuns()) return;
    const HWND dialog = session.dialog;
    const SavedRun saved = EndRun(dialog);
    ShowStopped(dialog);
    TellVerdict(saved, WantsCorrection(dialog) ? ", not corrected" : "");
}

LRESULT fnCONTSAVEDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

CommandEnd SaveContinuously()
{
    ContinuousSaveDialog(hWndMain);
    return CommandEnd::kResetStatus;
}

void ResetContinuousSaveDialog()
{
    settings = {};
    session = {};
    troubles = {};
}

}  // namespace kelvo
