// The signal from outside, as the dialog that waits for it gets it: with a thread under the real clock, and without one
// under the virtual.
#include "record/external_signal.h"

#include "platform/clock.h"
#include "platform/signal_socket.h"
#include "platform/window.h"
#include "state/windows_write.h"
#include "support/operator.h"
#include "support/temp_directory.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

namespace kelvo {
namespace {

int messages = 0;

LRESULT CountingProc(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    if (message == ExternalSignalMessage) ++messages;
    return DefWindowProc(window, message, wParam, lParam);
}

class ExternalSignal : public testing::TestWithParam<bool> {
  protected:
    ExternalSignal()
    {
        messages = 0;
        setenv("XDG_RUNTIME_DIR", directory.Path().c_str(), 1);
        std::filesystem::permissions(directory.Path(), std::filesystem::perms::owner_all);
        SetDefaultDir(directory.Path());
        if (!GetParam()) ResetClock();
        WindowClass signals;
        signals.name = "SIGNALS";
        signals.procedure = CountingProc;
        EXPECT_TRUE(RegisterWindowClass(signals));
        window = CreateMainWindow("SIGNALS", "signals");
        InitExternalSignal();
    }
    // What has come by now, and what a thread brings in a while.
    static int Messages(int expected)
    {
        for (int i = 0; i < 500; ++i) {
            QCoreApplication::processEvents();
            if (messages >= expected && expected > 0) break;
            if (expected == 0 && i > 20) break;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return messages;
    }
    static bool FromOutside() { return SendSignal(SignalSocketPath(DefaultDir)); }

    TestOperator op;
    TempDirectory directory;
    HWND window = nullptr;
};
INSTANTIATE_TEST_SUITE_P(BothClocks, ExternalSignal, testing::Bool(),
                         [](const auto& clock) { return clock.param ? "Virtual" : "Real"; });

TEST_P(ExternalSignal, IsOneMessageForOneWait)
{
    EXPECT_GE(ExternalSignalMessage, 0xC000U);
    const ExternalThreadHandle thread = StartExternalThread(window);
    ASSERT_NE(thread, 0);
    EXPECT_EQ(ExternalThread, thread);
    EXPECT_EQ(Messages(0), 0);
    EXPECT_TRUE(FromOutside());
    EXPECT_EQ(Messages(1), 1);
    EXPECT_TRUE(FromOutside());
    EXPECT_EQ(Messages(0), 1) << "nothing waits for further signals";
    StopExternalThread(thread);
    EXPECT_EQ(ExternalThread, 0);
}

TEST_P(ExternalSignal, StaysUntilTheNextWaitAndSeveralCountAsOne)
{
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(FromOutside());
    EXPECT_TRUE(SendExternalSignal());
    EXPECT_EQ(Messages(0), 0);
    const ExternalThreadHandle thread = StartExternalThread(window);
    EXPECT_EQ(Messages(1), 1);
    StopExternalThread(thread);
    const ExternalThreadHandle next = StartExternalThread(window);
    EXPECT_EQ(Messages(0), 1) << "the former was taken";
    StopExternalThread(next);
}

TEST_P(ExternalSignal, AStopHasTheLastWord)
{
    const ExternalThreadHandle thread = StartExternalThread(window);
    StopExternalThread(thread);
    EXPECT_TRUE(FromOutside());
    EXPECT_EQ(Messages(0), 0);
}

TEST_P(ExternalSignal, OneThreadAtATimeAndNoOtherHandleStopsIt)
{
    const ExternalThreadHandle thread = StartExternalThread(window);
    EXPECT_EQ(StartExternalThread(window), 0);
    StopExternalThread(0);
    StopExternalThread(thread + 1);
    EXPECT_EQ(ExternalThread, thread);
    StopExternalThread(thread);
}

TEST_P(ExternalSignal, InitAgainKeepsWhatStands)
{
    const std::uint32_t number = ExternalSignalMessage;
    const ExternalThreadHandle thread = StartExternalThread(window);
    InitExternalSignal();
    EXPECT_EQ(ExternalSignalMessage, number);
    EXPECT_TRUE(ExternalSignalCanCome());
    EXPECT_TRUE(SendExternalSignal());
    EXPECT_EQ(Messages(1), 1);
    StopExternalThread(thread);
}

TEST_P(ExternalSignal, TheExitStopsTheThreadAndTakesTheSocketAway)
{
    StartExternalThread(window);
    CloseExternalSignal();
    EXPECT_EQ(ExternalThread, 0);
    EXPECT_FALSE(ExternalSignalCanCome());
    EXPECT_FALSE(SendExternalSignal());
    EXPECT_FALSE(FromOutside());
    EXPECT_EQ(StartExternalThread(window), 0);
}

}  // namespace
}  // namespace kelvo
