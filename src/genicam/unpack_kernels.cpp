#include "genicam/unpack_kernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "genicam/unpack_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstring>

// Compiled once for each instruction set; the machine picks one at the first call.
HWY_BEFORE_NAMESPACE();
namespace kelvo::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

constexpr std::int32_t kLeastCount = -32768;
constexpr std::int32_t kMostCount = 32767;

std::uint16_t WordAt(const std::uint8_t* bytes)
{
    return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

void Words(const std::uint8_t* HWY_RESTRICT packed, std::size_t pixels, std::int32_t pedestal, std::int32_t shift,
           std::int16_t* HWY_RESTRICT out)
{
    std::size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
    // A count below the pedestal becomes negative: 17 bits are needed between, so that halves are worked apart.
    const hn::ScalableTag<std::uint16_t> d;
    const hn::RebindToSigned<decltype(d)> ds;
    const hn::RepartitionToWide<decltype(ds)> dw;
    const std::size_t lanes = hn::Lanes(d);
    const auto less = hn::Set(dw, pedestal);
    if (pedestal == 0 && shift > 0) {
        for (; i + lanes <= pixels; i += lanes) {
            const auto words = hn::BitCast(d, hn::LoadU(hn::Repartition<std::uint8_t, decltype(d)>(), packed + 2 * i));
            hn::StoreU(hn::BitCast(ds, hn::ShiftRightSame(words, shift)), ds, out + i);
        }
    } else {
        for (; i + lanes <= pixels; i += lanes) {
            const auto words = hn::BitCast(d, hn::LoadU(hn::Repartition<std::uint8_t, decltype(d)>(), packed + 2 * i));
            const hn::Half<decltype(d)> dh;
            const auto low = hn::Sub(hn::PromoteTo(dw, hn::LowerHalf(dh, words)), less);
            const auto high = hn::Sub(hn::PromoteTo(dw, hn::UpperHalf(dh, words)), less);
            const auto lowCounts = hn::DemoteTo(hn::Half<decltype(ds)>(), hn::ShiftRightSame(low, shift));
            const auto highCounts = hn::DemoteTo(hn::Half<decltype(ds)>(), hn::ShiftRightSame(high, shift));
            hn::StoreU(hn::Combine(ds, highCounts, lowCounts), ds, out + i);
        }
    }
#endif
    for (; i < pixels; ++i) {
        const std::int32_t count = (WordAt(packed + 2 * i) - pedestal) >> shift;
        out[i] = static_cast<std::int16_t>(std::clamp(count, kLeastCount, kMostCount));
    }
}

struct Stream12 {
    // Bytes of eight pixels that make four pairs of words: of each pixel the word that has its 12 bits.
    static constexpr std::uint8_t kBytes[16] = {0, 1, 1, 2, 3, 4, 4, 5, 6, 7, 7, 8, 9, 10, 10, 11};
    template <typename D, typename V>
    static V Even(D d, V word)
    {
        return hn::And(word, hn::Set(d, 0x0FFF));
    }
    static std::int32_t First(const std::uint8_t* b) { return b[0] | (b[1] & 0x0F) << 8; }
    static std::int32_t Second(const std::uint8_t* b) { return b[1] >> 4 | b[2] << 4; }
};

struct Pairs12 {
    static constexpr std::uint8_t kBytes[16] = {1, 0, 1, 2, 4, 3, 4, 5, 7, 6, 7, 8, 10, 9, 10, 11};
    template <typename D, typename V>
    static V Even(D d, V word)
    {
        return hn::Or(hn::And(hn::ShiftRight<4>(word), hn::Set(d, 0x0FF0)), hn::And(word, hn::Set(d, 0x000F)));
    }
    static std::int32_t First(const std::uint8_t* b) { return b[0] << 4 | (b[1] & 0x0F); }
    static std::int32_t Second(const std::uint8_t* b) { return b[2] << 4 | b[1] >> 4; }
};

// Eight pixels, twelve bytes, a turn; a load takes four bytes more, which have to be there.
template <typename Form>
void Twelve(const std::uint8_t* HWY_RESTRICT packed, std::size_t pixels, std::int16_t* HWY_RESTRICT out)
{
    std::size_t i = 0;
    std::size_t at = 0;
#if HWY_TARGET != HWY_SCALAR
    constexpr std::size_t kPixels = 8;
    constexpr std::size_t kBytes = 12;
    constexpr std::size_t kLoaded = 16;
    const hn::FixedTag<std::uint8_t, kLoaded> d8;
    const hn::FixedTag<std::uint16_t, kPixels> d16;
    const hn::RebindToSigned<decltype(d16)> ds;
    const auto places = hn::LoadU(d8, Form::kBytes);
    constexpr std::uint16_t kOdd[kPixels] = {0, 0xFFFF, 0, 0xFFFF, 0, 0xFFFF, 0, 0xFFFF};
    const auto odd = hn::MaskFromVec(hn::LoadU(d16, kOdd));
    const std::size_t bytes = (pixels * 3 + 1) / 2;
    for (; i + kPixels <= pixels && at + kLoaded <= bytes; i += kPixels, at += kBytes) {
        const auto words = hn::BitCast(d16, hn::TableLookupBytes(hn::LoadU(d8, packed + at), places));
        const auto counts = hn::IfThenElse(odd, hn::ShiftRight<4>(words), Form::Even(d16, words));
        hn::StoreU(hn::BitCast(ds, counts), ds, out + i);
    }
#endif
    for (; i + 2 <= pixels; i += 2, at += 3) {
        out[i] = static_cast<std::int16_t>(Form::First(packed + at));
        out[i + 1] = static_cast<std::int16_t>(Form::Second(packed + at));
    }
    if (i < pixels) out[i] = static_cast<std::int16_t>(Form::First(packed + at));
}

void TwelveOfStream(const std::uint8_t* packed, std::size_t pixels, std::int16_t* out)
{
    Twelve<Stream12>(packed, pixels, out);
}

void TwelveOfPairs(const std::uint8_t* packed, std::size_t pixels, std::int16_t* out)
{
    Twelve<Pairs12>(packed, pixels, out);
}

}  // namespace kelvo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvo {

HWY_EXPORT(Words);
HWY_EXPORT(TwelveOfStream);
HWY_EXPORT(TwelveOfPairs);

void UnpackWords(const std::uint8_t* packed, std::size_t pixels, std::int32_t pedestal, std::int32_t shift,
                 std::int16_t* out)
{
    HWY_DYNAMIC_DISPATCH(Words)(packed, pixels, pedestal, shift, out);
}

void UnpackStream12(const std::uint8_t* packed, std::size_t pixels, std::int16_t* out)
{
    HWY_DYNAMIC_DISPATCH(TwelveOfStream)(packed, pixels, out);
}

void UnpackPairs12(const std::uint8_t* packed, std::size_t pixels, std::int16_t* out)
{
    HWY_DYNAMIC_DISPATCH(TwelveOfPairs)(packed, pixels, out);
}

}  // namespace kelvo
#endif
