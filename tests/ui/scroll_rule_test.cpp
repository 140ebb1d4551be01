#include "ui/scroll_rule.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

constexpr ScrollBarState kBrightness{1, 1000, 500};
constexpr ScrollKeys kNoKeys{};

int Vertical(const ScrollBarState& bar, ScrollCode code, int thumb = 0, const ScrollKeys& keys = kNoKeys)
{
    return ScrolledPosition(bar, false, code, thumb, keys);
}
int Horizontal(const ScrollBarState& bar, ScrollCode code, const ScrollKeys& keys)
{
    return ScrolledPosition(bar, true, code, 0, keys);
}

TEST(ScrollRule, LinesMoveByOne)
{
    EXPECT_EQ(Vertical(kBrightness, ScrollCode::kLineUp), 499);
    EXPECT_EQ(Vertical(kBrightness, ScrollCode::kLineDown), 501);
}

TEST(ScrollRule, PagesMoveByASixteenthOfTheRange)
{
    EXPECT_EQ(Vertical(kBrightness, ScrollCode::kPageUp), 500 - 62);
    EXPECT_EQ(Vertical(kBrightness, ScrollCode::kPageDown), 500 + 62);
}

TEST(ScrollRule, APageIsAtLeastTwo)
{
    EXPECT_EQ(Vertical({0, 15, 8}, ScrollCode::kPageDown), 10);
    EXPECT_EQ(Vertical({0, 46, 8}, ScrollCode::kPageDown), 10);  // 47 / 16 = 2
    EXPECT_EQ(Vertical({0, 47, 8}, ScrollCode::kPageDown), 11);  // 48 / 16 = 3
}

TEST(ScrollRule, ThumbAndEndsAreTakenAsTheyAre)
{
    EXPECT_EQ(Vertical(kBrightness, ScrollCode::kThumbTrack, 321), 321);
    EXPECT_EQ(Vertical(kBrightness, ScrollCode::kThumbPosition, 123), 123);
    EXPECT_EQ(Vertical(kBrightness, ScrollCode::kTop), 1);
    EXPECT_EQ(Vertical(kBrightness, ScrollCode::kBottom), 1000);
    EXPECT_EQ(Vertical(kBrightness, ScrollCode::kEnd), 500);
}

TEST(ScrollRule, TheResultStaysInTheRange)
{
    EXPECT_EQ(Vertical({1, 1000, 1}, ScrollCode::kLineUp), 1);
    EXPECT_EQ(Vertical({1, 1000, 1000}, ScrollCode::kPageDown), 1000);
    EXPECT_EQ(Vertical(kBrightness, ScrollCode::kThumbTrack, -5), 1);
    EXPECT_EQ(Vertical(kBrightness, ScrollCode::kThumbTrack, 4000), 1000);
}

TEST(ScrollRule, OnAHorizontalBarAHeldUpMovesUpAndAHeldDownMovesDown)
{
    EXPECT_EQ(Horizontal(kBrightness, ScrollCode::kLineUp, kNoKeys), 499);
    EXPECT_EQ(Horizontal(kBrightness, ScrollCode::kLineUp, {.up = true}), 501);
    EXPECT_EQ(Horizontal(kBrightness, ScrollCode::kLineDown, {.down = true}), 499);
    EXPECT_EQ(Horizontal(kBrightness, ScrollCode::kPageUp, {.pageUp = true}), 562);
    EXPECT_EQ(Horizontal(kBrightness, ScrollCode::kPageDown, {.pageDown = true}), 438);
}

TEST(ScrollRule, OnlyTheCorrespondingKeyTurnsAStepAbout)
{
    EXPECT_EQ(Horizontal(kBrightness, ScrollCode::kLineUp, {.down = true, .pageUp = true, .pageDown = true}), 499);
    EXPECT_EQ(Horizontal(kBrightness, ScrollCode::kPageDown, {.up = true, .down = true, .pageUp = true}), 562);
}

TEST(ScrollRule, AVerticalBarKnowsNoKeys)
{
    const ScrollKeys all{true, true, true, true};
    EXPECT_EQ(Vertical(kBrightness, ScrollCode::kLineUp, 0, all), 499);
    EXPECT_EQ(Vertical(kBrightness, ScrollCode::kPageDown, 0, all), 562);
}

}  // namespace
}  // namespace kelvo
