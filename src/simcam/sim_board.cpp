// The simulated board: shows the camera that its configuration file names, at the pace of the head's registers. Where a
// head in another process is on the port that was opened last, its registers are the ones that hold. The board has
// one frame of 16 bits mono and no computing modules. What comes in at its trigger input, and what its sync output
// does, is the bench's to give and to see.
//
// Each operation can be made to fail by the fault (platform/faults.h) of its name; "icp_frame_attrib bits" and
// "icp_frame_attrib colour" make the frame of the wrong kind. "keep frames" fails nothing: simcam/kept_frames.h.
#include "grabber/copm2.h"
#include "platform/clock.h"
#include "platform/faults.h"
#include "platform/serial.h"
#include "simcam/frame_clock.h"
#include "simcam/head_socket.h"
#include "simcam/kept_frames.h"
#include "simcam/sim_camera.h"
#include "simcam/trigger_input.h"

#include <algorithm>
#include <mutex>
#include <optional>
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
// Frames that the board keeps behind the newest one. The virtual clock, which stands still while somebody works, lets
// nobody come too late for one.
constexpr std::int64_t kFramesKept = 4;

// Numbers of frames, both ends included.
struct FrameRange {
    std::int64_t first = 0;
    std::int64_t last = 0;
};

struct FrameMemory {
    std::int32_t pitch = 0;
    std::int32_t rows = 0;
    std::vector<std::int16_t> values;
};

// All that the board knows between two calls.
struct State {
    std::shared_ptr<SimCamera> camera;
    HeadFollower head;
    std::vector<FrameMemory> frames;  // handles from 1
    std::int64_t timeoutUs = 200 * kUsPerHundredth;
    FrameClock clock;
    bool grabbing = false;
    bool armed = false;
    std::int64_t pulsesAtArming = 0;
    BoardFrame target = kNoBoardFrame;  // the frame that the grab or the trigger fills
    std::int64_t framesBefore = 0;      // of earlier grabs: no two frames have one number
    std::int64_t countAtFreeze = 0;
    KeptFrames kept;
    std::vector<FrameRange> skipped;  // frames that are counted and can't be had
};
State board;

// The board's lines. The bench works them while a capture's thread reads frames.
struct Lines {
    TriggerInput trigger;
    std::int32_t syncSource = 0;
    std::int32_t syncLevel = 0;
    std::int64_t syncPulses = 0;  // times that the output went from low to high
};
Lines lines;
std::mutex linesGuard;

// The lines as they are now, for one who holds the guard.
Lines& LinesNow()
{
    HearPulses(lines.trigger, TickUs());
    return lines;
}

std::int64_t TriggersBy(std::int64_t timeUs)
{
    const std::lock_guard<std::mutex> guard(linesGuard);
    return PulsesBy(LinesNow().trigger, timeUs);
}

FrameMemory* FrameOf(BoardFrame frame)
{
    if (frame < 1 || frame > std::ssize(board.frames)) return nullptr;
    return &board.frames[static_cast<std::size_t>(frame - 1)];
}

void FollowHead(SimCamera& camera)
{
    const HeadNews news = board.head.Hear(LastSerialDevice());
    if (news.kind == HeadNews::Kind::kRegisters) TakeSimRegisters(camera, news.registers);
    if (news.kind == HeadNews::Kind::kGone) PowerDownSimHead(camera);
}

// As the head's registers give it now.
double PeriodUs()
{
    if (!board.camera) return 0;
    FollowHead(*board.camera);
    return SimFramePeriodUs(*board.camera);
}

// The time now; the clock has then heard of a change of the head's registers.
std::int64_t Now()
{
    const std::int64_t nowUs = TickUs();
    SetFramePeriod(board.clock, nowUs, PeriodUs());
    return nowUs;
}

// Waits for the next blank; false, after the whole time limit, where none comes within it.
bool WaitForBlank(std::int64_t limitUs)
{
    const std::int64_t nowUs = Now();
    if (board.clock.periodUs > 0) {
        const std::int64_t blankUs = BlankUs(board.clock, BlanksBy(board.clock, nowUs) + 1);
        if (blankUs - nowUs <= limitUs) {
            DelayUntilUs(blankUs);
            return true;
        }
    }
    DelayUntilUs(nowUs + limitUs);
    return false;
}

