// The frame on view as regions measure it: its counts, and what is known of them.
#pragma once

#include "pixel/bad_pixels.h"
#include "regions/region_measure.h"

#include <cstdint>
#include <span>

namespace kelvo {

// Columns x rows of FrameSizeOnView in image order, as pixel() reads them: the stored frame, the one that replay shows,
// or the camera's newest, live or frozen. Empty where there is none, or where it holds fewer counts than its size says.
std::span<const std::int16_t> CountsOnView();

// A file is on view whose counts are the converter's: uncalibrated integers. Lists of coefficients and of deviations
// hold other things.
bool StoredCountsAreRaw();

// What MeasureRegion needs for that frame; bad must live as long as the result.
MeasureOptions OptionsOnView(const BadDetMap& bad);

}  // namespace kelvo
