// Bitmaps of frames against a plain loop over rows and columns.
#include "display/frame_bitmap.h"

#include "dibapi32/dibutil.h"
#include "display/color_map.h"
#include "display/display_pipeline.h"
#include "imagefile/header_write.h"
#include "resources/ids.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"

#include <gtest/gtest.h>

#include <numeric>
#include <random>
#include <vector>

namespace kelvo {
namespace {

class FrameBitmapTest : public testing::Test {
  protected:
    void SetUp() override
    {
        std::mt19937 random(5);
        write::display.DisplayLut.resize(65535);
        for (std::uint8_t& gray : write::display.DisplayLut) gray = static_cast<std::uint8_t>(random());
        write::frames.ViewingFile = 1;
    }

    std::vector<std::int16_t> Frame(int width, int height)
    {
        write::file.ImageHeader.ImageWidth = static_cast<std::int16_t>(width);
        write::file.ImageHeader.ImageHeight = static_cast<std::int16_t>(height);
        std::mt19937 random(6);
        std::vector<std::int16_t> frame(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        for (std::int16_t& count : frame) count = static_cast<std::int16_t>(random());
        return frame;
    }

    // The picture's pixels as the rows of a bitmap, from the bottom up, padded.
    static std::vector<std::uint8_t> PlainRows(const std::vector<std::int16_t>& frame, const FrameRect& rect)
    {
        std::vector<std::uint8_t> rows;
        const int width = rect.right + 1 - rect.left;
        for (int r = rect.bottom - rect.top; r >= 0; --r) {
            for (int c = 0; c < width; ++c) {
                const int element = r * (width + rect.left) + rect.left + c;
                std::uint8_t gray = 0;
                if (element >= 0 && element < static_cast<int>(frame.size())) {
                    const int count = frame[static_cast<std::size_t>(element)];
                    gray = DisplayLut[static_cast<std::size_t>(count < 0 ? 0 : count)];
                }
                rows.push_back(gray);
            }
            while (rows.size() % 4 != 0) rows.push_back(0);
        }
        return rows;
    }

    static std::vector<std::uint8_t> Rows(const Dib& dib)
    {
        return dib ? std::vector<std::uint8_t>(DibBits(*dib).begin(), DibBits(*dib).end())
                   : std::vector<std::uint8_t>();
    }
};

TEST_F(FrameBitmapTest, EveryWidthIsPaddedToWholeWords)
{
    for (int width = 1; width <= 41; ++width) {
        const std::vector<std::int16_t> frame = Frame(width, 3);
        const Dib dib = MakeFrameBitmap(frame, nullptr);
        ASSERT_TRUE(dib);
        EXPECT_EQ(DibWidth(*dib), width);
        EXPECT_EQ(DibHeight(*dib), 3);
        EXPECT_EQ(Rows(dib), PlainRows(frame, {0, 0, width - 1, 2})) << width;
    }
}

TEST_F(FrameBitmapTest, AWidthOfFiveHasRowsOfEightBytes)
{
    const Dib dib = MakeFrameBitmap(Frame(5, 1), nullptr);
    const std::vector<std::uint8_t> rows = Rows(dib);
    ASSERT_EQ(rows.size(), 8U);
    EXPECT_EQ(std::vector<std::uint8_t>(rows.begin() + 5, rows.end()), std::vector<std::uint8_t>(3, 0));
}

TEST_F(FrameBitmapTest, AFullSizeFrameIsExact)
{
    const std::vector<std::int16_t> frame = Frame(640, 512);
    EXPECT_EQ(Rows(MakeFrameBitmap(frame, nullptr)), PlainRows(frame, {0, 0, 639, 511}));
}

TEST_F(FrameBitmapTest, ARectangleTakesRowsAsLongAsItsRightSideSays)
{
    const std::vector<std::int16_t> frame = Frame(20, 10);
    for (const FrameRect rect : {FrameRect{0, 0, 19, 9}, {5, 0, 19, 9}, {5, 4, 19, 9}, {3, 2, 11, 7}, {7, 7, 7, 7}}) {
        const Dib dib = MakeFrameBitmap(frame, &rect);
        ASSERT_TRUE(dib);
        EXPECT_EQ(DibWidth(*dib), rect.right + 1 - rect.left);
        EXPECT_EQ(DibHeight(*dib), rect.bottom + 1 - rect.top);
        EXPECT_EQ(Rows(dib), PlainRows(frame, rect)) << rect.left << ' ' << rect.top;
    }
}

TEST_F(FrameBitmapTest, TheTopOnlyShortensThePicture)
{
    const std::vector<std::int16_t> frame = Frame(8, 4);
    const FrameRect whole{0, 0, 7, 3};
    const FrameRect lower{0, 1, 7, 3};
    const std::vector<std::uint8_t> all = Rows(MakeFrameBitmap(frame, &whole));
    const std::vector<std::uint8_t> cut = Rows(MakeFrameBitmap(frame, &lower));
    // Bottom up: what is missing is the bottom row, and the frame's first row is the picture's first still.
    EXPECT_EQ(cut, std::vector<std::uint8_t>(all.begin() + 8, all.end()));
}

TEST_F(FrameBitmapTest, LiveThePictureStartsAtThePan)
{
    write::frames.ViewingFile = 0;
    write::camera.ActiveConfig.Hroi = 20;
    write::camera.ActiveConfig.Vroi = 10;
    const std::vector<std::int16_t> frame = Frame(20, 10);
    write::display.Xpan = 4;
    write::display.Ypan = 3;
    EXPECT_EQ(DefaultFrameRect(), (FrameRect{4, 3, 19, 9}));
    EXPECT_EQ(Rows(MakeFrameBitmap(frame, nullptr)), PlainRows(frame, {4, 3, 19, 9}));
}

TEST_F(FrameBitmapTest, OutsideTheFrameIsBlack)
{
    write::frames.ViewingFile = 0;
    write::camera.ActiveConfig.Hroi = 20;
    write::camera.ActiveConfig.Vroi = 10;
    const std::vector<std::int16_t> frame = Frame(20, 10);
    write::display.DisplayLut.assign(65535, 200);
    write::display.Xpan = -4;
    write::display.Ypan = -3;
    const std::vector<std::uint8_t> rows = Rows(MakeFrameBitmap(frame, nullptr));
    EXPECT_EQ(rows, PlainRows(frame, {-4, -3, 19, 9}));
    // The top row, which a bitmap stores last, starts four elements before the frame.
    ASSERT_EQ(rows.size(), 24U * 13);
    EXPECT_EQ(std::vector<std::uint8_t>(rows.end() - 24, rows.end() - 20), std::vector<std::uint8_t>(4, 0));
    EXPECT_EQ(rows[rows.size() - 20], 200);
}

TEST_F(FrameBitmapTest, APanOfTheWholeWidthLeavesNoPixels)
{
    write::frames.ViewingFile = 0;
    write::camera.ActiveConfig.Hroi = 20;
    write::camera.ActiveConfig.Vroi = 10;
    write::display.Xpan = 20;
    const Dib dib = MakeFrameBitmap(Frame(20, 10), nullptr);
    ASSERT_TRUE(dib);
    EXPECT_EQ(DibWidth(*dib), 0);
    EXPECT_TRUE(Rows(dib).empty());
}

TEST_F(FrameBitmapTest, APanFromASettingsFileTakesNoEndlessMemory)
{
    write::frames.ViewingFile = 0;
    write::camera.ActiveConfig.Hroi = 20;
    write::camera.ActiveConfig.Vroi = 10;
    write::display.Xpan = -2000000000;
    write::display.Ypan = -2000000000;
    EXPECT_EQ(DefaultFrameRect(), (FrameRect{-20, -10, 19, 9}));
}

TEST_F(FrameBitmapTest, AnImpossibleRectangleGivesNoBitmap)
{
    const std::vector<std::int16_t> frame = Frame(8, 4);
    const FrameRect reversed{6, 0, 2, 3};
    EXPECT_EQ(MakeFrameBitmap(frame, &reversed), nullptr);
    const FrameRect endless{-2147483647, 0, 2147483647, 3};
    EXPECT_EQ(MakeFrameBitmap(frame, &endless), nullptr);
}

TEST_F(FrameBitmapTest, ABufferSmallerThanTheHeaderSaysGivesNoBitmap)
{
    std::vector<std::int16_t> frame = Frame(8, 4);
    frame.pop_back();
    EXPECT_EQ(MakeFrameBitmap(frame, nullptr), nullptr);
    EXPECT_EQ(MakeFrameBitmap({}, nullptr), nullptr);
    write::file.ImageHeader.ImageWidth = -8;
    EXPECT_EQ(MakeFrameBitmap(frame, nullptr), nullptr);
}

TEST_F(FrameBitmapTest, AnOldHeadersNegativeCountsShowAsCountZero)
{
    write::file.ImageHeader.ImageWidth = 2;
    write::file.ImageHeader.ImageHeight = 1;
    write::display.DisplayLut.assign(65535, 9);
    write::display.DisplayLut[0] = 33;
    const std::vector<std::int16_t> frame{-1, 32767};
    const std::vector<std::uint8_t> rows = Rows(MakeFrameBitmap(frame, nullptr));
    EXPECT_EQ(rows, (std::vector<std::uint8_t>{33, 9, 0, 0}));
}

TEST_F(FrameBitmapTest, TheColorTableIsBlueGreenRed)
{
    write::display.ColorMap.resize(kColorMapBytes);
    std::iota(write::display.ColorMap.begin(), write::display.ColorMap.end(), static_cast<std::uint8_t>(0));
    write::display.ColorMap[kBluePlane + 7] = 1;
    write::display.ColorMap[kGreenPlane + 7] = 2;
    write::display.ColorMap[kRedPlane + 7] = 3;
    RgbQuadTable table;
    BuildDibPalette(table);
    EXPECT_EQ(std::vector<std::uint8_t>(table.begin() + 28, table.begin() + 32),
              (std::vector<std::uint8_t>{1, 2, 3, 0}));
}

TEST_F(FrameBitmapTest, TheMapIsMadeAtFirstUseFromTheStoredChoice)
{
    write::display.ImageColor = kInvertedGray;
    const Dib dib = MakeFrameBitmap(Frame(4, 1), nullptr);
    ASSERT_TRUE(dib);
    EXPECT_EQ(DibPalette(*dib)[0], 255);
    EXPECT_EQ(DibPalette(*dib)[4 * 255], 0);
}

TEST_F(FrameBitmapTest, ANewMapIsInTheNextBitmap)
{
    const std::vector<std::int16_t> frame = Frame(4, 1);
    write::display.ImageColor = kNormalGray;
    SetColorMap(kNormalGray);
    EXPECT_EQ(DibPalette(*MakeFrameBitmap(frame, nullptr))[4 * 10], 10);
    // The display dialog shows a map while ImageColor still holds the old one.
    SetColorMap(kInvertedGray);
    EXPECT_EQ(DibPalette(*MakeFrameBitmap(frame, nullptr))[4 * 10], 245);
    SetColorMap(kNormalGray);
    EXPECT_EQ(DibPalette(*MakeFrameBitmap(frame, nullptr))[4 * 10], 10);
}

TEST(FramePixel, FollowsTheRowsOfTheFrame)
{
    constexpr FrameRect kPanned{5, 3, 31, 23};  // 27 columns, 21 rows
    EXPECT_EQ(FramePixelOf({0, 0}, kPanned), (Point{5, 0})) << "rows aren't moved";
    EXPECT_EQ(FramePixelOf({26, 20}, kPanned), (Point{31, 20}));
    EXPECT_EQ(FramePixelOf({100, 100}, kPanned), (Point{31, 20}));
    EXPECT_EQ(FramePixelOf({-4, -4}, kPanned), (Point{5, 0}));

    constexpr FrameRect kLeftOfTheFrame{-7, -2, 31, 23};  // 39 columns, 26 rows
    EXPECT_EQ(FramePixelOf({7, 0}, kLeftOfTheFrame), (Point{0, 0}));
    EXPECT_EQ(FramePixelOf({6, 0}, kLeftOfTheFrame), (Point{0, 0})) << "black";
    EXPECT_EQ(FramePixelOf({6, 1}, kLeftOfTheFrame), (Point{31, 0})) << "the end of the row before";
    EXPECT_EQ(FramePixelOf({10, 25}, kLeftOfTheFrame), (Point{3, 23})) << "black, below the last row";

    EXPECT_EQ(FramePixelOf({3, 3}, {32, 0, 31, 23}), (Point{31, 3})) << "an empty picture";
    EXPECT_EQ(FramePixelOf({3, 3}, {0, 0, -1, -1}), (Point{0, 0})) << "no frame";
}

TEST(FramePixel, FindsBackToItsPlace)
{
    constexpr FrameRect kPanned{-7, 0, 31, 23};
    for (int y = 0; y < 24; ++y) {
        for (int x = 0; x < 32; ++x) ASSERT_EQ(FramePixelOf(BitmapPixelOf({x, y}, kPanned), kPanned), (Point{x, y}));
    }
    EXPECT_EQ(BitmapPixelOf({2, 22}, {5, 3, 31, 23}), (Point{0, 20})) << "panned out of sight: the nearest";
}

}  // namespace
}  // namespace kelvo
