#include "resources/menu.h"

#include "resources/command_list.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace kelvo {

namespace {

using Kind = CommandRow::Kind;

constexpr bool StandsInMenu(const CommandRow& row)
{
    switch (row.kind) {
        case Kind::kTop:
        case Kind::kSeparator:
        case Kind::kSubmenu:
        case Kind::kSubmenuEnd:
        case Kind::kList:
            return true;
        default:
            return HasItem(row);
    }
}

constexpr bool HasKey(const CommandRow& row)
{
    return !KeyOf(row).empty();
}

constexpr MenuEntry::Kind KindInMenu(Kind kind)
{
    switch (kind) {
        case Kind::kTop:
            return MenuEntry::Kind::kTop;
        case Kind::kSeparator:
            return MenuEntry::Kind::kSeparator;
        case Kind::kSubmenu:
            return MenuEntry::Kind::kSubmenu;
        case Kind::kSubmenuEnd:
            return MenuEntry::Kind::kSubmenuEnd;
        case Kind::kList:
            return MenuEntry::Kind::kList;
        default:
            return MenuEntry::Kind::kItem;
    }
}

constexpr MenuEntry::Check CheckOf(Kind kind)
{
    if (kind == Kind::kRadio) return MenuEntry::Check::kRadio;
    return kind == Kind::kCheck ? MenuEntry::Check::kBox : MenuEntry::Check::kNone;
}

constexpr MenuEntry EntryOf(const CommandRow& row)
{
    return {.kind = KindInMenu(row.kind), .id = row.id, .text = row.text, .icon = row.icon, .check = CheckOf(row.kind)};
}

constexpr auto kMenu = [] {
    std::array<MenuEntry, std::ranges::count_if(kCommandList, StandsInMenu)> menu;
    auto* place = menu.begin();
    for (const CommandRow& row : kCommandList) {
        if (StandsInMenu(row)) *place++ = EntryOf(row);
    }
    return menu;
}();

constexpr auto kAccelerators = [] {
    std::array<Accelerator, std::ranges::count_if(kCommandList, HasKey)> accelerators;
    auto* place = accelerators.begin();
    for (const CommandRow& row : kCommandList) {
        if (HasKey(row)) *place++ = {KeyOf(row), row.id};
    }
    return accelerators;
}();

// A number or a key that stands twice would leave one of two commands out of reach.
template <typename Value>
constexpr bool EachOnce(Value (*valueOf)(const CommandRow&))
{
    for (const auto* row = std::begin(kCommandList); row != std::end(kCommandList); ++row) {
        const Value value = valueOf(*row);
        if (value == Value()) continue;
        for (const auto* other = std::next(row); other != std::end(kCommandList); ++other) {
            if (valueOf(*other) == value) return false;
        }
    }
    return true;
}
constexpr int IdOf(const CommandRow& row)
{
    return row.id;
}
static_assert(EachOnce(IdOf));
static_assert(EachOnce(KeyOf));

constexpr bool IsComplete(const CommandRow& row)
{
    if (HasItem(row) && (row.text.empty() || !row.key.empty())) return false;
    if (!row.key.empty() && row.text.empty()) return false;  // the page on keys would tell nothing of it
    return (!IsCommand(row) && row.kind != Kind::kHelpAlone) || row.id > 0;
}
static_assert(std::ranges::all_of(kCommandList, IsComplete));

}  // namespace

std::span<const MenuEntry> MainMenu()
{
    return kMenu;
}

std::span<const Accelerator> MainAccelerators()
{
    return kAccelerators;
}

int HelpContextOf(int command)
{
    if (kCmdScriptFirst <= command && command <= kCmdScriptFirst + kScriptCount) return kHelpScripts;
    const CommandRow* const row = CommandRowOf(command);
    return row == std::end(kCommandList) ? 0 : row->help;
}

}  // namespace kelvo
