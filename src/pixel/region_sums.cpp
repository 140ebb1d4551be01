#include "pixel/region_sums.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "pixel/region_sums.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <cstring>

// Compiled once for each instruction set; the machine picks one at the first call.
HWY_BEFORE_NAMESPACE();
namespace kelvo::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

constexpr std::size_t kParts = 8;

template <typename Sample>
using Block = std::array<Sample, kParts>;

// The parts between two rows.
template <typename Sample>
struct Parts {
    Block<double> sums{};
    Block<double> squares{};
    Block<Sample> least{};
    Block<Sample> most{};
};

#if HWY_TARGET != HWY_SCALAR && !HWY_HAVE_SCALABLE

// Eight values in as many registers as they take.
template <typename T>
class Registers {
  public:
    using Tag = hn::CappedTag<T, kParts>;
    static constexpr std::size_t kLanes = hn::MaxLanes(Tag());
    static constexpr std::size_t kCount = kParts / kLanes;

    explicit Registers(const Block<T>& values)
    {
        for (std::size_t k = 0; k < kCount; ++k) registers_[k] = hn::LoadU(Tag(), values.data() + k * kLanes);
    }
    void Store(Block<T>& values) const
    {
        for (std::size_t k = 0; k < kCount; ++k) hn::StoreU(registers_[k], Tag(), values.data() + k * kLanes);
    }
    HWY_INLINE hn::Vec<Tag>& operator[](std::size_t k) { return registers_[k]; }

  private:
    hn::Vec<Tag> registers_[kCount];
};

// What is no number is left out: on x86 the second operand stands then.
template <class V>
HWY_INLINE V Lesser(V value, V least)
{
#if HWY_ARCH_X86
    return hn::Min(value, least);
#else
    return hn::IfThenElse(hn::Lt(value, least), value, least);
#endif
}
template <class V>
HWY_INLINE V Greater(V value, V most)
{
#if HWY_ARCH_X86
    return hn::Max(value, most);
#else
    return hn::IfThenElse(hn::Lt(most, value), value, most);
#endif
}

template <typename Sample>
class Adder {
  public:
    explicit Adder(const Parts<Sample>& parts)
        : sums_(parts.sums), squares_(parts.squares), least_(parts.least), most_(parts.most)
    {
    }
    void Store(Parts<Sample>& parts) const
    {
        sums_.Store(parts.sums);
        squares_.Store(parts.squares);
        least_.Store(parts.least);
        most_.Store(parts.most);
    }
    HWY_INLINE void Add(const std::byte* block)
    {
        const auto* const samples = reinterpret_cast<const Sample*>(block);
        using Real = Registers<double>;
        const typename Real::Tag d;
        for (std::size_t k = 0; k < Real::kCount; ++k) {
            const auto part = hn::LoadU(hn::Rebind<Sample, typename Real::Tag>(), samples + k * Real::kLanes);
            const auto value = hn::PromoteTo(d, part);
            sums_[k] = hn::Add(sums_[k], value);
            squares_[k] = hn::Add(squares_[k], hn::Mul(value, value));
        }
    }
    HWY_INLINE void Compare(const std::byte* block)
    {
        const auto* const samples = reinterpret_cast<const Sample*>(block);
        using All = Registers<Sample>;
        for (std::size_t k = 0; k < All::kCount; ++k) {
            const auto value = hn::LoadU(typename All::Tag(), samples + k * All::kLanes);
            least_[k] = Lesser(value, least_[k]);
            most_[k] = Greater(value, most_[k]);
        }
    }

  private:
    Registers<double> sums_;
    Registers<double> squares_;
    Registers<Sample> least_;
    Registers<Sample> most_;
};

#else

template <typename Sample>
class Adder {
  public:
    explicit Adder(const Parts<Sample>& parts) : parts_(parts) {}
    void Store(Parts<Sample>& parts) const { parts = parts_; }
    void Add(const std::byte* block)
    {
        Block<Sample> samples;
        std::memcpy(samples.data(), block, sizeof samples);
        for (std::size_t k = 0; k < kParts; ++k) {
            const auto value = static_cast<double>(samples[k]);
            parts_.sums[k] += value;
            parts_.squares[k] += value * value;
        }
    }
    void Compare(const std::byte* block)
    {
        Block<Sample> samples;
        std::memcpy(samples.data(), block, sizeof samples);
        for (std::size_t k = 0; k < kParts; ++k) {
            if (samples[k] < parts_.least[k]) parts_.least[k] = samples[k];
            if (samples[k] > parts_.most[k]) parts_.most[k] = samples[k];
        }
    }

  private:
    Parts<Sample> parts_;
};

#endif

// The end of a row: zeros change no sum, and a sample that comes twice no extreme.
template <typename Sample>
HWY_INLINE void AddEnd(Adder<Sample>& adder, const std::byte* end, std::size_t columns)
{
    Block<Sample> samples{};
    std::memcpy(samples.data(), end, columns * sizeof(Sample));
    adder.Add(reinterpret_cast<const std::byte*>(samples.data()));
    std::fill(samples.begin() + static_cast<std::ptrdiff_t>(columns), samples.end(), samples.front());
    adder.Compare(reinterpret_cast<const std::byte*>(samples.data()));
}

template <typename Sample>
void AddRow(Parts<Sample>& parts, const std::byte* row, std::size_t columns)
{
    Adder<Sample> adder(parts);
    std::size_t column = 0;
    for (; column + kParts <= columns; column += kParts) {
        const std::byte* const block = row + column * sizeof(Sample);
        adder.Add(block);
        adder.Compare(block);
    }
    if (column < columns) AddEnd(adder, row + column * sizeof(Sample), columns - column);
    adder.Store(parts);
}

double Total(const Block<double>& parts)
{
    return ((parts[0] + parts[1]) + (parts[2] + parts[3])) + ((parts[4] + parts[5]) + (parts[6] + parts[7]));
}

template <typename Sample>
RegionSums<Sample> SumRegion(const SampleRows& rows)
{
    RegionSums<Sample> region;
    Parts<Sample> parts;
    parts.least.fill(region.least);
    parts.most.fill(region.most);
    for (std::size_t row = 0; row < rows.rows; ++row) {
        AddRow(parts, rows.first + row * rows.strideBytes, rows.columns);
    }
    region.sum = Total(parts.sums);
    region.squares = Total(parts.squares);
    region.least = *std::min_element(parts.least.begin(), parts.least.end());
    region.most = *std::max_element(parts.most.begin(), parts.most.end());
    return region;
}

RegionSums<std::int32_t> Integers(const SampleRows& rows)
{
    return SumRegion<std::int32_t>(rows);
}
RegionSums<float> Floats(const SampleRows& rows)
{
    return SumRegion<float>(rows);
}

}  // namespace kelvo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvo {

HWY_EXPORT(Integers);
HWY_EXPORT(Floats);

RegionSums<std::int32_t> SumIntegers(const SampleRows& rows)
{
    return HWY_DYNAMIC_DISPATCH(Integers)(rows);
}

RegionSums<float> SumFloats(const SampleRows& rows)
{
    return HWY_DYNAMIC_DISPATCH(Floats)(rows);
}

}  // namespace kelvo
#endif
