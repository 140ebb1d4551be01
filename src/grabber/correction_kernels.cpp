#include "grabber/correct_pixel.h"
#include "grabber/correction_plan.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "grabber/correction_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cfenv>
#include <cstring>
#include <span>
#include <type_traits>

// Compiled once for each instruction set; the machine picks one at the first call.
HWY_BEFORE_NAMESPACE();
namespace kelvo::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Half a block at least, a block at most: wider registers bring nothing where the look-up is what takes the time.
using Counts = hn::CappedTag<std::int16_t, kCorrectionBlock>;

// Divisions round that way while it lives.
class Rounding {
  public:
    explicit Rounding(int direction) : before_(std::fegetround()) { std::fesetround(direction); }
    ~Rounding() { std::fesetround(before_); }
    Rounding(const Rounding&) = delete;
    Rounding& operator=(const Rounding&) = delete;

  private:
    int before_;
};

// ---- Gathering a row

// The samples of each channel to its part of the row.
template <std::size_t kChannels, bool kMirrored>
void Deinterleave(const RowGather& row, std::size_t columns, const std::int16_t* HWY_RESTRICT samples,
                  std::int16_t* HWY_RESTRICT line)
{
    const Counts d;
    const std::size_t part = columns / kChannels;
    const auto toNext = static_cast<std::ptrdiff_t>(row.channelsReversed ? 0 - part : part);
    std::int16_t* channel = row.channelsReversed ? line + (kChannels - 1) * part : line;
    std::size_t step = 0;
    for (; step + hn::Lanes(d) <= part; step += hn::Lanes(d)) {
        const std::int16_t* from = samples + step * kChannels;
        hn::Vec<Counts> v[4];
        if constexpr (kChannels == 1) v[0] = hn::LoadU(d, from);
        if constexpr (kChannels == 2) hn::LoadInterleaved2(d, from, v[0], v[1]);
        if constexpr (kChannels == 4) hn::LoadInterleaved4(d, from, v[0], v[1], v[2], v[3]);
        std::int16_t* to = channel + (kMirrored ? part - step - hn::Lanes(d) : step);
        for (std::size_t k = 0; k < kChannels; ++k, to += toNext) {
            hn::StoreU(kMirrored ? hn::Reverse(d, v[k]) : v[k], d, to);
        }
    }
    for (; step < part; ++step) {
        std::int16_t* to = channel + (kMirrored ? part - 1 - step : step);
        for (std::size_t k = 0; k < kChannels; ++k, to += toNext) *to = samples[step * kChannels + k];
    }
}

template <std::size_t kChannels>
HWY_INLINE void GatherChannels(const RowGather& row, std::size_t columns, const std::int16_t* samples,
                               std::int16_t* line)
{
    if (row.mirrored) {
        Deinterleave<kChannels, true>(row, columns, samples, line);
    } else {
        Deinterleave<kChannels, false>(row, columns, samples, line);
    }
}

