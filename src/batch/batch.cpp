#include "batch/batch.h"

#include "batch/apply_command.h"
#include "batch/batch_arguments.h"
#include "batch/cut_command.h"
#include "batch/export_command.h"
#include "batch/join_command.h"
#include "batch/recover_command.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <string_view>

namespace kelvo {

namespace {

struct Word {
    std::string_view word;
    int (*run)(std::span<const std::string> arguments);
    std::string_view arguments;
    std::string_view does;
    std::string_view details;
    std::string_view ending;
};

constexpr std::string_view kDoneOrNot =
    "Ends with 0 where it is done, with 2 where it couldn't be: the error stream tells why, and nothing stands under\n"
    "the name of the result. OUT must not stand before; its journal OUT.frames comes along where IN has one.\n";

constexpr Word kWords[] = {
    {"recover", RecoverCommand, "[--dry-run] [--json] FILE...", "make whole what a recording left that was cut short",
     "  --dry-run     tell what would be done, and do nothing\n"
     "  --json        an object a line and file\n",
     "Ends with 0 where all were whole, with 1 where something was (or would be) repaired, with 2 where something\n"
     "can't be.\n"},
    {"apply", ApplyCommand, "--set X.cal [--frames A:B] IN OUT", "correct a raw sequence with a calibration set",
     "  --set X.cal   the set; its lists lie beside it\n"
     "  --frames A:B  frames A to B - 1 alone, counted from 0; A: to the end, :B from the first\n"
     "The progress stands on the error stream.\n",
     kDoneOrNot},
    {"export", ExportCommand, "[--to FORMAT] [--as FORM] [--frames A:B] [OPTION...] IN OUT",
     "write frames for other programs", kExportDetails, kExportEnding},
    {"cut", CutCommand, "--frames A:B IN OUT", "take a range out of a sequence",
     "  --frames A:B  frames A to B - 1, counted from 0; A: to the end, :B from the first\n", kDoneOrNot},
    {"join", JoinCommand, "IN... OUT", "put sequences together, in order",
     "Pieces of a run that were cut, or corrected each for itself, are joined the run again byte for byte.\n",
     kDoneOrNot},
};

std::string UsageOf(const Word& word)
{
    return std::string(word.word) + ' ' + std::string(word.arguments);
}

std::string HelpOf(const Word& word)
{
    return "kelvo " + UsageOf(word) + '\n' + std::string(word.does) + "\n\n" + std::string(word.details) +
           std::string(word.ending);
}

bool AsksForHelp(std::span<const std::string> arguments)
{
    const auto files = std::ranges::find(arguments, "--");
    return std::any_of(arguments.begin(), files,
                       [](const std::string& argument) { return argument == "--help" || argument == "-h"; });
}

int Run(const Word& word, std::span<const std::string> arguments)
{
    if (!AsksForHelp(arguments)) return word.run(arguments);
    std::fputs(HelpOf(word).c_str(), stdout);
    return kBatchDone;
}

}  // namespace

std::optional<int> RunBatch(std::span<const std::string> arguments)
{
    if (arguments.empty()) return std::nullopt;
    const auto word = std::ranges::find(kWords, arguments.front(), &Word::word);
    if (word == std::end(kWords)) return std::nullopt;
    std::signal(SIGXFSZ, SIG_IGN);  // a limit on the length of files is a write that fails, and is told
    const int code = Run(*word, arguments.subspan(1));
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return code;
    return TellBatchFailure(word->word, "the standard output takes nothing");
}

std::string BatchHelp()
{
    std::size_t width = 0;
    for (const Word& each : kWords) width = std::max(width, UsageOf(each).size());
    std::string help;
    for (const Word& each : kWords) {
        std::string usage = UsageOf(each);
        usage.resize(width, ' ');
        help += "  " + usage + "  " + std::string(each.does) + '\n';
    }
    return help + "kelvo WORD --help tells more.\n";
}

}  // namespace kelvo
