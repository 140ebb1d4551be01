#include "head/advanced_dialog.h"

#include "grabber/board.h"
#include "head/advanced_dialog_write.h"
#include "head/camera_head_write.h"
#include "head/head_settings.h"
#include "head/head_transaction.h"
#include "head/scope_frame.h"
#include "head/video_settings.h"
#include "pixel/coefficient_lists.h"
#include "pixel/decommutation.h"
#include "pixel/unity_coefficients.h"
#include "platform/dialog.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "resources/help_contexts.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state.h"
#include "state/head_state.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

namespace write {
PixelOrderVariables pixelOrder;
}

constinit const std::int32_t& AdPixelOrder = write::pixelOrder.AdPixelOrder;

namespace {

constexpr int kColStart = 1375;
constexpr int kRowStart = 1374;
constexpr int kHorizontal = 314;
constexpr int kVertical = 316;
constexpr int kDelay = 9101;
constexpr int kAdDelay = 9102;
constexpr int kFpaTestMode = 9104;
constexpr int kTimingTestMode = 9105;
constexpr int kPixelOrder = 9106;
constexpr int kFastFrame = 9107;
constexpr int kPedBias = 9108;
constexpr int kColGain = 9109;
constexpr int kDetBias = 9110;
constexpr int kFlipCols = 9111;
constexpr int kFlipRows = 9112;
constexpr int kEditDialog = 9113;
constexpr int kSuperframe = 9114;

constexpr std::uint32_t kApplyTimer = 42;
constexpr std::int64_t kGeometryMs = 1000;  // a size is typed digit by digit
constexpr std::int64_t kLevelMs = 500;
constexpr std::size_t kFieldCharacters = 4;

// What the pixel order box means.
constexpr std::int32_t kOrderFixed = 1;
constexpr std::int32_t kOrder12 = 12;
constexpr std::int32_t kOrder21 = 21;

constexpr std::int32_t kWindowStep = 8;
constexpr std::int32_t kNarrowestWindow = 128;

// The number fields, in the order in which they are read. A field that isn't taken over is only shown.
enum Field {
    kFieldLeft,
    kFieldTop,
    kFieldColumns,
    kFieldRows,
    kFieldDelay,
    kFieldColGain,
    kFieldDetBias,
    kFieldPedBias
};
constexpr std::size_t kFieldCount = 8;

struct NumberField {
    int id;
    std::int32_t minimum;
    std::int32_t maximum;
    std::int64_t waitMs;  // from the last change to the taking over
};
constexpr std::array<NumberField, kFieldCount> kNumberFields = {{{kColStart, 0, 511, kGeometryMs},
                                                                 {kRowStart, 0, 511, kGeometryMs},
                                                                 {kHorizontal, 8, 640, kGeometryMs},
                                                                 {kVertical, 8, 512, kGeometryMs},
                                                                 {kDelay, 0, 15, kGeometryMs},
                                                                 {kColGain, 0, 7, kLevelMs},
                                                                 {kDetBias, 0, 15, kLevelMs},
                                                                 {kPedBias, 0, 3, kLevelMs}}};
using FieldValues = std::array<std::int32_t, kFieldCount>;

// A check box stands for one byte of a record.
struct SerialBox {
    int id;
    std::uint8_t FpaSerialWordRecord::*field;
};
constexpr SerialBox kSerialBoxes[] = {{kFpaTestMode, &FpaSerialWordRecord::SerialBitsB},
                                      {kFlipCols, &FpaSerialWordRecord::FlipCols},
                                      {kFlipRows, &FpaSerialWordRecord::FlipRows}};
struct TimingBox {
    int id;
    std::uint8_t HeadTimingRecord::*field;
};
constexpr TimingBox kTimingBoxes[] = {{kTimingTestMode, &HeadTimingRecord::TimingTestMode},
                                      {kSuperframe, &HeadTimingRecord::SuperframeMode}};

// For Cancel.
struct Snapshot {
    HeadTimingRecord timing;
    FpaSerialWordRecord serialWord;
    std::int32_t hroi = 0;
    std::int32_t vroi = 0;
    std::int32_t hactive = 0;
    std::int32_t vactive = 0;
};
Snapshot atOpening;

// The calibration of the frame size at opening, kept aside while another size has none.
struct KeptCalibration {
    std::int32_t type = 0;
    std::vector<std::uint32_t> decom;
    std::vector<std::int16_t> offsets;
    std::vector<float> gains;
};
std::optional<KeptCalibration> keptCalibration;
HWND setUpDialog = nullptr;  // the oscilloscope, beside which the dialog stands

// --- The head ------------------------------------------------------------------------------------------------------

void SendBoth()
{
    LoadHeadTiming(write::registers.HeadTiming);
    LoadFpaSerialWord(FpaSerialWord);
}

template <typename Number>
bool Take(Number& target, std::int32_t value)
{
    if (target == static_cast<Number>(value)) return false;
    target = static_cast<Number>(value);
    return true;
}

// --- The fields ----------------------------------------------------------------------------------------------------

FieldValues ValuesInForce()
{
    return {FpaSerialWord.ColStart,     FpaSerialWord.RowStart, ActiveConfig.Hroi,     ActiveConfig.Vroi,
            HeadTiming.FrameStartDelay, FpaSerialWord.ColGain,  FpaSerialWord.DetBias, FpaSerialWord.PedBias};
}

// A whole number of at most four characters, blanks around it aside.
std::optional<std::int32_t> NumberOf(std::string_view text)
{
    const std::string_view digits = Trimmed(text.substr(0, kFieldCharacters));
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string_view::npos) return std::nullopt;
    return ScanDecimal(digits);
}

