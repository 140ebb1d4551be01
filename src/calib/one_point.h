// The arithmetic of the one-point calibration: the mean of one source over the detectors that are good, and the
// detectors that aren't.
//
// frame (counts), noise (counts rms; empty: not measured) and gains are in readout order and are reached through the
// table decom, in image order. Rounding as in calib/two_point.h; bounds are worked out in double from the mean in
// force.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelvo {

struct OnePointSettings {
    std::int32_t minOffset = 400;  // counts below and above the mean
    std::int32_t maxOffset = 400;
    bool replaceNoisy = true;
    float allowedNoise = 9.0F;  // counts
};

struct OnePointResult {
    float mean = 0;       // counts
    float noiseMean = 0;  // counts rms; 0 where it wasn't measured
    std::int32_t good = 0;
};

// The mean of all pixels.
float MeanOfPixels(std::span<const std::int16_t> frame, std::span<const std::uint32_t> decom);

// All pixels are good: the mean stands, the noise is averaged over all.
OnePointResult AcceptAllPixels(float mean, std::span<const float> noise, std::size_t pixels);

enum class OnePointClass : std::uint8_t { kGood, kLow, kHigh, kNoisy };

// The first pass: the mean of what lies inside the window about mean, its ends left out. nullopt: nothing does.
std::optional<float> MeanInsideWindow(std::span<const std::int16_t> frame, std::span<const std::uint32_t> decom,
                                      float mean, const OnePointSettings& settings);
// The second pass and the mean of what it finds good: inside the window about mean, its ends included, and not noisier
// than allowed. All others get a gain of 0, and the good ones keep theirs; classes (readout order, may be empty) takes
// why. nullopt where nothing is good; the gains are zeroed all the same.
std::optional<OnePointResult> RejectOutsideWindow(std::span<const std::int16_t> frame, std::span<const float> noise,
                                                  std::span<const std::uint32_t> decom, float mean,
                                                  const OnePointSettings& settings, std::span<float> gains,
                                                  std::span<OnePointClass> classes);

// noise x 20 without its fraction, in the low 16 bits: neither rounded nor limited, other than in a two-point run.
void NoiseToSteps(std::span<const float> noise, std::span<std::int16_t> out);

// The box "Calibration results". The temperature (degrees C) is told above -274, the noise where tellNoise.
std::string OnePointResultText(const OnePointResult& result, std::size_t detectors, bool update, bool tellNoise,
                               float temperature);

}  // namespace kelvo
