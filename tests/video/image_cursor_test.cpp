// Pointer, pixel and trackball.
#include "video/image_cursor.h"

#include "display/display_pipeline.h"
#include "imagefile/header.h"
#include "platform/dialog.h"
#include "platform/pointer.h"
#include "platform/qt_window.h"
#include "platform/window.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "support/picture_fixture.h"
#include "ui/docking.h"
#include "video/zoom_pan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace kelvo {
namespace {

TEST(Trackball, SidewaysMotionMovesBrightnessInProportion)
{
    struct Row {
        int dx, brightness;
    };
    for (const Row row : {Row{0, 500},
                          {4, 500},
                          {5, 501},
                          {8, 502},
                          {10, 502},
                          {13, 503},
                          {100, 520},
                          {-4, 500},
                          {-5, 499},
                          {-8, 498},
                          {-100, 480}}) {
        EXPECT_EQ(LevelsAfterMotion({50, 500}, row.dx, 0), (TrackballLevels{50, row.brightness})) << row.dx;
    }
}

TEST(Trackball, BrightnessEndsAtItsLimits)
{
    EXPECT_EQ(LevelsAfterMotion({50, 995}, 100, 0).brightness, 1000);
    EXPECT_EQ(LevelsAfterMotion({50, 21}, -100, 0).brightness, 1);  // 21 - 20
    EXPECT_EQ(LevelsAfterMotion({50, 20}, -100, 0).brightness, 1);
    EXPECT_EQ(LevelsAfterMotion({50, 22}, -100, 0).brightness, 2);
}

TEST(Trackball, UpAndDownMotionMovesContrastPastADeadZone)
{
    EXPECT_EQ(LevelsAfterMotion({50, 500}, 0, 20), (TrackballLevels{50, 500}));
    EXPECT_EQ(LevelsAfterMotion({50, 500}, 0, 21), (TrackballLevels{49, 500}));
    EXPECT_EQ(LevelsAfterMotion({50, 500}, 0, 400), (TrackballLevels{49, 500}));
    EXPECT_EQ(LevelsAfterMotion({50, 500}, 0, -20), (TrackballLevels{50, 500}));
    EXPECT_EQ(LevelsAfterMotion({50, 500}, 0, -21), (TrackballLevels{51, 500}));
    EXPECT_EQ(LevelsAfterMotion({1, 500}, 0, 30).contrast, 1);
    EXPECT_EQ(LevelsAfterMotion({100, 500}, 0, -30).contrast, 100);
}

class ImageCursor : public PictureTest {
  protected:
    ImageCursor()
    {
        DockPanel();
        View(32, 24, std::vector<std::int16_t>(32 * 24, 100));
        RedrawPicture();
    }
    static Point Client(int x, int y) { return ClientToScreen(hWndMain, {x, y}); }
};

TEST_F(ImageCursor, TheViewLiesBetweenPanelAndStatusLine)
{
    Rect view;
    ViewClipRect(view);
    const Point topLeft = Client(0, PanelHeight());
    const Point bottomRight = Client(ClientWidth, ClientHeight - TextHeight);
    EXPECT_EQ(view, (Rect{topLeft.x, topLeft.y, bottomRight.x, bottomRight.y}));
}

TEST_F(ImageCursor, ConfinesThePointerToTheView)
{
    SetPointerPosition(Client(10, 0));  // over the panel
    ImageCursorPosition();
    EXPECT_TRUE(PointerIsClipped());
    EXPECT_EQ(ScreenToClient(hWndMain, GetPointerPosition()), (Point{10, PanelHeight()}));
}

// The picture is 96 x 72: the rest of the view belongs to nothing.
TEST_F(ImageCursor, ConfinesThePointerToThePicture)
{
    SetPointerPosition(Client(1000, 700));
    EXPECT_EQ(ImageCursorPosition(), (Point{31, 23}));
    EXPECT_EQ(ScreenToClient(hWndMain, GetPointerPosition()), (Point{95, PanelHeight() + 71}));
    SetPointerPosition(Client(50, 700));
    EXPECT_EQ(ImageCursorPosition(), (Point{16, 23}));
}

TEST_F(ImageCursor, WithoutAPictureThePointerIsConfinedToTheView)
{
    ResetDisplayPipeline();
    write::frames.ViewingFile = 0;
    SetPointerPosition(Client(1000, 700));
    ImageCursorPosition();
    EXPECT_EQ(ScreenToClient(hWndMain, GetPointerPosition()), (Point{1000, 700}));
    SetPointerPosition(Client(1000, 2000));
    ImageCursorPosition();
    EXPECT_EQ(ScreenToClient(hWndMain, GetPointerPosition()), (Point{1000, ClientHeight - TextHeight - 1}));
}

TEST_F(ImageCursor, WithoutAZoomThereIsNoPixelToLookFor)
{
    write::camera.ActiveConfig.Xzoom = write::camera.ActiveConfig.Yzoom = 0;
    SetPointerPosition(Client(40, PanelHeight() + 40));
    EXPECT_EQ(ImageCursorPosition(), (Point{0, 0}));
}

// Offsets place nothing: the painter doesn't know them.
TEST_F(ImageCursor, OffsetsDontCount)
{
    write::camera.ActiveConfig.Xoffset = 48;
    write::camera.ActiveConfig.Yoffset = 30;
    SetPointerPosition(Client(31, PanelHeight() + 20));
    EXPECT_EQ(ImageCursorPosition(), (Point{10, 6}));
}

TEST_F(ImageCursor, ThePointerReturnsToItsPixel)
{
    ImageCursorPosition();
    for (const Point pixel : {Point{0, 0}, {5, 7}, {31, 23}, {16, 1}}) {
        PutPointerOverPixel(pixel);
        EXPECT_EQ(ImageCursorPosition(), pixel);
    }
}

TEST_F(ImageCursor, ZoomingKeepsThePointerOverItsPixelAndTheReadOutOn)
{
    View(640, 480, std::vector<std::int16_t>(640 * 480, 100));
    write::frames.ImageCursorOn = 1;
    ImageCursorPosition();
    PutPointerOverPixel({100, 90});
    ASSERT_EQ(ImageCursorPosition(), (Point{100, 90}));
    ZoomPanCommand(200);
    EXPECT_EQ(Xzoom, 4);
    EXPECT_EQ(ImageCursorPosition(), (Point{100, 90}));
    EXPECT_EQ(CursorX, 100);
    EXPECT_EQ(CursorY, 90);
    EXPECT_EQ(op->Texts("status", "text").back(), "x=100  y= 90  Signal=100 Counts     ");
}

TEST_F(ImageCursor, ARefusedCommandChangesNothing)
{
    write::camera.ActiveConfig.Xzoom = write::camera.ActiveConfig.Yzoom = 16;
    ZoomPanCommand(200);
    EXPECT_EQ(Xzoom, 16);
    EXPECT_EQ(CameraKey("Xpan"), "missing");
    ZoomPanCommand(201);
    EXPECT_EQ(Xzoom, 15);
    EXPECT_EQ(CameraKey("Xpan"), "0");
}

TEST_F(ImageCursor, TrackballHoldsThePointerAtItsRest)
{
    TrackballToggle();
    EXPECT_EQ(TrackballMode, 1);
    EXPECT_EQ(CurrentPointer(), Pointer::kTrackball);
    EXPECT_TRUE(PointerIsClipped());
    EXPECT_EQ(GetPointerPosition(), Client(320, 240));
    write::display.Contrast = 50;
    write::display.Brightness = 500;
    SetPointerPosition(Client(330, 265));
    TrackballMotion();
    EXPECT_EQ(Brightness, 502);
    EXPECT_EQ(Contrast, 49);
    EXPECT_EQ(GetPointerPosition(), Client(320, 240));
    TrackballMotion();  // at its rest: nothing
    EXPECT_EQ(Brightness, 502);
}

TEST_F(ImageCursor, LeavingTheTrackballSavesTheLevels)
{
    TrackballToggle();
    write::display.Contrast = 61;
    write::display.Brightness = 432;
    TrackballToggle();
    EXPECT_EQ(TrackballMode, 0);
    EXPECT_FALSE(PointerIsClipped());
    EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
    EXPECT_EQ(IniKey("Display", "Contrast"), "61");
    EXPECT_EQ(IniKey("Display", "Brightness"), "432");
}

TEST_F(ImageCursor, TheTrackballGivesTheImageCursorItsPlaceBack)
{
    write::frames.ImageCursorOn = 1;
    ImageCursorPosition();
    SetPointerPosition(Client(50, PanelHeight() + 40));
    TrackballToggle();
    EXPECT_EQ(GetPointerPosition(), Client(320, 240));
    TrackballToggle();
    EXPECT_EQ(GetPointerPosition(), Client(50, PanelHeight() + 40));
    EXPECT_EQ(CurrentPointer(), Pointer::kCross);
    EXPECT_TRUE(PointerIsClipped());
}

TEST_F(ImageCursor, EnteringTheTrackballShowsTheLevelsInThePanel)
{
    write::display.Contrast = 12;
    write::display.Brightness = 345;
    TrackballToggle();
    EXPECT_EQ(GetDlgItemText(hDlgPanel, 317), "12");
    EXPECT_EQ(GetDlgItemText(hDlgPanel, 316), "345");
}

// A stored picture of 640 x 480 at zoom 3 is larger than the window and scrolls.
class ScrolledImageCursor : public ImageCursor {
  protected:
    ScrolledImageCursor()
    {
        View(640, 480, std::vector<std::int16_t>(640 * 480, 100));
        RedrawPicture();
    }
};

TEST_F(ScrolledImageCursor, ThePixelFollowsTheScrolling)
{
    OperateMouse({300, PanelHeight() + 90}, 0);
    const Point before = ImageCursorPosition();
    ASSERT_TRUE(ScrollPictureTo(hWndMain, {300, 150}));
    OperateMouse({300, PanelHeight() + 90}, 0);
    const Point after = ImageCursorPosition();
    EXPECT_EQ(before, (Point{100, 30}));
    EXPECT_EQ(after, (Point{200, 80}));
    PutPointerOverPixel({600, 400});
    EXPECT_EQ(ImageCursorPosition(), (Point{600, 400}));
}

TEST_F(ScrolledImageCursor, TheTrackballRestsWhereItIsSeen)
{
    ASSERT_TRUE(ScrollPictureTo(hWndMain, {300, 150}));
    TrackballToggle();
    write::display.Brightness = 500;
    OperateMouse({340, 240}, 0);  // 20 to the right of the rest
    TrackballMotion();
    EXPECT_EQ(Brightness, 504);
}

// Each count has a gray of its own among its neighbours, so that the screen tells which pixel it shows.
std::int16_t PatternCount(std::int64_t x, std::int64_t y)
{
    return static_cast<std::int16_t>(64 * ((x * 37 + y * 101) % 251));
}

// What the pointer reads is what the screen shows under it, and the pixel in which the painter's definition has that
// point: blocks of zoom x ratio device pixels, rounded to whole ones, from the panel's lower edge on.
class UnderThePointer : public PictureTest, public testing::WithParamInterface<double> {
  protected:
    UnderThePointer() : PictureTest(GetParam()) { DockPanel(); }
    ~UnderThePointer() override { write::display.Xpan = write::display.Ypan = 0; }

