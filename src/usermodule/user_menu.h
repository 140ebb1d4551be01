// The menu of user-written functions: a laboratory's own commands among those of the program. Which commands it has and
// what the dialog asks for each is declared by calls, once at each start and again when another camera is chosen
// (InitUserModules).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace kelvo {

constexpr std::size_t kMostUserFunctions = 20;

// The n-th item of the menu, and the n-th dialog's texts: the two are declared each by a call of its own, and belong
// together by their numbers, not by their place.
struct UserRecord {
    std::int32_t MenuId = 0;  // 900 to 999; 0: none
    std::int32_t ParmId = 0;
    std::string Title;  // at most 30 characters
    std::string Parm1;  // at most 40; empty: the dialog doesn't ask for it
    std::string Parm2;
    std::string Parm3;
    std::string Parm4;
};
extern const std::array<UserRecord, kMostUserFunctions>& UserTable;
extern const std::int32_t& UserMenuCount;  // records of the menu
extern const std::int32_t& UserParmCount;  // records of the dialogs

// Key of that name in section Setup of kelvo.ini (1). 0: no function opens its dialog.
extern const std::int32_t& UserMenuDefined;

// Reads the key, and lets the next declarations begin anew.
void BeginUserMenu();

// Adds an item that sends command id. The first since BeginUserMenu empties the menu before. With id 0 the menu goes,
// whatever name is (null too). 1, or 0: in silence where the menu bar has no "USER" menu; after a box under "User
// Software Module Error": "User popup menu item doesn't exist" (nothing opens below it), "No more than 20 User
// functions allowed.", "User Menu ID's must be in the range 900 -> 999.", "Unable to load User Menu: Name=%s ID=%d"; or
// under "Vantir Software Error": "Unable to delete dummy UserMenuID" (what holds the place of functions stays).
int SetUserMenuName(std::int32_t id, const char* name);

// The dialog of command id: its title, and its prompts, of which an empty or null one isn't asked for. Texts beyond
// their fields are cut. The first since BeginUserMenu drops those declared before. 1, or 0 after a box under "User
// Software Module Error": "No more than 20 User functions allowed", "User Menu ID's must be in the range 900 -> 999."
int SetUserParmNames(std::int32_t id, const char* title, const char* parm1, const char* parm2, const char* parm3,
                     const char* parm4);

// Takes the menu away: there are no user-written functions.
void RemoveUserMenu();

// No record, and no declaration since the start.
void ResetUserMenu();

}  // namespace kelvo
