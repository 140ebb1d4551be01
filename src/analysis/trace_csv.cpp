#include "analysis/trace_csv.h"

#include "analysis/plot_save.h"
#include "platform/clock.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <ctime>
#include <optional>

namespace kelvo {

namespace {

constexpr std::int64_t kNsPerSecond = 1'000'000'000;
constexpr const char* kProgram = "Kelvo " KELVO_VERSION;

template <typename Number>
void Put(std::string& text, Number number)
{
    constexpr std::size_t kMostCharacters = 32;
    std::array<char, kMostCharacters> digits{};
    const std::to_chars_result end = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    text.append(digits.data(), end.ptr);
}

// A note is one line, whatever the text holds.
std::string Note(std::string_view name, std::string_view value)
{
    std::string line(value);
    std::ranges::replace_if(
        line, [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return CsvNote(name, line);
}

// "231 pixels, 3 bad ones left out, emissivity 0.8, reflected 30 \xB0C"
std::string WhatIsMeasured(const TraceLine& line)
{
    std::string text = Format("%zu pixels", line.pixels) + LeftOutText(line);
    if (!line.surface.empty()) text += ", " + line.surface;
    return text;
}

std::string Head(const Trace& trace, std::size_t unit)
{
    std::string text = Note("program", kProgram);
    for (const auto& [name, value] : trace.origin) text += Note(name, value);
    text += Note("unit", UnitTextOf(trace, unit));
    for (const TraceLine& line : trace.lines) text += Note(line.name, WhatIsMeasured(line));
    text += Note("frames traced", Format("%zu", trace.frames.size()));
    const std::vector<TraceGap> gaps = TraceGapsOf(trace.frames);
    text += Note("gaps", Format("%zu", gaps.size()));
    for (const TraceGap& gap : gaps) {
        const bool isKnown = !trace.frames[gap.before].startsAnew;
        text += Note("gap", Format("before frame %zu: ", gap.before + 1) +
                                (isKnown ? Format("%lld missing", static_cast<long long>(gap.missing))
                                         : std::string("another run begins")));
    }
    return text;
}

void PutSeconds(std::string& text, const TraceFrame& frame)
{
    text += Format("%lld.%09lld", static_cast<long long>(frame.clockNs / kNsPerSecond),
                   static_cast<long long>(frame.clockNs % kNsPerSecond));
}

}  // namespace

std::string CsvField(std::string_view text)
{
    if (text.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(text);
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + '"';
}

std::string TraceCsv(const Trace& trace, std::size_t unit)
{
    std::vector<TraceScale> scales;
    for (std::size_t i = 0; i < trace.lines.size(); ++i) scales.push_back(ScaleOf(trace, unit, i));
    std::string text = Head(trace, unit) + "frame,number,seconds,utc,missing";
    for (const TraceLine& line : trace.lines) {
        for (const char* const figure : {" mean", " deviation", " minimum", " maximum"}) {
            text += ',' + CsvField(line.name + figure);
        }
    }
    text += '\n';
    for (std::size_t i = 0; i < trace.frames.size(); ++i) {
        const TraceFrame& frame = trace.frames[i];
        Put(text, i + 1);
        text += ',';
        Put(text, frame.number);
        text += ',';
        if (trace.hasTimes) PutSeconds(text, frame);
        text += ',' + UtcText(frame.utcNs) + ',';
        Put(text, frame.missing);
        for (std::size_t k = 0; k < trace.lines.size(); ++k) {
            const TraceValue value = ValueOf(trace.lines[k].points[i], scales[k]);
            text += ',';
            Put(text, value.mean);
            text += ',';
            Put(text, value.deviation);
            text += ',';
            Put(text, value.minimum);
            text += ',';
            Put(text, value.maximum);
        }
        text += '\n';
    }
    return text;
}

std::vector<double> MeansOf(const TraceLine& line, const TraceScale& scale)
{
    std::vector<double> means;
    means.reserve(line.points.size());
    for (const TracePoint& point : line.points) means.push_back(ValueOf(point, scale).mean);
    return means;
}

std::string LeftOutText(const TraceLine& line)
{
    if (line.leftOut == 0) return {};
    return Format(", %zu bad %s left out", line.leftOut, line.leftOut == 1 ? "one" : "ones");
}

std::string FramesOfSpectrum(const Spectrum& spectrum, std::size_t frames)
{
    return Format("%zu to %zu of %zu frames", spectrum.run.first + 1, spectrum.run.first + spectrum.run.frames, frames);
}

std::string SpectrumCsv(const Trace& trace, std::size_t unit)
{
    std::vector<Spectrum> spectra;
    for (std::size_t i = 0; i < trace.lines.size(); ++i) {
        std::optional<Spectrum> spectrum = SpectrumOf(trace.frames, MeansOf(trace.lines[i], ScaleOf(trace, unit, i)));
        if (spectrum) spectra.push_back(std::move(*spectrum));
    }
    std::string text = Head(trace, unit) + Note("window", "Hann, single-sided amplitudes");
    const bool hasAll = spectra.size() == trace.lines.size() && !spectra.empty();
    if (hasAll) text += Note("spectrum of", FramesOfSpectrum(spectra[0], trace.frames.size()));
    text += hasAll && spectra[0].intervalSeconds > 0 ? "hertz" : "cycles per frame";
    for (const TraceLine& line : trace.lines) text += ',' + CsvField(line.name + " amplitude");
    text += '\n';
    if (!hasAll) return text;
    for (std::size_t k = 0; k < spectra[0].amplitudes.size(); ++k) {
        Put(text, FrequencyOf(spectra[0], k));
        for (const Spectrum& spectrum : spectra) {
            text += ',';
            Put(text, spectrum.amplitudes[k]);
        }
        text += '\n';
    }
    return text;
}

}  // namespace kelvo
