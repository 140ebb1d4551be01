#include "batch/batch_progress.h"

#include "batch/batch_end.h"
#include "platform/standard_streams.h"
#include "platform/text.h"

#include <unistd.h>

namespace kelvo {

namespace {

// How often on its way: a terminal is slower than most frames.
constexpr std::int64_t kStepsOnTerminal = 1000;
constexpr std::int64_t kStepsElsewhere = 10;

bool isInALine = false;  // the terminal's cursor is behind what was shown last

}  // namespace

BatchProgress::BatchProgress(std::string_view word, std::string_view doing)
    : front_("kelvo " + std::string(word) + ": "), isTerminal_(isatty(STDERR_FILENO) != 0)
{
    if (!doing.empty()) front_.append(doing).append(", ");
}

void BatchProgress::Show(std::int64_t done, std::int64_t all)
{
    if (all <= 0 || Interrupted()) return;
    const std::int64_t steps = isTerminal_ ? kStepsOnTerminal : kStepsElsewhere;
    const auto step =
        static_cast<std::int64_t>(static_cast<double>(steps) * static_cast<double>(done) / static_cast<double>(all));
    if (step == stepShown_) return;
    stepShown_ = step;
    isInALine = isTerminal_ && done < all;
    WriteErrorStream((isTerminal_ ? "\r" : "") + front_ +
                     Format("%lld of %lld frames", static_cast<long long>(done), static_cast<long long>(all)) +
                     (isInALine ? "" : "\n"));
}

void EndProgressLine()
{
    if (isInALine) WriteErrorStream("\n");
    isInALine = false;
}

}  // namespace kelvo