std::optional<FieldValues> ReadFields(HWND dialog)
{
    const FieldValues inForce = ValuesInForce();
    FieldValues values{};
    for (std::size_t i = 0; i < kFieldCount; ++i) {
        const NumberField& field = kNumberFields.at(i);
        const std::optional<std::int32_t> number = NumberOf(GetDlgItemText(dialog, field.id));
        if (!number || *number < field.minimum || *number > field.maximum) {
            SetDlgItemInt(dialog, field.id, inForce.at(i));
            FocusDlgItem(dialog, field.id);
            return std::nullopt;
        }
        values.at(i) = *number;
    }
    return values;
}

std::int32_t RoundedUp(std::int32_t size, std::int32_t least)
{
    return std::max((size + kWindowStep - 1) / kWindowStep * kWindowStep, least);
}

void SetWindow(const HeadWindow& window)
{
    write::registers.FpaSerialWord.ColStart = window.colStart;
    write::registers.FpaSerialWord.ColEnd = window.colEnd;
    write::registers.FpaSerialWord.RowStart = window.rowStart;
    write::registers.FpaSerialWord.RowEnd = window.rowEnd;
    write::camera.ActiveConfig.Hactive = window.colEnd + 1 - window.colStart;
    write::camera.ActiveConfig.Vactive = window.rowEnd + 1 - window.rowStart;
    write::registers.HeadTiming.TimingCols =
        static_cast<std::int16_t>(ActiveConfig.Hactive + HeadTiming.ExtraTimingCols);
    write::registers.HeadTiming.TimingRows =
        static_cast<std::int16_t>(ActiveConfig.Vactive + HeadTiming.ExtraTimingRows);
    SetFrameRate(FrameRateAtClock(HeadTiming.MasterClockIndex));
}

void KeepCalibration()
{
    if (keptCalibration) return;
    keptCalibration = {.type = CalType,
                       .decom = std::move(write::cal.DecomList),
                       .offsets = std::move(write::cal.OffsetList),
                       .gains = std::move(write::cal.GainList)};
}

// Once the frame size is again the one that it belongs to.
void PutCalibrationBack()
{
    if (!keptCalibration || keptCalibration->decom.empty()) return;
    write::cal.DecomList = std::move(keptCalibration->decom);
    write::cal.OffsetList = std::move(keptCalibration->offsets);
    write::cal.GainList = std::move(keptCalibration->gains);
    write::cal.CalType = keptCalibration->type;
    keptCalibration.reset();
    CalibrationListsChanged();
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(DecomList.data());
    SaveList(DecomTempPath(), {bytes, DecomList.size() * sizeof(std::uint32_t)}, DecomList.size());
}

void SetFrameSize(std::int32_t columns, std::int32_t rows)
{
    const bool columnsChanged = Take(write::camera.ActiveConfig.Hroi, columns);
    if (!Take(write::camera.ActiveConfig.Vroi, rows) && !columnsChanged) return;
    KeepCalibration();
    FrameSizeChanged();
    InstallDecommutation(ActiveConfig, MirrorHoriz, MirrorVert, RotateCCW, false);
    FitOscFrame();
}

