#include "platform/thread_priority.h"

#include <pthread.h>
#include <sched.h>

namespace kelvo {

bool RaiseThreadPriority()
{
    const sched_param lowest{.sched_priority = 1};  // of the real-time ones
    return pthread_setschedparam(pthread_self(), SCHED_FIFO, &lowest) == 0;
}

}  // namespace kelvo
