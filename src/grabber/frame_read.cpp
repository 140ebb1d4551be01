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
FrameStamp lastStamp;

// The cursor's timer goes on inside the box: it must not put the next one on top.
bool Fail(std::string_view text, std::string_view caption)
{
    itx_os_set_realtime_priority(0);
    boxIsOpen = true;
    MessageBox(hWndMain, text, caption);
    boxIsOpen = false;
    return false;
}

constexpr std::string_view kNoBlankText = "Timeout waiting for vertical blank!";
constexpr std::string_view kNoBlankCaption = "icp_wait_vb() Error!";
constexpr std::string_view kUnreadableText = "icp_read_area() Error";
constexpr std::string_view kUnreadableCaption = "ITEX Board Error!";

bool ReadCapturedFrame(std::span<std::int16_t> buffer)
{
    const TakeResult result = fateOfNext ? TakeNextFrame(buffer, lastStamp, *fateOfNext, kLongestWaitMs)
                                         : CopyNewestFrame(buffer, kLongestWaitMs);
    switch (result) {
        case TakeResult::kTaken:
            return true;
        case TakeResult::kTimeout:
            return Fail(kNoBlankText, kNoBlankCaption);
        case TakeResult::kUnreadable:
            return Fail(kUnreadableText, kUnreadableCaption);
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
    return Fail(kUnreadableText, kUnreadableCaption);
}

bool ReadBoardFrame(std::span<std::int16_t> buffer)
{
    if (boxIsOpen) return false;
    if (CaptureRuns()) return ReadCapturedFrame(buffer);
    itx_os_set_realtime_priority(1);
    if (icp_wait_vb(IcpModule, FrameA) == kBoardTimeout) {
        AccountCycleStops();
        return Fail(kNoBlankText, kNoBlankCaption);
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

const FrameStamp& LastFrameStamp()
{
    return lastStamp;
}

void ResetFrameRead()
{
    fateOfNext.reset();
    lastStamp = {};
}

}  // namespace kelvo
