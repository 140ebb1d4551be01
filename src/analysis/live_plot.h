// A plot that follows live video: the clock that reads a frame and draws, and the box "Live data".
#pragma once

#include "platform/types.h"
#include "ui/dialog_frame.h"

#include <cstdint>

namespace kelvo {

constexpr std::uint32_t kPlotTimer = 1;
constexpr int kLiveDataBox = 318;

// At opening: the box is checked as LiveVideo says, the first tick comes after 500 ms.
void StartPlotClock(HWND dialog);

// A tick (kPlotTimer). With the box checked frozen video is set free first; with live video the newest frame comes into
// ImageBuffer (ReadFrameToMeasure); then redraw, which draws in any case; with the box checked the next tick comes
// after 20 ms. Where no frame comes: "Video Data Acquisition Failed, Hardware error", and the dialog ends with 0.
void TickPlot(HWND dialog, DialogHandler redraw);

// The operator changed the box. Checked: live video runs again, from a file on view too, and the clock with it.
// Unchecked: it is frozen, and the last frame stays. Without a camera the box stays unchecked, which the status line
// explains. True where what is on view has become another (a file has given way): sizes and ranges are to be set anew.
bool SwitchLiveData(HWND dialog);

// The clock stands while something else is in front of the plot that goes by what it shows; after it a tick follows.
class PlotPause {
  public:
    explicit PlotPause(HWND dialog);
    ~PlotPause();
    PlotPause(const PlotPause&) = delete;
    PlotPause& operator=(const PlotPause&) = delete;

  private:
    HWND dialog_;
};

// On the way out: with the box checked frozen video is set free.
void LeaveLivePlot(HWND dialog);

}  // namespace kelvo
