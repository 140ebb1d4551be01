// The commands of user-written functions: the dialog that asks for up to four parameters, and the call of the function.
//
// Control 1820, the fourth field, is read for all four parameters: functions that are in use rest on it. What is typed
// into the other three reaches no function.
#pragma once

#include "ui/command_end.h"

namespace kelvo {

// Runs the dialog USERDLG for command id, 900 to 999, which calls UserDispatch at Ok; for a function without prompts it
// is called at once, and no dialog is seen. The dialog's result: 1 after the function ran, 0 where the operator
// cancelled or after a box: under "User Software Module Error" "Error in User Menu ID number(s)." (the menu has no such
// item), "User Menu ID's in SetUserMenuName() & SetUserParmNames() don't match." (no prompts were declared for it);
// under "QVF Vantir" "User dropdown menu not defined." (UserMenuDefined is 0); under "System Error" "Unable to display
// dialog".
int RunUserModule(int id);

// The same as a command of the main window. What a save within it has told stays on the status line.
CommandEnd UserCommand(int id);

}  // namespace kelvo
