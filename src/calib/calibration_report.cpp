#include "calib/calibration_report.h"

#include "acquire/averaging.h"
#include "calib/last_set.h"
#include "pixel/decommutation.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/paint.h"
#include "platform/text.h"
#include "platform/window.h"
#include "resources/help_contexts.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace kelvo {

namespace {

constexpr int kText = 1001;
constexpr int kMap = 1002;
constexpr int kLegend = 1003;

constexpr std::uint32_t kGoodColor = 0x202428;
constexpr std::uint32_t kListedColor = 0x9AA0A6;
constexpr float kColdestTemperature = -274.0F;
constexpr double kKelvinAtZero = 273.15;
constexpr double kSecondRadiationConstant = 14387.77;  // um K, h c / k

// The report that the open dialog shows.
const CalibrationReport* shown = nullptr;

template <typename Value>
std::optional<NonUniformity> Measure(std::span<const Value> values, std::span<const std::uint8_t> use,
                                     std::string source)
{
    const auto counts = [&](std::size_t i) { return use.empty() || use[i] != 0; };
    double sum = 0;
    std::size_t count = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!counts(i)) continue;
        sum += static_cast<double>(values[i]);
        ++count;
    }
    if (count < 2 || sum == 0) return std::nullopt;
    const double mean = sum / static_cast<double>(count);
    double squares = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (counts(i)) squares += std::pow(static_cast<double>(values[i]) - mean, 2);
    }
    const double deviation = std::sqrt(squares / static_cast<double>(count - 1));
    return NonUniformity{std::move(source), mean, deviation * 100.0 / std::fabs(mean)};
}

// Photon radiance per micrometre, up to a factor that falls out of the ratio.
double SpectralRadiance(double wavelengthUm, double kelvin)
{
    return 1.0 / (std::pow(wavelengthUm, 4) * std::expm1(kSecondRadiationConstant / (wavelengthUm * kelvin)));
}

// Simpson's rule; 200 steps leave less than 1e-9 of a smooth band.
double BandRadiance(double celsius, double fromUm, double toUm)
{
    constexpr int kSteps = 200;
    const double step = (toUm - fromUm) / kSteps;
    double sum = 0;
    for (int i = 0; i <= kSteps; ++i) {
        const int inner = i % 2 == 1 ? 4 : 2;
        const int weight = i == 0 || i == kSteps ? 1 : inner;
        sum += weight * SpectralRadiance(fromUm + i * step, celsius + kKelvinAtZero);
    }
    return sum * step / 3;
}

std::string LineOf(const char* when, const NonUniformity& residual, std::uint32_t frames)
{
    return Format("%s  %-32s %9.1f counts  %8.4f %%  %u frames\n", when, residual.source.c_str(), residual.mean,
                  residual.percent, frames);
}

std::string LegendText(const CalibrationReport& report)
{
    std::string text;
    for (const BadDetectorClass& entry : report.classes) text += Format("%7d  %s\n", entry.count, entry.name.c_str());
    return text;
}

// --- The dialog -----------------------------------------------------------------------------------------------------

// So many pixels of the frame go into one of the area, at least 1, that all of it fits.
int PixelsInOne(const Rect& area, int columns, int rows)
{
    const auto share = [](int pixels, int room) { return (pixels + room - 1) / std::max(room, 1); };
    return std::max({1, share(columns, area.Width()), share(rows, area.Height())});
}

// Where a large frame has to shrink, a bad detector takes its whole cell: none may go unseen.
DeviceBitmap MapPicture(const CalibrationReport& report, int step)
{
    DeviceBitmap picture{
        .width = (report.columns + step - 1) / step, .height = (report.rows + step - 1) / step, .pixels = {}};
    picture.pixels.resize(static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height),
                          kGoodColor);
    for (std::size_t i = 0; i < report.map.size(); ++i) {
        const std::uint8_t mark = report.map[i];
        if (mark == 0 || mark > report.classes.size()) continue;
        const auto columns = static_cast<std::size_t>(report.columns);
        const auto cell = static_cast<std::size_t>(step);
        const std::size_t place = i / columns / cell * static_cast<std::size_t>(picture.width) + i % columns / cell;
        picture.pixels[place] = report.classes[mark - 1U].color;
    }
    return picture;
}

