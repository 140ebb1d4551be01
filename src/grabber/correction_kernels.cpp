#include "grabber/correct_pixel.h"
#include "grabber/correction_plan.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "grabber/correction_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <span>
#include <type_traits>

// Compiled once for each instruction set; the machine picks one at the first call.
HWY_BEFORE_NAMESPACE();
namespace kelvo::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Half a block at least, a block at most: wider registers bring nothing where the look-up is what takes the time.
using Counts = hn::CappedTag<std::int16_t, kCorrectionBlock>;

// ---- Gathering a row

// The samples of each channel to its part of the row.
template <std::size_t kChannels>
void Deinterleave(const RowGather& row, std::size_t columns, const std::int16_t* HWY_RESTRICT samples,
                  std::int16_t* HWY_RESTRICT line)
{
    const Counts d;
    const std::size_t part = columns / kChannels;
    std::int16_t* parts[kChannels];
    for (std::size_t k = 0; k < kChannels; ++k) {
        parts[k] = line + part * (row.channelsReversed ? kChannels - 1 - k : k);
    }
    const auto place = [&](std::size_t step) { return row.mirrored ? part - 1 - step : step; };
    const auto put = [&](std::size_t k, std::size_t step, auto counts) HWY_ATTR {
        if (row.mirrored) {
            hn::StoreU(hn::Reverse(d, counts), d, parts[k] + (part - step - hn::Lanes(d)));
        } else {
            hn::StoreU(counts, d, parts[k] + step);
        }
    };
    std::size_t step = 0;
    for (; step + hn::Lanes(d) <= part; step += hn::Lanes(d)) {
        const std::int16_t* from = samples + step * kChannels;
        hn::Vec<Counts> v[4];
        if constexpr (kChannels == 1) v[0] = hn::LoadU(d, from);
        if constexpr (kChannels == 2) hn::LoadInterleaved2(d, from, v[0], v[1]);
        if constexpr (kChannels == 4) hn::LoadInterleaved4(d, from, v[0], v[1], v[2], v[3]);
        for (std::size_t k = 0; k < kChannels; ++k) put(k, step, v[k]);
    }
    for (; step < part; ++step) {
        for (std::size_t k = 0; k < kChannels; ++k) parts[k][place(step)] = samples[step * kChannels + k];
    }
}

void GatherPattern(const RowGather& row, std::size_t columns, const std::int16_t* HWY_RESTRICT raw,
                   std::int16_t* HWY_RESTRICT line)
{
    if (row.pattern == RowPattern::kNone) return;
    const std::int16_t* samples = raw + row.start;
    if (row.pattern == RowPattern::kStride) {
        for (std::size_t c = 0; c < columns; ++c) line[c] = samples[row.stride * static_cast<std::ptrdiff_t>(c)];
    } else if (row.channels == 4) {
        Deinterleave<4>(row, columns, samples, line);
    } else if (row.channels == 2) {
        Deinterleave<2>(row, columns, samples, line);
    } else {
        Deinterleave<1>(row, columns, samples, line);
    }
}

// The row's raw counts in image order: in the raw frame itself where they stand there as they are, else in line.
const std::int16_t* GatherRow(const CorrectionPlan& plan, std::size_t index, const std::int16_t* raw,
                              std::int16_t* line)
{
    const RowGather& row = plan.rows[index];
    const bool asItStands =
        row.pattern == RowPattern::kInterleave && row.channels == 1 && !row.mirrored && row.patches == 0;
    if (asItStands) return raw + row.start;
    GatherPattern(row, plan.RowPixels(index), raw, line);
    for (const RowPatch& patch : std::span(plan.patches).subspan(row.firstPatch, row.patches)) {
        line[patch.column] = patch.source < plan.rawSize ? raw[patch.source] : std::int16_t{0};
    }
    return line;
}

// ---- Correcting

// What each CalType makes of raw counts: Pixel of one, Correct (below) of a register of them. The lists are those of
// one row, from its first pixel on.

struct Plain {
    std::int32_t dataOffset;

    Plain(const CorrectionPlan& plan, std::size_t) : dataOffset(plan.dataOffset) {}
    std::int16_t Pixel(std::int16_t raw, std::size_t) const { return PlainCount(dataOffset, raw); }
};

struct WithOffset {
    std::int32_t dataOffset;
    const std::int16_t* offset;

    WithOffset(const CorrectionPlan& plan, std::size_t row)
        : dataOffset(plan.dataOffset), offset(plan.offset.data() + row * plan.paddedWidth)
    {
    }
    std::int16_t Pixel(std::int16_t raw, std::size_t column) const
    {
        return OffsetCount(dataOffset, raw, offset[column]);
    }
};

struct WithGain {
    std::int32_t dataOffset;
    const std::int16_t* offset;
    const float* gain;

