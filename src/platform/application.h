// The process: command line, directories, theme, and the one application object behind all windows.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

enum class Theme { kDesktop, kLight, kDark };

struct CommandLine {
    std::string dataDirectory;                 // --data
    std::string viewFile;                      // --view
    std::string scriptFile;                    // --script
    std::vector<std::string> scriptArguments;  // after --
    std::string transcriptFile;                // --transcript
    bool offscreen = false;                    // --offscreen: a screen of 1280 x 1024
    double scale = 1.0;                        // --scale, 0.5 to 4
    bool virtualTime = false;                  // --virtual-time
    Theme theme = Theme::kDesktop;             // --theme
    std::string rest;                          // the bare arguments joined by blanks, as the system's own command line
    bool showVersion = false;
    bool showHelp = false;
    std::string error;  // not empty: what is wrong with it
};
// Relative paths become absolute.
CommandLine ParseCommandLine(const std::vector<std::string>& arguments);
std::string CommandLineHelp();

// Makes the application object once for the life of the process. Before any window.
void StartApplication(const CommandLine& commandLine);
bool RunsOffscreen();
bool DarkTheme();

// Handles what is queued without waiting for more (progress during a long start).
void HandlePendingEvents();

// The user's own directories, made by the first write.
std::string UserConfigDirectory();  // of kelvo/win.ini
std::string UserDataDirectory();    // "kelvo" under the user's data directory
// Copies the shipped files that are missing there; existing ones stay. What couldn't be copied; empty if all stands.
std::vector<std::string> CopyShippedFiles(std::string_view directory);
// A file that travels inside the program ("dialogs/DISPLAY.ui", "help/288.html"); empty if there is none.
std::string ResourceText(std::string_view name);

void OpenDesktopTool(std::string_view name);  // "printers": the desktop's printer settings, where it has some

}  // namespace kelvo