std::int64_t FramesGrabbed()
{
    return board.grabbing ? BlanksBy(board.clock, Now()) : board.countAtFreeze;
}

// The last whole frame of the grab, count frames after its start.
void ReadGrabbed(std::int64_t count, std::int32_t width, std::int32_t height, std::span<std::int16_t> out)
{
    if (!board.camera) return;
    ReadSimFrame(*board.camera, board.framesBefore + count - 1, BlankUs(board.clock, count), width, height, out);
}

void StopGrab()
{
    if (!board.grabbing) return;
    const std::int64_t count = FramesGrabbed();
    FrameMemory* const frame = FrameOf(board.target);
    if (frame && count > 0) ReadGrabbed(count, frame->pitch, frame->rows, frame->values);
    board.grabbing = false;
    board.countAtFreeze = count;
    board.framesBefore += count;
}

bool Inside(const FrameMemory& frame, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height)
{
    return x >= 0 && y >= 0 && width >= 0 && height >= 0 && std::int64_t{x} + width <= frame.pitch &&
           std::int64_t{y} + height <= frame.rows;
}

void CopyArea(const FrameMemory& frame, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
              std::span<std::int16_t> out)
{
    const auto columns = static_cast<std::size_t>(width);
    for (std::int32_t row = 0; row < height; ++row) {
        const auto from =
            static_cast<std::size_t>(y + row) * static_cast<std::size_t>(frame.pitch) + static_cast<std::size_t>(x);
        std::copy_n(frame.values.begin() + static_cast<std::ptrdiff_t>(from), columns,
                    out.begin() + static_cast<std::ptrdiff_t>(static_cast<std::size_t>(row) * columns));
    }
}

std::int32_t LoadCnf(const std::string& path)
{
    if (path.empty() || FaultIsSet("itx_load_cnf")) return kFailed;
    std::string error;
    std::shared_ptr<SimCamera> camera = OpenSimCamera(path, error);
    if (!camera) return kFailed;
    StopGrab();
    board.camera = std::move(camera);
    board.clock = StartFrameClock(TickUs(), PeriodUs());
    return kOk;
}

std::int32_t InitSys(std::int32_t /*flags*/)
{
    return board.camera && !FaultIsSet("itx_init_sys") ? kOk : kFailed;
}

BoardModule GetModcnf(BoardModule parent, std::string_view name, std::int32_t /*kind*/)
{
    if (FaultIsSet("itx_get_modcnf") || !board.camera) return 0;
    return parent == 0 && name == "ICP" ? kIcp : 0;
}

void DeleteAllFrames(BoardModule /*module*/)
{
    StopGrab();
    board.armed = false;
    board.frames.clear();
}

BoardModule GetSlot0(BoardModule module)
{
    board.kept.BeginNext();
    return module == kIcp && !FaultIsSet("icp_get_slot0") ? kAcquisition : 0;
}

BoardFrame CreateFrame(BoardModule module, std::int32_t pitch, std::int32_t rows, std::int32_t bits,
                       std::int32_t /*flags*/)
{
    const bool fits = pitch > 0 && rows > 0 && pitch <= kLargestSide && rows <= kLargestSide && bits == kBits;
    if (module != kIcp || !fits || FaultIsSet("icp_create_frame")) return kNoBoardFrame;
    const auto values = static_cast<std::size_t>(pitch) * static_cast<std::size_t>(rows);
    board.frames.push_back({.pitch = pitch, .rows = rows, .values = std::vector<std::int16_t>(values)});
    return static_cast<BoardFrame>(board.frames.size());
}

std::int32_t FrameAttrib(BoardModule /*module*/, BoardFrame frame, BoardFrameAttributes& attributes)
{
    if (!FrameOf(frame) || FaultIsSet("icp_frame_attrib")) return kNoBoardFrame;
    attributes.bits = FaultIsSet("icp_frame_attrib bits") ? 8 : kBits;
    attributes.colour = FaultIsSet("icp_frame_attrib colour") ? 1 : 0;
    return kOk;
}

void SetTimeout(BoardModule /*module*/, std::int32_t hundredths)
{
    board.timeoutUs = std::max(hundredths, 0) * kUsPerHundredth;
}

std::int32_t Grab(BoardModule /*module*/, BoardFrame frame)
{
    if (!FrameOf(frame) || FaultIsSet("icp_grab")) return kFailed;
    StopGrab();
    board.clock = StartFrameClock(TickUs(), PeriodUs());
    board.grabbing = true;
    board.armed = false;
    board.target = frame;
    return kOk;
}

