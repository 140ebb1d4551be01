#include "analysis/live_plot.h"

#include "analysis/measured_frame.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/timers.h"
#include "state/frame_state.h"
#include "ui/status.h"
#include "video/video.h"

namespace kelvo {

namespace {

constexpr std::int64_t kFirstTickMs = 500;
constexpr std::int64_t kTickMs = 20;

bool WantsLiveData(HWND dialog)
{
    return IsDlgButtonChecked(dialog, kLiveDataBox);
}

void SetFree(HWND dialog)
{
    if (WantsLiveData(dialog) && !LiveVideo) ToggleLiveVideo();
}

}  // namespace

void StartPlotClock(HWND dialog)
{
    CheckDlgButton(dialog, kLiveDataBox, LiveVideo != 0);
    SetTimer(dialog, kPlotTimer, kFirstTickMs);
}

void TickPlot(HWND dialog, DialogHandler redraw)
{
    KillTimer(dialog, kPlotTimer);
    SetFree(dialog);
    if (!ReadFrameToMeasure()) {
        MessageBox(dialog, "Video Data Acquisition Failed, Hardware error", kMessageCaption);
        EndDialog(dialog, 0);
        return;
    }
    redraw(dialog);
    if (WantsLiveData(dialog)) SetTimer(dialog, kPlotTimer, kTickMs);
}

bool SwitchLiveData(HWND dialog)
{
    KillTimer(dialog, kPlotTimer);
    if (!CameraOn) {
        CheckDlgButton(dialog, kLiveDataBox, false);
        StatusMessage("There is no live data: the camera is off", kLeftAligned);
        return false;
    }
    const bool leavesFile = WantsLiveData(dialog) && ViewingFile != 0;
    if (WantsLiveData(dialog) != (LiveVideo != 0)) ToggleLiveVideo();
    if (WantsLiveData(dialog)) SetTimer(dialog, kPlotTimer, kTickMs);
    return leavesFile;
}

PlotPause::PlotPause(HWND dialog) : dialog_(dialog)
{
    KillTimer(dialog_, kPlotTimer);
}

PlotPause::~PlotPause()
{
    SetTimer(dialog_, kPlotTimer, kTickMs);
}

void LeaveLivePlot(HWND dialog)
{
    KillTimer(dialog, kPlotTimer);
    SetFree(dialog);
}

}  // namespace kelvo
