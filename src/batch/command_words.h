// The commands without a window, told once: what each is called and does, its options, how it ends. batch/batch.h runs
// them.
// The commands take their arguments by this table (batch/batch_arguments.h), and help, the completion in a shell and
// the manual page (batch/command_pages.h) are made of it. Texts are ASCII.
#pragma once

#include "platform/option_table.h"

#include <span>
#include <string>
#include <string_view>

namespace kelvo {

struct CommandOption {
    std::string_view name;        // "--frames"
    std::string_view value = {};  // "A:B": what follows it; empty: a switch
    std::string_view does;
    bool needed = false;
    std::string_view choices = {};  // as in ProgramOption
};

struct CommandWord {
    std::string_view word;
    std::string_view operands;  // "IN OUT"
    std::string_view does;
    std::span<const CommandOption> options;
    std::string_view details;  // more to know, lines of at most 110 characters; may be empty
    std::span<const ExitCode> exits;
    bool takesStreams = false;  // "-" is the standard input, as the name of the result the standard output
};

std::span<const CommandWord> CommandWords();
// Null: there is no such word.
const CommandWord* CommandOf(std::string_view word);

// "--set X.cal [--frames A:B] IN OUT"
std::string ArgumentsOf(const CommandWord& word);

}  // namespace kelvo
