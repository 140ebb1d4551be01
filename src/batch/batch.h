// Commands without a window: "kelvo WORD ...", where the first argument is exactly such a word. They need no display
// and no data directory, write what they found to the standard output and what went wrong to the error stream, and end
// with a code: 0 all is well, 1 as the command says, 2 it couldn't be done.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

constexpr int kBatchDone = 0;
constexpr int kBatchFailed = 2;

// Does what the arguments (without the program's name) ask for, and gives the process's exit code. nullopt: the first
// one isn't a command's word, and the program goes on as ever. Before the application object, any window, any setting.
std::optional<int> RunBatch(std::span<const std::string> arguments);
// A line for each word, for --help.
std::string BatchHelp();

// The arguments of a command, taken apart.
struct BatchArguments {
    std::vector<std::string> files;  // what isn't an option, in order; all that stands behind "--" too
    std::vector<std::string> flags;  // "--json"
    std::vector<std::pair<std::string, std::string>> values;  // "--frames" and "0:64", also from "--frames=0:64"
    std::string error;  // an option that the command doesn't know, or without its value

    bool Has(std::string_view flag) const;
    std::optional<std::string> Value(std::string_view option) const;  // the last one given
};
BatchArguments TakeApart(std::span<const std::string> arguments, std::span<const std::string_view> flags,
                         std::span<const std::string_view> options);

// Tells on the error stream, "kelvo WORD: text", and gives kBatchFailed.
int TellBatchFailure(std::string_view word, std::string_view text);

}  // namespace kelvo
