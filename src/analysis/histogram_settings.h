// What the operator chose for the histogram, section Histogram of kelvo.ini.
#pragma once

#include "analysis/histogram.h"

#include <cstdint>
#include <vector>

namespace kelvo {

// As the dialog shows it; the axes' ends follow the data where they are to.
extern const HistSettingsRecord& HistSettings;

// One frame of samples, in which the rectangle is marked, so that the measured frame stays clean. Empty while the
// dialog is closed.
extern const std::vector<std::int16_t>& HistScratchFrame;

// Reads the section for the frame on view: a rectangle that is missing is a quarter of the frame, a box that is missing
// its default. The ends of both axes but the upper one of the number axis are those of every opening: XplotMin and
// XplotMax the range on view, YplotMin 0; their keys are written and never read. YplotMax is a
// quarter of the rectangle's samples where its key is missing, and at least 2. A rectangle that doesn't lie in the
// frame is put in its middle.
void ReadHistSettings();
// Another frame is on view: the value axis is its range, and a rectangle that doesn't lie in it is put in its middle.
void SuitHistSettingsToView();

// Xposition, Yposition, Xsize, Ysize.
void WriteHistRectangle();
// XplotMax, YplotMax, XplotMin, YplotMin, and the five boxes.
void WriteHistAxes();

}  // namespace kelvo
