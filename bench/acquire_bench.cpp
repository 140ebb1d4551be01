// Frames on their way into host memory and into sums, beside memory copies, in one run on one thread.
//
//   build/bench/bench/acquire_bench
//
// Capturing is measured with a board whose read is a plain copy, so that what is left is the way there; its copy is one
// of the frame. Adding up is beside a copy that moves as many bytes: 10 a pixel (frame, sums read and written), 26 with
// squares. Rounds go in turn; each figure is the median of the rounds' ratios.
#include "acquire/frame_sums.h"
#include "grabber/copm2.h"
#include "grabber/host_frames.h"
#include "median.h"
#include "platform/profile.h"
#include "rounds.h"
#include "state/camera_config_write.h"
#include "state/windows_write.h"

#include <stdlib.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

using namespace kelvo;

constexpr int kWidth = 640;
constexpr int kHeight = 512;
constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;
constexpr int kFrames = 8;
int rounds = 300;  // or what the first argument says

const std::vector<std::int16_t> boardFrame(kPixels, 7500);

std::int32_t ReadArea(BoardModule, BoardFrame, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                      std::span<std::int16_t> buffer)
{
    std::memcpy(buffer.data(), boardFrame.data(), buffer.size_bytes());
    return 0;
}

// Every operation that capturing asks for; the others are never met.
constexpr BoardTable MemoryBoard()
{
    BoardTable table{};
    table.name = "memory";
    table.load_cnf = [](const std::string&) { return 0; };
    table.wait_vb = [](BoardModule, BoardFrame) { return 0; };
    table.frame_count = [](BoardModule) { return std::int64_t{0}; };
    table.read_area = ReadArea;
    table.os_set_realtime_priority = [](std::int32_t) {};
    return table;
}
constexpr BoardTable kMemoryBoard = MemoryBoard();

// Settings of the bench's own: the memory board, and a store of kFrames frames.
bool OpenMemoryBoard(const std::string& directory)
{
    SetDefaultDir(directory);
    std::ofstream(directory + "/platform.ini") << "[Board]\nBoard=memory\n";
    std::ofstream(IniFilePath) << "[Camera.1]\nMaxNumFramesToAllocate=" << kFrames << "\n";
    write::camera.ActiveCamera = 1;
    write::camera.ActiveConfig.Hroi = kWidth;
    write::camera.ActiveConfig.Vroi = kHeight;
    write::camera.numBufFrames = kFrames;
    RegisterBoard(kMemoryBoard);
    return itx_load_cnf("") == 0 && AllocateHostFrames() > 0;
}

struct Pair {
    std::vector<double> work, copy;
    void Report(const char* name, double goal) const
    {
        std::printf("%-42s %7.1f us   %5.2f copies (at most %.1f)\n", name, Median(work), MedianRatio(work, copy),
                    goal);
    }
};

// A copy that moves so many bytes: half of them read, half written.
class Copy {
  public:
    explicit Copy(std::size_t bytesMoved) : source_(bytesMoved / 2, 1), target_(bytesMoved / 2) {}
    void operator()() { std::memcpy(target_.data(), source_.data(), source_.size()); }

  private:
    std::vector<char> source_;
    std::vector<char> target_;
};

void MeasureCapture()
{
    // One copy into each of as many frames: the frames of the store aren't the same memory again and again either.
    std::vector<std::vector<std::int16_t>> targets(kFrames, std::vector<std::int16_t>(kPixels));
    Pair pair;
    bool whole = true;
    for (int round = 0; round < rounds; ++round) {
        pair.work.push_back(Microseconds([&] { whole = CaptureToHostFrames(kFrames, 0) == kFrames && whole; }) /
                            kFrames);
        pair.copy.push_back(Microseconds([&] {
                                for (auto& target : targets) {
                                    std::memcpy(target.data(), boardFrame.data(), target.size() * 2);
                                }
                            }) /
                            kFrames);
    }
    if (!whole || HostFrames.front() != boardFrame) {
        std::printf("the frames weren't captured\n");
        return;
    }
    pair.Report("one frame into host frames", 1.3);
}

template <typename T>
void MeasureSums(const char* name, bool withSquares, double goal)
{
    std::vector<T> sums(kPixels);
    std::vector<double> squares(withSquares ? kPixels : 0);
    Copy copy(kPixels * (withSquares ? 26 : 10));
    Pair pair;
    for (int round = 0; round < rounds; ++round) {
        pair.work.push_back(Microseconds([&] { AddFrame(boardFrame, sums, squares); }));
        pair.copy.push_back(Microseconds([&] { copy(); }));
    }
    pair.Report(name, goal);
}

}  // namespace

int main(int argc, char** argv)
{
    rounds = RoundsOf(argc, argv, rounds);
    std::string directory = (std::filesystem::temp_directory_path() / "kelvo-bench-XXXXXX").string();
    if (!mkdtemp(directory.data())) return 1;
    if (OpenMemoryBoard(directory)) MeasureCapture();
    MeasureSums<std::int32_t>("adding a frame to sums", false, 1.6);
    MeasureSums<std::int32_t>("adding a frame to sums, with squares", true, 3.2);
    MeasureSums<float>("adding a frame to float sums", false, 1.6);
    MeasureSums<float>("adding a frame to float sums, with squares", true, 3.2);
    std::filesystem::remove_all(directory);
    return 0;
}
