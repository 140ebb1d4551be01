// From a stored frame to pixels on the screen.
#include "dibapi32/dibapi32.h"
#include "display/display_pipeline_write.h"
#include "imagefile/header_write.h"
#include "platform/dialog.h"
#include "platform/memory.h"
#include "platform/paint.h"
#include "platform/window.h"
#include "resources/ids.h"
#include "state/camera_config_write.h"
#include "state/contrast_fit.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "support/picture_fixture.h"
#include "support/state_value.h"
#include "ui/docking.h"
#include "ui/status_write.h"
#include "video/video.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {
namespace {

using testing::SizeIs;

constexpr std::uint32_t kBackground = 0x204080;  // the fixture's, as red green blue
constexpr std::uint32_t kBlack = 0x000000;
constexpr std::uint32_t kWhite = 0xFFFFFF;

std::uint32_t Gray(std::size_t count)
{
    return DisplayLut[count] * 0x010101U;
}

TEST(BuildDisplayLut, NeedsNoWindowAndNoFile)
{
    write::display.DisplayHigh = 16383;
    BuildDisplayLut(100, 1000);
    ASSERT_THAT(DisplayLut, SizeIs(65535));
    EXPECT_EQ(DisplayLut[0], 0);
    EXPECT_EQ(DisplayLut[15], 239);  // 15 x 255 / 16 = 239.06
    EXPECT_EQ(DisplayLut[16], 255);
    EXPECT_EQ(DisplayLut[16383], 255);
    EXPECT_EQ(DisplayLut[16384], 0);  // never written
    EXPECT_EQ(Contrast, 100);
    EXPECT_EQ(Brightness, 1000);
}

TEST(BuildDisplayLut, KeepsEntriesThatANewTableDoesntReach)
{
    write::display.DisplayHigh = 16383;
    BuildDisplayLut(100, 1000);
    write::display.DisplayHigh = 99;
    BuildDisplayLut(100, 1000);
    EXPECT_EQ(DisplayLut[16000], 255);
}

TEST(BuildDisplayLut, RefusedMemoryLeavesNoTable)
{
    FailAllocation(1);
    BuildDisplayLut(50, 500);
    EXPECT_TRUE(DisplayLut.empty());
    EXPECT_EQ(Contrast, 50);
}

TEST(BuildDisplayLut, AFileBringsItsRangeAndTheLoopsRunOverTheLiveOne)
{
    write::display.DisplayLow = 100;
    write::display.DisplayHigh = 8000;
    write::frames.ViewingFile = 1;
    write::file.ImageHeader.HeaderVersion = 8;
    write::file.ImageHeader.DisplayLow = 0;
    write::file.ImageHeader.DisplayHigh = 16383;
    BuildDisplayLut(100, 1);  // white from 16383 on; the ramp begins at 16367
    // Black from live count 100 to 16366: entries 0 to 16266; then the 16 counts of the ramp.
    EXPECT_EQ(DisplayLut[16266], 0);
    EXPECT_EQ(DisplayLut[16268], 15);  // the ramp's second count, 255 / 16
    EXPECT_EQ(DisplayLut[16282], 239);
    EXPECT_EQ(DisplayLut[16283], 0);  // the live range ends before white begins
}

TEST(ImageToScreen, CountsOffsetsInWholePixels)
{
    write::camera.ActiveConfig.Xzoom = 3;
    write::camera.ActiveConfig.Yzoom = 2;
    write::camera.ActiveConfig.Xoffset = 50;  // 16 pixels, of which a multiple of four: 16
    write::camera.ActiveConfig.Yoffset = 9;   // 4
    write::display.Xpan = 10;
    write::display.Ypan = -5;
    std::int32_t x = 20;
    std::int32_t y = 30;
    ImageToScreen(x, y);
    EXPECT_EQ(x, (20 + 16 - 10) * 3);
    EXPECT_EQ(y, (30 + 4 + 5) * 2);
    write::camera.ActiveConfig.Xoffset = 47;  // 15 pixels: 12
    x = 20;
    ImageToScreen(x, y);
    EXPECT_EQ(x, (20 + 12 - 10) * 3);
    write::camera.ActiveConfig.Yzoom = 0;
    x = 20;
    ImageToScreen(x, y);
    EXPECT_EQ(x, 20);
}

using Pipeline = PictureTest;

TEST_F(Pipeline, EachImagePixelIsABlockOfTheZoom)
{
    const std::vector<std::int16_t> counts{0, 16383, 8000, 4000, 12000, 2};
    View(3, 2, counts);
    RedrawPicture();
    auto next = counts.begin();
    for (int row = 0; row < 2; ++row) {
        for (int column = 0; column < 3; ++column) {
            const auto count = static_cast<std::size_t>(*next++);
            for (const auto& [dx, dy] : {std::pair{0, 0}, {2, 0}, {0, 2}, {2, 2}}) {
                EXPECT_EQ(Shown(column * 3 + dx, row * 3 + dy), Gray(count)) << column << ' ' << row;
            }
        }
    }
    EXPECT_EQ(Shown(0, 0), kBlack);
    EXPECT_EQ(Shown(3, 0), kWhite);
    EXPECT_EQ(Shown(9, 0), kBackground);
    EXPECT_EQ(Shown(0, 6), kBackground);
    EXPECT_EQ(StateNumber("LastPaintRight"), 9);
    EXPECT_EQ(StateNumber("LastPaintBottom"), 6);
}

TEST_F(Pipeline, UnlikeZoomsMakeOblongBlocks)
{
    write::camera.ActiveConfig.Yzoom = 1;
    View(2, 2, {0, 16383, 16383, 0});
    RedrawPicture();
    EXPECT_EQ(Shown(2, 0), kBlack);
    EXPECT_EQ(Shown(3, 0), kWhite);
    EXPECT_EQ(Shown(2, 1), kWhite);
    EXPECT_EQ(Shown(3, 1), kBlack);
}

TEST_F(Pipeline, ThePictureBeginsBelowThePanel)
{
    DockPanel();
    ASSERT_GT(PanelHeight(), 0);
    View(2, 1, {0, 16383});
    RedrawPicture();
    EXPECT_EQ(Shown(3, PanelHeight()), kWhite);
    EXPECT_EQ(StateNumber("LastPaintBottom"), PanelHeight() + 3);
}

TEST_F(Pipeline, ZoomingOutErasesTheOldMargin)
{
    const std::vector<std::int16_t> white(100, 16383);
    View(10, 10, white);
    SetDisplayGeometry(0, 0, 4, 4, 0, 0);
    EXPECT_EQ(Shown(39, 39), kWhite);
    SetDisplayGeometry(0, 0, 2, 2, 0, 0);
    EXPECT_EQ(Shown(19, 19), kWhite);
    for (const auto& [x, y] : {std::pair{20, 0}, {20, 39}, {39, 39}, {0, 20}, {19, 39}}) {
        EXPECT_EQ(Shown(x, y), kBackground) << x << ' ' << y;
    }
    EXPECT_EQ(StateNumber("LastPaintRight"), 20);
    EXPECT_EQ(StateNumber("LastPaintBottom"), 20);
}

TEST_F(Pipeline, ASmallerFrameErasesWhatTheLargerOneLeft)
{
    View(10, 2, std::vector<std::int16_t>(20, 16383));
    RedrawPicture();
    View(2, 10, std::vector<std::int16_t>(20, 16383));
    RedrawPicture();
    EXPECT_EQ(Shown(5, 0), kWhite);
    EXPECT_EQ(Shown(6, 0), kBackground);
    EXPECT_EQ(Shown(29, 5), kBackground);
    EXPECT_EQ(Shown(5, 29), kWhite);
}

TEST_F(Pipeline, BrightnessShowsOnAStoredFrameAtOnce)
{
    View(1, 1, {8000});
    BuildDisplayLut(100, 1000);
    EXPECT_EQ(Shown(0, 0), kWhite);
    BuildDisplayLut(100, 1);
    EXPECT_EQ(Shown(0, 0), kBlack);
}

TEST_F(Pipeline, ATableRebuiltWithoutAFileDrawsNothing)
{
    BuildDisplayLut(100, 1000);
    EXPECT_EQ(FrameBitmap, nullptr);
    EXPECT_EQ(Shown(0, 0), kBackground);
}

// The camera's last frame, of one count, on the screen and in LiveFrame.
void ShowCameraFrame(std::int16_t count)
{
    write::frames.LiveFrame.assign(32 * 24, count);
    DrawFrame(LiveFrame);
}

TEST_F(Pipeline, LevelsShowOnAFrozenFrameAtOnce)
{
    write::frames.CameraOn = 1;
    BuildDisplayLut(100, 1000);
    ShowCameraFrame(8000);
    EXPECT_EQ(Shown(0, 0), kWhite);
    BuildDisplayLut(100, 1);
    EXPECT_EQ(Shown(0, 0), kBlack);
}

TEST_F(Pipeline, RunningVideoTakesLevelsWithItsNextFrame)
{
    write::frames.LiveVideo = 1;
    write::frames.DisplayEnabled = 1;
    BuildDisplayLut(100, 1000);
    ShowCameraFrame(8000);
    BuildDisplayLut(100, 1);
    EXPECT_EQ(Shown(0, 0), kWhite);
    write::frames.DisplayEnabled = 0;  // there is no next frame
    BuildDisplayLut(100, 1);
    EXPECT_EQ(Shown(0, 0), kBlack);
}

TEST_F(Pipeline, NothingIsRedrawnWhereNothingOfTheCameraIsOnTheScreen)
{
    const auto expectNothing = [&](std::uint32_t screen, const char* what) {
        RedrawPicture();
        EXPECT_EQ(Shown(0, 0), screen) << what;
    };
    BuildDisplayLut(100, 1000);
    write::frames.LiveFrame.assign(32 * 24, 8000);
    expectNothing(kBackground, "no picture at all");

    View(32, 24, std::vector<std::int16_t>(32 * 24, 0));
    RedrawPicture();
    ASSERT_EQ(Shown(0, 0), kBlack);
    write::frames.ViewingFile = 0;
    expectNothing(kBlack, "a file that was left");

    ShowCameraFrame(8000);
    ASSERT_EQ(Shown(0, 0), kWhite);
    write::frames.LiveFrame.assign(32 * 24, 0);
    ForgetCameraFrame();
    expectNothing(kWhite, "LiveFrame was made anew");

    ShowCameraFrame(8000);
    write::frames.LiveFrame.assign(32 * 23, 0);
    expectNothing(kWhite, "a frame of another size");
}

TEST_F(Pipeline, ThePanelShowsContrastAndBrightness)
{
    DockPanel();
    BuildDisplayLut(42, 777);
    EXPECT_EQ(GetDlgItemText(hDlgPanel, 317), "42");
    EXPECT_EQ(GetDlgItemText(hDlgPanel, 316), "777");
}

TEST_F(Pipeline, WithoutABufferNothingIsDrawn)
{
    View(4, 4, std::vector<std::int16_t>(16, 16383));
    write::frames.ImageBuffer.clear();
    RedrawPicture();
    EXPECT_EQ(Shown(0, 0), kBackground);
    write::frames.ImageBuffer.resize(31);
    RedrawPicture();
    EXPECT_EQ(Shown(0, 0), kBackground);
    EXPECT_EQ(FrameBitmap, nullptr);
}

TEST_F(Pipeline, TheSamplesBeginBehindTheFrameHeader)
{
    View(1, 1, std::vector<std::int16_t>(41, 0));
    write::file.ImageHeader.ImageHeaderDataOffset = 81;  // taken as 80
    write::frames.ImageBuffer[80] = 0xFF;
    write::frames.ImageBuffer[81] = 0x3F;
    RedrawPicture();
    EXPECT_EQ(Shown(0, 0), kWhite);
}

TEST_F(Pipeline, RepaintingShowsTheLastPictureWithoutAFileOrACameraToo)
{
    View(2, 2, std::vector<std::int16_t>(4, 16383));
    RedrawPicture();
    const auto repainted = [] {
        const Rect all = GetClientRect(hWndMain);
        InvalidateRect(hWndMain, &all, true);
        return Shown(0, 0);
    };
    EXPECT_EQ(repainted(), kWhite);
    write::frames.ViewingFile = 0;
    EXPECT_EQ(repainted(), kWhite);
    write::frames.CameraOn = 1;
    EXPECT_EQ(repainted(), kWhite);
    write::picture.FrameBitmap = {};
    EXPECT_EQ(repainted(), kBackground);
}

TEST_F(Pipeline, AZoomOfZeroOrBeyondAllBoundsEndsWell)
{
    View(2, 2, std::vector<std::int16_t>(4, 16383));
    write::camera.ActiveConfig.Xzoom = 0;
    RedrawPicture();
    EXPECT_EQ(Shown(0, 0), kBackground);
    write::camera.ActiveConfig.Xzoom = 2147483647;
    write::camera.ActiveConfig.Yzoom = 2147483647;
    RedrawPicture();
    EXPECT_EQ(Shown(0, 0), kWhite);
    write::camera.ActiveConfig.Xzoom = -3;
    RedrawPicture();
    EXPECT_EQ(StateNumber("LastPaintRight"), 0);
}

TEST_F(Pipeline, GeometryIsWrittenButLostWithoutAPicture)
{
    SetDisplayGeometry(5, -6, 4, 4, 8, 9);
    EXPECT_EQ(CameraKey("Xpan"), "5");
    EXPECT_EQ(CameraKey("Ypan"), "-6");
    EXPECT_EQ(Xpan, 0);
    EXPECT_EQ(Xzoom, 3);
}

TEST_F(Pipeline, GeometryIsTakenWithAFileAndShownInThePanel)
{
    DockPanel();
    View(2, 2, {0, 16383, 0, 16383});
    SetDisplayGeometry(5, -6, 4, 7, 8, 9);
    EXPECT_EQ(Xpan, 5);
    EXPECT_EQ(Ypan, -6);
    EXPECT_EQ(Xzoom, 4);
    EXPECT_EQ(Yzoom, 7);
    EXPECT_EQ(Xoffset, 8);
    EXPECT_EQ(Yoffset, 9);
    EXPECT_EQ(GetScrollPos(hDlgPanel, 310), 4);
    EXPECT_EQ(GetDlgItemText(hDlgPanel, 311), "4");
    EXPECT_EQ(GetDlgItemText(hDlgPanel, 313), "5,-6");
    EXPECT_EQ(Shown(4, PanelHeight()), kWhite);  // drawn anew, and not panned: a stored frame shows whole
}

TEST_F(Pipeline, GeometryIsTakenWithTheCameraOn)
{
    write::frames.CameraOn = 1;
    SetDisplayGeometry(5, 6, 4, 4, 8, 9);
    EXPECT_EQ(Xpan, 5);
    EXPECT_EQ(Xzoom, 4);
}

TEST_F(Pipeline, AGeometryChangeWhileLiveLeavesLiveVideoOn)
{
    write::frames.CameraOn = 1;
    write::frames.LiveVideo = 1;
    SetDisplayGeometry(1, 2, 3, 3, 0, 0);
    EXPECT_EQ(LiveVideo, 1);
    EXPECT_EQ(Ypan, 2);
}

TEST_F(Pipeline, TheReadOutNamesPlaceValueAndUnit)
{
    View(20, 20, std::vector<std::int16_t>(400, 1234));
    write::frames.ImageCursorOn = 1;
    ShowCursorValue(7, 12, 1);
    EXPECT_EQ(StatusText, "x=  7  y= 12  Signal=1234 Counts     ");
    EXPECT_EQ(StatusAlign, 6);
    EXPECT_EQ(CursorX, 7);
    EXPECT_EQ(CursorY, 12);
}

TEST_F(Pipeline, TheReadOutLeavesTheDegreeSignOut)
{
    View(20, 20, std::vector<std::int16_t>(400, 1500));
    write::file.ImageHeader.IntensityCold = 1000;
    write::file.ImageHeader.IntensityHot = 2000;
    write::file.ImageHeader.TemperatureCold = 20.0F;
    write::file.ImageHeader.TemperatureHot = 30.0F;
    write::frames.ImageCursorOn = 1;
    write::display.DisplayUnit = 2;
    ShowCursorValue(7, 12, 1);
    EXPECT_EQ(StatusText, "x=  7  y= 12  Temperature=25.000 C     ");
}

TEST_F(Pipeline, TheReadOutKeepsTheLineWhenOffOrWithoutZoom)
{
    View(20, 20, std::vector<std::int16_t>(400, 1234));
    write::status.StatusText = "before";
    ShowCursorValue(7, 12, 0);
    EXPECT_EQ(StatusText, "before");
    EXPECT_NE(CursorX, 7);
    write::camera.ActiveConfig.Yzoom = 0;
    ShowCursorValue(7, 12, 1);
    EXPECT_EQ(StatusText, "before");
    EXPECT_EQ(CursorX, 7);
}

TEST_F(Pipeline, LevelsThatTheProgramFoundAreNobodysChoiceWhenTheyComeBack)
{
    ShowOwnFit({.contrast = 40, .brightness = 500, .reason = {}});
    BuildDisplayLut(40, 500);
    EXPECT_TRUE(OwnFitInForce()) << "the table anew is no change";
    BuildDisplayLut(41, 500);
    EXPECT_FALSE(OwnFitInForce());
    BuildDisplayLut(42, 510);
    BuildDisplayLut(40, 500);
    EXPECT_TRUE(OwnFitInForce()) << "as a Cancel does";
}

TEST_F(Pipeline, FittingSetsContrastAndBrightness)
{
    std::vector<std::int16_t> counts(1000);
    for (std::size_t i = 0; i < counts.size(); ++i) counts[i] = static_cast<std::int16_t>(5000 + i);
    View(40, 25, counts);
    FitContrastToPicture({});
    EXPECT_THAT(op->Boxes(), SizeIs(0));
    EXPECT_LT(Shown(0, 0), 0x101010U);
    EXPECT_GT(Shown(119, 74), 0xF0F0F0U);
}

TEST_F(Pipeline, FittingSaysWhyItCant)
{
    View(1, 1, {100});
    write::file.ImageHeader.DisplayHigh = 4095;
    FitContrastToPicture({});
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
    EXPECT_THAT(op->Boxes()[0].text, testing::HasSubstr("0 to 4095"));
    EXPECT_EQ(Contrast, 1);
}

TEST_F(Pipeline, EmptyOperationsDrawNothing)
{
    DrawColorBar();
    DrawTempScale(1);
    SetGrayScale(kLogScale);
    EXPECT_EQ(Shown(0, 0), kBackground);
    EXPECT_EQ(GrayScale, kLinearScale);
}

class PipelineAtRatioTwo : public PictureTest {
  protected:
    PipelineAtRatioTwo() : PictureTest(2.0) {}
};

TEST_F(PipelineAtRatioTwo, APictureCoversTheSameLogicalPixels)
{
    View(2, 1, {0, 16383});
    RedrawPicture();
    EXPECT_EQ(DeviceBlock(hWndMain, 3), 6);
    EXPECT_EQ(Shown(2, 0), kBlack);
    EXPECT_EQ(Shown(3, 0), kWhite);
    EXPECT_EQ(Shown(5, 2), kWhite);
    EXPECT_EQ(Shown(6, 0), kBackground);
    EXPECT_EQ(StateNumber("LastPaintRight"), 6);
}

class PipelineAtRatioOneAndAHalf : public PictureTest {
  protected:
    PipelineAtRatioOneAndAHalf() : PictureTest(1.5) {}
};

TEST_F(PipelineAtRatioOneAndAHalf, BlocksAreWholeDevicePixels)
{
    write::camera.ActiveConfig.Xzoom = 1;
    write::camera.ActiveConfig.Yzoom = 1;
    std::vector<std::int16_t> counts(30, 0);
    for (std::size_t i = 1; i < counts.size(); i += 2) counts[i] = 16383;
    View(30, 1, counts);
    RedrawPicture();
    UpdateWindow(hWndMain);
    const int block = DeviceBlock(hWndMain, 1);
    EXPECT_EQ(block, 2);  // 1.5 rounded
    DeviceBitmap screen;
    ASSERT_TRUE(CaptureWindowPixels(hWndMain, true, screen));
    for (int x = 0; x < 30 * block; ++x) {
        EXPECT_EQ(screen.pixels[static_cast<std::size_t>(x)] & 0xFFFFFF, (x / block) % 2 ? kWhite : kBlack) << x;
    }
    EXPECT_EQ(screen.pixels[static_cast<std::size_t>(30 * block)] & 0xFFFFFF, kBackground);
    EXPECT_EQ(StateNumber("LastPaintRight"), 40);  // 60 device pixels
}

}  // namespace
}  // namespace kelvo
