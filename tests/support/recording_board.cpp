#include "support/recording_board.h"

#include "grabber/board.h"
#include "platform/text.h"
#include "state/camera_config_write.h"
#include "state/frame_state_write.h"
#include "state/windows_write.h"
#include "video/video.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace kelvo {

RecordingBoard recordingBoard;

namespace {

constexpr BoardModule kIcpHandle = 11;
constexpr BoardModule kSlotHandle = 12;
constexpr BoardFrame kFrameHandle = 5;

std::size_t nextFrame = 0;

void Note(std::string text)
{
    if (recordingBoard.writesDown) recordingBoard.asked.push_back(std::move(text));
}

std::int32_t AnswerOf(const std::string& name, std::int32_t otherwise)
{
    const auto answer = recordingBoard.answers.find(name);
    return answer == recordingBoard.answers.end() ? otherwise : answer->second;
}

std::int32_t Report(const std::string& name, std::string details, std::int32_t otherwise = 0)
{
    if (recordingBoard.writesDown) Note(name + std::move(details));
    return AnswerOf(name, otherwise);
}

std::int32_t LoadCnf(const std::string& path)
{
    return Report("itx_load_cnf", " " + path);
}

std::int32_t InitSys(std::int32_t flags)
{
    return Report("itx_init_sys", Format(" %d", flags));
}

BoardModule GetModcnf(BoardModule parent, std::string_view name, std::int32_t kind)
{
    Note(Format("itx_get_modcnf %d %s %d", parent, std::string(name).c_str(), kind));
    if (name == "ICP") return AnswerOf("itx_get_modcnf", kIcpHandle);
    if (!recordingBoard.hasComputingModules) return 0;
    if (name == "CMP") return 20;
    return parent == 20 ? 20 + static_cast<BoardModule>(recordingBoard.asked.size() % 100) : 0;
}

void DeleteAllFrames(BoardModule module)
{
    Note(Format("icp_delete_all_frames %d", module));
}

BoardModule GetSlot0(BoardModule module)
{
    return Report("icp_get_slot0", Format(" %d", module), kSlotHandle);
}

void LinLut(BoardModule module)
{
    Note(Format("amdig_lin_lut %d", module));
}

BoardFrame CreateFrame(BoardModule module, std::int32_t pitch, std::int32_t rows, std::int32_t bits, std::int32_t flags)
{
    return static_cast<BoardFrame>(
        Report("icp_create_frame", Format(" %d %d %d %d %d", module, pitch, rows, bits, flags), kFrameHandle));
}

std::int32_t FrameAttrib(BoardModule module, BoardFrame frame, BoardFrameAttributes& attributes)
{
    attributes.bits = recordingBoard.bits;
    attributes.colour = recordingBoard.colour;
    return Report("icp_frame_attrib", Format(" %d %d", module, frame));
}

void SetTimeout(BoardModule module, std::int32_t hundredths)
{
    Note(Format("itx_set_timeout %d %d", module, hundredths));
}

void BmMode(BoardModule module, std::int32_t on)
{
    Note(Format("icp_bm_mode %d %d", module, on));
}

void BmIlace(BoardModule module, std::int32_t on)
{
    Note(Format("icp_bm_ilace %d %d", module, on));
}

void FirstField(BoardModule module, std::int32_t field)
{
    Note(Format("icp_put_bm_firstf_start %d %d", module, field));
}

void ErrLevel(std::int32_t level)
{
    Note(Format("itx_err_level %d", level));
}

std::int32_t Grab(BoardModule module, BoardFrame frame)
{
    if (AnswerOf("icp_grab", 0) == 0) recordingBoard.frameCount = recordingBoard.lostByTransport = 0;
    if (recordingBoard.grabTurnsDisplayOff) write::frames.DisplayEnabled = 0;
    return Report("icp_grab", Format(" %d %d", module, frame));
}

void FreezeGrab(BoardModule module, BoardFrame frame)
{
    Note(Format("icp_freeze %d %d", module, frame));
}

std::int32_t WaitVb(BoardModule module, BoardFrame frame)
{
    const std::int32_t result = Report("icp_wait_vb", Format(" %d %d", module, frame));
    if (result != kBoardTimeout) ++recordingBoard.frameCount;
    return result;
}

// The next of the frames that were given.
void CopyNextFrame(std::span<std::int16_t> buffer)
{
    const auto& frame = recordingBoard.frames[nextFrame++ % recordingBoard.frames.size()];
    if (frame.size() == 1) {
        std::ranges::fill(buffer, frame[0]);
    } else {
        std::copy_n(frame.begin(), std::min(frame.size(), buffer.size()), buffer.begin());
    }
}

std::int32_t ReadArea(BoardModule module, BoardFrame frame, std::int32_t x, std::int32_t y, std::int32_t width,
                      std::int32_t height, std::span<std::int16_t> buffer)
{
    if (recordingBoard.onRead) recordingBoard.onRead(++recordingBoard.reads);
    if (recordingBoard.writesDown) {
        Note(Format("icp_read_area %d %d %d %d %d %d", module, frame, x, y, width, height));
    }
    const std::int32_t result = AnswerOf("icp_read_area", 0);
    if (result != 0) return result;
    if (!recordingBoard.frames.empty()) {
        CopyNextFrame(buffer);
        return 0;
    }
    for (std::int32_t row = 0; row < height; ++row) {
        for (std::int32_t column = 0; column < width; ++column) {
            buffer[static_cast<std::size_t>(row * width + column)] =
                static_cast<std::int16_t>(recordingBoard.picture + 100 * row + column);
        }
    }
    return 0;
}

std::int32_t TrigSnap(BoardModule module, BoardFrame frame)
{
    return Report("icp_trig_snap", Format(" %d %d", module, frame));
}

std::int32_t WaitTrig(BoardModule module, BoardFrame frame, std::int32_t timeout)
{
    return Report("icp_wait_trig", Format(" %d %d %d", module, frame, timeout), 1);
}

void Trigen(BoardModule module, std::int32_t on)
{
    Note(Format("amdig_trigen %d %d", module, on));
}

void Exsen(BoardModule module, std::int32_t source)
{
    Note(Format("amdig_exsen %d %d", module, source));
}

void Exsyncp(BoardModule module, std::int32_t level)
{
    Note(Format("amdig_exsyncp %d %d", module, level));
}

void Priority(std::int32_t on)
{
    Note(Format("priority %d", on));
}

void Exit(std::int32_t flags)
{
    Note(Format("itx_exit %d", flags));
}

std::int64_t FrameCount(BoardModule /*module*/)
{
    return recordingBoard.counts ? recordingBoard.frameCount : kUncounted;
}

std::int64_t LostByTransport(BoardModule /*module*/)
{
    return recordingBoard.lostByTransport;
}

constexpr BoardTable kTable{
    .name = "recording",
    .load_cnf = LoadCnf,
    .init_sys = InitSys,
    .get_modcnf = GetModcnf,
    .delete_all_frames = DeleteAllFrames,
    .get_slot0 = GetSlot0,
    .lin_lut = LinLut,
    .create_frame = CreateFrame,
    .frame_attrib = FrameAttrib,
    .set_timeout = SetTimeout,
    .bm_mode = BmMode,
    .bm_ilace = BmIlace,
    .put_bm_firstf_start = FirstField,
    .err_level = ErrLevel,
    .grab = Grab,
    .freeze = FreezeGrab,
    .wait_vb = WaitVb,
    .read_area = ReadArea,
    .trig_snap = TrigSnap,
    .wait_trig = WaitTrig,
    .trigen = Trigen,
    .exsen = Exsen,
    .exsyncp = Exsyncp,
    .os_set_realtime_priority = Priority,
    .exit = Exit,
    .frame_count = FrameCount,
    .lost_by_transport = LostByTransport,
};

}  // namespace

