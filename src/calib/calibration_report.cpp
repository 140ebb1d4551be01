#include "calib/calibration_report.h"

#include "acquire/averaging.h"
#include "head/camera_head.h"
#include "head/camera_report.h"
#include "head/head_frames.h"
#include "pixel/decommutation.h"
#include "platform/clock.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/head_state.h"

#include <algorithm>
#include <cmath>
#include <ctime>

namespace kelvo {

namespace {

constexpr std::uint32_t kListedColor = 0x9AA0A6;
constexpr float kColdestTemperature = -274.0F;
constexpr double kKelvinAtZero = 273.15;
constexpr double kSecondRadiationConstant = 14387.77;  // um K, h c / k

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

std::string DateNow()
{
    const std::time_t now = WallClockSeconds();
    std::tm local{};
    localtime_r(&now, &local);
    return Format("%04d-%02d-%02d %02d:%02d:%02d", local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                  local.tm_min, local.tm_sec);
}

// The three frames of the focal plane's serial command word, as they go over the line.
std::string SerialWordText()
{
    const FpaSerialWordRecord encoded = EncodedSerialWord(FpaSerialWord);
    std::string text;
    for (const CommFrame& frame : {SerialBiasFrame(encoded), SerialColumnFrame(encoded), SerialRowFrame(encoded)}) {
        if (!text.empty()) text += "  ";
        for (const std::uint8_t byte : frame) text += Format("%02X ", byte);
        text.pop_back();
    }
    return text;
}

std::string WindowText()
{
    return Format("columns %d to %d, rows %d to %d (%d x %d)", FpaSerialWord.ColStart, FpaSerialWord.ColEnd,
                  FpaSerialWord.RowStart, FpaSerialWord.RowEnd, ActiveConfig.Hroi, ActiveConfig.Vroi);
}

std::string FactLines(const CalibrationReport& report)
{
    std::string text;
    for (const auto& [name, value] : report.facts) text += Format("%-20s  %s\n", name.c_str(), value.c_str());
    return text;
}

// answers name pixels too: those move with the map. Without memory nobody is named.
void OrientAnswers(CalibrationReport& report, std::span<const std::uint32_t> order)
{
    std::vector<std::uint32_t> placeOf;  // by the pixel before
    if (report.answers.empty()) return;
    if (!AllocateBlock(placeOf, order.size())) {
        report.answers.clear();
        return;
    }
    for (std::uint32_t i = 0; i < order.size(); ++i) placeOf[order[i]] = i;
    const std::vector<std::uint32_t> before = report.answers;
    std::ranges::transform(order, report.answers.begin(), [&](std::uint32_t from) {
        return before[from] < placeOf.size() ? placeOf[before[from]] : kNobodyAnswers;
    });
}

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

std::vector<std::pair<std::string, std::string>> FactsOfRun(std::uint32_t frameCount)
{
    std::vector<std::pair<std::string, std::string>> facts = {
        {"Date", DateNow()},
        {"Camera", ActiveConfig.Description + " (" + ActiveCameraSection() + ")"},
        {"Serial word", SerialWordText()},
        {"Frame rate", Format("%.2f Hz", static_cast<double>(FrameRate))},
        {"Integration time", Format("%.4f ms", IntegrationMsecInForce)},
        {"Gain, offset", Format("%d, %d", VideoGain[0], VideoOffset[0])},
        {"Window", WindowText()},
        {"Number of frames", std::to_string(frameCount)},
        {"Program", "Kelvo " KELVO_VERSION}};
    const std::string& counts = CurrentCameraReport().counts;
    if (!counts.empty()) facts.insert(facts.end() - 1, {"Counts", counts});
    return facts;
}

std::pair<std::string, std::string> NoiseFact(double noise, double response)
{
    constexpr double kMillikelvins = 1000;
    std::string text = Format("%.2f counts", noise);
    if (response != 0) {
        text += Format(", %.1f mK at %.1f counts/K", noise / std::fabs(response) * kMillikelvins, std::fabs(response));
    }
    return {"Mean noise (NETD)", text};
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

void MapAnswers(CalibrationReport& report, std::span<const std::uint32_t> before, std::span<const std::uint32_t> after)
{
    const std::size_t pixels = report.map.size();
    std::vector<std::uint32_t> pixelOf;  // by detector
    if (before.size() != pixels || after.size() != pixels || !AllocateBlock(pixelOf, pixels) ||
        !AllocateBlock(report.answers, pixels)) {
        return;
    }
    std::ranges::fill(pixelOf, kNobodyAnswers);
    for (std::uint32_t i = 0; i < pixels; ++i) {
        if (before[i] < pixels) pixelOf[before[i]] = i;
    }
    for (std::uint32_t i = 0; i < pixels; ++i) {
        const bool replaced = report.map[i] != 0 && after[i] != before[i] && after[i] < pixels;
        report.answers[i] = replaced ? pixelOf[after[i]] : kNobodyAnswers;
    }
}

void OrientMap(CalibrationReport& report)
{
    const Orientation orientation = OrientationInForce();
    const DecomTable order = PlacesShown(orientation, ActiveConfig);
    if (report.map.empty() || order.size() != report.map.size()) return;
    const std::vector<std::uint8_t> before = report.map;
    std::ranges::transform(order, report.map.begin(), [&](std::uint32_t from) { return before[from]; });
    OrientAnswers(report, order);
    report.turned = orientation;
}

std::vector<std::uint8_t> MapBeforeOrientation(const CalibrationReport& report)
{
    if (report.columns != ActiveConfig.Hroi || report.rows != ActiveConfig.Vroi) return {};
    const DecomTable shown = PlacesShown(report.turned, ActiveConfig);
    std::vector<std::uint8_t> map;
    if (shown.size() != report.map.size() || !AllocateBlock(map, shown.size())) return {};
    for (std::size_t i = 0; i < shown.size(); ++i) map[shown[i]] = report.map[i];
    return map;
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
    std::string text = report.title + "\n" + report.calPath + "\n" + FactLines(report) + "\nResidual non-uniformity\n";
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

}  // namespace kelvo
