// The arithmetic of the two-point calibration: from sums of raw frames at a low and a high source to a gain and an
// offset for each detector, and what there is to tell about them.
//
// All lists hold one entry a detector, in readout order. Two machines that calibrate from the same frames give the same
// files to the bit, so each type and each rounding below is part of the contract: operands have the type in which they
// are stored, an expression is worked out in double, and it is rounded once where it is stored as a float. Integer
// division and conversions truncate.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace kelvo {

struct TwoPointSettings {
    std::uint32_t frameCount = 30;  // at least 1
    std::int32_t noiseFloor = 25;   // counts; a detector must respond by more
    float gainRange = 0.22F;        // response about the array's mean that can be corrected
    std::int32_t minOffset = 400;   // counts below and above the mean low signal
    std::int32_t maxOffset = 400;
    bool replaceNoisy = true;
    float allowedNoise = 9.0F;  // counts
    std::int32_t unityOffset = 8192;
};

// What the run knows of the array once the sums are means.
struct ArrayMeans {
    std::int32_t good = 0;  // detectors that respond
    std::int32_t dead = 0;
    float meanLow = 0;  // counts, of the good ones
    float meanHigh = 0;
    float meanDelta = 0;
    float noiseMean = 0;  // counts rms
    float noiseStd = 0;
};

// Turns the sums into means, in place: a detector that responds by noiseFloor or less, a dead one, gets its low mean in
// both, and so a response of 0. With replaceNoisy noiseList takes noise in 1/20 count, rounded, in its low 16 bits, and
// limited to 0 to 2 unityOffset - 1: noise above 1638.35 counts turns negative and is stored as 0, and a unityOffset
// that isn't positive stores 0 throughout. Programs that read .noi files count on both. noise and noiseList may be
// empty without replaceNoisy.
//
// The noise of all detectors is summed in readout order in single precision, one accumulator each for the sum and the
// squares. Means of an array with good <= detectors / 20 stay 0: there is nothing to calibrate (EnoughGoodDetectors).
ArrayMeans SumsToMeans(std::span<std::int32_t> low, std::span<std::int32_t> high, std::span<const float> noise,
                       std::span<std::int16_t> noiseList, const TwoPointSettings& settings);

// More than one detector in twenty responds.
bool EnoughGoodDetectors(const ArrayMeans& means, std::size_t detectors);
// The two sources differ by noiseFloor counts or more.
bool EnoughRange(const ArrayMeans& means, std::int32_t noiseFloor);

// Why a detector can't be corrected, in the order in which the rules are tried. The names of the response classes are
// those of the coefficient, which is high where the detector responds strongly: that is "low response" in the result.
enum class DetectorClass : std::uint8_t {
    kGood,
    kOpen,   // no response, at or below the mean low signal
    kShort,  // no response, above it
    kLowResponseAbove,
    kLowResponseBelow,
    kHighResponseAbove,
    kHighResponseBelow,
    kLowOffset,
    kHighOffset,
    kNoisy,
};
constexpr std::size_t kDetectorClasses = 10;
// "Inoperable opens", ...; "Good".
const char* DetectorClassName(DetectorClass detectorClass);

struct ClassCounts {
    std::array<std::int32_t, kDetectorClasses> of{};
    std::int32_t operator[](DetectorClass detectorClass) const
    {
        return of.at(static_cast<std::size_t>(detectorClass));
    }
    std::int32_t Bad() const;  // all but the good ones
};

// The gain of each detector, its response over the array's mean, and its class; a detector that isn't good gets 0.
// classes may be empty.
ClassCounts ClassifyDetectors(std::span<const std::int32_t> lowMeans, std::span<const std::int32_t> highMeans,
                              std::span<const std::int16_t> noiseList, const ArrayMeans& means,
                              const TwoPointSettings& settings, std::span<float> gains,
                              std::span<DetectorClass> classes);

// The means as 16 bits, higher bits dropped.
void TruncateMeans(std::span<const std::int32_t> means, std::span<std::int16_t> out);

struct OffsetResult {
    float meanGain = 0;  // of detectors with a gain; unset (0) where there is none
    float meanOffset = 0;
    bool outOfRange = false;  // an offset doesn't fit 16 bits; its low 16 bits are stored
};
// offset = low mean - meanLow x gain, rounded half away from zero; 0 for a gain of 0. So a detector reads meanLow at
// the low source, and meanLow + meanDelta at the high one.
OffsetResult OffsetsOf(std::span<const float> gains, std::span<const std::int16_t> lowMeans, float meanLow,
                       std::span<std::int16_t> offsets);

struct CoefficientSpread {
    float gainStd = 0;  // sample deviations over detectors with a gain; 0 with fewer than two of them
    float offsetStd = 0;
};
CoefficientSpread SpreadOf(std::span<const float> gains, std::span<const std::int16_t> offsets, float meanGain,
                           float meanOffset);

// Rounded half away from zero; limited to 32 bits.
std::int32_t RoundCounts(float counts);

// "Total bad pixels = ...", the box "Bad pixel count".
std::string BadPixelCountText(const ClassCounts& counts, std::size_t detectors);

struct TwoPointResult {
    ClassCounts counts;
    ArrayMeans means;
    OffsetResult offsets;
    CoefficientSpread spread;
};
// The box "Kelvo Calibration Statistics". Temperatures in degrees C; they are told where cold < hot. Latin-1.
std::string TwoPointResultText(const TwoPointResult& result, std::size_t detectors, bool replaceNoisy,
                               float temperatureCold, float temperatureHot);

}  // namespace kelvo