bool TakeWindow(const FieldValues& values)
{
    const FieldValues inForce = ValuesInForce();
    if (std::equal(values.begin(), values.begin() + kFieldDelay, inForce.begin())) return false;
    SetWindow(WindowFromRectangle(values[kFieldLeft], values[kFieldTop], values[kFieldColumns], values[kFieldRows]));
    SetFrameSize(values[kFieldColumns], values[kFieldRows]);
    return true;
}

// The field shows the frame's delay and holds for the line too, also where the line's alone was another.
bool TakeDelay(std::int32_t delay)
{
    const bool frameChanged = Take(write::registers.HeadTiming.FrameStartDelay, delay);
    return Take(write::registers.HeadTiming.LineStartDelay, delay) || frameChanged;
}

bool TakeLevels(const FieldValues& values)
{
    bool changed = TakeDelay(values[kFieldDelay]);
    changed |= Take(write::registers.FpaSerialWord.ColGain, values[kFieldColGain]);
    changed |= Take(write::registers.FpaSerialWord.DetBias, values[kFieldDetBias]);
    changed |= Take(write::registers.FpaSerialWord.PedBias, values[kFieldPedBias]);
    return changed;
}

void ApplyAndSend(HWND dialog)
{
    if (ApplyAdvancedFields(dialog)) SendBoth();
}

// --- The dialog ----------------------------------------------------------------------------------------------------

// The box's state as it is stored; an order that it can't show becomes 1, 2.
void ShowPixelOrder(HWND dialog)
{
    if (AdPixelOrder != kOrderFixed && AdPixelOrder != kOrder21) write::pixelOrder.AdPixelOrder = kOrder12;
    CheckDlgButton(dialog, kPixelOrder, AdPixelOrder == kOrder12);
}

void EnableFields(HWND dialog, bool enabled)
{
    for (const NumberField& field : kNumberFields) EnableDlgItem(dialog, field.id, enabled);
    for (const int id : {kAdDelay, kFpaTestMode, kTimingTestMode, kFastFrame, kFlipCols, kFlipRows, kSuperframe}) {
        EnableDlgItem(dialog, id, enabled);
    }
    EnableDlgItem(dialog, kPixelOrder, enabled && AdPixelOrder != kOrderFixed);
}

void ShowFields(HWND dialog)
{
    const FieldValues values = ValuesInForce();
    for (std::size_t i = 0; i < kFieldCount; ++i) SetDlgItemInt(dialog, kNumberFields.at(i).id, values.at(i));
    SetDlgItemInt(dialog, kAdDelay, HeadTiming.AdDelay);
    for (const SerialBox& box : kSerialBoxes) CheckDlgButton(dialog, box.id, FpaSerialWord.*box.field != 0);
    for (const TimingBox& box : kTimingBoxes) CheckDlgButton(dialog, box.id, HeadTiming.*box.field != 0);
    CheckDlgButton(dialog, kFastFrame, true);
    ShowPixelOrder(dialog);
}

// Left of the set-up dialog, so that its plot stays in sight; on the screen all the same.
void MoveBesideSetUp(HWND dialog)
{
    const Rect window = GetWindowRect(dialog);
    const Rect setUp = GetWindowRect(setUpDialog);
    const int left = std::max(setUp.left - window.Width(), 0);
    MoveWindow(dialog, {left, setUp.top, left + window.Width(), setUp.top + window.Height()});
}

void Open(HWND dialog)
{
    atOpening = {HeadTiming,        FpaSerialWord,        ActiveConfig.Hroi,
                 ActiveConfig.Vroi, ActiveConfig.Hactive, ActiveConfig.Vactive};
    keptCalibration.reset();
    ShowFields(dialog);
    KillTimer(dialog, kApplyTimer);  // what was filled in isn't the operator's change
    const bool editing = GetPrivateProfileInt("Setup", "AdvancedDiagnostics", 0, IniFilePath) != 0;
    CheckDlgButton(dialog, kEditDialog, editing);
    EnableFields(dialog, editing);
    MoveBesideSetUp(dialog);
}

void ClickSerialBox(HWND dialog, int id)
{
    for (const SerialBox& box : kSerialBoxes) {
        if (box.id == id) write::registers.FpaSerialWord.*box.field = IsDlgButtonChecked(dialog, id) ? 1 : 0;
    }
    UpdateIntegrationInForce();
    LoadFpaSerialWord(FpaSerialWord);
}

