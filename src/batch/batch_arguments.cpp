#include "batch/batch_arguments.h"

#include "batch/batch_end.h"
#include "batch/command_words.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

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

}  // namespace

bool BatchArguments::Has(std::string_view flag) const
{
    return std::ranges::find(flags, flag) != flags.end();
}

std::optional<std::string> BatchArguments::Value(std::string_view option) const
{
    std::optional<std::string> found;
    for (const auto& [name, value] : values) {
        if (name == option) found = value;
    }
    return found;
}

BatchArguments TakeApart(std::span<const std::string> arguments, std::string_view word)
{
    BatchArguments taken;
    bool onlyFiles = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        const std::size_t equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        const CommandOption* const option = OptionOf(word, name);
        const bool takesValue = option && !option->value.empty();
        if (argument == "-") {
            taken.error = kNoStream;
        } else if (onlyFiles || !argument.starts_with("--")) {
            taken.files.push_back(argument);
        } else if (argument == "--") {
            onlyFiles = true;
        } else if (option && !takesValue && equals == std::string::npos) {
            taken.flags.push_back(argument);
        } else if (takesValue && equals != std::string::npos) {
            taken.values.emplace_back(name, argument.substr(equals + 1));
        } else if (takesValue && i + 1 < arguments.size()) {
            taken.values.emplace_back(name, arguments[++i]);
        } else {
            taken.error = takesValue ? name + " needs a value" : "unknown option " + argument;
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

int TellBatchFailure(std::string_view word, std::string_view text)
{
    if (Interrupted()) return kBatchFailed;
    const std::string line = "kelvo " + std::string(word) + ": " + std::string(text) + '\n';
    std::fputs(line.c_str(), stderr);
    return kBatchFailed;
}

}  // namespace kelvo