    WithGain(const CorrectionPlan& plan, std::size_t row)
        : dataOffset(plan.dataOffset),
          offset(plan.offset.data() + row * plan.paddedWidth),
          gain(plan.gain.data() + row * plan.paddedWidth)
    {
    }
    std::int16_t Pixel(std::int16_t raw, std::size_t column) const
    {
        return GainCount(dataOffset, raw, offset[OffsetPlace(column)], gain[GainPlace(column)]);
    }
};

#if HWY_TARGET != HWY_SCALAR

using Wide = hn::RepartitionToWide<Counts>;  // 32 bits
using Real = hn::RebindToFloat<Wide>;

// 16-bit lanes as two registers of 32-bit ones and back, where only the low halves are kept: that is the truncation to
// 16 bits that is wanted, and no lane moves.
HWY_INLINE hn::Vec<Wide> Even(hn::Vec<Counts> counts)
{
    return hn::ShiftRight<16>(hn::ShiftLeft<16>(hn::BitCast(Wide(), counts)));
}
HWY_INLINE hn::Vec<Wide> Odd(hn::Vec<Counts> counts)
{
    return hn::ShiftRight<16>(hn::BitCast(Wide(), counts));
}
HWY_INLINE hn::Vec<Counts> Narrow(hn::Vec<Wide> even, hn::Vec<Wide> odd)
{
    const Counts d;
    return hn::OddEven(hn::BitCast(d, hn::ShiftLeft<16>(odd)), hn::BitCast(d, even));
}

// For the pixels of a block from place `inBlock` on; the block starts at column `block`.
HWY_INLINE hn::Vec<Counts> Correct(const Plain& kind, hn::Vec<Counts> raw, std::size_t, std::size_t)
{
    const auto dataOffset = hn::Set(Wide(), kind.dataOffset);
    const auto least = hn::Zero(Wide());
    return Narrow(hn::Max(hn::Add(Even(raw), dataOffset), least), hn::Max(hn::Add(Odd(raw), dataOffset), least));
}

HWY_INLINE hn::Vec<Counts> Correct(const WithOffset& kind, hn::Vec<Counts> raw, std::size_t block, std::size_t inBlock)
{
    const Counts d;
    const auto dataOffset = hn::Set(d, static_cast<std::int16_t>(kind.dataOffset));
    return hn::Add(hn::Sub(raw, hn::LoadU(d, kind.offset + block + inBlock)), dataOffset);
}

#if HWY_NATIVE_FMA

// raw - offset of the even and of the odd pixels, the offsets of a pair having changed places. On x86 a pair of a count
// and its offset is multiplied by 1 and -1 and added, which takes the widening along.
#if HWY_ARCH_X86
HWY_INLINE hn::Vec<Wide> EvenDifference(hn::Vec<Counts> raw, hn::Vec<Counts> offset)
{
    const auto pairs = hn::OddEven(offset, raw);
    return hn::Vec<Wide>{_mm256_madd_epi16(pairs.raw, _mm256_set1_epi32(static_cast<int>(0xFFFF0001U)))};
}
HWY_INLINE hn::Vec<Wide> OddDifference(hn::Vec<Counts> raw, hn::Vec<Counts> offset)
{
    const auto pairs = hn::OddEven(raw, offset);
    return hn::Vec<Wide>{_mm256_madd_epi16(pairs.raw, _mm256_set1_epi32(0x0001FFFF))};
}
#else
HWY_INLINE hn::Vec<Wide> EvenDifference(hn::Vec<Counts> raw, hn::Vec<Counts> offset)
{
    return hn::Sub(Even(raw), Odd(offset));
}
HWY_INLINE hn::Vec<Wide> OddDifference(hn::Vec<Counts> raw, hn::Vec<Counts> offset)
{
    return hn::Sub(Odd(raw), Even(offset));
}
#endif

// Of values that 32 bits hold: what hn::ConvertTo does for the others takes as long again.
HWY_INLINE hn::Vec<Wide> Truncated(hn::Vec<Real> value)
{
#if HWY_ARCH_X86
    return hn::Vec<Wide>{_mm256_cvttps_epi32(value.raw)};
#else
    return hn::ConvertTo(Wide(), value);
#endif
}

