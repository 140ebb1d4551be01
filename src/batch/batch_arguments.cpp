#include "batch/batch_arguments.h"

#include <algorithm>
#include <cstdio>

namespace kelvo {

namespace {

bool Contains(std::span<const std::string_view> names, std::string_view name)
{
    return std::ranges::find(names, name) != names.end();
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

BatchArguments TakeApart(std::span<const std::string> arguments, std::span<const std::string_view> flags,
                         std::span<const std::string_view> options)
{
    BatchArguments taken;
    bool onlyFiles = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        const std::size_t equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        if (onlyFiles || !argument.starts_with("--")) {
            taken.files.push_back(argument);
        } else if (argument == "--") {
            onlyFiles = true;
        } else if (Contains(flags, argument)) {
            taken.flags.push_back(argument);
        } else if (Contains(options, name) && equals != std::string::npos) {
            taken.values.emplace_back(name, argument.substr(equals + 1));
        } else if (Contains(options, name) && i + 1 < arguments.size()) {
            taken.values.emplace_back(name, arguments[++i]);
        } else {
            taken.error = Contains(options, name) ? name + " needs a value" : "unknown option " + argument;
        }
    }
    return taken;
}

int TellBatchFailure(std::string_view word, std::string_view text)
{
    const std::string line = "kelvo " + std::string(word) + ": " + std::string(text) + '\n';
    std::fputs(line.c_str(), stderr);
    return kBatchFailed;
}

}  // namespace kelvo
