// The statistics of a whole frame (RegionStatistics: mean, deviation, extremes) beside OpenCV's meanStdDev and
// minMaxLoc on the same samples, in one run on one thread.
//
//   build/bench/bench/statistics_bench
//
// Frames of 640 x 512 samples, as 32-bit integers and as floats. Both give the same figures, which is checked before
// anything is measured. Rounds go in turn; each figure is the median of the rounds' ratios.
#include "median.h"
#include "pixel/region_statistics.h"
#include "rounds.h"

#include <opencv2/core.hpp>

#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <span>
#include <type_traits>
#include <vector>

namespace {

using namespace kelvo;

constexpr int kWidth = 640;
constexpr int kHeight = 512;
constexpr std::int32_t kIntegerSamples = 4;
int rounds = 300;  // or what the first argument says

struct Figures {
    double mean = 0;
    double deviation = 0;
    double least = 0;
    double most = 0;
};

template <typename Sample>
std::vector<Sample> Frame()
{
    std::mt19937 random(1);
    std::normal_distribution<float> counts(6000, 900);
    std::vector<Sample> frame(std::size_t{kWidth} * kHeight);
    for (Sample& sample : frame) sample = static_cast<Sample>(counts(random));
    return frame;
}

template <typename Sample>
Figures Ours(const std::vector<Sample>& frame)
{
    constexpr std::int32_t kType = std::is_same_v<Sample, float> ? kFloatSamples : kIntegerSamples;
    float deviation = 0;
    std::int32_t least = std::numeric_limits<std::int32_t>::max();
    std::int32_t most = std::numeric_limits<std::int32_t>::min();
    const double mean = RegionStatistics(std::as_bytes(std::span(frame)), 0, 0, kWidth - 1, kHeight - 1, kWidth, kType,
                                         &deviation, least, most);
    return {mean, deviation, static_cast<double>(least), static_cast<double>(most)};
}

Figures OpenCv(const cv::Mat& frame)
{
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(frame, mean, deviation);
    Figures figures{mean[0], deviation[0], 0, 0};
    cv::minMaxLoc(frame, &figures.least, &figures.most);
    return figures;
}

// Its deviation divides by n, and float extremes aren't truncated.
bool Agree(const Figures& ours, const Figures& theirs)
{
    return std::fabs(ours.mean - theirs.mean) < 1e-6 && std::fabs(ours.deviation - theirs.deviation) < 0.01 &&
           ours.least == std::trunc(theirs.least) && ours.most == std::trunc(theirs.most);
}

template <typename Sample>
bool Measure(const char* name)
{
    std::vector<Sample> frame = Frame<Sample>();
    const cv::Mat matrix(kHeight, kWidth, std::is_same_v<Sample, float> ? CV_32F : CV_32S, frame.data());
    if (!Agree(Ours(frame), OpenCv(matrix))) {
        std::printf("%s: the figures differ\n", name);
        return false;
    }
    std::vector<double> ours;
    std::vector<double> theirs;
    for (int round = 0; round < rounds; ++round) {
        ours.push_back(Microseconds([&] { benchmark::DoNotOptimize(Ours(frame)); }));
        theirs.push_back(Microseconds([&] { benchmark::DoNotOptimize(OpenCv(matrix)); }));
    }
    std::printf("%-8s RegionStatistics %6.1f us   OpenCV %6.1f us   %5.2f x (at least 1)\n", name, Median(ours),
                Median(theirs), MedianRatio(theirs, ours));
    return true;
}

}  // namespace

int main(int argc, char** argv)
{
    rounds = RoundsOf(argc, argv, rounds);
    cv::setNumThreads(1);
    const bool integers = Measure<std::int32_t>("integers");
    const bool floats = Measure<float>("floats");
    return integers && floats ? 0 : 1;
}
