// What the command line says beside the system's own part of it.
#pragma once

#include "platform/application.h"

#include <optional>
#include <string>

namespace kelvo {

struct StartOptions {
    std::string dataDirectory;   // --data; empty: the key of win.ini, else the user's data directory
    std::string viewFile;        // --view: opened as soon as the message loop runs
    std::optional<Theme> theme;  // --theme: for this run
};
extern const StartOptions& startOptions;  // main sets it

}  // namespace kelvo
