// What stands in front of the simulated camera, as photon radiance on each detector: a uniform source, the moving
// scene, or raw frames from disk.
#pragma once

#include "simcam/sim_physics.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelvo {

// Raw frames as a scene: their mean value stands at the scene's temperature, a fixed number of counts for a degree.
struct RawScene {
    std::int32_t columns = 0;
    std::int32_t rows = 0;
    std::int32_t frames = 0;
    std::vector<std::int16_t> samples;  // frame after frame, row by row
    double mean = 0;                    // of the first frame
};

// 16-bit signed little-endian values without a header. nullopt, with what is wrong in error.
std::optional<RawScene> ReadRawScene(const std::string& path, std::int32_t columns, std::int32_t rows,
                                     std::string& error);
// "..._160x120.raw" is 160 columns by 120 rows; nullopt where a name tells nothing.
struct RawSize {
    std::int32_t columns = 0;
    std::int32_t rows = 0;
};
std::optional<RawSize> RawSizeOfName(const std::string& path);

// A row of detectors: where it lies on the array.
struct ArrayRow {
    std::int32_t row = 0;
    std::int32_t firstColumn = 0;
    std::int32_t arrayRows = 0;
    std::int32_t arrayColumns = 0;
};

// How bright a temperature is in front of this camera: the source's own radiance and what it mirrors.
class BenchLight {
  public:
    BenchLight(const RadianceTable& table, double emissivity, double ambientDegrees)
        : table_(table), emissivity_(emissivity), ambient_(table.At(ambientDegrees))
    {
    }
    float At(double celsius) const
    {
        return static_cast<float>(SourceRadiance(table_.At(celsius), ambient_, emissivity_));
    }

  private:
    const RadianceTable& table_;
    double emissivity_;
    double ambient_;
};

// The moving scene: a background that grows 1 °C warmer from top to bottom, a disc 4 °C above it that wanders over the
// array (once around in 9 s across and 7 s down), and a bar pattern, 0.8 °C above, that drifts to the left through the
// lower third (across in 20 s). The bars are about as strong as the array's own pattern: a correction makes them plain.
void MovingSceneRow(const BenchLight& light, double backgroundDegrees, double seconds, const ArrayRow& row,
                    std::span<float> radiance);

// A row of a raw scene, each detector taking the nearest sample of the frame that stands at that time. lightOfSample
// holds the radiance of each value, from -32768 on.
std::vector<float> LightOfSamples(const BenchLight& light, const RawScene& scene, double meanDegrees,
                                  double countsPerDegree);
void RawSceneRow(const RawScene& scene, std::span<const float> lightOfSample, std::int32_t frame, const ArrayRow& row,
                 std::span<float> radiance);

}  // namespace kelvo