void RegisterRecordingBoard()
{
    recordingBoard = {};
    nextFrame = 0;
    RegisterBoard(kTable);
}

void RegisterQuietBoard()
{
    RegisterRecordingBoard();
    recordingBoard.grabTurnsDisplayOff = true;
    SetBoardFrames({});
}

void SetBoardFrames(std::vector<std::vector<std::int16_t>> frames)
{
    if (frames.empty()) {
        recordingBoard.answers["icp_wait_vb"] = kBoardTimeout;
    } else {
        recordingBoard.answers.erase("icp_wait_vb");
    }
    recordingBoard.frames = std::move(frames);
    nextFrame = 0;
}

std::vector<std::string> TakeBoardCalls()
{
    constexpr std::pair<std::string_view, std::string_view> kCalls[] = {
        {"itx_init_sys ", "init"}, {"icp_grab ", "grab"}, {"icp_freeze ", "freeze"}};
    std::vector<std::string> calls;
    for (const std::string& asked : std::exchange(recordingBoard.asked, {})) {
        for (const auto& [operation, call] : kCalls) {
            if (asked.starts_with(operation)) calls.emplace_back(call);
        }
    }
    return calls;
}

BoardTest::BoardTest()
{
    SetDefaultDir(directory.Path());
    PutFile(directory / "platform.ini", "[Board]\nBoard=recording\n[Memory]\nShare=100\n");
    write::camera.ActiveCamera = 2;
    write::camera.ActiveConfig.Xzoom = 1;
    write::camera.ActiveConfig.Yzoom = 1;
    RegisterRecordingBoard();
}

BoardTest::~BoardTest() = default;

void BoardTest::SetSize(int columns, int rows)
{
    write::camera.ActiveConfig.Hroi = columns;
    write::camera.ActiveConfig.Vroi = rows;
}

void BoardTest::GoLive(int columns, int rows)
{
    SetSize(columns, rows);
    ASSERT_EQ(init_itex(), 1);
    write::frames.CameraOn = 1;
    ToggleFreeze(write::frames.LiveVideo);
    ASSERT_EQ(LiveVideo, 1);
    ForgetAsked();
}

void BoardTest::ForgetAsked()
{
    recordingBoard.asked.clear();
}

}  // namespace kelvo
