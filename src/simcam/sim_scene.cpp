#include "simcam/sim_scene.h"

#include "platform/files.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "simcam/sim_settings.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <numeric>
#include <string_view>

namespace kelvo {

namespace {

constexpr std::size_t kLongestRawFile = std::size_t{256} << 20;
constexpr std::int32_t kLowestSample = -32768;
constexpr std::size_t kSampleValues = 65536;

// From the first column at or after one place to the last before another, both in parts of the array's width.
void FillBetween(const ArrayRow& row, double from, double to, float value, std::span<float> radiance)
{
    const auto columnOf = [&](double place) {
        const double column = std::ceil(place * row.arrayColumns - 0.5) - row.firstColumn;
        return static_cast<std::size_t>(std::clamp(column, 0.0, static_cast<double>(radiance.size())));
    };
    const std::size_t first = columnOf(from);
    const std::size_t last = columnOf(to);
    if (first < last) std::ranges::fill(radiance.subspan(first, last - first), value);
}

void DrawBars(const BenchLight& light, double background, double seconds, double down, const ArrayRow& row,
              std::span<float> radiance)
{
    constexpr double kTop = 0.70;
    constexpr double kBottom = 0.88;
    constexpr double kBarWidth = 0.03;
    constexpr int kBars = 4;
    constexpr double kPatternWidth = (2 * kBars - 1) * kBarWidth;
    constexpr double kSecondsAcross = 20;
    constexpr double kWarmerDegrees = 0.8;
    if (down < kTop || down >= kBottom) return;
    const double passed = std::fmod(seconds, kSecondsAcross) / kSecondsAcross;
    const double left = 1.0 - passed * (1.0 + kPatternWidth);
    const float bright = light.At(background + kWarmerDegrees);
    for (int bar = 0; bar < kBars; ++bar) {
        const double from = left + 2 * bar * kBarWidth;
        FillBetween(row, from, from + kBarWidth, bright, radiance);
    }
}

void DrawDisc(const BenchLight& light, double background, double seconds, double down, const ArrayRow& row,
              std::span<float> radiance)
{
    constexpr double kRadius = 0.12;  // of the array's height
    constexpr double kSecondsAcross = 9;
    constexpr double kSecondsDown = 7;
    constexpr double kWarmerDegrees = 4;
    const double centreAcross = 0.5 + 0.35 * std::sin(2.0 * std::numbers::pi * seconds / kSecondsAcross);
    const double centreDown = 0.45 + 0.28 * std::cos(2.0 * std::numbers::pi * seconds / kSecondsDown);
    const double square = kRadius * kRadius - (down - centreDown) * (down - centreDown);
    if (square <= 0) return;
    const double half = std::sqrt(square) * row.arrayRows / row.arrayColumns;  // a circle on square detectors
    FillBetween(row, centreAcross - half, centreAcross + half, light.At(background + kWarmerDegrees), radiance);
}

}  // namespace

void MovingSceneRow(const BenchLight& light, double backgroundDegrees, double seconds, const ArrayRow& row,
                    std::span<float> radiance)
{
    constexpr double kDegreesTopToBottom = 1;
    const double down = (row.row + 0.5) / row.arrayRows;
    const double background = backgroundDegrees + kDegreesTopToBottom * (down - 0.5);
    std::ranges::fill(radiance, light.At(background));
    DrawBars(light, background, seconds, down, row, radiance);
    DrawDisc(light, background, seconds, down, row, radiance);
}

std::optional<RawSize> RawSizeOfName(const std::string& path)
{
    std::string name;
    SplitPath(path, nullptr, nullptr, &name, nullptr);
    const std::size_t cross = LowerAscii(name).rfind('x');
    if (cross == std::string::npos || cross == 0) return std::nullopt;
    std::size_t first = cross;
    while (first > 0 && name[first - 1] >= '0' && name[first - 1] <= '9') --first;
    RawSize size;
    const auto columns = std::from_chars(name.data() + first, name.data() + cross, size.columns);
    const auto rows = std::from_chars(name.data() + cross + 1, name.data() + name.size(), size.rows);
    if (columns.ec != std::errc{} || rows.ec != std::errc{}) return std::nullopt;
    return size;
}

std::optional<RawScene> ReadRawScene(const std::string& path, std::int32_t columns, std::int32_t rows,
                                     std::string& error)
{
    constexpr std::int32_t kMaxSide = 4096;
    const auto fail = [&](const char* what) {
        error = path + ":\n" + what;
        return std::nullopt;
    };
    if (columns == 0 && rows == 0) {
        return fail(
            "The file's name doesn't tell the size of its frames, as scene_160x120.raw would.\n"
            "Their columns and rows have to be given, from 1 to 4096.");
    }
    if (columns < 1 || rows < 1 || columns > kMaxSide || rows > kMaxSide) {
        return fail("The columns and rows of the raw frames have to be from 1 to 4096.");
    }
    const std::optional<std::string> bytes = ReadWholeFile(path, kLongestRawFile);
    if (!bytes) return fail("The raw frames can't be read, or are longer than 256 MB.");
    const std::size_t pixels = static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows);
    const std::size_t samples = bytes->size() / 2;
    if (samples == 0 || bytes->size() % (2 * pixels) != 0) {
        return fail(Format("The file doesn't hold whole frames of %d x %d 16-bit values.", columns, rows).c_str());
    }
    RawScene scene;
    scene.columns = columns;
    scene.rows = rows;
    scene.frames = static_cast<std::int32_t>(samples / pixels);
    if (!AllocateBlock(scene.samples, samples)) return fail("There is no memory for the raw frames.");
    for (std::size_t i = 0; i < samples; ++i) {
        const auto low = static_cast<std::uint8_t>((*bytes)[2 * i]);
        const auto high = static_cast<std::uint8_t>((*bytes)[2 * i + 1]);
        scene.samples[i] = static_cast<std::int16_t>(static_cast<std::uint16_t>(low | (high << 8)));
    }
    const std::span<const std::int16_t> first = std::span<const std::int16_t>(scene.samples).first(pixels);
    scene.mean = std::accumulate(first.begin(), first.end(), 0.0) / static_cast<double>(pixels);
    return scene;
}

