// What somebody who is to help needs to know of this Kelvo, as texts that tell nobody's name: versions, what the
// operator was shown, the settings, the log of the line to the head. No frame and no picture is among them.
#pragma once

#include "platform/archive.h"

#include <cstddef>
#include <string>
#include <vector>

namespace kelvo {

// Of the transcript the latest lines.
inline constexpr std::size_t kSupportLines = 5000;
// Of a longer file the end.
inline constexpr std::size_t kSupportBytes = std::size_t{1} << 20;

// The files in the order in which they are shown, without the words of platform/user_words.h in names and texts:
//   versions.txt       Kelvo, toolkit, compiler, system, display, locale, data directory, time
//   transcript.jsonl   what was shown and answered (platform/transcript.h); files chosen and saved stand there by name
//   *.ini, *.cnf       by name: settings, cameras, wiring, simulated and recorded cameras of the data directory
//   CommLog.txt, PreviousCommLog.txt   where they are
// then the same of the user's state directory where that is another: recent files, the window's place, logs.
// One that can't be read is left out. A byte of a name that is no printable ASCII is _; a second file of the same name
// is 2-NAME. Reads the disk, writes nothing.
std::vector<NamedText> GatherSupportFiles();

}  // namespace kelvo
