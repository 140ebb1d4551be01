// Memory for frames, lists and bitmaps: one allocating operation, so that every out-of-memory message can be reached by
// a test.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <vector>

namespace kelvo {

// True if a block of that many bytes may be had now. A block of 2 GB or more is refused. Called right before each
// resize.
bool MemoryAvailable(std::size_t bytes);

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

// Bytes of physical memory that may be used for host frames without making the machine swap.
std::uint64_t AvailablePhysicalMemory();

// The n-th call of MemoryAvailable from now fails, once (1: the next). 0: none fails.
void FailAllocation(int n);

}  // namespace kelvo
