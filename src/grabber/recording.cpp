#include "grabber/recording.h"

#include "grabber/board_state.h"
#include "grabber/capture.h"
#include "grabber/frame_account.h"
#include "grabber/frame_size.h"
#include "platform/box.h"
#include "platform/long_run.h"
#include "resources/board_use.h"
#include "state/camera_config.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/menu_state.h"
#include "ui/panel_readouts.h"

#include <cstdint>
#include <utility>

namespace kelvo {

namespace {

bool records = false;
bool observes = false;

void FollowRun(LongRun run, bool goesOn)
{
    if (goesOn) {
        BeginLongRun(run);
    } else {
        EndLongRun(run);
    }
}

void ShowUse()
{
    FollowRun(LongRun::kRecording, records);
    FollowRun(LongRun::kTrace, observes);
    const BoardUse use = records ? BoardUse::kRecording : observes ? BoardUse::kTrace : BoardUse::kNone;
    ShowBoardUseInMenu(use);
    ShowBoardUseInPanel(use);
}

bool StartCaptureOf(std::size_t ringFrames, std::function<void()> consume)
{
    AccountCaptureBegins();
    const bool began = StartCapture({.columns = ActiveConfig.Hroi,
                                     .rows = ActiveConfig.Vroi,
                                     .ringFrames = ringFrames,
                                     .consume = std::move(consume)});
    if (!began) AccountCaptureEnds();
    return began;
}

void EndCapture()
{
    StopCapture();
    AccountCaptureEnds();
}

// Nobody records the frames: they have been observed when they come into the ring.
bool StartCaptureToObserve()
{
    constexpr std::size_t kFrames = 16;
    return StartCaptureOf(kFrames, [] { DropFrames(FramesWaiting(), FrameFate::kRecorded); });
}

// Behind a recording, or one that didn't begin. Without memory for it nobody observes any more.
void GoOnObserving()
{
    if (!observes || StartCaptureToObserve()) return;
    observes = false;
    ObserveFrames({});
}

void LeaveGrab()
{
    if (!LiveVideo) icp_freeze(IcpModule, FrameA);
}

}  // namespace

bool BeginRecording(std::size_t ringFrames, std::function<void()> consume)
{
    if (RecordingRuns()) return false;
    if (observes) EndCapture();
    const std::size_t frames = ringFrames > 0 ? ringFrames : RingFrames(static_cast<std::int64_t>(CameraFrameValues()));
    records = StartCaptureOf(frames, std::move(consume));
    if (!records) {
        GoOnObserving();
        if (!observes) ShowUse();
        MessageBox(hWndMain, "Unable to allocate memory to store data to disk!", "Kelvo Warning");
        return false;
    }
    ShowUse();
    return true;
}

void EndRecording()
{
    if (!RecordingRuns()) return;
    EndCapture();
    records = false;
    GoOnObserving();
    if (!CaptureRuns()) LeaveGrab();
    ShowUse();
}

bool RecordingRuns()
{
    return records && CaptureRuns();
}

bool BeginObserving(FrameObserver observer)
{
    if (observes || !observer || !ObserveFrames(std::move(observer), ActiveConfig.Hroi, ActiveConfig.Vroi))
        return false;
    observes = records || StartCaptureToObserve();
    if (!observes) ObserveFrames({});
    ShowUse();
    return observes;
}

void EndObserving()
{
    if (!observes) return;
    observes = false;
    if (!records && CaptureRuns()) {
        EndCapture();
        LeaveGrab();
    }
    ObserveFrames({});
    ShowUse();
}

bool ObservingRuns()
{
    return observes;
}

bool CaptureIsUsed()
{
    return CaptureRuns();
}

void ResetRecording()
{
    ResetCapture();
    records = observes = false;
}

}  // namespace kelvo
