// The commands that save what is on view. Each asks for what it needs, runs until the file is written or the operator
// has been told why not, and says how it ends.
#pragma once

#include "ui/command_end.h"

#include <cstdint>

namespace kelvo {

// Asks for a name and saves one image. kLeaveStatus where the operator cancels. A file that plays stops.
CommandEnd SaveImageFile();

// Asks for the name of the sequence to save to (viewing/sequence_naming.h). kLeaveStatus where the operator cancels.
CommandEnd NameSequence();

// Saves the next image of that sequence, without a question. A file that plays stops.
CommandEnd SaveNextOfSequence();

// What these commands are made of, for user-written functions. Each dialog opens with the patterns of its kind; false
// where the operator cancels. What was chosen is saved with the hourglass, and told where it was written; the results
// are those of SaveImage and SaveSequence.
bool AskForImageName();
int SaveNamedImage();
bool AskForSequenceName();
std::int32_t SaveNextImage();

// Saves the picture as bitmap files (viewing/bitmap_command.h) and says what was written. kLeaveStatus where nothing
// was saved. A file that plays stops.
CommandEnd SaveBitmap();

}  // namespace kelvo
