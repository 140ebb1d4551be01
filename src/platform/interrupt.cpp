#include "platform/interrupt.h"

#include "platform/qt_window.h"

#include <QApplication>
#include <QEvent>
#include <QKeyEvent>

namespace kelvo {

namespace {

// Installed last, it is asked first.
class InputSieve : public QObject {
  public:
    InputSieve() { qApp->installEventFilter(this); }
    bool SawEscape() const { return sawEscape_; }

  protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        switch (event->type()) {
            case QEvent::KeyPress:
            case QEvent::ShortcutOverride:
                sawEscape_ = sawEscape_ || dynamic_cast<const QKeyEvent&>(*event).key() == Qt::Key_Escape;
                return true;
            case QEvent::Close:
                event->ignore();
                return true;
            case QEvent::Shortcut:
            case QEvent::MouseButtonPress:
            case QEvent::MouseButtonRelease:
            case QEvent::MouseButtonDblClick:
            case QEvent::MouseMove:
            case QEvent::Wheel:
            case QEvent::ContextMenu:
            case QEvent::TouchBegin:
            case QEvent::TouchUpdate:
            case QEvent::TouchEnd:
            case QEvent::DragEnter:
            case QEvent::DragMove:
            case QEvent::Drop:
                return true;
            default:
                return false;  // the release of a key too: it was pressed before
        }
    }

  private:
    bool sawEscape_ = false;
};

}  // namespace

bool EscapeCame()
{
    if (!qApp) return false;
    const HoldMessages hold;
    ShowPainted();
    const InputSieve sieve;
    QCoreApplication::processEvents(QEventLoop::ExcludeSocketNotifiers);
    return sieve.SawEscape();
}

}  // namespace kelvo
