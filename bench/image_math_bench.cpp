// The weighted sum of two frames (WeightedSum) beside a copy of the bytes that it moves, on one thread.
//
//   build/bench/bench/image_math_bench [rounds]
//   build/bench/bench/image_math_bench FRAME1 FRAME2 RESULT ROUNDS   for image_math_numpy.py: files of 640 x 512
//   counts;
//                                                                    prints the median of the microseconds
//
// Frames of 640 x 512 counts with both constants in use. A sample reads two counts and writes one; the copy moves those
// 6 bytes a pixel, counted once. Rounds go in turn; each figure is the median of the rounds' ratios.
#include "analysis/weighted_sum.h"
#include "median.h"
#include "rounds.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>
#include <vector>

namespace {

using namespace kelvo;

constexpr std::size_t kPixels = std::size_t{640} * 512;
constexpr Weights kWeights{.c1 = 1.25F, .c2 = -0.7F, .c3 = 100.5F};

using Frame = std::vector<std::int16_t>;

Frame Noise(std::uint32_t seed)
{
    std::mt19937 random(seed);
    Frame frame(kPixels);
    for (std::int16_t& count : frame) count = static_cast<std::int16_t>(random() % 16384);
    return frame;
}

Frame ReadFrame(const char* path)
{
    Frame frame(kPixels);
    std::ifstream(path, std::ios::binary).read(reinterpret_cast<char*>(frame.data()), 2 * kPixels);
    return frame;
}

int MeasureFor(char** arguments)
{
    const Frame first = ReadFrame(arguments[0]);
    const Frame second = ReadFrame(arguments[1]);
    Frame result(kPixels);
    std::vector<double> times(static_cast<std::size_t>(std::max(std::atoi(arguments[3]), 1)));
    for (double& time : times) time = Microseconds([&] { WeightedSum(kWeights, first, second, result); });
    std::ofstream(arguments[2], std::ios::binary).write(reinterpret_cast<const char*>(result.data()), 2 * kPixels);
    std::printf("%.2f\n", Median(times));
    return 0;
}

void Measure(int rounds)
{
    const Frame first = Noise(1);
    const Frame second = Noise(2);
    Frame result(kPixels);
    const std::vector<std::uint8_t> source(6 * kPixels, 1);
    std::vector<std::uint8_t> copy(6 * kPixels);
    std::vector<double> sums;
    std::vector<double> copies;
    for (int round = 0; round < rounds; ++round) {
        sums.push_back(Microseconds([&] { benchmark::DoNotOptimize(WeightedSum(kWeights, first, second, result)); }));
        copies.push_back(Microseconds([&] { std::memcpy(copy.data(), source.data(), copy.size()); }));
    }
    std::printf("WeightedSum %6.1f us   copy of %zu bytes %6.1f us   %5.2f copies (at most 6.5)\n", Median(sums),
                copy.size(), Median(copies), MedianRatio(sums, copies));
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc == 5) return MeasureFor(argv + 1);
    Measure(RoundsOf(argc, argv, 300));
    return 0;
}
