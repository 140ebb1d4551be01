// How the picture is shown: what the display pipeline, the panel and the settings share.
#pragma once

#include "state/camera_config.h"

#include <cstdint>
#include <vector>

namespace kelvo {

extern std::int32_t Contrast;       // 1 to 100
extern std::int32_t Brightness;     // 1 to 1000
extern std::int32_t ResetContrast;  // as read at start-up, for the display dialog's Reset
extern std::int32_t ResetBrightness;
extern std::int16_t ImageColor;  // 1230 normal gray, 1231 inverted gray, 1232 colour
extern std::int16_t GrayScale;   // 1238 linear, 1239 logarithmic
extern std::int32_t GrayColorBar;
extern std::int32_t TempScale;
extern std::int32_t TempHisto;
extern std::int32_t ColorBarShown;
extern std::int32_t MirrorHoriz;
extern std::int32_t MirrorVert;
extern std::int32_t RotateCCW;
extern std::int32_t SubstBadPixels;   // 1: bad pixels are replaced when DecomList is next built
extern std::int32_t SubstBadPixels2;  // the second camera's, with DualCamera
extern std::int32_t MirrorHoriz2;
extern std::int32_t MirrorVert2;

extern std::int32_t DisplayLow;  // the count range of live video
extern std::int32_t DisplayHigh;
extern std::int32_t DisplayUnit;  // index into the table of units, 0 to 29

// Zoom (1 to 16) and offset are the camera record's own fields: the display changes them, and the exit writes them
// back.
inline constexpr std::int32_t& Xzoom = ActiveConfig.Xzoom;
inline constexpr std::int32_t& Yzoom = ActiveConfig.Yzoom;
extern std::int32_t Xpan;  // image pixels, may be negative
extern std::int32_t Ypan;
inline constexpr std::int32_t& Xoffset =
    ActiveConfig.Xoffset;  // screen units: cursor mapping and limits; the painter doesn't use them
inline constexpr std::int32_t& Yoffset = ActiveConfig.Yoffset;

// Entry: a count; value: 0 to 255. 65535 entries once made.
extern std::vector<std::uint8_t> DisplayLut;
// 768 bytes in planes of 256: blue, green, red. Empty until made.
extern std::vector<std::uint8_t> ColorMap;

// How a count on view maps back to the stored value: set when a file of floats, or a long or float list, is loaded. 1
// and 0 at start.
extern float ViewScaleGain;
extern float ViewScaleOffset;

}  // namespace kelvo
