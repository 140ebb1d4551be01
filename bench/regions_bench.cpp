// Regions measured on every frame: sixteen of 64 x 64 pixels in a frame of 640 x 512, with the raw frame's saturation
// and the counts outside the sources, as a share of the 10 ms that a frame has at 100 Hz; and beside a plain loop over
// the same pixels that sums in double, on one thread in one run.
//
//     build/bench/bench/regions_bench
//
// Both give the same mean, deviation and extremes, which is checked before anything is measured. Rounds go in turn;
// each figure is the median of the rounds.
#include "median.h"
#include "regions/region_measure.h"
#include "rounds.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <numeric>
#include <random>
#include <vector>

namespace {

using namespace kelvo;

constexpr std::int32_t kColumns = 640;
constexpr std::int32_t kRows = 512;
constexpr std::int32_t kSide = 64;
constexpr double kFrameUs = 10'000;

struct Frame {
    std::vector<std::int16_t> counts;
    std::vector<std::int16_t> raw;
    std::vector<std::uint32_t> decomList;
};

Frame MakeFrame()
{
    Frame frame;
    std::mt19937 random(1);
    std::normal_distribution<float> counts(6000, 900);
    frame.counts.resize(std::size_t{kColumns} * kRows);
    for (std::int16_t& count : frame.counts) count = static_cast<std::int16_t>(counts(random));
    frame.decomList.resize(frame.counts.size());
    std::iota(frame.decomList.rbegin(), frame.decomList.rend(), 0U);
    frame.raw.assign(frame.counts.rbegin(), frame.counts.rend());
    return frame;
}

std::vector<RegionPlace> Places()
{
    std::vector<RegionPlace> places;
    for (std::int32_t i = 0; i < 16; ++i) {
        const std::int32_t x = 17 + i % 4 * 150;
        const std::int32_t y = 11 + i / 4 * 120;
        places.push_back({x, y, x + kSide - 1, y + kSide - 1});
    }
    return places;
}

struct Plain {
    double mean = 0;
    double deviation = 0;
    std::int16_t least = 32767;
    std::int16_t most = -32768;
};

Plain PlainLoop(const std::vector<std::int16_t>& counts, const RegionPlace& place)
{
    Plain plain;
    double sum = 0;
    double squares = 0;
    for (std::int32_t y = place.y1; y <= place.y2; ++y) {
        for (std::int32_t x = place.x1; x <= place.x2; ++x) {
            const std::int16_t count = counts[static_cast<std::size_t>(y * kColumns + x)];
            sum += count;
            squares += static_cast<double>(count) * count;
            if (count < plain.least) plain.least = count;
            if (count > plain.most) plain.most = count;
        }
    }
    constexpr double kPixels = kSide * kSide;
    plain.mean = sum / kPixels;
    plain.deviation = std::sqrt((squares - sum * plain.mean) / (kPixels - 1));
    return plain;
}

}  // namespace

int main(int argc, char** argv)
{
    const int rounds = RoundsOf(argc, argv, 300);
    const Frame frame = MakeFrame();
    const std::vector<RegionPlace> places = Places();
    std::vector<std::vector<PixelRun>> runs;
    for (const RegionPlace& place : places) {
        runs.push_back(PixelsOf(RegionShape::kRectangle, place, kColumns, kRows));
    }
    MeasureOptions options;
    options.raw = frame.raw;
    options.decomList = frame.decomList;
    options.sources = CountRange{.low = 4000, .high = 9000};

    for (std::size_t i = 0; i < places.size(); ++i) {
        const RegionFigures figures = MeasureRegion(frame.counts, kColumns, kRows, runs[i], options);
        const Plain plain = PlainLoop(frame.counts, places[i]);
        if (std::fabs(figures.mean - plain.mean) > 1e-9 || std::fabs(figures.deviation - plain.deviation) > 1e-6 ||
            figures.least.count != plain.least || figures.most.count != plain.most) {
            std::printf("region %zu: the figures differ\n", i);
            return 1;
        }
    }
    std::vector<double> ours;
    std::vector<double> theirs;
    for (int round = 0; round < rounds; ++round) {
        ours.push_back(Microseconds([&] {
            for (const auto& region : runs) {
                benchmark::DoNotOptimize(MeasureRegion(frame.counts, kColumns, kRows, region, options));
            }
        }));
        theirs.push_back(Microseconds([&] {
            for (const RegionPlace& place : places) benchmark::DoNotOptimize(PlainLoop(frame.counts, place));
        }));
    }
    std::printf(
        "16 regions of 64 x 64 %6.1f us a frame, %.2f %% of a core at 100 Hz (less than 10)   plain loop %6.1f us   "
        "%.2f x\n",
        Median(ours), 100 * Median(ours) / kFrameUs, Median(theirs), MedianRatio(theirs, ours));
    return 0;
}
