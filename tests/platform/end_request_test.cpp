#include "platform/end_request.h"

#include "platform/box.h"
#include "platform/interrupt.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "window_fixture.h"

#include <QEventLoop>
#include <QGuiApplication>
#include <QSessionManager>

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <thread>

namespace kelvo {
namespace {

class EndRequest : public testing::Test {
  protected:
    EndRequest()
    {
        window = ShowRecordingWindow();
        onMessage = [](const SeenMessage& seen) {
            if (seen.message == WM_TIMER) PostQuitMessage(0);
        };
        WatchForEnd({.end = [this] { ++ends; }, .sessionEnds = [this] { ++sessionEnds; }});
    }
    ~EndRequest() override { ForgetEndWatch(); }

    // Until the message loop has handled all there is.
    void LetItRun() const
    {
        SetTimer(window, 1, 1000);
        RunMessageLoop(window);
        KillTimer(window, 1);
    }

    // The toolkit gives no session manager away; whoever is told of the session's end doesn't ask it for anything.
    static void EndSession()
    {
        alignas(QSessionManager) std::array<std::byte, sizeof(QSessionManager)> nobody{};
        qGuiApp->commitDataRequest(*reinterpret_cast<QSessionManager*>(nobody.data()));  // NOLINT
    }

    TestOperator op;
    HWND window = nullptr;
    int ends = 0;
    int sessionEnds = 0;
};

TEST_F(EndRequest, EachSignalAsksForTheEndOnceHoweverManyCome)
{
    EXPECT_FALSE(EndIsAsked());
    for (const int number : {SIGTERM, SIGHUP, SIGINT}) ASSERT_EQ(std::raise(number), 0);
    EXPECT_TRUE(EndIsAsked());
    EXPECT_EQ(ends, 0) << "not in the midst of a command";
    LetItRun();
    EXPECT_EQ(ends, 1);
    std::raise(SIGTERM);
    LetItRun();
    EXPECT_EQ(ends, 1);
}

TEST_F(EndRequest, ASignalThatAnotherThreadGetsReachesTheMainOne)
{
    const std::thread::id here = std::this_thread::get_id();
    std::thread::id told;
    WatchForEnd({.end = [&told] { told = std::this_thread::get_id(); }, .sessionEnds = [] {}});
    std::thread([] { pthread_kill(pthread_self(), SIGTERM); }).join();
    LetItRun();
    EXPECT_EQ(told, here);
}

TEST_F(EndRequest, ItComesInANestedLoopToo)
{
    QEventLoop nested;
    WatchForEnd({.end = [&nested] { nested.quit(); }, .sessionEnds = [] {}});
    std::raise(SIGHUP);
    nested.exec();  // returns
}

TEST_F(EndRequest, ABoxBehindItWaitsForNobody)
{
    const auto ask = [] { return MessageBox(nullptr, "Go on?", "Box", BoxIcon::kQuestion, BoxButtons::kYesNo); };
    EXPECT_EQ(ask(), Button::kYes) << "the operator's answer";
    std::raise(SIGTERM);
    testing::internal::CaptureStderr();
    EXPECT_EQ(ask(), Button::kNo);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Box: Go on?\n");
}

TEST_F(EndRequest, NotWhileACommandHandlesEvents)
{
    std::raise(SIGTERM);
    for (int i = 0; i < 3; ++i) HandlePendingEvents();
    EXPECT_EQ(ends, 0);
    LetItRun();
    EXPECT_EQ(ends, 1);
}

TEST_F(EndRequest, ALongCommandBreaksOffAsAtEscape)
{
    EXPECT_FALSE(EscapeCame());
    std::raise(SIGTERM);
    EXPECT_TRUE(EscapeCame());
    EXPECT_TRUE(EscapeCame());
}

TEST_F(EndRequest, ErrnoStays)
{
    errno = ENOENT;
    std::raise(SIGTERM);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(EndRequest, ASignalThatWasIgnoredStaysIgnored)
{
    ForgetEndWatch();
    auto* const before = std::signal(SIGHUP, SIG_IGN);  // as nohup starts a program
    WatchForEnd({.end = [this] { ++ends; }, .sessionEnds = [] {}});
    std::raise(SIGHUP);
    EXPECT_FALSE(EndIsAsked());
    ForgetEndWatch();
    EXPECT_EQ(std::signal(SIGHUP, before), SIG_IGN);
}

TEST_F(EndRequest, AfterwardsASignalDoesWhatItDidBefore)
{
    ForgetEndWatch();
    struct sigaction now {};
    sigaction(SIGTERM, nullptr, &now);
    EXPECT_EQ(now.sa_handler, SIG_DFL);
}

TEST_F(EndRequest, TheEndOfTheSessionIsToldBeforeItGoesOn)
{
    EndSession();
    EXPECT_EQ(sessionEnds, 1);
    EXPECT_EQ(ends, 0) << "it may be called off";
    EXPECT_FALSE(EndIsAsked());
}

TEST_F(EndRequest, TheSessionsLastWordIsTheEndWithoutClosingWindows)
{
    QEvent lastWord(QEvent::Quit);
    QCoreApplication::sendEvent(qApp, &lastWord);
    LetItRun();
    EXPECT_EQ(ends, 1);
    EXPECT_TRUE(Seen(WM_CLOSE).empty());
}

TEST_F(EndRequest, TheProgramEndsByTheSignalThatAskedForIt)
{
    EndBySignal();  // none has: it goes on
    const pid_t child = fork();
    if (child == 0) {
        std::raise(SIGHUP);
        EndBySignal();
        _exit(1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGHUP);
}

}  // namespace
}  // namespace kelvo
