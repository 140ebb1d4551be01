#include "platform/end_request.h"

#include "platform/front.h"
#include "platform/interrupt.h"
#include "platform/signal_socket.h"

#include <QGuiApplication>
#include <QSessionManager>
#include <QSocketNotifier>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <memory>
#include <utility>

namespace kelvo {

namespace {

constexpr std::array kSignals = {SIGTERM, SIGHUP, SIGINT};

// What a handler may touch, on whichever thread it runs.
std::atomic<int> signalThatCame = 0;
std::atomic<Event*> signalCame = nullptr;
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<Event*>::is_always_lock_free);

extern "C" void NoteSignal(int number)
{
    const int before = errno;
    signalThatCame = number;
    if (Event* const event = signalCame) event->Set();
    errno = before;
}

class Watcher : public QObject {
  public:
    explicit Watcher(EndWatch watch) : watch_(std::move(watch)), notifier_(event_.Descriptor(), QSocketNotifier::Read)
    {
        QObject::connect(&notifier_, &QSocketNotifier::activated, this, [this] {
            if (event_.Take()) PostEnd();
        });
        // At once: the session goes on to end when this returns.
        QObject::connect(
            qGuiApp, &QGuiApplication::commitDataRequest, this, [this] { TellSessionEnds(); }, Qt::DirectConnection);
        qGuiApp->installEventFilter(this);
        signalCame = &event_;
        for (std::size_t i = 0; i < kSignals.size(); ++i) Take(kSignals[i], before_[i]);
    }

    ~Watcher() override
    {
        for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before_[i], nullptr);
        signalCame = nullptr;
    }
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

  protected:
    // The session manager's last word. The toolkit's own answer would be to close windows, which may ask.
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched != qGuiApp || event->type() != QEvent::Quit) return false;
        PostEnd();
        return true;
    }

  private:
    static void Take(int number, struct sigaction& before)
    {
        struct sigaction ours {};
        ours.sa_handler = NoteSignal;
        ours.sa_flags = SA_RESTART;  // nothing that waits for the system is to fail
        sigemptyset(&ours.sa_mask);
        sigaction(number, nullptr, &before);
        if (before.sa_handler != SIG_IGN) sigaction(number, &ours, nullptr);
    }

    void PostEnd()
    {
        if (std::exchange(endPosted_, true)) return;
        PostAction([end = watch_.end] { end(); });
    }

    void TellSessionEnds()
    {
        if (InTheMidstOfACommand()) {
            PostAction([sessionEnds = watch_.sessionEnds] { sessionEnds(); });
        } else {
            watch_.sessionEnds();
        }
    }

    EndWatch watch_;
    Event event_;
    QSocketNotifier notifier_;
    bool endPosted_ = false;
    std::array<struct sigaction, kSignals.size()> before_{};
};

std::unique_ptr<Watcher> watcher;

}  // namespace

void WatchForEnd(EndWatch watch)
{
    watcher.reset();
    watcher = std::make_unique<Watcher>(std::move(watch));
}

bool EndIsAsked()
{
    return signalThatCame != 0;
}

void EndBySignal()
{
    const int number = signalThatCame;
    if (!watcher || number == 0) return;
    std::signal(number, SIG_DFL);
    std::raise(number);
}

void ForgetEndWatch()
{
    watcher.reset();
    signalThatCame = 0;
}

}  // namespace kelvo
