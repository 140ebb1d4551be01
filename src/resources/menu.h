// The main menu, the accelerator table "KELVO" and the help contexts, made from the list of commands (command_list.h).
#pragma once

#include "platform/menu.h"

#include <span>

namespace kelvo {

std::span<const MenuEntry> MainMenu();
std::span<const Accelerator> MainAccelerators();

// The help page of a command, 0 for a command without one.
int HelpContextOf(int command);

}  // namespace kelvo
