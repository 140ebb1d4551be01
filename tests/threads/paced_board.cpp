#include "threads/paced_board.h"

#include "grabber/board_state_write.h"
#include "grabber/capture.h"
#include "grabber/copm2.h"
#include "platform/clock.h"
#include "platform/faults.h"

#include <algorithm>
#include <span>
#include <thread>

namespace kelvo {

namespace {

constexpr std::int64_t kPeriodUs = 1000;
constexpr std::int64_t kKept = 50;  // frames behind the newest

struct PacedBoard {
    std::int64_t beganUs = 0;
    std::thread::id owner = {};
    bool calledByAnother = false;
    std::int32_t triggerSetting = 0;
};
PacedBoard paced;

void NoteCaller()
{
    if (paced.owner == std::thread::id()) paced.owner = std::this_thread::get_id();
    if (paced.owner != std::this_thread::get_id()) paced.calledByAnother = true;
}

std::int64_t CountNow()
{
    return (TickUs() - paced.beganUs) / kPeriodUs;
}

std::int32_t NextFrame(BoardModule /*module*/, BoardFrame /*frame*/, std::int64_t after, std::int64_t limitUs,
                       std::int32_t width, std::int32_t height, std::span<std::int16_t> buffer, FrameStamp& stamp)
{
    NoteCaller();
    const std::int64_t number = std::max(after + 1, CountNow() - kKept);
    const std::int64_t dueUs = paced.beganUs + number * kPeriodUs;
    if (dueUs - TickUs() > limitUs) {
        DelayUntilUs(TickUs() + limitUs);
        return kBoardTimeout;
    }
    DelayUntilUs(dueUs);
    stamp = {.number = number, .monotonicNs = dueUs * 1000, .utcNs = UtcNsAtTick(dueUs)};
    std::ranges::fill(buffer.first(static_cast<std::size_t>(width * height)), static_cast<std::int16_t>(number));
    return 0;
}

void Trigen(BoardModule /*module*/, std::int32_t on)
{
    NoteCaller();
    paced.triggerSetting = on;
}

const BoardTable& PacedTable()
{
    static const BoardTable table = [] {
        BoardTable t{};
        t.name = "none";  // the name of the board where no settings name one
        t.trigen = Trigen;
        t.os_set_realtime_priority = [](std::int32_t) {};
        t.frame_count = [](BoardModule) { return CountNow(); };
        t.next_frame = NextFrame;
        return t;
    }();
    return table;
}

}  // namespace

PacedBoardTest::PacedBoardTest()
{
    paced = {.beganUs = TickUs()};
    RegisterBoard(PacedTable());
    write::board.IcpModule = 1;
    write::board.AcqModule = 2;
    write::board.FrameA = 1;
}

PacedBoardTest::~PacedBoardTest()
{
    ResetCapture();
    ForgetBoardTables();
    ClearFaults();
}

bool PacedBoardTest::WasCalledByAnotherThread()
{
    return paced.calledByAnother;
}

std::int32_t PacedBoardTest::TriggerSetting()
{
    return paced.triggerSetting;
}

void PacedBoardTest::NewOwner()
{
    paced.owner = {};
}

}  // namespace kelvo
