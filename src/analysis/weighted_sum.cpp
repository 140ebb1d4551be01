#include "analysis/weighted_sum.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "analysis/weighted_sum.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

// Compiled once for each instruction set; the machine picks one at the first call.
HWY_BEFORE_NAMESPACE();
namespace kelvo::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR && !HWY_HAVE_SCALABLE

using Real = hn::ScalableTag<double>;
using Whole = hn::ScalableTag<std::int32_t>;
using Half = hn::Half<Whole>;  // as many as Real
using Counts = hn::Rebind<std::int16_t, Whole>;

struct Constants {
    explicit Constants(const Weights& weights)
        : c1(hn::Set(Real(), double{weights.c1})),
          c2(hn::Set(Real(), double{weights.c2})),
          c3(hn::Set(Real(), double{weights.c3}))
    {
    }
    hn::Vec<Real> c1, c2, c3;
};

// Where a product joins the sum before it is rounded (a fused operation) nothing changes: it is exact.
template <bool kBoth>
HWY_INLINE hn::Vec<Half> SumOf(const Constants& constants, hn::Vec<Half> count1, hn::Vec<Half> count2)
{
    const Real d;
    const auto first = hn::PromoteTo(d, count1);
    if constexpr (!kBoth) return hn::DemoteTo(Half(), hn::MulAdd(first, constants.c1, constants.c3));
    const auto both = hn::MulAdd(hn::PromoteTo(d, count2), constants.c2, hn::Mul(first, constants.c1));
    return hn::DemoteTo(Half(), hn::Add(both, constants.c3));
}

// Whole blocks of samples whose sums 32 bits hold; wrapped counts those that left 16 bits. Returns how far it came.
template <bool kBoth>
std::size_t SumBlocks(const Weights& weights, const std::int16_t* HWY_RESTRICT source1,
                      const std::int16_t* HWY_RESTRICT source2, std::int16_t* HWY_RESTRICT result, std::size_t size,
                      std::int64_t& wrapped)
{
    const Whole whole;
    const Half half;
    const hn::RebindToUnsigned<Whole> patterns;
    const hn::RebindToUnsigned<Counts> lowPatterns;
    const Constants constants(weights);
    auto left = hn::Zero(whole);
    std::size_t i = 0;
    for (; i + hn::Lanes(whole) <= size; i += hn::Lanes(whole)) {
        const auto first = hn::PromoteTo(whole, hn::LoadU(Counts(), source1 + i));
        const auto second = hn::PromoteTo(whole, hn::LoadU(Counts(), source2 + i));
        const auto lower = SumOf<kBoth>(constants, hn::LowerHalf(half, first), hn::LowerHalf(half, second));
        const auto upper = SumOf<kBoth>(constants, hn::UpperHalf(half, first), hn::UpperHalf(half, second));
        const auto sum = hn::Combine(whole, upper, lower);
        const auto stored = hn::BitCast(Counts(), hn::TruncateTo(lowPatterns, hn::BitCast(patterns, sum)));
        hn::StoreU(stored, Counts(), result + i);
        left = hn::Sub(left, hn::VecFromMask(whole, hn::Ne(hn::PromoteTo(whole, stored), sum)));
    }
    wrapped += hn::GetLane(hn::SumOfLanes(whole, left));
    return i;
}

#else

template <bool kBoth>
std::size_t SumBlocks(const Weights&, const std::int16_t*, const std::int16_t*, std::int16_t*, std::size_t,
                      std::int64_t&)
{
    return 0;
}

#endif

template <bool kBoth>
std::int64_t Sum(const Weights& weights, bool narrow, const std::int16_t* source1, const std::int16_t* source2,
                 std::int16_t* result, std::size_t size)
{
    std::int64_t wrapped = 0;
    std::size_t i = 0;
    if (narrow) i = SumBlocks<kBoth>(weights, source1, source2, result, size, wrapped);
    for (; i < size; ++i) {
        double sum = double{weights.c1} * source1[i];
        if constexpr (kBoth) sum += double{weights.c2} * source2[i];
        sum += double{weights.c3};
        result[i] = StoredSum(sum);
        wrapped += LeavesSixteenBits(sum) ? 1 : 0;
    }
    return wrapped;
}

std::int64_t SumBoth(const Weights& weights, bool narrow, const std::int16_t* source1, const std::int16_t* source2,
                     std::int16_t* result, std::size_t size)
{
    return Sum<true>(weights, narrow, source1, source2, result, size);
}

std::int64_t SumOne(const Weights& weights, bool narrow, const std::int16_t* source1, std::int16_t* result,
                    std::size_t size)
{
    return Sum<false>(weights, narrow, source1, source1, result, size);
}

}  // namespace kelvo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvo {

HWY_EXPORT(SumBoth);
HWY_EXPORT(SumOne);

namespace {

// No sum of these can leave 32 bits.
bool AreNarrow(const Weights& weights)
{
    constexpr double kLargestCount = 32768;
    const double counts = (std::fabs(double{weights.c1}) + std::fabs(double{weights.c2})) * kLargestCount;
    return counts + std::fabs(double{weights.c3}) < 0x1p31 - 1;
}

std::int64_t FillWith(double sum, std::span<std::int16_t> result)
{
    std::ranges::fill(result, StoredSum(sum));
    return LeavesSixteenBits(sum) ? std::ssize(result) : 0;
}

}  // namespace

std::int16_t StoredSum(double sum)
{
    const bool held = sum >= -0x1p63 && sum < 0x1p63;
    return held ? static_cast<std::int16_t>(static_cast<std::int64_t>(sum)) : std::int16_t{0};
}

bool LeavesSixteenBits(double sum)
{
    return !(sum > -32769.0 && sum < 32768.0);  // no number leaves too
}

std::int64_t WeightedSum(const Weights& weights, std::span<const std::int16_t> source1,
                         std::span<const std::int16_t> source2, std::span<std::int16_t> result)
{
    const bool narrow = AreNarrow(weights);
    if (weights.c1 != 0 && weights.c2 != 0) {
        return HWY_DYNAMIC_DISPATCH(SumBoth)(weights, narrow, source1.data(), source2.data(), result.data(),
                                             result.size());
    }
    if (weights.c1 == 0 && weights.c2 == 0) return FillWith(double{weights.c3}, result);
    const Weights one{.c1 = weights.c1 != 0 ? weights.c1 : weights.c2, .c3 = weights.c3};
    const std::int16_t* const source = weights.c1 != 0 ? source1.data() : source2.data();
    return HWY_DYNAMIC_DISPATCH(SumOne)(one, narrow, source, result.data(), result.size());
}

}  // namespace kelvo
#endif