std::vector<float> LightOfSamples(const BenchLight& light, const RawScene& scene, double meanDegrees,
                                  double countsPerDegree)
{
    std::vector<float> lightOfSample(kSampleValues);
    for (std::size_t i = 0; i < lightOfSample.size(); ++i) {
        const double sample = static_cast<double>(i) + kLowestSample;
        const double degrees = meanDegrees + (sample - scene.mean) / countsPerDegree;
        lightOfSample[i] = light.At(std::clamp(degrees, kLowestBenchDegrees, kHighestBenchDegrees));
    }
    return lightOfSample;
}

void RawSceneRow(const RawScene& scene, std::span<const float> lightOfSample, std::int32_t frame, const ArrayRow& row,
                 std::span<float> radiance)
{
    const std::int32_t sourceRow = row.row * scene.rows / row.arrayRows;
    const std::size_t start =
        (static_cast<std::size_t>(frame) * static_cast<std::size_t>(scene.rows) + static_cast<std::size_t>(sourceRow)) *
        static_cast<std::size_t>(scene.columns);
    for (std::size_t i = 0; i < radiance.size(); ++i) {
        const std::int32_t column = row.firstColumn + static_cast<std::int32_t>(i);
        const auto sourceColumn = static_cast<std::size_t>(column * scene.columns / row.arrayColumns);
        const std::int32_t sample = scene.samples[start + sourceColumn];
        radiance[i] = lightOfSample[static_cast<std::size_t>(sample - kLowestSample)];
    }
}

}  // namespace kelvo
