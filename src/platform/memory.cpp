#include "platform/memory.h"

#include <cstdint>

namespace kelvo {

namespace {

constexpr std::uint64_t kRefusedBytes = std::uint64_t{1} << 31;

int callsUntilFailure = 0;  // 0: none is ordered

bool FailureIsDue()
{
    return callsUntilFailure > 0 && --callsUntilFailure == 0;
}

}  // namespace

bool MemoryAvailable(std::size_t bytes)
{
    return !FailureIsDue() && bytes < kRefusedBytes;
}

void FailAllocation(int n)
{
    callsUntilFailure = n;
}

}  // namespace kelvo
