// kelvo-pages man|bash FILE: writes the manual page or the completion in a shell, made of the program's own tables,
// when Kelvo is built. kelvo-pages tool NAME PURPOSE HELP FILE: the manual page of a small program, made of what it
// tells on --help (the file HELP).
#include "batch/command_pages.h"
#include "platform/files.h"

#include <cstddef>
#include <cstdio>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace {

constexpr std::size_t kLongestHelp = 1 << 16;

std::optional<std::string> PageOf(std::span<char* const> arguments)
{
    const std::string_view kind = arguments.empty() ? "" : arguments[0];
    if (kind == "man" && arguments.size() == 2) return kelvo::ManualPage();
    if (kind == "bash" && arguments.size() == 2) return kelvo::BashCompletion();
    if (kind != "tool" || arguments.size() != 5) return std::nullopt;
    const std::optional<std::string> help = kelvo::ReadWholeFile(arguments[3], kLongestHelp);
    if (!help || help->empty()) return std::nullopt;
    return kelvo::ManualPageOfTool(arguments[1], arguments[2], *help);
}

}  // namespace

int main(int argc, char** argv)
{
    const std::optional<std::string> page = PageOf(std::span(argv, static_cast<std::size_t>(argc)).subspan(1));
    if (!page) {
        std::fputs("kelvo-pages man|bash FILE, or kelvo-pages tool NAME PURPOSE HELP FILE\n", stderr);
        return 2;
    }
    const char* const target = argv[argc - 1];
    if (kelvo::ReplaceFile(target, *page)) return 0;
    std::fprintf(stderr, "kelvo-pages: %s can't be written\n", target);
    return 1;
}
