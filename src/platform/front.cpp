// The operator's hands: boxes, file dialogs, keys and mouse. The controls of dialogs are worked beside the dialogs.

#include "platform/front.h"

#include "platform/dialog.h"
#include "platform/operator_acts.h"
#include "platform/qt_window.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QMouseEvent>
#include <QUrl>
#include <QWheelEvent>

namespace kelvo {

namespace {

// The main window's client area while the operator can reach it.
QWidget* ReachableClient()
{
    HWND window = MainWindow();
    if (!window || FrontModal() || !window->widget || !window->widget->isVisible()) return nullptr;
    return window->widget;
}

// The same for the pointer: of what it does some may be for the dialog in front.
QWidget* ClientUnderPointer()
{
    HWND window = MainWindow();
    if (!window || !FrontTakesPicturePresses() || !window->widget->isVisible()) return ReachableClient();
    return window->widget;
}

// An open menu, else what has the focus in the window in front.
QWidget* KeyReceiver()
{
    if (QWidget* const popup = QApplication::activePopupWidget()) return popup;
    QWidget* front = FrontModal() ? FrontModal()->widget.data() : nullptr;
    if (!front && MainWindow()) front = MainWindow()->frame;
    if (!front) return nullptr;
    return front->focusWidget() ? front->focusWidget() : front;
}

// Alt and a letter open the top menu that underlines it.
bool OpenTopMenu(const KeyStroke& stroke)
{
    if (stroke.modifiers != Qt::AltModifier || stroke.text.isEmpty() || !ReachableClient()) return false;
    QMenuBar* const bar = MainWindow()->frame->menuBar();
    for (QAction* const action : bar->actions()) {
        const QString text = action->text();
        const qsizetype mark = text.indexOf('&');
        if (!action->menu() || mark < 0 || mark + 1 >= text.size()) continue;
        if (text[mark + 1].toUpper() != stroke.text[0].toUpper()) continue;
        bar->setActiveAction(action);
        // The first item is highlighted, as it is for a person who opens it by key.
        if (QMenu* const menu = action->menu(); !menu->activeAction() && !menu->actions().isEmpty()) {
            menu->setActiveAction(menu->actions().first());
        }
        return true;
    }
    return false;
}

struct MouseDeed {
    QEvent::Type type;
    Qt::MouseButton button;
};
constexpr MouseDeed kMouseDeeds[] = {{QEvent::MouseMove, Qt::NoButton},
                                     {QEvent::MouseButtonPress, Qt::LeftButton},
                                     {QEvent::MouseButtonPress, Qt::RightButton},
                                     {QEvent::MouseButtonPress, Qt::MiddleButton},
                                     {QEvent::MouseButtonDblClick, Qt::LeftButton}};
constexpr int kWheelUp = 5;
constexpr int kWheelDown = 6;
constexpr int kHoldMiddle = 7;
constexpr int kReleaseMiddle = 8;
constexpr int kHoldLeft = 9;
constexpr int kReleaseLeft = 10;
constexpr int kNotch = 120;

// Whoever has a button down over it gets all motion until its release.
QPointer<QWidget> holder;
Qt::MouseButton heldButton = Qt::NoButton;

// Who hears of the mouse at a place of the client area: who holds a button, an open menu, else what lies there.
QWidget* Under(QWidget& area, QPoint at)
{
    if (holder) return holder;
    if (auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) return menu;
    QWidget* const child = area.childAt(at);
    return child ? child : &area;
}

void SendMouseEvent(QWidget* receiver, QEvent::Type type, QPoint at, Qt::MouseButton button)
{
    const bool holds = type == QEvent::MouseButtonPress || type == QEvent::MouseButtonDblClick;
    Qt::MouseButtons held = holds ? Qt::MouseButtons(button) : Qt::NoButton;
    if (holder) held |= heldButton;
    QMouseEvent event(type, QPointF(at), QPointF(receiver->mapToGlobal(at)), button, held, Qt::NoModifier);
    QCoreApplication::sendEvent(receiver, &event);
}

void Hold(QWidget* receiver, QPoint at, Qt::MouseButton button)
{
    holder = receiver;
    heldButton = button;
    SendMouseEvent(receiver, QEvent::MouseButtonPress, at, button);
}

void Release(QWidget* receiver, QPoint at, Qt::MouseButton button)
{
    holder = nullptr;
    SendMouseEvent(receiver, QEvent::MouseButtonRelease, at, button);
}

void TurnWheel(QWidget* receiver, QPoint at, int delta)
{
    QWheelEvent event(QPointF(at), QPointF(receiver->mapToGlobal(at)), QPoint(), QPoint(0, delta), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(receiver, &event);
}

}  // namespace

std::optional<FrontBox> BoxInFront()
{
    const ModalEntry* const front = FrontModal();
    return front ? front->box : std::nullopt;
}

std::optional<FrontFileDialog> FileDialogInFront()
{
    const ModalEntry* const front = FrontModal();
    if (!front || !front->file) return std::nullopt;
    return front->file();
}

HWND DialogInFront()
{
    const ModalEntry* const front = FrontModal();
    return front ? front->dialog : nullptr;
}

HWND StripNamed(std::string_view name)
{
    for (HWND strip : WindowsOfKind(WindowKind::kPanel)) {
        if (strip->widget && !strip->widget->isHidden() && DialogName(strip) == name) return strip;
    }
    return nullptr;
}

HWND OpenDialogNamed(std::string_view name)
{
    for (HWND dialog : WindowsOfKind(WindowKind::kDialog)) {
        const bool modeless = dialog->widget && !dialog->widget->isModal() && dialog->widget->isVisible();
        if (modeless && DialogName(dialog) == name) return dialog;
    }
    return nullptr;
}

void OperateCommand(HWND window, int id)
{
    TellOperatorAct({.kind = OperatorAct::Kind::kCommand, .id = id});
    SendMessage(window, WM_COMMAND, static_cast<WPARAM>(id), 0);
}

bool PressBoxButton(Button button)
{
    const ModalEntry* const front = FrontModal();
    return front && front->pressButton && front->pressButton(button);
}

bool ChooseFiles(const std::vector<std::string>& paths)
{
    const ModalEntry* const front = FrontModal();
    return front && front->chooseFiles && front->chooseFiles(paths);
}

bool CancelFileDialog()
{
    const ModalEntry* const front = FrontModal();
    if (!front || !front->cancelFiles) return false;
    front->cancelFiles();
    return true;
}

bool OperateKey(std::string_view key)
{
    const std::optional<KeyStroke> stroke = ParseKey(key);
    if (!stroke) return false;
    if (!QApplication::activePopupWidget() && OpenTopMenu(*stroke)) return true;
    QWidget* const receiver = KeyReceiver();
    if (!receiver) return false;
    StrikeKey(receiver, *stroke);
    return true;
}

void OperateMouse(Point client, int button)
{
    QPointer<QWidget> area = ClientUnderPointer();
    if (!area) return;
    const Point screen = ClientToScreen(MainWindow(), client);
    MovePointerTo(screen);
    const QPoint at(client.x, client.y);
    QPointer<QWidget> receiver = Under(*area, at);
    const QPoint local = receiver->mapFromGlobal(area->mapToGlobal(at));
    if (button == kWheelUp || button == kWheelDown) {
        TurnWheel(receiver, local, button == kWheelUp ? kNotch : -kNotch);
    } else if (button == kHoldMiddle || button == kHoldLeft) {
        Hold(receiver, local, button == kHoldLeft ? Qt::LeftButton : Qt::MiddleButton);
    } else if (button == kReleaseMiddle || button == kReleaseLeft) {
        Release(receiver, local, button == kReleaseLeft ? Qt::LeftButton : Qt::MiddleButton);
    } else if (button >= 0 && button < static_cast<int>(std::size(kMouseDeeds))) {
        const MouseDeed deed = kMouseDeeds[button];
        SendMouseEvent(receiver, deed.type, local, deed.button);
        if (receiver && deed.button != Qt::NoButton) {
            SendMouseEvent(receiver, QEvent::MouseButtonRelease, local, deed.button);
        }
    }
}

bool OperateDrop(const std::vector<std::string>& paths)
{
    QWidget* const area = ReachableClient();
    if (!area || paths.empty()) return false;
    QMimeData data;
    QList<QUrl> urls;
    for (const std::string& path : paths) {
        urls.append(QUrl::fromEncoded("file://" + QByteArray::fromStdString(path).toPercentEncoding("/")));
    }
    data.setUrls(urls);
    QDragEnterEvent enter(area->rect().center(), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(area, &enter);
    if (!enter.isAccepted()) return false;
    QDropEvent drop(QPointF(area->rect().center()), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(area, &drop);
    return drop.isAccepted();
}

}  // namespace kelvo
