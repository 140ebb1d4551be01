// The board's operations under their own names. Behind them stands one table of functions, filled by the board that
// platform.ini names (section Board, key Board; "sim" is the simulated one). This is the only place that knows a board.
//
// Handles are small integers; 0 is none. Where no result is named it isn't tested. Without a board (or with an unknown
// one) every operation fails.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

using BoardModule = std::int32_t;
using BoardFrame = std::int16_t;

constexpr BoardFrame kNoBoardFrame = -2;
constexpr std::int32_t kBoardTimeout = -7;

struct BoardFrameAttributes {
    std::int32_t bits = 0;
    std::int32_t colour = 0;  // 0: monochrome
};

// When a frame was complete, and which one it is.
struct FrameStamp {
    std::int64_t number = 0;       // frames since icp_grab, from 1; kUncounted: the board doesn't count
    std::int64_t monotonicNs = 0;  // TickUs's scale, at the frame's blank
    std::int64_t utcNs = 0;        // since 1 January 1970, the same moment
    std::int64_t triggers = 0;     // pulses that the trigger input has taken by then; 0 where the board doesn't say
    // Frames since icp_grab that were sent and came damaged or not at all, by then: lost on the way to the board.
    std::int64_t lostByTransport = 0;
    friend bool operator==(const FrameStamp&, const FrameStamp&) = default;
};
constexpr std::int64_t kUncounted = -1;

enum class CameraLink {
    kUp,
    kLost,  // no frame comes, and the board tries to have the camera back
};

// What the camera behind a board says of itself. What it doesn't tell is empty: what was reckoned holds then.
struct CameraReport {
    std::optional<double> rateHz;         // frames a second, as it delivers them
    std::optional<double> integrationMs;  // of a frame
    std::optional<std::int32_t> columns;  // of a whole frame
    std::optional<std::int32_t> rows;
    std::optional<std::int32_t> bits;  // of a count, 1 to 16
    CameraLink link = CameraLink::kUp;
    std::string linkText;  // of a lost one, for the status line
    std::string clock;     // where the times of its frames come from; empty: this machine's clock at the frame's blank
    std::string counts;    // what was done to make signed counts of 16 bits ("shifted right by 1"); empty: nothing
};

// What a board can do. One that is null it can't: what asks has a failure for an answer, what sets has no effect.
struct BoardTable {
    std::string_view name;
    std::int32_t (*load_cnf)(const std::string& path) = nullptr;
    std::int32_t (*init_sys)(std::int32_t flags) = nullptr;
    BoardModule (*get_modcnf)(BoardModule parent, std::string_view name, std::int32_t kind) = nullptr;
    void (*delete_all_frames)(BoardModule module) = nullptr;
    BoardModule (*get_slot0)(BoardModule module) = nullptr;
    void (*lin_lut)(BoardModule acquisition) = nullptr;
    BoardFrame (*create_frame)(BoardModule module, std::int32_t pitch, std::int32_t rows, std::int32_t bits,
                               std::int32_t flags) = nullptr;
    std::int32_t (*frame_attrib)(BoardModule module, BoardFrame frame, BoardFrameAttributes& attributes) = nullptr;
    void (*set_timeout)(BoardModule module, std::int32_t hundredthsOfASecond) = nullptr;
    void (*bm_mode)(BoardModule module, std::int32_t on) = nullptr;
    void (*bm_ilace)(BoardModule module, std::int32_t on) = nullptr;
    void (*put_bm_firstf_start)(BoardModule module, std::int32_t field) = nullptr;
    void (*err_level)(std::int32_t level) = nullptr;
    std::int32_t (*grab)(BoardModule module, BoardFrame frame) = nullptr;
    void (*freeze)(BoardModule module, BoardFrame frame) = nullptr;
    std::int32_t (*wait_vb)(BoardModule module, BoardFrame frame) = nullptr;
    std::int32_t (*read_area)(BoardModule module, BoardFrame frame, std::int32_t x, std::int32_t y, std::int32_t width,
                              std::int32_t height, std::span<std::int16_t> buffer) = nullptr;
    std::int32_t (*trig_snap)(BoardModule module, BoardFrame frame) = nullptr;
    std::int32_t (*wait_trig)(BoardModule module, BoardFrame frame, std::int32_t timeout) = nullptr;
    void (*trigen)(BoardModule acquisition, std::int32_t on) = nullptr;
    void (*exsen)(BoardModule acquisition, std::int32_t source) = nullptr;
    void (*exsyncp)(BoardModule acquisition, std::int32_t level) = nullptr;
    void (*os_set_realtime_priority)(std::int32_t on) = nullptr;
    void (*exit)(std::int32_t flags) = nullptr;
    std::int64_t (*frame_count)(BoardModule module) = nullptr;  // null: the board doesn't count
    std::int32_t (*next_frame)(BoardModule module, BoardFrame frame, std::int64_t after, std::int64_t limitUs,
                               std::int32_t width, std::int32_t height, std::span<std::int16_t> buffer,
                               FrameStamp& stamp) = nullptr;               // null: the board has only the newest
    CameraReport (*report)(BoardModule module) = nullptr;                  // null: the camera tells nothing
    std::vector<std::string> (*take_notes)(BoardModule module) = nullptr;  // null: there are never any
    std::int64_t (*lost_by_transport)(BoardModule module) = nullptr;       // null: none is ever lost on the way
};

