// kelvo-pages man|bash FILE: writes the manual page or the completion in a shell, made of the program's own tables,
// when Kelvo is built.
#include "batch/command_pages.h"
#include "platform/files.h"

#include <cstdio>
#include <string_view>

int main(int argc, char** argv)
{
    const std::string_view kind = argc == 3 ? argv[1] : "";
    if (kind != "man" && kind != "bash") {
        std::fputs("kelvo-pages man|bash FILE\n", stderr);
        return 2;
    }
    if (kelvo::ReplaceFile(argv[2], kind == "man" ? kelvo::ManualPage() : kelvo::BashCompletion())) return 0;
    std::fprintf(stderr, "kelvo-pages: %s can't be written\n", argv[2]);
    return 1;
}
