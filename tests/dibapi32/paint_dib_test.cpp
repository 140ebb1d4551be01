#include "dibapi32/dibapi32.h"
#include "platform/pointer.h"
#include "platform/window.h"
#include "state/windows_write.h"
#include "support/operator.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

namespace kelvo {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;

constexpr std::uint32_t kNothing = 0x404040;  // the window's background

LRESULT HostWndProc(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return DefWindowProc(window, message, wParam, lParam);
}

// A main window that shows one colour.
class PaintingBitmaps : public ::testing::Test {
  protected:
    void SetUp() override
    {
        RegisterWindowClass(
            {.name = "HOST", .procedure = HostWndProc, .icon = {}, .systemBackground = false, .background = kNothing});
        write::windows.hWndMain = CreateMainWindow("HOST", "Host");
        ASSERT_TRUE(hWndMain);
        ShowWindowMaximised(hWndMain);
        FillSurface(hWndMain, GetClientRect(hWndMain), kNothing);
    }
    void TearDown() override
    {
        DestroyWindow(hWndMain);
        write::windows.hWndMain = nullptr;
    }

    // Rows of the client area as the screen shows them.
    static std::vector<std::uint32_t> Seen(const Rect& area)
    {
        UpdateWindow(hWndMain);
        std::vector<std::uint32_t> colors;
        for (int y = area.top; y < area.bottom; ++y) {
            for (int x = area.left; x < area.right; ++x) colors.push_back(ScreenColor({.x = x, .y = y}));
        }
        return colors;
    }

