#include "calib/source_dialogs.h"

#include "acquire/picture_figures.h"
#include "platform/box.h"
#include "platform/clock.h"
#include "platform/dialog.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "resources/help_contexts.h"
#include "state/cal_settings_write.h"
#include "state/cal_state_write.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/status.h"

#include <optional>

namespace kelvo {

namespace {

constexpr float kNotGiven = -999.0F;
constexpr float kColdest = -274.0F;
constexpr float kHottest = 2500.0F;
constexpr const char* kDegrees = "%7.2f";

struct Source {
    int temperatureEdit;
    int emissivityEdit;
    int hint;  // status string
    float& temperatureC;
    float& emissivity;
};

const Source kColdSource{1224, 1225, kLowSourceHint, write::cal.TemperatureCold,
                         write::calSet.CalSettings.EmissivityCold};
const Source kHotSource{1226, 1227, kHighSourceHint, write::cal.TemperatureHot,
                        write::calSet.CalSettings.EmissivityHot};

// Given by the launcher, shown as the dialog opens.
const std::string* titleOfRun = nullptr;

// --- What the live picture tells -------------------------------------------------------------------------------------

constexpr std::uint32_t kFiguresTimer = 1;
constexpr std::int64_t kFiguresMs = 250;
constexpr const char* kNoFigure = "-";

MeanWatch meanWatch;

void ShowNoFigures(HWND dialog)
{
    for (const int id : {kSourceMean, kSourceDeviation, kSourceSaturated, kSourceSteady}) {
        SetDlgItemText(dialog, id, kNoFigure);
    }
}

void ShowFigures(HWND dialog)
{
    const std::optional<PictureFigures> figures = LiveVideo ? FiguresOf(RawFrame) : std::nullopt;
    if (!figures) {
        meanWatch.Clear();
        ShowNoFigures(dialog);
        return;
    }
    meanWatch.Add(TickMs(), figures->mean);
    SetDlgItemText(dialog, kSourceMean, Format("%.1f counts", figures->mean));
    SetDlgItemText(dialog, kSourceDeviation, Format("%.1f counts", figures->deviation));
    SetDlgItemText(dialog, kSourceSaturated, Format("%.2f %%", figures->saturatedShare * 100));
    SetDlgItemText(dialog, kSourceSteady, meanWatch.IsSteady() ? "steady" : "not steady: the mean still moves");
}

void StartFigures(HWND dialog)
{
    meanWatch.Clear();
    ShowFigures(dialog);
    SetTimer(dialog, kFiguresTimer, kFiguresMs);
}

// --- The bench -------------------------------------------------------------------------------------------------------

SourceBench sourceBench;

void OfferBench(HWND dialog)
{
    ShowDlgItem(dialog, kSourceBench, sourceBench.open && sourceBench.isThere && sourceBench.isThere());
}

void OpenBench(HWND dialog)
{
    sourceBench.open(dialog);
}

// --- The fields ------------------------------------------------------------------------------------------------------

void Open(HWND dialog, const Source& source)
{
    if (titleOfRun) SetWindowText(dialog, *titleOfRun);
    if (source.temperatureC != kNotGiven) {
        SetDlgItemText(dialog, source.temperatureEdit, Format(kDegrees, static_cast<double>(source.temperatureC)));
    }
    if (source.emissivity > 0.0F && source.emissivity <= 1.0F) {
        SetDlgItemText(dialog, source.emissivityEdit, Format("%6.4f", static_cast<double>(source.emissivity)));
    }
    StatusString(source.hint, kLeftAligned);
    OfferBench(dialog);
    StartFigures(dialog);
    CentreDialog(dialog);
}

void OpenCold(HWND dialog)
{
    MessageBeep(Sound::kDefault);
    Open(dialog, kColdSource);
}

void OpenHot(HWND dialog)
{
    Open(dialog, kHotSource);
}

void Refuse(HWND dialog, int edit)
{
    MessageBeep(Sound::kExclamation);
    FocusDlgItem(dialog, edit);
}

// -999.0 for an empty field; nullopt where the text won't do.
std::optional<float> TemperatureIn(HWND dialog, int edit)
{
    const std::string text = GetDlgItemText(dialog, edit);
    if (text.empty()) return kNotGiven;
    const std::optional<float> value = ScanFloat(text);
    return value && *value >= kColdest && *value <= kHottest ? value : std::nullopt;
}

// A second look at a temperature that is given.
using Agree = bool (*)(HWND dialog, float temperatureC);

// What the fields hold. Nothing of it is in force before all of them are right: the calibration reads by its
// temperatures.
struct Entries {
    float temperatureC = kNotGiven;
    float emissivity = 0;
};

bool ReadTemperature(HWND dialog, const Source& source, Agree agree, Entries& entries)
{
    const std::optional<float> value = TemperatureIn(dialog, source.temperatureEdit);
    if (!value) {
        Refuse(dialog, source.temperatureEdit);
        return false;
    }
    if (*value != kNotGiven && !agree(dialog, *value)) return false;
    entries.temperatureC = *value;
    return true;
}

bool AnyWillDo(HWND /*dialog*/, float /*temperatureC*/)
{
    return true;
}

// Without an order of the two there is no reading in degrees; the operator may want none.
bool IsHotterOrWanted(HWND dialog, float temperatureC)
{
    if (temperatureC > TemperatureCold) return true;
    return MessageBox(dialog, "High temperature is <= Low temperature", kMessageCaption, BoxIcon::kExclamation,
                      BoxButtons::kOkCancel, Button::kCancel) == Button::kOk;
}

// An empty field leaves the emissivity.
bool ReadEmissivity(HWND dialog, const Source& source, Entries& entries)
{
    entries.emissivity = source.emissivity;
    const std::string text = GetDlgItemText(dialog, source.emissivityEdit);
    if (text.empty()) return true;
    const float value = ScanFloat(text).value_or(0.0F);
    if (!(value > 0.0F && value <= 1.0F)) {
        SetDlgItemText(dialog, source.emissivityEdit, "1.0");
        Refuse(dialog, source.emissivityEdit);
        return false;
    }
    entries.emissivity = value;
    return true;
}

bool Take(HWND dialog, const Source& source, Agree agree)
{
    Entries entries;
    if (!ReadTemperature(dialog, source, agree, entries) || !ReadEmissivity(dialog, source, entries)) return false;
    source.temperatureC = entries.temperatureC;
    source.emissivity = entries.emissivity;
    return true;
}

void AcceptCold(HWND dialog)
{
    if (Take(dialog, kColdSource, AnyWillDo)) EndDialog(dialog, 1);
}

void AcceptHot(HWND dialog)
{
    if (!Take(dialog, kHotSource, IsHotterOrWanted)) return;
    StatusMessage("  Getting high flux calibration data...", kLeftAligned);
    EndDialog(dialog, 1);
}

void CancelHot(HWND dialog)
{
    StatusString(kIdleHint, kLeftAligned);
    EndDialog(dialog, 0);
}

constexpr DialogEntry kColdEntries[] = {
    {kIdOk, AcceptCold}, {kSourceBench, OpenBench}, OnTimer(kFiguresTimer, ShowFigures)};
constexpr DialogFrame kColdFrame{.name = "CAL_COLD",
                                 .procedure = fnCALCOLDDlgProc,
                                 .open = OpenCold,
                                 .entries = kColdEntries,
                                 .helpContext = kHelpLowSource};

constexpr DialogEntry kHotEntries[] = {
    {kIdOk, AcceptHot}, {kIdCancel, CancelHot}, {kSourceBench, OpenBench}, OnTimer(kFiguresTimer, ShowFigures)};
constexpr DialogFrame kHotFrame{.name = "CAL_HOT",
                                .procedure = fnCALHOTDlgProc,
                                .open = OpenHot,
                                .entries = kHotEntries,
                                .helpContext = kHelpHighSource};

int RunSourceDialog(const DialogFrame& frame, HWND window, const std::string& title)
{
    titleOfRun = &title;
    const int result = RunDialog(frame, window);
    titleOfRun = nullptr;
    return result;
}

}  // namespace

void SetSourceBench(const SourceBench& bench)
{
    sourceBench = bench;
}

int ColdSourceDialog(HWND window, const std::string& title)
{
    return RunSourceDialog(kColdFrame, window, title);
}

int HotSourceDialog(HWND window)
{
    return RunSourceDialog(kHotFrame, window, "2 Point Calibration");
}

LRESULT fnCALCOLDDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kColdFrame, dialog, message, wParam, lParam);
}

LRESULT fnCALHOTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kHotFrame, dialog, message, wParam, lParam);
}

}  // namespace kelvo
