// Marks on saturated pixels: the finding, and what stands on the screen at each zoom and pan.
#include "shell/saturation_overlay.h"

#include "dibapi32/dibapi32.h"
#include "display/color_map.h"
#include "display/display_pipeline.h"
#include "imagefile/header_write.h"
#include "platform/menu.h"
#include "platform/paint.h"
#include "platform/window.h"
#include "resources/ids.h"
#include "resources/menu.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows_write.h"
#include "support/picture_fixture.h"
#include "support/shipped_file.h"
#include "ui/docking.h"
#include "ui/window_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAre;

TEST(SaturationMarksOf, BothEndsOfTheConverterCount)
{
    const std::vector<std::int16_t> counts = {0, 1, 16382, 16383, -1, 16384};
    SaturationMarks marks;
    MarkStoredCounts(counts, {0, 0, 5, 0}, marks);
    EXPECT_THAT(marks.marks, ElementsAre(kSaturatedLow, kNotSaturated, kNotSaturated, kSaturatedHigh, kSaturatedLow,
                                         kSaturatedHigh));
    EXPECT_EQ(marks.width, 6);
    EXPECT_EQ(marks.height, 1);
}

TEST(SaturationMarksOf, ARawFrameIsReadThroughTheReadoutOrder)
{
    const std::vector<std::int16_t> raw = {16383, 5, 0, 7};
    const std::vector<std::uint32_t> decom = {1, 2, 3, 0};
    SaturationMarks marks;
    MarkRawCounts(raw, decom, {0, 0, 1, 1}, marks);
    EXPECT_THAT(marks.marks, ElementsAre(kNotSaturated, kSaturatedLow, kNotSaturated, kSaturatedHigh));
}

TEST(SaturationMarksOf, ASubstitutedPixelFollowsItsSource)
{
    const std::vector<std::int16_t> raw = {16383, 5};
    const std::vector<std::uint32_t> decom = {1, 1};  // the railed detector is replaced by its neighbour
    SaturationMarks marks;
    MarkRawCounts(raw, decom, {0, 0, 1, 0}, marks);
    EXPECT_THAT(marks.marks, ElementsAre(kNotSaturated, kNotSaturated));
}

TEST(SaturationMarksOf, WhatLiesOutsideTheFrameIsNotMarked)
{
    const std::vector<std::int16_t> raw = {0, 0, 0};
    const std::vector<std::uint32_t> decom = {0, 77, 2};
    SaturationMarks marks;
    MarkRawCounts(raw, decom, {0, 0, 1, 1}, marks);  // four pixels of a frame of three
    EXPECT_THAT(marks.marks, ElementsAre(kSaturatedLow, kNotSaturated, kSaturatedLow, kNotSaturated));
    MarkRawCounts({}, {}, {0, 0, 1, 1}, marks);
    EXPECT_THAT(marks.marks, testing::Each(kNotSaturated));
    MarkRawCounts(raw, decom, {5, 0, 1, 1}, marks);  // panned out of the picture
    EXPECT_THAT(marks.marks, testing::IsEmpty());
}

TEST(SaturationMarksOf, AFrameOfTheSameSizeKeepsTheBlock)
{
    std::vector<std::int16_t> counts(64, 100);
    SaturationMarks marks;
    MarkStoredCounts(counts, {0, 0, 7, 7}, marks);
    const std::uint8_t* const block = marks.marks.data();
    counts[9] = 0;
    MarkStoredCounts(counts, {0, 0, 7, 7}, marks);
    EXPECT_EQ(marks.marks.data(), block);
    EXPECT_EQ(std::ranges::count(marks.marks, kSaturatedLow), 1);
}

int SquareDistance(std::uint32_t a, std::uint32_t b)
{
    int sum = 0;
    for (const int shift : {0, 8, 16}) {
        const int d = static_cast<int>((a >> shift) & 255) - static_cast<int>((b >> shift) & 255);
        sum += d * d;
    }
    return sum;
}

class SaturationOverlay : public PictureTest {
  protected:
    void SetUp() override
    {
        DockPanel();
        SetMenu(hWndMain, MainMenu());
        OpenSaturationOverlay();
        write::camera.ActiveConfig.Hroi = 40;
        write::camera.ActiveConfig.Vroi = 30;
        const std::size_t size = 40 * 30;
        std::mt19937 random(7);
        write::frames.RawFrame.resize(size);
        for (std::int16_t& count : write::frames.RawFrame) {
            const unsigned kind = random() % 8;
            count = kind == 0 ? 0 : kind == 1 ? 16383 : static_cast<std::int16_t>(1 + random() % 16382);
        }
        write::cal.DecomList.resize(size);
        std::iota(write::cal.DecomList.begin(), write::cal.DecomList.end(), 0U);
        std::shuffle(write::cal.DecomList.begin(), write::cal.DecomList.end(), random);
        write::frames.LiveFrame.resize(size);
        for (std::size_t i = 0; i < size; ++i) write::frames.LiveFrame[i] = RawFrame[DecomList[i]];
    }
    void TearDown() override
    {
        if (ItemOf().checked) ToggleSaturationOverlay();
    }

