#include "memory_board.h"

#include "grabber/board_state_write.h"
#include "grabber/capture.h"
#include "grabber/frame_account.h"
#include "platform/clock.h"
#include "platform/profile.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/frame_state_write.h"
#include "state/head_state_write.h"
#include "state/windows_write.h"

#include <time.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <numeric>
#include <random>
#include <utility>

namespace bench {

namespace {

using namespace kelvo;

constexpr std::int64_t kPauseUs = 50;  // between two looks for room
constexpr std::size_t kTargets = 4;    // as many places of a ring stay warm while who records keeps up

std::vector<std::int16_t> frameOfBoard(kPixels);

// Of the thread that asks the board; set while none does.
struct Giving {
    Pace pace = Pace::kAtOnce;
    std::int64_t left = 0;
    std::int64_t dueUs = 0;
    double cameOutUs = -1;  // with the last frame; below 0: there is none
    std::size_t copies = 0;
    std::array<std::vector<std::int16_t>, kTargets> targets;
    BoardWork work;
};
Giving giving;

void CopyInTurn()
{
    const double began = ThreadUs();
    std::memcpy(giving.targets[giving.copies++ % kTargets].data(), frameOfBoard.data(), kPixels * sizeof(std::int16_t));
    giving.work.copy.push_back(ThreadUs() - began);
}

bool WaitForPeriod(std::int64_t limitUs)
{
    if (giving.cameOutUs >= 0) giving.work.frame.push_back(ThreadUs() - std::exchange(giving.cameOutUs, -1));
    if (giving.left == 0) {
        DelayUntilUs(TickUs() + limitUs);
        return false;
    }
    giving.dueUs = std::max(giving.dueUs + kPeriodUs, TickUs());
    DelayUntilUs(giving.dueUs - kPeriodUs / 2);
    CopyInTurn();
    DelayUntilUs(giving.dueUs);
    giving.cameOutUs = ThreadUs();
    return true;
}

bool WaitForRoom(std::int64_t limitUs)
{
    const auto mayGo = [] { return giving.left > 0 && CurrentCaptureCounts().waiting < kMostWaiting; };
    for (const std::int64_t endUs = TickUs() + limitUs; !mayGo() && TickUs() < endUs;) {
        DelayUntilUs(TickUs() + kPauseUs);
    }
    return mayGo();
}

std::int32_t NextFrame(BoardModule, BoardFrame, std::int64_t after, std::int64_t limitUs, std::int32_t, std::int32_t,
                       std::span<std::int16_t> buffer, FrameStamp& stamp)
{
    if (!(giving.pace == Pace::kPaced ? WaitForPeriod(limitUs) : WaitForRoom(limitUs))) return kBoardTimeout;
    --giving.left;
    const std::int64_t nowUs = TickUs();
    stamp = {.number = after + 1, .monotonicNs = nowUs * 1000, .utcNs = UtcNsAtTick(nowUs)};
    std::memcpy(buffer.data(), frameOfBoard.data(), buffer.size_bytes());
    return 0;
}

// Every operation that recording asks for; the others are never met.
constexpr BoardTable MemoryBoard()
{
    BoardTable table{};
    table.name = "memory";
    table.load_cnf = [](const std::string&) { return 0; };
    table.frame_count = [](BoardModule) { return std::int64_t{0}; };
    table.next_frame = NextFrame;
    table.os_set_realtime_priority = [](std::int32_t) {};
    return table;
}
constexpr BoardTable kMemoryBoard = MemoryBoard();

}  // namespace

double ThreadUs()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

bool OpenMemoryBoard(const std::string& directory)
{
    SetDefaultDir(directory);
    std::ofstream(directory + "/platform.ini") << "[Board]\nBoard=memory\n";
    RegisterBoard(kMemoryBoard);
    std::mt19937 random(640);
    for (std::int16_t& count : frameOfBoard) count = static_cast<std::int16_t>(random() % 16384);
    for (auto& target : giving.targets) target.resize(kPixels);
    write::camera.ActiveCamera = 1;
    write::camera.ActiveConfig.Hroi = kWidth;
    write::camera.ActiveConfig.Vroi = kHeight;
    write::frames.CameraOn = 1;
    write::frames.LiveVideo = 1;
    write::head.FrameRate = 100;
    write::board.IcpModule = 1;
    write::board.FrameA = 1;
    write::cal.DecomList.resize(kPixels);
    std::iota(write::cal.DecomList.begin(), write::cal.DecomList.end(), 0U);
    CalibrationListsChanged();
    return itx_load_cnf("") == 0;
}

void GiveFrames(std::int64_t frames, Pace pace)
{
    giving.pace = pace;
    giving.left = frames;
    giving.dueUs = 0;
    giving.cameOutUs = -1;
    giving.work = {};
    giving.work.frame.reserve(static_cast<std::size_t>(frames));
    giving.work.copy.reserve(static_cast<std::size_t>(frames));
}

const BoardWork& WorkOfBoard()
{
    return giving.work;
}

std::span<const std::int16_t> FrameOfBoard()
{
    return frameOfBoard;
}

}  // namespace bench
