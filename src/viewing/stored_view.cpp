#include "viewing/stored_view.h"

#include "display/display_pipeline.h"
#include "grabber/host_frames.h"
#include "imagefile/header_write.h"
#include "platform/box.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "video/video.h"

#include <algorithm>

namespace kelvo {

HeaderKeeper::~HeaderKeeper()
{
    if (!kept_) write::file.ImageHeader = before_;
}

void FreeImageBuffer()
{
    std::vector<std::uint8_t>().swap(write::frames.ImageBuffer);
}

void TellNoViewMemory()
{
    MessageBox(hWndMain, "Failure to allocate or lock memory!", "ViewImage Memory Error!");
}

void FreezeLiveVideo()
{
    EndReplay();
    if (!ViewingFile && LiveVideo) ToggleLiveVideo();
}

void TakeCursorOff()
{
    if (ImageCursorOn) ShowCursorValue(CursorX, CursorY, 0);
}

void PutCursorBack()
{
    if (!ImageCursorOn) return;
    ShowCursorValue(std::min<std::int32_t>(CursorX, ImageHeader.ImageWidth),
                    std::min<std::int32_t>(CursorY, ImageHeader.ImageHeight), 1);
}

}  // namespace kelvo
