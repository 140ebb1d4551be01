// Keys: which are down, accelerators before all else, help in an open menu, and the names that scripts give them.

#include "platform/operator_acts.h"
#include "platform/qt_window.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <QWindow>

#include <algorithm>
#include <set>
#include <span>

namespace kelvo {

namespace {

struct NumberedKey {
    int qtKey;
    Key key;
};
constexpr NumberedKey kNumberedKeys[] = {
    {Qt::Key_Return, Key::kReturn},     {Qt::Key_Enter, Key::kReturn}, {Qt::Key_Shift, Key::kShift},
    {Qt::Key_PageUp, Key::kPageUp},     {Qt::Key_Up, Key::kUp},        {Qt::Key_Down, Key::kDown},
    {Qt::Key_PageDown, Key::kPageDown}, {Qt::Key_F1, Key::kF1},        {Qt::Key_F10, Key::kF10},
    {Qt::Key_Escape, Key::kEscape},
};

std::set<Key> keysDown;

struct NamedKey {
    std::string_view name;
    int qtKey;
};
constexpr NamedKey kNamedKeys[] = {
    {"PgUp", Qt::Key_PageUp},         {"PgDn", Qt::Key_PageDown},   {"PageUp", Qt::Key_PageUp},
    {"PageDown", Qt::Key_PageDown},   {"Home", Qt::Key_Home},       {"End", Qt::Key_End},
    {"Left", Qt::Key_Left},           {"Right", Qt::Key_Right},     {"Up", Qt::Key_Up},
    {"Down", Qt::Key_Down},           {"Ins", Qt::Key_Insert},      {"Del", Qt::Key_Delete},
    {"Return", Qt::Key_Return},       {"Enter", Qt::Key_Return},    {"Esc", Qt::Key_Escape},
    {"Escape", Qt::Key_Escape},       {"Space", Qt::Key_Space},     {"Tab", Qt::Key_Tab},
    {"Backspace", Qt::Key_Backspace}, {"PrintScrn", Qt::Key_Print}, {"Menu", Qt::Key_Menu},
};
constexpr int kLastFunctionKey = 35;

struct NamedModifier {
    std::string_view prefix;
    Qt::KeyboardModifier modifier;
};
constexpr NamedModifier kNamedModifiers[] = {
    {"Shift+", Qt::ShiftModifier}, {"Ctrl+", Qt::ControlModifier}, {"Alt+", Qt::AltModifier}};

// The modifier that a key's name begins with, in any order of several; null: none. A sign behind it is the key.
const NamedModifier* ModifierOf(std::string_view name)
{
    const auto* const found = std::ranges::find_if(kNamedModifiers, [name](const NamedModifier& named) {
        return name.starts_with(named.prefix) && name.size() > named.prefix.size();
    });
    return found == std::end(kNamedModifiers) ? nullptr : found;
}

std::optional<int> FunctionKey(std::string_view name)
{
    if (name.size() < 2 || name.size() > 3 || name.front() != 'F') return std::nullopt;
    int number = 0;
    for (const char digit : name.substr(1)) {
        if (digit < '0' || digit > '9') return std::nullopt;
        number = number * 10 + (digit - '0');
    }
    if (number < 1 || number > kLastFunctionKey) return std::nullopt;
    return Qt::Key_F1 + number - 1;
}

// A field that a person types into keeps the keys that it would take.
bool IsTypedInto(QWidget* widget, const QKeyEvent& press)
{
    const auto* const line = qobject_cast<QLineEdit*>(widget);
    const auto* const text = qobject_cast<QTextEdit*>(widget);
    const auto* const plain = qobject_cast<QPlainTextEdit*>(widget);
    const auto* const combo = qobject_cast<QComboBox*>(widget);
    const bool editable = (line && !line->isReadOnly()) || (text && !text->isReadOnly()) ||
                          (plain && !plain->isReadOnly()) || (combo && combo->isEditable()) ||
                          qobject_cast<QAbstractSpinBox*>(widget);
    if (!editable) return false;
    QKeyEvent question(QEvent::ShortcutOverride, press.key(), press.modifiers(), press.text());
    question.ignore();
    QCoreApplication::sendEvent(widget, &question);
    return question.isAccepted();
}

// Space presses, opens or ticks the control that has the focus; the picture's own meaning of it is for the picture.
bool IsForControl(const QWidget* widget, const QKeyEvent& press)
{
    return press.key() == Qt::Key_Space && press.modifiers() == Qt::NoModifier &&
           (qobject_cast<const QAbstractButton*>(widget) || qobject_cast<const QComboBox*>(widget));
}

constexpr int kListKeys[] = {Qt::Key_Up, Qt::Key_Down, Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Home, Qt::Key_End};
// A list has no use for these, and would hand them on to the picture.
constexpr int kKeysBesideList[] = {Qt::Key_Left, Qt::Key_Right};

bool IsOneOf(std::span<const int> keys, const QWidget* widget, const QKeyEvent& press)
{
    return qobject_cast<const QComboBox*>(widget) && (press.modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier &&
           std::ranges::find(keys, press.key()) != keys.end();
}

// The highlighted item, or the grey one under the pointer, which the toolkit doesn't highlight.
QAction* ChosenFor(const QMenu& menu)
{
    QAction* const highlighted = menu.activeAction();
    if (highlighted) return highlighted;
    const Point pointer = PointerOnScreen();
    return menu.actionAt(menu.mapFromGlobal(QPoint(pointer.x, pointer.y)));
}

void CloseMenus()
{
    while (QWidget* const popup = QApplication::activePopupWidget()) {
        if (!popup->close()) return;
    }
}

class KeyWatch : public QObject {
  protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::ApplicationStateChange) keysDown.clear();
        const bool press = event->type() == QEvent::KeyPress;
        if (!press && event->type() != QEvent::KeyRelease) return false;
        auto& key = static_cast<QKeyEvent&>(*event);
        NoteKey(key, press);
        auto* const widget = qobject_cast<QWidget*>(watched);
        if (!press || !widget) return false;
        const bool taken = HelpInMenu(*widget, key) || TakeAccelerator(*widget, key);
        if (taken) event->accept();
        return taken;
    }