void FreezeGrab(BoardModule /*module*/, BoardFrame /*frame*/)
{
    StopGrab();
}

std::int32_t WaitVb(BoardModule /*module*/, BoardFrame /*frame*/)
{
    if (!FaultIsSet("icp_wait_vb")) return WaitForBlank(board.timeoutUs) ? kOk : kBoardTimeout;
    DelayUntilUs(TickUs() + board.timeoutUs);
    return kBoardTimeout;
}

std::int32_t ReadArea(BoardModule /*module*/, BoardFrame frame, std::int32_t x, std::int32_t y, std::int32_t width,
                      std::int32_t height, std::span<std::int16_t> buffer)
{
    FrameMemory* const memory = FrameOf(frame);
    if (!memory || FaultIsSet("icp_read_area") || !Inside(*memory, x, y, width, height)) return kFailed;
    const auto values = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    if (buffer.size() < values) return kFailed;
    const std::int64_t count = board.grabbing && board.target == frame ? FramesGrabbed() : 0;
    if (count > 0 && x == 0 && y == 0) {  // the live path: no copy of what isn't asked for
        ReadGrabbed(count, width, height, buffer.first(values));
        board.kept.Keep(buffer.first(values), width, height);
        return kOk;
    }
    if (count > 0) ReadGrabbed(count, memory->pitch, memory->rows, memory->values);
    CopyArea(*memory, x, y, width, height, buffer);
    return kOk;
}

// The first frame behind `after` that the board gives, whether it is complete or not.
std::int64_t NextKeptFrame(std::int64_t after, std::int64_t count)
{
    std::int64_t number = after + 1;
    if (!ClockIsVirtual()) number = std::max(number, count - kFramesKept);
    const auto holds = [&number](const FrameRange& range) { return range.first <= number && number <= range.last; };
    for (auto range = std::ranges::find_if(board.skipped, holds); range != board.skipped.end();
         range = std::ranges::find_if(board.skipped, holds)) {
        number = range->last + 1;
    }
    return number;
}

// Waits up to limitUs for a blank of the grab; false where it doesn't come by then.
bool WaitForBlankOf(std::int64_t number, std::int64_t limitUs)
{
    const std::int64_t nowUs = Now();
    const bool comes = board.grabbing && board.clock.periodUs > 0 && BlankUs(board.clock, number) - nowUs <= limitUs;
    DelayUntilUs(comes ? BlankUs(board.clock, number) : nowUs + limitUs);
    return comes;
}

std::int32_t NextFrame(BoardModule /*module*/, BoardFrame frame, std::int64_t after, std::int64_t limitUs,
                       std::int32_t width, std::int32_t height, std::span<std::int16_t> buffer, FrameStamp& stamp)
{
    const FrameMemory* const memory = FrameOf(frame);
    const auto values = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    if (!memory || !Inside(*memory, 0, 0, width, height) || buffer.size() < values || FaultIsSet("icp_wait_vb")) {
        DelayUntilUs(TickUs() + limitUs);
        return kBoardTimeout;
    }
    const std::int64_t count = FramesGrabbed();
    const std::int64_t number = NextKeptFrame(after, count);
    if (number > count && !WaitForBlankOf(number, limitUs)) return kBoardTimeout;
    const std::int64_t blankUs = BlankUs(board.clock, number);
    stamp = {.number = number,
             .monotonicNs = blankUs * kNsPerUs,
             .utcNs = UtcNsAtTick(blankUs),
             .triggers = TriggersBy(blankUs)};
    if (FaultIsSet("icp_read_area")) return kFailed;
    ReadSimFrame(*board.camera, board.framesBefore + number - 1, blankUs, width, height, buffer.first(values));
    return kOk;
}

std::int32_t TrigSnap(BoardModule /*module*/, BoardFrame frame)
{
    if (!FrameOf(frame) || FaultIsSet("icp_trig_snap")) return kFailed;
    StopGrab();
    board.armed = true;
    board.pulsesAtArming = TriggersBy(Now());
    board.target = frame;
    return kOk;
}

