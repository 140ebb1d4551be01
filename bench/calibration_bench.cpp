// From sums to lists at 640 x 512, without files and boxes: means, classes and gains, offsets, statistics, bad
// detectors and their substitution. Beside a copy of the lists read and written, in one run on one thread.
//
//   build/bench/bench/calibration_bench            and, on the same machine, python3 bench/calibration_numpy.py
//
// Rounds go in turn; each figure is the median, and the ratio to the copy the median of the rounds' ratios.
#include "calib/two_point.h"
#include "median.h"
#include "pixel/bad_pixels.h"
#include "rounds.h"
#include "state/cal_settings_write.h"
#include "state/camera_config.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <numeric>
#include <random>
#include <vector>

namespace {

using namespace kelvo;

constexpr std::int32_t kColumns = 640;
constexpr std::int32_t kRows = 512;
constexpr std::size_t kPixels = std::size_t{kColumns} * kRows;
int rounds = 40;                          // or what the first argument says
constexpr double kFramePeriodUs = 10000;  // 100 Hz
constexpr double kFramesOfARun = 60;

struct Sums {
    std::vector<std::int32_t> low = std::vector<std::int32_t>(kPixels);
    std::vector<std::int32_t> high = std::vector<std::int32_t>(kPixels);
    std::vector<float> noise = std::vector<float>(kPixels);
};

// 30 frames at 7500 and 8750 counts; 2 % don't respond.
Sums MakeSums()
{
    std::mt19937 random(640);
    std::normal_distribution<double> normal;
    Sums sums;
    for (std::size_t i = 0; i < kPixels; ++i) {
        const double low = 7500 + 80 * normal(random);
        const double response = random() % 50 == 0 ? 0 : 1250 * (1 + 0.012 * normal(random));
        sums.low[i] = static_cast<std::int32_t>(30 * low);
        sums.high[i] = static_cast<std::int32_t>(30 * (low + response));
        sums.noise[i] = static_cast<float>(5 + 0.6 * normal(random));
    }
    return sums;
}

struct Lists {
    std::vector<std::int16_t> shorts = std::vector<std::int16_t>(kPixels);
    std::vector<float> gains = std::vector<float>(kPixels);
    std::vector<std::int16_t> offsets = std::vector<std::int16_t>(kPixels);
    std::vector<std::uint32_t> table = std::vector<std::uint32_t>(kPixels);
    BadDetMap bad = BadDetMap(kPixels);
};

bool Calculate(Sums& sums, Lists& lists, const CameraConfig& config)
{
    const TwoPointSettings settings;
    const ArrayMeans means = SumsToMeans(sums.low, sums.high, sums.noise, lists.shorts, settings);
    TwoPointResult result;
    result.counts = ClassifyDetectors(sums.low, sums.high, lists.shorts, means, settings, lists.gains, {});
    TruncateMeans(sums.low, lists.shorts);
    result.offsets = OffsetsOf(lists.gains, lists.shorts, means.meanLow, lists.offsets);
    result.spread = SpreadOf(lists.gains, lists.offsets, result.offsets.meanGain, result.offsets.meanOffset);
    IdentifyBadDet(lists.bad, lists.gains, lists.table, config);
    return ReplaceBadDet(lists.table, lists.bad, config) != 0 && result.spread.gainStd > 0;
}

template <typename Entry>
void Copy(const std::vector<Entry>& from, std::vector<Entry>& to)
{
    std::memcpy(to.data(), from.data(), from.size() * sizeof(Entry));
}

}  // namespace

int main(int argc, char** argv)
{
    rounds = RoundsOf(argc, argv, rounds);
    CameraConfig config;
    config.Vroi = kRows;
    config.Hroi = kColumns;
    write::calSet.CalSettings.PRSfile = KELVO_DEFAULTS "/nearccw.prs";
    const Sums kept = MakeSums();
    Sums sums = kept;
    Sums copiedSums = kept;
    Lists lists;
    Lists copies;
    std::vector<double> work;
    std::vector<double> copy;
    bool whole = true;
    const auto calculateAnew = [&] {
        sums = kept;
        std::iota(lists.table.begin(), lists.table.end(), 0U);
        std::ranges::fill(lists.bad, std::uint8_t{0});
        return MicrosecondsOnce([&] { whole = Calculate(sums, lists, config); });
    };
    for (int round = 0; round < rounds && whole; ++round) {
        copy.push_back(Microseconds([&] {
            Copy(kept.low, copiedSums.low);
            Copy(kept.high, copiedSums.high);
            Copy(kept.noise, copiedSums.noise);
            Copy(lists.shorts, copies.shorts);
            Copy(lists.gains, copies.gains);
            Copy(lists.offsets, copies.offsets);
            Copy(lists.table, copies.table);
        }));
        calculateAnew();  // the sums turn into means in place: each time they are put back
        work.push_back(calculateAnew());
    }
    if (!whole || BadDetCount == 0) {
        std::printf("the lists weren't made\n");
        return 1;
    }
    const double us = Median(work);
    std::printf("sums to lists, 640 x 512: %.0f us, %.1f copies of the lists, %.2f %% of 60 frame periods at 100 Hz\n",
                us, MedianRatio(work, copy), us * 100 / (kFramesOfARun * kFramePeriodUs));
    return 0;
}
