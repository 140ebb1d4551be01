// Temporal noise of each pixel over frames of a uniform source, and the temperature that it stands for. Pure
// arithmetic: no window, no camera, no file.
//
// Deviation: the sample's, sqrt(sum of (count - mean)^2 / (n - 1)) over n frames, in counts. Sums of counts and of
// their squares are whole numbers that are held exactly, so that one pass over the frames is enough.
//
// NETD, the noise equivalent temperature difference, is the deviation over the pixel's own response in counts a degree:
//
//     NETD = deviation / (gain x (IntensityHot - IntensityCold) / (TemperatureHot - TemperatureCold))
//
// The pair of intensities and temperatures is that of a two-point calibration: counts of the array's mean response at
// its two sources. Gain is the pixel's response over the mean one, as the correction divides by it. Of raw frames,
// which the correction hasn't divided, it is the gain of the detector that the pixel shows; of corrected frames it
// is 1. Both give the same NETD, but for the rounding of corrected counts to whole ones. The sign of the response
// doesn't count.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace kelvo {

// With no more the sums are exact in 32 bits, their squares in the mantissa of a double.
constexpr std::uint32_t kMostNoiseFrames = 65535;
constexpr std::uint32_t kLeastNoiseFrames = 2;

class NoiseSums {
  public:
    // nullopt where memory is refused.
    static std::optional<NoiseSums> Make(std::size_t pixels);

    // frame holds a count for each pixel. Nothing is added to kMostNoiseFrames.
    void Add(std::span<const std::int16_t> frame);

    std::size_t Pixels() const { return sums_.size(); }
    std::uint32_t Frames() const { return frames_; }
    double MeanOf(std::size_t pixel) const;       // counts; 0 without a frame
    double DeviationOf(std::size_t pixel) const;  // counts; 0 of fewer than two frames
    // One of its counts lay at an end of the converter (pixel/saturation.h), which cuts its noise off. Says something
    // of raw counts only.
    bool WasSaturated(std::size_t pixel) const { return saturated_[pixel] != 0; }

  private:
    NoiseSums() = default;

    std::vector<std::int32_t> sums_;
    std::vector<double> squares_;
    std::vector<std::uint8_t> saturated_;
    std::uint32_t frames_ = 0;
};

// What a two-point calibration tells of its sources; -10000 and -999.0 mark none (imagefile/header.h).
struct NoisePair {
    std::int32_t intensityCold = 0;  // counts
    std::int32_t intensityHot = 0;
    float temperatureCold = 0;  // °C
    float temperatureHot = 0;
};
// Counts a degree of the mean response, without its sign; nullopt where the pair marks none, or its intensities or
// temperatures are equal.
std::optional<double> CountsPerDegree(const NoisePair& pair);

// Where the pixels of the image are found among the sums, and what is known of them. Each list may be empty.
struct NoiseLists {
    std::span<const std::uint32_t>
        order;                          // for each image pixel the index of its sums; empty: they stand in image order
    std::span<const float> gains;       // one for each of the sums; empty: the frames are corrected
    std::span<const std::uint8_t> bad;  // one for each image pixel, non-zero for a bad one; empty: none is
};

// In image order, one entry a pixel. A bad pixel isn't a number in deviation and netd.
struct PixelNoise {
    std::vector<float> mean;       // counts; 0 of a pixel that has no sums
    std::vector<float> deviation;  // counts
    std::vector<float> netd;       // millikelvin; empty without countsPerDegree
    std::size_t badPixels = 0;
    std::size_t saturatedPixels = 0;  // of the others, those that NoiseSums::WasSaturated names
};
// A gain within +-0.001 says that the detector doesn't follow the flux: its pixel counts as bad, and so does one whose
// entry of the order or of the gains is missing. nullopt where memory is refused.
std::optional<PixelNoise> NoiseOf(const NoiseSums& sums, const NoiseLists& lists,
                                  std::optional<double> countsPerDegree);

// What the values of all pixels measure; those that aren't numbers are left out. All 0 where none is left.
struct NoiseFigures {
    std::size_t pixels = 0;  // that are left
    double median = 0;       // of an even number the mean of the two in the middle
    double rms = 0;          // root of the mean of the squares
    double smallest = 0;
    double largest = 0;
    double worst = 0;                // the 99th percentile: the smallest value that 99 % of the pixels don't exceed
    std::vector<std::size_t> above;  // the pixels whose value exceeds it, at most 1 %, the worst first
};
// nullopt where memory is refused.
std::optional<NoiseFigures> FiguresOfNoise(std::span<const float> values);

// Values in equal steps from low to below high; what lies beyond the ends is counted apart.
struct NoiseHistogram {
    double low = 0;
    double high = 0;
    std::vector<std::uint32_t> bins;
    std::uint32_t below = 0;
    std::uint32_t above = 0;
};
NoiseHistogram CountNoise(std::span<const float> values, double low, double high, std::size_t bins);

}  // namespace kelvo
