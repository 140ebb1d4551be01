// Reading frames of a long file: the last beside the first, in one run, and the memory that a pass through the file
// takes.
//
//   build/bench/bench/viewer_bench

#include "imagefile/frame_file.h"
#include "imagefile/header.h"
#include "platform/files.h"
#include "rounds.h"

#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using namespace kelvo;

constexpr int kFrames = 4000;
constexpr int kWidth = 160;
constexpr int kHeight = 120;
int rounds = 2000;  // or what the first argument says

ImageHeaderRecord MakeHeader()
{
    ImageHeaderRecord header;
    header.ByteSwap = 0xFFFF;
    header.ImageWidth = kWidth;
    header.ImageHeight = kHeight;
    header.SampleBytes = 2;
    header.HeaderVersion = 8;
    return header;
}

std::string MakeFile(const std::string& directory)
{
    const std::string path = directory + "/long.seq";
    const ImageHeaderRecord header = MakeHeader();
    std::optional<File> file = File::Open(path, FileMode::kCreate);
    if (!file) return {};
    file->Write(std::as_bytes(std::span(&header, 1)));
    const std::vector<std::int16_t> frame(kWidth * kHeight, 1234);
    for (int i = 0; i < kFrames; ++i) file->Write(std::as_bytes(std::span(frame)));
    return file->Close() ? path : std::string();
}

double ReadSeconds(File& file, std::uint32_t frame, std::vector<std::uint8_t>& block)
{
    const auto start = std::chrono::steady_clock::now();
    const FrameRead read = ReadFrameRecord(file, MakeHeader(), 512, frame, block);
    benchmark::DoNotOptimize(block.data());
    if (read != FrameRead::kComplete) std::abort();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double>& values)
{
    std::ranges::sort(values);
    return values[values.size() / 2];
}

long PeakKb()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

}  // namespace

int main(int argc, char** argv)
{
    rounds = RoundsOf(argc, argv, rounds);
    std::string directory = (std::filesystem::temp_directory_path() / "kelvo-bench-XXXXXX").string();
    if (!mkdtemp(directory.data())) return 1;
    const std::string path = MakeFile(directory);
    if (path.empty()) return 1;

    std::optional<File> file = File::Open(path, FileMode::kRead);
    std::vector<std::uint8_t> block;
    std::vector<double> first;
    std::vector<double> last;
    for (int i = 0; i < rounds; ++i) {  // side by side: what disturbs one disturbs the other
        first.push_back(ReadSeconds(*file, 0, block));
        last.push_back(ReadSeconds(*file, kFrames - 1, block));
    }
    const double firstUs = Median(first) * 1e6;
    const double lastUs = Median(last) * 1e6;
    std::printf("frame 0: %.2f us, frame %d: %.2f us, ratio %.2f (at most 1.5)\n", firstUs, kFrames - 1, lastUs,
                lastUs / firstUs);

    const long before = PeakKb();
    for (std::uint32_t i = 0; i < kFrames; ++i) ReadSeconds(*file, i, block);
    std::printf("peak memory: %ld kB more after reading all %d frames of %d bytes\n", PeakKb() - before, kFrames,
                kWidth * kHeight * 2);

    std::filesystem::remove_all(directory);
    return 0;
}
