#include "batch/batch.h"

#include "batch/apply_command.h"
#include "batch/cut_command.h"
#include "batch/join_command.h"
#include "batch/recover_command.h"

#include <algorithm>
#include <string_view>

namespace kelvo {

namespace {

struct Word {
    std::string_view word;
    int (*run)(std::span<const std::string> arguments);
    std::string_view help;
};

constexpr Word kWords[] = {
    {"recover", RecoverCommand, "recover FILE...             make whole what a recording left that was cut short"},
    {"apply", ApplyCommand, "apply --set X.cal [--frames A:B] IN OUT  correct a sequence with a calibration set"},
    {"cut", CutCommand, "cut --frames A:B IN OUT     take frames A to B - 1 out of a sequence, counted from 0"},
    {"join", JoinCommand, "join IN... OUT              put sequences together, in order"},
};

}  // namespace

std::optional<int> RunBatch(std::span<const std::string> arguments)
{
    if (arguments.empty()) return std::nullopt;
    const auto word = std::ranges::find(kWords, arguments.front(), &Word::word);
    if (word == std::end(kWords)) return std::nullopt;
    return word->run(arguments.subspan(1));
}

std::string BatchHelp()
{
    std::string help;
    for (const Word& each : kWords) help += "  " + std::string(each.help) + '\n';
    return help;
}

}  // namespace kelvo
