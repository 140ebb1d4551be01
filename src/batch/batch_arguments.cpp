#include "batch/batch_arguments.h"

#include "batch/batch_end.h"
#include "batch/batch_progress.h"
#include "batch/command_words.h"
#include "batch/stream_file.h"
#include "platform/standard_streams.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

namespace kelvo {

namespace {

constexpr std::string_view kNoStream =
    "- names no file: one is needed that can be read at any place (./- is a file of that name)";

const CommandOption* OptionOf(std::string_view word, std::string_view name)
{
    const CommandWord* const command = CommandOf(word);
    if (!command) return nullptr;
    const auto found = std::ranges::find(command->options, name, &CommandOption::name);
    return found == command->options.end() ? nullptr : &*found;
}

// Empty, or why it names no file.
std::string WhyNoFile(const std::string& argument, std::string_view word)
{
    const CommandWord* const command = CommandOf(word);
    if (argument == kStreamName && !(command && command->takesStreams)) return std::string(kNoStream);
    return argument.empty() ? "an empty name names no file" : "";
}

// What follows an option: behind "=", or as the next argument, which is taken then. Empty: there is none.
std::string TakeValue(std::span<const std::string> arguments, std::size_t& i)
{
    const std::size_t equals = arguments[i].find('=');
    if (equals != std::string::npos) return arguments[i].substr(equals + 1);
    return i + 1 < arguments.size() ? arguments[++i] : std::string();
}

// The option at i, with its value. Empty, or what is wrong with it.
std::string TakeOption(std::span<const std::string> arguments, std::size_t& i, std::string_view word,
                       BatchArguments& taken)
{
    const std::string& argument = arguments[i];
    const std::string name = argument.substr(0, argument.find('='));
    const CommandOption* const option = OptionOf(word, name);
    if (!option && !argument.starts_with("--")) {
        return "unknown option " + argument + " (./" + argument + " is a file of that name)";
    }
    if (!option) return "unknown option " + name;
    if (option->value.empty()) {
        taken.flags.push_back(name);
        return name == argument ? "" : name + " takes no value";
    }
    // Of two values one would be left aside without a word.
    if (taken.Value(name)) return name + " is given twice";
    taken.values.emplace_back(name, TakeValue(arguments, i));
    return taken.values.back().second.empty() ? name + " needs a value" : "";
}

}  // namespace

bool BatchArguments::Has(std::string_view flag) const
{
    return std::ranges::find(flags, flag) != flags.end();
}

std::optional<std::string> BatchArguments::Value(std::string_view option) const
{
    const auto found = std::ranges::find(values, option, &std::pair<std::string, std::string>::first);
    return found == values.end() ? std::nullopt : std::optional(found->second);
}

BatchArguments TakeApart(std::span<const std::string> arguments, std::string_view word)
{
    BatchArguments taken;
    bool onlyFiles = false;
    for (std::size_t i = 0; i < arguments.size() && taken.error.empty(); ++i) {
        const std::string& argument = arguments[i];
        if (!onlyFiles && argument == "--") {
            onlyFiles = true;
        } else if (!onlyFiles && argument.size() > 1 && argument.front() == '-') {
            taken.error = TakeOption(arguments, i, word, taken);
        } else {
            taken.error = WhyNoFile(argument, word);
            taken.files.push_back(argument);
        }
    }
    return taken;
}

std::optional<std::pair<float, float>> TwoVolts(std::string_view text)
{
    const auto low = TakeFloat(text);
    if (!low || text.empty() || text.front() != ':') return std::nullopt;
    text.remove_prefix(1);
    const auto high = TakeFloat(text);
    if (!high || !text.empty() || !std::isfinite(*low) || !std::isfinite(*high) || *low == *high) return std::nullopt;
    return std::pair(*low, *high);
}

std::optional<RegionPlace> RectangleOf(std::string_view text)
{
    constexpr std::int32_t kFarthest = 32767;
    std::array<std::int32_t, 4> sides{};
    for (std::size_t i = 0; i < sides.size(); ++i) {
        const std::size_t end = i + 1 < sides.size() ? text.find(',') : text.size();
        if (end == std::string_view::npos) return std::nullopt;
        const auto [stop, error] = std::from_chars(text.data(), text.data() + end, sides.at(i));
        const bool isNumber = error == std::errc() && stop == text.data() + end;
        if (!isNumber || sides.at(i) < 0 || sides.at(i) > kFarthest) return std::nullopt;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    const auto& [left, top, right, bottom] = sides;
    if (left > right || top > bottom) return std::nullopt;
    return RegionPlace{left, top, right, bottom};
}

std::string Printable(std::string_view text)
{
    std::string line(text);
    std::ranges::replace_if(
        line, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '?');
    return line;
}

int TellBatchFailure(std::string_view word, std::string_view text)
{
    if (Interrupted()) return kBatchFailed;
    EndProgressLine();
    WriteErrorStream("kelvo " + std::string(word) + ": " + Printable(text) + '\n');
    return kBatchFailed;
}

}  // namespace kelvo