    static std::vector<std::int16_t> Pattern(int width, int height)
    {
        std::vector<std::int16_t> counts;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) counts.push_back(PatternCount(x, y));
        }
        return counts;
    }
    void SetZoom(int zoom)
    {
        write::camera.ActiveConfig.Xzoom = write::camera.ActiveConfig.Yzoom = zoom;
        block = std::max(1, static_cast<int>(zoom * GetParam() + 0.5));
    }
    static std::int64_t Device(int logical) { return static_cast<std::int64_t>(logical * GetParam()); }
    // The block of the bitmap at a point of the client area.
    Point BlockAt(Point at) const
    {
        const auto top = static_cast<std::int64_t>(PanelHeight() * GetParam() + 0.5);
        return {static_cast<int>(Device(at.x) / block), static_cast<int>((Device(at.y) - top) / block)};
    }
    // Points at the corners and in the middle of a block, and just outside of it.
    std::vector<Point> PointsOf(int column, int row) const
    {
        const double ratio = GetParam();
        const double size = block / ratio;
        std::vector<Point> points;
        for (const double dx : {-0.6, 0.0, 0.5, 1.0, 1.4}) {
            for (const double dy : {-0.6, 0.0, 0.5, 1.0, 1.4}) {
                const Point at{static_cast<int>(std::ceil((column + dx) * size)),
                               PanelHeight() + static_cast<int>(std::ceil((row + dy) * size))};
                if (at.x < 0 || at.y < PanelHeight() || at.x >= ClientWidth - 20) continue;
                if (at.y < ClientHeight - TextHeight - 20) points.push_back(at);
            }
        }
        return points;
    }
    // The color that the screen shows at a point is that of a count. To look takes longest: at every 64th point.
    void ExpectCountShown(Point at, Point pixel)
    {
        if (looked++ % 64 != 0) return;
        const std::uint32_t gray = DisplayLut.at(static_cast<std::size_t>(PatternCount(pixel.x, pixel.y)));
        EXPECT_EQ(Shown(at.x, at.y), gray * 0x010101U) << at.x << ", " << at.y;
    }
    int block = 1;
    int looked = 0;
};

