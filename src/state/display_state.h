// How the picture is shown: what the display pipeline, the panel and the settings share.
#pragma once

#include "state/camera_config.h"

#include <cstdint>
#include <vector>

namespace kelvo {

extern const std::int32_t& Contrast;    // 1 to 100
extern const std::int32_t& Brightness;  // 1 to 1000
// 1: the program has found both for the picture, and they aren't the operator's: they are never written to the
// settings. A change by hand (BuildDisplayLut with other values) makes it 0.
extern const std::int32_t& LevelsAreFitted;
extern const std::int32_t& ResetContrast;  // as read at start-up, for the display dialog's Reset
extern const std::int32_t& ResetBrightness;
extern const std::int16_t& ImageColor;  // 1230 normal gray, 1231 inverted gray, 1232 colour
extern const std::int16_t& GrayScale;   // 1238 linear, 1239 logarithmic
// Flags of the bars beside the picture, 0 or 1. This display draws none; the settings keep them.
extern const std::int32_t& GrayColorBar;
extern const std::int32_t& TempScale;
extern const std::int32_t& TempHisto;
extern const std::int32_t& ColorBarShown;
// How the picture lies, 0 or 1 each: rows reversed (MirrorHoriz), columns reversed (MirrorVert), then turned
// counter-clockwise. In force once DecomList is built again.
extern const std::int32_t& MirrorHoriz;
extern const std::int32_t& MirrorVert;
extern const std::int32_t& RotateCCW;
extern const std::int32_t& SubstBadPixels;   // 1: bad pixels are replaced when DecomList is next built
extern const std::int32_t& SubstBadPixels2;  // the second camera's, with DualCamera
extern const std::int32_t& MirrorHoriz2;
extern const std::int32_t& MirrorVert2;

extern const std::int32_t& DisplayLow;  // the count range of live video; 0 and 0 before the start
extern const std::int32_t& DisplayHigh;
extern const std::int32_t& DisplayUnit;  // index into the table of units, 0 to 29

// Zoom (1 to 16) and offset are the camera record's own fields: the display changes them, and the exit writes them
// back.
extern const std::int32_t& Xzoom;
extern const std::int32_t& Yzoom;
extern const std::int32_t& Xpan;  // image pixels, may be negative
extern const std::int32_t& Ypan;
extern const std::int32_t& Xoffset;  // screen units: cursor mapping and limits; the painter doesn't use them
extern const std::int32_t& Yoffset;

// Entry: a count; value: 0 to 255. 65535 entries once made.
extern const std::vector<std::uint8_t>& DisplayLut;
// 768 bytes in planes of 256: blue, green, red. Empty until made.
extern const std::vector<std::uint8_t>& ColorMap;

// How a count on view maps back to the stored value: set when a file of floats, or a long or float list, is loaded. 1
// and 0 at start.
extern const float& ViewScaleGain;
extern const float& ViewScaleOffset;

}  // namespace kelvo
