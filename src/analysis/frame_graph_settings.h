// What the frame graph plots and how: the pixel, the limits of its value axis and the axes' kinds, which section
// Graphics of kelvo.ini keeps, and the frames and their source, which hold for the moment.
#pragma once

#include "analysis/frame_trace.h"
#include "analysis/measured_frame.h"
#include "display/units.h"

#include <cstdint>
#include <optional>

namespace kelvo {

extern const std::int32_t& PixelRow;  // of the picture, from 0
extern const std::int32_t& PixelCol;
extern const std::int32_t& yClipMin;  // counts; ends of the value axis while Autoscale is 0
extern const std::int32_t& yClipMax;
extern const std::int32_t& SqrtTime;   // 1: the other axis shows the square root of the frame number
extern const std::int32_t& Autoscale;  // 1: the value axis follows the data

extern const std::int32_t& GraphFirstFrame;
extern const std::int32_t& GraphLastFrame;
extern const std::int32_t& GraphFrames;  // frames that are graphed; those of the host frames until then
// The source, by the number of its control in the dialog; 0: none is chosen yet.
constexpr std::int32_t kGraphHostFrames = 1380;
constexpr std::int32_t kGraphFile = 1381;
extern const std::int32_t& GraphSource;
extern const std::optional<TraceFile>& GraphedFile;  // that was chosen last; stays while another source is chosen

// Section Graphics: the pixel is limited to the camera's frame (64, 64 where a key is missing), yClipMax is DisplayHigh
// where its key is missing, SqrtTime 0, Autoscale 1. The frames are those of the host frames, 0 to FramesInBuffer - 1.
// Source and file stay.
void ReadGraphSettings();
// Writes the six keys.
void SaveGraphSettings();

// The file where it is the source; otherwise null.
const TraceFile* GraphedTraceFile();
// The size of the source's frames: columns and rows.
Point GraphedSize();
// The range of counts of the source: the file's, or the live one.
CountRange GraphedRange();
// While it lives counts are read in the units of the source.
UnitScope GraphedUnits();

}  // namespace kelvo
