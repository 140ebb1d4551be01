// The thread that waits for a signal, and those that set it.
#include "platform/signal_socket.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

namespace kelvo {
namespace {

using namespace std::chrono_literals;

void WaitUntil(const std::atomic<int>& value, int wanted)
{
    for (int i = 0; i < 2000 && value != wanted; ++i) std::this_thread::sleep_for(1ms);
}

TEST(SignalThreads, OneSignalEndsOneThread)
{
    Event stop;
    Event signal;
    std::atomic<int> told = 0;
    const auto thread = SignalThread::Start(stop, signal, [&told] { ++told; });
    ASSERT_TRUE(thread);
    signal.Set();
    WaitUntil(told, 1);
    EXPECT_EQ(told, 1);
    EXPECT_FALSE(signal.Take()) << "it was taken";
    signal.Set();
    std::this_thread::sleep_for(20ms);
    EXPECT_EQ(told, 1);
    EXPECT_TRUE(signal.Take()) << "it stays for the next one";
}

TEST(SignalThreads, AStopEndsTheThreadWithoutAWordAndLeavesNothingBehind)
{
    Event stop;
    Event signal;
    std::atomic<int> told = 0;
    for (int round = 0; round < 50; ++round) {
        auto thread = SignalThread::Start(stop, signal, [&told] { ++told; });
        ASSERT_TRUE(thread);
        thread.reset();
        EXPECT_FALSE(stop.Take());
    }
    EXPECT_EQ(told, 0);
}

TEST(SignalThreads, AStopAfterTheSignalDoesNotStopTheNextThread)
{
    Event stop;
    Event signal;
    std::atomic<int> told = 0;
    for (int round = 1; round <= 20; ++round) {
        auto thread = SignalThread::Start(stop, signal, [&told] { ++told; });
        signal.Set();
        WaitUntil(told, round);
        thread.reset();
        EXPECT_EQ(told, round);
    }
}

TEST(SignalThreads, ASignalBeforeTheThreadWakesItAtOnceAndManyCountAsOne)
{
    Event stop;
    Event signal;
    std::vector<std::thread> others;
    for (int i = 0; i < 8; ++i) {
        others.emplace_back([&signal] {
            for (int k = 0; k < 100; ++k) signal.Set();
        });
    }
    for (std::thread& other : others) other.join();
    std::atomic<int> told = 0;
    const auto first = SignalThread::Start(stop, signal, [&told] { ++told; });
    WaitUntil(told, 1);
    EXPECT_EQ(told, 1);
    EXPECT_FALSE(signal.Take());
}

}  // namespace
}  // namespace kelvo