// The largest rectangle of the frame's shape in the middle of the area.
Rect FitInto(const Rect& area, int columns, int rows)
{
    const double scale =
        std::min(area.Width() / static_cast<double>(columns), area.Height() / static_cast<double>(rows));
    const int width = static_cast<int>(columns * scale);
    const int height = static_cast<int>(rows * scale);
    const int left = (area.Width() - width) / 2;
    const int top = (area.Height() - height) / 2;
    return {left, top, left + width, top + height};
}

constexpr ColorRef ToColorRef(std::uint32_t rgb)
{
    return (rgb & 0xFFU) << 16U | (rgb & 0xFF00U) | rgb >> 16U;
}

void DrawMap(HWND dialog)
{
    const HWND area = DlgItemWindow(dialog, kMap);
    if (!area || !shown) return;
    const Rect client = GetClientRect(area);
    FillSurface(area, client, ToColorRef(kGoodColor));
    if (shown->map.empty()) return;
    const DeviceBitmap picture = MapPicture(*shown, PixelsInOne(client, shown->columns, shown->rows));
    StretchPixels(area, FitInto(client, picture.width, picture.height), picture);
}

// One line a class: a swatch of its colour on the map, then its name and count.
void DrawLegend(HWND dialog)
{
    const HWND area = DlgItemWindow(dialog, kLegend);
    if (!area || !shown) return;
    const Rect client = GetClientRect(area);
    const int line = TextLineHeight(area);
    FillSurface(area, client, ToColorRef(kGoodColor));
    int y = 2;
    for (const BadDetectorClass& entry : shown->classes) {
        FillSurface(area, {6, y + 3, 6 + line - 6, y + line - 3}, ToColorRef(entry.color));
        DrawTextLine(area, line + 8, y, Format("%s: %d", entry.name.c_str(), entry.count), TextAlign::kLeft, 0xFFFFFF,
                     ToColorRef(kGoodColor));
        y += line + 2;
    }
}

void Open(HWND dialog)
{
    if (shown) SetDlgItemText(dialog, kText, ReportText(*shown));
    for (const int id : {kMap, kLegend}) DlgItemWindow(dialog, id);  // surfaces before the layout
    CentreDialog(dialog);
}

void Close(HWND dialog)
{
    EndDialog(dialog, 1);
}

constexpr DialogEntry kEntries[] = {
    OnPaint(kMap, DrawMap),
    OnPaint(kLegend, DrawLegend),
    {kIdOk, Close},
    {kIdCancel, Close},
};
constexpr DialogFrame kFrame{.name = "CALREPORT",
                             .procedure = fnCALREPORTDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpCalibrationReport};

}  // namespace

std::optional<NonUniformity> NonUniformityOf(std::span<const std::int16_t> values, std::span<const std::uint8_t> use,
                                             std::string source)
{
    return Measure(values, use, std::move(source));
}

std::optional<NonUniformity> NonUniformityOf(std::span<const std::int32_t> values, std::span<const std::uint8_t> use,
                                             std::string source)
{
    return Measure(values, use, std::move(source));
}

std::optional<NonUniformity> NonUniformityOf(std::span<const float> values, std::span<const std::uint8_t> use,
                                             std::string source)
{
    return Measure(values, use, std::move(source));
}

std::string SourceName(std::string_view source, float temperature)
{
    std::string name(source);
    if (temperature > kColdestTemperature) {
        name += Format(
            ", %.3f \xB0"
            "C",
            static_cast<double>(temperature));
    }
    return name;
}

