// The menu bar of the main window, by numbers, and the accelerator table.
#pragma once

#include "platform/types.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kelvo {

// One line of a menu table, in order. An item's text holds '&' before its letter and, after a tab, the name of its key.
struct MenuEntry {
    enum class Kind {
        kTop,
        kItem,
        kSeparator,
        kSubmenu,     // opens beside the item; what follows stands in it
        kSubmenuEnd,  // what follows stands in the top menu again
        kList,        // the place of lines that come and go (SetMenuList); id: the command of the first
    };
    enum class Check {
        kNone,
        kBox,    // on or off
        kRadio,  // one of the radio items that follow each other
    };
    Kind kind = Kind::kItem;
    int id = 0;
    std::string_view text;
    std::string_view icon = {};  // name of an icon in the resources
    Check check = Check::kNone;
    bool enabled = true;
    std::string_view tip = {};  // shown while the pointer rests on the item, a grey one too
};

struct Accelerator {
    std::string_view key;  // "F3", "Shift+F3", "Ctrl+Q", "+", "Right", "PgUp", "Shift+PrintScrn"
    int id = 0;
};

void SetMenu(HWND window, std::span<const MenuEntry> entries);
void SetAccelerators(HWND window, std::span<const Accelerator> accelerators);

struct MenuItemState {
    std::string text;
    bool checked = false;
    bool enabled = true;
};
std::optional<MenuItemState> GetMenuItem(HWND window, int id);  // nullopt: no such item

// Each but the tip tells the transcript. An id that isn't in the menu: nothing happens, false.
bool SetMenuText(HWND window, int id, std::string_view text);
bool CheckMenuItem(HWND window, int id, bool checked);
bool EnableMenuItem(HWND window, int id, bool enabled);
bool SetMenuTip(HWND window, int id, std::string_view tip);  // shown while the pointer rests on the item
bool DeleteMenuItem(HWND window, int id);
// A deleted item comes back to its place, with its text, grey if it was. False: it stands, or never stood.
bool RestoreMenuItem(HWND window, int id);
void DrawMenuBar(HWND window);

// The lines at the place of the list that begins with firstId, texts as in MenuEntry: commands firstId, firstId + 1,
// ...; none hides the place. Before the menu in which it stands opens, the window gets WM_INITMENUPOPUP with wParam =
// firstId. Nothing happens where the menu has no such list.
void SetMenuList(HWND window, int firstId, std::span<const std::string> texts);

// Top menus by position, for user-written functions that fill or remove one.
int TopMenuCount(HWND window);
std::string TopMenuText(HWND window, int position);
bool DeleteTopMenu(HWND window, int position);
bool TopMenuOpens(HWND window, int position);  // false: it has no menu below it, or there is none at that position
// Takes all out of it but the item of that number.
void ClearTopMenu(HWND window, int position, int keptId);
// A line more at its end, which sends the command. False where there is no such menu, or the machine refuses.
bool AppendMenuItem(HWND window, int position, int id, std::string_view text);

}  // namespace kelvo
