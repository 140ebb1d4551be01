// The board "genicam": one frame of 16 bits mono that shows the stream of a camera, and no computing modules.
//
// Each operation can be made to fail by the fault (platform/faults.h) of its name: "itx_load_cnf", "icp_grab",
// "icp_read_area", "icp_wait_vb".
#include "genicam/aravis_camera.h"
#include "genicam/genicam_camera.h"
#include "grabber/copm2.h"
#include "platform/clock.h"
#include "platform/faults.h"
#include "platform/profile.h"
#include "platform/serial.h"
#include "state/camera_config.h"
#include "state/windows.h"
#include "wirehead/wire_line.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr std::int32_t kOk = 0;
constexpr std::int32_t kFailed = -1;
constexpr BoardModule kIcp = 1;
constexpr BoardModule kAcquisition = 2;
constexpr std::int32_t kBits = 16;
constexpr std::int32_t kLargestSide = 32768;
constexpr std::int64_t kUsPerHundredth = 10'000;
constexpr std::int32_t kUsualClockHz = 48'000'000;  // where a section says nothing

struct Cameras {
    std::map<std::string, std::shared_ptr<SharedCamera>> all;  // by device
    std::shared_ptr<SharedCamera> ofHead;                      // whose line was opened last
    CameraOpener opener = OpenAravisCamera;
};
Cameras cameras;

struct FrameSize {
    std::int32_t pitch = 0;
    std::int32_t rows = 0;
};

// All that the board knows between two calls.
struct State {
    std::shared_ptr<SharedCamera> camera;
    std::vector<FrameSize> frames;  // handles from 1
    std::int64_t timeoutUs = 200 * kUsPerHundredth;
    bool waitsForInput = false;  // amdig_trigen
    bool isUp = false;
    std::vector<std::string> notes;  // of the board itself
};
State board;

bool IsFrame(BoardFrame frame)
{
    return frame >= 1 && frame <= std::ssize(board.frames);
}

bool Inside(BoardFrame frame, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
            std::size_t values)
{
    if (!IsFrame(frame) || x < 0 || y < 0 || width < 0 || height < 0) return false;
    const FrameSize& size = board.frames[static_cast<std::size_t>(frame - 1)];
    return std::int64_t{x} + width <= size.pitch && std::int64_t{y} + height <= size.rows &&
           std::uint64_t{values} >= static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
}

// A camera's frames come by the real clock; a virtual one goes on by what was waited for in vain.
void PassTime(std::int64_t limitUs)
{
    if (ClockIsVirtual()) AdvanceVirtualClock(limitUs);
}

SharedCamera::Section ActiveSection()
{
    constexpr std::int32_t kUnit = 4;  // of the wire
    const auto number = [section = ActiveCameraSection()](const char* key, std::int32_t fallback) {
        return GetPrivateProfileInt(section, key, fallback, CameraFilePath);
    };
    const auto side = [&number](const char* key) { return std::clamp(number(key, 0), 0, kLargestSide); };
    const auto timing = [&](const char* active, const char* extra) {
        return (side(active) + side(extra)) / kUnit * kUnit;
    };
    const std::int32_t clockHz = number("QVF1058_MasterClockFrequency", kUsualClockHz);
    return {.clockHz = static_cast<double>(clockHz > 0 ? clockHz : kUsualClockHz),
            .timingRows = timing("Vactive", "QVF1058_ExtraTimingRows"),
            .timingColumns = timing("Hactive", "QVF1058_ExtraTimingCols"),
            .rows = side("Vroi"),
            .columns = side("Hroi")};
}

std::int32_t LoadCnf(const std::string& path)
{
    if (FaultIsSet("itx_load_cnf")) return kFailed;
    std::string error;
    const std::optional<BoardFile> file = ReadBoardFile(path, error);
    if (!file) {
        board.notes.push_back(error);
        return kFailed;
    }
    std::shared_ptr<SharedCamera> camera = file->device ? GenicamCamera(*file->device) : cameras.ofHead;
    if (!camera) camera = GenicamCamera("");
    if (camera != cameras.ofHead) camera->SetSection(ActiveSection());
    if (board.camera && board.camera != camera) board.camera->Release();
    camera->SetSettings(file->settings);
    board.camera = std::move(camera);
    return kOk;
}

