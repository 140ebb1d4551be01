#include "export/provenance.h"

#include "platform/clock.h"
#include "platform/text.h"
#include "regions/region_list.h"

#include <algorithm>
#include <cmath>
#include <ctime>

namespace kelvo {

namespace {

constexpr std::int64_t kNsPerSecond = 1'000'000'000;
constexpr double kNsPerMs = 1e6;
constexpr int kCentury = 2000;  // years of headers have two digits

constexpr std::array<std::string_view, 6> kWords = {"counts", "corrected", "volts", "celsius", "kelvin", "fahrenheit"};
constexpr std::array<const char*, 6> kAsciiUnits = {"adu", "adu", "V", "deg C", "K", "deg F"};

std::size_t IndexOf(ExportForm form)
{
    return static_cast<std::size_t>(form);
}

// A source that isn't known is null.
void AddSource(JsonText& json, std::string_view name, std::int16_t intensity, float temperature)
{
    if (intensity == kUncalibratedIntensity) {
        json.Null(name);
        return;
    }
    JsonText source;
    source.Whole("counts", intensity);
    temperature == kUncalibratedTemperature ? source.Null("celsius") : source.Single("celsius", temperature);
    json.Member(name, source.Json());
}

std::string HeadJson(const ImageHeaderRecord& header)
{
    JsonText json;
    json.Single("frame_rate_hz", header.FrameRate)
        .Single("integration_ms", header.IntegrationMsec)
        .Whole("frames_averaged", header.FramesAveraged)
        .Whole("display_low", header.DisplayLow)
        .Whole("display_high", header.DisplayHigh)
        .Whole("video_gain_1", header.VideoGain1)
        .Whole("video_offset_1", header.VideoOffset1)
        .Whole("video_gain_2", header.VideoGain2)
        .Whole("video_offset_2", header.VideoOffset2)
        .Whole("outputs", header.NumOutputs)
        .Whole("top_row", header.TopRow)
        .Whole("left_column", header.LeftColumn);
    AddSource(json, "cold", header.IntensityCold, header.TemperatureCold);
    AddSource(json, "hot", header.IntensityHot, header.TemperatureHot);
    return json.Json();
}

// As in a file of regions.
std::string RegionJson(const std::optional<Region>& region)
{
    if (!region) return "null";
    JsonText json;
    json.Text("name", region->name).Text("shape", ShapeName(region->shape));
    json.Whole("x1", region->place.x1).Whole("y1", region->place.y1);
    if (region->shape != RegionShape::kPoint) json.Whole("x2", region->place.x2).Whole("y2", region->place.y2);
    return json.Json();
}

// "ellipse from 10, 20 to 41, 51", "point at 16, 10"
std::string PlaceText(const Region& region)
{
    const auto& [x1, y1, x2, y2] = region.place;
    const std::string shape(ShapeName(region.shape));
    if (region.shape == RegionShape::kPoint) return shape + Format(" at %d, %d", x1, y1);
    return shape + Format(" from %d, %d to %d, %d", x1, y1, x2, y2);
}

std::string GapsJson(std::span<const FrameTiming> timings)
{
    std::vector<std::string> gaps;
    for (const FrameGap& gap : GapsOfTimings(timings)) {
        gaps.push_back(JsonText()
                           .Whole("before", gap.beforeFrame)
                           .Whole("lost_by_board", gap.lostByBoard)
                           .Whole("lost_by_ring", gap.lostByRing)
                           .Whole("passed_over", gap.passedOver)
                           .Whole("lost_by_transport", gap.lostByTransport)
                           .Json());
    }
    return JsonList(gaps);
}

// Empty: not known.
void AddKnown(JsonText& json, std::string_view name, std::string_view value)
{
    value.empty() ? json.Null(name) : json.Text(name, value);
}

}  // namespace

bool IsFloatForm(ExportForm form)
{
    return form >= ExportForm::kVolts;
}

std::string_view WordOf(ExportForm form)
{
    return kWords.at(IndexOf(form));
}

std::optional<ExportForm> ExportFormOf(std::string_view word)
{
    const auto* const found = std::ranges::find(kWords, word);
    if (found == kWords.end()) return std::nullopt;
    return static_cast<ExportForm>(found - kWords.begin());
}

std::optional<std::int64_t> FrameTiming::StartUtcNs() const
{
    if (utcNs == 0 || !(integrationMs > 0) || !std::isfinite(integrationMs)) return std::nullopt;
    return utcNs - std::llround(static_cast<double>(integrationMs) * kNsPerMs);
}

std::string LocalTimeText(const ImageHeaderRecord& header)
{
    const auto lies = [](int value, int low, int high) { return value >= low && value <= high; };
    const bool isTime = lies(header.Year, 0, 99) && lies(header.Month, 1, 12) && lies(header.Day, 1, 31) &&
                        lies(header.Hour, 0, 23) && lies(header.Minute, 0, 59) && lies(header.Second, 0, 60);
    if (!isTime) return {};
    return Format("%04d-%02d-%02dT%02d:%02d:%02d", kCentury + header.Year, header.Month, header.Day, header.Hour,
                  header.Minute, header.Second);
}

std::string AsciiUnit(ExportForm form)
{
    return kAsciiUnits.at(IndexOf(form));
}

std::vector<FrameGap> GapsOfTimings(std::span<const FrameTiming> timings)
{
    std::vector<FrameGap> gaps;
    for (std::size_t i = 1; i < timings.size(); ++i) {
        FrameGap gap{.beforeFrame = static_cast<std::int64_t>(i),
                     .firstNumber = timings[i - 1].number < 0 ? -1 : timings[i - 1].number + 1,
                     .lostByBoard = timings[i].lostByBoard,
                     .lostByRing = timings[i].lostByRing,
                     .passedOver = timings[i].passedOver,
                     .lostByTransport = timings[i].lostByTransport};
        if (gap.Missing() > 0) gaps.push_back(gap);
    }
    return gaps;
}

std::string ScaleJson(const Provenance& provenance)
{
    if (!provenance.scale) return "null";
    std::vector<std::string> points;
    for (const ScalePoint& point : *provenance.scale) {
        points.push_back(JsonText().Whole("count", point.count).Single("value", point.value).Json());
    }
    return JsonList(points);
}

std::string TimingJson(const FrameTiming& timing)
{
    JsonText json;
    json.Whole("index", timing.index);
    timing.number < 0 ? json.Null("number") : json.Whole("number", timing.number);
    timing.seconds ? json.Number("seconds", *timing.seconds) : json.Null("seconds");
    AddKnown(json, "utc", UtcText(timing.utcNs));
    AddKnown(json, "start_utc", UtcText(timing.StartUtcNs().value_or(0)));
    timing.integrationMs > 0 ? json.Single("integration_ms", timing.integrationMs) : json.Null("integration_ms");
    json.Whole("lost_by_board", timing.lostByBoard)
        .Whole("lost_by_ring", timing.lostByRing)
        .Whole("passed_over", timing.passedOver)
        .Whole("lost_by_transport", timing.lostByTransport);
    return json.Json();
}

JsonText ProvenanceJson(const Provenance& provenance, std::size_t columns, std::size_t rows,
                        std::span<const FrameTiming> timings)
{
    JsonText json;
    json.Text("program", provenance.program).Text("exported", UtcText(provenance.exportedUtc * kNsPerSecond));
    json.Text("source", provenance.source);
    AddKnown(json, "recorded_by", provenance.recordedBy);
    AddKnown(json, "camera", provenance.camera);
    AddKnown(json, "sample", provenance.sample);
    AddKnown(json, "comment", provenance.comment);
    AddKnown(json, "local_time", LocalTimeText(provenance.header));
    json.Text("form", WordOf(provenance.form))
        .Text("quantity", provenance.quantity)
        .Text("unit", provenance.unit)
        .Member("scale", ScaleJson(provenance));
    AddKnown(json, "pixels", provenance.pixels);
    AddKnown(json, "calibration_set", provenance.set);
    AddKnown(json, "calibration_sha256", provenance.setSha256);
    provenance.badKnown ? json.Whole("bad_detectors", provenance.badDetectors) : json.Null("bad_detectors");
    json.Member("region", RegionJson(provenance.region));
    if (!provenance.difference.empty()) json.Text("difference_to", provenance.difference);
    json.Whole("left", provenance.left)
        .Whole("top", provenance.top)
        .Whole("columns", static_cast<std::int64_t>(columns))
        .Whole("rows", static_cast<std::int64_t>(rows))
        .Member("head", HeadJson(provenance.header));
    if (!timings.empty()) json.Whole("frames", std::ssize(timings)).Member("gaps", GapsJson(timings));
    return json;
}

std::vector<std::string> ProvenanceLines(const Provenance& provenance, std::span<const FrameTiming> timings)
{
    const ImageHeaderRecord& header = provenance.header;
    std::vector<std::string> lines;
    const auto add = [&lines](std::string_view key, const std::string& value) {
        if (!value.empty()) lines.push_back(std::string(key) + ": " + value);
    };
    add("program", provenance.program);
    add("exported", UtcText(provenance.exportedUtc * kNsPerSecond));
    add("source", provenance.source);
    add("recorded by", provenance.recordedBy);
    add("camera", provenance.camera);
    add("sample", provenance.sample);
    add("comment", provenance.comment);
    add("local time", LocalTimeText(header));
    add("form", std::string(WordOf(provenance.form)));
    add("unit", provenance.unit);
    if (provenance.scale) {
        for (const ScalePoint& point : *provenance.scale) {
            add("scale", Format("%d counts are ", point.count) + ShortestText(point.value) + ' ' + provenance.unit);
        }
    }
    add("pixels", provenance.pixels);
    add("calibration set", provenance.set);
    add("calibration SHA-256", provenance.setSha256);
    if (provenance.badKnown) add("bad detectors", std::to_string(provenance.badDetectors));
    if (provenance.region) {
        add("region", provenance.region->name);
        add("region's place", PlaceText(*provenance.region));
    }
    add("left, top", Format("%d, %d", provenance.left, provenance.top));
    add("integration time", ShortestText(header.IntegrationMsec) + " ms");
    add("frame rate", ShortestText(header.FrameRate) + " Hz");
    add("video gain and offset", Format("%d, %d", header.VideoGain1, header.VideoOffset1));
    for (const FrameGap& gap : GapsOfTimings(timings)) {
        add("gap", Format("before frame %lld: ", static_cast<long long>(gap.beforeFrame)) + CausesOf(gap));
    }
    return lines;
}

}  // namespace kelvo
