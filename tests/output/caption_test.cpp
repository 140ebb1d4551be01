#include "output/caption.h"

#include "dibapi32/dibapi32.h"
#include "platform/faults.h"
#include "platform/memory.h"
#include "platform/paint.h"
#include "support/operator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace kelvo {
namespace {

constexpr int kWidth = 60;
constexpr int kHeight = 40;
constexpr std::uint32_t kWhite = 0xFFFFFF;

// A picture of colours that no caption has.
std::uint32_t ColorAt(int x, int y)
{
    return static_cast<std::uint32_t>(0x400000 + (x << 8) + y);
}

Dib Picture()
{
    DeviceBitmap bitmap{.width = kWidth, .height = kHeight, .pixels = {}};
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) bitmap.pixels.push_back(ColorAt(x, y));
    }
    return DibFromBitmap(bitmap);
}

class Caption : public testing::Test {
  protected:
    // Something all but black in the rows from first to before last: letters are smoothed.
    static bool HasLetters(const DeviceBitmap& bitmap, int first, int last)
    {
        const auto row = [&](int y) { return bitmap.pixels.begin() + std::ptrdiff_t{y} * bitmap.width; };
        return std::any_of(row(first), row(last),
                           [](std::uint32_t pixel) { return IsGray(pixel) && (pixel & 0xFF) < 0x60; });
    }
    static bool IsGray(std::uint32_t pixel)
    {
        return (pixel & 0xFF) == (pixel >> 16) && (pixel & 0xFF) == (pixel >> 8 & 0xFF);
    }

    TestOperator op;
};

TEST_F(Caption, BelowGrowsThePictureByItsLine)
{
    const auto bitmap = BitmapFromDib(AddCaption(Picture(), "MMM", 2, 2));
    ASSERT_TRUE(bitmap);
    ASSERT_EQ(bitmap->width, kWidth);
    ASSERT_EQ(bitmap->height, kHeight + 1 + PictureTextHeight() + 2);
    for (int i = 0; i < kWidth * kHeight; ++i) {
        ASSERT_EQ(bitmap->pixels[static_cast<std::size_t>(i)], ColorAt(i % kWidth, i / kWidth)) << i;
    }
    for (std::size_t i = kWidth * kHeight; i < bitmap->pixels.size(); ++i) EXPECT_TRUE(IsGray(bitmap->pixels[i]));
    const auto secondRow = bitmap->pixels.begin() + kWidth * kHeight;
    EXPECT_EQ(std::count(secondRow, secondRow + 2 * kWidth, kWhite), 2 * kWidth) << "the text begins two rows below";
    EXPECT_TRUE(HasLetters(*bitmap, kHeight + 2, bitmap->height));
}

TEST_F(Caption, BottomWritesOverTheLastRows)
{
    const int y = -(PictureTextHeight() + 2);
    const auto bitmap = BitmapFromDib(AddCaption(Picture(), "MMM", 2, y));
    ASSERT_TRUE(bitmap);
    ASSERT_EQ(bitmap->height, kHeight);
    EXPECT_TRUE(HasLetters(*bitmap, kHeight + y, kHeight - 2));
    // Around its own line the picture is as it was.
    for (int row = 0; row < kHeight; ++row) {
        const bool beside = row < kHeight + y || row >= kHeight - 2;
        for (int x = 0; x < kWidth; ++x) {
            const std::uint32_t pixel = bitmap->pixels[static_cast<std::size_t>(row * kWidth + x)];
            if (beside || x < 2) {
                ASSERT_EQ(pixel, ColorAt(x, row)) << x << "," << row;
            } else {
                ASSERT_TRUE(IsGray(pixel) || pixel == ColorAt(x, row)) << x << "," << row;
            }
        }
    }
}

TEST_F(Caption, StandsOnWhiteFromItsFirstColumnOn)
{
    const int y = -(PictureTextHeight() + 2);
    const auto bitmap = BitmapFromDib(AddCaption(Picture(), " ", 2, y));
    ASSERT_TRUE(bitmap);
    for (int row = kHeight + y; row < kHeight - 2; ++row) {
        EXPECT_EQ(bitmap->pixels[static_cast<std::size_t>(row * kWidth + 2)], kWhite);
    }
}

TEST_F(Caption, WiderThanThePictureIsCutAtItsEdge)
{
    const auto bitmap = BitmapFromDib(AddCaption(Picture(), std::string(119, 'M'), 2, 2));
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(bitmap->width, kWidth);
}

TEST_F(Caption, KeepsTheColoursOfAPalette)
{
    const Dib dib = CreateDIB(2, 1, 8);
    ASSERT_TRUE(dib);
    const std::span<std::uint8_t> table = DibPalette(*dib);
    table[4] = 30;  // colour 1: blue, green, red
    table[5] = 20;
    table[6] = 10;
    DibBits(*dib)[1] = 1;
    const auto bitmap = BitmapFromDib(AddCaption(dib, "x", 2, 2));
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(bitmap->pixels[0], 0U);
    EXPECT_EQ(bitmap->pixels[1], 0x0A141EU);
}

TEST_F(Caption, WithoutMemoryOrItsTextThereIsNone)
{
    for (int n = 1; n <= 3; ++n) {  // the picture, its growth, the new bitmap
        const Dib dib = Picture();
        FailAllocation(n);
        EXPECT_FALSE(AddCaption(dib, "x", 2, 2)) << n;
    }
    EXPECT_FALSE(AddCaption(nullptr, "x", 2, 2));
    SetFault("text", true);
    EXPECT_FALSE(AddCaption(Picture(), "x", 2, 2)) << "none is left out";
}

}  // namespace
}  // namespace kelvo
