#include "batch/join_command.h"

#include "batch/batch_arguments.h"
#include "batch/batch_progress.h"
#include "batch/sequence_copy.h"

#include <vector>

namespace kelvo {

int JoinCommand(std::span<const std::string> arguments)
{
    constexpr std::string_view kWord = "join";
    const BatchArguments taken = TakeApart(arguments, kWord);
    if (!taken.error.empty()) return TellBatchFailure(kWord, taken.error);
    if (taken.files.size() < 2) return TellBatchFailure(kWord, "sequences and the name of the new one are needed");
    std::vector<FrameRange> sources;
    for (std::size_t i = 0; i + 1 < taken.files.size(); ++i) sources.push_back({.path = taken.files[i]});
    BatchProgress progress(kWord);
    const std::optional<std::string> failure = CopyFrames(
        sources, taken.files.back(), [&progress](std::int64_t done, std::int64_t all) { progress.Show(done, all); });
    return failure ? TellBatchFailure(kWord, *failure) : kBatchDone;
}

}  // namespace kelvo
