// The dialog NOISE: the temporal noise of each pixel and its NETD, measured live or of a file, as a map in the colours
// in force, a histogram and figures.
#pragma once

#include "ui/command_end.h"

namespace kelvo {

// The controls of NOISE.
constexpr int kNoiseLive = 22301;
constexpr int kNoiseFile = 22302;
constexpr int kNoiseFileName = 22303;
constexpr int kNoiseBrowseFile = 22304;
constexpr int kNoiseSetName = 22305;
constexpr int kNoiseBrowseSet = 22306;
constexpr int kNoiseFrames = 22307;
constexpr int kNoiseShown = 22308;
constexpr int kNoiseMap = 22309;
constexpr int kNoiseHistogram = 22310;
constexpr int kNoiseMedian = 22311;
constexpr int kNoiseRms = 22312;
constexpr int kNoiseWorst = 22313;
constexpr int kNoisePixels = 22314;
constexpr int kNoiseBad = 22315;
constexpr int kNoiseTaken = 22316;
constexpr int kNoisePixel = 22317;
constexpr int kNoiseSave = 1606;

// Runs the dialog until the operator leaves it; what was measured goes with it. It begins with the live picture where
// live video runs, otherwise with the file on view, and with 64 frames. What can't be measured is told in a box, and
// what was measured before stays. Without memory for the figures nothing is shown: "There is no memory for the noise of
// so many pixels."
CommandEnd MeasureNoise();

// Nothing was measured.
void ResetNoiseDialog();

}  // namespace kelvo
