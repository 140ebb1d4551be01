#include "platform/paint.h"

#include "platform/faults.h"
#include "platform/front.h"
#include "platform/qt_window.h"
#include "support/temp_directory.h"
#include "window_fixture.h"

#include <QClipboard>
#include <QGuiApplication>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace kelvo {
namespace {

constexpr int kColumns = 5;
constexpr int kRows = 3;

// Each entry of the table has a colour of its own.
std::vector<std::uint32_t> Table()
{
    std::vector<std::uint32_t> table(256);
    for (std::uint32_t i = 0; i < 256; ++i) table[i] = (i << 16) | ((255 - i) << 8) | (i ^ 0x55);
    return table;
}

// 5 x 3, each pixel with a value of its own.
std::vector<std::uint8_t> Values()
{
    std::vector<std::uint8_t> values;
    for (int i = 0; i < kColumns * kRows; ++i) values.push_back(static_cast<std::uint8_t>(10 + 7 * i));
    return values;
}

DeviceBitmap ClientPixels(HWND window)
{
    DeviceBitmap seen;
    EXPECT_TRUE(CaptureWindowPixels(window, true, seen));
    return seen;
}

std::uint32_t At(const DeviceBitmap& picture, int x, int y)
{
    return picture.pixels.at(static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width) +
                             static_cast<std::size_t>(x));
}

// Every device pixel of the picture and a margin around it, held against the plain definition of a block.
void ExpectExactBlocks(HWND window, double ratio, int zoom, int left, int top)
{
    const std::vector<std::uint32_t> table = Table();
    const std::vector<std::uint8_t> values = Values();
    InvalidateRect(window, nullptr, true);
    const std::uint32_t background = At(ClientPixels(window), 0, 0);
    const Rect destination{left, top, left + kColumns * zoom, top + kRows * zoom};
    ASSERT_TRUE(StretchPixels(window, destination, {values.data(), kColumns, kColumns, kRows, table.data()}));

    const int block = std::max(1, static_cast<int>(zoom * ratio + 0.5));
    EXPECT_EQ(DeviceBlock(window, zoom), block);
    const int deviceLeft = static_cast<int>(left * ratio + 0.5);
    const int deviceTop = static_cast<int>(top * ratio + 0.5);
    const DeviceBitmap seen = ClientPixels(window);
    for (int y = deviceTop - 1; y <= deviceTop + kRows * block; ++y) {
        for (int x = deviceLeft - 1; x <= deviceLeft + kColumns * block; ++x) {
            const int column = x < deviceLeft ? -1 : (x - deviceLeft) / block;
            const int row = y < deviceTop ? -1 : (y - deviceTop) / block;
            const bool inside = column >= 0 && column < kColumns && row >= 0 && row < kRows;
            const std::uint32_t expected =
                inside ? table[values[static_cast<std::size_t>(row * kColumns + column)]] : background;
            ASSERT_EQ(At(seen, x, y), expected) << "zoom " << zoom << " at " << x << ", " << y;
        }
    }
}

void ExpectExactBlocksAtAllZooms(double ratio)
{
    TestOperator op(OffscreenAt(ratio));
    HWND window = ShowRecordingWindow();
    for (int zoom = 1; zoom <= 16; ++zoom) ExpectExactBlocks(window, ratio, zoom, 40, 30);
    ExpectExactBlocks(window, ratio, 2, 41, 33);  // an odd place, half a device pixel at a ratio of 1.5
}

TEST(StretchPixels, MakesExactBlocksAtEveryZoom)
{
    ExpectExactBlocksAtAllZooms(1);
}

TEST(StretchPixels, MakesExactBlocksAtRatioOneAndAHalf)
{
    ExpectExactBlocksAtAllZooms(1.5);
}

TEST(StretchPixels, MakesExactBlocksAtRatioTwo)
{
    ExpectExactBlocksAtAllZooms(2);
}

