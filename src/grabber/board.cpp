#include "grabber/board.h"

#include "config/settings.h"
#include "display/display_pipeline.h"
#include "grabber/board_state_write.h"
#include "grabber/correction.h"
#include "grabber/frame_account.h"
#include "grabber/frame_read.h"
#include "grabber/frame_size.h"
#include "grabber/host_frames.h"
#include "platform/box.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/paint.h"
#include "platform/profile.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows_write.h"
#include "ui/panel_readouts.h"
#include "ui/status.h"

#include <array>
#include <string_view>

namespace kelvo {

namespace {

constexpr std::int32_t kModuleKind = 100;
constexpr std::int32_t kPitchStep = 32;
constexpr std::int32_t kFrameBits = 16;
constexpr std::int32_t kWaitHundredths = 200;  // 2 s
constexpr std::size_t kLongestNoFile = 4;      // "none"

bool boardCameUp = false;  // ResetBoardState has run

// Fresh blocks of the camera's size; what memory refuses stays empty, and no frame then fits.
void MakeFrameBlocks()
{
    const std::size_t values = CameraFrameValues();
    ForgetCameraFrame();
    AllocateBlock(write::frames.LiveFrame, values);
    AllocateBlock(write::frames.RawFrame, values);
    AllocateBlock(write::board.VideoCopy, values);
}

void DropFrameBlocks()
{
    std::vector<std::int16_t>().swap(write::frames.LiveFrame);
    std::vector<std::int16_t>().swap(write::frames.RawFrame);
    std::vector<std::uint8_t>().swap(write::board.VideoCopy);
}

void ReadCnfFilePath()
{
    const std::string name = GetPrivateProfileString(ActiveCameraSection(), "cnfFile", "none", CameraFilePath);
    if (name.size() > kLongestNoFile) write::windows.CnfFilePath = DefaultDir + '/' + name;
}

bool Fail(std::string_view text, std::string_view caption)
{
    MessageBox(nullptr, text, caption, BoxIcon::kNone);
    return false;
}

bool StartLibrary()
{
    if (itx_load_cnf(CnfFilePath) != 0) return false;
    write::board.DataOffset = GetPrivateProfileInt(ActiveCameraSection(), "DataOffset", 0, CameraFilePath);
    return itx_init_sys(0) == 0;
}

bool FindModules()
{
    write::board.IcpModule = itx_get_modcnf(0, "ICP", kModuleKind);
    if (IcpModule == 0) return false;
    icp_delete_all_frames(IcpModule);
    write::board.AcqModule = icp_get_slot0(IcpModule);
    if (AcqModule == 0) return Fail("No Acquisition Module Found on Board #0", "init_itex");
    amdig_lin_lut(AcqModule);
    return true;
}

bool CreateFrameA()
{
    write::board.FramePitch =
        static_cast<std::int32_t>((std::int64_t{ActiveConfig.Hroi} + kPitchStep - 1) / kPitchStep * kPitchStep);
    write::board.FrameRows = ActiveConfig.Vroi;
    write::board.FrameA = icp_create_frame(IcpModule, FramePitch, FrameRows, kFrameBits, 0);
    if (FrameA == kNoBoardFrame) return Fail("FrameA on ICP-PCI#0 not created!", "init_itex()");
    return true;
}

bool CheckFrameA()
{
    BoardFrameAttributes attributes;
    const std::int32_t result = icp_frame_attrib(IcpModule, FrameA, attributes);
    if (static_cast<std::int16_t>(result) == kNoBoardFrame) {
        return Fail("FrameA on ICP-PCI#0 not set up properly!", "init_itex()");
    }
    if (attributes.bits != kFrameBits) {
        return Fail("FrameA on ICP-PCI#0 not set up for 16-bit data input!", "init_itex()");
    }
    if (attributes.colour != 0) {
        return Fail("FrameA on ICP-PCI#0 not set up for MonoColor data input!", "init_itex()");
    }
    return true;
}

void SetTransferMode()
{
    itx_set_timeout(IcpModule, kWaitHundredths);
    icp_bm_mode(IcpModule, 1);
    icp_bm_ilace(IcpModule, 0);
    icp_put_bm_firstf_start(IcpModule, 0);
}

void FindComputingModules()
{
    write::board.CmpModule = itx_get_modcnf(0, "CMP", kModuleKind);
    if (CmpModule == 0) return;
    struct Part {
        BoardModule& module;
        std::string_view name;
    };
    for (const Part& part :
         {Part{write::board.CmClu, "CM-CLU"}, Part{write::board.CmMmp, "CM-MMP"}, Part{write::board.CmHf, "CM-HF"},
          Part{write::board.CmPa, "CM-PA"}, Part{write::board.CmMem, "CM-MEM"}}) {
        part.module = itx_get_modcnf(CmpModule, part.name, kModuleKind);
    }
}

// The lists are as long as a frame; without them a count is shown as it comes.
void DropLists()
{
    std::vector<std::uint32_t>().swap(write::cal.DecomList);
    std::vector<std::int16_t>().swap(write::cal.OffsetList);
    std::vector<float>().swap(write::cal.GainList);
    write::cal.CalType = 0;
    CalibrationListsChanged();
}

// The board's memory takes the new size; a grab that runs goes on into the new frame. A size that no camera has is left
// for the turn-on to tell.
void RemakeFrames()
{
    AccountCycleStops();
    if (LiveVideo) icp_freeze(IcpModule, FrameA);
    icp_delete_all_frames(IcpModule);
    write::board.FrameA = kNoBoardFrame;
    if (CameraFrameValues() == 0) return;
    MakeFrameBlocks();
    if (!CreateFrameA() || !LiveVideo) return;
    if (icp_grab(IcpModule, FrameA) == 0) AccountGrabStarted();
}

}  // namespace

int init_itex()
{
    MakeFrameBlocks();
    write::frames.DisplayEnabled = 1;
    ShowDisplayEnabledInPanel();
    ReadCnfFilePath();
    if (!StartLibrary() || !FindModules() || !CreateFrameA() || !CheckFrameA()) return 0;
    SetTransferMode();
    FindComputingModules();
    write::frames.GrabberPresent = 1;
    return 1;
}

int ResetBoardState()
{
    if (boardCameUp) {
        FreeHostFrames();
        AllocateHostFrames();
        StatusMessage("Wait - Vantir initializing Image Processor", static_cast<int>(TextAlign::kCentre));
    }
    itx_err_level(1);
    boardCameUp = true;
    return 1;
}

void ReleaseBoard()
{
    std::vector<std::uint8_t>().swap(write::display.DisplayLut);
    FreeHostFrames();
    write::frames.GrabberPresent = 0;
}

void ExitBoard()
{
    ReleaseBoard();
    itx_exit(0);
}

int CheckBoardModules()
{
    write::board.IcpModule = itx_get_modcnf(0, "ICP", kModuleKind);
    write::board.AcqModule = icp_get_slot0(IcpModule);
    return IcpModule != 0 && AcqModule != 0 ? 1 : 0;
}

void GetBoardErrorText(std::int32_t /*code*/, std::string& text)
{
    text = "ICP-PCI frame grabber error";
}

void ReadActiveSection()
{
    const std::int32_t columns = ActiveConfig.Hroi;
    const std::int32_t rows = ActiveConfig.Vroi;
    const std::int32_t counted = numBufFrames;
    const bool wasRead = columns != 0 || rows != 0;
    ReadCameraConfig(ActiveCamera, 1, write::camera.ActiveConfig);
    if (wasRead && (ActiveConfig.Hroi != columns || ActiveConfig.Vroi != rows)) FrameSizeChanged();
    if (!HostFramesAllocated) return;
    if (numBufFrames == 0) {
        FreeHostFrames();
    } else {
        write::camera.numBufFrames = counted;  // the key is a wish; the count is of the frames that stand
    }
}

void FrameSizeChanged()
{
    DropFrameBlocks();
    DropLists();
    FreeHostFrames();
    DeleteFileNamed(DefaultDir + "/DECOM.TMP");
    if (GrabberPresent && IcpModule != 0) RemakeFrames();
}

int SetTriggerMode(std::int32_t enable)
{
    amdig_trigen(AcqModule, enable ? 1 : 0);
    AccountCycleStops();
    if (enable) return icp_trig_snap(IcpModule, FrameA) == 0 ? 1 : 0;
    if (icp_grab(IcpModule, FrameA) != 0) return 0;
    AccountGrabStarted();
    return 1;
}

int WaitForTrigger(std::int32_t timeout)
{
    if (icp_wait_trig(IcpModule, FrameA, timeout) == 1) return 1;
    icp_trig_snap(IcpModule, FrameA);
    return 0;
}

int ReadFrameNow(std::span<std::int16_t> buffer)
{
    const std::size_t values = CameraFrameValues();
    if (values == 0 || buffer.size() < values || !ReadBoardFrame(buffer)) return 0;
    for (std::int16_t& value : buffer.first(values)) value = WithDataOffset(value);
    return 1;
}

void ExternalSyncOn(std::int32_t flag)
{
    if (flag) amdig_exsen(AcqModule, 0);
    amdig_exsyncp(AcqModule, 1);
}

void ExternalSyncPulse()
{
    amdig_exsyncp(AcqModule, 0);
    DelayMs(0);
    amdig_exsyncp(AcqModule, 1);
}

void ForgetBoard()
{
    boardCameUp = false;
    write::board.IcpModule = 0;
    write::board.AcqModule = 0;
    write::board.CmpModule = 0;
    write::board.CmClu = 0;
    write::board.CmMmp = 0;
    write::board.CmHf = 0;
    write::board.CmPa = 0;
    write::board.CmMem = 0;
    write::board.FrameA = kNoBoardFrame;
    write::board.FramePitch = 0;
    write::board.FrameRows = 0;
    write::board.DataOffset = 0;
    write::board.VideoCopy.clear();
}

}  // namespace kelvo