// trunc(v / g) exactly, for whole v of at most 2^17 and gains from 2^-6 to 2^100 (either sign).
//
// Let x = v / g and q its nearest single. |x| is at most 2^23, and single precision has every whole number up to there.
// v - q g, taken with one rounding (FMA), has its true sign: it is 0 only where q g = v, and nowhere near underflow. If
// it points away from v, then |q| > |x|, and x lies between q and the single next to q toward zero, for q was the
// nearest. No whole number stands between those two, so that the lower one truncates as x does; its bits are one less
// than q's, whatever the sign. Otherwise |q| <= |x|, and no whole number lies in between, for x would have been rounded
// to it or beyond: q truncates as x does.
//
// The quotient in double truncates likewise: it differs from x by at most 2^-53 |x| <= 2^-30, while x, if it isn't
// whole, is further than that from the next whole number: by 1 / m > 2^-24 at least, m being the 24-bit mantissa of g,
// or by |x| 2^-17 where g is a whole number.
HWY_INLINE hn::Vec<Wide> TruncatedQuotient(hn::Vec<Wide> value, hn::Vec<Real> gain)
{
    const Real real;
    const Wide wide;
    const auto v = hn::ConvertTo(real, value);
    const auto q = hn::Div(v, gain);
    const auto rest = hn::NegMulAdd(q, gain, v);
    const auto away = hn::Lt(hn::Xor(rest, hn::And(v, hn::SignBit(real))), hn::Zero(real));
    const auto oneLess = hn::BitCast(wide, hn::VecFromMask(real, away));  // -1 where it holds
    return Truncated(hn::BitCast(real, hn::Add(hn::BitCast(wide, q), oneLess)));
}

HWY_INLINE hn::Vec<Counts> Correct(const WithGain& kind, hn::Vec<Counts> raw, std::size_t block, std::size_t inBlock)
{
    const Counts d;
    const Real real;
    const auto dataOffset = hn::Set(Wide(), kind.dataOffset);
    const auto offset = hn::LoadU(d, kind.offset + block + inBlock);
    const float* gain = kind.gain + block + inBlock / 2;
    const auto even = hn::Add(EvenDifference(raw, offset), dataOffset);
    const auto odd = hn::Add(OddDifference(raw, offset), dataOffset);
    return Narrow(TruncatedQuotient(even, hn::LoadU(real, gain)),
                  TruncatedQuotient(odd, hn::LoadU(real, gain + kCorrectionBlock / 2)));
}

#endif  // HWY_NATIVE_FMA

template <class Kind>
HWY_INLINE void CorrectBlock(const Kind& kind, const std::int16_t* line, std::size_t block, std::int16_t* out)
{
    const Counts d;
    for (std::size_t i = 0; i < kCorrectionBlock; i += hn::Lanes(d)) {
        hn::StoreU(Correct(kind, hn::LoadU(d, line + block + i), block, i), d, out + block + i);
    }
}

// ---- Looking up

// The look-ups stay scalar, since a gather of single bytes is slower, but the bytes go into registers, in two chains
// side by side, and are stored at once. Half of the counts come four to a load, the others one by one: loads and shifts
// share the work.
HWY_INLINE hn::Vec<hn::Full128<std::uint64_t>> LookUpEight(const std::array<std::size_t, 8>& indices,
                                                           const std::uint8_t* table)
{
    const hn::Full128<std::uint8_t> bytes;
    auto packed = hn::Zero(bytes);
    packed = hn::InsertLane(packed, 0, table[indices[0]]);
    packed = hn::InsertLane(packed, 1, table[indices[1]]);
    packed = hn::InsertLane(packed, 2, table[indices[2]]);
    packed = hn::InsertLane(packed, 3, table[indices[3]]);
    packed = hn::InsertLane(packed, 4, table[indices[4]]);
    packed = hn::InsertLane(packed, 5, table[indices[5]]);
    packed = hn::InsertLane(packed, 6, table[indices[6]]);
    packed = hn::InsertLane(packed, 7, table[indices[7]]);
    return hn::BitCast(hn::Full128<std::uint64_t>(), packed);
}

HWY_INLINE void LookUpBlock(const std::uint16_t* counts, const std::uint8_t* table, std::uint8_t* grays)
{
    static_assert(std::endian::native == std::endian::little, "the first count is in the lowest bits");
    std::uint64_t a = 0;
    std::uint64_t b = 0;
    std::memcpy(&a, counts, sizeof a);
    std::memcpy(&b, counts + 4, sizeof b);
    const auto first = LookUpEight({a & 0xFFFF, (a >> 16) & 0xFFFF, (a >> 32) & 0xFFFF, a >> 48, b & 0xFFFF,
                                    (b >> 16) & 0xFFFF, (b >> 32) & 0xFFFF, b >> 48},
                                   table);
    const auto second = LookUpEight(
        {counts[8], counts[9], counts[10], counts[11], counts[12], counts[13], counts[14], counts[15]}, table);
    const auto both = hn::InterleaveLower(hn::Full128<std::uint64_t>(), first, second);
    hn::StoreU(hn::BitCast(hn::Full128<std::uint8_t>(), both), hn::Full128<std::uint8_t>(), grays);
}

#endif  // HWY_TARGET != HWY_SCALAR

// ---- The frame