    TestOperator operator_;
};

// 2 x 2 pixels of 8 bits; from the top: 1 2, 3 4, whose colours are 0x010101 to 0x040404.
Dib SmallDib()
{
    Dib dib = CreateDIB(2, 2, 8);
    const std::span<std::uint8_t> table = DibPalette(*dib);
    for (std::size_t i = 0; i < table.size(); ++i) table[i] = i % 4 == 3 ? 0 : static_cast<std::uint8_t>(i / 4);
    constexpr std::array<std::uint8_t, 8> kRows = {3, 4, 0, 0, 1, 2, 0, 0};
    std::ranges::copy(kRows, DibBits(*dib).begin());
    return dib;
}

constexpr Rect kWhole = {.left = 0, .top = 0, .right = 2, .bottom = 2};

TEST_F(PaintingBitmaps, SetsPixelsOneToOne)
{
    EXPECT_EQ(PaintDib(hWndMain, {.left = 10, .top = 20, .right = 12, .bottom = 22}, SmallDib(), kWhole), 2);
    EXPECT_THAT(Seen({.left = 9, .top = 20, .right = 13, .bottom = 23}),
                ElementsAre(kNothing, 0x010101, 0x020202, kNothing,  //
                            kNothing, 0x030303, 0x040404, kNothing,  //
                            kNothing, kNothing, kNothing, kNothing));
}

TEST_F(PaintingBitmaps, RepeatsPixelsWhenStretched)
{
    EXPECT_EQ(PaintDib(hWndMain, {.left = 0, .top = 0, .right = 6, .bottom = 6}, SmallDib(), kWhole), 2);
    EXPECT_THAT(Seen({.left = 0, .top = 0, .right = 6, .bottom = 1}),
                ElementsAre(0x010101, 0x010101, 0x010101, 0x020202, 0x020202, 0x020202));
    EXPECT_THAT(Seen({.left = 2, .top = 0, .right = 3, .bottom = 7}),
                ElementsAre(0x010101, 0x010101, 0x010101, 0x030303, 0x030303, 0x030303, kNothing));
}

TEST_F(PaintingBitmaps, CountsTheSourceFromTheTop)
{
    const Rect lastRow = {.left = 1, .top = 1, .right = 2, .bottom = 2};
    EXPECT_EQ(PaintDib(hWndMain, {.left = 0, .top = 0, .right = 1, .bottom = 1}, SmallDib(), lastRow), 1);
    EXPECT_EQ(PaintDib(hWndMain, {.left = 2, .top = 0, .right = 4, .bottom = 2}, SmallDib(), lastRow), 1);
    EXPECT_THAT(Seen({.left = 0, .top = 0, .right = 4, .bottom = 2}),
                ElementsAre(0x040404, kNothing, 0x040404, 0x040404,  //
                            kNothing, kNothing, 0x040404, 0x040404));
}

TEST_F(PaintingBitmaps, PaintsOtherDepthsByTheirColours)
{
    const Dib dib = DibFromBitmap({.width = 2, .height = 2, .pixels = {0x112233, 0x445566, 0x778899, 0xAABBCC}});
    EXPECT_EQ(PaintDib(hWndMain, {.left = 0, .top = 0, .right = 2, .bottom = 2}, dib, kWhole), 2);
    EXPECT_THAT(Seen(kWhole), ElementsAre(0x112233, 0x445566, 0x778899, 0xAABBCC));
}

TEST_F(PaintingBitmaps, IgnoresThePaletteOnTrueColour)
{
    const Palette palette = {.entries = {{.red = 255, .green = 255, .blue = 255, .flags = 0}}};
    EXPECT_EQ(PaintDib(hWndMain, kWhole, SmallDib(), kWhole, &palette), 2);
    EXPECT_THAT(Seen(kWhole), ElementsAre(0x010101, 0x020202, 0x030303, 0x040404));
}

TEST_F(PaintingBitmaps, PaintsNothingOfWhatItCannotRead)
{
    Dib packed = SmallDib();
    BitmapInfoHeader header = DibInfo(*packed);
    header.biCompression = 1;
    SetDibInfo(*packed, header);
    EXPECT_EQ(PaintDib(hWndMain, kWhole, packed, kWhole), 0);
    EXPECT_EQ(PaintDib(hWndMain, kWhole, nullptr, kWhole), 0);
    EXPECT_EQ(PaintDib(nullptr, kWhole, SmallDib(), kWhole), 0);
    EXPECT_EQ(PaintDib(hWndMain, kWhole, SmallDib(), {.left = 0, .top = 0, .right = 3, .bottom = 2}), 0);
    EXPECT_EQ(PaintDib(hWndMain, kWhole, SmallDib(), {.left = 0, .top = -1, .right = 2, .bottom = 2}), 0);
    EXPECT_EQ(PaintDib(hWndMain, kWhole, SmallDib(), {.left = 1, .top = 1, .right = 1, .bottom = 2}), 0);
    EXPECT_THAT(Seen(kWhole), Each(kNothing));
}

TEST_F(PaintingBitmaps, PaintsPartsOfDevicePictures)
{
    const DeviceBitmap picture = {.width = 2, .height = 2, .pixels = {1, 2, 3, 4}};
    const Rect lastColumn = {.left = 1, .top = 0, .right = 2, .bottom = 2};
    EXPECT_EQ(PaintDeviceBitmap(hWndMain, {.left = 0, .top = 0, .right = 1, .bottom = 2}, picture, lastColumn), 2);
    EXPECT_THAT(Seen({.left = 0, .top = 0, .right = 1, .bottom = 2}), ElementsAre(2U, 4U));
    EXPECT_EQ(PaintDeviceBitmap(hWndMain, kWhole, picture, {.left = 0, .top = 0, .right = 3, .bottom = 2}), 0);
}

TEST_F(PaintingBitmaps, CapturesTheClientArea)
{
    PaintDib(hWndMain, {.left = 0, .top = 0, .right = 2, .bottom = 2}, SmallDib(), kWhole);
    UpdateWindow(hWndMain);
    const Rect client = GetClientRect(hWndMain);
    const Dib dib = CaptureWindowDib(hWndMain, kCaptureClient);
    ASSERT_TRUE(dib);
    EXPECT_EQ(DibBitCount(*dib), 24);
    EXPECT_EQ(DibWidth(*dib), client.Width());
    EXPECT_EQ(DibHeight(*dib), client.Height());
    const DeviceBitmap picture = BitmapFromDib(dib).value_or(DeviceBitmap{});
    ASSERT_FALSE(picture.pixels.empty());
    EXPECT_EQ(picture.pixels[0], 0x010101U);
    EXPECT_EQ(picture.pixels[1], 0x020202U);
    EXPECT_EQ(picture.pixels[static_cast<std::size_t>(client.Width())], 0x030303U);
    EXPECT_EQ(picture.pixels[2], kNothing);
}

TEST_F(PaintingBitmaps, CapturesTheWholeWindowNoLargerThanTheScreen)
{
    const DeviceBitmap picture = CaptureWindowBitmap(hWndMain, kCaptureWindow).value_or(DeviceBitmap{});
    ASSERT_FALSE(picture.pixels.empty());
    EXPECT_GE(picture.width, GetClientRect(hWndMain).Width());
    EXPECT_GE(picture.height, GetClientRect(hWndMain).Height());
    EXPECT_LE(picture.width, ScreenRect().Width());
    EXPECT_LE(picture.height, ScreenRect().Height());
}

TEST_F(PaintingBitmaps, CutsACaptureOffAtTheScreensEdges)
{
    const Point corner = ClientToScreen(hWndMain, {.x = 0, .y = 0});
    HWND child = CreateChildWindow(
        "HOST", hWndMain,
        {.left = -corner.x - 6, .top = -corner.y - 3, .right = 14 - corner.x, .bottom = 7 - corner.y});
    ASSERT_TRUE(child);
    FillSurface(child, GetClientRect(child), 0x00FF0000);  // blue
    UpdateWindow(child);
    const DeviceBitmap picture = CaptureWindowBitmap(child, kCaptureClient).value_or(DeviceBitmap{});
    ASSERT_FALSE(picture.pixels.empty());
    EXPECT_EQ(picture.width, 14);
    EXPECT_EQ(picture.height, 7);
    EXPECT_THAT(picture.pixels, Each(0x0000FFU));
}

TEST_F(PaintingBitmaps, CapturesNothingOfOtherAreas)
{
    EXPECT_FALSE(CaptureWindowDib(hWndMain, 0));
    EXPECT_FALSE(CaptureWindowDib(hWndMain, 3));
    EXPECT_FALSE(CaptureWindowDib(nullptr, kCaptureWindow));
    EXPECT_FALSE(CaptureRectDib({.left = 5, .top = 5, .right = 5, .bottom = 9}));
    EXPECT_FALSE(CaptureRectDib({.left = -20, .top = -20, .right = 0, .bottom = 0}));
}

TEST_F(PaintingBitmaps, CapturesAPartOfTheScreen)
{
    PaintDib(hWndMain, {.left = 4, .top = 4, .right = 6, .bottom = 6}, SmallDib(), kWhole);
    UpdateWindow(hWndMain);
    const Point corner = ClientToScreen(hWndMain, {.x = 4, .y = 4});
    const DeviceBitmap picture =
        CaptureRectBitmap({.left = corner.x, .top = corner.y, .right = corner.x + 2, .bottom = corner.y + 2})
            .value_or(DeviceBitmap{});
    ASSERT_FALSE(picture.pixels.empty());
    EXPECT_THAT(picture.pixels, ElementsAre(0x010101U, 0x020202U, 0x030303U, 0x040404U));
}

TEST_F(PaintingBitmaps, LoadsUnderTheHourglassAndTakesItOff)
{
    TempDirectory directory;
    ASSERT_EQ(SaveDib(SmallDib(), directory / "small.bmp"), 0);
    SetPointer(Pointer::kCross);
    Pointer whileTelling = Pointer::kCross;
    EXPECT_TRUE(LoadDib(directory / "small.bmp"));
    EXPECT_EQ(CurrentPointer(), Pointer::kCross);
    operator_.AtNextBox([&whileTelling](const FrontBox& box) {
        whileTelling = CurrentPointer();
        EXPECT_EQ(box.text, "File Not Found!");
        EXPECT_EQ(box.caption, "Error");
        EXPECT_EQ(box.icon, BoxIcon::kStop);
    });
    EXPECT_FALSE(LoadDib(directory / "missing.bmp"));
    EXPECT_EQ(whileTelling, Pointer::kHourglass);
    EXPECT_EQ(CurrentPointer(), Pointer::kCross);
}

}  // namespace
}  // namespace kelvo
