#include "batch/batch_end.h"

#include <atomic>

namespace kelvo {

namespace {

// Set by a signal's handler, read by any thread.
std::atomic<bool> interrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free);

void Note(int /*signal*/)
{
    interrupted = true;
}

}  // namespace

InterruptWatch::InterruptWatch()
{
    interrupted = false;
    if (sigaction(SIGINT, nullptr, &former_) != 0 || former_.sa_handler == SIG_IGN) return;
    struct sigaction watching = {};
    watching.sa_handler = Note;
    watching.sa_flags = static_cast<int>(SA_RESETHAND);
    sigemptyset(&watching.sa_mask);
    watches_ = sigaction(SIGINT, &watching, nullptr) == 0;
}

InterruptWatch::~InterruptWatch()
{
    if (!watches_) return;
    sigaction(SIGINT, &former_, nullptr);
    if (interrupted.exchange(false)) std::raise(SIGINT);
}

bool Interrupted()
{
    return interrupted;
}

}  // namespace kelvo
