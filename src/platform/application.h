// The process: command line, directories, theme, and the one application object behind all windows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

enum class Theme { kDesktop, kLight, kDark };

// A shorter command line counts as none.
inline constexpr std::size_t kShortestCommandLine = 5;

struct CommandLine {
    std::string dataDirectory;                 // --data
    std::vector<std::string> viewFiles;        // --view, and bare arguments that name stored files
    std::string scriptFile;                    // --script
    std::vector<std::string> scriptArguments;  // after --
    std::string transcriptFile;                // --transcript
    bool offscreen = false;                    // --offscreen: a screen of 1280 x 1024
    bool windowFrames = false;                 // of that screen: its windows have title bars (not on the command line)
    double scale = 1.0;                        // --scale, 0.5 to 4
    bool virtualTime = false;                  // --virtual-time
    std::optional<Theme> theme;                // --theme, for this run
    std::string rest;  // the other bare arguments joined by blanks, as the system's own command line; paths whole,
                       // unless all that was typed of them is shorter than kShortestCommandLine
    bool sendSignal = false;  // --signal
    bool showVersion = false;
    bool showHelp = false;
    std::string error;  // not empty: what is wrong with it
};
// Relative paths become absolute.
// arguments: without the program's name. A bare argument is a stored file by its ending (.img .seq .buf .sdv .flt .gai
// .off .noi .bad .dcm, in any case), and beside --view also without one of them; .cal and AUTOSTART never are.
CommandLine ParseCommandLine(const std::vector<std::string>& arguments);
std::string CommandLineHelp();

// By which a desktop knows the program: the name of its desktop entry, its icon and its description (packaging/).
inline constexpr const char* kApplicationId = "io.kelvo.Kelvo";

// Makes the application object once for the life of the process. Before any window. Where no display answers the
// process ends here with kNoDisplayExit, after one line on the error stream.
inline constexpr int kNoDisplayExit = 2;
void StartApplication(const CommandLine& commandLine);
bool RunsOffscreen();
bool DarkTheme();
void ChangeTheme(Theme theme);  // while the program runs; each window gets WM_PAINT

// Handles what the window system has queued without waiting for more, so that windows are drawn in the midst of a long
// command. The operator's input, posted messages and timers stay queued: a command is never entered twice.
void HandlePendingEvents();

// The user's own directories, made by the first write.
std::string UserConfigDirectory();  // of kelvo/win.ini
std::string UserDataDirectory();    // of the directory "kelvo" that DefaultDir falls back to
// Of what a program notes for itself, and of what it can make again. Empty where the environment tells neither them
// nor a home.
std::string UserStateDirectory();
std::string UserCacheDirectory();
std::string UserDocumentsDirectory();  // where the user looks for what is saved; as the desktop names it
// Copies the shipped files that are missing there; existing ones stay. What couldn't be copied; empty if all stands.
std::vector<std::string> CopyShippedFiles(std::string_view directory);
std::string ToolkitVersion();  // "Qt 6.4.2", as it runs
std::string DisplayInUse();    // "xcb, 1920 x 1080 at 200 %, dark": the main screen, in logical pixels
// A file that travels inside the program ("dialogs/DISPLAY.ui", "help/288.html"); empty if there is none.
std::string ResourceText(std::string_view name);

// "printers": the desktop's printer settings, in a program of their own, no shell between. False where no such program
// is on PATH.
bool OpenDesktopTool(std::string_view name);

}  // namespace kelvo
