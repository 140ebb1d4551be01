// The status line: one line of white text on blue along the bottom of the main window, and the main window's title with
// it. It tells what is going on during long operations, hints at each dialog, and describes the file on view. Everyone
// speaks through it.
#pragma once

#include "platform/types.h"
#include "ui/status_strings.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

// The line and its alignment (0 left, 2 right, 6 centred).
inline constexpr int kLeftAligned = 0;
inline constexpr int kCentred = 6;
extern const std::string& StatusText;
extern const std::int16_t& StatusAlign;

// 0x00BBGGRR; WinMain sets them before the window is made.
extern const std::uint32_t& StatusBackground;
extern const std::uint32_t& StatusForeground;

// Shows a text at once, so that it stands even in the middle of a long command. Before the status window exists it only
// keeps it.
void StatusMessage(std::string_view text, int align);

// Shows a string of the table (status_strings.h) by its number and sets the title ("Kelvo - Frozen", "Kelvo", "Kelvo -
// NAME"). With a file on view, kIdleHint is replaced by a description of the file, and with live video of a camera that
// is neither set up nor calibrated by SetupHint. A number that isn't in the table:
// box "String resource not available to output to Status window!" under "Kelvo message", line and title as they were.
void StatusString(int id, int align);

// What is known of a stored frame beyond its header, by who brings it on view. It joins the description as long as that
// file is on view.
struct ToldFrame {
    std::string path;
    std::uint32_t frame = 0;             // in the file, from 0
    std::optional<std::int64_t> number;  // by the board, negative: it doesn't count; nullopt: not known
    float integrationMs = 0;             // where the number is known
    std::string time;                    // "Sat Nov 21 12:04:01.123 2026"; empty: not known
    std::string more;                    // behind the description
};
void TellFrameOnView(ToldFrame told);

// What a command has done, in place of kIdleHint at its end: left-aligned, with the title that belongs to the moment.
// It stands until the next command; what comes by itself meanwhile, the rate of live video, leaves the line to it.
void StatusNote(std::string_view text);
bool StatusNoteStands();

// What to do where live video runs without a video set-up or a calibration, "not set up: Ctrl+V"; otherwise empty.
std::string_view SetupHint();

// A second, short text at the right end of the line, which messages leave; empty: none. Shows it at once.
extern const std::string& StatusField;
void ShowStatusField(std::string_view text);
// A word before that text that stands as long as what it tells holds, whatever the field says; empty: none.
extern const std::string& StatusMark;
void ShowStatusMark(std::string_view text);

// Copies the text and returns its alignment, for who restores the line later.
int GetStatusText(std::string& text);

LRESULT StatusWndProc(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam);

// The string table: nullopt for a number that isn't in it.
std::optional<std::string_view> ResourceString(int id);

// No text, and the colours of the start.
void ResetStatus();

}  // namespace kelvo