// When the first pulse since the arming came, as soon as it has; nullopt, after the whole time, where none does.
std::optional<std::int64_t> WaitForPulse(std::int64_t untilUs)
{
    const auto armingPulse = [] {
        const std::lock_guard<std::mutex> guard(linesGuard);
        return PulseUs(LinesNow().trigger, board.pulsesAtArming + 1);
    };
    if (const auto pulseUs = armingPulse()) return pulseUs;
    std::optional<std::int64_t> nextUs;
    {
        const std::lock_guard<std::mutex> guard(linesGuard);
        nextUs = NextPulseUs(LinesNow().trigger);
    }
    DelayUntilUs(nextUs ? std::min(*nextUs, untilUs) : untilUs);
    return armingPulse();
}

// The first frame that is complete behind the pulse; it may be later than the limit, which is the pulse's.
// timeout: hundredths of a second, as the limit of the other waits.
std::int32_t WaitTrig(BoardModule /*module*/, BoardFrame frame, std::int32_t timeout)
{
    const std::int64_t untilUs = TickUs() + std::max(timeout, 0) * kUsPerHundredth;
    FrameMemory* const memory = FrameOf(frame);
    if (FaultIsSet("icp_wait_trig") || !memory || !board.armed || board.target != frame) {
        DelayUntilUs(untilUs);
        return 0;
    }
    const std::optional<std::int64_t> pulseUs = WaitForPulse(untilUs);
    if (!pulseUs) return 0;
    Now();
    if (board.clock.periodUs <= 0) return 0;
    DelayUntilUs(BlankUs(board.clock, BlanksBy(board.clock, *pulseUs) + 1));
    board.armed = false;
    const std::int64_t number = board.framesBefore++;
    ReadSimFrame(*board.camera, number, TickUs(), memory->pitch, memory->rows, memory->values);
    return 1;
}

void Trigen(BoardModule /*module*/, std::int32_t on)
{
    const std::lock_guard<std::mutex> guard(linesGuard);
    LinesNow().trigger.on = on != 0;
}

void Exsen(BoardModule /*module*/, std::int32_t source)
{
    const std::lock_guard<std::mutex> guard(linesGuard);
    lines.syncSource = source;
}

void Exsyncp(BoardModule /*module*/, std::int32_t level)
{
    const std::lock_guard<std::mutex> guard(linesGuard);
    if (level != 0 && lines.syncLevel == 0) ++lines.syncPulses;
    lines.syncLevel = level != 0 ? 1 : 0;
}

void Exit(std::int32_t /*flags*/)
{
    board = {};
    const std::lock_guard<std::mutex> guard(linesGuard);
    LinesNow().trigger.on = false;
}

std::int64_t FrameCount(BoardModule /*module*/)
{
    return FramesGrabbed();
}

CameraReport ReportOfCamera(BoardModule /*module*/)
{
    if (!board.camera) return {};
    FollowHead(*board.camera);
    return SimReport(*board.camera);
}

constexpr BoardTable kSimulatedBoard{
    .name = "sim",
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
    .trigen = Trigen,
    .exsen = Exsen,
    .exsyncp = Exsyncp,
    .exit = Exit,
    .frame_count = FrameCount,
    .next_frame = NextFrame,
    .report = ReportOfCamera,
};

}  // namespace

void RegisterSimulatedBoard()
{
    RegisterBoard(kSimulatedBoard);
}

void SkipSimFrames(std::int64_t first, std::int64_t last)
{
    board.skipped.push_back({.first = first, .last = last});
}

void PulseSimTrigger()
{
    const std::lock_guard<std::mutex> guard(linesGuard);
    TakePulse(LinesNow().trigger, TickUs());
}

void SetSimTriggerPeriod(std::int64_t periodUs)
{
    const std::lock_guard<std::mutex> guard(linesGuard);
    SetPulsePeriod(LinesNow().trigger, TickUs(), periodUs);
}

SimLines ReadSimLines()
{
    const std::lock_guard<std::mutex> guard(linesGuard);
    const Lines& now = LinesNow();
    return {.triggerOn = now.trigger.on,
            .triggers = now.trigger.taken,
            .triggerPeriodUs = now.trigger.periodUs,
            .syncSource = now.syncSource,
            .syncLevel = now.syncLevel,
            .syncPulses = now.syncPulses};
}

void ResetSimBoard()
{
    board = {};
    const std::lock_guard<std::mutex> guard(linesGuard);
    lines = {};
}

}  // namespace kelvo