TEST_P(UnderThePointer, APictureSmallerThanTheViewIsReadPixelByPixel)
{
    constexpr int kWidth = 19;
    constexpr int kHeight = 13;
    View(kWidth, kHeight, Pattern(kWidth, kHeight));
    for (int zoom = 1; zoom <= 16; ++zoom) {
        SetZoom(zoom);
        RedrawPicture();
        for (const Point pixel : {Point{0, 0}, {7, 5}, {18, 0}, {0, 12}, {18, 12}, {11, 12}}) {
            for (const Point at : PointsOf(pixel.x, pixel.y)) {
                SetPointerPosition(ClientToScreen(hWndMain, at));
                const Point shown = BlockAt(at);
                const Point nearest{std::min(shown.x, kWidth - 1), std::min(shown.y, kHeight - 1)};
                ASSERT_EQ(ImageCursorPosition(), nearest) << "zoom " << zoom << " at " << at.x << ", " << at.y;
            }
        }
    }
}

TEST_P(UnderThePointer, APictureLargerThanTheViewIsReadWhereItIsSeen)
{
    View(1600, 1200, Pattern(1600, 1200));
    for (const int zoom : {1, 2, 3, 5, 8, 13, 16}) {
        SetZoom(zoom);
        RedrawPicture();
        for (const Point pixel : {Point{0, 0}, {3, 2}, {17, 11}, {40, 30}, {300, 200}, {799, 600}}) {
            for (const Point at : PointsOf(pixel.x, pixel.y)) {
                SetPointerPosition(ClientToScreen(hWndMain, at));
                const Point shown = BlockAt(at);
                ASSERT_EQ(ImageCursorPosition(), shown) << "zoom " << zoom << " at " << at.x << ", " << at.y;
                ExpectCountShown(at, shown);
            }
        }
    }
}

