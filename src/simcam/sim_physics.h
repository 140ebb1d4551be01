// The physics of the simulated camera: from a temperature to photons, electrons, volts, counts. Pure functions of their
// arguments; no registers, files or clocks.
//
// Radiance is counted in photons: photons / (s m2 sr). Electrons are those that a detector gathers in one integration.
// Counts are those of the 14-bit A/D converter.
#pragma once

#include "simcam/sim_settings.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace kelvo {

constexpr double kKelvinAtZeroCelsius = 273.15;
constexpr int kConverterBits = 14;
constexpr double kHighestCount = (1 << kConverterBits) - 1;

// Photon radiance of a black body between two wavelengths, by Planck's law: the integral of 2c / w^4 / (e^(hc/wkT) - 1)
// over w. Summed as the series in e^(-n x), x = hc/wkT, to a relative 1e-12. temperatureK above 0.
double PhotonRadiance(double temperatureK, double fromUm, double toUm);

// The same, tabled every 0.01 K from -60 to 200 °C and linear in between; outside, the end's value.
class RadianceTable {
  public:
    RadianceTable(double fromUm, double toUm);
    double At(double celsius) const;

  private:
    std::vector<double> radiance_;
};

// What reaches the detector from a source that emits the part emissivity, and mirrors its surroundings with the rest.
double SourceRadiance(double sourceRadiance, double ambientRadiance, double emissivity);

// Electrons per second for a photon radiance of 1, of the mean detector: area x solid angle x transmission x quantum
// efficiency. The solid angle of a lens of f-number F is pi / (4 F^2 + 1) sr.
double MeanResponse(const SimSettings& settings);

// What the head's settings make of the video path.
struct VideoPath {
    bool biased = false;  // off: a detector gives 0 V and no electrons
    double integrationSeconds = 0;
    double responseFactor = 1;     // of each detector's response
    double darkFactor = 1;         // of each detector's dark current
    double zeroCounts = 0;         // of a detector without electrons and without an offset of its own
    double countsPerElectron = 0;  // above 0: volts fall with flux, counts rise
    double gainFactor = 1;         // counts at this gain for one count at gain code 0
};

// What the head is set to, as the video path sees it.
struct VideoSettings {
    bool biased = false;
    double integrationSeconds = 0;
    std::int32_t gainIndex = 0;  // row of the table of volts a count
    std::int32_t offsetDac = 128;
    std::int32_t detBias = 15;
    std::int32_t pedBias = 3;
    std::int32_t colGain = 4;
};
// Detector bias: 1 % of response and 2 % of dark current a step below 15. Pedestal bias: 0.02 V a step below 3. Column
// gain: 5 % a step from 4.
VideoPath MakeVideoPath(const SimSettings& settings, const VideoSettings& video);

// Mean and standard deviation, in counts, of a DC voltage at the inputs of the video path, past the detector: gain and
// offset act on it as on the detector's own, and the read noise of the path is there, but nothing of the detectors.
struct InputCounts {
    float mean = 0;
    float sigma = 0;
};
InputCounts CountsOfInput(const SimSettings& settings, const VideoSettings& video, double volts);

// One detector of the array, or all of them as parallel lists.
struct DetectorView {
    std::span<const float> response;  // electrons per second for a photon radiance of 1, shading included
    std::span<const float> dark;      // electrons per second
    std::span<const float> offset;    // counts at gain code 0
    std::span<const float> noise;     // counts rms at gain code 0, without shot noise
};

// Mean and standard deviation, in counts, of each detector of a run under its photon radiance. Electrons stop at the
// full well; their shot noise is the square root of their number. All spans hold as many entries.
void ExposeDetectors(const VideoPath& path, double fullWellElectrons, const DetectorView& detectors,
                     std::span<const float> radiance, std::span<float> mean, std::span<float> sigma);

// 64 well-mixed bits of a number.
constexpr std::uint64_t MixBits(std::uint64_t x)
{
    x += 0x9E3779B97F4A7C15U;  // so that 0 doesn't stay 0
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9U;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBU;
    return x ^ (x >> 31);
}

// 0 to below 1, from the upper bits.
constexpr double UniformOfBits(std::uint64_t bits)
{
    return static_cast<double>(bits >> 11) * 0x1p-53;
}

// A standard normal from 14 bits: the quantiles at the middles of 16384 equal steps of probability, scaled to a
// variance of exactly 1. The mean and all odd moments are 0 by symmetry; the tails end at +-4.0.
constexpr int kNormalBits = 14;
const std::array<float, 1 << kNormalBits>& NormalTable();
inline float NormalOfBits(std::uint64_t bits)
{
    return NormalTable()[bits & ((1U << kNormalBits) - 1U)];
}

// The key of one frame's noise.
constexpr std::uint64_t NoiseKey(std::uint64_t seed, std::int64_t frame)
{
    return MixBits(MixBits(seed) ^ static_cast<std::uint64_t>(frame));
}
// The one normal of a detector in a frame.
float DetectorNormal(std::uint64_t noiseKey, std::uint32_t detector);

// Counts of a run of detectors in a frame: mean + sigma x normal, rounded, within 0 to 16383. firstDetector and the
// length are multiples of 4 (four detectors share one draw of 64 bits).
void DrawCounts(std::uint64_t noiseKey, std::uint32_t firstDetector, std::span<const float> mean,
                std::span<const float> sigma, std::span<std::int16_t> counts);
// Here, so that each loop over detectors has it in itself.
inline std::int16_t CountOf(float value)
{
    // The lower limit comes first, so that what is no number reads 0.
    const float within = std::min(std::max(0.0F, value), static_cast<float>(kHighestCount));
    const float halfUp = within + 0.5F;  // truncated below, which a compiler does for several pixels at once
    return static_cast<std::int16_t>(static_cast<std::int32_t>(halfUp));
}

}  // namespace kelvo
