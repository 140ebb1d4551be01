// The histogram that stands in the dialog: counted, measured, drawn, its rectangle marked in the picture.
#pragma once

#include "display/frame_bitmap.h"
#include "platform/types.h"

#include <string>

namespace kelvo {

constexpr int kHistogramPlot = 300;  // the control that the plot is drawn in

// Counts HistSettings' rectangle of the frame to measure (analysis/measured_frame.h), fits the axes that follow the
// data, draws the plot, and, where the rectangle, the unit or the frame is another, reports what the samples measure
// and marks the rectangle in the picture. Nothing happens where neither HistSettings nor DisplayUnit has changed since
// the last drawing. No samples: empty axes, and nothing is reported. Where memory for the bins is refused: "Failed to
// allocate memory for %u histogram bins." under "Memory Allocation Error", no plot, and the picture is clean.
void DrawHistogram(HWND dialog);
// The frame is another: the next DrawHistogram draws in any case, and reports.
void ForgetDrawnHistogram();
// The plot as it was drawn last, at the size that its control has now.
void RepaintHistogram(HWND dialog);

// A rectangle: the picture shows a copy of the frame to measure, HistScratchFrame, with the rectangle marked in it;
// "Failure to allocate video memory!" where there is no memory for it. Null: the picture shows the frame itself.
void ShowHistogramRegion(const FrameRect* rectangle);

// What was drawn last, as comma-separated values: notes, then a line for each value of the axis.
std::string HistogramCsv();

// HistScratchFrame and what was counted.
void FreeHistogram();

}  // namespace kelvo
