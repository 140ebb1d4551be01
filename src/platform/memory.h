// Memory for frames, lists and bitmaps: one allocating operation, so that every out-of-memory message can be reached by
// a test.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <string_view>
#include <vector>

namespace kelvo {

// True if a block of that many bytes may be had now. A block of 2 GB or more is refused. Called right before each
// resize.
bool MemoryAvailable(std::size_t bytes);

// How often MemoryAvailable was called since the start: a frame on its way doesn't ask.
std::int64_t MemoryRequests();

// Gives block exactly count elements, zero-filled; false (block freed) where memory is refused.
template <typename T>
bool AllocateBlock(std::vector<T>& block, std::size_t count)
{
    std::vector<T>().swap(block);
    if (count > static_cast<std::size_t>(-1) / sizeof(T) || !MemoryAvailable(count * sizeof(T))) return false;
    try {
        block.resize(count);
    } catch (const std::exception&) {
        return false;
    }
    return true;
}

// The bytes that may be taken now without making the machine swap: a share of what the system calls available. Section
// Memory of platform.ini has the share in percent (key Share, 1 to 100, 25 where it is missing) and may set a limit in
// bytes beside it (key Limit; 0: none).
std::uint64_t AvailablePhysicalMemory();
// MemAvailable of a text as /proc/meminfo has it, in bytes; nullopt where it isn't told.
std::optional<std::uint64_t> MemAvailableOf(std::string_view memInfo);

// The n-th call of MemoryAvailable from now fails, once (1: the next). 0: none fails.
void FailAllocation(int n);

}  // namespace kelvo
