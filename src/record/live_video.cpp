#include "record/live_video.h"

#include "platform/box.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "video/video.h"

namespace kelvo {

bool BeginLiveVideo()
{
    if (!CameraOn) {
        MessageBox(hWndMain, "Video Data Acquisition Failed, Hardware error", kMessageCaption);
        return false;
    }
    if (ViewingFile || !LiveVideo) RestartGrab();
    return true;
}

}  // namespace kelvo
