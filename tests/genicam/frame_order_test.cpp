#include "genicam/frame_order.h"

#include "genicam/retry_times.h"

#include <gmock/gmock.h>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t kLimitUs = 1000;

std::vector<std::int64_t> Unwrapped(FrameNumbering numbering, const std::vector<std::uint64_t>& fromBuffers)
{
    NumberUnwrapper numbers(numbering);
    std::vector<std::int64_t> result;
    for (const std::uint64_t number : fromBuffers) result.push_back(numbers.NumberOf(number));
    return result;
}

TEST(NumbersOf16Bits, GoFrom65535To1)
{
    EXPECT_THAT(Unwrapped(FrameNumbering::k16Bits, {65533, 65534, 65535, 1, 2}), ElementsAre(1, 2, 3, 4, 5));
}

TEST(NumbersOf16Bits, TellWhatIsMissingAcrossTheEnd)
{
    EXPECT_THAT(Unwrapped(FrameNumbering::k16Bits, {65534, 3}), ElementsAre(1, 5)) << "65535, 1 and 2 are missing";
}

TEST(NumbersOf16Bits, KnowALateOneFromTheNextRound)
{
    EXPECT_THAT(Unwrapped(FrameNumbering::k16Bits, {65534, 1, 65535, 2}), ElementsAre(1, 3, 2, 4));
    EXPECT_THAT(Unwrapped(FrameNumbering::k16Bits, {5, 4}), ElementsAre(1, 0)) << "from before the first";
}

TEST(NumbersOf16Bits, GoRoundManyTimes)
{
    NumberUnwrapper numbers(FrameNumbering::k16Bits);
    std::uint64_t given = 40'000;
    for (std::int64_t expected = 1; expected <= 400'000; ++expected) {
        ASSERT_EQ(numbers.NumberOf(given), expected);
        given = given == 65535 ? 1 : given + 1;
    }
}

TEST(NumbersOf16Bits, ACameraThatGivesNoneCountsByItsBuffers)
{
    EXPECT_THAT(Unwrapped(FrameNumbering::k16Bits, {0, 0, 0}), ElementsAre(1, 2, 3));
}

TEST(NumbersOf64Bits, NeverGoRound)
{
    EXPECT_THAT(Unwrapped(FrameNumbering::k64Bits, {0, 1, 65535, 65536, 65534, 65537}),
                ElementsAre(1, 2, 65536, 65537, 65535, 65538));
}

std::vector<std::int64_t> NumbersOf(const std::vector<OrderedFrame>& frames)
{
    std::vector<std::int64_t> numbers;
    for (const OrderedFrame& frame : frames) numbers.push_back(frame.number);
    return numbers;
}

TEST(Order, GivesFramesAtOnceThatComeInOrder)
{
    ArrivalOrder order(4, kLimitUs);
    for (std::int64_t number = 1; number <= 3; ++number) {
        EXPECT_TRUE(order.Take(number, true, static_cast<std::size_t>(10 * number), 0));
        EXPECT_THAT(order.TakeReady(0), ElementsAre(OrderedFrame{number, 0, static_cast<std::size_t>(10 * number)}));
    }
    EXPECT_EQ(order.Lost(), 0);
}

TEST(Order, PutsALateFrameInItsPlace)
{
    ArrivalOrder order(4, kLimitUs);
    EXPECT_TRUE(order.Take(2, true, 20, 0));
    EXPECT_TRUE(order.Take(3, true, 30, 10));
    EXPECT_THAT(order.TakeReady(10), IsEmpty());
    EXPECT_TRUE(order.Take(1, true, 11, 20));
    EXPECT_THAT(NumbersOf(order.TakeReady(20)), ElementsAre(1, 2, 3));
    EXPECT_EQ(order.Lost(), 0);
}

TEST(Order, ADamagedFrameIsLostAndHoldsNothingUp)
{
    ArrivalOrder order(4, kLimitUs);
    order.Take(1, true, 1, 0);
    EXPECT_FALSE(order.Take(2, false, 2, 0));
    order.Take(3, true, 3, 0);
    EXPECT_THAT(order.TakeReady(0), ElementsAre(OrderedFrame{1, 0, 1}, OrderedFrame{3, 1, 3}));
    EXPECT_EQ(order.Lost(), 1);
}

TEST(Order, GivesAFrameThatNeverCameUpAfterAWhile)
{
    ArrivalOrder order(4, kLimitUs);
    order.Take(1, true, 1, 0);
    order.TakeReady(0);
    order.Take(4, true, 4, 100);
    EXPECT_THAT(order.TakeReady(1099), IsEmpty());
    EXPECT_THAT(order.TakeReady(1100), ElementsAre(OrderedFrame{4, 2, 4}));
    EXPECT_FALSE(order.Take(2, true, 2, 1200)) << "after its turn";
    EXPECT_THAT(order.TakeReady(9999), IsEmpty());
    EXPECT_EQ(order.Lost(), 2);
}

TEST(Order, GivesItUpAtOnceWhereTooManyWait)
{
    ArrivalOrder order(2, kLimitUs);
    for (const std::int64_t number : {2, 3, 4}) order.Take(number, true, static_cast<std::size_t>(number), 0);
    EXPECT_THAT(NumbersOf(order.TakeReady(0)), ElementsAre(2, 3, 4));
    EXPECT_EQ(order.Lost(), 1);
}

TEST(Order, TakesNoFrameTwice)
{
    ArrivalOrder order(4, kLimitUs);
    EXPECT_TRUE(order.Take(2, true, 2, 0));
    EXPECT_FALSE(order.Take(2, true, 3, 0));
    order.Take(1, true, 1, 0);
    EXPECT_THAT(NumbersOf(order.TakeReady(0)), ElementsAre(1, 2));
}

TEST(Order, AtTheEndGivesAllThatWait)
{
    ArrivalOrder order(9, kLimitUs);
    for (const std::int64_t number : {5, 3}) order.Take(number, true, static_cast<std::size_t>(number), 0);
    order.Take(4, false, 4, 0);
    EXPECT_THAT(order.TakeAll(), ElementsAre(OrderedFrame{3, 2, 3}, OrderedFrame{5, 3, 5}));
}

TEST(RetryTimes, GrowToFiveSeconds)
{
    EXPECT_EQ(RetryDelayMs(0), 500);
    EXPECT_EQ(RetryDelayMs(1), 1000);
    EXPECT_EQ(RetryDelayMs(2), 2000);
    EXPECT_EQ(RetryDelayMs(3), 4000);
    EXPECT_EQ(RetryDelayMs(4), 5000);
    EXPECT_EQ(RetryDelayMs(1000), 5000);
}

}  // namespace
}  // namespace kelvo
