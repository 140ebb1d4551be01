#include "display/gray_lookup.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "display/gray_lookup.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <bit>
#include <cstring>

// Compiled once for each instruction set; the machine picks one at the first call.
HWY_BEFORE_NAMESPACE();
namespace kelvo::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

// The gray values of eight counts in the lower half of a register. The counts come four to a load: loads are what the
// look-ups themselves need most.
HWY_INLINE hn::Vec<hn::Full128<std::uint64_t>> LookUpEight(const std::uint16_t* counts, const std::uint8_t* table)
{
    static_assert(std::endian::native == std::endian::little, "the first count is in the lowest bits");
    std::uint64_t low = 0;
    std::uint64_t high = 0;
    std::memcpy(&low, counts, sizeof low);
    std::memcpy(&high, counts + 4, sizeof high);

    const hn::Full128<std::uint8_t> bytes;
    auto packed = hn::Zero(bytes);
    packed = hn::InsertLane(packed, 0, table[low & 0xFFFF]);
    packed = hn::InsertLane(packed, 1, table[(low >> 16) & 0xFFFF]);
    packed = hn::InsertLane(packed, 2, table[(low >> 32) & 0xFFFF]);
    packed = hn::InsertLane(packed, 3, table[low >> 48]);
    packed = hn::InsertLane(packed, 4, table[high & 0xFFFF]);
    packed = hn::InsertLane(packed, 5, table[(high >> 16) & 0xFFFF]);
    packed = hn::InsertLane(packed, 6, table[(high >> 32) & 0xFFFF]);
    packed = hn::InsertLane(packed, 7, table[high >> 48]);
    return hn::BitCast(hn::Full128<std::uint64_t>(), packed);
}

// The look-ups stay scalar, since a gather of single bytes is slower. What costs beside them is putting the bytes away:
// here they go into registers, in two chains side by side, and 16 are stored at once.
std::size_t LookUpBlocks(const std::uint16_t* HWY_RESTRICT counts, std::size_t size,
                         const std::uint8_t* HWY_RESTRICT table, std::uint8_t* HWY_RESTRICT grays)
{
    const hn::Full128<std::uint8_t> bytes;
    const hn::Full128<std::uint64_t> halves;
    std::size_t i = 0;
    for (; i + 16 <= size; i += 16) {
        const auto first = LookUpEight(counts + i, table);
        const auto second = LookUpEight(counts + i + 8, table);
        hn::StoreU(hn::BitCast(bytes, hn::InterleaveLower(halves, first, second)), bytes, grays + i);
    }
    return i;
}

#else

std::size_t LookUpBlocks(const std::uint16_t*, std::size_t, const std::uint8_t*, std::uint8_t*)
{
    return 0;
}

#endif

void LookUp(const std::uint16_t* HWY_RESTRICT counts, std::size_t size, const std::uint8_t* HWY_RESTRICT table,
            std::uint8_t* HWY_RESTRICT grays)
{
    for (std::size_t i = LookUpBlocks(counts, size, table, grays); i < size; ++i) grays[i] = table[counts[i]];
}

}  // namespace kelvo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvo {

HWY_EXPORT(LookUp);

void FillGrayTable(GrayTable& table, std::span<const std::uint8_t> lut)
{
    constexpr std::size_t kCounts = 32768;  // of 0 and above; the other half of the patterns are negative
    const std::size_t direct = std::min(lut.size(), kCounts);
    std::copy_n(lut.begin(), direct, table.begin());
    std::fill(table.begin() + static_cast<std::ptrdiff_t>(direct), table.begin() + kCounts, lut.back());
    std::fill(table.begin() + kCounts, table.end(), lut.front());
}

void LookUpGrays(std::span<const std::int16_t> counts, const GrayTable& table, std::span<std::uint8_t> grays)
{
    // Signed and unsigned of one size may share storage: the pattern is the index.
    const auto* patterns = reinterpret_cast<const std::uint16_t*>(counts.data());
    HWY_DYNAMIC_DISPATCH(LookUp)(patterns, counts.size(), table.data(), grays.data());
}

}  // namespace kelvo
#endif
