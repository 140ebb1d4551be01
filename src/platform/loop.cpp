// The program's turns: posted messages and actions, timers, the idle hook, and the moment at which virtual time jumps.
//
// Everything is run from posted events, never from a timer's or the dispatcher's own slot: so it works the same inside
// the loop of a dialog that one of them opened.

#include "platform/application.h"
#include "platform/clock.h"
#include "platform/front.h"
#include "platform/interrupt.h"
#include "platform/profile.h"
#include "platform/qt_window.h"
#include "platform/timers.h"
#include "platform/window.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QBasicTimer>
#include <QEvent>

#include <algorithm>
#include <array>
#include <deque>
#include <limits>
#include <memory>
#include <utility>

namespace kelvo {

namespace {

const auto kTakeItem = static_cast<QEvent::Type>(QEvent::User + 1);
const auto kTakeTurn = static_cast<QEvent::Type>(QEvent::User + 2);
const auto kTakeFocus = static_cast<QEvent::Type>(QEvent::User + 4);
const auto kTakePaints = static_cast<QEvent::Type>(QEvent::User + 3);

constexpr std::int64_t kFlushAfterUs = 1'000'000;
constexpr std::int64_t kShortestTurnUs = 1000;

struct PostedMessage {
    HWND window = nullptr;
    std::uint64_t serial = 0;
    std::uint32_t message = 0;
    WPARAM wParam = 0;
    LPARAM lParam = 0;
};
// A posted message, or an action if there is one.
struct Item {
    PostedMessage message;
    std::function<void()> action;
};

class Turns : public QObject {
  public:
    void Start()
    {
        // Window-system events may be queued when the dispatcher says that it is about to block.
        QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
                         [this] { AboutToBlock(); });
        qApp->installEventFilter(this);
        PostItemEvents();  // for what was posted before there was an application
    }

    void Post(Item item)
    {
        items_.push_back(std::move(item));
        if (qApp) QCoreApplication::postEvent(this, new QEvent(kTakeItem));
    }

    void PostPaints()
    {
        if (std::exchange(paintsPosted_, true) || !qApp) return;
        QCoreApplication::postEvent(this, new QEvent(kTakePaints), Qt::LowEventPriority);
    }

    void PostFocus() { QCoreApplication::postEvent(this, new QEvent(kTakeFocus)); }

    void PostQuit(int code)
    {
        quitPosted_ = true;
        quitCode_ = code;
        quitDepth_ = ModalDepth();
        Post({{}, [this] { Quit(); }});
    }

    void SetHook(std::function<void()> hook, IdleUser user)
    {
        hooks_.at(static_cast<std::size_t>(user)) = std::move(hook);
        ++events_;  // what was idle without the hook is to be asked anew
        if (QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance()) dispatcher->wakeUp();
    }

    void ModalHasEnded()
    {
        if (quitWaits_) Post({{}, [this] { Quit(); }});
    }

    int RunLoop()
    {
        const int code = QApplication::exec();
        quitPosted_ = false;
        return code;
    }

    void Hold() { ++held_; }
    void Release()
    {
        if (--held_ == 0) PostItemEvents();
    }

    bool IsHeld() const { return held_ > 0; }
    bool HookIsSet() const
    {
        const auto isSet = [this](IdleUser user) {
            return static_cast<bool>(hooks_.at(static_cast<std::size_t>(user)));
        };
        return isSet(IdleUser::kInFront) || isSet(IdleUser::kBeside);
    }
    bool QuitIsPosted() const { return quitPosted_; }

  protected:
    bool eventFilter(QObject* /*watched*/, QEvent* /*event*/) override
    {
        ++events_;
        return false;
    }

    bool event(QEvent* event) override
    {
        if (event->type() == kTakeItem) {
            TakeItem();
        } else if (event->type() == kTakeTurn) {
            turnPosted_ = false;
            if (held_ == 0) TakeTurn();
        } else if (event->type() == kTakePaints) {
            paintsPosted_ = false;
            TakePaints();
        } else if (event->type() == kTakeFocus) {
            if (held_ == 0) TellFocusChange();
        } else if (event->type() == QEvent::Timer) {
            alarm_.stop();  // that it came is enough: the loop asks for a turn when it is quiet
        } else {
            return QObject::event(event);
        }
        return true;
    }

  private:
    // One event for each item at least; one too many does nothing.
    void PostItemEvents()
    {
        for (std::size_t i = 0; i < items_.size(); ++i) QCoreApplication::postEvent(this, new QEvent(kTakeItem));
        if (std::exchange(paintsPosted_, false)) PostPaints();
        PostFocus();
    }

    // Twice in a row with no event between: only then nothing is queued on any side.
    void AboutToBlock()
    {
        ShowPainted();
        if (held_ > 0 || turnPosted_ || events_ == eventsAtRest_) return;
        if (events_ != std::exchange(eventsAtLastBlock_, events_)) {
            QAbstractEventDispatcher::instance()->wakeUp();
            return;
        }
        turnPosted_ = true;
        QCoreApplication::postEvent(this, new QEvent(kTakeTurn));
    }

    void TakeItem()
    {
        if (held_ > 0 || items_.empty()) return;
        const Item item = std::move(items_.front());
        items_.pop_front();
        if (item.action) {
            item.action();
        } else if (const PostedMessage& m = item.message; IsWindow(m.window) && m.window->serial == m.serial) {
            SendMessage(m.window, m.message, m.wParam, m.lParam);
        }
    }

    void TakePaints()
    {
        for (const WindowKind kind : {WindowKind::kMain, WindowKind::kChild, WindowKind::kControl}) {
            for (HWND window : WindowsOfKind(kind)) {
                if (IsWindow(window) && window->paintDue) UpdateWindow(window);
            }
        }
    }

