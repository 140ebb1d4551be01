#include "analysis/frame_graph_dialog.h"

#include "analysis/frame_graph.h"
#include "analysis/frame_graph_settings_write.h"
#include "analysis/frame_graph_window.h"
#include "analysis/frame_trace.h"
#include "display/display_pipeline.h"
#include "display/unit_list.h"
#include "display/units.h"
#include "grabber/host_frames.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/text.h"
#include "resources/help_contexts.h"
#include "resources/ids.h"
#include "state/buffer_state.h"
#include "state/display_state.h"
#include "ui/dialog_frame.h"
#include "ui/docking.h"
#include "ui/select_file.h"
#include "ui/status.h"
#include "video/cursor_cross.h"
#include "video/held_picture.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kelvo {

namespace {

constexpr int kRow = 1382;
constexpr int kColumn = 1383;
constexpr int kLow = 1384;
constexpr int kHigh = 1385;
constexpr int kFirst = 1386;
constexpr int kLast = 1387;
constexpr int kSquareRoot = 1388;
constexpr int kFollowData = 1389;
constexpr int kExit = 1620;
constexpr int kGraph = 1622;
constexpr int kHostFramesText = 21501;
constexpr int kFileText = 21502;
constexpr int kRangeText = 21503;

constexpr std::string_view kSystemCaption = "QVF Vantir";
constexpr std::int64_t kFewestFrames = 3;
constexpr std::int64_t kLeastRange = 3;

std::int32_t framesOfSource = 0;  // an empty store leaves them as they were
bool wasGraphed = false;
bool unitWasPicked = false;

// ---- Rows, columns and frames

using Variables = FrameGraphVariables;

std::int32_t LastRow()
{
    return std::max(GraphedSize().y, 1) - 1;
}

std::int32_t LastColumn()
{
    return std::max(GraphedSize().x, 1) - 1;
}

std::int32_t LastFrame()
{
    return std::max(framesOfSource - 1, 0);
}

struct NumberField {
    int id;
    std::int32_t Variables::*value;
    std::int32_t (*most)();    // 0 is the least
    std::string_view hint;     // on the status line while it has the focus, before the largest number
    std::string_view refused;  // likewise
};
constexpr NumberField kNumberFields[] = {
    {kRow, &Variables::PixelRow, LastRow, "Pixel Row range: 0 to ", "Pixel Row must be in range: 0 to "},
    {kColumn, &Variables::PixelCol, LastColumn, "Pixel Column range: 0 to ", "Pixel Column must be in range: 0 to "},
    {kFirst, &Variables::GraphFirstFrame, LastFrame, "Min Frame range: 0 to ", "Min Frame range: 0 to "},
    {kLast, &Variables::GraphLastFrame, LastFrame, "Max Frame range: 0 to ", "Max Frame must be in range: 0 to "},
};

const NumberField& NumberFieldOf(int id)
{
    return *std::ranges::find(kNumberFields, id, &NumberField::id);
}

std::string RefusalOf(const NumberField& field)
{
    return std::string(field.refused) + std::to_string(field.most());
}

void ShowNumber(HWND dialog, const NumberField& field)
{
    SetDlgItemInt(dialog, field.id, write::graph.*field.value);
}

void DrawPixelMark(bool /*newFrame*/)
{
    DrawCross({PixelCol, PixelRow});
}

void HintOnNumber(HWND /*dialog*/, int id)
{
    const NumberField& field = NumberFieldOf(id);
    StatusMessage(std::string(field.hint) + std::to_string(field.most()), kLeftAligned);
}

// What was typed; false after a box, and the number before stands again.
bool TakeNumber(HWND dialog, const NumberField& field)
{
    std::int32_t& value = write::graph.*field.value;
    const std::string typed = GetDlgItemText(dialog, field.id);
    if (typed == std::to_string(value)) return true;
    const std::optional<std::int32_t> number = ScanDecimal(typed);
    const bool fits = number && *number >= 0 && *number <= field.most();
    if (fits) value = *number;
    ShowNumber(dialog, field);
    if (!fits) {
        RefuseField(dialog, field.id, RefusalOf(field));
        return false;
    }
    if (field.id == kRow || field.id == kColumn) RepaintPicture();
    return true;
}

void OnNumberLeft(HWND dialog, int id)
{
    TakeNumber(dialog, NumberFieldOf(id));
}

// ---- The limits of the value axis

struct LimitField {
    int id;
    std::int32_t Variables::*value;
    std::string_view hint;
};
constexpr LimitField kLimitFields[] = {
    {kLow, &Variables::yClipMin, "Min intensity range: "},
    {kHigh, &Variables::yClipMax, "Max intensity range: "},
};

const LimitField& LimitFieldOf(int id)
{
    return id == kLow ? kLimitFields[0] : kLimitFields[1];
}

std::string TextInUnit(std::int32_t count)
{
    std::string text;
    CountsToUnit(count, DisplayUnit, &text);
    return text;
}

std::string RangeOfLimit(const LimitField& field)
{
    const CountRange range = GraphedRange();
    return std::string(field.hint) + Format("%d to %d", range.low, range.high);
}

void ShowLimits(HWND dialog)
{
    const UnitScope units = GraphedUnits();
    const CountRange range = GraphedRange();
    for (const LimitField& field : kLimitFields) {
        SetDlgItemText(dialog, field.id, TextInUnit(write::graph.*field.value));
        EnableDlgItem(dialog, field.id, !Autoscale);
    }
    SetDlgItemText(dialog, kRangeText, TextInUnit(range.low) + " to " + TextInUnit(range.high));
}

void HintOnLimit(HWND /*dialog*/, int id)
{
    StatusMessage(RangeOfLimit(LimitFieldOf(id)), kLeftAligned);
}

// Whether a value lies in the source's range, whose ends count as they are shown.
bool IsInRange(float value)
{
    constexpr float kHalfALastDigit = 0.0005F;
    const CountRange range = GraphedRange();
    const auto [low, high] =
        std::minmax({CountsToUnit(range.low, DisplayUnit, nullptr), CountsToUnit(range.high, DisplayUnit, nullptr)});
    return value >= low - kHalfALastDigit && value <= high + kHalfALastDigit;
}

bool TakeLimit(HWND dialog, const LimitField& field)
{
    if (Autoscale) return true;
    std::int32_t& limit = write::graph.*field.value;
    bool fits = false;
    {
        const UnitScope units = GraphedUnits();
        const std::string typed = GetDlgItemText(dialog, field.id);
        if (typed == TextInUnit(limit)) return true;
        const std::optional<float> value = ScanFloat(typed);
        fits = value && IsInRange(*value);
        if (fits) limit = UnitToCounts(*value, DisplayUnit);
    }
    ShowLimits(dialog);
    if (!fits) RefuseField(dialog, field.id, RangeOfLimit(field));
    return fits;
}

void OnLimitLeft(HWND dialog, int id)
{
    TakeLimit(dialog, LimitFieldOf(id));
}

// What was typed and not left yet, before a button or a list acts.
bool TakeTyped(HWND dialog)
{
    const auto number = [&](const NumberField& field) { return TakeNumber(dialog, field); };
    const auto limit = [&](const LimitField& field) { return TakeLimit(dialog, field); };
    return std::ranges::all_of(kNumberFields, number) && std::ranges::all_of(kLimitFields, limit);
}

void SwitchSquareRoot(HWND dialog)
{
    write::graph.SqrtTime = IsDlgButtonChecked(dialog, kSquareRoot) ? 1 : 0;
}

void SwitchAutoscale(HWND dialog)
{
    TakeTyped(dialog);
    write::graph.Autoscale = IsDlgButtonChecked(dialog, kFollowData) ? 1 : 0;
    ShowLimits(dialog);
}

void PickUnit(HWND dialog)
{
    TakeTyped(dialog);
    {
        const UnitScope units = GraphedUnits();
        TakeUnit(dialog);
    }
    unitWasPicked = true;
    ShowLimits(dialog);
}

// ---- The source

void ShowSource(HWND dialog)
{
    CheckDlgButton(dialog, kGraphHostFrames, GraphSource == kGraphHostFrames);
    CheckDlgButton(dialog, kGraphFile, GraphSource == kGraphFile);
    SetDlgItemText(dialog, kHostFramesText, Format("%d frames", FramesInBuffer));
    SetDlgItemText(dialog, kFileText, GraphedFile ? GraphedFile->path : std::string());
}

void ShowSettings(HWND dialog)
{
    ShowSource(dialog);
    for (const NumberField& field : kNumberFields) ShowNumber(dialog, field);
    CheckDlgButton(dialog, kSquareRoot, SqrtTime != 0);
    CheckDlgButton(dialog, kFollowData, Autoscale != 0);
    {
        const UnitScope units = GraphedUnits();
        ShowUnits(dialog);
    }
    ShowLimits(dialog);
}

// What lies outside the source that was chosen comes inside.
void FitToSource(HWND dialog)
{
    const Point size = GraphedSize();
    if (PixelRow >= size.y || PixelCol >= size.x) {
        write::graph.PixelRow = size.y / 2;
        write::graph.PixelCol = size.x / 2;
    }
    const CountRange limits = HeldInside({.low = yClipMin, .high = yClipMax}, GraphedRange());
    write::graph.yClipMin = limits.low;
    write::graph.yClipMax = limits.high;
    write::graph.GraphLastFrame = std::min(GraphLastFrame, LastFrame());
    ShowSettings(dialog);
    RepaintPicture();
}

void ChooseHostFrames(HWND dialog)
{
    TakeTyped(dialog);
    write::graph.GraphSource = kGraphHostFrames;
    if (FramesInBuffer > 0) framesOfSource = FramesInBuffer;
    FitToSource(dialog);
}

void ChooseFile(HWND dialog)
{
    TakeTyped(dialog);
    std::string path = "*.buf";
    std::optional<TraceFile> file;
    if (SelectFile(dialog, path, kSelectToOpen)) file = ReadTraceFile(path);
    if (!file) {
        ShowSource(dialog);
        return;
    }
    framesOfSource = static_cast<std::int32_t>(file->header.FrameCount);
    write::graph.GraphedFile = std::move(file);
    write::graph.GraphSource = kGraphFile;
    FitToSource(dialog);
}

// ---- The graph

struct Refusal {
    int field = 0;  // 0: the graph can be shown
    std::string text;
    std::string_view caption = kMessageCaption;
};

// Why what stands in the dialog can't be graphed: the first reason.
Refusal WhyNoGraph()
{
    if (GraphFirstFrame >= framesOfSource) return {kFirst, RefusalOf(NumberFieldOf(kFirst))};
    if (GraphLastFrame <= GraphFirstFrame || GraphLastFrame >= framesOfSource) {
        return {kLast, RefusalOf(NumberFieldOf(kLast))};
    }
    if (!Autoscale && std::int64_t{yClipMax} - yClipMin + 1 < kLeastRange) {
        return {kLow, "Max & min intensity must differ by at least 3.", kSystemCaption};
    }
    if (std::int64_t{GraphLastFrame} - GraphFirstFrame + 1 < kFewestFrames) {
        return {kLast, "There must be at least 3 frames to graph."};
    }
    if (GraphSource != kGraphHostFrames && GraphSource != kGraphFile) {
        return {kGraphHostFrames, "A Source for data must be chosen."};
    }
    if (GraphSource == kGraphHostFrames && (FramesInBuffer == 0 || !BufferBoardReady())) {
        return {kGraphHostFrames, "No BufferBoard data loaded."};
    }
    return {};
}

void Graph(HWND dialog)
{
    if (!TakeTyped(dialog)) return;
    SaveGraphSettings();
    wasGraphed = true;
    if (const Refusal refusal = WhyNoGraph(); refusal.field != 0) {
        MessageBox(dialog, refusal.text, refusal.caption);
        FocusDlgItem(dialog, refusal.field);
        return;
    }
    write::graph.GraphFrames = GraphLastFrame - GraphFirstFrame + 1;
    StatusMessage("Frame orTime Vs Intensity Graph", kLeftAligned);
    FrameGraphWindow(dialog);
}

// ---- Opening and the end

void Open(HWND dialog)
{
    ReadGraphSettings();
    if (GraphSource == kGraphFile) write::graph.GraphSource = 0;
    write::graph.GraphedFile.reset();
    framesOfSource = FramesInBuffer;
    ShowSettings(dialog);
    DockDialog(dialog);  // beside the picture that it marks
    StatusString(kGraphBufferHint, kLeftAligned);
    RepaintPicture();
}

void End(HWND dialog, int result)
{
    StatusString(kIdleHint, kLeftAligned);
    EndDialog(dialog, result);
}

void Exit(HWND dialog)
{
    End(dialog, 1);
}

void Cancel(HWND dialog)
{
    End(dialog, 0);
}

constexpr DialogEntry kEntries[] = {
    {kGraphHostFrames, ChooseHostFrames},
    {kGraphFile, ChooseFile},
    {kRow, HintOnNumber, kEditFocus},
    {kRow, OnNumberLeft, kEditFocusLost},
    {kColumn, HintOnNumber, kEditFocus},
    {kColumn, OnNumberLeft, kEditFocusLost},
    {kFirst, HintOnNumber, kEditFocus},
    {kFirst, OnNumberLeft, kEditFocusLost},
    {kLast, HintOnNumber, kEditFocus},
    {kLast, OnNumberLeft, kEditFocusLost},
    {kLow, HintOnLimit, kEditFocus},
    {kLow, OnLimitLeft, kEditFocusLost},
    {kHigh, HintOnLimit, kEditFocus},
    {kHigh, OnLimitLeft, kEditFocusLost},
    {kSquareRoot, SwitchSquareRoot},
    {kFollowData, SwitchAutoscale},
    {kUnitList, PickUnit, kSelectionChanged},
    {kGraph, Graph},
    {kExit, Exit},
    {kIdOk, Exit},
    {kIdCancel, Cancel},
};

LRESULT fnBUF_GRAFDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
constexpr DialogFrame kFrame{.name = "BUF_GRAF",
                             .procedure = fnBUF_GRAFDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpFrameGraph};
LRESULT fnBUF_GRAFDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

// The cross on the pixel, for as long as it lives.
class PixelMark {
  public:
    PixelMark() { AddPictureLayer(DrawPixelMark); }
    ~PixelMark()
    {
        RemovePictureLayer(DrawPixelMark);
        RepaintPicture();
    }
    PixelMark(const PixelMark&) = delete;
    PixelMark& operator=(const PixelMark&) = delete;
};

}  // namespace

int BufferGraphDialog(HWND parent)
{
    const HeldPicture held;
    const PixelMark mark;
    const FrameGraphVariables before = write::graph;
    const std::int32_t unitBefore = DisplayUnit;
    wasGraphed = false;
    unitWasPicked = false;
    const int result = RunDialog(kFrame, parent);
    if (!wasGraphed) write::graph = before;
    if (unitWasPicked) {
        KeepUnitAvailable();
    } else if (DisplayUnit != unitBefore) {
        SetDisplayUnit(unitBefore);
    }
    return result;
}

}  // namespace kelvo
