// The frame that the analysis measures: the one on view, as counts without image cursor and marks. It stands in
// ImageBuffer behind ImageHeaderDataOffset, be it stored, frozen or the camera's newest.
#pragma once

#include "display/lookup_table.h"
#include "grabber/frame_size.h"
#include "platform/types.h"

#include <cstdint>
#include <span>

namespace kelvo {

// Something can be measured: a file is on view or the camera is on. False after the reason is told on the status line.
bool SomethingToMeasure();

// ImageBuffer holds the frame on view, also where that is the frozen one or a stored burst's that replay shows. Live
// only the room is made. False where memory is refused; then the old block stands.
bool KeepFrameOnView();

// With live video: the camera's newest frame, corrected, into LiveFrame and ImageBuffer; nothing is drawn. 1, or 0 on
// failure (the board's own is told in a box). Frozen and stored it does nothing: 1.
int ReadFrameToMeasure();

// Rows x columns of FrameSizeOnView, row-major; empty where ImageBuffer holds fewer.
std::span<const std::int16_t> FrameToMeasure();

// The range of counts on view: the header's with a file on view, else the live one.
CountRange RangeOnView();

}  // namespace kelvo