  private:
    static void NoteKey(const QKeyEvent& event, bool press)
    {
        const std::optional<Key> key = KeyOf(event.key());
        if (!key || event.isAutoRepeat()) return;
        if (press) {
            keysDown.insert(*key);
        } else {
            keysDown.erase(*key);
        }
    }

    // F1 with a menu open: the window arms its help, then the highlighted item is chosen. One that is grey too: it is
    // only explained.
    static bool HelpInMenu(QWidget& widget, const QKeyEvent& key)
    {
        auto* const menu = qobject_cast<QMenu*>(&widget);
        HWND window = MainWindow();
        if (!menu || !window || key.key() != Qt::Key_F1) return false;
        QAction* const highlighted = ChosenFor(*menu);
        if (!highlighted || highlighted->isSeparator()) return true;
        SendMessage(window, WM_ENTERIDLE, 2, 0);
        const NotTheOperator onlyExplained;
        if (highlighted->isEnabled()) {
            StrikeKey(menu, {Qt::Key_Return, Qt::NoModifier, {}});
        } else if (KeyIsDown(Key::kF1)) {  // the window has heard of it
            CloseMenus();
            Q_EMIT highlighted->triggered();
        }
        return true;
    }

    static bool TakeAccelerator(QWidget& widget, const QKeyEvent& key)
    {
        HWND window = MainWindow();
        if (!window || !window->frame || widget.window() != window->frame || FrontModal()) return false;
        const std::optional<int> command = AcceleratorCommand(*window, key.key(), key.modifiers());
        if (!command || IsTypedInto(&widget, key) || IsForControl(&widget, key)) return false;
        if (IsOneOf(kListKeys, &widget, key)) return false;
        if (IsOneOf(kKeysBesideList, &widget, key)) return true;
        OperateCommand(window, *command);
        return true;
    }
};

}  // namespace

std::optional<Key> KeyOf(int qtKey)
{
    const auto* const found = std::ranges::find(kNumberedKeys, qtKey, &NumberedKey::qtKey);
    if (found == std::end(kNumberedKeys)) return std::nullopt;
    return found->key;
}

void StartKeys()
{
    static KeyWatch watch;
    qApp->installEventFilter(&watch);
    QObject::connect(qApp, &QGuiApplication::focusWindowChanged, &watch, [] { NoteFocusChange(); });
}

bool KeyIsDown(Key key)
{
    if (!qApp) return false;
    if (key == Key::kMiddleButton) return QGuiApplication::mouseButtons().testFlag(Qt::MiddleButton);
    if (key == Key::kShift && QGuiApplication::keyboardModifiers().testFlag(Qt::ShiftModifier)) return true;
    return keysDown.contains(key);
}

std::optional<KeyStroke> ParseKey(std::string_view name)
{
    KeyStroke stroke;
    while (const NamedModifier* const named = ModifierOf(name)) {
        stroke.modifiers |= named->modifier;
        name.remove_prefix(named->prefix.size());
    }
    if (const auto function = FunctionKey(name)) {
        stroke.key = *function;
        return stroke;
    }
    const auto* const known = std::ranges::find(kNamedKeys, name, &NamedKey::name);
    if (known != std::end(kNamedKeys)) {
        stroke.key = known->qtKey;
        return stroke;
    }
    const QString character = ToQString(name);
    if (character.size() != 1 || !character[0].isPrint()) return std::nullopt;
    stroke.key = character[0].toUpper().unicode();
    stroke.text = character;
    return stroke;
}

void StrikeKey(QWidget* widget, const KeyStroke& stroke)
{
    const QPointer<QWidget> receiver = widget;
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        if (!receiver) return;
        QKeyEvent event(type, stroke.key, stroke.modifiers, stroke.text);
        QCoreApplication::sendEvent(receiver, &event);
    }
}

void ForgetKeys()
{
    keysDown.clear();
}

}  // namespace kelvo
