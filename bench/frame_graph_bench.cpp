// The frame graph of one pixel over a long file, from the disk to the plot's shapes, beside as many single reads of
// that pixel.
//
//   build/bench/bench/frame_graph_bench

#include "analysis/frame_graph.h"
#include "analysis/frame_trace.h"
#include "display/units.h"
#include "median.h"
#include "platform/files.h"
#include "rounds.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace kelvo;

constexpr int kFrames = 4000;
constexpr int kWidth = 160;
constexpr int kHeight = 120;
constexpr int kRow = 60;
constexpr int kColumn = 80;
constexpr std::int64_t kFrameBytes = std::int64_t{2} * kWidth * kHeight;
constexpr std::int64_t kSampleAt = 512 + 2 * (kRow * kWidth + kColumn);

std::string MakeFile(const std::string& directory)
{
    const std::string path = directory + "/long.buf";
    ImageHeaderRecord header;
    header.ByteSwap = 0xFFFF;
    header.ImageWidth = kWidth;
    header.ImageHeight = kHeight;
    header.SampleBytes = 2;
    header.HeaderVersion = 8;
    std::optional<File> file = File::Open(path, FileMode::kCreate);
    if (!file) return {};
    file->Write(std::as_bytes(std::span(&header, 1)));
    std::vector<std::int16_t> frame(kWidth * kHeight);
    for (int i = 0; i < kFrames; ++i) {
        frame[kRow * kWidth + kColumn] = static_cast<std::int16_t>(1000 + i % 97);
        file->Write(std::as_bytes(std::span(frame)));
    }
    return file->Close() ? path : std::string();
}

void SingleReads(const std::string& path)
{
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    for (int i = 0; i < kFrames; ++i) {
        std::int16_t count = 0;
        if (pread(file, &count, sizeof count, kSampleAt + i * kFrameBytes) != sizeof count) std::abort();
        benchmark::DoNotOptimize(count);
    }
    close(file);
}

std::vector<std::int16_t> Trace(const TraceFile& file)
{
    std::vector<std::int16_t> counts;
    const TracePlace place{.first = 0, .last = kFrames - 1, .row = kRow, .column = kColumn};
    if (ReadFileTrace(file, place, counts) != TraceRead::kComplete) std::abort();
    return counts;
}

void WholeGraph(const TraceFile& file)
{
    const std::vector<std::int16_t> counts = Trace(file);
    const GraphFigures figures =
        FiguresOf(counts, 0, [](std::int32_t count) { return CountsToUnit(count, kUnitCounts, nullptr); });
    const FrameGraphPlot plot{.counts = counts, .first = 0, .range = RangeOf(figures), .squareRoot = false};
    const PlotPicture picture = FrameGraphPicture(
        {0, 0, 800, 500}, plot, [](std::int32_t count) { return std::to_string(count); },
        [](std::string_view text) { return 7 * static_cast<int>(text.size()); });
    if (figures.minimum != 1000 || figures.maximum != 1096 || picture.trace.empty()) std::abort();
}

}  // namespace

int main(int argc, char** argv)
{
    const int rounds = RoundsOf(argc, argv, 300);
    std::string directory = (std::filesystem::temp_directory_path() / "kelvo-bench-XXXXXX").string();
    if (!mkdtemp(directory.data())) return 1;
    const std::string path = MakeFile(directory);
    const std::optional<TraceFile> file = ReadTraceFile(path);
    if (!file) return 1;

    std::vector<double> single;
    std::vector<double> trace;
    std::vector<double> whole;
    for (int i = 0; i < rounds; ++i) {  // side by side: what disturbs one disturbs the others
        single.push_back(MicrosecondsOnce([&] { SingleReads(path); }));
        trace.push_back(MicrosecondsOnce([&] { Trace(*file); }));
        whole.push_back(MicrosecondsOnce([&] { WholeGraph(*file); }));
    }
    std::printf(
        "%d single reads: %.0f us; the pixel's counts: %.2f times that; figures and plot with it: %.2f times "
        "(at most 2)\n",
        kFrames, Median(single), MedianRatio(trace, single), MedianRatio(whole, single));
    std::filesystem::remove_all(directory);
    return 0;
}