// A row of counts that waits for its gray values. Signed and unsigned of one size may share storage: the pattern is the
// index.
struct Waiting {
    const std::uint16_t* counts = nullptr;
    std::uint8_t* grays = nullptr;
    std::size_t size = 0;
};

void LookUpPixels(const Waiting& row, std::size_t from, const std::uint8_t* table)
{
    for (std::size_t i = from; i < row.size; ++i) row.grays[i] = table[row.counts[i]];
}

template <class Kind>
constexpr bool InRegisters()
{
#if HWY_TARGET == HWY_SCALAR
    return false;
#else
    return HWY_NATIVE_FMA || !std::is_same_v<Kind, WithGain>;
#endif
}

// Corrects a row and looks up the one before, block by block in turn: the divisions of the one run beside the loads of
// the other. Rows with a gain that single precision can't bear, and all gains where there is no FMA to put the quotient
// right, are divided in double.
template <bool kLookUp, class Kind>
void CorrectRow(const Kind kind, [[maybe_unused]] bool inDouble, const std::int16_t* line, std::size_t columns,
                std::int16_t* out, const Waiting before, const std::uint8_t* table)
{
    std::size_t done = 0;
#if HWY_TARGET != HWY_SCALAR
    if constexpr (InRegisters<Kind>()) {
        const std::size_t end = inDouble ? 0 : columns;
        for (; done + kCorrectionBlock <= end; done += kCorrectionBlock) {
            CorrectBlock(kind, line, done, out);
            if constexpr (kLookUp) LookUpBlock(before.counts + done, table, before.grays + done);
        }
    }
#endif
    const std::size_t lookedUp = done;
    for (; done < columns; ++done) out[done] = kind.Pixel(line[done], done);
    if constexpr (kLookUp) LookUpPixels(before, lookedUp, table);
}

template <class Kind>
void CorrectRows(const CorrectionPlan& plan, const std::int16_t* raw, const std::uint8_t* table, std::int16_t* frame,
                 std::uint8_t* pixels)
{
    std::int16_t* lines[2] = {plan.lines.data(), plan.lines.data() + plan.paddedWidth};
    const std::int16_t* line = GatherRow(plan, 0, raw, lines[0]);
    Waiting before;
    for (std::size_t r = 0; r < plan.rows.size(); ++r) {
        // A row ahead: single patches have left the store queue when the row is read a register at a time.
        const std::int16_t* next = line;
        if (r + 1 < plan.rows.size()) next = GatherRow(plan, r + 1, raw, lines[(r + 1) % 2]);
        const std::size_t columns = plan.RowPixels(r);
        std::int16_t* out = frame + r * plan.width;
        const Kind kind(plan, r);
        if (before.size >= columns) {
            CorrectRow<true>(kind, plan.rows[r].inDouble, line, columns, out, before, table);
        } else {
            CorrectRow<false>(kind, plan.rows[r].inDouble, line, columns, out, before, table);
        }
        if (table) before = {reinterpret_cast<const std::uint16_t*>(out), pixels + r * plan.width, columns};
        line = next;
    }
    if (table) LookUpPixels(before, 0, table);
}

void RunPlan(const CorrectionPlan& plan, const std::int16_t* raw, const std::uint8_t* table, std::int16_t* frame,
             std::uint8_t* pixels)
{
    if (plan.calType == 2) {
        CorrectRows<WithGain>(plan, raw, table, frame, pixels);
    } else if (plan.calType == 1) {
        CorrectRows<WithOffset>(plan, raw, table, frame, pixels);
    } else {
        CorrectRows<Plain>(plan, raw, table, frame, pixels);
    }
}

}  // namespace kelvo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvo {

HWY_EXPORT(RunPlan);

namespace {

bool Holds(const CorrectionPlan& plan, std::size_t rawSize, std::size_t frameSize)
{
    return plan.pixels > 0 && rawSize >= plan.rawSize && frameSize >= plan.pixels;
}

}  // namespace

void CorrectFrame(const CorrectionPlan& plan, std::span<const std::int16_t> raw, std::span<std::int16_t> frame)
{
    if (!Holds(plan, raw.size(), frame.size())) return;
    HWY_DYNAMIC_DISPATCH(RunPlan)(plan, raw.data(), nullptr, frame.data(), nullptr);
}

void CorrectAndLookUp(const CorrectionPlan& plan, std::span<const std::int16_t> raw, const GrayTable& table,
                      std::span<std::int16_t> frame, std::span<std::uint8_t> pixels)
{
    if (!Holds(plan, raw.size(), std::min(frame.size(), pixels.size()))) return;
    HWY_DYNAMIC_DISPATCH(RunPlan)(plan, raw.data(), table.data(), frame.data(), pixels.data());
}

}  // namespace kelvo
#endif
