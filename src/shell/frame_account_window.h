// The frame account on the screen: a small window that stays open beside the main one and shows, twice a second, what
// the board delivered and what became of it. Lost frames stand in a warning colour.
#pragma once

#include "grabber/frame_account.h"
#include "platform/types.h"

#include <cstdint>

namespace kelvo {

// At start: opens the window if it was open when the program ended (key FrameAccount of section View).
void OpenFrameAccount();
// The command of the View menu. Where the window can't be made: "Unable to display dialog" under "System Error".
void ToggleFrameAccount();

// Puts an account into the window's controls.
void ShowFrameAccount(HWND dialog, const FrameAccount& account);

LRESULT fnACCOUNTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

// Its window is gone.
void ResetFrameAccountWindow();

}  // namespace kelvo
