// What the control panel shows of the picture. Whoever changes the picture asks for it by name; only this module and
// the panel's own procedure know its controls. Without a panel nothing happens.
#pragma once

#include <cstdint>
#include <string>

namespace kelvo {

// Contrast and Brightness.
void ShowLevelsInPanel();

// The box "Display": whether new frames are drawn.
void ShowDisplayEnabledInPanel();

// Zoom (the bar and its number) and pan.
void ShowGeometryInPanel();

// Buttons of commands that need the board are grey while something records, and say why.
void ShowRecordingInPanel(bool records);
inline constexpr std::uint32_t kPanelShowsRecording = 0x0410;  // to the panel; wParam: 1 something records, 0 nothing

// The word on the recorder's button: what it does ("Armed"), or "Record" for an empty one.
void ShowRecorderInPanel(const std::string& word);

}  // namespace kelvo