// Every device pixel of a line: its points in blocks as wide as a logical pixel, and nothing outside the clip.
void ExpectLine(double ratio)
{
    TestOperator op(OffscreenAt(ratio));
    HWND window = ShowRecordingWindow();
    const std::uint32_t background = At(ClientPixels(window), 0, 0);
    const std::vector<Point> points = {{10, 10}, {14, 10}, {14, 13}};
    DrawPolyline(window, points, {10, 10, 14, 14}, 0x0000FF);
    const DeviceBitmap seen = ClientPixels(window);
    const int pen = static_cast<int>(ratio);
    for (int y = 0; y < 20 * pen; ++y) {
        for (int x = 0; x < 20 * pen; ++x) {
            const bool level = y / pen == 10 && x / pen >= 10 && x / pen < 14;  // the upright part is clipped off
            ASSERT_EQ(At(seen, x, y), level ? 0xFF0000U : background) << x << ", " << y;
        }
    }
}

TEST(DrawPolyline, FillsItsPixelsInsideTheClip)
{
    ExpectLine(1);
}

TEST(DrawPolyline, IsTwoDevicePixelsWideAtRatioTwo)
{
    ExpectLine(2);
}

TEST(DrawPolyline, GoesFromPointToPoint)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    DrawPolyline(window, std::vector<Point>{{10, 10}, {14, 12}}, {0, 0, 100, 100}, 0x0000FF);
    for (const Point& at : {Point{10, 10}, {11, 11}, {12, 11}, {13, 12}, {14, 12}}) {
        EXPECT_EQ(ScreenColor(at), 0xFF0000U) << at.x << ", " << at.y;
    }
    DrawPolyline(window, std::vector<Point>{{30, 30}}, {0, 0, 100, 100}, 0x00FF00);
    EXPECT_EQ(ScreenColor({30, 30}), 0x00FF00U);
    DrawPolyline(window, {}, {0, 0, 100, 100}, 0x00FF00);
}

TEST(DrawPolyline, TakesPointsFarOutside)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    DrawPolyline(window, std::vector<Point>{{10, 1000000000}, {10, -1000000000}}, {0, 0, 100, 30}, 0x0000FF);
    EXPECT_EQ(ScreenColor({10, 0}), 0xFF0000U);
    EXPECT_EQ(ScreenColor({10, 29}), 0xFF0000U);
    EXPECT_NE(ScreenColor({10, 30}), 0xFF0000U);
}

TEST(StretchPixels, TakesRowsFromTheBottomUp)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    const std::vector<std::uint32_t> table = Table();
    const std::vector<std::uint8_t> values = {1, 2, 3, 4};  // stored with the lower row first
    ASSERT_TRUE(StretchPixels(window, {10, 10, 12, 12}, {values.data() + 2, -2, 2, 2, table.data()}));
    EXPECT_EQ(ScreenColor({10, 10}), table[3]);
    EXPECT_EQ(ScreenColor({11, 10}), table[4]);
    EXPECT_EQ(ScreenColor({10, 11}), table[1]);
    EXPECT_EQ(ScreenColor({11, 11}), table[2]);
}

TEST(StretchPixels, TakesTheNearestPixelAtOtherSizes)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    // Two pixels on five: the centres at 0.2, 0.6, 1.0, 1.4, 1.8 of the picture.
    const DeviceBitmap two{2, 1, {0x112233, 0x445566}};
    ASSERT_TRUE(StretchPixels(window, {0, 0, 5, 1}, two));
    const std::uint32_t expected[] = {0x112233, 0x112233, 0x445566, 0x445566, 0x445566};
    for (int x = 0; x < 5; ++x) EXPECT_EQ(ScreenColor({x, 0}), expected[x]) << x;
    // Four on two: the centres at 1 and 3.
    const DeviceBitmap four{4, 1, {0x000001, 0x000002, 0x000003, 0x000004}};
    ASSERT_TRUE(StretchPixels(window, {0, 0, 2, 1}, four));
    EXPECT_EQ(ScreenColor({0, 0}), 0x000002U);
    EXPECT_EQ(ScreenColor({1, 0}), 0x000004U);
}

