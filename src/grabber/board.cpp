#include "grabber/board.h"

#include "config/settings.h"
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
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/windows.h"
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
    AllocateBlock(LiveFrame, values);
    AllocateBlock(RawFrame, values);
    AllocateBlock(VideoCopy, values);
}

void DropFrameBlocks()
{
    std::vector<std::int16_t>().swap(LiveFrame);
    std::vector<std::int16_t>().swap(RawFrame);
    std::vector<std::uint8_t>().swap(VideoCopy);
}

void ReadCnfFilePath()
{
    const std::string name = GetPrivateProfileString(ActiveCameraSection(), "cnfFile", "none", CameraFilePath);
    if (name.size() > kLongestNoFile) CnfFilePath = DefaultDir + '/' + name;
}

bool Fail(std::string_view text, std::string_view caption)
{
    MessageBox(nullptr, text, caption, BoxIcon::kNone);
    return false;
}

bool StartLibrary()
{
    if (itx_load_cnf(CnfFilePath) != 0) return false;
    DataOffset = GetPrivateProfileInt(ActiveCameraSection(), "DataOffset", 0, CameraFilePath);
    return itx_init_sys(0) == 0;
}

bool FindModules()
{
    IcpModule = itx_get_modcnf(0, "ICP", kModuleKind);
    if (IcpModule == 0) return false;
    icp_delete_all_frames(IcpModule);
    AcqModule = icp_get_slot0(IcpModule);
    if (AcqModule == 0) return Fail("No Acquisition Module Found on Board #0", "init_itex");
    amdig_lin_lut(AcqModule);
    return true;
}

bool CreateFrameA()
{
    FramePitch =
        static_cast<std::int32_t>((std::int64_t{ActiveConfig.Hroi} + kPitchStep - 1) / kPitchStep * kPitchStep);
    FrameRows = ActiveConfig.Vroi;
    FrameA = icp_create_frame(IcpModule, FramePitch, FrameRows, kFrameBits, 0);
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
    CmpModule = itx_get_modcnf(0, "CMP", kModuleKind);
    if (CmpModule == 0) return;
    struct Part {
        BoardModule& module;
        std::string_view name;
    };
    for (const Part& part : {Part{CmClu, "CM-CLU"}, Part{CmMmp, "CM-MMP"}, Part{CmHf, "CM-HF"}, Part{CmPa, "CM-PA"},
                             Part{CmMem, "CM-MEM"}}) {
        part.module = itx_get_modcnf(CmpModule, part.name, kModuleKind);
    }
}

// The lists are as long as a frame; without them a count is shown as it comes.
void DropLists()
{
    std::vector<std::uint32_t>().swap(DecomList);
    std::vector<std::int16_t>().swap(OffsetList);
    std::vector<float>().swap(GainList);
    CalType = 0;
    CalibrationListsChanged();
}

// The board's memory takes the new size; a grab that runs goes on into the new frame. A size that no camera has is left
// for the turn-on to tell.
void RemakeFrames()
{
    if (LiveVideo) icp_freeze(IcpModule, FrameA);
    icp_delete_all_frames(IcpModule);
    FrameA = kNoBoardFrame;
    if (CameraFrameValues() == 0) return;
    MakeFrameBlocks();
    if (!CreateFrameA() || !LiveVideo) return;
    icp_grab(IcpModule, FrameA);
    AccountGrabStarted();
}

}  // namespace

int init_itex()
{
    MakeFrameBlocks();
    DisplayEnabled = 1;
    ReadCnfFilePath();
    if (!StartLibrary() || !FindModules() || !CreateFrameA() || !CheckFrameA()) return 0;
    SetTransferMode();
    FindComputingModules();
    GrabberPresent = 1;
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
    std::vector<std::uint8_t>().swap(DisplayLut);
    FreeHostFrames();
    GrabberPresent = 0;
}

void ExitBoard()
{
    ReleaseBoard();
    itx_exit(0);
}

int CheckBoardModules()
{
    IcpModule = itx_get_modcnf(0, "ICP", kModuleKind);
    AcqModule = icp_get_slot0(IcpModule);
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
    ReadCameraConfig(ActiveCamera, 1, ActiveConfig);
    if (wasRead && (ActiveConfig.Hroi != columns || ActiveConfig.Vroi != rows)) FrameSizeChanged();
    if (!HostFramesAllocated) return;
    if (numBufFrames == 0) {
        FreeHostFrames();
    } else {
        numBufFrames = counted;  // the key is a wish; the count is of the frames that stand
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
    const std::int32_t result = enable ? icp_trig_snap(IcpModule, FrameA) : icp_grab(IcpModule, FrameA);
    return result == 0 ? 1 : 0;
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
    IcpModule = 0;
    AcqModule = 0;
    CmpModule = 0;
    CmClu = 0;
    CmMmp = 0;
    CmHf = 0;
    CmPa = 0;
    CmMem = 0;
    FrameA = kNoBoardFrame;
    FramePitch = 0;
    FrameRows = 0;
    DataOffset = 0;
    VideoCopy.clear();
}

}  // namespace kelvo
