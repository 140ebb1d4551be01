// The commands that bring stored data on view. Each runs until its frame is on view or the operator has been told why
// not, and says how it ends. All but the statistics stop a file that plays.
#pragma once

#include "ui/command_end.h"

#include <cstddef>
#include <string>
#include <vector>

namespace kelvo {

// Asks for an image file and shows its first frame. A file that came on view joins the recent ones. kLeaveStatus where
// the operator cancels.
CommandEnd LoadImageFile();

// Asks for the file with which a sequence begins, names the sequence after it and shows its first frame, as above.
CommandEnd NameSequenceForLoading();

// The next and the previous frame of the sequence on view. Without a sequence the next one asks for its name, as
// command 113, and leaves the status to it.
CommandEnd NextFrame();
CommandEnd PreviousFrame();

// What a start, a drop or another start names: the first file is shown (OpenStoredFile), the others that exist stand
// behind it in the recent files. None: nothing happens.
void OpenStoredFiles(const std::vector<std::string>& paths);

// Shows the file at a place of the recent ones, from 0; an empty place does nothing.
CommandEnd OpenRecentFile(std::size_t place);

}  // namespace kelvo
