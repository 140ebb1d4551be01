// What an observer of the capture costs: for each frame of 640 x 512 the copy that the capturing thread makes for him,
// and on his own thread sixteen regions of 64 x 64 pixels, corrected with gain and offset and measured. As shares of
// the 10 ms that a frame has at 100 Hz, and beside the correction of the whole frame, on one thread in one run.
//
//     build/bench/bench/trace_bench
//
// The regions' counts are those of the whole frame, which is checked before anything is measured. Rounds go in turn;
// each figure is the median of the rounds.
#include "grabber/board_state.h"
#include "grabber/correction.h"
#include "median.h"
#include "regions/region_counts.h"
#include "rounds.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <numeric>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace kelvo;

constexpr std::int32_t kColumns = 640;
constexpr std::int32_t kRows = 512;
constexpr std::size_t kPixels = std::size_t{kColumns} * kRows;
constexpr double kFrameUs = 10'000;

std::vector<std::int16_t> Calibrate()
{
    std::mt19937 random(1);
    std::normal_distribution<float> counts(6000, 900);
    std::normal_distribution<float> gains(1, 0.05F);
    write::camera.ActiveConfig.Hroi = kColumns;
    write::camera.ActiveConfig.Vroi = kRows;
    write::cal.CalType = 2;
    write::cal.DecomList.resize(kPixels);
    std::iota(write::cal.DecomList.rbegin(), write::cal.DecomList.rend(), 0U);
    write::cal.OffsetList.resize(kPixels);
    write::cal.GainList.resize(kPixels);
    std::vector<std::int16_t> raw(kPixels);
    for (std::size_t i = 0; i < kPixels; ++i) {
        write::cal.OffsetList[i] = static_cast<std::int16_t>(i % 50);
        write::cal.GainList[i] = gains(random);
        raw[i] = static_cast<std::int16_t>(counts(random));
    }
    return raw;
}

std::vector<Region> SixteenRegions()
{
    std::vector<Region> regions(16);
    for (std::int32_t i = 0; i < 16; ++i) {
        const std::int32_t x = 17 + i % 4 * 150;
        const std::int32_t y = 11 + i / 4 * 120;
        regions[static_cast<std::size_t>(i)].place = {x, y, x + 63, y + 63};
    }
    return regions;
}

}  // namespace

int main(int argc, char** argv)
{
    const int rounds = RoundsOf(argc, argv, 300);
    const std::vector<std::int16_t> raw = Calibrate();
    const std::vector<Region> regions = SixteenRegions();
    std::string why;
    std::optional<RegionCounts> counts = RegionCounts::Make(regions, kColumns, kRows, why);
    std::optional<RegionCounts> whole = RegionCounts::Make(regions, kColumns, kRows, why);
    const CorrectionPlanPtr plan =
        NewCorrectionPlan({CalType, DataOffset, DecomList, OffsetList, GainList}, std::size_t{kColumns}, kPixels);
    if (!counts || !whole || !plan || !counts->PrepareCorrection()) return 1;
    std::vector<std::int16_t> frame(kPixels);
    std::vector<std::int16_t> copy(kPixels);
    CorrectFrame(*plan, raw, frame);
    counts->FromRaw(raw);
    whole->FromFrame(frame);
    for (std::size_t i = 0; i < regions.size(); ++i) {
        if (!std::ranges::equal(counts->CountsOf(i), whole->CountsOf(i))) return 1;
    }

    std::vector<double> copied;
    std::vector<double> measured;
    std::vector<double> corrected;
    for (int round = 0; round < rounds; ++round) {
        copied.push_back(Microseconds([&] { std::ranges::copy(raw, copy.begin()); }));
        measured.push_back(Microseconds([&] {
            counts->FromRaw(raw);
            for (std::size_t i = 0; i < regions.size(); ++i) benchmark::DoNotOptimize(counts->Measure(i));
        }));
        corrected.push_back(Microseconds([&] { CorrectFrame(*plan, raw, frame); }));
    }
    const double copyUs = Median(copied);
    const double measureUs = Median(measured);
    std::printf(
        "copy of a frame %6.1f us, %.2f %% of a core at 100 Hz   16 regions of 64 x 64 %6.1f us, %.2f %% (less than "
        "10)   "
        "whole frame corrected %.2f x\n",
        copyUs, 100 * copyUs / kFrameUs, measureUs, 100 * measureUs / kFrameUs, MedianRatio(corrected, measured));
    return 0;
}
