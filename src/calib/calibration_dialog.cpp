#include "calib/calibration_dialog.h"

#include "calib/calibration_selection.h"
#include "calib/calibration_set.h"
#include "calib/former_calibration.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "resources/help_contexts.h"
#include "state/cal_settings_write.h"
#include "state/camera_config.h"
#include "state/display_state_write.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/select_file.h"
#include "ui/status.h"

#include <cstdlib>
#include <limits>
#include <optional>
#include <string_view>

namespace kelvo {

namespace {

constexpr int kPermanentFile = 1200;  // radios: where the list of bad detectors comes from
constexpr int kLastFile = 1201;
constexpr int kNewFile = 1202;
constexpr int kUsersFile = 1203;
constexpr int kMinOffsetEdit = 1205;
constexpr int kMaxOffsetEdit = 1206;
constexpr int kReplaceNoisyBox = 1208;
constexpr int kNoiseLabel = 1210;
constexpr int kNoiseEdit = 1211;
constexpr int kTwoPoint = 1213;
constexpr int kOnePoint = 1214;
constexpr int kFramesEdit = 1216;
constexpr int kGainRangeEdit = 1220;
constexpr int kLoadButton = 1222;
constexpr int kReplaceBadBox = 1306;
constexpr int kNoiseUnit = 20431;  // "counts", beside the field
constexpr int kGainRangeUnit = 20432;
constexpr int kAboveMean = 20433;
constexpr int kBelowMean = 20434;

constexpr int kRunStarts = 1;
constexpr int kSetLoaded = 2;

constexpr std::string_view kSubstitutionOff = "Warning: Bad Pixel Substitution is OFF";

// The limits stand as they are though the words tell narrower ones: ranges above 1 and a count of 0 are in use.
constexpr float kHighestNoise = 2047.0F;
constexpr float kWidestGainRange = 1.6F;
constexpr std::uint32_t kMostFrames = 999;

// What was in force as the dialog opened: an Ok that is refused has stored choices already.
const FormerCalibration* formerChoices = nullptr;
std::string chosenBadDetFile;  // of the file radio that is checked; empty: the run determines the list

// --- The list of bad detectors --------------------------------------------------------------------------------------

struct StoredList {
    int radio;
    const char* file;
    const char* cantOpen;
    const char* cantClose;
};
constexpr StoredList kStoredLists[] = {
    {kPermanentFile, "Perm.bad", "Can't open permanent bad detector file!", "Unable to close `perm.bad' file."},
    {kLastFile, "Last.bad", "Can't open last bad detector file (try determining new file).",
     "Unable to close `last.bad' file."},
};

void ChooseNewFile(HWND dialog)
{
    chosenBadDetFile.clear();
    CheckRadioButton(dialog, kPermanentFile, kUsersFile, kNewFile);
}

void ChooseStoredList(HWND dialog, const StoredList& list)
{
    const std::string path = DirectoryOf(IniFilePath) + list.file;
    std::optional<File> file = File::Open(path, FileMode::kRead);
    if (!file) {
        ChooseNewFile(dialog);
        MessageBox(dialog, list.cantOpen, kMessageCaption);
        return;
    }
    chosenBadDetFile = path;
    if (!file->Close() || FaultIsSet("close bad detector file")) MessageBox(dialog, list.cantClose, kMessageCaption);
}

void ChooseUsersFile(HWND dialog)
{
    std::string path;
    SelectStatisticsFile(dialog, path, kBadDetectorFiles);
    if (path.empty()) {
        ChooseNewFile(dialog);
    } else {
        chosenBadDetFile = path;
    }
}

void WarnThatSubstitutionIsOff(int radio)
{
    MessageBeep(Sound::kExclamation);
    StatusMessage(
        radio == kUsersFile ? "Wanring: Bad pixel substitution is OFF" : "Warning: Bad pixel substitution is OFF",
        kLeftAligned);
}

void ChooseFile(HWND dialog, int radio)
{
    if (!IsDlgButtonChecked(dialog, kReplaceBadBox)) {
        ChooseNewFile(dialog);
        WarnThatSubstitutionIsOff(radio);
        return;
    }
    switch (radio) {
        case kPermanentFile:
        case kLastFile:
            ChooseStoredList(dialog, kStoredLists[radio - kPermanentFile]);
            break;
        case kUsersFile:
            ChooseUsersFile(dialog);
            break;
        default:
            ChooseNewFile(dialog);
    }
}

// --- Showing --------------------------------------------------------------------------------------------------------

void ShowNoiseLimit(HWND dialog)
{
    const bool on = IsDlgButtonChecked(dialog, kReplaceBadBox) && IsDlgButtonChecked(dialog, kReplaceNoisyBox);
    for (const int id : {kNoiseLabel, kNoiseEdit, kNoiseUnit}) EnableDlgItem(dialog, id, on);
}

void ShowHint(bool substitutionOn)
{
    if (substitutionOn) {
        StatusString(kCalibrationHint, kLeftAligned);
    } else {
        StatusMessage(kSubstitutionOff, kLeftAligned);
    }
}

// What finds bad pixels counts only where they are replaced.
void ShowSubstitution(HWND dialog, bool on)
{
    constexpr int kFollow[] = {kPermanentFile,   kLastFile,      kNewFile,       kUsersFile,
                               kReplaceNoisyBox, kGainRangeEdit, kMinOffsetEdit, kMaxOffsetEdit,
                               kGainRangeUnit,   kAboveMean,     kBelowMean};
    for (const int id : kFollow) EnableDlgItem(dialog, id, on);
    ShowNoiseLimit(dialog);
    if (!on) MessageBeep(Sound::kExclamation);
    ShowHint(on);
}

std::string NoiseText()
{
    return Format("%.2f", static_cast<double>(CalSettings.AllowedNoiseLevel));
}

std::string GainRangeText()
{
    return Format("%.3f", static_cast<double>(CalSettings.GainAcceptanceRange));
}

std::string MinOffsetText()
{
    return Format("%d", CalSettings.MinOffset);
}

std::string MaxOffsetText()
{
    return Format("%d", CalSettings.MaxOffset);
}

std::string FramesText()
{
    return Format("%u", CalSettings.NumFrames);
}

void Open(HWND dialog)
{
    ChooseNewFile(dialog);
    CheckRadioButton(dialog, kTwoPoint, kOnePoint, CalSettings.ChosenType == 1 ? kOnePoint : kTwoPoint);
    SetDlgItemText(dialog, kFramesEdit, FramesText());
    SetDlgItemText(dialog, kNoiseEdit, NoiseText());
    SetDlgItemText(dialog, kGainRangeEdit, GainRangeText());
    SetDlgItemText(dialog, kMaxOffsetEdit, MaxOffsetText());
    SetDlgItemText(dialog, kMinOffsetEdit, MinOffsetText());
    CheckDlgButton(dialog, kReplaceBadBox, SubstBadPixels != 0);
    CheckDlgButton(dialog, kReplaceNoisyBox, SubstBadPixels != 0 && ReplaceNoisy != 0);
    ShowSubstitution(dialog, SubstBadPixels != 0);
    CentreDialog(dialog);
}

void ClickReplaceBad(HWND dialog)
{
    const bool on = IsDlgButtonChecked(dialog, kReplaceBadBox);
    if (!on) ChooseNewFile(dialog);
    CheckDlgButton(dialog, kReplaceNoisyBox, on);
    ShowSubstitution(dialog, on);
}

// --- Ok -------------------------------------------------------------------------------------------------------------

struct Limits {
    std::int32_t minOffset = 0;
    std::int32_t maxOffset = 0;
    float noise = 0;
    float gainRange = 0;
    std::uint32_t frames = 0;
};

std::optional<std::int32_t> Magnitude(std::optional<std::int32_t> value)
{
    if (value == std::numeric_limits<std::int32_t>::min()) return std::nullopt;
    return value ? std::optional(std::abs(*value)) : std::nullopt;
}

std::optional<float> Within(std::optional<float> value, float highest)
{
    return value && *value >= 0.0F && *value <= highest ? value : std::nullopt;
}

std::optional<std::uint32_t> Frames(std::optional<std::int32_t> value)
{
    if (!value || static_cast<std::uint32_t>(*value) > kMostFrames) return std::nullopt;
    return static_cast<std::uint32_t>(*value);
}

// Takes a field's value over; without one the field shows again what is in force, and says why.
template <typename Number>
bool Take(HWND dialog, int edit, std::optional<Number> value, Number& taken, const std::string& inForce,
          const char* message)
{
    if (value) {
        taken = *value;
        return true;
    }
    MessageBeep(Sound::kExclamation);
    MessageBox(dialog, message, "Data Entry Error!");
    SetDlgItemText(dialog, edit, inForce);
    FocusDlgItem(dialog, edit);
    return false;
}

std::optional<Limits> ReadLimits(HWND dialog)
{
    const auto text = [dialog](int edit) { return GetDlgItemText(dialog, edit); };
    Limits limits;
    const bool valid =
        Take(dialog, kMinOffsetEdit, Magnitude(ScanDecimal(text(kMinOffsetEdit))), limits.minOffset, MinOffsetText(),
             "Invalid offset acceptance value below mean.") &&
        Take(dialog, kMaxOffsetEdit, ScanDecimal(text(kMaxOffsetEdit)), limits.maxOffset, MaxOffsetText(),
             "Invalid offset acceptance level above mean.") &&
        Take(dialog, kNoiseEdit, Within(ScanFloat(text(kNoiseEdit)), kHighestNoise), limits.noise, NoiseText(),
             "Allowed noise level must be between 0.0 & 2047.0") &&
        Take(dialog, kGainRangeEdit, Within(ScanFloat(text(kGainRangeEdit)), kWidestGainRange), limits.gainRange,
             GainRangeText(), "Allowed gain acceptance value must be between 0.0 & 1.0") &&
        Take(dialog, kFramesEdit, Frames(ScanDecimal(text(kFramesEdit))), limits.frames, FramesText(),
             "Allowed number of frames must be between 1 & 999");
    return valid ? std::optional(limits) : std::nullopt;
}

void StoreChoices(HWND dialog)
{
    write::calSet.ReplaceNoisy = IsDlgButtonChecked(dialog, kReplaceNoisyBox) ? 1 : 0;
    write::calSet.CalSettings.BadDetFile = chosenBadDetFile;
    write::calSet.CalSettings.ChosenType = IsDlgButtonChecked(dialog, kOnePoint) ? 1 : 2;
    write::calSet.CalSettings.NumSources = CalSettings.ChosenType;
}

void StoreLimits(const Limits& limits)
{
    write::calSet.CalSettings.MinOffset = limits.minOffset;
    write::calSet.CalSettings.MaxOffset = limits.maxOffset;
    write::calSet.CalSettings.AllowedNoiseLevel = limits.noise;
    write::calSet.CalSettings.GainAcceptanceRange = limits.gainRange;
    write::calSet.CalSettings.NumFrames = limits.frames;
    if (limits.frames == 1) write::calSet.ReplaceNoisy = 0;  // one frame has no noise
}

void WriteKeys()
{
    const auto write = [](const char* key, const std::string& value) {
        WritePrivateProfileString("Calibration", key, value, IniFilePath);
    };
    write("NumFrames", FramesText());
    write("GainAcceptanceRange", Format("%f", static_cast<double>(CalSettings.GainAcceptanceRange)));
    write("MinOffset", MinOffsetText());
    write("MaxOffset", MaxOffsetText());
    write("AllowedNoiseLevel", Format("%f", static_cast<double>(CalSettings.AllowedNoiseLevel)));
    WritePrivateProfileString("Display", "SubstBadPixels", Format("%d", SubstBadPixels), IniFilePath);
}

void Accept(HWND dialog)
{
    StoreChoices(dialog);
    const std::optional<Limits> limits = ReadLimits(dialog);
    if (!limits) return;
    StoreLimits(*limits);
    write::display.SubstBadPixels = IsDlgButtonChecked(dialog, kReplaceBadBox) ? 1 : 0;
    WriteKeys();
    if (GrabberPresent && !ActiveConfig.BufferCapture) {
        MessageBox(dialog, "Camera driver with image buffer board option calibrates faster!", "Camera driver warning!");
    }
    StatusString(kIdleHint, kLeftAligned);
    EndDialog(dialog, kRunStarts);
}

bool LoadChosen(HWND dialog)
{
    if (!ChooseCalibrationToOpen(dialog)) return false;
    formerChoices->PutBackChoices();  // from here on the set tells
    return LoadCalibration(dialog, FilePathBuf) != 0;
}

void LoadPrevious(HWND dialog)
{
    if (LoadChosen(dialog)) {
        EndDialog(dialog, kSetLoaded);
    } else {
        ShowHint(IsDlgButtonChecked(dialog, kReplaceBadBox));
    }
}

constexpr DialogEntry kEntries[] = {
    {kPermanentFile, ChooseFile},
    {kLastFile, ChooseFile},
    {kNewFile, ChooseFile},
    {kUsersFile, ChooseFile},
    {kReplaceBadBox, ClickReplaceBad},
    {kReplaceNoisyBox, ShowNoiseLimit},
    {kLoadButton, LoadPrevious},
    {kIdOk, Accept},
};
constexpr DialogFrame kFrame{.name = "CALIB",
                             .procedure = fnCALIBDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpNewCalibration};

}  // namespace

int RunCalibrationDialog(HWND window)
{
    if (!CameraOn) {
        MessageBox(window, "Camera must be turned on before calibrating", "Kelvo Message");
        return 0;
    }
    const FormerCalibration former;
    formerChoices = &former;
    const int result = RunDialog(kFrame, window);
    formerChoices = nullptr;
    if (result == 0) former.PutBackChoices();
    return result == kRunStarts ? kRunStarts : 0;
}

LRESULT fnCALIBDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

}  // namespace kelvo
