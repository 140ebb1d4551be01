#include "analysis/plot_report.h"

#include "display/units.h"
#include "platform/dialog.h"
#include "platform/text.h"

#include <utility>

namespace kelvo {

namespace {

constexpr int kMeanText = 321;
constexpr int kDeviationText = 322;
constexpr int kMinimumPlace = 324;
constexpr int kMinimumText = 325;
constexpr int kMaximumPlace = 327;
constexpr int kMaximumText = 328;

std::string ExtremeText(std::int32_t counts, const std::optional<Point>& place, std::int32_t unit)
{
    std::string text;
    if (place) CountsToUnit(counts, unit, &text);
    return text;
}

}  // namespace

void ShowPlotReport(HWND dialog, const PlotReport& report)
{
    SetDlgItemText(dialog, kMeanText, report.mean);
    SetDlgItemText(dialog, kDeviationText, report.deviation);
    SetDlgItemText(dialog, kMinimumText, report.minimum);
    SetDlgItemText(dialog, kMinimumPlace, report.minimumPlace);
    SetDlgItemText(dialog, kMaximumText, report.maximum);
    SetDlgItemText(dialog, kMaximumPlace, report.maximumPlace);
}

std::string MeanText(double mean, std::int32_t unit)
{
    return Format(unit == kUnitNoiseVolts ? "%6.5f" : "%4.3f", mean);
}

std::string DeviationText(double deviation, std::int32_t unit)
{
    return Format(unit == kUnitNoiseVolts ? "\xB1%.5f" : "\xB1%.3f", deviation);
}

std::string PlaceText(const std::optional<Point>& place)
{
    return place ? Format("(%d,%d)", place->x, place->y) : std::string();
}

void ReportExtremes(PlotReport& report, const Extremes& extremes, std::int32_t unit)
{
    report.minimum = ExtremeText(extremes.minimum, extremes.minimumAt, unit);
    report.minimumPlace = PlaceText(extremes.minimumAt);
    report.maximum = ExtremeText(extremes.maximum, extremes.maximumAt, unit);
    report.maximumPlace = PlaceText(extremes.maximumAt);
    const bool both = extremes.minimumAt && extremes.maximumAt;
    const bool falls = CountsToUnit(extremes.minimum, unit, nullptr) > CountsToUnit(extremes.maximum, unit, nullptr);
    if (!both || !falls) return;
    std::swap(report.minimum, report.maximum);
    std::swap(report.minimumPlace, report.maximumPlace);
}

}  // namespace kelvo
