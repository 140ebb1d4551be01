// A start in a data directory that another Kelvo holds: it gives its files to that one and ends. And what the Kelvo
// that holds it does with them.
#pragma once

#include "platform/application.h"

#include <cstdint>
#include <optional>

namespace kelvo {

// Takes the data directory of startOptions for this process; nullopt: it goes on. Otherwise the process's exit code: 0,
// the files of the command line were given to the Kelvo that holds the directory, whose window has come to the front;
// 3, there was nothing to give, or that Kelvo doesn't answer, or a script was to run; that is told on the error stream,
// and in a box where no window has come to the front for the operator to see. Makes the directory. After
// StartApplication, before anything in the directory is read.
std::optional<int> EndBesideAnotherStart(const CommandLine& commandLine);

// Gives the directory back at the end of main, behind the last write.
struct DataDirectoryHold {
    DataDirectoryHold() = default;
    ~DataDirectoryHold();
    DataDirectoryHold(const DataDirectoryHold&) = delete;
    DataDirectoryHold& operator=(const DataDirectoryHold&) = delete;
};

constexpr std::uint32_t kOpenHandedFiles = 0x0401;  // to the main window: files of another start have come
constexpr std::uint32_t kHandedTimer = 21;          // of the main window: they wait

// From here on what others hand over is opened; what came before is opened now. Once the main window stands.
void TakeHandovers();
// The main window to the front; then a stored file on view, a calibration in force where the camera is on, each as if
// the operator had chosen it. While a dialog or a long acquisition is under way they wait for its end; not for the
// turn-on dialog, beneath which a start opens its own file too.
void OpenHandedFiles();
void ForgetHandovers();

}  // namespace kelvo
