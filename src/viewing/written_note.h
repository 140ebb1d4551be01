// What a save tells on the status line: the names, how much, and where.
#pragma once

#include "ui/command_end.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kelvo {

// "Saved a0.seq: 3 frames, 480.5 kB in /home/me/Documents/Kelvo" for a file that now holds so many frames; the size is
// that of the file on the disk. Stands as a StatusNote.
CommandEnd NoteSavedFile(const std::string& path, std::uint32_t frames);

// The same of files of one directory that hold so many frames each: "Saved 3 files, a-left.tif to a-right.tif: 4 frames
// each, 480.5 kB in ..."; of a single one as above.
CommandEnd NoteSavedFiles(const std::vector<std::string>& paths, std::uint32_t frames);

// "Saved 75 bitmaps, scene00.png to scene74.png: 1.2 MB in ..." for files of one directory, "3 of 75 bitmaps" where the
// others couldn't be written; of a single one its name.
CommandEnd NoteSavedBitmaps(const std::vector<std::string>& paths, std::uint32_t wanted);

// The same of one picture, with what is to be told of it behind its name: "Saved scene.tif, 12 samples held at 0 or
// 255: 82.7 kB in ..."
CommandEnd NoteSavedPicture(const std::string& path, const std::string& more);

// "Saved support.zip: 12.3 kB in ..."
CommandEnd NoteSavedArchive(const std::string& path);

// "Saved calibration november.cal in ..."
CommandEnd NoteSavedSet(const std::string& calPath);

}  // namespace kelvo
