// What the control panel shows of the picture. Whoever changes the picture asks for it by name; only this module and
// the panel's own procedure know its controls. Without a panel nothing happens.
#pragma once

#include "resources/board_use.h"

#include <cstdint>
#include <string>

namespace kelvo {

// Contrast and Brightness.
void ShowLevelsInPanel();

// The box "Display": whether new frames are drawn.
void ShowDisplayEnabledInPanel();

// Zoom (the bar and its number) and pan.
void ShowGeometryInPanel();

// Buttons of commands that need the board are grey while another use of it goes on, and say which.
void ShowBoardUseInPanel(BoardUse use);
inline constexpr std::uint32_t kPanelShowsBoardUse = 0x0410;  // to the panel; wParam: the BoardUse

// The word on the recorder's button: what it does ("Armed"), or "Record" for an empty one.
void ShowRecorderInPanel(const std::string& word);

}  // namespace kelvo
