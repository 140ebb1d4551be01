#include "genicam/still_picture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

namespace kelvo {
namespace {

using testing::ElementsAre;

TEST(StillPicture, SpreadsTheCountsOverTheGrays)
{
    const std::array<std::uint8_t, 4> bytes{10, 20, 30, 110};
    const auto picture = MakeStillPicture(bytes, *PixelFormatNamed("Mono8"), 2, 2);
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->columns, 2);
    EXPECT_EQ(picture->rows, 2);
    EXPECT_THAT(picture->gray, ElementsAre(0, 25, 51, 255));  // (count - 10) x 255 / 100
}

TEST(StillPicture, TakesSixteenBitsToTheirEnd)
{
    const std::array<std::uint8_t, 6> bytes{0, 0, 0, 0x80, 0xFF, 0xFF};
    const auto picture = MakeStillPicture(bytes, *PixelFormatNamed("Mono16"), 3, 1);
    ASSERT_TRUE(picture);
    EXPECT_THAT(picture->gray, ElementsAre(0, 127, 255));
}

TEST(StillPicture, IsBlackWhereAllIsAlike)
{
    const std::array<std::uint8_t, 3> bytes{7, 7, 7};
    const auto picture = MakeStillPicture(bytes, *PixelFormatNamed("Mono8"), 3, 1);
    ASSERT_TRUE(picture);
    EXPECT_THAT(picture->gray, ElementsAre(0, 0, 0));
}

TEST(StillPicture, IsNoneOfTooFewBytes)
{
    const std::array<std::uint8_t, 5> bytes{};
    EXPECT_FALSE(MakeStillPicture(bytes, *PixelFormatNamed("Mono14"), 3, 1));
    EXPECT_TRUE(MakeStillPicture(bytes, *PixelFormatNamed("Mono12p"), 3, 1));  // 36 bits
    EXPECT_FALSE(MakeStillPicture(bytes, *PixelFormatNamed("Mono8"), 0, 1));
}

}  // namespace
}  // namespace kelvo
