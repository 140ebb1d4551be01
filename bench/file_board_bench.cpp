// The recorded camera's board, reading a sequence as fast as it can, beside `dd` of the same file with blocks as large
// as a frame of it:
//
//   build/bench/bench/file_board_bench [rounds [directory]]
//
// The sequence has 300 frames of 640 x 512, in the directory for temporary files where none is given. Both read it from
// the start to the end; in turn, each time the other way round, and what the start of dd takes isn't counted. The
// figure is the median of the rounds' ratios. Frames come at 1 MHz, faster than any memory: the board never waits for
// one.
#include "fileboard/file_camera.h"
#include "grabber/copm2.h"
#include "imagefile/header.h"
#include "median.h"
#include "platform/files.h"
#include "rounds.h"
#include "state/windows.h"
#include "state/windows_write.h"

#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using namespace kelvo;

constexpr std::int32_t kWidth = 640;
constexpr std::int32_t kHeight = 512;
constexpr std::int64_t kFrames = 300;
constexpr std::size_t kValues = std::size_t{kWidth} * kHeight;

double Seconds(std::chrono::steady_clock::time_point since)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

bool MakeSequence(const std::string& path)
{
    ImageHeaderRecord header;
    header.ByteSwap = 0xFFFF;
    header.ImageWidth = kWidth;
    header.ImageHeight = kHeight;
    header.SampleBytes = sizeof(std::int16_t);
    header.IntensityCold = kUncalibratedIntensity;
    header.IntensityHot = kUncalibratedIntensity;
    header.HeaderVersion = kFirstVersionWithFrameHeaders;
    header.DataType = 1;
    auto file = File::Open(path, FileMode::kCreate);
    if (!file) return false;
    file->Write(std::as_bytes(std::span(&header, 1)));
    std::vector<std::int16_t> counts(kValues);
    for (std::int64_t frame = 0; frame < kFrames; ++frame) {
        std::ranges::fill(counts, static_cast<std::int16_t>(frame + 1));
        if (file->Write(std::as_bytes(std::span(counts))) != kValues * sizeof(std::int16_t)) return false;
    }
    return true;
}

bool OpenBoard(const std::string& directory)
{
    SetDefaultDir(directory);
    const bool written = ReplaceFile(directory + "/platform.ini", "[Board]\nBoard=file\n") &&
                         ReplaceFile(directory + "/camera.cnf", "[Frames]\nScene=frames.seq\nRate=1000000\nEnd=once\n");
    RegisterFileBoard();
    return written && MakeSequence(directory + "/frames.seq") && itx_load_cnf(directory + "/camera.cnf") == 0 &&
           itx_init_sys(0) == 0;
}

// The time for all frames; 0 where one of them was missing. The recording begins a moment before the grab, which may
// pass over the first ones.
double SecondsOfBoard()
{
    const BoardModule icp = itx_get_modcnf(0, "ICP", 100);
    icp_delete_all_frames(icp);
    const BoardFrame frame = icp_create_frame(icp, kWidth, kHeight, 16, 0);
    std::vector<std::int16_t> counts(kValues);
    icp_get_slot0(icp);
    if (icp_grab(icp, frame) != 0) return 0;
    const auto began = std::chrono::steady_clock::now();
    std::int64_t read = 0;
    std::int64_t value = 0;
    while (value < kFrames) {
        FrameStamp stamp;
        if (icp_next_frame(icp, frame, read, 1'000'000, kWidth, kHeight, counts, stamp) != 0) return 0;
        if (stamp.number != ++read || (read > 1 && counts.back() != value + 1)) return 0;
        value = counts.back();
    }
    const double took = Seconds(began) * static_cast<double>(kFrames) / static_cast<double>(read);
    icp_freeze(icp, frame);
    return read > kFrames / 2 ? took : 0;
}

// Of so many blocks, its start included.
double SecondsOfDd(const std::string& path, std::int64_t blocks)
{
    std::vector<std::string> words = {"dd",
                                      "if=" + path,
                                      "of=/dev/null",
                                      "bs=" + std::to_string(kValues * sizeof(std::int16_t)),
                                      "count=" + std::to_string(blocks),
                                      "status=none"};
    std::vector<char*> arguments(words.size() + 1);
    std::ranges::transform(words, arguments.begin(), [](std::string& word) { return word.data(); });
    const auto began = std::chrono::steady_clock::now();
    pid_t process = 0;
    if (posix_spawnp(&process, "dd", nullptr, nullptr, arguments.data(), environ) != 0) return 0;
    int status = 0;
    waitpid(process, &status, 0);
    return status == 0 ? Seconds(began) : 0;
}

bool Measure(int rounds, const std::string& path)
{
    std::vector<double> board;
    std::vector<double> dd;
    for (int round = 0; round < rounds; ++round) {
        const bool boardFirst = round % 2 == 0;
        if (boardFirst) board.push_back(SecondsOfBoard());
        dd.push_back(SecondsOfDd(path, kFrames) - SecondsOfDd(path, 0));
        if (!boardFirst) board.push_back(SecondsOfBoard());
        if (board.back() <= 0 || dd.back() <= 0) return false;
    }
    const double megabytes = static_cast<double>(kFrames * static_cast<std::int64_t>(kValues)) * 2 / 1e6;
    std::printf("%-44s %7.0f MB/s\n", "dd", megabytes / Median(dd));
    std::printf("%-44s %7.0f MB/s   %5.2f of dd (at least 0.85)\n", "the recorded camera's board",
                megabytes / Median(board), MedianRatio(dd, board));
    return true;
}

}  // namespace

int main(int argc, char** argv)
{
    const int rounds = RoundsOf(argc, argv, 31);
    std::string directory =
        (argc > 2 ? std::string(argv[2]) : std::filesystem::temp_directory_path().string()) + "/kelvo-XXXXXX";
    const bool made = mkdtemp(directory.data()) != nullptr;
    const bool done = made && OpenBoard(directory) && Measure(rounds, directory + "/frames.seq");
    if (!done) std::printf("it couldn't be measured\n");
    if (made) std::filesystem::remove_all(directory);
    return done ? 0 : 1;
}
