#include "batch/batch.h"

#include "batch/batch_arguments.h"
#include "batch/batch_end.h"
#include "batch/command_pages.h"
#include "batch/command_words.h"

#include <algorithm>
#include <csignal>
#include <cstdio>

namespace kelvo {

namespace {

bool AsksForHelp(std::span<const std::string> arguments)
{
    const auto files = std::ranges::find(arguments, "--");
    return std::any_of(arguments.begin(), files,
                       [](const std::string& argument) { return argument == "--help" || argument == "-h"; });
}

int Run(const CommandWord& word, std::span<const std::string> arguments)
{
    if (!AsksForHelp(arguments)) return word.run(arguments);
    std::fputs(HelpOfCommand(word.word).c_str(), stdout);
    return kBatchDone;
}

}  // namespace

std::optional<int> RunBatch(std::span<const std::string> arguments)
{
    const CommandWord* const word = arguments.empty() ? nullptr : CommandOf(arguments.front());
    if (!word) return std::nullopt;
    std::signal(SIGXFSZ, SIG_IGN);  // a limit on the length of files is a write that fails, and is told
    const InterruptWatch watch;
    const int code = Run(*word, arguments.subspan(1));
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return code;
    return TellBatchFailure(word->word, "the standard output takes nothing");
}

std::string BatchHelp()
{
    std::string help;
    for (const CommandWord& word : CommandWords()) {
        help += "  " + std::string(word.word) + ' ' + ArgumentsOf(word) + "\n      " + std::string(word.does) + '\n';
    }
    return help + "kelvo WORD --help tells more.\n";
}

}  // namespace kelvo