std::int32_t InitSys(std::int32_t /*flags*/)
{
    if (!board.camera) return kFailed;
    std::string error;
    board.isUp = board.camera->Open(error);
    if (!board.isUp) board.notes.push_back(error);
    return board.isUp ? kOk : kFailed;
}

BoardModule GetModcnf(BoardModule parent, std::string_view name, std::int32_t /*kind*/)
{
    return board.isUp && parent == 0 && name == "ICP" ? kIcp : 0;
}

void DeleteAllFrames(BoardModule /*module*/)
{
    if (board.camera) board.camera->EndGrab();
    board.frames.clear();
}

BoardModule GetSlot0(BoardModule module)
{
    return module == kIcp ? kAcquisition : 0;
}

void NoteOtherSize(std::int32_t pitch, std::int32_t rows)
{
    constexpr std::int32_t kPitchStep = 32;  // columns are rounded up to it
    const CameraReport report = board.camera->Report();
    const std::int32_t columns = report.columns.value_or(0);
    if ((columns + kPitchStep - 1) / kPitchStep * kPitchStep == pitch && report.rows == rows) return;
    board.notes.push_back("The camera's frames have " + std::to_string(columns) + " columns and " +
                          std::to_string(report.rows.value_or(0)) +
                          " rows, others than the section says: what is more is cut off, what is less is 0.");
}

BoardFrame CreateFrame(BoardModule module, std::int32_t pitch, std::int32_t rows, std::int32_t bits,
                       std::int32_t /*flags*/)
{
    const bool fits = pitch > 0 && rows > 0 && pitch <= kLargestSide && rows <= kLargestSide && bits == kBits;
    if (module != kIcp || !fits) return kNoBoardFrame;
    board.frames.push_back({.pitch = pitch, .rows = rows});
    NoteOtherSize(pitch, rows);
    return static_cast<BoardFrame>(board.frames.size());
}

std::int32_t FrameAttrib(BoardModule /*module*/, BoardFrame frame, BoardFrameAttributes& attributes)
{
    if (!IsFrame(frame)) return kNoBoardFrame;
    attributes = {.bits = kBits, .colour = 0};
    return kOk;
}

void SetTimeout(BoardModule /*module*/, std::int32_t hundredths)
{
    board.timeoutUs = std::max(hundredths, 0) * kUsPerHundredth;
}

std::int32_t BeginGrab(BoardFrame frame, SharedCamera::Trigger trigger)
{
    if (!IsFrame(frame) || !board.camera || FaultIsSet("icp_grab")) return kFailed;
    return board.camera->BeginGrab(trigger) ? kOk : kFailed;
}

std::int32_t Grab(BoardModule /*module*/, BoardFrame frame)
{
    return BeginGrab(frame, SharedCamera::Trigger::kNone);
}

void FreezeGrab(BoardModule /*module*/, BoardFrame /*frame*/)
{
    if (board.camera) board.camera->EndGrab();
}

std::int32_t WaitVb(BoardModule /*module*/, BoardFrame /*frame*/)
{
    const bool came = board.camera && !FaultIsSet("icp_wait_vb") &&
                      board.camera->WaitForFrame(board.camera->FrameCount(), board.timeoutUs);
    if (came) return kOk;
    PassTime(board.timeoutUs);
    return kBoardTimeout;
}