// The camera's picture begins at the pan's column. Its rows stay where they are; what lies left of the frame is the end
// of the row before, and black are the rows below its last.
TEST_P(UnderThePointer, APannedPictureIsReadAsItIsPainted)
{
    write::frames.CameraOn = 1;
    write::frames.LiveFrame = Pattern(32, 24);
    for (const Point pan : {Point{0, 0}, {5, 0}, {-7, 0}, {0, 4}, {0, -6}, {9, 3}, {-3, -2}, {31, 23}, {-32, -24}}) {
        write::display.Xpan = pan.x;
        write::display.Ypan = pan.y;
        for (const int zoom : {1, 2, 3, 4, 7, 11, 16}) {
            SetZoom(zoom);
            DrawFrame(LiveFrame);
            for (const Point pixel : {Point{0, 0}, {3, 2}, {11, 9}, {22, 20}}) {
                for (const Point at : PointsOf(pixel.x, pixel.y)) {
                    const Point shown = BlockAt(at);
                    const int element = shown.y * 32 + pan.x + shown.x;
                    const bool inPicture = shown.x < 32 - pan.x && shown.y < std::min(24, 24 - pan.y) && element >= 0;
                    if (!inPicture) continue;
                    SetPointerPosition(ClientToScreen(hWndMain, at));
                    const Point read = ImageCursorPosition();
                    ASSERT_EQ(read, (Point{element % 32, element / 32}))
                        << "zoom " << zoom << ", pan " << pan.x << ", " << pan.y << " at " << at.x << ", " << at.y;
                    ExpectCountShown(at, read);
                }
            }
        }
    }
}

