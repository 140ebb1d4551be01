// The dispatcher's timers and help keys, with a stored frame in the place of the camera's.
#include "shell/main_window.h"

#include "display/display_pipeline.h"
#include "imagefile/header.h"
#include "platform/clock.h"
#include "platform/faults.h"
#include "platform/front.h"
#include "platform/pointer.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "resources/menu.h"
#include "shell/shutdown.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows_write.h"
#include "support/picture_fixture.h"
#include "ui/status.h"
#include "video/image_cursor.h"
#include "video/image_cursor_write.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QWidget>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t kCursorTimerId = 1;
constexpr std::uint32_t kLiveTimerId = 3;

class MainWindow : public PictureTest {
  protected:
    void SetUp() override { View(8, 6, std::vector<std::int16_t>(48, 100)); }
    static void Expire(std::uint32_t timer)
    {
        SetTimer(hWndMain, timer, 0);
        MainWndProc(hWndMain, WM_TIMER, timer, 0);
    }
    std::vector<std::string> StatusTexts() const { return op->Texts("status", "text"); }
};

TEST_F(MainWindow, TheLiveTimerDrawsAStoredFrameOnceAndRests)
{
    Expire(kLiveTimerId);
    EXPECT_EQ(LiveFrame.size(), 48U);
    EXPECT_FALSE(TimerIsSet(hWndMain, kLiveTimerId));
}

TEST_F(MainWindow, TheLiveTimerDoesNothingWhileTheDisplayIsOff)
{
    write::frames.DisplayEnabled = 0;
    write::frames.LiveVideo = 1;
    Expire(kLiveTimerId);
    EXPECT_THAT(LiveFrame, IsEmpty());
    EXPECT_FALSE(TimerIsSet(hWndMain, kLiveTimerId)) << "it isn't set again";
    write::frames.LiveVideo = 0;
    write::frames.DisplayEnabled = 1;
}

TEST_F(MainWindow, WithNeitherCameraNorFileTheLiveTimerDoesNothing)
{
    write::frames.ViewingFile = 0;
    Expire(kLiveTimerId);
    EXPECT_THAT(LiveFrame, IsEmpty());
    EXPECT_FALSE(TimerIsSet(hWndMain, kLiveTimerId));
}

TEST_F(MainWindow, TheRateIsShownAfterAHundredAndOneFrames)
{
    write::frames.LiveVideo = 1;
    for (int frame = 0; frame < 100; ++frame) {
        Expire(kLiveTimerId);
        ASSERT_TRUE(TimerIsSet(hWndMain, kLiveTimerId));
        DelayMs(10);
    }
    EXPECT_THAT(StatusTexts(), IsEmpty());
    Expire(kLiveTimerId);  // 101 frames, 1000 ms after the first
    EXPECT_THAT(StatusTexts(), ElementsAre("  Displaying at 101 Hz"));

    // The count starts anew: again 101 frames, 2000 ms.
    for (int frame = 0; frame < 100; ++frame) {
        Expire(kLiveTimerId);
        DelayMs(20);
    }
    EXPECT_EQ(StatusTexts().size(), 1U);
    Expire(kLiveTimerId);
    EXPECT_THAT(StatusTexts(), ElementsAre("  Displaying at 101 Hz", "  Displaying at 50 Hz"));
    write::frames.LiveVideo = 0;
}

TEST_F(MainWindow, AFrozenFrameStartsTheCountAnew)
{
    write::frames.LiveVideo = 1;
    for (int frame = 0; frame < 100; ++frame) Expire(kLiveTimerId);
    write::frames.LiveVideo = 0;
    Expire(kLiveTimerId);
    write::frames.LiveVideo = 1;
    for (int frame = 0; frame < 100; ++frame) Expire(kLiveTimerId);
    EXPECT_THAT(StatusTexts(), IsEmpty());
    write::frames.LiveVideo = 0;
}

