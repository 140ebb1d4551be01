#include "grabber/copm2.h"

#include "platform/clock.h"
#include "platform/machine.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr std::int32_t kNoBoardAnswers = -1;

std::vector<const BoardTable*>& KnownBoards()
{
    static std::vector<const BoardTable*> boards;
    return boards;
}

struct Choice {
    bool made = false;
    const BoardTable* board = nullptr;
};
Choice choice;

void ChooseBoard()
{
    const std::string name = MachineSetting("Board", "Board", "none");
    const auto found = std::ranges::find(KnownBoards(), name, [](const BoardTable* board) { return board->name; });
    choice = {.made = true, .board = found == KnownBoards().end() ? nullptr : *found};
}

const BoardTable* Board()
{
    if (!choice.made) ChooseBoard();
    return choice.board;
}

// Where the calls of threads that don't own the board go; empty: to the board.
std::function<void(const BoardCall&)> carrier;
thread_local bool ownsBoard = false;

// Asks the board; without one, or without this operation, the answer is failure.
template <auto operation, typename Result, typename... Arguments>
Result Ask(Result failure, Arguments&&... arguments)
{
    const BoardTable* const board = Board();
    if (!board || !(board->*operation)) return failure;
    if (!carrier || ownsBoard) return (board->*operation)(std::forward<Arguments>(arguments)...);
    Result result = failure;
    carrier([&] { result = (board->*operation)(std::forward<Arguments>(arguments)...); });
    return result;
}

template <auto operation, typename... Arguments>
void Tell(Arguments&&... arguments)
{
    const BoardTable* const board = Board();
    if (!board || !(board->*operation)) return;
    if (!carrier || ownsBoard) return (board->*operation)(std::forward<Arguments>(arguments)...);
    carrier([&] { (board->*operation)(std::forward<Arguments>(arguments)...); });
}

FrameStamp StampNow(BoardModule module, std::int64_t number)
{
    const std::int64_t nowUs = TickUs();
    return {.number = number,
            .monotonicNs = nowUs * 1000,
            .utcNs = UtcNsAtTick(nowUs),
            .lostByTransport = icp_lost_by_transport(module)};
}

constexpr int kReadsForOneFrame = 4;

// For a board that has only its newest frame. One that was replaced while it was read is read again: otherwise its
// values would bear the number of the one before, and come twice.
std::int32_t NewestFrame(BoardModule module, BoardFrame frame, std::int64_t after, std::int64_t limitUs,
                         std::int32_t width, std::int32_t height, std::span<std::int16_t> buffer, FrameStamp& stamp)
{
    std::int64_t count = icp_frame_count(module);
    if (count <= after) {
        if (limitUs == 0 || icp_wait_vb(module, frame) == kBoardTimeout) return kBoardTimeout;
        count = icp_frame_count(module);
    }
    std::int32_t result = 0;
    for (int reads = 0; reads < kReadsForOneFrame; ++reads) {
        stamp = StampNow(module, count);
        result = icp_read_area(module, frame, 0, 0, width, height, buffer);
        count = icp_frame_count(module);
        if (count == stamp.number) break;
    }
    return result;
}

}  // namespace

void RegisterBoard(const BoardTable& table)
{
    std::erase_if(KnownBoards(), [&](const BoardTable* known) { return known->name == table.name; });
    KnownBoards().push_back(&table);
    choice = {};
}

std::int32_t itx_load_cnf(const std::string& path)
{
    ChooseBoard();
    return Ask<&BoardTable::load_cnf>(kNoBoardAnswers, path);
}

std::int32_t itx_init_sys(std::int32_t flags)
{
    return Ask<&BoardTable::init_sys>(kNoBoardAnswers, flags);
}

BoardModule itx_get_modcnf(BoardModule parent, std::string_view name, std::int32_t kind)
{
    return Ask<&BoardTable::get_modcnf>(BoardModule{0}, parent, name, kind);
}

void icp_delete_all_frames(BoardModule module)
{
    Tell<&BoardTable::delete_all_frames>(module);
}

BoardModule icp_get_slot0(BoardModule module)
{
    return Ask<&BoardTable::get_slot0>(BoardModule{0}, module);
}

void amdig_lin_lut(BoardModule acquisition)
{
    Tell<&BoardTable::lin_lut>(acquisition);
}

