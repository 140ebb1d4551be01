#include "record/trigger_dialogs.h"

#include "acquire/averaging.h"
#include "display/display_pipeline.h"
#include "grabber/frame_size.h"
#include "pixel/region_statistics.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "record/triggered_save_write.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace kelvo {

namespace {

// ---- TRIGSOFT

constexpr int kEnterKeyBox = 100;

void OpenSoftware(HWND dialog)
{
    ReadTriggerKeys();
    CheckDlgButton(dialog, kEnterKeyBox, triggerSettings.SoftwareAll != 0);
    CentreDialog(dialog);
}

void AcceptSoftware(HWND dialog)
{
    write::triggered.triggerSettings.SoftwareAll = IsDlgButtonChecked(dialog, kEnterKeyBox) ? 1 : 0;
    WriteTriggerKey("SoftwareAll", triggerSettings.SoftwareAll);
    EndDialog(dialog, 1);
}

constexpr DialogEntry kSoftwareEntries[] = {{kIdOk, AcceptSoftware}};
LRESULT fnTRIGSOFTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
constexpr DialogFrame kSoftwareFrame{
    .name = "TRIGSOFT", .procedure = fnTRIGSOFTDlgProc, .open = OpenSoftware, .entries = kSoftwareEntries};
LRESULT fnTRIGSOFTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kSoftwareFrame, dialog, message, wParam, lParam);
}

// ---- TRIGVALU

constexpr int kMean = 20826;
constexpr int kRange = 20827;
constexpr std::uint32_t kPresentTimer = 1;
constexpr std::int64_t kPresentMs = 200;
constexpr std::uint32_t kMarkColor = 0x00FFFF00;

struct Values {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;
    std::int32_t low = 0;
    std::int32_t high = 0;
};

// The fields in the order in which they are read; each says what it is in its refusals.
struct Field {
    int id;
    const char* what;
    const char* key;
    std::int32_t Values::*value;
    std::int32_t TriggerSettings::*setting;
};
constexpr std::array kFields{
    Field{20820, "left side of rectangle", "Left", &Values::left, &TriggerSettings::Left},
    Field{20821, "top side of rectangle", "Top", &Values::top, &TriggerSettings::Top},
    Field{20822, "right side of rectangle", "Right", &Values::right, &TriggerSettings::Right},
    Field{20823, "bottom side of rectangle", "Bottom", &Values::bottom, &TriggerSettings::Bottom},
    Field{20824, "lower trigger intensity value", "IntensityLo1", &Values::low, &TriggerSettings::IntensityLo1},
    Field{20825, "upper trigger intensity value", "IntensityHi1", &Values::high, &TriggerSettings::IntensityHi1},
};

std::optional<Values> shown;  // the rectangle that stands in the picture

// What a field may hold, beside those before it.
struct Limits {
    std::int32_t least = 0;
    std::int32_t most = 0;
};
Limits LimitsOf(const Field& field, const Values& values)
{
    const std::int32_t lastColumn = ActiveConfig.Hactive - 1;
    const std::int32_t lastRow = ActiveConfig.Vactive - 1;
    if (field.value == &Values::left) return {0, lastColumn};
    if (field.value == &Values::top) return {0, lastRow};
    if (field.value == &Values::right) return {values.left, lastColumn};
    if (field.value == &Values::bottom) return {values.top, lastRow};
    if (field.value == &Values::low) return {DisplayLow, DisplayHigh};
    return {values.low, DisplayHigh};
}

