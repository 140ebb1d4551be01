#include "acquire/frame_sums.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <random>
#include <vector>

namespace kelvo {
namespace {

using ::testing::ElementsAre;

TEST(FrameSums, ExtremesAddUpExactly)
{
    const std::vector<std::int16_t> frame = {-32768, 32767, -1};
    std::vector<std::int32_t> sums = {0, 0, 5};
    std::vector<double> squares(3, 1);
    AddFrame(frame, sums, squares);
    AddFrame(frame, sums, squares);
    EXPECT_THAT(sums, ElementsAre(-65536, 65534, 3));
    EXPECT_THAT(squares, ElementsAre(2147483649.0, 2147352579.0, 3));  // 2 x 2^30 + 1, 2 x 32767^2 + 1
}

TEST(FrameSums, SumsWrapInThirtyTwoBits)
{
    const std::vector<std::int16_t> frame(9, 1);
    std::vector<std::int32_t> sums(9, 2147483647);
    AddFrame(frame, sums, {});
    EXPECT_THAT(sums, ::testing::Each(-2147483647 - 1));
}

TEST(FrameSums, FloatsAreAddedInSinglePrecision)
{
    const std::vector<std::int16_t> frame(9, 1);
    std::vector<float> sums(9, 16777216.0F);
    AddFrame(frame, sums, {});
    EXPECT_THAT(sums, ::testing::Each(16777216.0F));  // 2^24 + 1 isn't single
}

template <typename T>
void ExpectPlainSums(std::size_t size, std::mt19937& random)
{
    std::vector<std::int16_t> frame(size);
    std::vector<T> sums(size + 1);
    std::vector<double> squares(size + 1, 0.5);
    for (std::int16_t& count : frame) count = static_cast<std::int16_t>(random());
    for (T& sum : sums) sum = static_cast<T>(static_cast<int>(random() % 2000000) - 1000000);
    std::vector<T> expected = sums;
    std::vector<double> expectedSquares = squares;
    for (std::size_t i = 0; i < size; ++i) {
        expected[i] = expected[i] + static_cast<T>(frame[i]);
        expectedSquares[i] += static_cast<double>(frame[i]) * frame[i];
    }
    AddFrame(frame, sums, squares);
    ASSERT_EQ(sums, expected) << size;
    ASSERT_EQ(squares, expectedSquares) << size;
}

TEST(FrameSums, EveryLengthIsAddedOnEveryInstructionSet)
{
    const std::int64_t supported = hwy::SupportedTargets();
    for (std::int64_t rest = supported; rest != 0; rest &= rest - 1) {
        hwy::SetSupportedTargetsForTest(rest & -rest);
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
        SCOPED_TRACE(hwy::TargetName(rest & -rest));
        std::mt19937 random(5);
        for (std::size_t size = 0; size < 70; ++size) ExpectPlainSums<std::int32_t>(size, random);
        for (std::size_t size = 0; size < 70; ++size) ExpectPlainSums<float>(size, random);
        ExpectPlainSums<std::int32_t>(5003, random);
        ExpectPlainSums<float>(5003, random);
    }
    hwy::SetSupportedTargetsForTest(0);
}

}  // namespace
}  // namespace kelvo