TEST_P(UnderThePointer, BeyondAPannedPictureThePixelIsTheNearestInTheFrame)
{
    write::frames.LiveFrame = Pattern(32, 24);
    SetZoom(4);
    const auto at = [&](Point pan, Point point) {
        write::display.Xpan = pan.x;
        write::display.Ypan = pan.y;
        DrawFrame(LiveFrame);
        SetPointerPosition(ClientToScreen(hWndMain, {point.x, PanelHeight() + point.y}));
        return ImageCursorPosition();
    };
    EXPECT_EQ(at({0, 0}, {1000, 700}), (Point{31, 23}));
    EXPECT_EQ(at({10, 5}, {1000, 700}), (Point{31, 18})) << "a vertical pan cuts rows off at the bottom";
    EXPECT_EQ(at({0, -8}, {1000, 700}), (Point{31, 23})) << "black rows below the frame";
    EXPECT_EQ(at({-8, 0}, {0, 0}), (Point{0, 0})) << "nothing comes before the first row";
    EXPECT_EQ(at({32, 0}, {0, 0}), (Point{31, 0})) << "nothing is painted";
    EXPECT_EQ(at({0, 24}, {0, 0}), (Point{0, 0}));
}

TEST_P(UnderThePointer, ThePointerFindsBackToEachPixel)
{
    View(60, 40, Pattern(60, 40));
    for (int zoom = 1; zoom <= 16; ++zoom) {
        SetZoom(zoom);
        RedrawPicture();
        for (int x = 0; x < 60; ++x) {
            const Point pixel{x, x * 40 / 60};
            PutPointerOverPixel(pixel);
            ASSERT_EQ(ImageCursorPosition(), pixel) << "zoom " << zoom;
        }
    }
}

TEST_P(UnderThePointer, AScrolledPictureIsReadWhereItIsSeen)
{
    View(1600, 1200, Pattern(1600, 1200));
    for (const int zoom : {1, 3, 7}) {
        SetZoom(zoom);
        RedrawPicture();
        ASSERT_TRUE(ScrollPictureTo(hWndMain, {200, 100}));
        RedrawPicture();
        const Point origin = GetScrollOrigin(hWndMain);
        ASSERT_EQ(origin, (Point{200, 100}));
        for (const Point at : {Point{0, 0}, {1, 1}, {50, 70}, {333, 222}, {801, 599}}) {
            OperateMouse({at.x, PanelHeight() + at.y}, 0);
            const Point read = ImageCursorPosition();
            EXPECT_EQ(Shown(at.x, PanelHeight() + at.y),
                      DisplayLut.at(static_cast<std::size_t>(PatternCount(read.x, read.y))) * 0x010101U)
                << "zoom " << zoom << " at " << at.x << ", " << at.y << ": " << read.x << ", " << read.y;
            EXPECT_NEAR(read.x, (200 + at.x) * GetParam() / block, 1.0);
            EXPECT_NEAR(read.y, (100 + at.y) * GetParam() / block, 1.0);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Ratios, UnderThePointer, testing::Values(1.0, 1.5, 2.0));

}  // namespace
}  // namespace kelvo
