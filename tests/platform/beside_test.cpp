// The place of a second window beside the first.
#include "platform/beside.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

const QSize kHelp(900, 600);
const QRect kScreen(0, 0, 1920, 1080);

TEST(Beside, StandsToTheRightWhereThereIsRoom)
{
    EXPECT_EQ(PlaceBeside(QRect(10, 20, 1000, 800), kHelp, {kScreen}), QPoint(1010, 20));
    EXPECT_EQ(PlaceBeside(QRect(20, 20, 1000, 800), kHelp, {kScreen}), QPoint(1020, 20)) << "exactly";
}

TEST(Beside, StandsToTheLeftElse)
{
    EXPECT_EQ(PlaceBeside(QRect(1000, 20, 920, 800), kHelp, {kScreen}), QPoint(100, 20));
    EXPECT_EQ(PlaceBeside(QRect(900, 20, 1020, 800), kHelp, {kScreen}), QPoint(0, 20)) << "exactly";
}

TEST(Beside, StaysWithinTheHeightOfTheScreen)
{
    EXPECT_EQ(PlaceBeside(QRect(0, 700, 1000, 300), kHelp, {kScreen}), QPoint(1000, 480));
    EXPECT_EQ(PlaceBeside(QRect(0, -40, 1000, 300), kHelp, {kScreen}), QPoint(1000, 0));
}

TEST(Beside, TakesAnotherScreenWhenTheWindowFillsItsOwn)
{
    const QRect second(1920, 0, 1280, 1024);
    EXPECT_EQ(PlaceBeside(kScreen, kHelp, {kScreen, second}), QPoint(1920 + 190, 212));
    EXPECT_EQ(PlaceBeside(second, kHelp, {kScreen, second}), QPoint(510, 240));
}

TEST(Beside, ElseLeavesTheLeftOfThePictureInSight)
{
    EXPECT_EQ(PlaceBeside(kScreen, kHelp, {kScreen}), QPoint(1020, 0));
    EXPECT_EQ(PlaceBeside(kScreen, kHelp, {kScreen, QRect(1920, 0, 640, 480)}), QPoint(1020, 0)) << "too small";
    EXPECT_EQ(PlaceBeside(QRect(0, 0, 800, 600), kHelp, {QRect(0, 0, 800, 600)}), QPoint(0, 0));
}

TEST(Beside, WithoutAScreenStandsWhereTheWindowIs)
{
    EXPECT_EQ(PlaceBeside(QRect(3, 4, 10, 10), kHelp, {}), QPoint(3, 4));
}

}  // namespace
}  // namespace kelvo