// Makes a board known under its name. The table has to outlive the program.
void RegisterBoard(const BoardTable& table);

std::int32_t itx_load_cnf(const std::string& path);  // 0 on success. Chooses the board first
std::int32_t itx_init_sys(std::int32_t flags);       // 0 on success
// The module's handle, 0 if absent. "ICP" and "CMP" at the top (parent 0); below "CMP" its five modules.
BoardModule itx_get_modcnf(BoardModule parent, std::string_view name, std::int32_t kind);
void icp_delete_all_frames(BoardModule module);
BoardModule icp_get_slot0(BoardModule module);
void amdig_lin_lut(BoardModule acquisition);
BoardFrame icp_create_frame(BoardModule module, std::int32_t pitch, std::int32_t rows, std::int32_t bits,
                            std::int32_t flags);  // kNoBoardFrame on failure
std::int32_t icp_frame_attrib(BoardModule module, BoardFrame frame, BoardFrameAttributes& attributes);
void itx_set_timeout(BoardModule module, std::int32_t hundredthsOfASecond);
void icp_bm_mode(BoardModule module, std::int32_t on);
void icp_bm_ilace(BoardModule module, std::int32_t on);
void icp_put_bm_firstf_start(BoardModule module, std::int32_t field);
void itx_err_level(std::int32_t level);

std::int32_t icp_grab(BoardModule module, BoardFrame frame);  // 0 on success: continuous capture runs
void icp_freeze(BoardModule module, BoardFrame frame);
std::int32_t icp_wait_vb(BoardModule module, BoardFrame frame);  // blocks until the next blank; kBoardTimeout
// Copies width x height values at (x, y) of the last whole frame to buffer, row-major. 0 on success.
std::int32_t icp_read_area(BoardModule module, BoardFrame frame, std::int32_t x, std::int32_t y, std::int32_t width,
                           std::int32_t height, std::span<std::int16_t> buffer);
std::int32_t icp_trig_snap(BoardModule module, BoardFrame frame);  // 0 on success: armed for one capture
std::int32_t icp_wait_trig(BoardModule module, BoardFrame frame, std::int32_t timeout);  // 1 when triggered
void amdig_trigen(BoardModule acquisition, std::int32_t on);
void amdig_exsen(BoardModule acquisition, std::int32_t source);
void amdig_exsyncp(BoardModule acquisition, std::int32_t level);
void itx_os_set_realtime_priority(std::int32_t on);
void itx_exit(std::int32_t flags);

// Ours: frames completed since icp_grab; kUncounted where the board doesn't count.
std::int64_t icp_frame_count(BoardModule module);
// Ours: of icp_frame_count's frames those that were sent and came damaged or not at all; 0 without a board.
std::int64_t icp_lost_by_transport(BoardModule module);
// Ours: the oldest frame numbered above `after` that the board still has, width x height values at (0, 0), with its
// stamp; it waits for one up to limitUs. 0; kBoardTimeout; anything else: a frame came and couldn't be read, and the
// stamp has its number. A board that has only the newest gives that one, and where none is newer waits for the next
// blank as long as itx_set_timeout says; if it doesn't count either, it always waits. With a limit of 0 none waits.
std::int32_t icp_next_frame(BoardModule module, BoardFrame frame, std::int64_t after, std::int64_t limitUs,
                            std::int32_t width, std::int32_t height, std::span<std::int16_t> buffer, FrameStamp& stamp);

// Ours: what the camera says of itself now; nothing without a board, or of one that tells nothing.
CameraReport icp_report(BoardModule module);
// Ours: what the operator is to be told of the camera since the last call, sentences in order: what was asked of it and
// can't be, or became something else. Each is given once.
std::vector<std::string> icp_take_notes(BoardModule module);

// While a thread of its own takes the frames, the board is that thread's: every call of another one is handed to carry,
// which has it done there and returns when it is done. An empty function: calls go straight to the board again. To be
// called by the main thread, before the other one begins and after it has ended; OwnBoard by the other one.
using BoardCall = std::function<void()>;
void CarryBoardCalls(std::function<void(const BoardCall&)> carry);
void OwnBoard();

// No board is known, and none chosen.
void ForgetBoardTables();

}  // namespace kelvo
