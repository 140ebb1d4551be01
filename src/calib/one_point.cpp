#include "calib/one_point.h"

#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace kelvo {

namespace {

constexpr double kNoiseSteps = 20.0;            // a count in the noise list
constexpr float kColdestTemperature = -274.0F;  // below it none was given

struct Window {
    Window(float mean, const OnePointSettings& settings)
        : low(double{mean} - settings.minOffset), high(double{mean} + settings.maxOffset)
    {
    }
    bool HoldsStrictly(double value) const { return low < value && value < high; }

    double low;
    double high;
};

OnePointClass ClassOf(std::int16_t value, const Window& window, bool noisy)
{
    if (value < window.low) return OnePointClass::kLow;
    if (value > window.high) return OnePointClass::kHigh;
    return noisy ? OnePointClass::kNoisy : OnePointClass::kGood;
}

struct Sum {
    double values = 0;
    std::int32_t count = 0;

    void Add(double value)
    {
        values += value;
        ++count;
    }
    std::optional<float> Mean() const
    {
        if (count == 0) return std::nullopt;
        return static_cast<float>(values / count);
    }
};

}  // namespace

float MeanOfPixels(std::span<const std::int16_t> frame, std::span<const std::uint32_t> decom)
{
    double sum = 0;
    for (const std::uint32_t d : decom) sum += frame[d];
    return static_cast<float>(sum / static_cast<double>(decom.size()));
}

OnePointResult AcceptAllPixels(float mean, std::span<const float> noise, std::size_t pixels)
{
    const double noiseSum = std::accumulate(noise.begin(), noise.end(), 0.0);
    return {.mean = mean,
            .noiseMean = static_cast<float>(noiseSum / static_cast<double>(pixels)),
            .good = static_cast<std::int32_t>(pixels)};
}

std::optional<float> MeanInsideWindow(std::span<const std::int16_t> frame, std::span<const std::uint32_t> decom,
                                      float mean, const OnePointSettings& settings)
{
    const Window window(mean, settings);
    Sum inside;
    for (const std::uint32_t d : decom) {
        if (window.HoldsStrictly(frame[d])) inside.Add(frame[d]);
    }
    return inside.Mean();
}

std::optional<OnePointResult> RejectOutsideWindow(std::span<const std::int16_t> frame, std::span<const float> noise,
                                                  std::span<const std::uint32_t> decom, float mean,
                                                  const OnePointSettings& settings, std::span<float> gains,
                                                  std::span<OnePointClass> classes)
{
    const Window window(mean, settings);
    const bool testNoise = settings.replaceNoisy && !noise.empty();
    Sum good;
    float noiseSum = 0;
    for (const std::uint32_t d : decom) {
        const bool noisy = testNoise && !(noise[d] <= settings.allowedNoise);
        const OnePointClass found = ClassOf(frame[d], window, noisy);
        if (!classes.empty()) classes[d] = found;
        if (found != OnePointClass::kGood) {
            gains[d] = 0;
            continue;
        }
        good.Add(frame[d]);
        if (!noise.empty()) noiseSum = static_cast<float>(double{noiseSum} + double{noise[d]});
    }
    const std::optional<float> refined = good.Mean();
    if (!refined) return std::nullopt;
    return OnePointResult{
        .mean = *refined, .noiseMean = static_cast<float>(double{noiseSum} / good.count), .good = good.count};
}

void NoiseToSteps(std::span<const float> noise, std::span<std::int16_t> out)
{
    std::ranges::transform(noise, out.begin(), [](float value) {
        const double steps = value * kNoiseSteps;
        return static_cast<std::int16_t>(std::fabs(steps) < 9.0e18 ? static_cast<std::int64_t>(steps) : 0);
    });
}

std::string OnePointResultText(const OnePointResult& result, std::size_t detectors, bool update, bool tellNoise,
                               float temperature)
{
    const std::int64_t bad = static_cast<std::int64_t>(detectors) - result.good;
    const auto percent = static_cast<float>(static_cast<double>(bad) * 100.0 / static_cast<double>(detectors));
    std::string text = Format("%s = %6ld (%5.1f %%)", update ? "Total new bad pixels" : "Total bad pixels",
                              static_cast<long>(bad), static_cast<double>(percent));
    text += Format("\n\nMean signal = %7.1f counts", static_cast<double>(result.mean));
    if (temperature > kColdestTemperature) text += Format(" @ %6.3f", static_cast<double>(temperature));
    if (tellNoise) text += Format("\n\nMean noise = %7.1f counts", static_cast<double>(result.noiseMean));
    return text;
}

}  // namespace kelvo
