// The sums of a rectangle against their plain definition, on every instruction set that the machine has.
#include "pixel/region_sums.h"

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <random>
#include <span>
#include <vector>

namespace kelvo {
namespace {

template <typename Sample>
RegionSums<Sample> Sum(const SampleRows& rows);
template <>
RegionSums<std::int32_t> Sum(const SampleRows& rows)
{
    return SumIntegers(rows);
}
template <>
RegionSums<float> Sum(const SampleRows& rows)
{
    return SumFloats(rows);
}

template <typename Sample>
RegionSums<Sample> Plain(const SampleRows& rows)
{
    RegionSums<Sample> region;
    std::array<double, 8> sums{};
    std::array<double, 8> squares{};
    for (std::size_t row = 0; row < rows.rows; ++row) {
        for (std::size_t column = 0; column < rows.columns; ++column) {
            Sample sample{};
            std::memcpy(&sample, rows.first + row * rows.strideBytes + column * sizeof(Sample), sizeof sample);
            const double value = sample;
            const volatile double square = value * value;  // rounded before it is added
            sums[column % 8] += value;
            squares[column % 8] += square;
            if (sample < region.least) region.least = sample;
            if (sample > region.most) region.most = sample;
        }
    }
    const auto total = [](const std::array<double, 8>& p) {
        return ((p[0] + p[1]) + (p[2] + p[3])) + ((p[4] + p[5]) + (p[6] + p[7]));
    };
    region.sum = total(sums);
    region.squares = total(squares);
    return region;
}

template <typename Sample>
void ExpectPlain(const std::vector<Sample>& samples, std::size_t columns, std::size_t stride, std::size_t shift)
{
    const std::size_t rows = 3;
    std::vector<std::byte> block(rows * stride * sizeof(Sample) + shift);
    std::ranges::copy(std::as_bytes(std::span(samples).first(rows * stride)),
                      block.begin() + static_cast<std::ptrdiff_t>(shift));
    const SampleRows region{block.data() + shift, columns, rows, stride * sizeof(Sample)};
    const RegionSums<Sample> expected = Plain<Sample>(region);
    const RegionSums<Sample> got = Sum<Sample>(region);
    ASSERT_EQ(got.sum, expected.sum) << columns;
    ASSERT_EQ(got.squares, expected.squares) << columns;
    ASSERT_EQ(got.least, expected.least) << columns;
    ASSERT_EQ(got.most, expected.most) << columns;
}

template <typename Sample, typename Make>
void ExpectPlainAtEveryLength(std::mt19937& random, Make make)
{
    for (std::size_t columns = 0; columns < 40; ++columns) {
        const std::size_t stride = columns + random() % 5;
        std::vector<Sample> samples(3 * stride);
        for (Sample& sample : samples) sample = make(random);
        ExpectPlain(samples, columns, stride, random() % 4);
    }
}

template <typename Check>
void OnEveryInstructionSet(Check check)
{
    const std::int64_t supported = hwy::SupportedTargets();
    for (std::int64_t rest = supported; rest != 0; rest &= rest - 1) {
        hwy::SetSupportedTargetsForTest(rest & -rest);
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
        SCOPED_TRACE(hwy::TargetName(rest & -rest));
        check();
    }
    hwy::SetSupportedTargetsForTest(0);
}

TEST(RegionSums, OfIntegersAreThePlainOnesOnEveryInstructionSet)
{
    std::mt19937 random(21);
    OnEveryInstructionSet([&] {
        ExpectPlainAtEveryLength<std::int32_t>(random, [](std::mt19937& r) { return static_cast<std::int32_t>(r()); });
        ExpectPlainAtEveryLength<std::int32_t>(
            random, [](std::mt19937& r) { return std::int32_t{static_cast<std::int16_t>(r())}; });
    });
}

TEST(RegionSums, OfFloatsAreThePlainOnesOnEveryInstructionSet)
{
    std::mt19937 random(22);
    std::normal_distribution<float> values(1000, 1e6);
    OnEveryInstructionSet([&] { ExpectPlainAtEveryLength<float>(random, [&](std::mt19937& r) { return values(r); }); });
}

TEST(RegionSums, WhatIsNoNumberIsNoExtremeOnAnyInstructionSet)
{
    static constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
    OnEveryInstructionSet([] {
        for (std::size_t columns = 1; columns < 40; ++columns) {
            for (std::size_t place = 0; place < columns; ++place) {
                std::vector<float> row(columns, kNone);
                row[place] = -2.5F;
                const SampleRows rows{std::as_bytes(std::span(row)).data(), columns, 1, columns * sizeof(float)};
                EXPECT_EQ(SumFloats(rows).least, -2.5F) << columns << " " << place;
                EXPECT_EQ(SumFloats(rows).most, -2.5F) << columns << " " << place;
                row[place] = kNone;
                EXPECT_EQ(SumFloats(rows).least, std::numeric_limits<float>::infinity());
                EXPECT_EQ(SumFloats(rows).most, -std::numeric_limits<float>::infinity());
                EXPECT_TRUE(std::isnan(SumFloats(rows).sum));
            }
        }
    });
}

// 640 x 512 samples of 16 bits: n x 32768^2 has 49 bits.
TEST(RegionSums, OfSixteenBitsAreExact)
{
    std::vector<std::int32_t> samples(std::size_t{640} * 512);
    std::mt19937 random(23);
    std::int64_t sum = 0;
    std::int64_t squares = 0;
    for (std::int32_t& sample : samples) {
        sample = static_cast<std::int16_t>(random());
        sum += sample;
        squares += std::int64_t{sample} * sample;
    }
    const RegionSums<std::int32_t> region = SumIntegers({std::as_bytes(std::span(samples)).data(), 640, 512, 2560});
    EXPECT_EQ(region.sum, static_cast<double>(sum));
    EXPECT_EQ(region.squares, static_cast<double>(squares));
}

TEST(RegionSums, OfNothingAreZero)
{
    EXPECT_EQ(SumIntegers({}).sum, 0);
    EXPECT_EQ(SumIntegers({}).least, std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(SumIntegers({}).most, std::numeric_limits<std::int32_t>::min());
}

}  // namespace
}  // namespace kelvo
