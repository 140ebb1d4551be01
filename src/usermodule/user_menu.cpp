#include "usermodule/user_menu.h"

#include "platform/box.h"
#include "platform/menu.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "resources/ids.h"
#include "state/state_registry.h"
#include "state/windows.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace kelvo {

namespace {

struct UserMenuVariables {
    std::array<UserRecord, kMostUserFunctions> UserTable;
    std::int32_t UserMenuCount = 0;
    std::int32_t UserParmCount = 0;
    std::int32_t UserMenuDefined = 1;
    // The next declaration of its kind is the first.
    bool menuBegins = false;
    bool parmsBegin = false;
};
UserMenuVariables own;

}  // namespace

constinit const std::array<UserRecord, kMostUserFunctions>& UserTable = own.UserTable;
constinit const std::int32_t& UserMenuCount = own.UserMenuCount;
constinit const std::int32_t& UserParmCount = own.UserParmCount;
constinit const std::int32_t& UserMenuDefined = own.UserMenuDefined;

namespace {

const StateNames kStateNames{
    Named("UserMenuCount", UserMenuCount),
    Named("UserParmCount", UserParmCount),
    Named("UserMenuDefined", UserMenuDefined),
};

constexpr std::int32_t kMostRecords = kMostUserFunctions;
constexpr int kMostTopMenus = 20;
constexpr std::size_t kTitleCharacters = 30;
constexpr std::size_t kPromptCharacters = 40;

int Refuse(std::string_view text, std::string_view caption = "User Software Module Error")
{
    MessageBox(hWndMain, text, caption);
    return 0;
}

std::string_view TextOf(const char* text)
{
    return text ? std::string_view(text) : std::string_view();
}

// As much as the field holds, without a part of a character.
std::string Cut(const char* text, std::size_t most)
{
    const std::string_view whole = TextOf(text);
    if (whole.size() <= most) return std::string(whole);
    constexpr std::size_t kLongestTail = 3;  // bytes behind the first of a character in UTF-8
    const auto isTail = [&](std::size_t at) { return (static_cast<unsigned char>(whole[at]) & 0xC0U) == 0x80U; };
    std::size_t end = most;
    while (end > 0 && most - end < kLongestTail && isTail(end)) --end;
    const bool divides = end < most && static_cast<unsigned char>(whole[end]) >= 0xC0U;
    return std::string(whole.substr(0, divides ? end : most));
}

bool InUserRange(std::int32_t id)
{
    return kCmdUserFirst <= id && id <= kCmdUserLast;
}

std::optional<int> FindUserMenu()
{
    const int menus = std::min(TopMenuCount(hWndMain), kMostTopMenus);
    for (int position = 0; position < menus; ++position) {
        if (TopMenuText(hWndMain, position).find("USER") != std::string::npos) return position;
    }
    return std::nullopt;
}

int DeleteUserMenu(int position)
{
    DeleteTopMenu(hWndMain, position);
    DrawMenuBar(hWndMain);
    return 1;
}

void BeginMenuAnew(int position)
{
    own.UserMenuCount = 0;
    for (UserRecord& record : own.UserTable) record.MenuId = 0;
    ClearTopMenu(hWndMain, position, kCmdNoUserFunction);
}

// Gone already where functions were declared before.
bool DeletePlaceholder()
{
    return !GetMenuItem(hWndMain, kCmdNoUserFunction) || DeleteMenuItem(hWndMain, kCmdNoUserFunction);
}

int AppendUserItem(int position, std::int32_t id, std::string_view name)
{
    if (own.menuBegins) BeginMenuAnew(position);
    if (UserMenuCount >= kMostRecords) return Refuse("No more than 20 User functions allowed.");
    if (!InUserRange(id)) return Refuse("User Menu ID's must be in the range 900 -> 999.");
    own.UserTable.at(static_cast<std::size_t>(UserMenuCount)).MenuId = id;
    if (!AppendMenuItem(hWndMain, position, id, name)) {
        return Refuse(Format("Unable to load User Menu: Name=%s ID=%d", std::string(name).c_str(), id));
    }
    if (UserMenuCount == 0 && !DeletePlaceholder()) {
        return Refuse("Unable to delete dummy UserMenuID", "Vantir Software Error");
    }
    ++own.UserMenuCount;
    own.menuBegins = false;
    return 1;
}

void BeginParmsAnew()
{
    own.UserParmCount = 0;
    for (UserRecord& record : own.UserTable) {
        const std::int32_t item = record.MenuId;
        record = {};
        record.MenuId = item;
    }
}

}  // namespace

void BeginUserMenu()
{
    own.UserMenuDefined = GetPrivateProfileInt("Setup", "UserMenuDefined", 1, IniFilePath);
    own.menuBegins = true;
    own.parmsBegin = true;
}

int SetUserMenuName(std::int32_t id, const char* name)
{
    const std::optional<int> position = FindUserMenu();
    if (!position) return 0;
    if (id == 0) return DeleteUserMenu(*position);
    if (!TopMenuOpens(hWndMain, *position)) return Refuse("User popup menu item doesn't exist");
    return AppendUserItem(*position, id, TextOf(name));
}

int SetUserParmNames(std::int32_t id, const char* title, const char* parm1, const char* parm2, const char* parm3,
                     const char* parm4)
{
    if (own.parmsBegin) BeginParmsAnew();
    if (UserParmCount >= kMostRecords) return Refuse("No more than 20 User functions allowed");
    if (!InUserRange(id)) return Refuse("User Menu ID's must be in the range 900 -> 999.");
    UserRecord& record = own.UserTable.at(static_cast<std::size_t>(UserParmCount));
    record.ParmId = id;
    record.Title = Cut(title, kTitleCharacters);
    record.Parm1 = Cut(parm1, kPromptCharacters);
    record.Parm2 = Cut(parm2, kPromptCharacters);
    record.Parm3 = Cut(parm3, kPromptCharacters);
    record.Parm4 = Cut(parm4, kPromptCharacters);
    ++own.UserParmCount;
    own.parmsBegin = false;
    return 1;
}

void RemoveUserMenu()
{
    SetUserMenuName(0, nullptr);
}

void ResetUserMenu()
{
    own = {};
}

}  // namespace kelvo
