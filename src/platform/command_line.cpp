#include "platform/application.h"
#include "platform/text.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <functional>
#include <span>
#include <system_error>

namespace kelvo {

namespace {

std::string AbsolutePath(std::string_view path)
{
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(std::filesystem::path(path), error);
    return error ? std::string(path) : absolute.string();
}

// The word that may stand before or behind a calibration's name, here within one quoted argument.
constexpr std::string_view kAutoStart = "AUTOSTART";

// A name alone stays as it is: of a calibration it means one beside the settings.
std::string WholeIfRelative(std::string_view argument)
{
    const std::size_t word = kAutoStart.size();
    if (argument.size() > word && argument[word] == ' ' && EqualIgnoringCase(argument.substr(0, word), kAutoStart)) {
        return std::string(argument.substr(0, word + 1)) + WholeIfRelative(Trimmed(argument.substr(word)));
    }
    if (argument.size() > word && argument[argument.size() - word - 1] == ' ' &&
        EqualIgnoringCase(argument.substr(argument.size() - word), kAutoStart)) {
        return WholeIfRelative(Trimmed(argument.substr(0, argument.size() - word))) + " " +
               std::string(argument.substr(argument.size() - word));
    }
    const bool hasDirectory = argument.find_first_of("/\\") != std::string_view::npos;
    const bool isWhole = argument.find_first_of("/\\") == 0 || (argument.size() > 1 && argument[1] == ':');
    if (!hasDirectory || isWhole) return std::string(argument);
    std::string path(argument);
    std::ranges::replace(path, '\\', '/');
    return AbsolutePath(path);
}

constexpr double kSmallestScale = 0.5;
constexpr double kLargestScale = 4.0;

// Each setter gives what is wrong with the value, or nothing.
std::string SetScale(CommandLine& line, std::string_view value)
{
    double scale = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), scale);
    if (error != std::errc() || end != value.data() + value.size() || !(scale >= kSmallestScale) ||
        scale > kLargestScale) {
        return "--scale wants a number from 0.5 to 4, not " + std::string(value);
    }
    line.scale = scale;
    return {};
}

std::string SetTheme(CommandLine& line, std::string_view value)
{
    struct Name {
        std::string_view name;
        Theme theme;
    };
    constexpr Name kNames[] = {{"light", Theme::kLight}, {"dark", Theme::kDark}, {"desktop", Theme::kDesktop}};
    for (const Name& name : kNames) {
        if (name.name != value) continue;
        line.theme = name.theme;
        return {};
    }
    return "--theme wants light, dark or desktop, not " + std::string(value);
}

struct ValueOption {
    std::string_view name;
    std::string (*set)(CommandLine& line, std::string_view value);
};
constexpr ValueOption kValueOptions[] = {
    {"--data",
     [](CommandLine& line, std::string_view value) {
         line.dataDirectory = AbsolutePath(value);
         return std::string();
     }},
    {"--view",
     [](CommandLine& line, std::string_view value) {
         line.viewFile = AbsolutePath(value);
         return std::string();
     }},
    {"--script",
     [](CommandLine& line, std::string_view value) {
         line.scriptFile = AbsolutePath(value);
         return std::string();
     }},
    {"--transcript",
     [](CommandLine& line, std::string_view value) {
         line.transcriptFile = AbsolutePath(value);
         return std::string();
     }},
    {"--scale", SetScale},
    {"--theme", SetTheme},
};

struct Switch {
    std::string_view name;
    bool CommandLine::*field;
};
constexpr Switch kSwitches[] = {
    {"--offscreen", &CommandLine::offscreen},
    {"--virtual-time", &CommandLine::virtualTime},
    {"--version", &CommandLine::showVersion},
    {"--help", &CommandLine::showHelp},
};

class Parser {
  public:
    explicit Parser(std::span<const std::string> arguments) : arguments_(arguments) {}

    CommandLine Parse()
    {
        while (next_ < arguments_.size() && line_.error.empty()) TakeArgument(arguments_[next_++]);
        // What is too short to mean anything isn't made longer.
        line_.rest = typed_.size() < kShortestCommandLine ? typed_ : whole_;
        return line_;
    }

  private:
    void TakeArgument(std::string_view argument)
    {
        if (argument == "--") {
            line_.scriptArguments.assign(arguments_.begin() + static_cast<std::ptrdiff_t>(next_), arguments_.end());
            next_ = arguments_.size();
        } else if (argument.size() > 1 && argument.front() == '-') {
            TakeOption(argument);
        } else {
            const std::string_view divider = typed_.empty() ? "" : " ";
            typed_.append(divider).append(argument);
            whole_.append(divider).append(WholeIfRelative(argument));
        }
    }

    void TakeOption(std::string_view argument)
    {
        const std::size_t equals = argument.find('=');
        const std::string_view name = argument.substr(0, equals);
        for (const Switch& known : kSwitches) {
            if (known.name != name) continue;
            if (equals != std::string_view::npos) line_.error = std::string(name) + " takes no value";
            line_.*known.field = true;
            return;
        }
        for (const ValueOption& known : kValueOptions) {
            if (known.name == name) return TakeValue(known, argument, equals);
        }
        line_.error = "unknown option " + std::string(name);
    }

    void TakeValue(const ValueOption& option, std::string_view argument, std::size_t equals)
    {
        std::string value;
        if (equals != std::string_view::npos) {
            value = argument.substr(equals + 1);
        } else if (next_ < arguments_.size()) {
            value = arguments_[next_++];
        }
        line_.error = value.empty() ? std::string(option.name) + " needs a value" : option.set(line_, value);
    }

    std::span<const std::string> arguments_;
    std::size_t next_ = 0;
    std::string typed_;  // the bare arguments
    std::string whole_;  // with their paths made absolute
    CommandLine line_;
};

}  // namespace

CommandLine ParseCommandLine(const std::vector<std::string>& arguments)
{
    return Parser(arguments).Parse();
}

std::string CommandLineHelp()
{
    return "kelvo [options] [calibration file and/or AUTOSTART]\n"
           "  --data DIR         directory of the settings files\n"
           "  --view FILE        open a stored file\n"
           "  --script FILE      run an operator script, then exit with its result;\n"
           "                     arguments after -- reach it as arg[1]...\n"
           "  --transcript FILE  write what the operator would see, one JSON object a line\n"
           "  --offscreen        run without a display (a screen of 1280 x 1024)\n"
           "  --scale N          device pixel ratio of that screen, 0.5 to 4\n"
           "  --virtual-time     time passes only while the program waits\n"
           "  --theme light|dark|desktop\n"
           "  --version, --help\n";
}

}  // namespace kelvo