void MapClasses(CalibrationReport& report, std::span<const std::uint8_t> classes, std::span<const std::uint32_t> decom)
{
    if (classes.empty() || !AllocateBlock(report.map, decom.size())) return;
    std::ranges::transform(decom, report.map.begin(),
                           [&](std::uint32_t d) { return d < classes.size() ? classes[d] : std::uint8_t{0}; });
}

void MapListed(CalibrationReport& report, std::span<const std::uint8_t> badMap)
{
    const auto listed = static_cast<std::uint8_t>(report.classes.size() + 1);
    std::int32_t count = 0;
    for (std::size_t i = 0; i < std::min(badMap.size(), report.map.size()); ++i) {
        if (badMap[i] == 0 || report.map[i] != 0) continue;
        report.map[i] = listed;
        ++count;
    }
    if (count != 0) report.classes.push_back({"Listed before", count, kListedColor});
}

void OrientMap(CalibrationReport& report)
{
    DecomTable order;
    if (report.map.empty() || !AllocateBlock(order, report.map.size())) return;
    std::iota(order.begin(), order.end(), 0U);
    if (!ReorderDecomList(order, ActiveConfig, MirrorHoriz, MirrorVert, RotateCCW)) return;
    const std::vector<std::uint8_t> before = report.map;
    std::ranges::transform(order, report.map.begin(), [&](std::uint32_t from) { return before[from]; });
}

double StraightLineError(double coldC, double hotC, double fromUm, double toUm)
{
    const double cold = BandRadiance(coldC, fromUm, toUm);
    const double hot = BandRadiance(hotC, fromUm, toUm);
    if (hot == cold) return 0;
    const double middleC = (coldC + hotC) / 2;
    const double read = coldC + (hotC - coldC) * (BandRadiance(middleC, fromUm, toUm) - cold) / (hot - cold);
    return read - middleC;
}

void MeasureAfter(CalibrationReport& report, const std::string& source, std::uint32_t frameCount)
{
    std::vector<float> mean;
    const auto pixels = static_cast<std::size_t>(report.columns) * static_cast<std::size_t>(report.rows);
    if (!LiveVideo || !GrabberPresent || !AllocateBlock(mean, pixels)) return;
    constexpr std::uint32_t kQuietly = kAverageFloat | kTakeNewFrames | kNewFramesOnly;
    if (!AverageFrames(std::span(mean), {}, frameCount, 0, 0, report.columns - 1, report.rows - 1, kQuietly)) return;
    report.after = NonUniformityOf(std::span<const float>(mean), {}, source);
    report.afterFrames = static_cast<std::int32_t>(frameCount);
}

std::string ReportText(const CalibrationReport& report)
{
    std::string text = report.title + "\n" + report.calPath + "\n\nResidual non-uniformity\n";
    for (const NonUniformity& residual : report.before) text += LineOf("before", residual, report.frameCount);
    if (report.after) {
        text += LineOf("after ", *report.after, static_cast<std::uint32_t>(report.afterFrames));
    } else {
        text += "after   not measured: no fresh frames came\n";
    }
    text += "\nBad detectors\n" + LegendText(report);
    if (!report.note.empty()) text += "\n" + report.note + "\n";
    return text;
}

std::string ReportPath(std::string_view calPath)
{
    return SetFile(calPath, ".report.txt");
}

int SaveReport(const CalibrationReport& report)
{
    const std::string path = ReportPath(report.calPath);
    if (ReplaceFile(path, ToUtf8(ReportText(report)))) return 1;
    MessageBox(hWndMain, "Failed to save file: " + path, kMessageCaption);
    return 0;
}

void ShowResult(HWND window, const std::string& text, std::string_view caption, const CalibrationReport& report)
{
    if (MessageBox(window, text, caption, BoxIcon::kInformation, BoxButtons::kOkReport) != Button::kReport) return;
    shown = &report;
    RunDialog(kFrame, window);
    shown = nullptr;
}

LRESULT fnCALREPORTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

}  // namespace kelvo
