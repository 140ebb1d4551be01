// "kelvo info FILE...": what image files and recorded sequences are, by their headers and the journals beside them. It
// reads and changes nothing.
#pragma once

#include "imagefile/stored_frames.h"

#include <span>
#include <string>

namespace kelvo {

// What there is to tell of a file, a line a fact with two blanks before it; UTF-8.
std::string InfoText(const StoredFrames& frames);
// The same as a JSON object on one line. The header's fields bear their own names; times are UTC where the journal
// knows them, header_time is the local time of the machine that wrote the file.
std::string InfoJson(const StoredFrames& frames);

// info [--json] FILE...: 0, or 2 where a file gave nothing: that is told on the error stream, and the others follow.
int InfoCommand(std::span<const std::string> arguments);

}  // namespace kelvo