TEST(StretchPixels, DropsWhatLiesOutside)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    const Rect client = GetClientRect(window);
    const std::vector<std::uint32_t> table = Table();
    const std::vector<std::uint8_t> values = Values();
    const IndexedPixels source{values.data(), kColumns, kColumns, kRows, table.data()};
    EXPECT_TRUE(StretchPixels(window, {-8, -8, -8 + kColumns * 16, -8 + kRows * 16}, source));
    EXPECT_EQ(ScreenColor({0, 0}), table[values[0]]);  // the first block's lower right quarter
    EXPECT_EQ(ScreenColor({8, 0}), table[values[1]]);
    const int x = client.right - 8;
    EXPECT_TRUE(StretchPixels(window, {x, 0, x + kColumns * 16, kRows * 16}, source));
    EXPECT_EQ(ScreenColor({client.right - 1, 0}), table[values[0]]);
    EXPECT_TRUE(StretchPixels(window, {1 << 30, 0, (1 << 30) + kColumns, kRows}, source));
    EXPECT_TRUE(StretchPixels(window, {-(1 << 30), 0, kColumns - (1 << 30), kRows}, source));
    EXPECT_TRUE(StretchPixels(window, {10, 10, 10, 20}, source));
    EXPECT_TRUE(StretchPixels(window, {10, 10, 20, 20}, DeviceBitmap{4, 4, {1, 2}}));  // fewer pixels than it tells
}

TEST(StretchPixels, NeedsASurface)
{
    TestOperator op;
    EXPECT_FALSE(StretchPixels(nullptr, {0, 0, 1, 1}, DeviceBitmap{1, 1, {0}}));
    EXPECT_FALSE(DrawTextLine(nullptr, 0, 0, "text", TextAlign::kLeft, 0, 0));
    FillSurface(nullptr, {0, 0, 1, 1}, 0);
    InvalidateRect(nullptr, nullptr, true);
}

TEST(ScaledExtent, EndsWithTheLastBlock)
{
    TestOperator op(OffscreenAt(1.5));
    HWND window = ShowRecordingWindow();
    // Blocks of 2, 3 and 5 device pixels: 320 of them end at 426.7, 640 and 1066.7 logical pixels.
    EXPECT_EQ(ScaledExtent(window, 320, 1), 427);
    EXPECT_EQ(ScaledExtent(window, 320, 2), 640);
    EXPECT_EQ(ScaledExtent(window, 320, 3), 1067);
    EXPECT_EQ(ScaledExtent(nullptr, 320, 3), 960);
}

TEST(PixelShownAt, IsThePixelWhoseBlockIsThere)
{
    TestOperator op(OffscreenAt(1.5));
    HWND window = ShowRecordingWindow();
    // Blocks of 3 device pixels from device pixel 15 on; the point at 11 begins at device pixel 16, at 12 at 18.
    const Rect destination{10, 20, 10 + 2 * kColumns, 20 + 2 * kRows};
    const Point size{kColumns, kRows};
    EXPECT_EQ(PixelShownAt(window, destination, size, {10, 20}), (Point{0, 0}));
    EXPECT_EQ(PixelShownAt(window, destination, size, {11, 21}), (Point{0, 0}));
    EXPECT_EQ(PixelShownAt(window, destination, size, {12, 22}), (Point{1, 1}));
    EXPECT_EQ(PixelShownAt(window, destination, size, {9, 19}), (Point{-1, -1}));
    EXPECT_EQ(PixelShownAt(window, destination, size, {8, 18}), (Point{-1, -1}));
    EXPECT_EQ(PixelShownAt(window, destination, size, {7, 17}), (Point{-2, -2}));
    EXPECT_EQ(PixelShownAt(window, destination, size, {30, 40}), (Point{10, 10})) << "beyond the last";
    EXPECT_EQ(PointsShowing(window, destination, size, {1, 1, 2, 2}), (Rect{12, 22, 14, 24}));
    EXPECT_EQ(PointsShowing(window, destination, size, {0, 0, kColumns, kRows}), destination);
    EXPECT_EQ(PixelShownAt(window, {10, 20, 10, 20}, size, {12, 22}), (Point{0, 0})) << "nothing is painted";
    EXPECT_EQ(PixelShownAt(nullptr, destination, size, {12, 22}), (Point{0, 0}));
}

