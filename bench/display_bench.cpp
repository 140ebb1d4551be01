// A frame's bitmap beside a plain loop over its pixels and a copy of the bytes that it reads and writes, in one run.
//
//   build/bench/bench/display_bench
//
// Frames of 640 x 512 counts over 14 bits. The copy moves as many bytes as the bitmap reads (two a pixel) and writes
// (one a pixel). Rounds go in turn; each figure is the median.
#include "dibapi32/dibutil.h"
#include "display/frame_bitmap.h"
#include "display/lookup_table.h"
#include "imagefile/header_write.h"
#include "rounds.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <span>
#include <vector>

namespace {

using namespace kelvo;

constexpr int kWidth = 640;
constexpr int kHeight = 512;
constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;
int rounds = 400;  // or what the first argument says

// Neighbours in a picture are alike, in noise they are not: the table is met in different ways.
std::vector<std::int16_t> Noise()
{
    std::mt19937 random(1);
    std::vector<std::int16_t> frame(kPixels);
    for (std::int16_t& count : frame) count = static_cast<std::int16_t>(random() % 16384);
    return frame;
}

std::vector<std::int16_t> Scene()
{
    std::mt19937 random(2);
    std::vector<std::int16_t> frame(kPixels);
    for (std::size_t i = 0; i < kPixels; ++i) {
        frame[i] = static_cast<std::int16_t>(6000 + i / kWidth * 4 + i % kWidth + random() % 40);
    }
    return frame;
}

// One pixel after the other, with the limits of the table at each.
void PlainLoop(std::span<const std::int16_t> frame, std::vector<std::uint8_t>& grays)
{
    const int last = static_cast<int>(DisplayLut.size()) - 1;
    for (int row = kHeight - 1; row >= 0; --row) {
        const std::int16_t* from = frame.data() + static_cast<std::size_t>(row) * kWidth;
        std::uint8_t* to = grays.data() + static_cast<std::size_t>(kHeight - 1 - row) * kWidth;
        for (int column = 0; column < kWidth; ++column) {
            const int count = from[column];
            to[column] = DisplayLut[static_cast<std::size_t>(count < 0 ? 0 : std::min(count, last))];
        }
    }
}

template <typename Work>
double Microseconds(Work&& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    benchmark::ClobberMemory();
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double>& values)
{
    std::ranges::nth_element(values, values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2));
    return values[values.size() / 2];
}

void Measure(const char* name, const std::vector<std::int16_t>& frame)
{
    const std::vector<std::uint8_t> source(3 * kPixels, 1);
    std::vector<std::uint8_t> copy(3 * kPixels);
    std::vector<std::uint8_t> grays(kPixels);
    std::vector<double> bitmap;
    std::vector<double> plain;
    std::vector<double> memory;
    for (int round = 0; round < rounds; ++round) {
        bitmap.push_back(Microseconds([&] { benchmark::DoNotOptimize(MakeFrameBitmap(frame, nullptr)); }));
        plain.push_back(Microseconds([&] { PlainLoop(frame, grays); }));
        memory.push_back(Microseconds([&] { std::memcpy(copy.data(), source.data(), copy.size()); }));
        benchmark::DoNotOptimize(copy.data());
    }
    const double unit = Median(memory);
    std::printf("%-6s copy of %zu bytes %6.1f us   MakeFrameBitmap %5.2f x   plain loop %5.2f x\n", name, copy.size(),
                unit, Median(bitmap) / unit, Median(plain) / unit);
}

}  // namespace

int main(int argc, char** argv)
{
    rounds = RoundsOf(argc, argv, rounds);
    write::frames.ViewingFile = 1;
    write::file.ImageHeader.ImageWidth = kWidth;
    write::file.ImageHeader.ImageHeight = kHeight;
    write::display.DisplayLut.resize(kLutEntries);
    FillLut(write::display.DisplayLut, WindowOf(kSmoothSpan, 16, 580), {0, 16383});
    Measure("noise", Noise());
    Measure("scene", Scene());
    return 0;
}
