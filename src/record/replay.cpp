#include "record/replay.h"

#include "grabber/host_frames.h"
#include "platform/clock.h"
#include "platform/dialog.h"
#include "platform/timers.h"
#include "state/buffer_state_write.h"
#include "state/camera_config.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "video/video.h"

#include <algorithm>
#include <cstddef>

namespace kelvo {

namespace {

constexpr std::int64_t kShowEachMs = 250;

std::int64_t shownAtMs = 0;  // when the dialog last got a number

// Behind the last frame comes the first.
std::int32_t Wrapped(std::int32_t frame)
{
    if (frame > FramesInBuffer - 1) return 0;
    return std::max(frame, 0);
}

void DrawStoredFrame(std::int32_t frame)
{
    write::buffer.ReplayOnView = frame;
    RefreshLiveFrame();
}

void ShowInDialog(std::int32_t frame)
{
    SetDlgItemInt(BufferDialog, kReplayFrame, frame);
    SetScrollPos(BufferDialog, kReplayBar, frame);
    shownAtMs = TickMs();
}

// Live video stands still, and no file is on view.
void FreezeForReplay()
{
    if (ViewingFile) LeaveStoredFile();
    write::frames.LiveVideo = 1;
    ToggleLiveVideo();
    write::frames.LiveVideo = 0;  // also without a camera
}

}  // namespace

void SetReplayRate(std::int32_t row)
{
    if (row < 0 || row >= std::ssize(kReplayRates)) return;
    write::buffer.ReplayRateIndex = row;
    write::buffer.ReplayPeriodMs = static_cast<std::int32_t>(1000.0 / kReplayRates[static_cast<std::size_t>(row)].hz);
}

int StartReplay(std::int32_t frames)
{
    if (frames < 1) return kReplayNoFrames;
    if (HostFrameBytes < 1) return kReplayNoStore;
    if (frames > UsableHostFrames()) return kReplayNoFrames;
    FreezeForReplay();
    write::buffer.ReplayActive = 1;
    write::buffer.ReplayPaused = 0;
    shownAtMs = TickMs();
    SetTimer(hWndMain, kReplayTimer, 0);
    return 1;
}

void StopReplay(std::int32_t stay)
{
    if (stay) {
        KillTimer(hWndMain, kReplayTimer);
        write::buffer.ReplayPaused = 1;
        if (BufferDialog && ReplayOnView >= 0) ShowInDialog(ReplayOnView);
        return;
    }
    EndReplay();
    write::frames.LiveVideo = 0;
    ToggleLiveVideo();
}

void ResumeReplay()
{
    write::buffer.ReplayPaused = 0;
    SetTimer(hWndMain, kReplayTimer, 0);
}

void ShowReplayFrame(std::int32_t frame)
{
    write::buffer.ReplayCurrent = std::clamp(frame, 0, std::max(FramesInBuffer - 1, 0));
    DrawStoredFrame(ReplayCurrent);
    if (BufferDialog) ShowInDialog(ReplayCurrent);
}

void OnReplayTimer()
{
    KillTimer(hWndMain, kReplayTimer);
    if (!ReplayActive) return;
    if (FramesInBuffer < 1) {
        EndReplay();
        return;
    }
    write::frames.LiveVideo = 0;
    const std::int64_t beganMs = TickMs();
    write::buffer.ReplayCurrent = Wrapped(ReplayCurrent);
    DrawStoredFrame(ReplayCurrent);
    if (BufferDialog && TickMs() - shownAtMs > kShowEachMs) ShowInDialog(ReplayCurrent);
    write::buffer.ReplayCurrent = Wrapped(ReplayCurrent + 1);
    const std::int64_t leftMs = ReplayPeriodMs - (TickMs() - beganMs);
    SetTimer(hWndMain, kReplayTimer, leftMs >= 0 ? leftMs : 1);
}

}  // namespace kelvo
