#include "platform/thread_priority.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>

#include <thread>

namespace kelvo {
namespace {

int PolicyOfThisThread()
{
    int policy = -1;
    sched_param ignored{};
    pthread_getschedparam(pthread_self(), &policy, &ignored);
    return policy;
}

TEST(ThreadPriority, GoesBeforeOthersAloneWhereTheUserMayAndSaysSo)
{
    const int before = PolicyOfThisThread();
    bool raised = false;
    int policy = -1;
    std::thread([&] {
        raised = RaiseThreadPriority();
        policy = PolicyOfThisThread();
    }).join();
    EXPECT_EQ(policy, raised ? SCHED_FIFO : before);
    EXPECT_EQ(PolicyOfThisThread(), before) << "other threads stay what they are";
}

}  // namespace
}  // namespace kelvo
