// A modal dialog that takes presses on the picture. The toolkit drops them on their way to a blocked window; so for
// such a dialog it blocks nothing, and what a modal dialog keeps away is kept away here.

#include "platform/operator_acts.h"
#include "platform/qt_dialog.h"

#include <QApplication>
#include <QEvent>
#include <QMouseEvent>
#include <QWindow>

#include <memory>

namespace kelvo {

namespace {

// The window that an event goes to, or to a widget of which; null: none of ours.
QWidget* TopLevelOf(QObject* receiver)
{
    if (auto* const widget = qobject_cast<QWidget*>(receiver)) return widget->window();
    for (QWidget* const topLevel : QApplication::topLevelWidgets()) {
        if (receiver == topLevel->windowHandle()) return topLevel;
    }
    return nullptr;
}

QPoint PlaceInWindow(const QObject* receiver, const QMouseEvent& event)
{
    const QPoint at = event.position().toPoint();
    const auto* const widget = qobject_cast<const QWidget*>(receiver);
    return widget ? widget->mapTo(widget->window(), at) : at;
}

// What no press or motion should bring about in a blocked window either.
bool FollowsThePointer(QEvent::Type type)
{
    return type == QEvent::Enter || type == QEvent::HoverEnter || type == QEvent::HoverMove || type == QEvent::ToolTip;
}

class PictureGate : public QObject {
  public:
    explicit PictureGate(HWND dialog) : dialog_(dialog) { qApp->installEventFilter(this); }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const bool isInput = IsOperatorsInput(event->type()) || FollowsThePointer(event->type());
        if (!isInput && event->type() != QEvent::WindowActivate) return false;
        const QWidget* const window = TopLevelOf(watched);
        if (!window || !IsBlocked(*window)) return false;
        if (!isInput) {
            OwnerWidget(nullptr)->activateWindow();  // the keyboard stays with whoever is in front
            return false;
        }
        if (event->type() == QEvent::MouseButtonPress) {
            const auto& press = static_cast<const QMouseEvent&>(*event);
            if (press.button() == Qt::LeftButton) HandIn(*window, PlaceInWindow(watched, press));
        }
        if (event->type() == QEvent::Close) event->ignore();  // nothing else may go on to a parent
        return true;
    }

  private:
    // As the toolkit blocks: what the dialog belongs to, and what that belongs to.
    bool IsBlocked(const QWidget& window) const
    {
        if (!IsWindow(dialog_) || !dialog_->widget) return false;
        for (const QWidget* owner = dialog_->widget->parentWidget(); owner; owner = owner->parentWidget()) {
            if (owner == &window) return true;
        }
        return false;
    }

    void HandIn(const QWidget& window, QPoint inWindow) const
    {
        const HWND main = MainWindow();
        const ModalEntry* const front = FrontModal();
        if (!main || main->frame != &window || !front || front->dialog != dialog_) return;
        if (window.childAt(inWindow) != main->widget) return;
        const QPoint at = main->widget->mapFrom(&window, inWindow);
        const Rect area = PictureArea(*main);
        if (at.x() < area.left || at.x() >= area.right || at.y() < area.top || at.y() >= area.bottom) return;
        const Point place = ToSurface(*main, {at.x(), at.y()});
        TellOperatorAct({.kind = OperatorAct::Kind::kMouse, .value = 1, .place = {at.x(), at.y()}});
        SendMessage(dialog_, WM_LBUTTONDOWN, 0, static_cast<LPARAM>(MakeLong(place.x, place.y)));
    }

    HWND dialog_;
};

}  // namespace

void TakePicturePresses(HWND dialog)
{
    DialogData* const data = DialogOf(dialog);
    if (!data || !data->modal || !dialog->widget || !dialog->widget->parentWidget()) return;
    dialog->widget->setWindowModality(Qt::NonModal);
    data->pictureGate = std::make_shared<PictureGate>(dialog);
}

bool FrontTakesPicturePresses()
{
    const ModalEntry* const front = FrontModal();
    const DialogData* const data = front ? DialogOf(front->dialog) : nullptr;
    return data && data->pictureGate;
}

}  // namespace kelvo
