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

namespace kelvo {
namespace {

// 320 x 240 pixels at zoom 2 over an area of 640 x 480, not panned.
constexpr CursorMapping kWhole{{320, 240}, {0, 0}, {320, 240}, {640, 480}};

TEST(PixelUnder, FollowsThePointerInStepsOfThePixel)
{
    // 0.49 + pointer / 2, cut: pixel 1 begins at pointer 2 (1.49), since 0.99 is still pixel 0.
    EXPECT_EQ(PixelUnder(0, 0, kWhole), (Point{0, 0}));
    EXPECT_EQ(PixelUnder(1, 1, kWhole), (Point{0, 0}));
    EXPECT_EQ(PixelUnder(2, 2, kWhole), (Point{1, 1}));
    EXPECT_EQ(PixelUnder(639, 479, kWhole), (Point{319, 239}));
}

TEST(PixelUnder, StartsAtThePan)
{
    const CursorMapping panned{{320, 240}, {100, 50}, {220, 190}, {440, 380}};
    EXPECT_EQ(PixelUnder(0, 0, panned), (Point{100, 50}));
    EXPECT_EQ(PixelUnder(20, 10, panned), (Point{110, 55}));
}

TEST(PixelUnder, StaysInsideTheFrame)
{
    EXPECT_EQ(PixelUnder(5000, 5000, kWhole), (Point{319, 239}));
    EXPECT_EQ(PixelUnder(-5000, -5000, kWhole), (Point{0, 0}));
    EXPECT_EQ(PixelUnder(10, 10, {{320, 240}, {-100, -100}, {320, 240}, {640, 480}}), (Point{0, 0}));
}

TEST(PixelUnder, WithoutAnAreaOrAFrameIsTheFirstPixel)
{
    EXPECT_EQ(PixelUnder(10, 10, {{320, 240}, {0, 0}, {320, 240}, {0, 0}}), (Point{0, 0}));
    EXPECT_EQ(PixelUnder(10, 10, {{0, 0}, {0, 0}, {0, 0}, {640, 480}}), (Point{0, 0}));
}

TEST(PlaceOver, GivesThePixelBackAtEveryScale)
{
    for (const int clip : {320, 333, 500, 640, 1280, 3000}) {
        const CursorMapping mapping{{320, 240}, {7, 3}, {313, 237}, {clip, clip}};
        for (int x = 7; x < 320; ++x) {
            const Point place = PlaceOver({x, 3}, mapping);
            EXPECT_EQ(PixelUnder(place.x, place.y, mapping), (Point{x, 3})) << clip;
        }
    }
}

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

TEST_F(ImageCursor, SpreadsTheFrameOverTheView)
{
    // 32 of 32 columns are counted over the client width.
    Rect view;
    ViewClipRect(view);
    for (const int x : {0, 100, 640, ClientWidth - 1}) {
        SetPointerPosition(Client(x, PanelHeight() + 50));
        const Point pixel = ImageCursorPosition();
        EXPECT_EQ(pixel.x, std::min(31, static_cast<int>(0.49 + x * 32.0 / view.Width()))) << x;
        EXPECT_EQ(pixel.y, static_cast<int>(0.49 + 50 * 24.0 / view.Height()));
    }
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
    SetPointerPosition(Client(500, 400));
    TrackballToggle();
    EXPECT_EQ(GetPointerPosition(), Client(320, 240));
    TrackballToggle();
    EXPECT_EQ(GetPointerPosition(), Client(500, 400));
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
    Rect view;
    ViewClipRect(view);
    const Point after = ImageCursorPosition();
    EXPECT_NEAR(after.x - before.x, 300.0 * (ViewWidth / 3) / view.Width(), 1.0);
    EXPECT_NEAR(after.y - before.y, 150.0 * (ViewHeight / 3) / view.Height(), 1.0);
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

class ImageCursorAtRatioOneAndAHalf : public PictureTest {
  protected:
    ImageCursorAtRatioOneAndAHalf() : PictureTest(1.5) {}
};

// At 1.5 a zoom of 1 paints blocks of 2 device pixels, 4/3 logical pixels each: the pointer is over the pixel that the
// screen shows there, as at whole ratios.
TEST_F(ImageCursorAtRatioOneAndAHalf, ThePixelIsTheOneOnTheScreen)
{
    write::camera.ActiveConfig.Xzoom = write::camera.ActiveConfig.Yzoom = 1;
    View(2000, 1500, std::vector<std::int16_t>(2000 * 1500, 100));
    RedrawPicture();
    Rect view;
    ViewClipRect(view);
    for (const int x : {40, 400}) {
        SetPointerPosition(ClientToScreen(hWndMain, {x, 40}));
        const double painted = x * 0.75 * std::min(2000, ViewWidth) / view.Width();
        EXPECT_NEAR(ImageCursorPosition().x, painted, 1.0) << x;
    }
}

}  // namespace
}  // namespace kelvo
