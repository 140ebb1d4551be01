// The line plot on the screen: the plot and its figures in the dialog LINEPLOT, and the line's mark in the picture. The
// calculation is analysis/line_plot.h.
#pragma once

#include "platform/types.h"

#include <cstdint>
#include <string>

namespace kelvo {

constexpr int kLinePlotControl = 420;

// Samples, plots and reports what LineSettings say in DisplayUnit; nothing where neither has changed since it was drawn
// last. No memory for the samples: "Failure to allocate Intensity memory!", the last plot stays, and the frame is shown
// without a mark.
void DrawLinePlot(HWND dialog);
// The next DrawLinePlot draws in any case: the frame is another one.
void ForgetLinePlot();
// The plot that stands there laid out anew, for another size of its control.
void PaintLinePlot(HWND dialog);
// LineFigures of that plot.
std::string ShownLineFigures();

// 1: shows a copy of the frame with the line's mark (LineScratchFrame). 0: shows the frame itself.
void ShowLineMark(std::int32_t on);

// Control 601: "%s (%s) vs Line Pixel Number" with the name of DisplayUnit and its text.
void ShowLineTitle(HWND dialog);

// At the dialog's end: the frame is shown without a mark, and LineScratchFrame is freed.
void EndLinePlot();

// As at the start of the program.
void ResetLinePlotView();

}  // namespace kelvo
