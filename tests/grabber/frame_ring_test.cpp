#include "grabber/frame_ring.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::Optional;

// Frame n bears number n, and n as each of its values.
class Ring : public testing::Test {
  protected:
    Ring() { EXPECT_TRUE(ring.Allocate(3, 4)); }

    bool Put(std::int16_t n)
    {
        CapturedFrame& frame = ring.Claim();
        frame.stamp = {.number = n};
        for (std::int16_t& value : frame.values) value = n;
        return ring.Commit();
    }
    std::vector<std::int64_t> Numbers() const
    {
        std::vector<std::int64_t> numbers;
        for (std::size_t i = 0; i < ring.Waiting(); ++i) numbers.push_back(ring.At(i).stamp.number);
        return numbers;
    }
    std::vector<std::int16_t> ValuesAt(std::size_t index) const
    {
        const std::span<const std::int16_t> values = ring.At(index).values;
        return {values.begin(), values.end()};
    }
    std::optional<std::int64_t> NumberOfNewest()
    {
        std::vector<std::int16_t> values(4);
        const std::optional<FrameStamp> stamp = ring.CopyNewest(values, 0);
        if (!stamp) return std::nullopt;
        EXPECT_THAT(values, testing::Each(static_cast<std::int16_t>(stamp->number)));
        return stamp->number;
    }

    FrameRing ring;
};

TEST_F(Ring, GivesFramesInTheOrderInWhichTheyCame)
{
    Put(1);
    Put(2);
    EXPECT_THAT(Numbers(), ElementsAre(1, 2));
    ring.Drop(1);
    Put(3);
    Put(4);
    EXPECT_THAT(Numbers(), ElementsAre(2, 3, 4));
    EXPECT_THAT(ValuesAt(2), ElementsAre(4, 4, 4, 4));
}

TEST_F(Ring, KeepsTheOldestWhereNoPlaceIsFree)
{
    for (std::int16_t n = 1; n <= 3; ++n) EXPECT_TRUE(Put(n));
    for (std::int16_t n = 4; n <= 9; ++n) EXPECT_FALSE(Put(n));
    EXPECT_THAT(Numbers(), ElementsAre(1, 2, 3));
    ring.Drop(1);
    EXPECT_TRUE(Put(10));
    EXPECT_THAT(Numbers(), ElementsAre(2, 3, 10));
}

TEST_F(Ring, ShowsTheNewestEvenWhereItFindsNoPlace)
{
    EXPECT_EQ(NumberOfNewest(), std::nullopt);
    for (std::int16_t n = 1; n <= 5; ++n) Put(n);
    EXPECT_THAT(NumberOfNewest(), Optional(5));
    EXPECT_THAT(Numbers(), ElementsAre(1, 2, 3));
}

TEST_F(Ring, ShowsEachNewestOnce)
{
    Put(1);
    EXPECT_THAT(NumberOfNewest(), Optional(1));
    EXPECT_EQ(NumberOfNewest(), std::nullopt);
    ring.Drop(1);
    EXPECT_EQ(NumberOfNewest(), std::nullopt);
    Put(2);
    ring.Drop(1);
    EXPECT_THAT(NumberOfNewest(), Optional(2)) << "dropped, and still the newest";
}

TEST_F(Ring, LooksAtFramesWithoutTakingThemAway)
{
    Put(1);
    NumberOfNewest();
    EXPECT_THAT(Numbers(), ElementsAre(1));
}

TEST_F(Ring, DropsNoMoreThanWaits)
{
    Put(1);
    ring.Drop(7);
    EXPECT_EQ(ring.Waiting(), 0U);
    Put(2);
    EXPECT_THAT(Numbers(), ElementsAre(2));
}

TEST_F(Ring, UsesFewPlacesWhileWhoRecordsKeepsUp)
{
    ASSERT_TRUE(ring.Allocate(100, 4));
    std::vector<const CapturedFrame*> places;
    for (std::int16_t n = 1; n <= 50; ++n) {
        Put(n);
        const CapturedFrame* const place = &ring.At(0);
        if (std::ranges::find(places, place) == places.end()) places.push_back(place);
        ring.Drop(1);
    }
    EXPECT_LE(places.size(), 2U);
}

TEST_F(Ring, WaitsForNothingOnceItIsClosed)
{
    ring.Close();
    EXPECT_EQ(ring.WaitForMore(0, 60'000), 0U);
    std::vector<std::int16_t> values(4);
    EXPECT_EQ(ring.CopyNewest(values, 60'000), std::nullopt);
}

}  // namespace
}  // namespace kelvo