HWY_INLINE void GatherPattern(const RowGather& row, std::size_t columns, const std::int16_t* HWY_RESTRICT raw,
                              std::int16_t* HWY_RESTRICT line)
{
    if (row.pattern == RowPattern::kNone) return;
    const std::int16_t* samples = raw + row.start;
    if (row.pattern == RowPattern::kStride) {
        for (std::size_t c = 0; c < columns; ++c) line[c] = samples[row.stride * static_cast<std::ptrdiff_t>(c)];
    } else if (row.channels == 4) {
        GatherChannels<4>(row, columns, samples, line);
    } else if (row.channels == 2) {
        GatherChannels<2>(row, columns, samples, line);
    } else {
        GatherChannels<1>(row, columns, samples, line);
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

// raw - offset of the even and of the odd pixels, the offsets of a pair having changed places. On x86 a pair of a count
// and its offset is multiplied by 1 and -1 and added, which takes the widening along; the emulated registers have no
// such thing.
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX2
HWY_INLINE hn::Vec<Wide> PairSums(hn::Vec<Counts> pairs, std::uint32_t factors)
{
    return hn::Vec<Wide>{_mm256_madd_epi16(pairs.raw, _mm256_set1_epi32(static_cast<int>(factors)))};
}
HWY_INLINE hn::Vec<Wide> Truncated(hn::Vec<Real> value)
{
    return hn::Vec<Wide>{_mm256_cvttps_epi32(value.raw)};
}
#elif HWY_ARCH_X86 && HWY_TARGET <= HWY_SSSE3
HWY_INLINE hn::Vec<Wide> PairSums(hn::Vec<Counts> pairs, std::uint32_t factors)
{
    return hn::Vec<Wide>{_mm_madd_epi16(pairs.raw, _mm_set1_epi32(static_cast<int>(factors)))};
}
HWY_INLINE hn::Vec<Wide> Truncated(hn::Vec<Real> value)
{
    return hn::Vec<Wide>{_mm_cvttps_epi32(value.raw)};
}
#else
// What 32 bits don't hold, and what isn't a number, is left out before: the low half of 0 is that of INT32_MIN.
HWY_INLINE hn::Vec<Wide> Truncated(hn::Vec<Real> value)
{
    const auto held = hn::Lt(hn::Abs(value), hn::Set(Real(), 0x1p31F));
    return hn::ConvertTo(Wide(), hn::IfThenElseZero(held, value));
}
#endif

#if HWY_ARCH_X86 && HWY_TARGET <= HWY_SSSE3
HWY_INLINE hn::Vec<Wide> EvenDifference(hn::Vec<Counts> raw, hn::Vec<Counts> offset)
{
    return PairSums(hn::OddEven(offset, raw), 0xFFFF0001U);
}
HWY_INLINE hn::Vec<Wide> OddDifference(hn::Vec<Counts> raw, hn::Vec<Counts> offset)
{
    return PairSums(hn::OddEven(raw, offset), 0x0001FFFFU);
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

// trunc(v / g) exactly, for whole v of at most 2^16 and gains that SingleCanBear (correction_plan.cpp), while divisions
// round toward zero.
//
// Let x = v / g. Where |x| < 2^24, single precision has every whole number up to |x|, so that rounding toward zero
// doesn't pass one: the quotient truncates as x does. Where |x| >= 2^31, or x isn't a number, so it is in single: the
// result is INT32_MIN, of which the frame keeps 0. No gain lets x fall between those.
//
// The quotient in double truncates as x does, whichever way it is rounded: it differs from x by at most 2^-52 |x|, less
// than 2^-28, while x, if it isn't whole, is further than that from the next whole number: by 1 / m > 2^-24 at least, m
// being the 24-bit mantissa of g, or by |x| 2^-16 where g is a whole number.
HWY_INLINE hn::Vec<Wide> TruncatedQuotient(hn::Vec<Wide> value, hn::Vec<Real> gain)
{
    return Truncated(hn::Div(hn::ConvertTo(Real(), value), gain));
}

HWY_INLINE hn::Vec<Counts> Correct(const WithGain& kind, hn::Vec<Counts> raw, std::size_t block, std::size_t inBlock)
{
    const Counts d;
    const Real real;
    const auto offset = hn::LoadU(d, kind.offset + block + inBlock);
    const float* gain = kind.gain + block + inBlock / 2;
    return Narrow(TruncatedQuotient(EvenDifference(raw, offset), hn::LoadU(real, gain)),
                  TruncatedQuotient(OddDifference(raw, offset), hn::LoadU(real, gain + kCorrectionBlock / 2)));
}

template <class Kind>
HWY_INLINE void CorrectBlock(const Kind& kind, const std::int16_t* line, std::size_t block, std::int16_t* out)
{
    const Counts d;
    for (std::size_t i = 0; i < kCorrectionBlock; i += hn::Lanes(d)) {
        hn::StoreU(Correct(kind, hn::LoadU(d, line + block + i), block, i), d, out + block + i);
    }
}

// ---- Looking up

// The look-ups stay scalar, since a gather of single bytes is slower, but the counts come four to a load, and the gray
// values go into registers and are stored at once: in four chains, since each insertion waits for the one before.

// One of four counts, the first of which is in the lowest bits.
template <unsigned kPlace>
HWY_INLINE std::size_t CountOf(std::uint64_t four)
{
    static_assert(std::endian::native == std::endian::little);
    if constexpr (kPlace == 0) return four & 0xFFFF;
    if constexpr (kPlace == 3) return four >> 48;
#if HWY_ARCH_X86_64 && HWY_TARGET <= HWY_AVX2
    return _bextr_u64(four, 16 * kPlace, 16);  // one instruction; shift and mask are three
#else
    return (four >> (16 * kPlace)) & 0xFFFF;
#endif
}

using FourGrays = hn::CappedTag<std::uint8_t, 4>;
using EightGrays = hn::CappedTag<std::uint8_t, 8>;
using SixteenGrays = hn::Full128<std::uint8_t>;

HWY_INLINE hn::Vec<FourGrays> LookUpFour(const std::uint16_t* counts, const std::uint8_t* table)
{
    std::uint64_t four = 0;
    std::memcpy(&four, counts, sizeof four);
    const std::uint32_t first = table[CountOf<0>(four)];
    auto grays = hn::BitCast(FourGrays(), hn::LoadU(hn::CappedTag<std::uint32_t, 1>(), &first));
    grays = hn::InsertLane(grays, 1, table[CountOf<1>(four)]);
    grays = hn::InsertLane(grays, 2, table[CountOf<2>(four)]);
    return hn::InsertLane(grays, 3, table[CountOf<3>(four)]);
}

HWY_INLINE hn::Vec<EightGrays> LookUpEight(const std::uint16_t* counts, const std::uint8_t* table)
{
    return hn::Combine(EightGrays(), LookUpFour(counts + 4, table), LookUpFour(counts, table));
}

HWY_INLINE void LookUpBlock(const std::uint16_t* counts, const std::uint8_t* table, std::uint8_t* grays)
{
    const SixteenGrays d;
    hn::StoreU(hn::Combine(d, LookUpEight(counts + 8, table), LookUpEight(counts, table)), d, grays);
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

HWY_NOINLINE void LookUpPixels(Waiting row, std::size_t from, const std::uint8_t* table)
{
    for (std::size_t i = from; i < row.size; ++i) row.grays[i] = table[row.counts[i]];
}

template <class Kind>
constexpr bool InRegisters()
{
#if HWY_TARGET == HWY_SCALAR
    return false;
#elif HWY_ARCH_ARM_V7
    return !std::is_same_v<Kind, WithGain>;  // its registers round to nearest, whatever they are told
#else
    return true;
#endif
}

// Pixels that registers don't serve: the end of a row, a row with a gain that single precision can't bear.
template <class Kind>
HWY_NOINLINE void CorrectPixels(const Kind& kind, const std::int16_t* line, std::size_t from, std::size_t columns,
                                std::int16_t* out)
{
    for (std::size_t i = from; i < columns; ++i) out[i] = kind.Pixel(line[i], i);
}

// Corrects a row and looks up the one before, block by block in turn: the divisions of the one run beside the loads of
// the other. Either may be the longer one.
template <class Kind>
HWY_INLINE void CorrectRow(const Kind& kind, const std::int16_t* line, std::size_t columns, std::int16_t* out,
                           Waiting before, const std::uint8_t* table)
{
    std::size_t done = 0;
    std::size_t lookedUp = 0;
#if HWY_TARGET != HWY_SCALAR
    if constexpr (InRegisters<Kind>()) {
        const std::size_t both = std::min(columns, before.size);
        for (; done + kCorrectionBlock <= both; done += kCorrectionBlock) {
            CorrectBlock(kind, line, done, out);
            LookUpBlock(before.counts + done, table, before.grays + done);
        }
        lookedUp = done;
        for (; done + kCorrectionBlock <= columns; done += kCorrectionBlock) CorrectBlock(kind, line, done, out);
    }
#endif
    if (done < columns) CorrectPixels(kind, line, done, columns, out);
    if (lookedUp < before.size) LookUpPixels(before, lookedUp, table);
}

template <class Kind>
void CorrectRowInDouble(const Kind& kind, const std::int16_t* line, std::size_t columns, std::int16_t* out)
{
    const Rounding nearest(FE_TONEAREST);
    CorrectPixels(kind, line, 0, columns, out);
}

// Row r of the frame, as far as its gray values are wanted. The table is asked for where something is.
Waiting WaitingRow(const GrayRows& grays, std::size_t r, const std::int16_t* row, std::size_t columns)
{
    if (!grays.table || r >= grays.rows || columns <= grays.firstColumn) return {};
    return {reinterpret_cast<const std::uint16_t*>(row + grays.firstColumn),
            grays.top + static_cast<std::ptrdiff_t>(r) * grays.rowStride, columns - grays.firstColumn};
}

template <class Kind>
void CorrectRows(const CorrectionPlan& plan, const std::int16_t* raw, std::int16_t* frame, const GrayRows& grays)
{
    const std::uint8_t* table = grays.table ? grays.table->data() : nullptr;
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
        if (plan.rows[r].inDouble) {
            CorrectRowInDouble(kind, line, columns, out);
            LookUpPixels(before, 0, table);
        } else {
            CorrectRow(kind, line, columns, out, before, table);
        }
        before = WaitingRow(grays, r, out, columns);
        line = next;
    }
    LookUpPixels(before, 0, table);
}

void RunPlan(const CorrectionPlan& plan, const std::int16_t* raw, std::int16_t* frame, const GrayRows& grays)
{
    if (plan.calType == 2) {
        const Rounding quotients(InRegisters<WithGain>() ? FE_TOWARDZERO : FE_TONEAREST);
        CorrectRows<WithGain>(plan, raw, frame, grays);
    } else if (plan.calType == 1) {
        CorrectRows<WithOffset>(plan, raw, frame, grays);
    } else {
        CorrectRows<Plain>(plan, raw, frame, grays);
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
    CorrectAndLookUp(plan, raw, frame, {});
}

void CorrectAndLookUp(const CorrectionPlan& plan, std::span<const std::int16_t> raw, std::span<std::int16_t> frame,
                      const GrayRows& grays)
{
    if (!Holds(plan, raw.size(), frame.size())) return;
    HWY_DYNAMIC_DISPATCH(RunPlan)(plan, raw.data(), frame.data(), grays);
}

}  // namespace kelvo
#endif