    static MenuItemState ItemOf() { return *GetMenuItem(hWndMain, kCmdViewSaturation); }

    static DeviceBitmap Screen()
    {
        UpdateWindow(hWndMain);
        DeviceBitmap screen;
        EXPECT_TRUE(CaptureWindowPixels(hWndMain, true, screen));
        return screen;
    }

    // Each device pixel of the picture: the mark's colour where its raw count is at an end, otherwise as without marks.
    static void ExpectExactlyTheSaturatedMarked(const DeviceBitmap& plain, const DeviceBitmap& marked, int xzoom,
                                                int yzoom)
    {
        const MarkColors colors = ColorsAgainst(ColorMap);
        const int left = std::max(Xpan, -ActiveConfig.Hroi);
        const int columns = ActiveConfig.Hroi - left;
        const int rows = ActiveConfig.Vroi - std::max(Ypan, -ActiveConfig.Vroi);
        int wrong = 0;
        for (int y = 0; y < marked.height; ++y) {
            for (int x = 0; x < marked.width; ++x) {
                const auto at =
                    static_cast<std::size_t>(y) * static_cast<std::size_t>(marked.width) + static_cast<std::size_t>(x);
                std::uint32_t expected = plain.pixels[at];
                const int column = x / xzoom;
                const int row = (y - PanelHeight()) / yzoom;
                if (y >= PanelHeight() && column < columns && row < rows) {
                    const int i = row * ActiveConfig.Hroi + left + column;
                    if (i >= 0 && i < 40 * 30) {
                        const int raw = RawFrame[DecomList[static_cast<std::size_t>(i)]];
                        if (raw == 0) expected = colors.low;
                        if (raw == 16383) expected = colors.high;
                    }
                }
                if ((marked.pixels[at] & 0xFFFFFF) != (expected & 0xFFFFFF)) ++wrong;
            }
        }
        EXPECT_EQ(wrong, 0);
    }
};

TEST_F(SaturationOverlay, MarksExactlyTheSaturatedPixelsAtEachZoomAndPan)
{
    write::frames.CameraOn = 1;
    for (const int zoom : {1, 2, 3}) {
        for (const Point pan : {Point{0, 0}, {7, 0}, {5, 9}, {-4, -3}}) {
            write::camera.ActiveConfig.Xzoom = zoom;
            write::camera.ActiveConfig.Yzoom = zoom == 2 ? 5 : zoom;
            write::display.Xpan = pan.x;
            write::display.Ypan = pan.y;
            InvalidateRect(hWndMain, nullptr, true);
            DrawFrame(LiveFrame);
            const DeviceBitmap plain = Screen();
            ToggleSaturationOverlay();
            DrawFrame(LiveFrame);
            const DeviceBitmap marked = Screen();
            ToggleSaturationOverlay();
            SCOPED_TRACE(testing::Message() << "zoom " << zoom << ", pan " << pan.x << "," << pan.y);
            ExpectExactlyTheSaturatedMarked(plain, marked, Xzoom, Yzoom);
            EXPECT_EQ(Screen().pixels, plain.pixels) << "taken off again";
        }
    }
}

TEST_F(SaturationOverlay, TurnedOnWhileFrozenItMarksThePictureAsItStands)
{
    write::frames.CameraOn = 1;
    write::display.Xpan = 3;
    DrawFrame(LiveFrame);
    const DeviceBitmap plain = Screen();
    ToggleSaturationOverlay();
    ExpectExactlyTheSaturatedMarked(plain, Screen(), 3, 3);
}

TEST_F(SaturationOverlay, ARepaintKeepsTheMarksOfTheFrameOnTheScreen)
{
    write::frames.CameraOn = 1;
    ToggleSaturationOverlay();
    DrawFrame(LiveFrame);
    const DeviceBitmap marked = Screen();
    std::ranges::fill(write::frames.RawFrame, std::int16_t{5000});  // the next frame is on its way
    InvalidateRect(hWndMain, nullptr, true);
    EXPECT_EQ(Screen().pixels, marked.pixels);
}