    // Loops that were begun after the quit was posted end first: a box on the way out is still read.
    void Quit()
    {
        quitWaits_ = ModalDepth() > quitDepth_;
        if (quitWaits_) return;
        if (!items_.empty()) {
            Post({{}, [this] { Quit(); }});
            return;
        }
        QCoreApplication::exit(quitCode_);
    }

    // One thing a turn, the most urgent first. If there was none, the program rests until an event comes.
    void TakeTurn()
    {
        if (FlushDue()) return;
        if (FireTimer()) return;
        AskHook();
        if (owed_ > 0 || !items_.empty()) return;
        WaitForTimer();
    }

    bool FlushDue()
    {
        if (!ProfilesPending()) {
            flushAtUs_.reset();
            return false;
        }
        const std::int64_t nowUs = TickUs();
        if (!flushAtUs_) flushAtUs_ = nowUs + kFlushAfterUs;
        if (nowUs < *flushAtUs_) return false;
        flushAtUs_ = nowUs + kFlushAfterUs;  // a failed write is tried again
        FlushProfiles();
        return true;
    }

    // Timers come before the hook, but each only once: one that is always due must not keep the hook from its turn.
    bool FireTimer()
    {
        if (owed_ == 0 && !std::exchange(hooksTurn_, false)) owed_ = DueTimerCount();
        if (owed_ == 0) return false;
        const std::optional<DueTimer> due = TakeDueTimer();
        if (!due) {
            owed_ = 0;
            return false;
        }
        hooksTurn_ = --owed_ == 0;
        if (IsWindow(due->window)) {
            SendMessage(due->window, WM_TIMER, due->id, 0);
        } else {
            KillTimer(due->window, due->id);
        }
        return true;
    }

    void AskHook()
    {
        hooksTurn_ = false;
        for (const auto& hook : std::array(hooks_)) {  // one may set another
            if (hook) hook();
        }
        owed_ = DueTimerCount();
        // A timer that is set to 0 ms again and again would let virtual time stand still for all others.
        if (owed_ > 0 && items_.empty() && TickUs() == askedAtUs_) AdvanceVirtualClock(kShortestTurnUs);
        askedAtUs_ = TickUs();
    }

    void WaitForTimer()
    {
        std::optional<std::int64_t> nextUs = NextTimerDueUs();
        if (flushAtUs_) nextUs = std::min(nextUs.value_or(*flushAtUs_), *flushAtUs_);
        alarm_.stop();
        if (!nextUs) {
            eventsAtRest_ = events_;
            return;
        }
        const std::int64_t waitUs = std::max<std::int64_t>(*nextUs - TickUs(), 0);
        if (ClockIsVirtual()) {
            AdvanceVirtualClock(waitUs);
            return;
        }
        eventsAtRest_ = events_;
        const std::int64_t waitMs = std::min<std::int64_t>((waitUs + 999) / 1000, std::numeric_limits<int>::max());
        alarm_.start(static_cast<int>(waitMs), Qt::PreciseTimer, this);
    }

    std::deque<Item> items_;
    bool paintsPosted_ = false;
    bool turnPosted_ = false;
    int held_ = 0;

    std::uint64_t events_ = 1;  // seen by the application
    std::uint64_t eventsAtLastBlock_ = 0;
    std::uint64_t eventsAtRest_ = 0;  // with no event since then there is nothing to do

    std::array<std::function<void()>, 3> hooks_;  // by IdleUser
    std::size_t owed_ = 0;                        // timers that fire before the hook's next turn
    bool hooksTurn_ = false;                      // they have fired
    std::int64_t askedAtUs_ = -1;
    std::optional<std::int64_t> flushAtUs_;
    QBasicTimer alarm_;

    bool quitPosted_ = false;
    int quitCode_ = 0;
    std::size_t quitDepth_ = 0;
    bool quitWaits_ = false;
};

// Outlives the application object: windows may post while the process ends.
std::unique_ptr<Turns>& TurnsOwner()
{
    static auto turns = std::make_unique<Turns>();
    return turns;
}

Turns& TheTurns()
{
    return *TurnsOwner();
}

}  // namespace

void StartTurns()
{
    TheTurns().Start();
}

bool IdleHookIsSet()
{
    return TheTurns().HookIsSet();
}

bool QuitPosted()
{
    return TheTurns().QuitIsPosted();
}

void PostPaints()
{
    TheTurns().PostPaints();
}

void NoteFocusChange()
{
    TheTurns().PostFocus();
}

void ModalHasEnded()
{
    TheTurns().ModalHasEnded();
}

bool InTheMidstOfACommand()
{
    return TheTurns().IsHeld();
}

HoldMessages::HoldMessages()
{
    TheTurns().Hold();
}

HoldMessages::~HoldMessages()
{
    TheTurns().Release();
}

void SetIdleHook(std::function<void()> hook, IdleUser user)
{
    TheTurns().SetHook(std::move(hook), user);
}

void PostAction(std::function<void()> action)
{
    if (action) TheTurns().Post({{}, std::move(action)});
}

void PostMessage(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    if (!IsWindow(window)) return;
    TheTurns().Post({{window, window->serial, message, wParam, lParam}, {}});
}

void PostQuitMessage(int exitCode)
{
    TheTurns().PostQuit(exitCode);
}

int RunMessageLoop(HWND /*mainWindow*/)
{
    const int code = TheTurns().RunLoop();
    FlushProfiles();
    return code;
}

void HandlePendingEvents()
{
    if (!qApp) return;
    const HoldMessages hold;
    ShowPainted();
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void ForgetTurns()
{
    TurnsOwner() = std::make_unique<Turns>();
}

}  // namespace kelvo
