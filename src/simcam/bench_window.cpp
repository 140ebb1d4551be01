#include "simcam/bench_window.h"

#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/file_dialog.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "resources/dialog_ids.h"
#include "resources/help_contexts.h"
#include "simcam/sim_camera.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/docking.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>

namespace kelvo {

namespace {

HWND hDlgBench = nullptr;

constexpr std::uint32_t kRefreshTimer = 1;
constexpr std::int64_t kRefreshMs = 1000;
constexpr const char* kNoCamera = "no simulated camera";
constexpr const char* kNothing = "-";
constexpr const char* kNothingLoaded = "Nothing is loaded yet.";
constexpr double kUsPerSecond = 1e6;
constexpr double kUsPerMs = 1e3;
constexpr std::int64_t kUsPerWholeMs = 1000;

struct BenchSource {
    SimSource source;
    std::string_view name;
    int button;
    int degrees;  // its temperature's control; 0: none
};
constexpr BenchSource kSources[] = {
    {SimSource::kLow, "low", kBenchLow, kBenchLowDegrees}, {SimSource::kHigh, "high", kBenchHigh, kBenchHighDegrees},
    {SimSource::kScene, "scene", kBenchScene, 0},          {SimSource::kRaw, "raw", kBenchRaw, 0},
    {SimSource::kVolts, "volts", kBenchVolts, 0},
};

constexpr int kControls[] = {kBenchLow,         kBenchHigh,    kBenchScene,        kBenchRaw,  kBenchLowDegrees,
                             kBenchHighDegrees, kBenchLoad,    kBenchColumns,      kBenchRows, kBenchVolts,
                             kBenchInputVolts,  kBenchTrigger, kBenchTriggerPeriod};

bool showing = false;  // the window shows what the camera has

// --- What the window shows ------------------------------------------------------------------------------------------

void EnableControls(HWND dialog, bool enabled)
{
    for (const int id : kControls) EnableDlgItem(dialog, id, enabled);
}

// A temperature that a script has set may have a fraction; the window shows the nearest degree and leaves it.
void ShowDegrees(HWND dialog, const SimCamera& camera, const BenchSource& row)
{
    if (row.degrees == 0 || FocusedDlgItem(dialog) == row.degrees) return;
    const int degrees = static_cast<int>(std::lround(SimSourceDegrees(camera, row.source)));
    if (GetScrollPos(dialog, row.degrees) != degrees) SetDlgItemInt(dialog, row.degrees, degrees);
}

void ShowVolts(HWND dialog, const SimCamera& camera)
{
    if (FocusedDlgItem(dialog) == kBenchInputVolts) return;
    const std::string text = Format("%.3f", SimInputVolts(camera));
    if (GetDlgItemText(dialog, kBenchInputVolts) != text) SetDlgItemText(dialog, kBenchInputVolts, text);
}

void ShowSources(HWND dialog, const SimCamera& camera)
{
    const SimSource inFront = SimSourceInFront(camera);
    for (const BenchSource& row : kSources) {
        if (row.source == inFront) CheckDlgButton(dialog, row.button, true);
        ShowDegrees(dialog, camera, row);
    }
    ShowVolts(dialog, camera);
}

// There must be something to put in front of the camera before it can be chosen.
void ShowRecording(HWND dialog, const SimCamera& camera)
{
    const std::string& name = SimRawName(camera);
    EnableDlgItem(dialog, kBenchRaw, !name.empty());
    SetDlgItemText(dialog, kBenchFile, name.empty() ? kNothingLoaded : name);
}

void ShowRates(HWND dialog, const SimCamera& camera)
{
    const double periodUs = SimFramePeriodUs(camera);
    const bool runs = periodUs > 0;
    SetDlgItemText(dialog, kBenchRate, runs ? Format("%.2f Hz", kUsPerSecond / periodUs) : kNothing);
    SetDlgItemText(dialog, kBenchIntegration, runs ? Format("%.3f ms", SimIntegrationUs(camera) / kUsPerMs) : kNothing);
    SetDlgItemText(dialog, kBenchClocks, runs ? "on" : "off");
}

void ShowLines(HWND dialog)
{
    const SimLines lines = ReadSimLines();
    const auto periodMs = static_cast<int>(lines.triggerPeriodUs / kUsPerWholeMs);
    if (FocusedDlgItem(dialog) != kBenchTriggerPeriod && GetScrollPos(dialog, kBenchTriggerPeriod) != periodMs) {
        SetDlgItemInt(dialog, kBenchTriggerPeriod, periodMs);
    }
    SetDlgItemText(dialog, kBenchTriggersTaken,
                   Format("%lld, input %s", static_cast<long long>(lines.triggers), lines.triggerOn ? "on" : "off"));
    SetDlgItemText(
        dialog, kBenchSync,
        Format("%s; pulses: %lld", lines.syncLevel != 0 ? "high" : "low", static_cast<long long>(lines.syncPulses)));
}

void ShowCamera(HWND dialog)
{
    const std::shared_ptr<SimCamera> camera = CurrentSimCamera();
    EnableControls(dialog, camera != nullptr);
    showing = true;
    ShowLines(dialog);
    if (camera) {
        ShowRecording(dialog, *camera);
        ShowSources(dialog, *camera);
        ShowRates(dialog, *camera);
    } else {
        for (const int id : {kBenchRate, kBenchIntegration, kBenchClocks}) SetDlgItemText(dialog, id, kNothing);
    }
    showing = false;
}

// --- What the operator does -----------------------------------------------------------------------------------------

// Null too while the window shows what the camera has: its edits are not the operator's then.
std::shared_ptr<SimCamera> CameraToWork()
{
    return showing ? nullptr : CurrentSimCamera();
}

void TellLoadFailed(const std::string& reason)
{
    MessageBox(hDlgBench, "Unable to load the recorded frames\n" + reason, kMessageCaption);
}

void LoadRecording(HWND dialog)
{
    const std::shared_ptr<SimCamera> camera = CameraToWork();
    if (!camera) return;
    FileDialogRequest request;
    request.owner = dialog;
    request.mode = FileDialogMode::kOpen;
    request.title = "Load recorded frames";
    request.filters = {{"Raw frames (*.raw)", "*.raw"}, {"All Files (*.*)", "*.*"}};
    request.directory = DefaultDir;
    const FileDialogResult chosen = RunFileDialog(request);
    if (chosen.paths.empty() || !hDlgBench) return;

    const std::string error = LoadSimRawFrames(*camera, chosen.paths.front(), GetScrollPos(dialog, kBenchColumns),
                                               GetScrollPos(dialog, kBenchRows));
    if (!error.empty()) {
        TellLoadFailed(error);
        return;
    }
    PutSimSource(*camera, SimSource::kRaw);
    ShowCamera(dialog);
}

// The row that a control belongs to.
const BenchSource& RowOf(int BenchSource::*control, int id)
{
    return *std::ranges::find(kSources, id, control);
}

void PickSource(HWND /*dialog*/, int id)
{
    if (const std::shared_ptr<SimCamera> camera = CameraToWork()) {
        PutSimSource(*camera, RowOf(&BenchSource::button, id).source);
    }
}

// Half-typed numbers that aren't a source's temperature leave it as it was.
void TakeDegrees(HWND dialog, int id)
{
    if (const std::shared_ptr<SimCamera> camera = CameraToWork()) {
        SetSimSourceDegrees(*camera, RowOf(&BenchSource::degrees, id).source, GetScrollPos(dialog, id));
    }
}

void TakeVolts(HWND dialog)
{
    const std::shared_ptr<SimCamera> camera = CameraToWork();
    const std::optional<float> volts = ScanFloat(GetDlgItemText(dialog, kBenchInputVolts));
    if (camera && volts) SetSimInputVolts(*camera, static_cast<double>(*volts));
}

void PulseTriggerInput(HWND dialog)
{
    if (!CameraToWork()) return;
    PulseSimTrigger();
    ShowCamera(dialog);
}

void TakeTriggerPeriod(HWND dialog)
{
    if (CameraToWork()) SetSimTriggerPeriod(GetScrollPos(dialog, kBenchTriggerPeriod) * kUsPerWholeMs);
}

void Open(HWND dialog)
{
    hDlgBench = dialog;
    ShowCamera(dialog);
    DockInCorner(dialog, LowerCorner::kRight);
    SetTimer(dialog, kRefreshTimer, kRefreshMs);
}

void Forget(HWND /*dialog*/)
{
    hDlgBench = nullptr;
}

constexpr DialogEntry kEntries[] = {
    OnTimer(kRefreshTimer, ShowCamera),
    {kBenchLow, PickSource},
    {kBenchHigh, PickSource},
    {kBenchScene, PickSource},
    {kBenchRaw, PickSource},
    {kBenchVolts, PickSource},
    {kBenchLowDegrees, TakeDegrees, kEditChanged},
    {kBenchHighDegrees, TakeDegrees, kEditChanged},
    {kBenchInputVolts, TakeVolts, kEditChanged},
    {kBenchLoad, LoadRecording},
    {kBenchTrigger, PulseTriggerInput},
    {kBenchTriggerPeriod, TakeTriggerPeriod, kEditChanged},
};
constexpr DialogFrame kFrame{.name = "BENCH",
                             .procedure = fnBENCHDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpBench,
                             .destroyed = Forget};

}  // namespace

HWND BenchWindow()
{
    return hDlgBench;
}

bool SimBenchIsThere()
{
    return CurrentSimCamera() != nullptr;
}

void OpenBenchWindow(HWND owner)
{
    if (!SimBenchIsThere()) {
        MessageBox(owner, "No simulated camera is connected.\nThe ports in platform.ini tell what is.", kMessageCaption,
                   BoxIcon::kInformation);
        return;
    }
    if (hDlgBench) {
        BringToFront(hDlgBench, {});
    } else {
        OpenModelessDialog(kFrame, owner);
    }
}

void CloseBenchWindow()
{
    if (hDlgBench) EndDialog(hDlgBench, 0);
}

LRESULT fnBENCHDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

namespace {

// The value of a source, where one is given; empty, or why it can't be.
std::string SetSourceValue(SimCamera& camera, SimSource source, std::optional<double> value)
{
    if (!value) return {};
    if (source == SimSource::kVolts) {
        return SetSimInputVolts(camera, *value) ? std::string() : Format("%g volts are outside -5 to 5", *value);
    }
    return SetSimSourceDegrees(camera, source, *value) ? std::string()
                                                       : Format("%g degrees Celsius is outside -40 to 150", *value);
}

}  // namespace

std::string PutBenchSource(std::string_view source, std::optional<double> value)
{
    const std::shared_ptr<SimCamera> camera = CurrentSimCamera();
    if (!camera) return kNoCamera;
    const auto* const row = std::ranges::find(kSources, source, &BenchSource::name);
    if (row == std::end(kSources)) return "no source \"" + std::string(source) + "\": low, high, scene, raw or volts";
    if (row->source == SimSource::kRaw && SimRawName(*camera).empty()) return "no recorded frames are loaded";
    std::string failure = SetSourceValue(*camera, row->source, value);
    if (!failure.empty()) return failure;
    PutSimSource(*camera, row->source);
    if (hDlgBench) ShowCamera(hDlgBench);
    return {};
}

std::vector<std::pair<std::string, double>> BenchTruth(int x, int y)
{
    const std::shared_ptr<SimCamera> camera = CurrentSimCamera();
    if (!camera) return {};
    return SimTruth(*camera, x, y);
}

std::vector<std::pair<std::string, double>> BenchHeadRegisters()
{
    const std::shared_ptr<SimCamera> camera = CurrentSimCamera();
    if (!camera) return {};
    return SimHeadRegisters(*camera);
}

std::string PulseBenchTrigger(std::optional<double> periodMs)
{
    constexpr double kLongestMs = 60'000;
    if (!CurrentSimCamera()) return kNoCamera;
    if (periodMs && !(*periodMs >= 0 && *periodMs <= kLongestMs)) {
        return Format("a period of %g ms is outside 0 to 60000", *periodMs);
    }
    if (periodMs) {
        SetSimTriggerPeriod(std::llround(*periodMs * kUsPerMs));
    } else {
        PulseSimTrigger();
    }
    if (hDlgBench) ShowCamera(hDlgBench);
    return {};
}

std::vector<std::pair<std::string, double>> BenchLines()
{
    if (!CurrentSimCamera()) return {};
    const SimLines lines = ReadSimLines();
    return {{"trigger_on", lines.triggerOn ? 1 : 0},
            {"triggers", static_cast<double>(lines.triggers)},
            {"trigger_period", static_cast<double>(lines.triggerPeriodUs) / kUsPerMs},
            {"sync_source", lines.syncSource},
            {"sync", lines.syncLevel},
            {"sync_pulses", static_cast<double>(lines.syncPulses)}};
}

void ResetBenchWindow()
{
    hDlgBench = nullptr;
    showing = false;
}

}  // namespace kelvo
