#include "grabber/frame_read.h"

#include "grabber/board_state.h"
#include "grabber/capture.h"
#include "grabber/copm2.h"
#include "grabber/frame_account.h"
#include "platform/box.h"
#include "state/camera_config.h"
#include "state/windows.h"

#include <optional>
#include <string_view>

namespace kelvo {

namespace {

constexpr std::int64_t kLongestWaitMs = 2000;  // as the board's own (init_itex)

bool boxIsOpen = false;
std::optional<FrameFate> fateOfNext;  // while somebody takes the next frame
CapturedFrame lastTaken;
FrameReadFault lastFault;
bool tellsNothing = false;  // while somebody reads without boxes

constexpr FrameReadFault kNoBlank{.text = "Timeout waiting for vertical blank!", .caption = "icp_wait_vb() Error!"};
constexpr FrameReadFault kUnreadable{.text = "icp_read_area() Error", .caption = "ITEX Board Error!"};

// The cursor's timer goes on inside the box: it must not put the next one on top. Of a camera that is lost, and that
// the board tries to have back, no box is needed: its link tells of it.
bool Fail(const FrameReadFault& fault)
{
    itx_os_set_realtime_priority(0);
    lastFault = fault;
    if (tellsNothing || icp_report(IcpModule).link == CameraLink::kLost) return false;
    boxIsOpen = true;
    MessageBox(hWndMain, fault.text, fault.caption);
    boxIsOpen = false;
    return false;
}

bool ReadCapturedFrame(std::span<std::int16_t> buffer)
{
    const TakeResult result = fateOfNext ? TakeNextFrame(buffer, lastTaken, *fateOfNext, kLongestWaitMs)
                                         : CopyNewestFrame(buffer, kLongestWaitMs);
    lastTaken.values = {};  // the caller's, and not kept
    switch (result) {
        case TakeResult::kTaken:
            return true;
        case TakeResult::kTimeout:
            return Fail(kNoBlank);
        case TakeResult::kUnreadable:
            return Fail(kUnreadable);
        case TakeResult::kEnded:
            break;
    }
    return false;
}

}  // namespace

bool ReadBoardArea(std::span<std::int16_t> buffer)
{
    if (icp_read_area(IcpModule, FrameA, 0, 0, ActiveConfig.Hroi, ActiveConfig.Vroi, buffer) == 0) return true;
    AccountReadFailed();
    return Fail(kUnreadable);
}

bool ReadBoardFrame(std::span<std::int16_t> buffer)
{
    if (boxIsOpen) return false;
    if (CaptureRuns()) return ReadCapturedFrame(buffer);
    itx_os_set_realtime_priority(1);
    if (icp_wait_vb(IcpModule, FrameA) == kBoardTimeout) {
        AccountCycleStops();
        return Fail(kNoBlank);
    }
    return ReadBoardArea(buffer);
}

TakesNextFrame::TakesNextFrame(FrameFate fate)
{
    fateOfNext = fate;
}

TakesNextFrame::~TakesNextFrame()
{
    fateOfNext.reset();
}

const CapturedFrame& LastTakenFrame()
{
    return lastTaken;
}

ReadsWithoutBoxes::ReadsWithoutBoxes()
{
    tellsNothing = true;
}

ReadsWithoutBoxes::~ReadsWithoutBoxes()
{
    tellsNothing = false;
}

const FrameReadFault& LastFrameReadFault()
{
    return lastFault;
}

void ResetFrameRead()
{
    fateOfNext.reset();
    lastTaken = {};
    lastFault = {};
    tellsNothing = false;
}

}  // namespace kelvo
