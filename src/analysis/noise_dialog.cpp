#include "analysis/noise_dialog.h"

#include "analysis/noise_gather.h"
#include "analysis/noise_map.h"
#include "analysis/plot_paint.h"
#include "analysis/plot_save.h"
#include "display/color_map.h"
#include "imagefile/header.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/paint.h"
#include "platform/pointer.h"
#include "platform/text.h"
#include "platform/window.h"
#include "resources/help_contexts.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/docking.h"
#include "ui/select_file.h"
#include "ui/status.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace kelvo {

namespace {

constexpr std::int32_t kDefaultFrames = 64;

// One ground in all themes: colours are judged against it.
constexpr ColorRef kGround = 0x00262626;
constexpr ColorRef kInk = 0x00E6E6E6;
constexpr std::uint32_t kLeftOut = 0x00303848;  // 0x00RRGGBB, of pixels that are left out
constexpr int kMapMargin = 8;
constexpr int kTickLength = 5;
constexpr const char* kPixelHint = "Point at a pixel to read it.";
constexpr const char* kNothingYet = "Nothing is measured yet.";
constexpr const char* kNoMemory = "There is no memory for the noise of so many pixels.";

// What is on the screen.
struct Shown {
    NoiseMeasurement measured;
    NoiseQuantity quantity = NoiseQuantity::kNetd;
    NoiseFigures figures;
};
std::optional<Shown> shown;

// --- Painting -------------------------------------------------------------------------------------------------------

std::array<std::uint32_t, kColorMapEntries> ColorsInForce()
{
    std::array<std::uint32_t, kColorMapEntries> colors{};
    const std::span<const std::uint8_t> map = ReadyColorMap();
    if (map.size() < kColorMapBytes) return colors;
    for (std::size_t i = 0; i < colors.size(); ++i) {
        colors[i] =
            std::uint32_t{map[kRedPlane + i]} << 16 | std::uint32_t{map[kGreenPlane + i]} << 8 | map[kBluePlane + i];
    }
    return colors;
}

ScaleLine LineOf(const NoiseRange& range)
{
    return {{0, kColorMapEntries}, range.low, range.high, false};
}

NoiseLayout LayoutIn(HWND area, const NoiseMeasurement& measured)
{
    const Rect client = GetClientRect(area);
    const int scaleWidth = TextWidth(area, "00000.00") + kTickLength + kMapMargin;
    const Rect inside{kMapMargin, kMapMargin, client.Width() - kMapMargin, client.Height() - kMapMargin};
    return LayOutNoise(inside, measured.columns, measured.rows, scaleWidth, TextLineHeight(area));
}

void PaintScale(HWND area, const Rect& bar, const NoiseRange& range, std::span<const std::uint32_t> colors,
                std::string_view unit)
{
    DeviceBitmap strip{.width = 1, .height = static_cast<int>(colors.size()), .pixels = {}};
    strip.pixels.assign(colors.rbegin(), colors.rend());  // the last colour on top
    StretchPixels(area, bar, strip);
    const int line = TextLineHeight(area);
    DrawTextLine(area, bar.left, bar.bottom + line / 2, std::string(unit), TextAlign::kLeft, kInk, kGround);
    for (const ScaleTick& tick : PlaceScaleTicks(LineOf(range), bar.top, bar.bottom, line)) {
        FillSurface(area, {bar.right, tick.y, bar.right + kTickLength, tick.y + 1}, kInk);
        DrawTextLine(area, bar.right + kTickLength + 3, tick.y - line / 2, tick.label, TextAlign::kLeft, kInk, kGround);
    }
}

void PaintMap(HWND dialog)
{
    const HWND area = DlgItemWindow(dialog, kNoiseMap);
    if (!area) return;
    FillSurface(area, GetClientRect(area), kGround);
    if (!shown) return;
    const NoiseLayout layout = LayoutIn(area, shown->measured);
    if (layout.map.Empty()) return;
    const NoiseRange range = MapRangeOf(shown->figures);
    const auto colors = ColorsInForce();
    StretchPixels(
        area, layout.map,
        NoisePicture(NoiseValues(shown->measured, shown->quantity), shown->measured.columns, range, colors, kLeftOut));
    if (shown->figures.pixels > 0) PaintScale(area, layout.bar, range, colors, NoiseUnit(shown->quantity));
}

void PaintHistogram(HWND dialog)
{
    const HWND control = DlgItemWindow(dialog, kNoiseHistogram);
    if (!control) return;
    PlotPicture picture;
    if (shown && shown->figures.pixels > 0) {
        const NoiseHistogram histogram =
            HistogramOfNoise(NoiseValues(shown->measured, shown->quantity), shown->figures);
        picture = NoisePlot(PlotArea(control), histogram, shown->figures, NoiseUnit(shown->quantity),
                            [control](std::string_view text) { return PlotTextWidth(control, text); });
    }
    PaintPlot(control, picture);
}

// --- Figures --------------------------------------------------------------------------------------------------------

std::string WithUnit(double value, NoiseQuantity quantity)
{
    return Format("%.3f %s", value, std::string(NoiseUnit(quantity)).c_str());
}

std::string TakenText(const NoiseMeasurement& measured)
{
    const char* const kind = measured.raw ? "raw" : "corrected";
    std::string text = Format("%u %s frames", measured.frames, kind);
    if (measured.lost > 0) text += Format(", %lld lost between them", static_cast<long long>(measured.lost));
    return text;
}

std::size_t SaturatedOf(const NoiseMeasurement& measured)
{
    return measured.knowsSaturated ? measured.noise.saturatedPixels : 0;
}

std::string PixelsText(const Shown& of)
{
    std::string text = Format("%zu", of.figures.pixels);
    const std::size_t saturated = SaturatedOf(of.measured);
    if (saturated > 0) text += Format(", %zu of them saturated", saturated);
    return text;
}

void ShowFigures(HWND dialog)
{
    const bool some = shown && shown->figures.pixels > 0;
    SetDlgItemText(dialog, kNoiseMedian, some ? WithUnit(shown->figures.median, shown->quantity) : "");
    SetDlgItemText(dialog, kNoiseRms, some ? WithUnit(shown->figures.rms, shown->quantity) : "");
    SetDlgItemText(dialog, kNoiseWorst,
                   some ? Format("above %s, up to %s", WithUnit(shown->figures.worst, shown->quantity).c_str(),
                                 WithUnit(shown->figures.largest, shown->quantity).c_str())
                        : "");
    SetDlgItemText(dialog, kNoisePixels, shown ? PixelsText(*shown) : "");
    const std::size_t bad = shown ? shown->measured.noise.badPixels : 0;
    const bool unknown = shown && !shown->measured.knowsBad && bad == 0;
    SetDlgItemText(dialog, kNoiseBad, unknown ? "none known" : shown ? Format("%zu", bad) : "");
    SetDlgItemText(dialog, kNoiseTaken, shown ? TakenText(shown->measured) : kNothingYet);
    SetDlgItemText(dialog, kNoisePixel, shown ? kPixelHint : "");
    EnableDlgItem(dialog, kNoiseSave, shown.has_value());
    EnableDlgItem(dialog, kNoiseShown, shown && !shown->measured.noise.netd.empty());
}

void Refresh(HWND dialog)
{
    ShowFigures(dialog);
    PaintMap(dialog);
    PaintHistogram(dialog);
}

// False, and the other quantity stays, where memory is refused.
bool TakeFigures(Shown& of, NoiseQuantity quantity)
{
    std::optional<NoiseFigures> figures = FiguresOfNoise(NoiseValues(of.measured, quantity));
    if (!figures) return false;
    of.figures = std::move(*figures);
    of.quantity = quantity;
    return true;
}

void PickShown(HWND dialog)
{
    if (!shown) return;
    const auto quantity = ListSelection(dialog, kNoiseShown) == 0 ? NoiseQuantity::kNetd : NoiseQuantity::kDeviation;
    if (!TakeFigures(*shown, quantity)) {
        ListSelect(dialog, kNoiseShown, shown->quantity == NoiseQuantity::kNetd ? 0 : 1);
        MessageBox(dialog, kNoMemory, kMessageCaption);
        return;
    }
    Refresh(dialog);
}

void NamePixel(HWND dialog, Point at)
{
    if (!shown) return;
    const NoiseLayout layout = LayoutIn(DlgItemWindow(dialog, kNoiseMap), shown->measured);
    Point pixel;
    if (!NoisePixelAt(layout, shown->measured.columns, shown->measured.rows, at, pixel)) {
        SetDlgItemText(dialog, kNoisePixel, kPixelHint);
        return;
    }
    const std::size_t index = static_cast<std::size_t>(pixel.y) * static_cast<std::size_t>(shown->measured.columns) +
                              static_cast<std::size_t>(pixel.x);
    const float value = NoiseValues(shown->measured, shown->quantity)[index];
    const std::string place = Format("Column %d, row %d: ", pixel.x, pixel.y);
    SetDlgItemText(
        dialog, kNoisePixel,
        place + (value == value ? WithUnit(static_cast<double>(value), shown->quantity) : std::string("left out")));
}

// --- Measuring ------------------------------------------------------------------------------------------------------

std::optional<NoiseRequest> ReadRequest(HWND dialog)
{
    const std::optional<std::int32_t> frames = ScanDecimal(GetDlgItemText(dialog, kNoiseFrames));
    if (!frames || *frames < static_cast<std::int32_t>(kLeastNoiseFrames) ||
        *frames > static_cast<std::int32_t>(kMostNoiseFrames)) {
        RefuseField(dialog, kNoiseFrames, Format("Please enter %u to %u frames.", kLeastNoiseFrames, kMostNoiseFrames));
        return std::nullopt;
    }
    NoiseRequest request{.live = IsDlgButtonChecked(dialog, kNoiseLive),
                         .file = std::string(Trimmed(GetDlgItemText(dialog, kNoiseFileName))),
                         .set = std::string(Trimmed(GetDlgItemText(dialog, kNoiseSetName))),
                         .frames = *frames};
    if (!request.live && request.file.empty()) {
        RefuseField(dialog, kNoiseFileName, "Please name the file whose frames are to be measured.");
        return std::nullopt;
    }
    return request;
}

// What the operator has to know of the figures before he trusts them.
std::string VerdictOn(const Shown& made)
{
    const NoiseMeasurement& measured = made.measured;
    if (made.figures.pixels == 0) return "No pixel is left to measure: all are bad.";
    if (measured.noise.netd.empty()) {
        return "No NETD: it takes a two-point calibration with the temperatures of its sources.";
    }
    std::string verdict = "The noise of " + TakenText(measured) + " is measured.";
    if (SaturatedOf(measured) > 0) verdict += " Saturated pixels have too little of it.";
    return verdict;
}

void Measure(HWND dialog)
{
    const std::optional<NoiseRequest> request = ReadRequest(dialog);
    if (!request) return;
    const Hourglass hourglass;
    std::string why;
    std::optional<NoiseMeasurement> measured = GatherNoise(*request, why);
    if (!measured) {
        StatusMessage("", kLeftAligned);
        if (!why.empty()) MessageBox(dialog, why, kMessageCaption, BoxIcon::kInformation);
        return;
    }
    Shown made{.measured = std::move(*measured), .quantity = NoiseQuantity::kNetd, .figures = {}};
    if (!TakeFigures(made, made.measured.noise.netd.empty() ? NoiseQuantity::kDeviation : NoiseQuantity::kNetd)) {
        MessageBox(dialog, kNoMemory, kMessageCaption);
        return;
    }
    shown = std::move(made);
    ListSelect(dialog, kNoiseShown, shown->quantity == NoiseQuantity::kNetd ? 0 : 1);
    StatusMessage(VerdictOn(*shown), kLeftAligned);
    Refresh(dialog);
}

// --- The other controls ---------------------------------------------------------------------------------------------

void FollowSource(HWND dialog)
{
    const bool file = IsDlgButtonChecked(dialog, kNoiseFile);
    for (const int id : {kNoiseFileName, kNoiseBrowseFile, kNoiseSetName, kNoiseBrowseSet}) {
        EnableDlgItem(dialog, id, file);
    }
}

void ChooseSource(HWND dialog, int id)
{
    CheckRadioButton(dialog, kNoiseLive, kNoiseFile, id);
    FollowSource(dialog);
}

void BrowseFile(HWND dialog)
{
    std::string path = "*.seq";
    if (SelectFile(dialog, path, kSelectToOpen)) SetDlgItemText(dialog, kNoiseFileName, path);
}

void BrowseSet(HWND dialog)
{
    std::string path = "*.cal";
    if (SelectFile(dialog, path, kSelectToOpen)) SetDlgItemText(dialog, kNoiseSetName, path);
}

void Save(HWND dialog)
{
    if (!shown) return;
    const PlotKind image{.name = "Image of floats (*.img)",
                         .pattern = "*.img",
                         .extension = ".img",
                         .write = [](const std::string& path) {
                             return SaveNoiseImage(path, shown->measured, shown->figures, shown->quantity);
                         }};
    SavePlot(
        dialog, [] { return NoiseCsv(shown->measured, shown->figures, shown->quantity); }, image);
}

void Open(HWND dialog)
{
    shown.reset();
    for (const int id : {kNoiseMap, kNoiseHistogram}) DlgItemWindow(dialog, id);  // surfaces before the layout
    ListAdd(dialog, kNoiseShown, "NETD");
    ListAdd(dialog, kNoiseShown, "Deviation");
    ListSelect(dialog, kNoiseShown, 0);
    const bool live = LiveVideo && !ViewingFile;
    CheckRadioButton(dialog, kNoiseLive, kNoiseFile, live || !ViewingFile ? kNoiseLive : kNoiseFile);
    SetDlgItemText(dialog, kNoiseFileName, ViewingFile ? ViewFilePath : std::string());
    SetDlgItemInt(dialog, kNoiseFrames, kDefaultFrames);
    FollowSource(dialog);
    ShowFigures(dialog);
    DockDialog(dialog);
    FocusDlgItem(dialog, kNoiseFrames);
    StatusMessage("Put a uniform source in front of the camera, or choose a recording of one.", kLeftAligned);
}

LRESULT fnNOISEDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
constexpr DialogEntry kEntries[] = {
    {kNoiseLive, ChooseSource},
    {kNoiseFile, ChooseSource},
    {kNoiseBrowseFile, BrowseFile},
    {kNoiseBrowseSet, BrowseSet},
    {kNoiseShown, PickShown, kSelectionChanged},
    {kNoiseSave, Save},
    {kIdOk, Measure},
    OnPaint(kNoiseMap, PaintMap),
    OnPaint(kNoiseHistogram, PaintHistogram),
};
constexpr DialogFrame kFrame{
    .name = "NOISE", .procedure = fnNOISEDlgProc, .open = Open, .entries = kEntries, .helpContext = kHelpNoise};
LRESULT fnNOISEDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_MOUSEMOVE && LowWord(wParam) == kNoiseMap) {
        NamePixel(dialog, {SignedLowWord(static_cast<WPARAM>(lParam)), SignedHighWord(static_cast<WPARAM>(lParam))});
        return 1;
    }
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

}  // namespace

CommandEnd MeasureNoise()
{
    RunDialog(kFrame, hWndMain);
    shown.reset();
    return CommandEnd::kResetStatus;
}

void ResetNoiseDialog()
{
    shown.reset();
}

}  // namespace kelvo
