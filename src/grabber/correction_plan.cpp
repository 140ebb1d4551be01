#include "grabber/correction_plan.h"

#include "platform/memory.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

namespace kelvo {

namespace {

// More patches than one in eight pixels, and the pattern isn't worth its name.
constexpr std::size_t kPixelsPerPatch = 8;

// Patterns are recognised by places spread over the row, of which few will be substituted.
constexpr std::size_t kProbes = 7;

// Quotients of single precision: the gains for which TruncatedQuotient (correction_kernels.cpp) isn't exact lie between
// these. From the upper one on 24 bits hold the quotient, up to the lower one 32 bits don't.
constexpr float kHidingQuotients = 0x1p-31F;
constexpr float kLeastSingleGain = 0x1p-8F;

constexpr RowGather Interleave(std::uint8_t channels, bool mirrored, bool reversed)
{
    RowGather row;
    row.pattern = RowPattern::kInterleave;
    row.channels = channels;
    row.mirrored = mirrored;
    row.channelsReversed = reversed;
    return row;
}

// Likely ones first.
constexpr std::array kInterleaves = {
    Interleave(1, false, false), Interleave(4, false, false), Interleave(2, false, false), Interleave(2, false, true),
    Interleave(1, true, false),  Interleave(4, true, true),   Interleave(2, true, true),   Interleave(2, true, false),
    Interleave(4, false, true),  Interleave(4, true, false),
};

using Entries = std::span<const std::uint32_t>;

std::size_t Probe(std::size_t columns, std::size_t k)
{
    return columns * (2 * k + 1) / (2 * kProbes);
}

// The value that most of the probes agree on; nullopt where no two do.
std::optional<std::int64_t> Agreed(const std::array<std::int64_t, kProbes>& values)
{
    const auto votes = [&](std::int64_t value) { return std::ranges::count(values, value); };
    const auto best = std::ranges::max_element(values, {}, votes);
    if (votes(*best) < 2) return std::nullopt;
    return *best;
}

std::int64_t SourceOf(const RowGather& row, std::size_t columns, std::size_t column)
{
    if (row.pattern == RowPattern::kStride) return row.start + row.stride * static_cast<std::int64_t>(column);
    return row.start + InterleavedPlace(row, columns, column);
}

// Every sample that the pattern reads lies in the raw frame, those of pixels to be patched too.
bool LiesIn(const RowGather& row, std::size_t columns, std::size_t rawSize)
{
    const auto last = static_cast<std::int64_t>(columns) - 1;
    const std::int64_t end = row.start + (row.pattern == RowPattern::kStride ? row.stride * last : last);
    return std::min(row.start, end) >= 0 && std::max(row.start, end) < static_cast<std::int64_t>(rawSize);
}

std::size_t Misses(const RowGather& row, Entries entries)
{
    std::size_t misses = 0;
    for (std::size_t c = 0; c < entries.size(); ++c) misses += SourceOf(row, entries.size(), c) != entries[c];
    return misses;
}

bool Fits(RowGather& row, Entries entries, std::size_t rawSize)
{
    row.start = 0;
    std::array<std::int64_t, kProbes> starts{};
    for (std::size_t k = 0; k < kProbes; ++k) {
        const std::size_t column = Probe(entries.size(), k);
        starts[k] = std::int64_t{entries[column]} - SourceOf(row, entries.size(), column);
    }
    const std::optional<std::int64_t> start = Agreed(starts);
    if (!start) return false;
    row.start = *start;
    return LiesIn(row, entries.size(), rawSize) && Misses(row, entries) <= entries.size() / kPixelsPerPatch;
}

std::optional<RowGather> FittingStride(Entries entries, std::size_t rawSize)
{
    std::array<std::int64_t, kProbes> strides{};
    for (std::size_t k = 0; k < kProbes; ++k) {
        const std::size_t column = std::min(Probe(entries.size(), k), entries.size() - 2);
        strides[k] = std::int64_t{entries[column + 1]} - entries[column];
    }
    const std::optional<std::int64_t> stride = Agreed(strides);
    if (!stride) return std::nullopt;
    RowGather row;
    row.pattern = RowPattern::kStride;
    row.stride = *stride;
    if (!Fits(row, entries, rawSize)) return std::nullopt;
    return row;
}

// Rows of one frame are mostly alike: likely is the pattern of the row before.
RowGather PatternOf(Entries entries, std::size_t rawSize, const RowGather& likely)
{
    if (entries.size() < kProbes) return {};
    const auto fits = [&](RowGather& row) { return entries.size() % row.channels == 0 && Fits(row, entries, rawSize); };
    if (RowGather row = likely; row.pattern == RowPattern::kInterleave && fits(row)) return row;
    for (RowGather row : kInterleaves) {
        if (fits(row)) return row;
    }
    return FittingStride(entries, rawSize).value_or(RowGather());
}

bool IsPatch(const RowGather& row, Entries entries, std::size_t column)
{
    return row.pattern == RowPattern::kNone || SourceOf(row, entries.size(), column) != entries[column];
}

// The rows with their patches counted; the patches themselves come when their number is known.
void DescribeRows(CorrectionPlan& plan, Entries decom)
{
    std::size_t patches = 0;
    RowGather likely;
    for (std::size_t r = 0; r < plan.rows.size(); ++r) {
        const Entries entries = decom.subspan(r * plan.width, plan.RowPixels(r));
        RowGather row = PatternOf(entries, plan.rawSize, likely);
        likely = row;
        row.firstPatch = patches;
        for (std::size_t c = 0; c < entries.size(); ++c) row.patches += IsPatch(row, entries, c);
        patches += row.patches;
        plan.rows[r] = row;
    }
}

std::size_t PatchCount(const CorrectionPlan& plan)
{
    return plan.rows.empty() ? 0 : plan.rows.back().firstPatch + plan.rows.back().patches;
}

void ListPatches(CorrectionPlan& plan, Entries decom)
{
    std::size_t next = 0;
    for (std::size_t r = 0; r < plan.rows.size(); ++r) {
        const Entries entries = decom.subspan(r * plan.width, plan.RowPixels(r));
        for (std::size_t c = 0; c < entries.size(); ++c) {
            if (IsPatch(plan.rows[r], entries, c)) plan.patches[next++] = {static_cast<std::uint32_t>(c), entries[c]};
        }
    }
}

template <typename T>
T EntryOr0(std::span<const T> list, std::size_t index)
{
    return index < list.size() ? list[index] : T{};
}

// A detector without response (gain 0) is among them, and what isn't a number.
bool SingleCanBear(float gain)
{
    return !(std::abs(gain) > kHidingQuotients && std::abs(gain) < kLeastSingleGain);
}

// Takes DataOffset off the offsets where 16 bits hold what comes of it, so that nothing is left to add in each frame.
// False where they don't.
bool FoldDataOffset(CorrectionPlan& plan)
{
    const std::int64_t dataOffset = plan.dataOffset;
    const auto [least, most] = std::ranges::minmax_element(plan.offset);
    const bool fits = *least - dataOffset >= std::numeric_limits<std::int16_t>::min() &&
                      *most - dataOffset <= std::numeric_limits<std::int16_t>::max();
    if (!fits) return false;
    for (std::int16_t& offset : plan.offset) offset = static_cast<std::int16_t>(offset - dataOffset);
    plan.dataOffset = 0;
    return true;
}

void OrderOffsets(CorrectionPlan& plan, const CorrectionLists& lists)
{
    for (std::size_t i = 0; i < plan.pixels; ++i) {
        const std::size_t column = i % plan.width;
        const std::size_t place = plan.calType == 2 ? OffsetPlace(column) : column;
        plan.offset[i / plan.width * plan.paddedWidth + place] = EntryOr0(lists.offset, lists.decom[i]);
    }
}

void OrderGains(CorrectionPlan& plan, const CorrectionLists& lists)
{
    std::ranges::fill(plan.gain, 1.0F);  // the padding divides too
    const bool folded = FoldDataOffset(plan);
    for (RowGather& row : plan.rows) row.inDouble = !folded;
    for (std::size_t i = 0; i < plan.pixels; ++i) {
        const float gain = EntryOr0(lists.gain, lists.decom[i]);
        const std::size_t row = i / plan.width;
        plan.gain[row * plan.paddedWidth + GainPlace(i % plan.width)] = gain;
        if (!SingleCanBear(gain)) plan.rows[row].inDouble = true;
    }
}

bool AllocateLists(CorrectionPlan& plan)
{
    const std::size_t entries = plan.rows.size() * plan.paddedWidth;
    const bool offsets = plan.calType == 1 || plan.calType == 2;
    return AllocateBlock(plan.lines, 2 * plan.paddedWidth) && (!offsets || AllocateBlock(plan.offset, entries)) &&
           (plan.calType != 2 || AllocateBlock(plan.gain, entries));
}

}  // namespace

CorrectionPlanPtr NewCorrectionPlan(const CorrectionLists& lists, std::size_t width, std::size_t rawSize)
{
    CorrectionPlanPtr plan(new CorrectionPlan);
    plan->calType = lists.calType;
    plan->dataOffset = lists.dataOffset;
    plan->pixels = lists.decom.size();
    plan->width = std::max<std::size_t>(width, 1);
    plan->rawSize = rawSize;
    plan->paddedWidth = (plan->width + kCorrectionBlock - 1) / kCorrectionBlock * kCorrectionBlock;
    if (!AllocateBlock(plan->rows, (plan->pixels + plan->width - 1) / plan->width)) return nullptr;
    if (!AllocateLists(*plan)) return nullptr;
    DescribeRows(*plan, lists.decom);
    if (!AllocateBlock(plan->patches, PatchCount(*plan))) return nullptr;
    ListPatches(*plan, lists.decom);
    if (!plan->offset.empty()) OrderOffsets(*plan, lists);
    if (!plan->gain.empty()) OrderGains(*plan, lists);
    return plan;
}

void CorrectionPlanDeleter::operator()(CorrectionPlan* plan) const
{
    delete plan;
}

}  // namespace kelvo