TEST_F(MainWindow, ALiveFrameThatFailsFreezes)
{
    write::frames.ImageBuffer.clear();
    write::frames.CameraOn = 1;
    write::frames.LiveVideo = 1;
    Expire(kLiveTimerId);
    EXPECT_EQ(LiveVideo, 0);
    EXPECT_FALSE(TimerIsSet(hWndMain, kLiveTimerId));
    write::frames.CameraOn = 0;
}

TEST_F(MainWindow, TheCursorTimerEndsWithLiveVideo)
{
    write::frames.ImageCursorOn = 1;
    Expire(kCursorTimerId);
    EXPECT_THAT(StatusTexts(), IsEmpty());
    EXPECT_FALSE(TimerIsSet(hWndMain, kCursorTimerId));

    write::frames.LiveVideo = 1;
    Expire(kCursorTimerId);
    EXPECT_EQ(StatusTexts().size(), 1U);
    EXPECT_TRUE(TimerIsSet(hWndMain, kCursorTimerId));

    write::frames.ImageCursorOn = 0;
    Expire(kCursorTimerId);
    EXPECT_EQ(StatusTexts().size(), 1U);
    EXPECT_FALSE(TimerIsSet(hWndMain, kCursorTimerId));
    write::frames.LiveVideo = 0;
}

TEST_F(MainWindow, ATimerOfNobodyIsStopped)
{
    Expire(77);
    EXPECT_FALSE(TimerIsSet(hWndMain, 77));
}

TEST_F(MainWindow, PointerMotionWithoutAModeIsNobodysBusiness)
{
    MainWndProc(hWndMain, WM_MOUSEMOVE, 0, 0);
    EXPECT_THAT(StatusTexts(), IsEmpty());
    EXPECT_FALSE(TimerIsSet(hWndMain, kCursorTimerId));
}

TEST_F(MainWindow, PointerMotionReadsUnderTheCursorAndSetsItsTimer)
{
    write::frames.ImageCursorOn = 1;
    EXPECT_EQ(MainWndProc(hWndMain, WM_MOUSEMOVE, 0, 0), 0);
    EXPECT_EQ(StatusTexts().size(), 1U);
    EXPECT_TRUE(TimerIsSet(hWndMain, kCursorTimerId));
    write::frames.ImageCursorOn = 0;
}

TEST_F(MainWindow, TheRightButtonIsTheTrackball)
{
    MainWndProc(hWndMain, WM_RBUTTONDOWN, 0, 0);
    EXPECT_EQ(TrackballMode, 1);
    MainWndProc(hWndMain, WM_RBUTTONDOWN, 0, 0);
    EXPECT_EQ(TrackballMode, 0);
}

TEST_F(MainWindow, ACommandOfAControlIsIgnored)
{
    EXPECT_EQ(MainWndProc(hWndMain, WM_COMMAND, 133, 1), 0);
    EXPECT_THAT(op->Boxes(), IsEmpty());
    MainWndProc(hWndMain, WM_COMMAND, 133, 0);
    EXPECT_EQ(op->Boxes().size(), 1U);
}

TEST_F(MainWindow, CreationForgetsTheSequence)
{
    write::frames.LoadName = "old.seq";
    write::windows.TextHeight = 0;
    MainWndProc(hWndMain, WM_CREATE, 0, 0);
    EXPECT_EQ(SequencePath, "");
    EXPECT_GT(TextHeight, 0);
}

TEST_F(MainWindow, TheViewFollowsTheWindowsSize)
{
    MainWndProc(hWndMain, WM_SIZE, 0, MakeLong(900, 700));
    EXPECT_EQ(ClientWidth, 900);
    EXPECT_EQ(ClientHeight, 700);
    EXPECT_EQ(ViewWidth, 900);
    EXPECT_EQ(ViewHeight, 640);
}

