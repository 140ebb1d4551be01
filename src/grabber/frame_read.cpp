#include "grabber/frame_read.h"

#include "grabber/board_state.h"
#include "grabber/copm2.h"
#include "grabber/frame_account.h"
#include "platform/box.h"
#include "state/camera_config.h"
#include "state/windows.h"

#include <string_view>

namespace kelvo {

namespace {

bool boxIsOpen = false;

// The cursor's timer goes on inside the box: it must not put the next one on top.
bool Fail(std::string_view text, std::string_view caption)
{
    itx_os_set_realtime_priority(0);
    boxIsOpen = true;
    MessageBox(hWndMain, text, caption);
    boxIsOpen = false;
    return false;
}

}  // namespace

bool ReadBoardArea(std::span<std::int16_t> buffer)
{
    if (icp_read_area(IcpModule, FrameA, 0, 0, ActiveConfig.Hroi, ActiveConfig.Vroi, buffer) == 0) return true;
    AccountReadFailed();
    return Fail("icp_read_area() Error", "ITEX Board Error!");
}

bool ReadBoardFrame(std::span<std::int16_t> buffer)
{
    if (boxIsOpen) return false;
    itx_os_set_realtime_priority(1);
    if (icp_wait_vb(IcpModule, FrameA) == kBoardTimeout) {
        AccountCycleStops();
        return Fail("Timeout waiting for vertical blank!", "icp_wait_vb() Error!");
    }
    return ReadBoardArea(buffer);
}

}  // namespace kelvo
