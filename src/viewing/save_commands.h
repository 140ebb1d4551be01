// The commands that save what is on view. Each asks for what it needs, runs until the file is written or the operator
// has been told why not, and says how it ends.
#pragma once

#include "ui/command_end.h"

namespace kelvo {

// Asks for a name and saves one image. kLeaveStatus where the operator cancels. A file that plays stops.
CommandEnd SaveImageFile();

// Asks for the name of the sequence to save to (viewing/sequence_naming.h). kLeaveStatus where the operator cancels.
CommandEnd NameSequence();

// Saves the next image of that sequence, without a question. A file that plays stops.
CommandEnd SaveNextOfSequence();

// Saves the picture as bitmap files (viewing/bitmap_command.h) and says what was written. kLeaveStatus where nothing
// was saved. A file that plays stops.
CommandEnd SaveBitmap();

}  // namespace kelvo
