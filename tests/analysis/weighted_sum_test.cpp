// The sums of image math against numbers worked by hand, and against integers where those are exact.
#include "analysis/weighted_sum.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace kelvo {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;

using Counts = std::vector<std::int16_t>;

std::int64_t Combine(const Weights& weights, const Counts& source1, const Counts& source2, Counts& result)
{
    return WeightedSum(weights, source1, source2, result);
}

TEST(WeightedSum, IsTruncatedTowardZero)
{
    Counts result(4);
    EXPECT_EQ(Combine({.c1 = 0.5F, .c2 = 0.25F, .c3 = 0}, {1, -1, 3, -3}, {1, -1, 1, -1}, result), 0);
    EXPECT_THAT(result, ElementsAre(0, 0, 1, -1));  // 0.75, -0.75, 1.75, -1.75
}

// 40000 - 65536
TEST(WeightedSum, OnlyTheLow16BitsOfALargeSumSurvive)
{
    Counts result(3);
    EXPECT_EQ(Combine({.c1 = 2, .c2 = 0, .c3 = 0}, {20000, 16383, -16384}, {}, result), 1);
    EXPECT_THAT(result, ElementsAre(-25536, 32766, -32768));
    EXPECT_EQ(Combine({.c1 = 0, .c2 = 0, .c3 = 40000.0F}, {}, {}, result), 3);
    EXPECT_THAT(result, Each(-25536));
}

TEST(WeightedSum, AConstantOfZeroLooksAtNoSource)
{
    Counts result(2, 7);
    EXPECT_EQ(Combine({}, {}, {}, result), 0);
    EXPECT_THAT(result, ElementsAre(0, 0));
    EXPECT_EQ(Combine({.c1 = 0, .c2 = -1, .c3 = 3.9F}, {}, {10, 1}, result), 0);
    EXPECT_THAT(result, ElementsAre(-6, 2));  // -6.1, 2.9
    EXPECT_EQ(Combine({.c1 = -0.0F, .c2 = 1, .c3 = 0}, {}, {10, 1}, result), 0);
    EXPECT_THAT(result, ElementsAre(10, 1));
}

// Just at the ends of 16 bits the fraction doesn't count.
TEST(WeightedSum, ASumThatTruncatesInto16BitsHasNotLeftThem)
{
    EXPECT_FALSE(LeavesSixteenBits(32767.9));
    EXPECT_FALSE(LeavesSixteenBits(-32768.9));
    EXPECT_TRUE(LeavesSixteenBits(32768.0));
    EXPECT_TRUE(LeavesSixteenBits(-32769.0));
    EXPECT_TRUE(LeavesSixteenBits(std::nan("")));
    Counts result(3);
    EXPECT_EQ(Combine({.c1 = 1, .c2 = 0, .c3 = 0.875F}, {32767, -32768, 32766}, {}, result), 0);
    EXPECT_THAT(result, ElementsAre(32767, -32767, 32766));  // -32767.125
    EXPECT_EQ(Combine({.c1 = 1, .c2 = 0, .c3 = -0.875F}, {32767, -32768, 0}, {}, result), 0);
    EXPECT_THAT(result, ElementsAre(32766, -32768, 0));  // -32768.875
}

TEST(WeightedSum, ASumBeyond32BitsKeepsItsOwnLowBits)
{
    EXPECT_EQ(StoredSum(4294967296.0 + 5), 5);
    EXPECT_EQ(StoredSum(-4294967296.0 - 5), -5);
    EXPECT_EQ(StoredSum(0x1p62 + 1024), 1024);
    Counts result(3);
    EXPECT_EQ(Combine({.c1 = 1048577.0F, .c2 = 0, .c3 = 0}, {32767, 1, -3}, {}, result), 3);
    EXPECT_THAT(result, ElementsAre(32767, 1, -3));  // 2^20 x n + n
}

