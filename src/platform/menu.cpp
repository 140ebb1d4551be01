#include "platform/menu.h"

#include "platform/faults.h"
#include "platform/qt_window.h"
#include "platform/transcript.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <QMenuBar>

#include <algorithm>
#include <map>

namespace kelvo {

namespace {

struct Item {
    QPointer<QAction> action;
    std::string text;
    bool checked = false;
    bool wasEnabled = true;  // of a deleted one, before that
};

struct ItemList {
    QPointer<QMenu> menu;
    QPointer<QAction> end;  // the invisible line before which they stand
    std::vector<int> ids;
};

struct AcceleratorEntry {
    int key = 0;
    Qt::KeyboardModifiers modifiers;
    int id = 0;
};

}  // namespace

struct MenuData {
    std::map<int, Item> items;
    std::map<int, Item> deleted;    // hidden at their places
    std::map<int, ItemList> lists;  // by the command of the first line
    std::vector<AcceleratorEntry> accelerators;
};

namespace {

MenuData* DataOf(HWND window)
{
    return IsWindow(window) ? window->menu.get() : nullptr;
}

MenuData& EnsureData(HWND window)
{
    if (!window->menu) window->menu = std::make_shared<MenuData>();
    return *window->menu;
}

Item* FindItem(HWND window, int id)
{
    MenuData* const data = DataOf(window);
    if (!data) return nullptr;
    const auto found = data->items.find(id);
    return found == data->items.end() || !found->second.action ? nullptr : &found->second;
}

void TranscribeItem(int id, const Item& item)
{
    Transcribe("menu", {{"id", std::int64_t{id}},
                        {"text", item.text},
                        {"checked", item.checked},
                        {"enabled", item.action->isEnabled()}});
}

// The check mark is the logic's: the toolkit's own turn of it, which takes the mark off the other radio items, is taken
// back before the command runs.
void Choose(HWND window, int id)
{
    if (const Item* const chosen = FindItem(window, id)) {
        const QActionGroup* const group = chosen->action->actionGroup();
        for (const auto& [other, item] : window->menu->items) {
            const bool concerned = other == id || (group && item.action && item.action->actionGroup() == group);
            if (concerned) item.action->setChecked(item.checked);
        }
    }
    OperateCommand(window, id);
}

QAction* AddItem(HWND window, QMenu& menu, QAction* before, const MenuEntry& entry)
{
    QAction* const action = std::make_unique<QAction>(ToQString(entry.text), &menu).release();  // the menu owns it
    action->setMenuRole(QAction::NoRole);
    action->setIcon(IconNamed(entry.icon));
    action->setCheckable(entry.check != MenuEntry::Check::kNone);
    action->setEnabled(entry.enabled);
    action->setToolTip(ToQString(entry.tip));
    menu.insertAction(before, action);
    const int id = entry.id;
    QObject::connect(action, &QAction::triggered, &menu, [window, id] { Choose(window, id); });
    QObject::connect(action, &QAction::hovered, &menu,
                     [window, id] { SendMessage(window, WM_MENUSELECT, static_cast<WPARAM>(id), 0); });
    window->menu->items[id] = {action, std::string(entry.text), false};
    return action;
}

// The group of the radio items that stand together, made with the first; null behind an item of another kind.
QActionGroup* JoinRadios(QActionGroup* group, const MenuEntry& entry, QAction* action)
{
    if (entry.check != MenuEntry::Check::kRadio) return nullptr;
    if (!group) group = std::make_unique<QActionGroup>(action->parent()).release();  // the menu owns it
    group->addAction(action);
    return group;
}

void AddList(HWND window, QMenu& menu, int firstId)
{
    QAction* const end = menu.addSeparator();
    end->setVisible(false);
    window->menu->lists[firstId] = {&menu, end, {}};
    QObject::connect(&menu, &QMenu::aboutToShow, &menu,
                     [window, firstId] { SendMessage(window, WM_INITMENUPOPUP, static_cast<WPARAM>(firstId), 0); });
}

void RemoveAction(QAction* action)
{
    if (!action) return;
    action->setVisible(false);
    if (QMenu* const menu = qobject_cast<QMenu*>(action->parent())) menu->removeAction(action);
    action->deleteLater();  // its own command may be running
}

QList<QAction*> TopActions(HWND window)
{
    if (!IsWindow(window) || !window->frame) return {};
    return window->frame->menuBar()->actions();
}

// Null where there is none, or it has no menu below it.
QMenu* TopMenuAt(HWND window, int position)
{
    const QList<QAction*> actions = TopActions(window);
    return position < 0 || position >= actions.size() ? nullptr : actions[position]->menu();
}

bool SameModifiers(const AcceleratorEntry& entry, int key, Qt::KeyboardModifiers modifiers)
{
    modifiers &= Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    // Where the signs stand on a keyboard is its own affair: with or without Shift.
    if (key == Qt::Key_Plus || key == Qt::Key_Minus) modifiers.setFlag(Qt::ShiftModifier, false);
    return entry.modifiers == modifiers;
}

}  // namespace

void SetMenu(HWND window, std::span<const MenuEntry> entries)
{
    if (!IsWindow(window) || !window->frame) return;
    MenuData& data = EnsureData(window);
    data.items.clear();
    data.deleted.clear();
    QMenuBar& bar = *window->frame->menuBar();
    bar.clear();
    data.lists.clear();
    QMenu* top = nullptr;
    QMenu* menu = nullptr;  // that one or a submenu of it
    QActionGroup* radios = nullptr;
    for (const MenuEntry& entry : entries) {
        if (entry.check != MenuEntry::Check::kRadio) radios = nullptr;
        if (entry.kind == MenuEntry::Kind::kTop) {
            top = menu = bar.addMenu(ToQString(entry.text));
            menu->setToolTipsVisible(true);
            continue;
        }
        if (!menu) continue;
        switch (entry.kind) {
            case MenuEntry::Kind::kItem:
                radios = JoinRadios(radios, entry, AddItem(window, *menu, nullptr, entry));
                break;
            case MenuEntry::Kind::kSubmenu:
                menu = top->addMenu(ToQString(entry.text));
                menu->setToolTipsVisible(true);
                break;
            case MenuEntry::Kind::kSubmenuEnd:
                menu = top;
                break;
            case MenuEntry::Kind::kList:
                AddList(window, *menu, entry.id);
                break;
            default:
                menu->addSeparator();
        }
    }
}

void SetAccelerators(HWND window, std::span<const Accelerator> accelerators)
{
    if (!IsWindow(window)) return;
    std::vector<AcceleratorEntry>& entries = EnsureData(window).accelerators;
    entries.clear();
    for (const Accelerator& accelerator : accelerators) {
        if (const auto stroke = ParseKey(accelerator.key)) {
            entries.push_back({stroke->key, stroke->modifiers, accelerator.id});
        }
    }
}

std::optional<int> AcceleratorCommand(const Window& window, int key, Qt::KeyboardModifiers modifiers)
{
    if (!window.menu) return std::nullopt;
    const auto& entries = window.menu->accelerators;
    const auto found = std::ranges::find_if(entries, [=](const AcceleratorEntry& entry) {
        return entry.key == key && SameModifiers(entry, key, modifiers);
    });
    if (found == entries.end()) return std::nullopt;
    return found->id;
}

std::optional<MenuItemState> GetMenuItem(HWND window, int id)
{
    const Item* const item = FindItem(window, id);
    if (!item) return std::nullopt;
    return MenuItemState{item->text, item->checked, item->action->isEnabled()};
}

bool SetMenuText(HWND window, int id, std::string_view text)
{
    Item* const item = FindItem(window, id);
    if (!item) return false;
    item->text = text;
    item->action->setText(ToQString(text));
    TranscribeItem(id, *item);
    return true;
}

bool CheckMenuItem(HWND window, int id, bool checked)
{
    Item* const item = FindItem(window, id);
    if (!item) return false;
    item->checked = checked;
    item->action->setCheckable(true);
    item->action->setChecked(checked);
    TranscribeItem(id, *item);
    return true;
}

bool EnableMenuItem(HWND window, int id, bool enabled)
{
    Item* const item = FindItem(window, id);
    if (!item) return false;
    item->action->setEnabled(enabled);
    TranscribeItem(id, *item);
    return true;
}

bool SetMenuTip(HWND window, int id, std::string_view tip)
{
    const Item* const item = FindItem(window, id);
    if (!item) return false;
    item->action->setToolTip(ToQString(tip));
    return true;
}

bool DeleteMenuItem(HWND window, int id)
{
    Item* const item = FindItem(window, id);
    if (!item || FaultIsSet("delete menu item")) return false;
    item->wasEnabled = item->action->isEnabled();
    item->action->setEnabled(false);
    TranscribeItem(id, *item);
    item->action->setVisible(false);
    window->menu->deleted.insert(window->menu->items.extract(id));
    return true;
}

bool RestoreMenuItem(HWND window, int id)
{
    MenuData* const data = DataOf(window);
    if (!data) return false;
    auto deleted = data->deleted.extract(id);
    if (deleted.empty() || !deleted.mapped().action) return false;
    const Item& item = data->items.insert(std::move(deleted)).position->second;
    item.action->setEnabled(item.wasEnabled);
    item.action->setVisible(true);
    TranscribeItem(id, item);
    return true;
}

void DrawMenuBar(HWND window)
{
    if (IsWindow(window) && window->frame) window->frame->menuBar()->repaint();
}

void SetMenuList(HWND window, int firstId, std::span<const std::string> texts)
{
    MenuData* const data = DataOf(window);
    if (!data) return;
    const auto found = data->lists.find(firstId);
    if (found == data->lists.end() || !found->second.menu || !found->second.end) return;
    ItemList& list = found->second;
    for (const int id : list.ids) {
        if (const Item* const item = FindItem(window, id)) RemoveAction(item->action);
        data->items.erase(id);
    }
    list.ids.clear();
    int id = firstId;
    for (const std::string& text : texts) {
        AddItem(window, *list.menu, list.end, {.kind = MenuEntry::Kind::kItem, .id = id, .text = text});
        list.ids.push_back(id++);
    }
    list.end->setVisible(!texts.empty());
}

int TopMenuCount(HWND window)
{
    return static_cast<int>(TopActions(window).size());
}

std::string TopMenuText(HWND window, int position)
{
    const QList<QAction*> actions = TopActions(window);
    if (position < 0 || position >= actions.size()) return {};
    return FromQString(actions[position]->text());
}

bool DeleteTopMenu(HWND window, int position)
{
    const QList<QAction*> actions = TopActions(window);
    if (position < 0 || position >= actions.size()) return false;
    QMenu* const menu = actions[position]->menu();
    if (window->menu) {
        std::erase_if(window->menu->items, [menu](const auto& item) {
            return !item.second.action || (menu && menu->actions().contains(item.second.action.data()));
        });
    }
    window->frame->menuBar()->removeAction(actions[position]);
    if (menu) menu->deleteLater();
    return true;
}

bool TopMenuOpens(HWND window, int position)
{
    return TopMenuAt(window, position) != nullptr;
}

void ClearTopMenu(HWND window, int position, int keptId)
{
    QMenu* const menu = TopMenuAt(window, position);
    if (!menu) return;
    const Item* const kept = FindItem(window, keptId);
    const QList<QAction*> actions = menu->actions();
    for (QAction* const action : actions) {
        if (kept && kept->action == action) continue;
        std::erase_if(window->menu->items, [action](const auto& item) { return item.second.action == action; });
        RemoveAction(action);
    }
}

bool AppendMenuItem(HWND window, int position, int id, std::string_view text)
{
    QMenu* const menu = TopMenuAt(window, position);
    if (!menu || FaultIsSet("append menu item")) return false;
    EnsureData(window);
    AddItem(window, *menu, nullptr, {.kind = MenuEntry::Kind::kItem, .id = id, .text = text});
    TranscribeItem(id, window->menu->items[id]);
    return true;
}

}  // namespace kelvo
