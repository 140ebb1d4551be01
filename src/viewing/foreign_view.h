// Files of other programs (imagefile/foreign_frames.h) on view. Each is copied once, frame for frame, to a sequence in
// the directory "opened" of CacheDir, which everything else then works with as with any other. Beside the copy lies
// NAME.seq.source, a text that tells what it was made of. The file itself is only read. Copies may be deleted at any
// time.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

// The file to show where the operator opens path: path itself where it is an image file, and else the copy. One that
// was made of the same file is taken as it stands; a file of the same name from elsewhere gets a copy of its own,
// NAME-2.seq. Copying takes a while, which Escape stops; a copy takes its name when it is whole.
//
// nullopt where there is nothing to show: the operator stopped it, or was told in a box why ("a.npy holds floats.").
// What was on view stays then.
std::optional<std::string> FileToShow(std::string_view path);

// "from /home/me/a.npy, less 32768" of a copy, for the status line; empty: the file is none.
std::string OriginOf(std::string_view path);

}  // namespace kelvo
