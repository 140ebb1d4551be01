// Which pixels measurements leave out as bad. Of the camera's frames they are those that it knows to be bad itself
// (viewing/fitted_contrast.h, BadPixelsOnView); a file says nothing of its detectors, so that the operator names the
// calibration set that does.
#pragma once

#include "pixel/bad_pixels.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace kelvo {

// What the operator chose: whether bad detectors are left out, and by which set for files; empty: none is named.
extern const std::int32_t& LeaveBadDetectorsOut;  // 0 or 1; 0 at the start
extern const std::string& BadDetectorSet;         // path of its .cal
void ChooseBadDetectors(bool leaveOut);
// Reads the set for the frame on view first; one that can't be read for it stays away: false, with the reason in why.
// Without a frame on view it is taken as it is, and read with the next. An empty path names none.
bool NameBadDetectorSet(const std::string& calPath, std::string& why);

// The map for the frame on view, by the choice; empty: nothing is left out. A set is read again where one of its files,
// or the size of the frame, is another one; one that doesn't fit the frame on view leaves nothing out, and
// WhyNoneIsLeftOut says so.
const BadDetMap& BadDetectorsOnView();
// Why bad detectors of the frame on view stay in though they are to be left out, a whole sentence; empty: they don't.
std::string WhyNoneIsLeftOut();

std::size_t BadDetectorsIn(const BadDetMap& map);

// Nothing left out, no set.
void ResetBadDetectors();

}  // namespace kelvo
