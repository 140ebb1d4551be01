#include "calib/two_point.h"

#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kelvo {

namespace {

constexpr double kNoiseSteps = 20.0;      // a count in the noise list
constexpr double kOffsetScale = 16384.0;  // the offset's uniformity is told of this, whatever the camera's range
constexpr std::size_t kOneGoodInThat = 20;

constexpr std::array<const char*, kDetectorClasses> kClassNames = {
    "Good",
    "Inoperable opens",
    "Inoperable shorts",
    "Low response (I>mean)",
    "Low response (I<mean)",
    "High response (I>mean)",
    "High response (I<mean)",
    "Low offset",
    "High offset",
    "Noisy",
};

// Toward zero; 0 for what is no number or has none in 64 bits.
std::int64_t Truncate(double value)
{
    return std::isfinite(value) && std::fabs(value) < 9.0e18 ? static_cast<std::int64_t>(value) : 0;
}

double RoundHalfAway(double value)
{
    return value + std::copysign(0.5, value);
}

// The sum is rounded by half a frame count first. The quotient in double is exact to the whole number that division of
// integers would give, whose remainder is at least 2^-31 of it, and quicker.
std::int32_t MeanOfSum(std::int32_t sum, std::uint32_t frameCount)
{
    return static_cast<std::int32_t>((static_cast<double>(sum) + (frameCount >> 1U)) / frameCount);
}

std::int16_t NoiseEntry(float noise, std::int32_t unityOffset)
{
    const auto steps = static_cast<std::int16_t>(Truncate(noise * kNoiseSteps + 0.5));
    const std::int64_t limit = 2 * std::int64_t{unityOffset} - 1;
    return static_cast<std::int16_t>(std::max<std::int64_t>(std::min<std::int64_t>(steps, limit), 0));
}

// One accumulator each: another order of summing gives other last digits.
struct NoiseSums {
    float sum = 0;
    float squares = 0;

    void Add(float noise)
    {
        sum += noise;  // rounds as a sum in double that is stored as a float
        squares = static_cast<float>(double{squares} + double{noise} * double{noise});
    }
    void Store(ArrayMeans& means) const
    {
        const double count = means.good;
        means.noiseMean = static_cast<float>(sum / count);
        // Of equal noises the single-precision sums may leave a trace below zero.
        const double variance = (squares - double{sum} * double{sum} / count) / (count - 1);
        means.noiseStd = variance > 0 ? static_cast<float>(std::sqrt(variance)) : 0.0F;
    }
};

// Sums of whole numbers: exact in 64 bits, as they are in double.
struct SignalSums {
    std::int64_t low = 0;
    std::int64_t high = 0;

    void Add(std::int32_t lowMean, std::int32_t highMean)
    {
        low += lowMean;
        high += highMean;
    }
    void Store(ArrayMeans& means) const
    {
        const double count = means.good;
        means.meanLow = static_cast<float>(static_cast<double>(low) / count);
        means.meanHigh = static_cast<float>(static_cast<double>(high) / count);
        means.meanDelta = static_cast<float>(static_cast<double>(high - low) / count);
    }
};

// The limits of a run, worked out once.
struct Rules {
    Rules(const ArrayMeans& means, const TwoPointSettings& settingsOfRun)
        : settings(settingsOfRun),
          meanLow(means.meanLow),
          meanDelta(means.meanDelta),
          upper(static_cast<float>(std::fabs(settingsOfRun.gainRange + 1.0))),
          lower(static_cast<float>(std::fabs(1.0 - settingsOfRun.gainRange)))
    {
    }

    // gain: the detector's response over the array's mean, 0 for a dead one.
    DetectorClass ClassOf(std::int32_t lowMean, double gain, std::int16_t noise) const
    {
        const double low = lowMean;
        const bool above = low > meanLow;
        if (gain == 0) return above ? DetectorClass::kShort : DetectorClass::kOpen;
        const double response = std::fabs(gain);
        if (response > upper) return above ? DetectorClass::kLowResponseAbove : DetectorClass::kLowResponseBelow;
        if (response < lower) return above ? DetectorClass::kHighResponseAbove : DetectorClass::kHighResponseBelow;
        if (low + settings.minOffset < meanLow) return DetectorClass::kLowOffset;
        if (low - settings.maxOffset > meanLow) return DetectorClass::kHighOffset;
        if (settings.replaceNoisy && noise / kNoiseSteps > settings.allowedNoise) return DetectorClass::kNoisy;
        return DetectorClass::kGood;
    }

