// How long a camera that was lost is left alone before each try to have it back.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace kelvo {

// Of the n-th try, from 0: soon at first, since most cables are back at once, and never rarer than each 5 s.
constexpr std::int64_t RetryDelayMs(std::size_t n)
{
    constexpr std::array<std::int64_t, 5> kDelaysMs = {500, 1000, 2000, 4000, 5000};
    return n < kDelaysMs.size() ? kDelaysMs[n] : kDelaysMs.back();
}

}  // namespace kelvo
