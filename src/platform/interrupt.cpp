#include "platform/interrupt.h"

#include "platform/end_request.h"
#include "platform/faults.h"
#include "platform/qt_window.h"

#include <QApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QPointer>
#include <QWindow>

#include <utility>

namespace kelvo {

namespace {

// Drops the operator's input but for one window's. Installed last, it is asked first.
class InputSieve : public QObject {
  public:
    explicit InputSieve(const QWidget* spared = nullptr) : spared_(spared) { qApp->installEventFilter(this); }
    bool SawEscape() const { return sawEscape_; }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const QEvent::Type type = event->type();
        if (!IsOperatorsInput(type) || IsSpared(watched)) return false;
        if (type == QEvent::KeyPress || type == QEvent::ShortcutOverride) {
            sawEscape_ = sawEscape_ || dynamic_cast<const QKeyEvent&>(*event).key() == Qt::Key_Escape;
        }
        if (type == QEvent::Close) event->ignore();
        return true;
    }

  private:
    bool IsSpared(const QObject* watched) const
    {
        if (!spared_) return false;
        if (watched == spared_->windowHandle()) return true;
        const auto* const widget = dynamic_cast<const QWidget*>(watched);
        return widget && widget->window() == spared_;
    }

    QPointer<const QWidget> spared_;
    bool sawEscape_ = false;
};

QWidget* WidgetOf(HWND dialog)
{
    return IsWindow(dialog) ? dialog->widget.data() : nullptr;
}

}  // namespace

bool EscapeCame()
{
    if (!qApp) return false;
    const HoldMessages hold;
    ShowPainted();
    const InputSieve sieve;
    QCoreApplication::processEvents(QEventLoop::ExcludeSocketNotifiers);
    return sieve.SawEscape() || EndIsAsked() || FaultIsSet("escape");
}

void LookUpFor(HWND dialog)
{
    if (!qApp) return;
    const HoldMessages hold;
    ShowPainted();
    const InputSieve sieve(WidgetOf(dialog));
    QCoreApplication::processEvents(QEventLoop::ExcludeSocketNotifiers);
}

bool WaitFor(HWND dialog)
{
    if (!qApp || QuitPosted() || EndIsAsked()) return false;
    ModalEntry entry;
    entry.widget = WidgetOf(dialog);
    entry.dialog = dialog;
    const ModalScope inFront(std::move(entry));
    const InputSieve sieve(WidgetOf(dialog));
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return true;
}

}  // namespace kelvo