// A camera that is off leaves its last picture standing, and the switch acts on it.
TEST_F(SaturationOverlay, ItsSwitchActsOnThePictureOfACameraThatIsOff)
{
    write::frames.CameraOn = 1;
    DrawFrame(LiveFrame);
    const DeviceBitmap plain = Screen();
    ToggleSaturationOverlay();
    const DeviceBitmap marked = Screen();
    ASSERT_NE(marked.pixels, plain.pixels);
    write::frames.CameraOn = 0;
    ToggleSaturationOverlay();
    EXPECT_EQ(Screen().pixels, plain.pixels);
    ToggleSaturationOverlay();
    EXPECT_EQ(Screen().pixels, marked.pixels);
}

TEST_F(SaturationOverlay, NeverTouchesThePictureItself)
{
    write::frames.CameraOn = 1;
    DrawFrame(LiveFrame);
    const auto plain = DibBits(*FrameBitmap);
    const std::vector<std::uint8_t> before(plain.begin(), plain.end());
    ToggleSaturationOverlay();
    DrawFrame(LiveFrame);
    const auto marked = DibBits(*FrameBitmap);
    EXPECT_TRUE(std::ranges::equal(before, marked));
}

TEST_F(SaturationOverlay, RawCountsOfAFileAreMarked)
{
    View(3, 1, {0, 8000, 16383});
    write::file.ImageHeader.SampleBytes = 2;
    write::file.ImageHeader.DataType = 1;
    write::file.ImageHeader.IntensityCold = write::file.ImageHeader.IntensityHot = -10000;
    ToggleSaturationOverlay();
    RedrawPicture();
    EXPECT_TRUE(ItemOf().enabled);
    const MarkColors colors = ColorsAgainst(ColorMap);
    EXPECT_EQ(Shown(1, PanelHeight() + 1), colors.low);
    EXPECT_NE(Shown(4, PanelHeight() + 1), colors.low);
    EXPECT_EQ(Shown(7, PanelHeight() + 1), colors.high);
}

TEST_F(SaturationOverlay, AFileThatIsNotRawIsNotMarkedAndTheItemStandsGray)
{
    struct Row {
        const char* path;
        std::int16_t sampleBytes, dataType, cold;
    };
    ToggleSaturationOverlay();
    for (const Row& row :
         {Row{"calibrated.img", 2, 1, 7000}, Row{"floats.img", 4, 8, -10000}, Row{"floats.img", 2, 8, -10000},
          Row{"list.noi", 2, 1, -10000}, Row{"list.off", 2, 1, -10000}, Row{"order.dcm", 2, 1, -10000}}) {
        View(1, 1, {0});
        write::windows.ViewFilePath = row.path;
        write::file.ImageHeader.SampleBytes = row.sampleBytes;
        write::file.ImageHeader.DataType = row.dataType;
        write::file.ImageHeader.IntensityCold = row.cold;
        RedrawPicture();
        EXPECT_FALSE(ItemOf().enabled) << row.path;
        EXPECT_TRUE(ItemOf().checked);
        EXPECT_EQ(Shown(1, PanelHeight() + 1), 0U) << row.path;
    }
    write::frames.ViewingFile = 0;
    write::frames.CameraOn = 1;
    DrawFrame(LiveFrame);
    EXPECT_TRUE(ItemOf().enabled);
}

TEST_F(SaturationOverlay, ItsColorsStandOutInEachMap)
{
    write::windows.DefaultDir = ShippedFile("");
    for (const int map : {kNormalGray, kInvertedGray, kNormalColor}) {
        write::display.ImageColor = static_cast<std::int16_t>(map);
        SetColorMap(map);
        const MarkColors colors = ColorsAgainst(ColorMap);
        // 100: what two neighbouring colours of a printed legend are apart at least.
        EXPECT_GT(SquareDistance(colors.low, colors.high), 100 * 100) << map;
        for (std::size_t i = 0; i < 256; ++i) {
            const std::uint32_t color =
                std::uint32_t{ColorMap[512 + i]} << 16 | std::uint32_t{ColorMap[256 + i]} << 8 | ColorMap[i];
            EXPECT_GT(SquareDistance(colors.low, color), 100 * 100) << map << " " << i;
            EXPECT_GT(SquareDistance(colors.high, color), 100 * 100) << map << " " << i;
        }
    }
}

TEST_F(SaturationOverlay, TheSwitchIsKept)
{
    ToggleSaturationOverlay();
    EXPECT_TRUE(ItemOf().checked);
    EXPECT_EQ(WindowFileText("View", "SaturationOverlay"), "1");
    OpenSaturationOverlay();
    EXPECT_TRUE(ItemOf().checked);
    ToggleSaturationOverlay();
    EXPECT_EQ(WindowFileText("View", "SaturationOverlay"), "0");
    OpenSaturationOverlay();
    EXPECT_FALSE(ItemOf().checked);
}

}  // namespace
}  // namespace kelvo
