#include "grabber/copm2.h"

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

// Asks the board; without one the answer is failure.
template <auto operation, typename Result, typename... Arguments>
Result Ask(Result failure, Arguments&&... arguments)
{
    const BoardTable* const board = Board();
    return board ? (board->*operation)(std::forward<Arguments>(arguments)...) : failure;
}

template <auto operation, typename... Arguments>
void Tell(Arguments&&... arguments)
{
    if (const BoardTable* const board = Board()) (board->*operation)(std::forward<Arguments>(arguments)...);
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
    return Ask<&BoardTable::frame_count>(std::int64_t{0}, module);
}

void ForgetBoardTables()
{
    KnownBoards().clear();
    choice = {};
}

}  // namespace kelvo
