// Pictures on pages against figures worked by hand: a page of 2400 x 3000 printer's pixels, 300 an inch both ways.
#include "output/page_layout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <random>
#include <vector>

namespace kelvo {

void PrintTo(const Rect& rect, std::ostream* out)
{
    *out << rect.left << "," << rect.top << " to " << rect.right << "," << rect.bottom;
}

namespace {

constexpr PrinterPage kPage{.width = 2400, .height = 3000, .xPerInch = 300, .yPerInch = 300};

PrintBand Band(int left, int top, int right, int bottom)
{
    return {.area = {left, top, right, bottom}};
}

TEST(PrintRectangle, ABestFitIsAsWideAsThePage)
{
    EXPECT_EQ(PrintRectangle({320, 256}, kPrintBestFit, 9, 9, kPage), (Rect{0, 0, 2400, 1920}));
}

TEST(PrintRectangle, ABestFitsHeightIsTruncated)
{
    // 2400 x 2 / 7 = 685.71
    EXPECT_EQ(PrintRectangle({7, 2}, kPrintBestFit, 1, 1, kPage), (Rect{0, 0, 2400, 685}));
}

TEST(PrintRectangle, ABestFitKeepsProportionsWhereThePrintersPixelsAreNotSquare)
{
    // 2400 x 100 x 600 / (100 x 300)
    const PrinterPage page{.width = 2400, .height = 6000, .xPerInch = 300, .yPerInch = 600};
    EXPECT_EQ(PrintRectangle({100, 100}, kPrintBestFit, 1, 1, page), (Rect{0, 0, 2400, 4800}));
}

TEST(PrintRectangle, StretchedIsTheWholePage)
{
    EXPECT_EQ(PrintRectangle({320, 256}, kPrintStretch, 9, 9, kPage), (Rect{0, 0, 2400, 3000}));
    EXPECT_EQ(PrintRectangle({320, 256}, 0, 9, 9, kPage), (Rect{0, 0, 2400, 3000}));
}

TEST(PrintRectangle, ScaledIsSoManyOfThePrintersPixelsEach)
{
    EXPECT_EQ(PrintRectangle({320, 256}, kPrintScale, 2, 5, kPage), (Rect{0, 0, 640, 1280}));
}

TEST(PrintRectangle, BeyondAllNumbersIsHeldAtTheLimit)
{
    EXPECT_EQ(PrintRectangle({640, 1}, kPrintScale, 2147483647, 1, kPage), (Rect{0, 0, 2147483647, 1}));
    EXPECT_EQ(PrintRectangle({1, 2147483647}, kPrintBestFit, 1, 1, kPage), (Rect{0, 0, 2400, 2147483647}));
}

TEST(PrintRectangle, OfAnEmptyPictureIsEmpty)
{
    for (const int option : {kPrintBestFit, kPrintStretch, kPrintScale}) {
        EXPECT_TRUE(PrintRectangle({0, 256}, option, 1, 1, kPage).Empty());
        EXPECT_TRUE(PrintRectangle({320, 0}, option, 1, 1, kPage).Empty());
    }
}

TEST(PrintRectangle, ReachesBeyondThePageFromOnePixelOn)
{
    EXPECT_FALSE(ReachesBeyond({0, 0, 2400, 3000}, kPage));
    EXPECT_TRUE(ReachesBeyond({0, 0, 2401, 1}, kPage));
    EXPECT_TRUE(ReachesBeyond({0, 0, 1, 3001}, kPage));
}

TEST(CopyOfBand, OfTheWholePageIsTheWholePicture)
{
    const Rect rectangle{0, 0, 2400, 1920};
    EXPECT_EQ(CopyOfBand(rectangle, Band(0, 0, 2400, 3000), {320, 256}), (BandCopy{rectangle, {0, 0, 320, 256}}));
}

TEST(CopyOfBand, TakesTheNearestPixelsOfThePicture)
{
    // Each pixel is 7.5 x 7.5: the band's edges lie at pixels 13.33, 26.67 and, held at the picture's end, 256.
    const Rect rectangle{0, 0, 2400, 1920};
    EXPECT_EQ(CopyOfBand(rectangle, Band(0, 100, 2400, 200), {320, 256}),
              (BandCopy{{0, 100, 2400, 200}, {0, 13, 320, 27}}));
    EXPECT_EQ(CopyOfBand(rectangle, Band(0, 1900, 2400, 2000), {320, 256}),
              (BandCopy{{0, 1900, 2400, 1920}, {0, 253, 320, 256}}));
}

TEST(CopyOfBand, RoundsHalvesUp)
{
    // Pixels of 2 x 2: an edge at 3 lies at 1.5.
    EXPECT_EQ(CopyOfBand({0, 0, 8, 8}, Band(3, 0, 8, 8), {4, 4}), (BandCopy{{3, 0, 8, 8}, {2, 0, 4, 4}}));
}

TEST(CopyOfBand, OfAPictureThatReachesBeyondThePageIsWhatThePageShows)
{
    // 10 times: 240 of 320 columns, 300 rows and more.
    EXPECT_EQ(CopyOfBand({0, 0, 3200, 2560}, Band(0, 0, 2400, 3000), {320, 256}),
              (BandCopy{{0, 0, 2400, 2560}, {0, 0, 240, 256}}));
}

TEST(CopyOfBand, IsNothingBesideTheRectangle)
{
    EXPECT_EQ(CopyOfBand({0, 0, 2400, 1920}, Band(0, 1920, 2400, 2000), {320, 256}), std::nullopt);
    EXPECT_EQ(CopyOfBand({0, 0, 0, 0}, Band(0, 0, 2400, 3000), {320, 256}), std::nullopt);
    EXPECT_EQ(CopyOfBand({0, 0, 2400, 1920}, Band(0, 0, 2400, 3000), {0, 0}), std::nullopt);
}

TEST(CopyOfBand, IsNothingWhereTheBandHoldsNoGraphics)
{
    EXPECT_EQ(CopyOfBand({0, 0, 2400, 1920}, {.area = {0, 0, 2400, 3000}, .hasGraphics = false}, {320, 256}),
              std::nullopt);
}

TEST(CopyOfBand, IsNothingWhereNoEdgeOfAPixelIsNearerThanItsOther)
{
    // One pixel of 100: both edges of the band belong to its upper edge.
    EXPECT_EQ(CopyOfBand({0, 0, 100, 100}, Band(0, 10, 100, 20), {1, 1}), std::nullopt);
}

// However a page is cut into bands, they cover the rectangle and take each row of the picture once, in order.
TEST(CopyOfBand, BandsOfAPageTogetherTakeThePictureOnce)
{
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        const Point size{1 + static_cast<int>(random() % 700), 1 + static_cast<int>(random() % 700)};
        const int option = 1 + static_cast<int>(random() % 3);
        const Rect rectangle =
            PrintRectangle(size, option, 1 + static_cast<int>(random() % 5), 1 + static_cast<int>(random() % 5), kPage);
        const Rect seen{0, 0, std::min(rectangle.right, kPage.width), std::min(rectangle.bottom, kPage.height)};
        const auto whole = CopyOfBand(rectangle, Band(0, 0, kPage.width, kPage.height), size);
        ASSERT_TRUE(whole);
        EXPECT_EQ(whole->destination, seen);

        int painted = 0;
        int taken = 0;
        for (int top = 0; top < kPage.height;) {
            const int bottom = std::min(top + 1 + static_cast<int>(random() % 500), kPage.height);
            if (const auto copy = CopyOfBand(rectangle, Band(0, top, kPage.width, bottom), size)) {
                EXPECT_EQ(copy->source.top, taken);
                EXPECT_GE(copy->destination.top, painted);
                painted = copy->destination.bottom;
                taken = copy->source.bottom;
            }
            top = bottom;
        }
        EXPECT_EQ(taken, whole->source.bottom);
    }
}

}  // namespace
}  // namespace kelvo