TEST(PixelShownAt, FollowsTheNearestPixelWhereThereAreNoBlocks)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    const Rect destination{0, 0, 7, 7};  // 5 columns and 3 rows in 7 device pixels each
    for (int i = 0; i < 7; ++i) {
        const Point shown = PixelShownAt(window, destination, {5, 3}, {i, i});
        EXPECT_EQ(shown, (Point{(2 * i + 1) * 5 / 14, (2 * i + 1) * 3 / 14})) << i;
    }
    EXPECT_EQ(PixelShownAt(window, destination, {5, 3}, {100, 100}), (Point{4, 2}));
}

// Five logical pixels are six of the device at 1.25, rounded down: one in five has no corner of its own.
TEST(PointsShowing, WhereAPixelIsSmallerThanALogicalOneIsThePointBesideIt)
{
    TestOperator op(OffscreenAt(1.25));
    HWND window = ShowRecordingWindow();
    const Rect destination{0, 0, 100, 100};
    EXPECT_EQ(PointsShowing(window, destination, {100, 100}, {3, 3, 4, 4}), (Rect{3, 3, 4, 4}));
    EXPECT_EQ(PixelShownAt(window, destination, {100, 100}, {3, 3}), (Point{3, 3}));
    EXPECT_EQ(PixelShownAt(window, destination, {100, 100}, {4, 4}), (Point{5, 5}));
    EXPECT_EQ(PointsShowing(window, destination, {100, 100}, {4, 4, 5, 5}), (Rect{4, 4, 5, 5})) << "the nearest";
}

TEST(Surface, SurvivesAResize)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    FillSurface(window, {10, 10, 20, 20}, 0x0000FF);
    window->frame->showNormal();
    window->frame->resize(900, 700);
    RunSteps(op, window);
    EXPECT_LT(GetClientRect(window).Width(), 1280);
    EXPECT_EQ(ScreenColor({15, 15}), 0xFF0000U);
    window->frame->resize(1200, 900);
    RunSteps(op, window);
    EXPECT_EQ(ScreenColor({15, 15}), 0xFF0000U);
    EXPECT_EQ(ScreenColor({1100, 800}), ScreenColor({100, 100}));  // what is new shows the background
}

TEST(Surface, TellsTheNewSizeAndAsksForPaintAfterAResize)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    window->frame->showNormal();
    RunSteps(op, window);
    seenMessages.clear();
    window->frame->resize(900, 700);
    RunSteps(op, window);
    ASSERT_FALSE(Seen(WM_SIZE).empty());
    EXPECT_EQ(LowWord(static_cast<WPARAM>(Seen(WM_SIZE).back().lParam)), 900);
    EXPECT_EQ(Seen(WM_PAINT).size(), 1U);
}

TEST(FillSurface, FillsWholeDevicePixelsToTheEdge)
{
    TestOperator op(OffscreenAt(1.5));
    HWND window = ShowRecordingWindow();
    FillSurface(window, GetClientRect(window), 0x123456);
    const DeviceBitmap seen = ClientPixels(window);
    EXPECT_EQ(seen.width, 1920);
    EXPECT_TRUE(std::ranges::all_of(seen.pixels, [](std::uint32_t rgb) { return rgb == 0x563412; }));
}

// The columns in which letters stand: not the background.
std::pair<int, int> TextSpan(HWND window, std::uint32_t background)
{
    const DeviceBitmap seen = ClientPixels(window);
    int first = seen.width;
    int last = -1;
    for (int y = 0; y < 40; ++y) {
        for (int x = 0; x < seen.width; ++x) {
            if (At(seen, x, y) == background) continue;
            first = std::min(first, x);
            last = std::max(last, x);
        }
    }
    return {first, last};
}

TEST(DrawTextLine, AlignsAtTheLeftTheCentreAndTheRight)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    const int width = QFontMetrics(window->widget->font()).horizontalAdvance("HMMMH");
    const struct {
        TextAlign align;
        int left;
    } cases[] = {{TextAlign::kLeft, 500}, {TextAlign::kCentre, 500 - width / 2}, {TextAlign::kRight, 500 - width}};
    for (const auto& [align, left] : cases) {
        FillSurface(window, GetClientRect(window), 0xFF0000);
        ASSERT_TRUE(DrawTextLine(window, 500, 5, "HMMMH", align, 0xFFFFFF, 0xFF0000));
        const auto [first, last] = TextSpan(window, 0x0000FF);
        EXPECT_NEAR(first, left, 2);
        EXPECT_NEAR(last, left + width, 3);
    }
}

