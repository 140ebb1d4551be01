#include "genicam/unpack_kernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "genicam/unpack_kernels.cpp"
#include <hwy/cache_control.h>
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <array>

// Compiled once for each instruction set; the machine picks one at the first call.
HWY_BEFORE_NAMESPACE();
namespace kelvo::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Bytes that are asked for so far ahead: a frame comes from beyond the caches, in which a part of it is then worked.
constexpr std::size_t kAhead = 4096;

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
    const hn::ScalableTag<std::uint16_t> d;
    const hn::Repartition<std::uint8_t, decltype(d)> d8;
    const hn::RebindToSigned<decltype(d)> ds;
    const std::size_t lanes = hn::Lanes(d);
    const auto each = [&](auto countsOf) {
        for (; i + lanes <= pixels; i += lanes) {
            hwy::Prefetch(packed + 2 * i + kAhead);
            hn::StoreU(countsOf(hn::BitCast(d, hn::LoadU(d8, packed + 2 * i))), ds, out + i);
        }
    };
    if (shift == 0 && pedestal == 0) {
        const auto most = hn::Set(d, kMostCount);
        each([&](auto words) { return hn::BitCast(ds, hn::Min(words, most)); });
    } else if (shift == 0) {
        // A word with its upper bit turned is the word less 32768, with a sign.
        const auto upper = hn::Set(d, 0x8000);
        const auto rest = hn::Set(ds, static_cast<std::int16_t>(0x8000 - pedestal));
        each([&](auto words) { return hn::SaturatedAdd(hn::BitCast(ds, hn::Xor(words, upper)), rest); });
    } else if (pedestal == 0) {
        const auto scale = hn::Set(d, static_cast<std::uint16_t>(1U << (16 - shift)));
        each([&](auto words) { return hn::BitCast(ds, hn::MulHigh(words, scale)); });
    } else {
        // A count below the pedestal becomes negative: 17 bits are needed between, so that halves are worked apart.
        const hn::RepartitionToWide<decltype(ds)> dw;
        const hn::Half<decltype(d)> dh;
        const hn::Half<decltype(ds)> dsh;
        const auto less = hn::Set(dw, pedestal);
        const auto countsOf = [&](auto half) {
            return hn::DemoteTo(dsh, hn::ShiftRightSame(hn::Sub(hn::PromoteTo(dw, half), less), shift));
        };
        each([&](auto words) {
            return hn::Combine(ds, countsOf(hn::UpperHalf(dh, words)), countsOf(hn::LowerHalf(dh, words)));
        });
    }
#endif
    for (; i < pixels; ++i) {
        const std::int32_t count = (WordAt(packed + 2 * i) - pedestal) >> shift;
        out[i] = static_cast<std::int16_t>(std::clamp(count, kLeastCount, kMostCount));
    }
}

// Bytes of eight pixels as eight words, in each of which the 12 bits of its pixel stand; what is kept of such a word
// shifted right by 4 and of the word as it is, of an even pixel and of an odd one.
struct Stream12 {
    static constexpr std::array<std::uint8_t, 16> kBytes = {0, 1, 1, 2, 3, 4, 4, 5, 6, 7, 7, 8, 9, 10, 10, 11};
    static constexpr std::array<std::uint16_t, 2> kOfShifted = {0x0000, 0x0FFF};
    static constexpr std::array<std::uint16_t, 2> kOfWord = {0x0FFF, 0x0000};
    static std::int32_t First(const std::uint8_t* b) { return b[0] | (b[1] & 0x0F) << 8; }
    static std::int32_t Second(const std::uint8_t* b) { return b[1] >> 4 | b[2] << 4; }
};

struct Pairs12 {
    static constexpr std::array<std::uint8_t, 16> kBytes = {1, 0, 1, 2, 4, 3, 4, 5, 7, 6, 7, 8, 10, 9, 10, 11};
    static constexpr std::array<std::uint16_t, 2> kOfShifted = {0x0FF0, 0x0FFF};
    static constexpr std::array<std::uint16_t, 2> kOfWord = {0x000F, 0x0000};
    static std::int32_t First(const std::uint8_t* b) { return b[0] << 4 | (b[1] & 0x0F); }
    static std::int32_t Second(const std::uint8_t* b) { return b[2] << 4 | b[1] >> 4; }
};

// Eight pixels are twelve bytes, and a block of a register. A load takes four bytes more, which have to be there.
template <typename Form>
void Twelve(const std::uint8_t* HWY_RESTRICT packed, std::size_t pixels, std::int16_t* HWY_RESTRICT out)
{
    std::size_t i = 0;
    std::size_t at = 0;
#if HWY_TARGET != HWY_SCALAR
    constexpr std::size_t kBlockBytes = 12;
    constexpr std::size_t kLoaded = 16;
    const hn::FixedTag<std::uint8_t, kLoaded> block;
#if HWY_CAP_GE256
    constexpr std::size_t kBlocks = 2;
    const hn::FixedTag<std::uint8_t, kBlocks * kLoaded> d8;
    const auto load = [&](const std::uint8_t* bytes) {
        return hn::Combine(d8, hn::LoadU(block, bytes + kBlockBytes), hn::LoadU(block, bytes));
    };
#else
    constexpr std::size_t kBlocks = 1;
    const auto d8 = block;
    const auto load = [&](const std::uint8_t* bytes) { return hn::LoadU(d8, bytes); };
#endif
    constexpr std::size_t kPixels = 8 * kBlocks;
    constexpr std::size_t kNeeded = (kBlocks - 1) * kBlockBytes + kLoaded;
    const hn::RepartitionToWide<decltype(d8)> d16;
    const hn::RebindToSigned<decltype(d16)> ds;
    const hn::RepartitionToWide<decltype(d16)> d32;
    const auto byTwo = [&](const std::array<std::uint16_t, 2>& masks) {
        return hn::BitCast(d16, hn::Set(d32, std::uint32_t{masks[1]} << 16 | masks[0]));
    };
    const auto places = hn::LoadDup128(d8, Form::kBytes.data());
    const auto ofShifted = byTwo(Form::kOfShifted);
    const auto ofWord = byTwo(Form::kOfWord);
    const std::size_t bytes = (pixels * 3 + 1) / 2;
    for (; i + kPixels <= pixels && at + kNeeded <= bytes; i += kPixels, at += kBlocks * kBlockBytes) {
        const auto words = hn::BitCast(d16, hn::TableLookupBytes(load(packed + at), places));
        const auto counts = hn::Or(hn::And(hn::ShiftRight<4>(words), ofShifted), hn::And(words, ofWord));
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
