// Gather, correction and look-up to the display byte (CorrectAndLookUp) beside the plain loop, chains of OpenCV calls,
// and a memory copy, in one run on one thread.
//
//   build/bench/bench/frame_path_bench
//
// All give the same counts and bytes, which is checked before anything is measured. The copy moves 11 bytes a pixel, as
// the frame path does at least: it reads as many bytes (5.5 a pixel) as it writes. Rounds go in turn; each figure is
// the median of the rounds' ratios.
#include "grabber/correction.h"
#include "median.h"
#include "opencv_chain.h"
#include "plain_loop.h"
#include "rounds.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace kelvo;

int rounds = 300;  // or what the first argument says

struct Size {
    std::size_t width;
    std::size_t height;
    std::size_t Pixels() const { return width * height; }
};

enum class Gather { kIdentity, kFourChannels, kSubstituted };
constexpr const char* kGatherNames[] = {"identity", "interleave", "substituted"};

std::vector<std::uint32_t> Decom(const Size& size, Gather gather, std::mt19937& random)
{
    std::vector<std::uint32_t> decom(size.Pixels());
    const std::size_t quarter = size.width / 4;
    for (std::size_t i = 0; i < decom.size(); ++i) {
        const std::size_t column = i % size.width;
        const std::size_t sample = gather == Gather::kIdentity ? column : column % quarter * 4 + column / quarter;
        decom[i] = static_cast<std::uint32_t>(i - column + sample);
    }
    if (gather != Gather::kSubstituted) return decom;
    const std::vector<std::uint32_t> plain = decom;
    const auto near = [&](std::size_t at, std::size_t limit) {
        const auto moved = static_cast<std::int64_t>(at) + static_cast<std::int64_t>(random() % 5) - 2;
        return static_cast<std::size_t>(std::clamp<std::int64_t>(moved, 0, static_cast<std::int64_t>(limit) - 1));
    };
    for (std::size_t k = 0; k < decom.size() / 100; ++k) {  // 1 %, from within two lines and columns
        const std::size_t bad = random() % decom.size();
        const std::size_t row = near(bad / size.width, size.height);
        decom[bad] = plain[row * size.width + near(bad % size.width, size.width)];
    }
    return decom;
}

struct Input {
    Size size;
    std::vector<std::uint32_t> decom;
    std::vector<std::int16_t> raw, offset;
    std::vector<float> gain;
    std::unique_ptr<GrayTable> table = std::make_unique<GrayTable>();
};

// A scene of 14 bits with a detector's spread and noise: neighbours are alike, but not the same.
Input MakeInput(const Size& size, Gather gather)
{
    std::mt19937 random(1);
    Input input;
    input.size = size;
    input.decom = Decom(size, gather, random);
    std::normal_distribution<float> noise(0, 1);
    for (std::size_t i = 0; i < size.Pixels(); ++i) {
        const auto scene = static_cast<float>(i % size.width * 6000 / size.width + i / size.width * 3000 / size.height);
        input.raw.push_back(static_cast<std::int16_t>(4000 + scene + 100 * noise(random)));
        input.offset.push_back(static_cast<std::int16_t>(300 + 95 * noise(random)));
        input.gain.push_back(1 + 0.012F * noise(random));
    }
    for (std::size_t i = 0; i < input.table->size(); ++i) {
        (*input.table)[i] = static_cast<std::uint8_t>(i < 32768 ? std::min<std::size_t>(i / 60, 255) : 0);
    }
    return input;
}

struct Output {
    explicit Output(const Size& size) : frame(size.Pixels()), pixels(size.Pixels()) {}
    std::vector<std::int16_t> frame;
    std::vector<std::uint8_t> pixels;
    bool operator==(const Output&) const = default;
};

struct Times {
    std::vector<double> fast, plain, openCv, openCvStrips, copy;
};

void Report(const Input& input, Gather gather, const Times& times)
{
    const double openCv = std::min(MedianRatio(times.openCv, times.fast), MedianRatio(times.openCvStrips, times.fast));
    std::printf(
        "%4zu x %4zu %-12s %7.1f us   %5.2f x faster than the plain loop   %5.2f x than OpenCV (whole %5.2f, "
        "strips %5.2f)   %5.2f copies\n",
        input.size.width, input.size.height, kGatherNames[static_cast<int>(gather)], Median(times.fast),
        MedianRatio(times.plain, times.fast), openCv, MedianRatio(times.openCv, times.fast),
        MedianRatio(times.openCvStrips, times.fast), MedianRatio(times.fast, times.copy));
}

bool Measure(const Size& size, Gather gather)
{
    const Input input = MakeInput(size, gather);
    const CorrectionPlanPtr plan =
        NewCorrectionPlan({2, 0, input.decom, input.offset, input.gain}, size.width, input.raw.size());
    OpenCvChain whole(input.decom, input.offset, input.gain, *input.table, size.width, size.height);
    OpenCvChain strips(input.decom, input.offset, input.gain, *input.table, size.width, 16);
    const std::vector<std::uint8_t> source(size.Pixels() * 11 / 2, 1);
    std::vector<std::uint8_t> target(source.size());
    Output fast(size), plain(size), openCv(size), openCvStrips(size);

    const GrayRows grays{input.table.get(), fast.pixels.data(), static_cast<std::ptrdiff_t>(size.width), size.height};
    const auto runFast = [&] { CorrectAndLookUp(*plan, input.raw, fast.frame, grays); };
    const auto runPlain = [&] {
        PlainLoop(input.decom.data(), input.offset.data(), input.gain.data(), 0, input.raw.data(), input.table->data(),
                  size.Pixels(), plain.frame.data(), plain.pixels.data());
    };
    const auto runOpenCv = [&] { whole.Run(input.raw, openCv.frame, openCv.pixels); };
    const auto runStrips = [&] { strips.Run(input.raw, openCvStrips.frame, openCvStrips.pixels); };
    runFast(), runPlain(), runOpenCv(), runStrips();
    if (!(fast == plain) || !(openCv == plain) || !(openCvStrips == plain)) {
        std::printf("%zu x %zu %s: not the same counts and bytes (fast %d, OpenCV %d, in strips %d)\n", size.width,
                    size.height, kGatherNames[static_cast<int>(gather)], fast == plain, openCv == plain,
                    openCvStrips == plain);
        return false;
    }

    Times times;
    for (int round = 0; round < rounds; ++round) {
        times.fast.push_back(Microseconds(runFast));
        times.plain.push_back(Microseconds(runPlain));
        times.copy.push_back(Microseconds([&] { std::memcpy(target.data(), source.data(), source.size()); }));
        times.openCv.push_back(Microseconds(runOpenCv));
        times.openCvStrips.push_back(Microseconds(runStrips));
        benchmark::DoNotOptimize(target.data());
    }
    Report(input, gather, times);
    return true;
}

}  // namespace

int main(int argc, char** argv)
{
    rounds = RoundsOf(argc, argv, rounds);
    bool same = true;
    for (const Size size : {Size{320, 256}, Size{640, 512}, Size{1024, 1024}}) {
        for (const Gather gather : {Gather::kIdentity, Gather::kFourChannels, Gather::kSubstituted}) {
            same = Measure(size, gather) && same;
        }
    }
    return same ? 0 : 1;
}
