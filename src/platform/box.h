// Message boxes and the beep. Texts are plain text, never markup.
#pragma once

#include "platform/types.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo {

enum class BoxIcon { kNone, kInformation, kExclamation, kQuestion, kStop };
enum class BoxButtons { kOk, kOkCancel, kYesNo, kYesNoCancel, kOkReport };
enum class Button { kOk = 1, kCancel = 2, kYes = 6, kNo = 7, kReport = 100 };  // numbers as dialogs return them

constexpr std::string_view kMessageCaption = "Kelvo message";

// Runs the box, with the desktop's sound for its icon where that is an exclamation, a question or a stop, and returns
// the button pressed. Blocks, while other events are handled. Closing the box or Escape is Cancel where there is one,
// No where there is No but no Cancel, otherwise Ok. owner may be null. Without a defaultButton the first one is.
Button MessageBox(HWND owner, std::string_view text, std::string_view caption, BoxIcon icon = BoxIcon::kExclamation,
                  BoxButtons buttons = BoxButtons::kOk);
Button MessageBox(HWND owner, std::string_view text, std::string_view caption, BoxIcon icon, BoxButtons buttons,
                  Button defaultButton);

enum class Sound { kDefault, kInformation, kExclamation, kStop };
void MessageBeep(Sound sound);

}  // namespace kelvo