void ClickTimingBox(HWND dialog, int id)
{
    for (const TimingBox& box : kTimingBoxes) {
        if (box.id == id) write::registers.HeadTiming.*box.field = IsDlgButtonChecked(dialog, id) ? 1 : 0;
    }
    UpdateIntegrationInForce();
    LoadHeadTiming(write::registers.HeadTiming);
}

void ClickPixelOrder(HWND dialog)
{
    write::pixelOrder.AdPixelOrder = IsDlgButtonChecked(dialog, kPixelOrder) ? kOrder12 : kOrder21;
    SetVideoGain(AdPixelOrder);
}

void ClickEdit(HWND dialog)
{
    EnableFields(dialog, IsDlgButtonChecked(dialog, kEditDialog));
}

// Taken over once the typing has come to rest.
void ArmApply(HWND dialog, int id)
{
    const auto* field = std::ranges::find(kNumberFields, id, &NumberField::id);
    SetTimer(dialog, kApplyTimer, field != kNumberFields.end() ? field->waitMs : kLevelMs);
}

void ApplyNow(HWND dialog)
{
    KillTimer(dialog, kApplyTimer);
    ApplyAndSend(dialog);
}

void Accept(HWND dialog)
{
    ApplyNow(dialog);
    SetIntegration(IndexIntegrationTime.at(SlotInUse()));  // means other counters in another window
    SaveVideoSettings(IniFilePath);
    WriteHeadKey("Hroi", ActiveConfig.Hroi);  // so that the window stands at the next start as well
    WriteHeadKey("Vroi", ActiveConfig.Vroi);
    keptCalibration.reset();  // of a size that is gone
    EndDialog(dialog, 1);
}

void Cancel(HWND dialog)
{
    KillTimer(dialog, kApplyTimer);
    write::registers.HeadTiming = atOpening.timing;
    write::registers.FpaSerialWord = atOpening.serialWord;
    write::camera.ActiveConfig.Hactive = atOpening.hactive;
    write::camera.ActiveConfig.Vactive = atOpening.vactive;
    SetFrameRate(FrameRateAtClock(HeadTiming.MasterClockIndex));
    SetFrameSize(atOpening.hroi, atOpening.vroi);
    PutCalibrationBack();
    SendBoth();
    EndDialog(dialog, 0);
}

constexpr DialogEntry kEntries[] = {
    {kColStart, ArmApply, kEditChanged},
    {kRowStart, ArmApply, kEditChanged},
    {kHorizontal, ArmApply, kEditChanged},
    {kVertical, ArmApply, kEditChanged},
    {kDelay, ArmApply, kEditChanged},
    {kAdDelay, ArmApply, kEditChanged},
    {kColGain, ArmApply, kEditChanged},
    {kDetBias, ArmApply, kEditChanged},
    {kPedBias, ArmApply, kEditChanged},
    OnTimer(kApplyTimer, ApplyNow),
    {kFpaTestMode, ClickSerialBox},
    {kFlipCols, ClickSerialBox},
    {kFlipRows, ClickSerialBox},
    {kTimingTestMode, ClickTimingBox},
    {kSuperframe, ClickTimingBox},
    {kPixelOrder, ClickPixelOrder},
    {kEditDialog, ClickEdit},
    {kIdOk, Accept},
    {kIdCancel, Cancel},
};
constexpr DialogFrame kFrame{.name = "ADVANCED",
                             .procedure = fnADVANCEDDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpAdvancedVideo};

}  // namespace

HeadWindow WindowFromRectangle(std::int32_t left, std::int32_t top, std::int32_t columns, std::int32_t rows)
{
    return {.colStart = left,
            .rowStart = top,
            .colEnd = left + RoundedUp(columns, kNarrowestWindow) - 1,
            .rowEnd = top + RoundedUp(rows, kWindowStep) - 1};
}

int ApplyAdvancedFields(HWND dialog)
{
    const std::optional<FieldValues> values = ReadFields(dialog);
    if (!values) return 0;
    const bool windowChanged = TakeWindow(*values);
    return TakeLevels(*values) || windowChanged ? 1 : 0;
}

int AdvancedDialog(HWND parent)
{
    setUpDialog = parent;
    const HeadHearing hearing;
    const int result = RunDialog(kFrame, parent);
    hearing.TellIfUnheard(parent, "Its window, delays or biases may not be as they are set.");
    return result;
}

LRESULT fnADVANCEDDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

void ResetAdvancedDialog()
{
    write::pixelOrder.AdPixelOrder = 1;
    atOpening = {};
    keptCalibration.reset();
    setUpDialog = nullptr;
}

}  // namespace kelvo
