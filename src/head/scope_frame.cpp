#include "head/scope_frame.h"

#include "grabber/frame_size.h"
#include "platform/box.h"
#include "platform/memory.h"
#include "state/windows.h"

namespace kelvo {

std::vector<std::int16_t> OscFrame;
std::int32_t OscPixels = 0;

bool FitOscFrame()
{
    const std::size_t values = CameraFrameValues();
    OscPixels = static_cast<std::int32_t>(values);
    if (!OscFrame.empty() && OscFrame.size() >= values) return true;
    if (AllocateBlock(OscFrame, values)) return true;
    MessageBox(hWndMain, "Failure to allocate global video memory!", kMessageCaption);
    return false;
}

void FreeOscFrame()
{
    std::vector<std::int16_t>().swap(OscFrame);
}

void ResetScopeFrame()
{
    OscFrame.clear();
    OscPixels = 0;
}

}  // namespace kelvo