    const TwoPointSettings& settings;
    double meanLow;
    double meanDelta;
    float upper;
    float lower;
};

std::string Counted(const char* name, std::int32_t bad, std::size_t detectors)
{
    const auto percent = static_cast<float>(bad / static_cast<double>(detectors) * 100.0);
    return Format("%s%6ld (%5.1f %%)", name, static_cast<long>(bad), static_cast<double>(percent));
}

std::string Signal(const char* name, float counts, bool tellTemperature, float temperature)
{
    std::string text = Format("%s%7.1f counts", name, static_cast<double>(counts));
    if (tellTemperature) text += Format(" @ %6.3f", static_cast<double>(temperature));
    return text;
}

std::string Sensitivity(const ArrayMeans& means, float temperatureCold, float temperatureHot)
{
    const double degrees = double{temperatureHot} - double{temperatureCold};
    const double counts = double{means.meanHigh} - double{means.meanLow};
    return Format(
        "\nSensitivity: %7.4f \xB0"
        "C/count  (%.1f counts/\xB0"
        "C)",
        degrees / counts, counts / degrees);
}

std::string Noise(const ClassCounts& counts, const ArrayMeans& means, std::size_t detectors)
{
    const std::int32_t noisy = counts[DetectorClass::kNoisy];
    return Counted("\nBad response pixels: ", counts.Bad() - noisy, detectors) +
           Counted("\nBad noise pixels: ", noisy, detectors) +
           Format("\nMean noise: %5.2f \xB1 %4.2f counts", static_cast<double>(means.noiseMean),
                  static_cast<double>(means.noiseStd));
}

std::string Uniformity(const OffsetResult& offsets, const CoefficientSpread& spread)
{
    const double meanGain = std::fabs(double{offsets.meanGain});
    return Format("\n\nGain Uniformity: \xB1 %4.2f %%\nOffset Uniformity: \xB1 %4.2f %%",
                  meanGain != 0 ? spread.gainStd * 100.0 / meanGain : 0.0,  // without a good detector
                  spread.offsetStd * 100.0 / kOffsetScale);
}

}  // namespace

ArrayMeans SumsToMeans(std::span<std::int32_t> low, std::span<std::int32_t> high, std::span<const float> noise,
                       std::span<std::int16_t> noiseList, const TwoPointSettings& settings)
{
    ArrayMeans means;
    SignalSums signals;
    NoiseSums noises;
    for (std::size_t i = 0; i < low.size(); ++i) {
        const std::int32_t lowMean = MeanOfSum(low[i], settings.frameCount);
        const std::int32_t highMean = MeanOfSum(high[i], settings.frameCount);
        low[i] = lowMean;
        if (settings.replaceNoisy) noiseList[i] = NoiseEntry(noise[i], settings.unityOffset);
        if (std::abs(std::int64_t{highMean} - lowMean) <= settings.noiseFloor) {
            ++means.dead;
            high[i] = lowMean;
            continue;
        }
        ++means.good;
        high[i] = highMean;
        signals.Add(lowMean, highMean);
        if (settings.replaceNoisy) noises.Add(noise[i]);
    }
    if (!EnoughGoodDetectors(means, low.size())) return means;
    signals.Store(means);
    noises.Store(means);
    return means;
}

bool EnoughGoodDetectors(const ArrayMeans& means, std::size_t detectors)
{
    return static_cast<std::size_t>(means.good) > detectors / kOneGoodInThat;
}

bool EnoughRange(const ArrayMeans& means, std::int32_t noiseFloor)
{
    return std::fabs(double{means.meanDelta}) >= noiseFloor;
}

const char* DetectorClassName(DetectorClass detectorClass)
{
    return kClassNames.at(static_cast<std::size_t>(detectorClass));
}

std::int32_t ClassCounts::Bad() const
{
    std::int32_t bad = 0;
    for (std::size_t i = 1; i < of.size(); ++i) bad += of.at(i);
    return bad;
}

ClassCounts ClassifyDetectors(std::span<const std::int32_t> lowMeans, std::span<const std::int32_t> highMeans,
                              std::span<const std::int16_t> noiseList, const ArrayMeans& means,
                              const TwoPointSettings& settings, std::span<float> gains,
                              std::span<DetectorClass> classes)
{
    const Rules rules(means, settings);
    ClassCounts counts;
    for (std::size_t i = 0; i < lowMeans.size(); ++i) {
        const std::int32_t delta = highMeans[i] - lowMeans[i];
        const double gain = delta == 0 ? 0 : delta / rules.meanDelta;
        const DetectorClass found = rules.ClassOf(lowMeans[i], gain, settings.replaceNoisy ? noiseList[i] : 0);
        gains[i] = found == DetectorClass::kGood ? static_cast<float>(gain) : 0.0F;
        ++counts.of.at(static_cast<std::size_t>(found));
        if (!classes.empty()) classes[i] = found;
    }
    return counts;
}

