// Where the program's own notes lie, apart from the operator's settings and sets: the recent files, the windows' place
// and the head's logs in the user's state directory, the copies of other programs' files in the user's cache. A start
// with --data has all in that one directory.
#pragma once

namespace kelvo {

// Sets StateDir and CacheDir, makes them, and takes over what earlier versions kept in DefaultDir, each file once: one
// that stands in StateDir already counts, and the one in DefaultDir is left as it is. Where a directory isn't told by
// the environment, can't be made or written, or what is to be taken over doesn't fit, DefaultDir serves in its place
// and nothing has moved; the last two are told on the error stream, and the next start tries again.
// After DefaultDir is set and held by this process, before anything of these files is read.
void PartNotesFromSettings();

}  // namespace kelvo
