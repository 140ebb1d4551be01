#include "platform/application.h"
#include "platform/option_table.h"
#include "platform/qt_window.h"
#include "platform/text.h"

#include <QCommandLineParser>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <iterator>
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

// --- Bare arguments -------------------------------------------------------------------------------------------------

// The word that may stand before or behind a calibration's name, here within one quoted argument.
constexpr std::string_view kAutoStart = "AUTOSTART";

bool BeginsWithAutoStart(std::string_view argument)
{
    const std::size_t word = kAutoStart.size();
    return argument.size() > word && argument[word] == ' ' && EqualIgnoringCase(argument.substr(0, word), kAutoStart);
}

bool EndsWithAutoStart(std::string_view argument)
{
    const std::size_t word = kAutoStart.size();
    return argument.size() > word && argument[argument.size() - word - 1] == ' ' &&
           EqualIgnoringCase(argument.substr(argument.size() - word), kAutoStart);
}

// A name alone stays as it is: of a calibration it means one beside the settings.
std::string WholeIfRelative(std::string_view argument)
{
    const std::size_t word = kAutoStart.size();
    if (BeginsWithAutoStart(argument)) {
        return std::string(argument.substr(0, word + 1)) + WholeIfRelative(Trimmed(argument.substr(word)));
    }
    if (EndsWithAutoStart(argument)) {
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

std::string ExtensionOf(std::string_view path)
{
    std::string extension;
    SplitPath(path, nullptr, nullptr, nullptr, &extension);
    return extension;
}

// Named together with --view everything is a stored file but what can only be meant for the camera.
bool IsForTheCamera(std::string_view argument)
{
    return EqualIgnoringCase(argument, kAutoStart) || BeginsWithAutoStart(argument) || EndsWithAutoStart(argument) ||
           EqualIgnoringCase(ExtensionOf(argument), ".cal");
}

bool NamesStoredFile(std::string_view argument)
{
    constexpr std::string_view kEndings[] = {".img", ".seq", ".buf", ".sdv", ".flt",
                                             ".gai", ".off", ".noi", ".bad", ".dcm"};
    if (BeginsWithAutoStart(argument) || EndsWithAutoStart(argument)) return false;
    const std::string extension = ExtensionOf(argument);
    return std::ranges::any_of(kEndings, [&](auto ending) { return EqualIgnoringCase(extension, ending); });
}

void TakeBareArguments(CommandLine& line, std::span<const std::string> arguments)
{
    const bool viewing = !line.viewFiles.empty();
    std::string typed;
    std::string whole;  // with their paths made absolute
    for (const std::string& argument : arguments) {
        if (NamesStoredFile(argument) || (viewing && !IsForTheCamera(argument))) {
            line.viewFiles.push_back(AbsolutePath(argument));
            continue;
        }
        const std::string_view divider = typed.empty() ? "" : " ";
        typed.append(divider).append(argument);
        whole.append(divider).append(WholeIfRelative(argument));
    }
    // What is too short to mean anything isn't made longer.
    line.rest = typed.size() < kShortestCommandLine ? typed : whole;
}

// --- Options --------------------------------------------------------------------------------------------------------

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

template <std::string CommandLine::*field>
std::string SetPath(CommandLine& line, std::string_view value)
{
    line.*field = AbsolutePath(value);
    return {};
}

std::string AddViewFile(CommandLine& line, std::string_view value)
{
    line.viewFiles.push_back(AbsolutePath(value));
    return {};
}

// What becomes of an option, in the order of the table.
struct Taker {
    std::string_view name;
    bool CommandLine::*field = nullptr;                                       // of a switch
    std::string (*set)(CommandLine& line, std::string_view value) = nullptr;  // of the others
};
constexpr Taker kTakers[] = {
    {.name = "data", .set = SetPath<&CommandLine::dataDirectory>},
    {.name = "view", .set = AddViewFile},
    {.name = "script", .set = SetPath<&CommandLine::scriptFile>},
    {.name = "transcript", .set = SetPath<&CommandLine::transcriptFile>},
    {.name = "offscreen", .field = &CommandLine::offscreen},
    {.name = "scale", .set = SetScale},
    {.name = "virtual-time", .field = &CommandLine::virtualTime},
    {.name = "theme", .set = SetTheme},
    {.name = "signal", .field = &CommandLine::sendSignal},
    {.name = "version", .field = &CommandLine::showVersion},
    {.name = "help", .field = &CommandLine::showHelp},
};
static_assert(std::ranges::equal(kTakers, kProgramOptions, [](const Taker& taker, const ProgramOption& option) {
    return taker.name == option.name && option.value.empty() == (taker.field != nullptr);
}));

constexpr std::string_view kHelpOption = "help";  // has a letter too

QString NameOf(std::string_view name)
{
    return QString::fromLatin1(name.data(), static_cast<qsizetype>(name.size()));
}

std::string Dashed(std::string_view name)
{
    return "--" + std::string(name);
}

QCommandLineOption ToolkitOption(const ProgramOption& option)
{
    QStringList names(NameOf(option.name));
    if (option.name == kHelpOption) names.prepend(QStringLiteral("h"));
    return {names, QString(), NameOf(option.value)};
}

// What the parser refused, in our words.
std::string Refusal(const QCommandLineParser& parser, std::span<const std::string> arguments)
{
    if (const QStringList unknown = parser.unknownOptionNames(); !unknown.isEmpty()) {
        return (unknown.front().size() == 1 ? "unknown option -" : "unknown option --") + FromQPath(unknown.front());
    }
    for (const ProgramOption& option : kProgramOptions) {
        const std::string name = Dashed(option.name);
        const bool takesValue = !option.value.empty();
        // A value is missing only at the end of the line, and left over only at a switch.
        if (takesValue && arguments.back() == name) return name + " needs a value";
        const auto hasValue = [&](const std::string& argument) { return argument.starts_with(name + "="); };
        if (!takesValue && std::ranges::any_of(arguments, hasValue)) return name + " takes no value";
    }
    return FromQString(parser.errorText());
}

// What is wrong with the values, or nothing.
std::string TakeOptions(CommandLine& line, const QCommandLineParser& parser)
{
    for (const Taker& taker : kTakers) {
        const QString name = NameOf(taker.name);
        if (taker.field) {
            line.*taker.field = parser.isSet(name);
            continue;
        }
        for (const QString& text : parser.values(name)) {
            const std::string value = FromQPath(text);
            std::string error = value.empty() ? Dashed(taker.name) + " needs a value" : taker.set(line, value);
            if (!error.empty()) return error;
        }
    }
    return {};
}

}  // namespace

CommandLine ParseCommandLine(const std::vector<std::string>& arguments)
{
    CommandLine line;
    const auto dashes = std::ranges::find(arguments, "--");
    if (dashes != arguments.end()) line.scriptArguments.assign(std::next(dashes), arguments.end());
    const std::span own(arguments.begin(), dashes);

    QCommandLineParser parser;
    for (const ProgramOption& option : kProgramOptions) parser.addOption(ToolkitOption(option));
    QStringList words(QStringLiteral("kelvo"));
    for (const std::string& argument : own) words << ToQPath(argument);
    line.error = parser.parse(words) ? TakeOptions(line, parser) : Refusal(parser, own);
    if (!line.error.empty()) return line;

    std::vector<std::string> bare;
    for (const QString& argument : parser.positionalArguments()) bare.push_back(FromQPath(argument));
    TakeBareArguments(line, bare);
    return line;
}

std::string CommandLineHelp()
{
    constexpr std::size_t kColumn = 22;
    std::string help =
        "kelvo [options] [FILE...]                    look at stored files: the first is shown,\n"
        "                                             the others join the recent ones\n"
        "kelvo [options] [CALIBRATION] [AUTOSTART]    turn the camera on\n"
        "\n"
        "A FILE ends in .img .seq .buf .sdv .flt .gai .off .noi .bad or .dcm.\n"
        "\n"
        "Options, as --name VALUE or --name=VALUE:\n";
    for (const ProgramOption& option : kProgramOptions) {
        std::string left = "  " + Dashed(option.name);
        if (option.name == kHelpOption) left += ", -h";
        if (!option.value.empty()) left.append(" ").append(option.value);
        left.resize(std::max(left.size() + 1, kColumn), ' ');
        for (const char c : option.does) {
            left += c;
            if (c == '\n') left.append(kColumn, ' ');
        }
        help += left + "\n";
    }
    help += "\nExit codes:\n";
    for (const ExitCode& exit : kProgramExitCodes) {
        help += "  " + std::to_string(exit.code) + "  " + std::string(exit.when) + '\n';
    }
    return help;
}

}  // namespace kelvo
