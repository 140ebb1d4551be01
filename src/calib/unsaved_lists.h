// The lists of a calibration whose files couldn't be written (pixel/unsaved_set.h), as files.
#pragma once

#include "pixel/unsaved_set.h"

#include <string>

namespace kelvo {

// The lists, with the table in force, as the files of a .cal: all but the .cal itself. False where one couldn't be
// written, or one that this set doesn't have couldn't be removed.
bool WriteUnsavedLists(const UnsavedSet& set, const std::string& calPath);

}  // namespace kelvo
