// What is told of the command line outside the program, made of its two tables (platform/option_table.h,
// batch/command_words.h): a manual page and the completion in a shell. Both are ASCII, and the same on each machine.
#pragma once

#include <string>
#include <string_view>

namespace kelvo {

// How a word is used, for "kelvo WORD --help": usage, what it does, options, details, how it ends.
std::string HelpOfCommand(std::string_view word);

// kelvo(1), in the man macros of roff.
std::string ManualPage();

// The same of a small program that goes with Kelvo: its name, what it is for ("puts a header before ..."), and what it
// tells on --help, line by line.
std::string ManualPageOfTool(std::string_view name, std::string_view purpose, std::string_view help);

// A file of bash-completion: words, options, the values that are known, and names of files.
std::string BashCompletion();

}  // namespace kelvo
