#include "head/scope_frame.h"

#include "grabber/frame_size.h"
#include "head/scope_frame_write.h"
#include "platform/box.h"
#include "platform/memory.h"
#include "state/windows.h"

namespace kelvo {

namespace write {
ScopeVariables scope;
}

constinit const std::vector<std::int16_t>& OscFrame = write::scope.OscFrame;
constinit const std::int32_t& OscPixels = write::scope.OscPixels;

bool FitOscFrame()
{
    const std::size_t values = CameraFrameValues();
    write::scope.OscPixels = static_cast<std::int32_t>(values);
    if (!OscFrame.empty() && OscFrame.size() >= values) return true;
    if (AllocateBlock(write::scope.OscFrame, values)) return true;
    MessageBox(hWndMain, "Failure to allocate global video memory!", kMessageCaption);
    return false;
}

void FreeOscFrame()
{
    std::vector<std::int16_t>().swap(write::scope.OscFrame);
}

void ResetScopeFrame()
{
    write::scope.OscFrame.clear();
    write::scope.OscPixels = 0;
}

}  // namespace kelvo