void TruncateMeans(std::span<const std::int32_t> means, std::span<std::int16_t> out)
{
    std::ranges::transform(means, out.begin(), [](std::int32_t mean) { return static_cast<std::int16_t>(mean); });
}

OffsetResult OffsetsOf(std::span<const float> gains, std::span<const std::int16_t> lowMeans, float meanLow,
                       std::span<std::int16_t> offsets)
{
    OffsetResult result;
    double gainSum = 0;
    std::uint32_t offsetSum = 0;  // 32 bits that wrap
    std::int32_t count = 0;
    for (std::size_t i = 0; i < gains.size(); ++i) {
        const float value = gains[i] != 0 ? static_cast<float>(lowMeans[i] - double{meanLow} * double{gains[i]}) : 0.0F;
        const std::int64_t rounded = Truncate(RoundHalfAway(value));
        offsets[i] = static_cast<std::int16_t>(rounded);
        // What has no 64 bits is out of range too, though 0 is stored.
        if (rounded != offsets[i] || !(std::fabs(value) < 40000.0F)) result.outOfRange = true;
        if (gains[i] == 0) continue;
        gainSum += gains[i];
        offsetSum += static_cast<std::uint32_t>(offsets[i]);
        ++count;
    }
    if (count == 0) return result;
    result.meanGain = static_cast<float>(gainSum / count);
    result.meanOffset = static_cast<float>(static_cast<double>(static_cast<std::int32_t>(offsetSum)) / count);
    return result;
}

CoefficientSpread SpreadOf(std::span<const float> gains, std::span<const std::int16_t> offsets, float meanGain,
                           float meanOffset)
{
    double gainSquares = 0;
    double offsetSquares = 0;
    std::int32_t count = 0;
    for (std::size_t i = 0; i < gains.size(); ++i) {
        if (gains[i] == 0) continue;
        const float gainDifference = gains[i] - meanGain;
        const float offsetDifference = static_cast<float>(offsets[i]) - meanOffset;
        gainSquares += double{gainDifference} * gainDifference;
        offsetSquares += double{offsetDifference} * offsetDifference;
        ++count;
    }
    if (count < 2) return {};
    return {static_cast<float>(std::sqrt(gainSquares / (count - 1.0))),
            static_cast<float>(std::sqrt(offsetSquares / (count - 1.0)))};
}

std::int32_t RoundCounts(float counts)
{
    constexpr std::int64_t kLowest = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t kHighest = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp(Truncate(RoundHalfAway(counts)), kLowest, kHighest));
}

std::string BadPixelCountText(const ClassCounts& counts, std::size_t detectors)
{
    const auto count = [&](DetectorClass of) { return static_cast<long>(counts[of]); };
    const auto total = static_cast<long>(counts.Bad());
    return Format(
        "Total bad pixels = %6ld (%5.1f %%)\n\nInoperable opens = %5ld\nInoperable shorts = %5ld\n\n"
        "Low response (I>mean) = %5ld\nLow response (I<mean) = %5ld\nHigh response (I>mean) = %5ld\n"
        "High response (I<mean) = %5ld\n\nHigh offset = %5ld\nLow offset = %5ld\n\nNoisy = %5ld",
        total, static_cast<double>(total) * 100.0 / static_cast<double>(detectors), count(DetectorClass::kOpen),
        count(DetectorClass::kShort), count(DetectorClass::kLowResponseAbove), count(DetectorClass::kLowResponseBelow),
        count(DetectorClass::kHighResponseAbove), count(DetectorClass::kHighResponseBelow),
        count(DetectorClass::kHighOffset), count(DetectorClass::kLowOffset), count(DetectorClass::kNoisy));
}

std::string TwoPointResultText(const TwoPointResult& result, std::size_t detectors, bool replaceNoisy,
                               float temperatureCold, float temperatureHot)
{
    const bool tellTemperatures = temperatureCold < temperatureHot;
    std::string text = Counted("Total bad pixels: ", result.counts.Bad(), detectors);
    if (replaceNoisy) text += Noise(result.counts, result.means, detectors);
    text += Signal("\n\nMean Low Signal: ", result.means.meanLow, tellTemperatures, temperatureCold);
    text += Signal("\nMean High Signal: ", result.means.meanHigh, tellTemperatures, temperatureHot);
    if (tellTemperatures) text += Sensitivity(result.means, temperatureCold, temperatureHot);
    return text + Uniformity(result.offsets, result.spread);
}

}  // namespace kelvo
