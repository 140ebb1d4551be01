#include "regions/spectrum.h"

#include <cmath>
#include <complex>
#include <kissfft/kissfft.hh>
#include <numbers>
#include <numeric>

namespace kelvo {

namespace {

constexpr std::size_t kLargestFactor = 100;

std::size_t LargestPrimeFactor(std::size_t n)
{
    std::size_t largest = 1;
    for (std::size_t factor = 2; factor * factor <= n; ++factor) {
        while (n % factor == 0) {
            largest = factor;
            n /= factor;
        }
    }
    return n > 1 ? n : largest;
}

}  // namespace

std::size_t SpectrumLengthOf(std::size_t frames)
{
    while (frames > kLargestFactor && LargestPrimeFactor(frames) > kLargestFactor) --frames;
    return frames;
}

std::vector<double> AmplitudesOf(std::span<const double> values)
{
    const std::size_t n = values.size();
    if (n < kLeastSpectrumFrames) return {};
    const auto length = static_cast<double>(n);
    const double mean = std::accumulate(values.begin(), values.end(), 0.0) / length;
    std::vector<std::complex<double>> windowed(n);
    for (std::size_t i = 0; i < n; ++i) {
        const double weight = (1 - std::cos(2 * std::numbers::pi * static_cast<double>(i) / length)) / 2;
        windowed[i] = (values[i] - mean) * weight;
    }
    std::vector<std::complex<double>> lines(n);
    kissfft<double>(n, false).transform(windowed.data(), lines.data());

    const double sumOfWeights = length / 2;
    std::vector<double> amplitudes(n / 2 + 1);
    for (std::size_t k = 0; k < amplitudes.size(); ++k) {
        const bool isAlone = k == 0 || 2 * k == n;
        amplitudes[k] = std::abs(lines[k]) / sumOfWeights * (isAlone ? 1 : 2);
    }
    return amplitudes;
}

double FrequencyOf(const Spectrum& spectrum, std::size_t line)
{
    const double perFrame = static_cast<double>(line) / static_cast<double>(spectrum.run.frames);
    return spectrum.intervalSeconds > 0 ? perFrame / spectrum.intervalSeconds : perFrame;
}

std::optional<Spectrum> SpectrumOf(std::span<const TraceFrame> frames, std::span<const double> values)
{
    TraceRun run = LongestRunOf(frames);
    run.frames = SpectrumLengthOf(run.frames);
    if (run.frames < kLeastSpectrumFrames || values.size() < run.first + run.frames) return std::nullopt;
    const TraceFrame& last = frames[run.first + run.frames - 1];
    const double took = SecondsOf(last) - SecondsOf(frames[run.first]);
    return Spectrum{.run = run,
                    .intervalSeconds = took / static_cast<double>(run.frames - 1),
                    .amplitudes = AmplitudesOf(values.subspan(run.first, run.frames))};
}

}  // namespace kelvo
