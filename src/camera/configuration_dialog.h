// The configuration dialog: the active camera, and what of its section concerns the screen.
#pragma once

#include "platform/types.h"

#include <cstdint>

namespace kelvo {

// The start-up's steps that another camera runs again. Start-up stands far above the dialog and sets them (SetRestart);
// while one isn't set it counts as failed.
struct RestartSteps {
    int (*initialSetup)() = nullptr;        // InitialSetup of shell/startup.h
    int (*initializeHardware)() = nullptr;  // InitializeHardware
};
void SetRestart(const RestartSteps& steps);

// The start's set-up with that camera (1 to 40) as the active one, which is written to the settings: all of them are
// read anew, the head is identified and the turn-on dialog comes. Windows and paths stay; a camera that is on isn't
// turned off. What fails is told, and leaves the system running.
void RestartWithCamera(HWND window, std::int32_t camera);

// Command 123. Shows status string 1 on return.
void ConfigurationDialog(HWND window);
LRESULT fnINITIALDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

}  // namespace kelvo
