#include "grabber/recording.h"

#include "grabber/board_state.h"
#include "grabber/capture.h"
#include "grabber/frame_account.h"
#include "grabber/frame_size.h"
#include "platform/box.h"
#include "state/camera_config.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/menu_state.h"
#include "ui/panel_readouts.h"

#include <cstdint>
#include <utility>

namespace kelvo {

namespace {

void ShowRecording(bool records)
{
    ShowRecordingInMenu(records);
    ShowRecordingInPanel(records);
}

}  // namespace

bool BeginRecording(std::size_t ringFrames, std::function<void()> consume)
{
    if (RecordingRuns()) return false;
    const std::size_t frames = ringFrames > 0 ? ringFrames : RingFrames(static_cast<std::int64_t>(CameraFrameValues()));
    AccountCaptureBegins();
    const bool began = StartCapture(
        {.columns = ActiveConfig.Hroi, .rows = ActiveConfig.Vroi, .ringFrames = frames, .consume = std::move(consume)});
    if (!began) {
        AccountCaptureEnds();
        MessageBox(hWndMain, "Unable to allocate memory to store data to disk!", "Kelvo Warning");
        return false;
    }
    ShowRecording(true);
    return true;
}

void EndRecording()
{
    if (!RecordingRuns()) return;
    StopCapture();
    AccountCaptureEnds();
    if (!LiveVideo) icp_freeze(IcpModule, FrameA);
    ShowRecording(false);
}

bool RecordingRuns()
{
    return CaptureRuns();
}

}  // namespace kelvo
