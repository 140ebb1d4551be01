// "kelvo recover FILE...": makes sequences whole (imagefile/recovery.h), and tells what was wrong with them.
#pragma once

#include <span>
#include <string>

namespace kelvo {

// recover [--dry-run] [--json] FILE...: 0 all clean, 1 something was (or would be) repaired, 2 something can't. With
// --json an object a line and file.
int RecoverCommand(std::span<const std::string> arguments);

}  // namespace kelvo
