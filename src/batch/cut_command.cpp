#include "batch/cut_command.h"

#include "batch/batch_arguments.h"
#include "batch/batch_progress.h"
#include "batch/sequence_copy.h"

#include <array>
#include <charconv>
#include <system_error>

namespace kelvo {

namespace {

constexpr std::string_view kWord = "cut";
constexpr std::string_view kFrames = "--frames";

std::optional<std::int64_t> NumberOr(std::string_view text, std::int64_t otherwise)
{
    if (text.empty()) return otherwise;
    std::int64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end && number >= 0 ? std::optional(number) : std::nullopt;
}

}  // namespace

std::optional<std::pair<std::int64_t, std::int64_t>> FrameRangeOf(std::string_view text)
{
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) return std::nullopt;
    const std::optional<std::int64_t> first = NumberOr(text.substr(0, colon), 0);
    const std::optional<std::int64_t> end = NumberOr(text.substr(colon + 1), -1);
    if (!first || !end) return std::nullopt;
    return std::pair(*first, *end);
}

int CutCommand(std::span<const std::string> arguments)
{
    const BatchArguments taken = TakeApart(arguments, kWord);
    if (!taken.error.empty()) return TellBatchFailure(kWord, taken.error);
    const std::optional<std::string> wanted = taken.Value(kFrames);
    const auto range = FrameRangeOf(wanted.value_or(""));
    if (!range) return TellBatchFailure(kWord, kFrameRangeForm);
    if (taken.files.size() != 2) return TellBatchFailure(kWord, "a sequence and the name of the new one are needed");
    const std::array sources = {FrameRange{taken.files[0], range->first, range->second}};
    BatchProgress progress(kWord);
    const std::optional<std::string> failure = CopyFrames(
        sources, taken.files[1], [&progress](std::int64_t done, std::int64_t all) { progress.Show(done, all); });
    return failure ? TellBatchFailure(kWord, *failure) : kBatchDone;
}

}  // namespace kelvo
