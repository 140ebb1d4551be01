#include "batch/command_pages.h"

#include "batch/command_words.h"

#include <algorithm>
#include <cctype>

namespace kelvo {

namespace {

std::string OnOneLine(std::string_view text)
{
    std::string line(text);
    std::ranges::replace(line, '\n', ' ');
    while (line.ends_with(' ')) line.pop_back();
    return line;
}

std::string WithValue(std::string_view name, std::string_view value)
{
    std::string text(name);
    if (!value.empty()) text.append(" ").append(value);
    return text;
}

// --- The manual page ------------------------------------------------------------------------------------------------

// Text as roff prints it: dashes as they are typed, no line taken for a request.
std::string Roff(std::string_view text)
{
    std::string roff;
    for (const char c : text) {
        if (c == '\\') {
            roff += "\\e";
        } else if (c == '-') {
            roff += "\\-";
        } else {
            roff += c;
        }
    }
    return roff.starts_with('.') || roff.starts_with('\'') ? "\\&" + roff : roff;
}

std::string Bold(std::string_view text)
{
    return "\\fB" + Roff(text) + "\\fR";
}

// Option and value: "\fB--frames\fR \fIA:B\fR".
std::string OptionHead(std::string_view dashed, std::string_view value)
{
    return value.empty() ? Bold(dashed) : Bold(dashed) + " \\fI" + Roff(value) + "\\fR";
}

std::string Paragraph(const std::string& head, std::string_view text)
{
    return ".TP\n" + head + '\n' + Roff(OnOneLine(text)) + '\n';
}

std::string ExitsInRoff(std::span<const ExitCode> exits)
{
    std::string text;
    for (const ExitCode& exit : exits) text += Paragraph(Bold(std::to_string(exit.code)), exit.when);
    return text;
}

std::string CommandInRoff(const CommandWord& word)
{
    std::string text = ".SS " + Roff(word.word) + "\n.B kelvo " + Roff(word.word) + "\n" + Roff(ArgumentsOf(word)) +
                       "\n.PP\n" + Roff(std::string(word.does) + '.') + '\n';
    for (const CommandOption& option : word.options)
        text += Paragraph(OptionHead(option.name, option.value), option.does);
    if (!word.details.empty()) text += ".PP\n" + Roff(OnOneLine(word.details)) + '\n';
    return text + ".PP\nIt ends with\n" + ExitsInRoff(word.exits);
}

// --- The completion -------------------------------------------------------------------------------------------------

// What a value completes to, in the shell's words.
std::string Completes(std::string_view value, std::string_view choices)
{
    if (!choices.empty()) return "_kelvo_words \"" + std::string(choices) + '"';
    if (value == "DIR") return "_kelvo_files -d";
    if (value.find("FILE") != std::string_view::npos || value.find(".cal") != std::string_view::npos) {
        return "_kelvo_files -f";
    }
    return "return";
}

std::string ValueCase(std::string_view command, std::string_view dashed, std::string_view value,
                      std::string_view choices)
{
    if (value.empty()) return {};
    return "        '" + std::string(command) + ' ' + std::string(dashed) + "') " + Completes(value, choices) +
           "; return ;;\n";
}

std::string OptionsCase(const CommandWord& word)
{
    std::string options;
    for (const CommandOption& option : word.options) options += std::string(option.name) + ' ';
    return "        " + std::string(word.word) + ") options='" + options + "--help' ;;\n";
}

constexpr std::string_view kCompletionHead =
    "# bash completion for kelvo\n"
    "_kelvo_words() { mapfile -t COMPREPLY < <(compgen -W \"$1\" -- \"$word\"); }\n"
    "_kelvo_files()\n"
    "{\n"
    "    compopt -o filenames 2>/dev/null\n"
    "    mapfile -t COMPREPLY < <(compgen \"$1\" -- \"$word\")\n"
    "}\n"
    "_kelvo()\n"
    "{\n"
    "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} command= options= i\n"
    "    COMPREPLY=()\n"
    "    # --name=VALUE comes in three words.\n"
    "    if [[ $word == '=' ]]; then\n"
    "        word=\n"
    "    elif [[ $before == '=' && $COMP_CWORD -gt 1 ]]; then\n"
    "        before=${COMP_WORDS[COMP_CWORD-2]}\n"
    "    fi\n"
    "    for ((i = 1; i < COMP_CWORD; ++i)); do\n"
    "        if [[ ${COMP_WORDS[i]} == -- ]]; then\n"
    "            _kelvo_files -f\n"
    "            return\n"
    "        fi\n"
    "    done\n";

}  // namespace

std::string HelpOfCommand(std::string_view name)
{
    const CommandWord* const word = CommandOf(name);
    if (!word) return {};
    std::string help = "kelvo " + WithValue(word->word, ArgumentsOf(*word)) + '\n' + std::string(word->does) + "\n\n";
    std::size_t width = 0;
    for (const CommandOption& option : word->options) {
        width = std::max(width, WithValue(option.name, option.value).size());
    }
    for (const CommandOption& option : word->options) {
        std::string left = WithValue(option.name, option.value);
        left.resize(width, ' ');
        help += "  " + left + "  " + std::string(option.does) + '\n';
    }
    if (!word->options.empty()) help += '\n';
    if (!word->details.empty()) help += std::string(word->details) + '\n';
    for (const ExitCode& exit : word->exits) {
        help += "Ends with " + std::to_string(exit.code) + " where " + std::string(exit.when) + ".\n";
    }
    return help;
}

std::string ManualPage()
{
    std::string page = ".TH KELVO 1 \"\" \"Kelvo " KELVO_VERSION
                       "\" \"User Commands\"\n"
                       ".SH NAME\n"
                       "kelvo \\- workstation for a cooled infrared focal\\-plane camera\n"
                       ".SH SYNOPSIS\n"
                       ".B kelvo\n[\\fIoptions\\fR] [\\fIFILE\\fR...]\n"
                       ".br\n.B kelvo\n[\\fIoptions\\fR] [\\fICALIBRATION\\fR] [\\fBAUTOSTART\\fR]\n";
    for (const CommandWord& word : CommandWords()) {
        page += ".br\n.B kelvo " + Roff(word.word) + '\n' + Roff(ArgumentsOf(word)) + '\n';
    }
    page +=
        ".SH DESCRIPTION\n"
        "Without a command Kelvo opens its window: it looks at the stored files that are named, or turns the camera "
        "on.\n"
        "A first argument that is exactly the word of a command is that command: it works without a window, a display\n"
        "or a camera, writes what it found to the standard output and what went wrong to the error stream.\n"
        ".SH OPTIONS\n";
    for (const ProgramOption& option : kProgramOptions) {
        page += Paragraph(OptionHead("--" + std::string(option.name), option.value), option.does);
    }
    page +=
        ".SH COMMANDS\n"
        "All that begins with a dash is an option, and is given once; all behind \\fB\\-\\-\\fR are names of files.\n"
        "\\fB\\-\\fR is the standard input or output where the command says so.\n"
        "On the interrupt of the keyboard (SIGINT), SIGTERM or SIGHUP a command finishes the frame at hand, leaves no\n"
        "half result, and ends by that signal. A second one ends it at once.\n";
    for (const CommandWord& word : CommandWords()) page += CommandInRoff(word);
    page += ".SH EXIT STATUS\nOf the program with its window:\n" + ExitsInRoff(kProgramExitCodes);
    return page;
}

std::string ManualPageOfTool(std::string_view name, std::string_view purpose, std::string_view help)
{
    std::string title(name);
    std::ranges::transform(title, title.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    std::string page = ".TH " + Roff(title) + " 1 \"\" \"Kelvo " KELVO_VERSION "\" \"User Commands\"\n.SH NAME\n" +
                       Roff(name) + " \\- " + Roff(purpose) + "\n.SH SYNOPSIS\n.nf\n";
    // The first line is the usage.
    const std::size_t usageEnd = std::min(help.find('\n'), help.size());
    std::string_view usage = help.substr(0, usageEnd);
    if (constexpr std::string_view kUsage = "usage: "; usage.starts_with(kUsage)) usage.remove_prefix(kUsage.size());
    page += Roff(usage) + "\n.fi\n.SH DESCRIPTION\n.nf\n";
    std::string_view rest = help.substr(usageEnd);
    while (!rest.empty() && rest.front() == '\n') rest.remove_prefix(1);
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        page += Roff(rest.substr(0, end)) + '\n';
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return page + ".fi\n";
}

std::string BashCompletion()
{
    std::string words;
    std::string alternatives;
    for (const CommandWord& word : CommandWords()) {
        words += std::string(word.word) + ' ';
        alternatives += (alternatives.empty() ? "" : "|") + std::string(word.word);
    }
    std::string script(kCompletionHead);
    script += "    if ((COMP_CWORD > 1)); then\n        case ${COMP_WORDS[1]} in " + alternatives +
              ") command=${COMP_WORDS[1]} ;; esac\n    fi\n";
    script += "    case \"$command $before\" in\n";
    std::string options;
    for (const ProgramOption& option : kProgramOptions) {
        const std::string dashed = "--" + std::string(option.name);
        options += dashed + ' ';
        script += ValueCase({}, dashed, option.value, option.choices);
    }
    for (const CommandWord& word : CommandWords()) {
        for (const CommandOption& option : word.options) {
            script += ValueCase(word.word, option.name, option.value, option.choices);
        }
    }
    script += "    esac\n    case $command in\n";
    for (const CommandWord& word : CommandWords()) script += OptionsCase(word);
    script += "        *) options='" + options + "' ;;\n    esac\n";
    script += "    if [[ $word == -* ]]; then\n        _kelvo_words \"$options\"\n        return\n    fi\n";
    script += "    _kelvo_files -f\n";
    script += "    ((COMP_CWORD == 1)) && mapfile -t -O ${#COMPREPLY[@]} COMPREPLY < <(compgen -W '" + words +
              "' -- \"$word\")\n";
    return script + "}\ncomplete -F _kelvo kelvo\n";
}

}  // namespace kelvo