TEST(WeightedSum, WhatNo64BitsHoldIsStoredAsZero)
{
    for (const double sum : {0x1p63, -0x1p64, 1e300, std::numeric_limits<double>::infinity(), std::nan("")}) {
        EXPECT_EQ(StoredSum(sum), 0) << sum;
        EXPECT_TRUE(LeavesSixteenBits(sum)) << sum;
    }
    Counts result(2);
    EXPECT_EQ(Combine({.c1 = 3e38F, .c2 = 3e38F, .c3 = 0}, {1, 0}, {1, 0}, result), 1);
    EXPECT_THAT(result, ElementsAre(0, 0));
}

// Weights in 1/256 make every sum a whole number of 1/256, which 64 bits hold exactly.
void ExpectIntegerSums(std::size_t size, std::int32_t weightLimit, std::mt19937& random)
{
    std::uniform_int_distribution<std::int32_t> weight(-weightLimit, weightLimit);
    const std::int64_t w1 = weight(random);
    const std::int64_t w2 = weight(random);
    const std::int64_t w3 = std::int64_t{weight(random)} * 64;
    const Weights weights{static_cast<float>(w1) / 256, static_cast<float>(w2) / 256, static_cast<float>(w3) / 256};
    Counts source1(size);
    Counts source2(size);
    for (std::int16_t& count : source1) count = static_cast<std::int16_t>(random());
    for (std::int16_t& count : source2) count = static_cast<std::int16_t>(random());
    Counts result(size + 1, 4711);
    const std::int64_t wrapped = WeightedSum(weights, source1, source2, std::span(result).first(size));
    std::int64_t expectedWrapped = 0;
    for (std::size_t i = 0; i < size; ++i) {
        const std::int64_t sum = (w1 * source1[i] + w2 * source2[i] + w3) / 256;  // C++ divides toward zero
        ASSERT_EQ(result[i], static_cast<std::int16_t>(sum)) << i << " of " << size;
        expectedWrapped += sum < -32768 || sum > 32767 ? 1 : 0;
    }
    ASSERT_EQ(wrapped, expectedWrapped) << size;
    ASSERT_EQ(result[size], 4711);
}

TEST(WeightedSum, EveryLengthIsExactOnEveryInstructionSet)
{
    const std::int64_t supported = hwy::SupportedTargets();
    for (std::int64_t rest = supported; rest != 0; rest &= rest - 1) {
        hwy::SetSupportedTargetsForTest(rest & -rest);
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
        SCOPED_TRACE(hwy::TargetName(rest & -rest));
        std::mt19937 random(7);
        for (const std::int32_t limit : {200, 60000, 8000000}) {
            for (std::size_t size = 0; size < 70; ++size) ExpectIntegerSums(size, limit, random);
            ExpectIntegerSums(5003, limit, random);
        }
    }
    hwy::SetSupportedTargetsForTest(0);
}

// Weights of any fraction: the plain definition, one operation after the other.
TEST(WeightedSum, RoundsAlikeOnEveryInstructionSet)
{
    std::mt19937 random(8);
    std::uniform_real_distribution<float> weight(-3, 3);
    const std::int64_t supported = hwy::SupportedTargets();
    for (std::int64_t rest = supported; rest != 0; rest &= rest - 1) {
        hwy::SetSupportedTargetsForTest(rest & -rest);
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
        SCOPED_TRACE(hwy::TargetName(rest & -rest));
        for (int round = 0; round < 40; ++round) {
            const Weights weights{weight(random), round % 3 == 0 ? 0 : weight(random), weight(random) * 1e-7F};
            Counts source1(131);
            Counts source2(131);
            for (std::int16_t& count : source1) count = static_cast<std::int16_t>(random());
            for (std::int16_t& count : source2) count = static_cast<std::int16_t>(random());
            Counts result(131);
            Combine(weights, source1, source2, result);
            for (std::size_t i = 0; i < result.size(); ++i) {
                const volatile double product1 = double{weights.c1} * source1[i];
                const volatile double product2 = double{weights.c2} * source2[i];
                const volatile double both = product1 + product2;
                const volatile double sum = both + double{weights.c3};
                ASSERT_EQ(result[i], static_cast<std::int16_t>(static_cast<std::int64_t>(sum))) << i;
            }
        }
    }
    hwy::SetSupportedTargetsForTest(0);
}

}  // namespace
}  // namespace kelvo