TEST_F(MainWindow, ComingBackFromAnotherProgramSetsTheCursorsAgain)
{
    write::trackball.TrackballMode = 0;
    write::frames.ImageCursorOn = 1;
    const std::size_t before = Commands().size();
    EXPECT_EQ(MainWndProc(hWndMain, WM_SETFOCUS, 0, 0), 0);
    const std::vector<int> sent(Commands().begin() + static_cast<std::ptrdiff_t>(before), Commands().end());
    EXPECT_THAT(sent, ElementsAre(151, 151));
    EXPECT_EQ(TrackballMode, 0);
    EXPECT_TRUE(PointerIsClipped());
    EXPECT_EQ(IniKey("Display", "Contrast"), "1");
    EXPECT_EQ(IniKey("Display", "Brightness"), "1000");
    write::frames.ImageCursorOn = 0;
}

TEST_F(MainWindow, TheFocusOfAnOwnWindowChangesNothing)
{
    write::frames.ImageCursorOn = 1;
    const std::size_t before = Commands().size();
    MainWndProc(hWndMain, WM_SETFOCUS, reinterpret_cast<WPARAM>(hWndMain), 0);
    EXPECT_EQ(Commands().size(), before);
    EXPECT_EQ(IniKey("Display", "Contrast"), "missing");
    write::frames.ImageCursorOn = 0;
}

TEST_F(MainWindow, LosingTheFocusToAnotherProgramReleasesThePointer)
{
    ClipPointer({0, 0, 100, 100});
    SetPointer(Pointer::kCross);
    MainWndProc(hWndMain, WM_KILLFOCUS, reinterpret_cast<WPARAM>(hWndMain), 0);
    EXPECT_TRUE(PointerIsClipped()) << "a window of our own has it";
    EXPECT_EQ(CurrentPointer(), Pointer::kCross);
    MainWndProc(hWndMain, WM_KILLFOCUS, 0, 0);
    EXPECT_FALSE(PointerIsClipped());
    EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
}

TEST_F(MainWindow, ButtonsOfThePointerAreCommands)
{
    const auto sentBy = [](std::uint32_t message) {
        const std::size_t before = Commands().size();
        MainWndProc(hWndMain, message, 0, 0);
        QCoreApplication::processEvents();
        return std::vector<int>(Commands().begin() + static_cast<std::ptrdiff_t>(before), Commands().end());
    };
    EXPECT_THAT(sentBy(WM_LBUTTONDOWN), ElementsAre(151));
    EXPECT_THAT(sentBy(WM_LBUTTONDBLCLK), ElementsAre(106, 151));
    EXPECT_THAT(sentBy(WM_MBUTTONDOWN), IsEmpty());
}

TEST_F(MainWindow, WhereThePointerComesBackIsNoMotionOfTheTrackball)
{
    SetFault("fixed pointer", true);
    TrackballToggle();
    const auto moveTo = [](Point at) {
        OperateMouse(at, 0);
        MainWndProc(hWndMain, WM_MOUSEMOVE, 0, 0);
        return Brightness;
    };
    write::display.Brightness = 500;
    EXPECT_EQ(moveTo({300, 300}), 500);
    EXPECT_EQ(moveTo({320, 300}), 504);
    MainWndProc(hWndMain, WM_MOUSELEAVE, 0, 0);
    EXPECT_EQ(moveTo({600, 300}), 504);
    EXPECT_EQ(moveTo({580, 300}), 500);
    TrackballToggle();
}

TEST_F(MainWindow, TheWheelZoomsByItsNotchesAndLeavesThePan)
{
    const auto zoomAfter = [](int notches) {
        MainWndProc(hWndMain, WM_MOUSEWHEEL, static_cast<WPARAM>(MakeLong(0, notches)), 0);
        return Point{Xzoom, Yzoom};
    };
    write::camera.ActiveConfig.Yzoom = 4;
    EXPECT_EQ(zoomAfter(2), (Point{5, 6}));
    EXPECT_EQ(zoomAfter(-1), (Point{4, 5}));
    EXPECT_EQ(zoomAfter(40), (Point{15, 16}));
    EXPECT_EQ(zoomAfter(-40), (Point{1, 2}));
    EXPECT_THAT(Commands(), IsEmpty());
    EXPECT_EQ(CameraKey("Xpan"), "missing") << "nothing is written";
}

