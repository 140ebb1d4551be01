// The variables behind state/display_state.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "resources/ids.h"
#include "state/display_state.h"

namespace kelvo {

struct DisplayStateVariables {
    std::int32_t Contrast = 16;
    std::int32_t Brightness = 580;
    std::int32_t LevelsAreFitted = 0;
    std::int32_t ResetContrast = 16;
    std::int32_t ResetBrightness = 580;
    std::int16_t ImageColor = kNormalGray;
    std::int16_t GrayScale = kLinearScale;
    std::int32_t GrayColorBar = 1;
    std::int32_t TempScale = 0;
    std::int32_t TempHisto = 0;
    std::int32_t ColorBarShown = 0;
    std::int32_t MirrorHoriz = 0;
    std::int32_t MirrorVert = 0;
    std::int32_t RotateCCW = 0;
    std::int32_t SubstBadPixels = 1;
    std::int32_t SubstBadPixels2 = 1;
    std::int32_t MirrorHoriz2 = 0;
    std::int32_t MirrorVert2 = 0;
    std::int32_t DisplayLow = 0;
    std::int32_t DisplayHigh = 0;
    std::int32_t DisplayUnit = 0;
    std::int32_t Xpan = 0;
    std::int32_t Ypan = 0;
    std::vector<std::uint8_t> DisplayLut;
    std::vector<std::uint8_t> ColorMap;
    float ViewScaleGain = 1.0F;
    float ViewScaleOffset = 0.0F;
};

namespace write {
extern DisplayStateVariables display;
}

// As at the start of the program.
void ResetDisplayState();

}  // namespace kelvo
