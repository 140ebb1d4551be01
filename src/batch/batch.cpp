#include "batch/batch.h"

#include "batch/apply_command.h"
#include "batch/batch_arguments.h"
#include "batch/batch_end.h"
#include "batch/batch_progress.h"
#include "batch/calibrate_command.h"
#include "batch/command_pages.h"
#include "batch/command_words.h"
#include "batch/cut_command.h"
#include "batch/export_command.h"
#include "batch/info_command.h"
#include "batch/join_command.h"
#include "batch/recover_command.h"
#include "batch/stats_command.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <string_view>

namespace kelvo {

namespace {

struct Runner {
    std::string_view word;
    int (*run)(std::span<const std::string> arguments);  // those behind the word; gives the exit code
};
constexpr Runner kRunners[] = {
    {"info", InfoCommand},           {"stats", StatsCommand},   {"recover", RecoverCommand}, {"apply", ApplyCommand},
    {"calibrate", CalibrateCommand}, {"export", ExportCommand}, {"cut", CutCommand},         {"join", JoinCommand},
};

bool AsksForHelp(std::span<const std::string> arguments)
{
    const auto files = std::ranges::find(arguments, "--");
    return std::any_of(arguments.begin(), files,
                       [](const std::string& argument) { return argument == "--help" || argument == "-h"; });
}

int Run(const Runner& runner, std::span<const std::string> arguments)
{
    if (!AsksForHelp(arguments)) return runner.run(arguments);
    std::fputs(HelpOfCommand(runner.word).c_str(), stdout);
    return kBatchDone;
}

}  // namespace

std::optional<int> RunBatch(std::span<const std::string> arguments)
{
    if (arguments.empty()) return std::nullopt;
    const auto* const runner = std::ranges::find(kRunners, arguments.front(), &Runner::word);
    if (runner == std::end(kRunners)) return std::nullopt;
    std::signal(SIGXFSZ, SIG_IGN);  // a limit on the length of files is a write that fails, and is told
    const InterruptWatch watch;
    const int code = Run(*runner, arguments.subspan(1));
    EndProgressLine();
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return code;
    return TellBatchFailure(runner->word, "the standard output takes nothing");
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