std::optional<std::int32_t> NumberIn(HWND dialog, int id)
{
    const std::string field = GetDlgItemText(dialog, id);
    const std::string_view text = Trimmed(field);
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

// What is wrong with the fields, with the first of them that is.
struct Refusal {
    int id = 0;
    std::string text;
};
std::optional<Refusal> ReadFields(HWND dialog, Values& values)
{
    for (const Field& field : kFields) {
        const auto number = NumberIn(dialog, field.id);
        if (!number) return Refusal{field.id, Format("Unable to convert number for %s.", field.what)};
        const Limits limits = LimitsOf(field, values);
        if (*number < limits.least || *number > limits.most) {
            return Refusal{field.id, Format("Invalid number for %s.", field.what)};
        }
        values.*field.value = *number;
    }
    return std::nullopt;
}

// Stands one pixel outside the rectangle, as a mark in the frame would.
void PaintRectangle(bool /*newFrame*/)
{
    if (!shown) return;
    const Rect inside{shown->left, shown->top, shown->right + 1, shown->bottom + 1};
    const Rect sides[] = {{inside.left - 1, inside.top - 1, inside.right + 1, inside.top},
                          {inside.left - 1, inside.bottom, inside.right + 1, inside.bottom + 1},
                          {inside.left - 1, inside.top, inside.left, inside.bottom},
                          {inside.right, inside.top, inside.right + 1, inside.bottom}};
    for (const Rect& side : sides) FillPicturePixels(side, {}, kMarkColor);
}

void ShowRectangle(HWND dialog)
{
    Values values;
    if (ReadFields(dialog, values)) return;
    shown = values;
    if (!LiveVideo) RepaintPicture();
}

void ShowNothing(HWND dialog)
{
    SetDlgItemText(dialog, kMean, "-");
    SetDlgItemText(dialog, kRange, "-");
}

// Live counts of the rectangle, in image order.
std::optional<std::vector<std::int32_t>> PresentFrame()
{
    const std::size_t values = CameraFrameValues();
    std::vector<std::int32_t> gathered;
    std::vector<std::int32_t> frame;
    const bool live = LiveVideo && !ViewingFile && values > 0;
    if (!live || !AllocateBlock(gathered, values) || !AllocateBlock(frame, values)) return std::nullopt;
    if (!AverageFrames(std::span(gathered), {}, 1, 0, 0, ActiveConfig.Hroi - 1, ActiveConfig.Vroi - 1,
                       kSum32 | kTakeNewFrames | kNewFramesOnly)) {
        return std::nullopt;
    }
    if (CalType != 0 || DecomList.size() < values) return gathered;
    for (std::size_t i = 0; i < values; ++i) {
        if (DecomList[i] < values) frame[i] = gathered[DecomList[i]];
    }
    return frame;
}

// nullopt: there is none, or the rectangle lies beyond it.
struct Present {
    double mean = 0;
    std::int32_t minimum = std::numeric_limits<std::int32_t>::max();
    std::int32_t maximum = std::numeric_limits<std::int32_t>::min();
    bool isOnePixel = false;
};
std::optional<Present> MeasurePresent(const Values& rectangle)
{
    const auto frame = PresentFrame();
    if (!frame) return std::nullopt;
    constexpr std::int32_t kIntegers = 4;
    const std::int32_t right = std::min(rectangle.right, ActiveConfig.Hroi - 1);
    const std::int32_t bottom = std::min(rectangle.bottom, ActiveConfig.Vroi - 1);
    Present present;
    present.mean = RegionStatistics(std::as_bytes(std::span(*frame)), rectangle.left, rectangle.top, right, bottom,
                                    ActiveConfig.Hroi, kIntegers, nullptr, present.minimum, present.maximum);
    present.isOnePixel = rectangle.left == right && rectangle.top == bottom;
    return present.minimum <= present.maximum ? std::optional(present) : std::nullopt;
}

void ShowPresent(HWND dialog)
{
    ShowRectangle(dialog);
    const auto present = shown ? MeasurePresent(*shown) : std::nullopt;
    if (!present) {
        ShowNothing(dialog);
        return;
    }
    // The mean of one pixel is a count.
    SetDlgItemText(
        dialog, kMean,
        present->isOnePixel ? Format("Average= %d", present->minimum) : Format("Average= %.1f", present->mean));
    SetDlgItemText(dialog, kRange, Format("Min= %d   Max= %d", present->minimum, present->maximum));
}

void OpenValues(HWND dialog)
{
    ReadTriggerKeys();
    Values values;
    for (const Field& field : kFields) {
        const Limits limits = LimitsOf(field, values);
        values.*field.value =
            std::clamp(triggerSettings.*field.setting, limits.least, std::max(limits.least, limits.most));
        SetDlgItemInt(dialog, field.id, values.*field.value);
    }
    AddPictureLayer(PaintRectangle);
    ShowPresent(dialog);
    SetTimer(dialog, kPresentTimer, kPresentMs);
    CentreDialog(dialog);
    FocusDlgItem(dialog, kFields.front().id);
}

void AcceptValues(HWND dialog)
{
    Values values;
    if (const auto refusal = ReadFields(dialog, values)) {
        MessageBeep(Sound::kDefault);
        RefuseField(dialog, refusal->id, refusal->text);
        return;
    }
    for (const Field& field : kFields) {
        write::triggered.triggerSettings.*field.setting = values.*field.value;
        WriteTriggerKey(field.key, values.*field.value);
    }
    EndDialog(dialog, 1);
}

void CloseValues(HWND /*dialog*/)
{
    RemovePictureLayer(PaintRectangle);
    shown.reset();
    RepaintPicture();
}

constexpr DialogEntry kValueEntries[] = {{kIdOk, AcceptValues}, OnTimer(kPresentTimer, ShowPresent)};
LRESULT fnTrigValuDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
constexpr DialogFrame kValueFrame{.name = "TRIGVALU",
                                  .procedure = fnTrigValuDlgProc,
                                  .open = OpenValues,
                                  .entries = kValueEntries,
                                  .destroyed = CloseValues};
LRESULT fnTrigValuDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kValueFrame, dialog, message, wParam, lParam);
}

}  // namespace

int TriggerSoftwareDialog(HWND parent)
{
    return RunDialog(kSoftwareFrame, parent);
}

int TriggerValueDialog(HWND parent)
{
    return RunDialog(kValueFrame, parent);
}

void ResetTriggerDialogs()
{
    RemovePictureLayer(PaintRectangle);
    shown.reset();
}

}  // namespace kelvo