// Before the first frame there is nothing to see, and no failure.
std::int32_t ReadArea(BoardModule /*module*/, BoardFrame frame, std::int32_t x, std::int32_t y, std::int32_t width,
                      std::int32_t height, std::span<std::int16_t> buffer)
{
    const bool fits = board.camera && Inside(frame, x, y, width, height, buffer.size());
    if (!fits || FaultIsSet("icp_read_area")) return kFailed;
    FrameStamp stamp;
    const auto values = buffer.first(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    if (!board.camera->ReadFrame(std::nullopt, 0, x, y, width, height, values, stamp)) {
        std::ranges::fill(values, std::int16_t{0});
    }
    return kOk;
}

std::int32_t NextFrame(BoardModule /*module*/, BoardFrame frame, std::int64_t after, std::int64_t limitUs,
                       std::int32_t width, std::int32_t height, std::span<std::int16_t> buffer, FrameStamp& stamp)
{
    const bool fits = board.camera && Inside(frame, 0, 0, width, height, buffer.size());
    const auto values = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    if (fits && !FaultIsSet("icp_wait_vb") &&
        board.camera->ReadFrame(after, limitUs, 0, 0, width, height, buffer.first(values), stamp)) {
        return FaultIsSet("icp_read_area") ? kFailed : kOk;
    }
    PassTime(limitUs);
    return kBoardTimeout;
}

std::int32_t TrigSnap(BoardModule /*module*/, BoardFrame frame)
{
    return BeginGrab(frame, board.waitsForInput ? SharedCamera::Trigger::kInput : SharedCamera::Trigger::kSoftware);
}

std::int32_t WaitTrig(BoardModule /*module*/, BoardFrame frame, std::int32_t timeout)
{
    const std::int64_t limitUs = std::max(timeout, 0) * kUsPerHundredth;
    const bool came = board.camera && IsFrame(frame) && board.camera->WaitForFrame(0, limitUs);
    if (!came) {
        PassTime(limitUs);
        return 0;
    }
    board.camera->EndGrab();
    return 1;
}

void Trigen(BoardModule /*module*/, std::int32_t on)
{
    board.waitsForInput = on != 0;
}

void Exit(std::int32_t /*flags*/)
{
    if (board.camera) board.camera->Release();
    board = {};
}

std::int64_t FrameCount(BoardModule /*module*/)
{
    return board.camera ? board.camera->FrameCount() : 0;
}

std::int64_t LostByTransport(BoardModule /*module*/)
{
    return board.camera ? board.camera->LostByTransport() : 0;
}

CameraReport Report(BoardModule /*module*/)
{
    return board.camera ? board.camera->Report() : CameraReport();
}

std::vector<std::string> TakeNotes(BoardModule /*module*/)
{
    std::vector<std::string> notes = std::exchange(board.notes, {});
    if (!board.camera) return notes;
    std::ranges::move(board.camera->TakeNotes(), std::back_inserter(notes));
    return notes;
}

constexpr BoardTable kGenicamBoard{
    .name = "genicam",
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
    .exit = Exit,
    .frame_count = FrameCount,
    .next_frame = NextFrame,
    .report = Report,
    .take_notes = TakeNotes,
    .lost_by_transport = LostByTransport,
};

HeadLine MakeLine(const std::string& device, std::string& /*error*/)
{
    cameras.ofHead = GenicamCamera(device);
    cameras.ofHead->SetSection(ActiveSection());
    return LineToHead([camera = cameras.ofHead](const WireFrame& frame) { return camera->Answer(frame); });
}

}  // namespace

void RegisterGenicamHeads()
{
    SetHeadLines("genicam", MakeLine);
}

void RegisterGenicamBoard()
{
    RegisterBoard(kGenicamBoard);
}

std::shared_ptr<SharedCamera> GenicamCamera(const std::string& device)
{
    std::shared_ptr<SharedCamera>& camera = cameras.all[device];
    if (!camera) camera = std::make_shared<SharedCamera>(device, cameras.opener);
    return camera;
}

void SetCameraOpener(CameraOpener opener)
{
    cameras.opener = opener ? std::move(opener) : CameraOpener(OpenAravisCamera);
}

void ResetGenicam()
{
    board = {};
    cameras = {};
}

}  // namespace kelvo
