#include "batch/batch_end.h"

#include <atomic>
#include <cstddef>

namespace kelvo {

namespace {

// The signal that came, or 0. Set by its handler, read by any thread.
std::atomic<int> interruptedBy = 0;
static_assert(std::atomic<int>::is_always_lock_free);

void Note(int signal)
{
    interruptedBy = signal;
}

}  // namespace

InterruptWatch::InterruptWatch()
{
    interruptedBy = 0;
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        struct sigaction& former = former_.at(i);
        if (sigaction(kSignals.at(i), nullptr, &former) != 0 || former.sa_handler == SIG_IGN) continue;
        struct sigaction watching = {};
        watching.sa_handler = Note;
        watching.sa_flags = static_cast<int>(SA_RESETHAND);
        sigemptyset(&watching.sa_mask);
        watches_.at(i) = sigaction(kSignals.at(i), &watching, nullptr) == 0;
    }
}

InterruptWatch::~InterruptWatch()
{
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        if (watches_.at(i)) sigaction(kSignals.at(i), &former_.at(i), nullptr);
    }
    if (const int signal = interruptedBy.exchange(0)) std::raise(signal);
}

bool Interrupted()
{
    return interruptedBy != 0;
}

void AnswerInterrupt()
{
    interruptedBy = 0;
}

}  // namespace kelvo
