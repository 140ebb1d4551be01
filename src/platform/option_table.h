// The program's own options and exit codes, told once: the command line takes them by this table
// (platform/application.h), and its help, the completion in a shell and the manual page are made of it.
#pragma once

#include <span>
#include <string_view>

namespace kelvo {

struct ProgramOption {
    std::string_view name;        // without its dashes
    std::string_view value = {};  // "DIR", "FILE...": what follows it; empty: a switch
    std::string_view does;
    std::string_view choices = {};  // the words that the value may be, parted by blanks; empty: anything
};
inline constexpr ProgramOption kProgramOptions[] = {
    {.name = "data", .value = "DIR", .does = "directory of the settings files"},
    {.name = "view", .value = "FILE...", .does = "open stored files, whatever their names end in"},
    {.name = "script",
     .value = "FILE",
     .does = "run an operator script, then exit with its result;\narguments after -- reach it as arg[1]..."},
    {.name = "transcript", .value = "FILE", .does = "write what the operator would see, one JSON object a line"},
    {.name = "offscreen", .does = "run without a display (a screen of 1280 x 1024)"},
    {.name = "scale", .value = "N", .does = "device pixel ratio of that screen, 0.5 to 4"},
    {.name = "virtual-time", .does = "time passes only while the program waits"},
    {.name = "theme",
     .value = "NAME",
     .does = "light, dark, or desktop: as the desktop has it",
     .choices = "light dark desktop"},
    {.name = "signal", .does = "send the external signal to the Kelvo of --data, then exit"},
    {.name = "version", .does = "tell the version"},
    {.name = "help", .does = "tell this"},
};

struct ExitCode {
    int code = 0;
    std::string_view when;
};
inline constexpr ExitCode kProgramExitCodes[] = {
    {0, "as it should be; also when another Kelvo with this data directory took the files"},
    {1, "a script failed; otherwise a script ends with the number that it returns"},
    {2, "the command line is wrong, the transcript can't be written, or there is no display"},
    {3, "another Kelvo runs with this data directory, and was given nothing"},
    {4, "--signal, and no Kelvo runs with this data directory"},
};

}  // namespace kelvo