// Blocks of zoom x ratio device pixels are rounded: the pixel under the pointer stays all the same.
class WheelAtAnyRatio : public PictureTest, public testing::WithParamInterface<double> {
  protected:
    WheelAtAnyRatio() : PictureTest(GetParam()) { View(200, 150, std::vector<std::int16_t>(200 * 150, 100)); }
};

TEST_P(WheelAtAnyRatio, ZoomsAboutThePixelUnderThePointer)
{
    RedrawPicture();
    for (const Point at : {Point{30, 40}, {299, 222}, {400, 333}}) {
        for (const int notches : {1, 1, 1, -2, 3, -1, -3, 5, -4}) {
            const Point view = ViewPosition();
            const Point before{at.x + view.x, at.y + view.y};
            const Point pixel = PixelUnder(before);
            MainWndProc(hWndMain, WM_MOUSEWHEEL, static_cast<WPARAM>(MakeLong(0, notches)),
                        static_cast<LPARAM>(MakeLong(before.x, before.y)));
            const Point now = ViewPosition();
            EXPECT_EQ(PixelUnder({at.x + now.x, at.y + now.y}), pixel) << "zoom " << Xzoom;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Ratios, WheelAtAnyRatio, testing::Values(1.0, 1.25, 1.5, 2.0));

TEST_F(MainWindow, TheTitleTellsWhatIsOnView)
{
    write::windows.ViewFilePath = "/data/run7.seq";
    StatusString(1, 0);
    EXPECT_EQ(GetWindowText(hWndMain), "Kelvo - run7");
    write::frames.ViewingFile = 0;
    StatusString(120, 0);
    EXPECT_EQ(GetWindowText(hWndMain), "Kelvo - Frozen");
    write::frames.LiveVideo = 1;
    StatusString(1, 0);
    EXPECT_EQ(GetWindowText(hWndMain), "Kelvo");
    StatusMessage("the title stays", 0);
    EXPECT_EQ(GetWindowText(hWndMain), "Kelvo");
    StatusString(99, 0);  // there is none: box, and neither line nor title changes
    EXPECT_EQ(StatusText, "the title stays");
    EXPECT_EQ(op->Boxes().at(0).text, "String resource not available to output to Status window!");
    EXPECT_EQ(op->Boxes().at(0).caption, "Kelvo message");
    write::frames.LiveVideo = 0;
}

TEST_F(MainWindow, TheShutdownRunsOnce)
{
    write::display.Contrast = 30;
    ClipPointer({0, 0, 100, 100});
    ShutDown();
    EXPECT_EQ(IniKey("Display", "Contrast"), "30");
    EXPECT_EQ(CameraKey("Xzoom"), "3");
    EXPECT_FALSE(PointerIsClipped());
    write::display.Contrast = 40;
    MainWndProc(hWndMain, WM_DESTROY, 0, 0);
    EXPECT_EQ(IniKey("Display", "Contrast"), "30");
}

TEST_F(MainWindow, ItsEndShutsDown)
{
    write::display.Contrast = 31;
    MainWndProc(hWndMain, WM_DESTROY, 0, 0);
    EXPECT_EQ(IniKey("Display", "Contrast"), "31");
}

// What the waiting dialog's owner sends while the keys are held.
class HelpOfADialog : public MainWindow {
  protected:
    static void Strike(QEvent::Type type, Qt::Key key)
    {
        QWidget widget;
        QKeyEvent event(type, key, Qt::NoModifier);
        QCoreApplication::sendEvent(&widget, &event);
    }
    static std::vector<int> SentWhileIdle()
    {
        const std::size_t before = Commands().size();
        MainWndProc(hWndMain, WM_ENTERIDLE, 0, reinterpret_cast<LPARAM>(hWndMain));
        QCoreApplication::processEvents();
        return {Commands().begin() + static_cast<std::ptrdiff_t>(before), Commands().end()};
    }
};

TEST_F(HelpOfADialog, F1IsItsHelpButton)
{
    EXPECT_THAT(SentWhileIdle(), IsEmpty());
    Strike(QEvent::KeyPress, Qt::Key_F1);
    EXPECT_THAT(SentWhileIdle(), ElementsAre(9));
    Strike(QEvent::KeyRelease, Qt::Key_F1);
    EXPECT_THAT(SentWhileIdle(), IsEmpty());
}

TEST_F(HelpOfADialog, ShiftAndF10AskOnceUntilTheyAreUp)
{
    Strike(QEvent::KeyPress, Qt::Key_F10);
    EXPECT_THAT(SentWhileIdle(), IsEmpty()) << "without Shift";
    Strike(QEvent::KeyPress, Qt::Key_Shift);
    EXPECT_THAT(SentWhileIdle(), ElementsAre(124));
    EXPECT_THAT(SentWhileIdle(), IsEmpty()) << "still down";
    Strike(QEvent::KeyRelease, Qt::Key_F10);
    EXPECT_THAT(SentWhileIdle(), IsEmpty());
    Strike(QEvent::KeyPress, Qt::Key_F10);
    EXPECT_THAT(SentWhileIdle(), ElementsAre(124)) << "armed again";
    Strike(QEvent::KeyRelease, Qt::Key_F10);
    Strike(QEvent::KeyRelease, Qt::Key_Shift);
}

TEST(HelpContexts, FollowTheCommands)
{
    std::map<int, int> contexts = {
        {21, 512},    {22, 513},    {103, 256},   {106, 257},   {107, 258},   {108, 259},   {109, 260},   {110, 264},
        {113, 265},   {114, 266},   {115, 267},   {119, 268},   {120, 288},   {121, 289},   {122, 290},   {123, 291},
        {124, 1048},  {130, 320},   {131, 321},   {132, 322},   {133, 323},   {135, 324},   {140, 352},   {141, 353},
        {143, 354},   {144, 354},   {145, 354},   {146, 358},   {147, 358},   {149, 361},   {150, 362},   {151, 363},
        {160, 369},   {161, 370},   {162, 372},   {164, 375},   {169, 41},    {190, 769},   {191, 768},   {192, 770},
        {193, 772},   {195, 771},   {196, 773},   {2001, 2051}, {2002, 2051}, {2006, 2007}, {2007, 2008}, {2008, 2009},
        {2009, 2010}, {2040, 2005}, {2041, 2005}, {2042, 2005}, {2043, 2005}, {2044, 2005}, {2045, 2005}, {2046, 2005},
        {2050, 2050}, {2051, 2050}, {2052, 2051}, {2053, 2051}, {2054, 2051}, {2055, 2051}, {2056, 2051}, {2057, 2060},
        {2060, 2023}, {2061, 2023}, {2062, 2023}, {2070, 2014}, {2071, 1056}, {2200, 2200}, {2210, 2210}, {2211, 2210},
        {2212, 2210}, {2213, 2210}, {2220, 2220}, {2230, 2230}, {2240, 2240}, {2260, 2260}, {2251, 2250}, {2252, 2250},
        {2253, 2250}, {2270, 2270}};
    for (int script = 2300; script <= 2364; ++script) contexts[script] = 2250;  // and the line that tells of more
    for (int command = 0; command < 3000; ++command) {
        const auto expected = contexts.find(command);
        EXPECT_EQ(HelpContextOf(command), expected == contexts.end() ? 0 : expected->second) << command;
    }
}

}  // namespace
}  // namespace kelvo
