// Commands without a window: "kelvo WORD ...", where the first argument is exactly such a word (batch/command_words.h).
// They need no display and, where their help says nothing else, no data directory, write what they found to the
// standard output and what went wrong to the error stream, and end with a code: 0 all is well, 1 as the command says, 2
// it couldn't be done.
#pragma once

#include <optional>
#include <span>
#include <string>

namespace kelvo {

// Does what the arguments (without the program's name) ask for, and gives the process's exit code; with --help among
// them it tells how the word is used instead. nullopt: the first one isn't a command's word, and the program goes on as
// ever. Before the application object, any window, any setting.
std::optional<int> RunBatch(std::span<const std::string> arguments);
// Each word with its arguments and what it does, for --help.
std::string BatchHelp();

}  // namespace kelvo
