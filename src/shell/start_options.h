// What the command line says beside the system's own part of it.
#pragma once

#include "platform/application.h"

#include <optional>
#include <string>
#include <vector>

namespace kelvo {

struct StartOptions {
    std::string dataDirectory;       // --data; empty: the key of win.ini, else the user's data directory
    bool keepsOneDirectory = false;  // the program's own notes lie with the settings: --data
    bool staysInDirectory = false;   // files are chosen there first, not among the user's documents: --data, --script
    std::vector<std::string> viewFiles;  // stored files to look at: opened as soon as the message loop runs
    std::optional<Theme> theme;          // --theme: for this run
};
extern const StartOptions& startOptions;  // main sets it

}  // namespace kelvo
