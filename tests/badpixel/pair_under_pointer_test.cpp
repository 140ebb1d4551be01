// Which pair of the list a press on the picture means.
#include "badpixel/pair_under_pointer.h"

#include <gtest/gtest.h>

#include <numeric>
#include <optional>
#include <vector>

namespace kelvo {
namespace {

constexpr int kColumns = 10;
constexpr int kRows = 8;

class PairNearTest : public testing::Test {
  protected:
    PairNearTest() : shown(std::size_t{kColumns} * kRows), table(shown.size())
    {
        config.Hroi = kColumns;
        config.Vroi = kRows;
        config.DecomScheme = 2;
        std::iota(shown.begin(), shown.end(), 0U);
        std::iota(table.begin(), table.end(), 0U);
    }
    std::optional<PairAtPixel> Near(int x, int y) const { return PairNear({x, y}, lines, shown, table, config); }
    static std::optional<PairAtPixel> Line(std::size_t line) { return PairAtPixel{.line = line, .answers = {}}; }
    static std::optional<PairAtPixel> AnsweredBy(std::size_t line, Point by)
    {
        return PairAtPixel{.line = line, .answers = by};
    }
    static constexpr std::uint32_t At(int x, int y) { return static_cast<std::uint32_t>(y * kColumns + x); }

    CameraConfig config;
    std::vector<PixelPair> lines{{.row = 1, .column = 2}, {.row = 4, .column = 5}, {.row = 4, .column = 7}};
    std::vector<std::uint32_t> shown;
    std::vector<std::uint32_t> table;
};

TEST_F(PairNearTest, IsTheOneUnderThePointer)
{
    EXPECT_EQ(Near(2, 1), Line(0));
    EXPECT_EQ(Near(5, 4), Line(1));
    EXPECT_EQ(Near(7, 4), Line(2));
}

TEST_F(PairNearTest, IsTheNearestWithinTwoPixels)
{
    EXPECT_EQ(Near(2, 3), Line(0));
    EXPECT_EQ(Near(3, 2), Line(0));
    EXPECT_EQ(Near(4, 2), std::nullopt) << "two to the right and one below is 2.24 away";
    EXPECT_EQ(Near(5, 1), std::nullopt);
    EXPECT_EQ(Near(8, 4), Line(2));
    EXPECT_EQ(Near(6, 4), Line(1)) << "as near as the other: the left one";
}

TEST_F(PairNearTest, IsTheOneForWhichTheNeighbourAnswersWhereNoBadOneIsNear)
{
    table[At(5, 4)] = At(2, 6);  // far from the bad pixel, as a wide search pattern allows
    EXPECT_EQ(Near(2, 6), AnsweredBy(1, {2, 6}));
    EXPECT_EQ(Near(1, 7), AnsweredBy(1, {2, 6}));
    EXPECT_EQ(Near(5, 4), Line(1)) << "a bad pixel comes first";
    table[At(5, 4)] = At(2, 2);
    EXPECT_EQ(Near(2, 2), Line(0)) << "a bad pixel near by, though this one answers for another";
    table.pop_back();
    EXPECT_EQ(Near(2, 6), std::nullopt) << "no table of this picture";
}

TEST_F(PairNearTest, FollowsTheTurnedPicture)
{
    for (int y = 0; y < kRows; ++y) {
        for (int x = 0; x < kColumns; ++x) shown[At(x, y)] = At(kColumns - 1 - x, y);  // columns mirrored
    }
    table = shown;
    EXPECT_EQ(Near(7, 1), Line(0));
    EXPECT_EQ(Near(2, 1), std::nullopt);
    table[At(4, 4)] = At(9, 7);  // what the bad one shows is the sample that the lower left pixel shows too
    EXPECT_EQ(Near(0, 7), AnsweredBy(1, {0, 7}));
}

TEST_F(PairNearTest, IsNoneForAPlaceOutsideThePictureOrAPictureOfAnotherSize)
{
    lines.push_back({.row = 7, .column = 9});
    EXPECT_EQ(Near(9, 7), Line(3));
    EXPECT_EQ(Near(500, 7), std::nullopt);
    EXPECT_EQ(Near(-500, -500), std::nullopt);
    lines = {{.row = 0, .column = kColumns}};  // a list may name the column behind the last
    EXPECT_EQ(Near(9, 0), std::nullopt);
    EXPECT_EQ(Near(0, 1), std::nullopt);
    lines = {{.row = 1, .column = 2}};
    shown.pop_back();
    EXPECT_EQ(Near(2, 1), std::nullopt);
    config.Hroi = 0;
    EXPECT_EQ(Near(2, 1), std::nullopt);
}

}  // namespace
}  // namespace kelvo
