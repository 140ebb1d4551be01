// The dialog LINEAXIS, which changes grid, value axis and unit of the line plot while that stays open.
#pragma once

#include "platform/types.h"

#include <cstdint>

namespace kelvo {

// Every change acts at once and is drawn in the plot's dialog. Max and Min are values in DisplayUnit; a text that isn't
// a number, or that would put the lowest bound at or above the highest, leaves the bound as it is, and leaving the
// field shows that one again. 1 after OK; 0 after Cancel, which brings the settings back (the unit stays) and draws.
// Blocks.
int LineSetupDialog(HWND dialog);

LRESULT fnLINEAXISDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

// As at the start of the program.
void ResetLineSetup();

}  // namespace kelvo
