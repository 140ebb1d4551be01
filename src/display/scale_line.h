// What the colours of a picture stand for: the counts that are spread over the gray values, their values in a unit, and
// how a scale beside the picture is headed.
#pragma once

#include "display/lookup_table.h"
#include "display/scale_ticks.h"

#include <cstdint>
#include <string>

namespace kelvo {

// The counts that the lookup table spreads over the gray values: low shows the first, high and above the last.
CountRange SpreadCounts(const LutWindow& window, CountRange live);
// Of the lookup table in force.
CountRange SpreadCountsOnView();

// That unit (display/units.h), or the first one of the table in which the frame on view can be read.
std::int32_t ReadableUnit(std::int32_t unit);

// The values of the spread counts in a unit.
ScaleLine ScaleLineOf(CountRange counts, std::int32_t unit);
// The unit as the operator reads it: "\xB0" "C", "Counts".
std::string ScaleTitleOf(std::int32_t unit);

// The same for the picture on the screen: where a difference is on view (display/difference_view.h) values are above
// and below none, and "+/- " stands before the unit.
ScaleLine ScaleLineOnView(CountRange counts, std::int32_t unit);
std::string ScaleTitleOnView(std::int32_t unit);

}  // namespace kelvo