TEST(DrawTextLine, FillsItsBackgroundBehindTheLetters)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    ASSERT_TRUE(DrawTextLine(window, 10, 10, "     ", TextAlign::kLeft, 0xFFFFFF, 0x00FF00));
    EXPECT_EQ(ScreenColor({12, 11}), 0x00FF00U);
    EXPECT_NE(ScreenColor({12, 9}), 0x00FF00U);
    EXPECT_NE(ScreenColor({9, 11}), 0x00FF00U);
}

TEST(DrawTextLine, FailsByTheFault)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    SetFault("text", true);
    EXPECT_FALSE(DrawTextLine(window, 0, 0, "text", TextAlign::kLeft, 0, 0));
}

TEST(Capture, HoldsTheClientAreaAtTheDeviceRatio)
{
    TestOperator op(OffscreenAt(2));
    HWND window = ShowRecordingWindow();
    FillSurface(window, {0, 0, 1, 1}, 0x0000FF);
    const DeviceBitmap client = ClientPixels(window);
    EXPECT_EQ(client.width, 2560);
    EXPECT_EQ(client.height, 2 * GetClientRect(window).Height());
    EXPECT_EQ(At(client, 1, 1), 0xFF0000U);
    EXPECT_NE(At(client, 2, 1), 0xFF0000U);
    DeviceBitmap whole;
    ASSERT_TRUE(CaptureWindowPixels(window, false, whole));
    EXPECT_EQ(whole.height, 2048);
    EXPECT_FALSE(CaptureWindowPixels(nullptr, true, whole));
}

TEST(Capture, OfTheScreenTakesOurWindowsWhereTheScreenIsNotSeen)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    FillSurface(window, {100, 100, 110, 110}, 0x00FF00);
    const Point place = ClientToScreen(window, {100, 100});
    DeviceBitmap seen;
    ASSERT_TRUE(CaptureScreenPixels({place.x - 1, place.y, place.x + 10, place.y + 10}, seen));
    EXPECT_EQ(seen.width, 11);
    EXPECT_EQ(seen.height, 10);
    EXPECT_NE(At(seen, 0, 5), 0x00FF00U);
    EXPECT_EQ(At(seen, 1, 5), 0x00FF00U);
    EXPECT_FALSE(CaptureScreenPixels({5000, 5000, 5010, 5010}, seen));
    EXPECT_FALSE(CaptureScreenPixels({10, 10, 10, 20}, seen));
}

TEST(Screenshot, HoldsTheBoxInFront)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    const TempDirectory directory;
    const std::string path = directory / "shot.png";
    FillSurface(window, GetClientRect(window), 0x00FF00);
    op.AtNextBox([&](const FrontBox&) { EXPECT_TRUE(SaveScreenshot(path)); });
    MessageBox(window, "A box in the middle of the window.", "caption");
    QImage shot(ToQPath(path));
    ASSERT_EQ(shot.size(), QSize(1280, 1024));
    EXPECT_EQ(shot.pixel(10, 900) & 0xFFFFFF, 0x00FF00U);
    EXPECT_NE(shot.pixel(640, 512) & 0xFFFFFF, 0x00FF00U);
    EXPECT_FALSE(SaveScreenshot(directory / "no such directory/shot.png"));
}

TEST(Clipboard, TakesAPicture)
{
    TestOperator op;
    CopyToClipboard({2, 1, {0x112233, 0x445566}});
    const QImage image = QGuiApplication::clipboard()->image();
    ASSERT_EQ(image.size(), QSize(2, 1));
    EXPECT_EQ(image.pixel(0, 0) & 0xFFFFFF, 0x112233U);
    EXPECT_EQ(image.pixel(1, 0) & 0xFFFFFF, 0x445566U);
}

}  // namespace
}  // namespace kelvo
