// The board "file": plays the recording that stands in front of the camera of its file, at the recording's own times or
// the file's rate. It has one frame of 16 bits mono and no computing modules, and nothing comes in at its trigger
// input.
//
// A frame that is lost in the recording has a number here too, under which no frame comes: whoever counts finds it lost
// by the board. All other frames can be had in order, however late: the disk has them all. A gathering of frames begins
// with the recording's first one.
//
// Faults (platform/faults.h): "itx_load_cnf", "icp_grab", "icp_wait_vb" and "icp_read_area" make their operation fail.
#include "fileboard/file_camera.h"
#include "grabber/copm2.h"
#include "platform/clock.h"
#include "platform/faults.h"

#include <algorithm>
#include <utility>

namespace kelvo {

namespace {

constexpr std::int32_t kOk = 0;
constexpr std::int32_t kFailed = -1;
constexpr BoardModule kIcp = 1;
constexpr BoardModule kAcquisition = 2;
constexpr std::int32_t kBits = 16;
constexpr std::int32_t kLargestSide = 4096;
constexpr std::int64_t kUsPerHundredth = 10'000;
constexpr std::int64_t kNsPerUs = 1000;

struct FrameMemory {
    std::int32_t pitch = 0;
    std::int32_t rows = 0;
    std::vector<std::int16_t> values;  // as the last grab left it
};

// All that the board knows between two calls.
struct State {
    std::shared_ptr<FileCamera> camera;
    std::vector<FrameMemory> frames;  // handles from 1
    std::int64_t timeoutUs = 200 * kUsPerHundredth;
    bool grabbing = false;
    BoardFrame target = kNoBoardFrame;  // the frame that the grab fills
    std::int64_t playedAtGrab = 0;      // the last number before it began
    std::int64_t countAtFreeze = 0;
    std::vector<std::string> notes;  // why no camera came up
};
State board;

FrameMemory* FrameOf(BoardFrame frame)
{
    if (frame < 1 || frame > std::ssize(board.frames)) return nullptr;
    return &board.frames[static_cast<std::size_t>(frame - 1)];
}

std::size_t ValuesOf(std::int32_t width, std::int32_t height)
{
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

std::int64_t FramesGrabbed()
{
    if (!board.grabbing) return board.countAtFreeze;
    return FilePlayed(*board.camera, TickUs()) - board.playedAtGrab;
}

// The last whole frame of the grab; false where there is none or it can't be read.
bool ReadGrabbed(std::int64_t count, std::int32_t width, std::int32_t height, std::span<std::int16_t> out)
{
    return count > 0 && ReadFileFrame(*board.camera, board.playedAtGrab + count, width, height, out);
}

void StopGrab()
{
    if (!board.grabbing) return;
    const std::int64_t count = FramesGrabbed();
    if (FrameMemory* const frame = FrameOf(board.target)) ReadGrabbed(count, frame->pitch, frame->rows, frame->values);
    board.grabbing = false;
    board.countAtFreeze = count;
}

// Waits for the first frame behind number `after`; nullopt, after the whole time limit, where none comes within it.
std::optional<FileFrame> WaitForFrame(std::int64_t after, std::int64_t limitUs)
{
    const std::int64_t untilUs = TickUs() + limitUs;
    const std::optional<FileFrame> next = board.camera ? NextFileFrame(*board.camera, after) : std::nullopt;
    const bool comes = next && next->us <= untilUs && !FaultIsSet("icp_wait_vb");
    if (!comes) {
        DelayUntilUs(untilUs);
        return std::nullopt;
    }
    if (next->us > TickUs()) DelayUntilUs(next->us);
    return next;
}

std::int32_t LoadCnf(const std::string& path)
{
    if (path.empty() || FaultIsSet("itx_load_cnf")) return kFailed;
    std::string error;
    std::shared_ptr<FileCamera> camera = OpenFileCamera(path, error);
    if (!camera) {
        board.notes.push_back(error);
        return kFailed;
    }
    StopGrab();
    board.camera = std::move(camera);
    return kOk;
}

std::int32_t InitSys(std::int32_t /*flags*/)
{
    return board.camera ? kOk : kFailed;
}

BoardModule GetModcnf(BoardModule parent, std::string_view name, std::int32_t /*kind*/)
{
    return board.camera && parent == 0 && name == "ICP" ? kIcp : 0;
}

void DeleteAllFrames(BoardModule /*module*/)
{
    StopGrab();
    board.frames.clear();
}

// The modules are looked up as the board comes up, and as each gathering of frames begins.
BoardModule GetSlot0(BoardModule module)
{
    if (module != kIcp || !board.camera) return 0;
    BeginRecording(*board.camera);
    return kAcquisition;
}

BoardFrame CreateFrame(BoardModule module, std::int32_t pitch, std::int32_t rows, std::int32_t bits,
                       std::int32_t /*flags*/)
{
    const bool fits = pitch > 0 && rows > 0 && pitch <= kLargestSide && rows <= kLargestSide && bits == kBits;
    if (module != kIcp || !fits) return kNoBoardFrame;
    board.frames.push_back({.pitch = pitch, .rows = rows, .values = std::vector<std::int16_t>(ValuesOf(pitch, rows))});
    return static_cast<BoardFrame>(board.frames.size());
}

std::int32_t FrameAttrib(BoardModule /*module*/, BoardFrame frame, BoardFrameAttributes& attributes)
{
    if (!FrameOf(frame)) return kNoBoardFrame;
    attributes = {.bits = kBits, .colour = 0};
    return kOk;
}

void SetTimeout(BoardModule /*module*/, std::int32_t hundredths)
{
    board.timeoutUs = std::max(hundredths, 0) * kUsPerHundredth;
}

std::int32_t Grab(BoardModule /*module*/, BoardFrame frame)
{
    if (!FrameOf(frame) || !board.camera || FaultIsSet("icp_grab")) return kFailed;
    StopGrab();
    board.grabbing = true;
    board.target = frame;
    board.playedAtGrab = FilePlayed(*board.camera, TickUs());
    return kOk;
}

void FreezeGrab(BoardModule /*module*/, BoardFrame /*frame*/)
{
    StopGrab();
}

std::int32_t WaitVb(BoardModule /*module*/, BoardFrame /*frame*/)
{
    const std::int64_t played = board.camera ? FilePlayed(*board.camera, TickUs()) : 0;
    return WaitForFrame(played, board.timeoutUs) ? kOk : kBoardTimeout;
}

bool Inside(const FrameMemory& frame, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height)
{
    return x >= 0 && y >= 0 && width >= 0 && height >= 0 && std::int64_t{x} + width <= frame.pitch &&
           std::int64_t{y} + height <= frame.rows;
}

void CopyArea(const FrameMemory& frame, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
              std::span<std::int16_t> out)
{
    for (std::int32_t row = 0; row < height; ++row) {
        const std::size_t from = ValuesOf(frame.pitch, y + row) + static_cast<std::size_t>(x);
        std::ranges::copy(std::span(frame.values).subspan(from, static_cast<std::size_t>(width)),
                          out.subspan(ValuesOf(width, row)).begin());
    }
}

std::int32_t ReadArea(BoardModule /*module*/, BoardFrame frame, std::int32_t x, std::int32_t y, std::int32_t width,
                      std::int32_t height, std::span<std::int16_t> buffer)
{
    FrameMemory* const memory = FrameOf(frame);
    if (!memory || FaultIsSet("icp_read_area") || !Inside(*memory, x, y, width, height)) return kFailed;
    const std::size_t values = ValuesOf(width, height);
    if (buffer.size() < values) return kFailed;
    const std::int64_t count = board.grabbing && board.target == frame ? FramesGrabbed() : 0;
    if (count > 0 && x == 0 && y == 0) {  // the live path: no copy of what isn't asked for
        AskFileWindow(*board.camera, width, height);
        return ReadGrabbed(count, width, height, buffer.first(values)) ? kOk : kFailed;
    }
    if (count > 0 && !ReadGrabbed(count, memory->pitch, memory->rows, memory->values)) return kFailed;
    CopyArea(*memory, x, y, width, height, buffer);
    return kOk;
}

std::int32_t NextFrame(BoardModule /*module*/, BoardFrame frame, std::int64_t after, std::int64_t limitUs,
                       std::int32_t width, std::int32_t height, std::span<std::int16_t> buffer, FrameStamp& stamp)
{
    const FrameMemory* const memory = FrameOf(frame);
    const std::size_t values = ValuesOf(width, height);
    if (!memory || !board.grabbing || !Inside(*memory, 0, 0, width, height) || buffer.size() < values) {
        DelayUntilUs(TickUs() + limitUs);
        return kBoardTimeout;
    }
    const std::optional<FileFrame> next = WaitForFrame(board.playedAtGrab + after, limitUs);
    if (!next) return kBoardTimeout;
    stamp = {.number = next->number - board.playedAtGrab,
             .monotonicNs = next->us * kNsPerUs,
             .utcNs = UtcNsAtTick(next->us)};
    if (FaultIsSet("icp_read_area")) return kFailed;
    AskFileWindow(*board.camera, width, height);
    return ReadFileFrame(*board.camera, next->number, width, height, buffer.first(values)) ? kOk : kFailed;
}

std::int32_t TrigSnap(BoardModule /*module*/, BoardFrame frame)
{
    if (!FrameOf(frame)) return kFailed;
    StopGrab();
    return kOk;
}

// A recording has no trigger input. timeout: hundredths of a second.
std::int32_t WaitTrig(BoardModule /*module*/, BoardFrame /*frame*/, std::int32_t timeout)
{
    DelayUntilUs(TickUs() + std::max(timeout, 0) * kUsPerHundredth);
    return 0;
}

void Exit(std::int32_t /*flags*/)
{
    board = {};
}

std::int64_t FrameCount(BoardModule /*module*/)
{
    return FramesGrabbed();
}

CameraReport Report(BoardModule /*module*/)
{
    return board.camera ? ReportOfFile(*board.camera) : CameraReport();
}

std::vector<std::string> TakeNotes(BoardModule /*module*/)
{
    std::vector<std::string> notes = std::exchange(board.notes, {});
    if (!board.camera) return notes;
    for (std::string& note : TakeFileNotes(*board.camera)) notes.push_back(std::move(note));
    return notes;
}

constexpr BoardTable kFileBoard{
    .name = "file",
    .load_cnf = LoadCnf,
    .init_sys = InitSys,
    .get_modcnf = GetModcnf,
    .delete_all_frames = DeleteAllFrames,
    .get_slot0 = GetSlot0,
    .create_frame = CreateFrame,
    .frame_attrib = FrameAttrib,
    .set_timeout = SetTimeout,
    .grab = Grab,
    .freeze = FreezeGrab,
    .wait_vb = WaitVb,
    .read_area = ReadArea,
    .trig_snap = TrigSnap,
    .wait_trig = WaitTrig,
    .exit = Exit,
    .frame_count = FrameCount,
    .next_frame = NextFrame,
    .report = Report,
    .take_notes = TakeNotes,
};

}  // namespace

void RegisterFileBoard()
{
    RegisterBoard(kFileBoard);
}

void ResetFileBoard()
{
    board = {};
}

}  // namespace kelvo
