#include "platform/interrupt.h"

#include "platform/end_request.h"
#include "platform/faults.h"
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
        const QEvent::Type type = event->type();
        if (!IsOperatorsInput(type)) return false;
        if (type == QEvent::KeyPress || type == QEvent::ShortcutOverride) {
            sawEscape_ = sawEscape_ || dynamic_cast<const QKeyEvent&>(*event).key() == Qt::Key_Escape;
        }
        if (type == QEvent::Close) event->ignore();
        return true;
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
    return sieve.SawEscape() || EndIsAsked() || FaultIsSet("escape");
}

}  // namespace kelvo
