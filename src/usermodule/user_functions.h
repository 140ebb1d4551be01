// What a laboratory's own source file defines: the declaration of its functions, the dispatcher, and slots for the
// functions themselves. As delivered there are none, and the menu is taken away. docs/how-to/link-a-user-module.md
// tells how another source stands in place of user_functions.cpp.
#pragma once

#include <cstdint>
#include <string>

namespace kelvo {

// Declares the functions (usermodule/user_menu.h). Called at the start, when the settings have been read and the main
// window stands without camera and picture, and again whenever another camera is chosen.
void InitUserModules();

// Runs the function of command id. parm1 to parm4 are what the operator typed, at most 40 characters each; the dialog
// reads the fourth field for all of them (usermodule/user_dialog.h). Called on the main thread; the program waits.
void UserDispatch(std::int32_t id, const std::string& parm1, const std::string& parm2, const std::string& parm3,
                  const std::string& parm4);

// Slots, for dispatchers to call. As delivered each does nothing and returns 1.
std::int32_t UserFunction0(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d, std::int32_t e);
std::int32_t UserFunction1(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d, std::int32_t e);
std::int32_t UserFunction2(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d, std::int32_t e);
std::int32_t UserFunction3(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d, std::int32_t e);
std::int32_t UserFunction4(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d, std::int32_t e);
std::int32_t UserFunction5(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d, std::int32_t e);
std::int32_t UserFunction6(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d, std::int32_t e);
std::int32_t UserFunction7(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d, std::int32_t e);
std::int32_t UserFunction8(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d, std::int32_t e);
std::int32_t UserFunction9(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d, std::int32_t e);

}  // namespace kelvo
