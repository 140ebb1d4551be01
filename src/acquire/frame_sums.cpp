#include "acquire/frame_sums.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "acquire/frame_sums.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>

// Compiled once for each instruction set; the machine picks one at the first call.
HWY_BEFORE_NAMESPACE();
namespace kelvo::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Frame and sums of a block stay in the first cache while its squares are added.
constexpr std::size_t kBlock = 1024;

HWY_INLINE hn::Vec<hn::ScalableTag<std::int32_t>> AsSum(hn::ScalableTag<std::int32_t>, const std::int16_t* frame)
{
    const hn::ScalableTag<std::int32_t> d;
    return hn::PromoteTo(d, hn::LoadU(hn::Rebind<std::int16_t, decltype(d)>(), frame));
}

HWY_INLINE hn::Vec<hn::ScalableTag<float>> AsSum(hn::ScalableTag<float> d, const std::int16_t* frame)
{
    return hn::ConvertTo(d, AsSum(hn::ScalableTag<std::int32_t>(), frame));
}

// 32-bit sums wrap: they are added as unsigned.
HWY_INLINE std::int32_t Sum(std::int32_t a, std::int16_t b)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}
HWY_INLINE float Sum(float a, std::int16_t b)
{
    return a + static_cast<float>(b);
}

template <typename T>
void AddValues(const std::int16_t* HWY_RESTRICT frame, std::size_t size, T* HWY_RESTRICT sums)
{
    const hn::ScalableTag<T> d;
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= size; i += hn::Lanes(d)) {
        hn::StoreU(hn::Add(hn::LoadU(d, sums + i), AsSum(d, frame + i)), d, sums + i);
    }
    for (; i < size; ++i) sums[i] = Sum(sums[i], frame[i]);
}

// The square of 16 bits fits 32 bits.
void AddSquares(const std::int16_t* HWY_RESTRICT frame, std::size_t size, double* HWY_RESTRICT squares)
{
    const hn::ScalableTag<double> d;
    const hn::Rebind<std::int32_t, decltype(d)> whole;
    const hn::Rebind<std::int16_t, decltype(d)> counts;
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= size; i += hn::Lanes(d)) {
        const auto value = hn::PromoteTo(whole, hn::LoadU(counts, frame + i));
        hn::StoreU(hn::Add(hn::LoadU(d, squares + i), hn::PromoteTo(d, hn::Mul(value, value))), d, squares + i);
    }
    for (; i < size; ++i) squares[i] += static_cast<double>(int{frame[i]} * int{frame[i]});
}

template <typename T>
void AddBlocks(const std::int16_t* frame, std::size_t size, T* sums, double* squares)
{
    for (std::size_t first = 0; first < size; first += kBlock) {
        const std::size_t part = std::min(kBlock, size - first);
        AddValues(frame + first, part, sums + first);
        if (squares) AddSquares(frame + first, part, squares + first);
    }
}

void AddToInts(const std::int16_t* frame, std::size_t size, std::int32_t* sums, double* squares)
{
    AddBlocks(frame, size, sums, squares);
}

void AddToFloats(const std::int16_t* frame, std::size_t size, float* sums, double* squares)
{
    AddBlocks(frame, size, sums, squares);
}

}  // namespace kelvo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvo {

HWY_EXPORT(AddToInts);
HWY_EXPORT(AddToFloats);

void AddFrame(std::span<const std::int16_t> frame, std::span<std::int32_t> sums, std::span<double> squares)
{
    HWY_DYNAMIC_DISPATCH(AddToInts)
    (frame.data(), frame.size(), sums.data(), squares.empty() ? nullptr : squares.data());
}

void AddFrame(std::span<const std::int16_t> frame, std::span<float> sums, std::span<double> squares)
{
    HWY_DYNAMIC_DISPATCH(AddToFloats)
    (frame.data(), frame.size(), sums.data(), squares.empty() ? nullptr : squares.data());
}

}  // namespace kelvo
#endif