BoardFrame icp_create_frame(BoardModule module, std::int32_t pitch, std::int32_t rows, std::int32_t bits,
                            std::int32_t flags)
{
    return Ask<&BoardTable::create_frame>(kNoBoardFrame, module, pitch, rows, bits, flags);
}

std::int32_t icp_frame_attrib(BoardModule module, BoardFrame frame, BoardFrameAttributes& attributes)
{
    return Ask<&BoardTable::frame_attrib>(std::int32_t{kNoBoardFrame}, module, frame, attributes);
}

void itx_set_timeout(BoardModule module, std::int32_t hundredthsOfASecond)
{
    Tell<&BoardTable::set_timeout>(module, hundredthsOfASecond);
}

void icp_bm_mode(BoardModule module, std::int32_t on)
{
    Tell<&BoardTable::bm_mode>(module, on);
}

void icp_bm_ilace(BoardModule module, std::int32_t on)
{
    Tell<&BoardTable::bm_ilace>(module, on);
}

void icp_put_bm_firstf_start(BoardModule module, std::int32_t field)
{
    Tell<&BoardTable::put_bm_firstf_start>(module, field);
}

void itx_err_level(std::int32_t level)
{
    Tell<&BoardTable::err_level>(level);
}

std::int32_t icp_grab(BoardModule module, BoardFrame frame)
{
    return Ask<&BoardTable::grab>(kNoBoardAnswers, module, frame);
}

void icp_freeze(BoardModule module, BoardFrame frame)
{
    Tell<&BoardTable::freeze>(module, frame);
}

std::int32_t icp_wait_vb(BoardModule module, BoardFrame frame)
{
    return Ask<&BoardTable::wait_vb>(kNoBoardAnswers, module, frame);
}

std::int32_t icp_read_area(BoardModule module, BoardFrame frame, std::int32_t x, std::int32_t y, std::int32_t width,
                           std::int32_t height, std::span<std::int16_t> buffer)
{
    return Ask<&BoardTable::read_area>(kNoBoardAnswers, module, frame, x, y, width, height, buffer);
}

std::int32_t icp_trig_snap(BoardModule module, BoardFrame frame)
{
    return Ask<&BoardTable::trig_snap>(kNoBoardAnswers, module, frame);
}

std::int32_t icp_wait_trig(BoardModule module, BoardFrame frame, std::int32_t timeout)
{
    return Ask<&BoardTable::wait_trig>(kNoBoardAnswers, module, frame, timeout);
}

void amdig_trigen(BoardModule acquisition, std::int32_t on)
{
    Tell<&BoardTable::trigen>(acquisition, on);
}

void amdig_exsen(BoardModule acquisition, std::int32_t source)
{
    Tell<&BoardTable::exsen>(acquisition, source);
}

void amdig_exsyncp(BoardModule acquisition, std::int32_t level)
{
    Tell<&BoardTable::exsyncp>(acquisition, level);
}

void itx_os_set_realtime_priority(std::int32_t on)
{
    Tell<&BoardTable::os_set_realtime_priority>(on);
}

void itx_exit(std::int32_t flags)
{
    Tell<&BoardTable::exit>(flags);
}

std::int64_t icp_frame_count(BoardModule module)
{
    return Ask<&BoardTable::frame_count>(kUncounted, module);
}

std::int64_t icp_lost_by_transport(BoardModule module)
{
    return Ask<&BoardTable::lost_by_transport>(std::int64_t{0}, module);
}

CameraReport icp_report(BoardModule module)
{
    return Ask<&BoardTable::report>(CameraReport(), module);
}

std::vector<std::string> icp_take_notes(BoardModule module)
{
    return Ask<&BoardTable::take_notes>(std::vector<std::string>(), module);
}

std::int32_t icp_next_frame(BoardModule module, BoardFrame frame, std::int64_t after, std::int64_t limitUs,
                            std::int32_t width, std::int32_t height, std::span<std::int16_t> buffer, FrameStamp& stamp)
{
    const BoardTable* const board = Board();
    if (board && !board->next_frame) return NewestFrame(module, frame, after, limitUs, width, height, buffer, stamp);
    return Ask<&BoardTable::next_frame>(kBoardTimeout, module, frame, after, limitUs, width, height, buffer, stamp);
}

void CarryBoardCalls(std::function<void(const BoardCall&)> carry)
{
    carrier = std::move(carry);
}

void OwnBoard()
{
    ownsBoard = true;
}

void ForgetBoardTables()
{
    KnownBoards().clear();
    choice = {};
}

}  // namespace kelvo
