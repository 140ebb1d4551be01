#include "batch/join_command.h"

#include "batch/batch_arguments.h"
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
    const std::optional<std::string> failure = CopyFrames(sources, taken.files.back());
    return failure ? TellBatchFailure(kWord, *failure) : kBatchDone;
}

}  // namespace kelvo
