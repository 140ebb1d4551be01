// The control panel, worked as an operator works it.
#include "shell/panel.h"

#include "display/display_pipeline.h"
#include "platform/dialog.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "resources/ids.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "support/picture_fixture.h"
#include "ui/status.h"
#include "video/video.h"

#include <QApplication>
#include <QCheckBox>
#include <QVariant>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Panel : public PictureTest {
  protected:
    void SetUp() override
    {
        write::display.Contrast = 30;
        write::display.Brightness = 600;
        write::display.Xpan = 2;
        write::display.Ypan = -3;
        DockPanel();
    }
    static void ViewPicture() { View(32, 24, std::vector<std::int16_t>(32 * 24, 100)); }
    static QCheckBox* DisplayBox()
    {
        for (QWidget* const widget : QApplication::allWidgets()) {
            if (widget->property("controlId").toInt() == 1013) return qobject_cast<QCheckBox*>(widget);
        }
        return nullptr;
    }
    static void Scroll(ScrollCode code)
    {
        SendMessage(hDlgPanel, WM_VSCROLL, MakeLong(static_cast<int>(code), 0), 310);
    }
};

TEST_F(Panel, OpensWithWhatIsInForce)
{
    EXPECT_EQ(GetScrollPos(hDlgPanel, 310), 3);
    EXPECT_EQ(GetScrollMin(hDlgPanel, 310), 1);
    EXPECT_EQ(GetScrollMax(hDlgPanel, 310), 16);
    EXPECT_EQ(GetDlgItemText(hDlgPanel, 311), "3");
    EXPECT_EQ(GetDlgItemText(hDlgPanel, 313), "2,-3");
    EXPECT_EQ(GetDlgItemText(hDlgPanel, 316), "600");
    EXPECT_EQ(GetDlgItemText(hDlgPanel, 317), "30");
    EXPECT_EQ(DisplayLut.size(), 65535U);
    EXPECT_EQ(ListCount(hDlgPanel, kUnitList), 2);
    EXPECT_TRUE(IsDlgButtonChecked(hDlgPanel, 1013));
    EXPECT_FALSE(OperateCheck(hDlgPanel, 1014, true));  // hidden
    EXPECT_FALSE(OperateCheck(hDlgPanel, 1015, true));
}

TEST_F(Panel, ItsButtonsSendTheirCommands)
{
    for (const int id : {106, 107, 114, 117, 121, 160, 1016}) EXPECT_TRUE(OperatePress(hDlgPanel, id)) << id;
    EXPECT_THAT(Commands(), ElementsAre(106, 107, 114, 117, 121, 160, 112));
}

// By the controls' numbers; the arrows of a button with directions and the halves of the zoom are a stop each.
TEST_F(Panel, TheTabKeyReachesEveryControlAndComesBackToThePicture)
{
    SetFocusTo(hWndMain);
    QWidget* const picture = QApplication::focusWidget();
    ASSERT_NE(picture, nullptr);
    std::vector<int> stops;
    while (stops.size() < 40) {
        OperateKey("Tab");
        const QWidget* const focus = QApplication::focusWidget();
        if (focus == picture) break;
        const QVariant own = focus->property("controlId");
        stops.push_back((own.isValid() ? own : focus->parentWidget()->property("controlId")).toInt());
    }
    EXPECT_THAT(stops, ElementsAre(107, 106, 114, 121, 117, 160, 310, 310, 312, 312, 312, 312, 315, 315, 315, 315, 1256,
                                   1013, 21090, 1016));
}

TEST_F(Panel, SpaceOnDisplayTurnsItOffAndTheStatusLineSaysSo)
{
    auto* const box = DisplayBox();
    ASSERT_NE(box, nullptr);
    box->setFocus(Qt::TabFocusReason);
    OperateKey("Space");
    EXPECT_EQ(DisplayEnabled, 0);
    EXPECT_EQ(StatusText, "Display off");
    OperateKey("Space");
    EXPECT_EQ(DisplayEnabled, 1);
    EXPECT_EQ(StatusText, " Use Alt + underlined menu item or trackball to select menu item");
}

TEST_F(Panel, AnyNotificationOfAButtonCounts)
{
    SendMessage(hDlgPanel, WM_COMMAND, MakeLong(107, 5), 1);
    EXPECT_THAT(Commands(), ElementsAre(107));
}

TEST_F(Panel, ThePanButtonMovesBySixteenths)
{
    ViewPicture();
    // 32 x 24: two columns, one row.
    write::display.Xpan = write::display.Ypan = 0;
    OperatePress(hDlgPanel, 312, kDirectionRight);
    EXPECT_EQ(Xpan, 2);
    OperatePress(hDlgPanel, 312, kDirectionLeft);
    OperatePress(hDlgPanel, 312, kDirectionLeft);
    EXPECT_EQ(Xpan, -2);
    OperatePress(hDlgPanel, 312, kDirectionUp);
    EXPECT_EQ(Ypan, -1);
    OperatePress(hDlgPanel, 312, kDirectionDown);
    EXPECT_EQ(Ypan, 0);
    EXPECT_EQ(GetDlgItemText(hDlgPanel, 313), "-2,0");
}

TEST_F(Panel, TheLevelButtonMovesContrastByOneAndBrightnessByTen)
{
    OperatePress(hDlgPanel, 315, kDirectionUp);
    EXPECT_EQ(Contrast, 31);
    OperatePress(hDlgPanel, 315, kDirectionDown);
    OperatePress(hDlgPanel, 315, kDirectionDown);
    EXPECT_EQ(Contrast, 29);
    OperatePress(hDlgPanel, 315, kDirectionLeft);
    EXPECT_EQ(Brightness, 590);
    OperatePress(hDlgPanel, 315, kDirectionRight);
    OperatePress(hDlgPanel, 315, kDirectionRight);
    EXPECT_EQ(Brightness, 610);
    EXPECT_EQ(GetDlgItemText(hDlgPanel, 316), "610");
    EXPECT_EQ(GetDlgItemText(hDlgPanel, 317), "29");
}

TEST_F(Panel, TheLevelsEndAtTheirLimits)
{
    struct Row {
        int direction, contrast, brightness, newContrast, newBrightness;
    };
    for (const Row row : {Row{kDirectionUp, 100, 500, 100, 500},
                          {kDirectionDown, 1, 500, 1, 500},
                          {kDirectionLeft, 50, 1, 50, 1},
                          {kDirectionLeft, 50, 8, 50, 1},
                          {kDirectionRight, 50, 1000, 50, 1000},
                          {kDirectionRight, 50, 995, 50, 1000}}) {
        write::display.Contrast = row.contrast;
        write::display.Brightness = row.brightness;
        OperatePress(hDlgPanel, 315, row.direction);
        EXPECT_EQ(Contrast, row.newContrast);
        EXPECT_EQ(Brightness, row.newBrightness);
    }
}

TEST_F(Panel, AtALimitTheTableIsNotMadeAgain)
{
    write::display.Contrast = 100;
    write::display.DisplayLut.assign(DisplayLut.size(), 7);
    OperatePress(hDlgPanel, 315, kDirectionUp);
    EXPECT_EQ(DisplayLut[16383], 7);
}

TEST_F(Panel, TheZoomBarStepsTheZoom)
{
    ViewPicture();
    Scroll(ScrollCode::kLineUp);
    EXPECT_EQ(Xzoom, 4);
    EXPECT_EQ(Yzoom, 4);
    EXPECT_EQ(GetScrollPos(hDlgPanel, 310), 4);
    EXPECT_EQ(GetDlgItemText(hDlgPanel, 311), "4");
    Scroll(ScrollCode::kLineDown);
    Scroll(ScrollCode::kLineDown);
    EXPECT_EQ(Xzoom, 2);
    EXPECT_EQ(GetDlgItemText(hDlgPanel, 311), "2");
}

TEST_F(Panel, TheZoomBarShowsTheHorizontalZoomAndTheOtherFollows)
{
    ViewPicture();
    write::camera.ActiveConfig.Yzoom = 5;
    Scroll(ScrollCode::kLineUp);
    EXPECT_EQ(Xzoom, 4);
    EXPECT_EQ(Yzoom, 6);
    EXPECT_EQ(GetDlgItemText(hDlgPanel, 311), "4");
}

TEST_F(Panel, TheZoomBarEndsAtOneAndSixteen)
{
    ViewPicture();
    SetDisplayGeometry(0, 0, 16, 16, 0, 0);
    Scroll(ScrollCode::kLineUp);
    EXPECT_EQ(Xzoom, 16);
    SetDisplayGeometry(0, 0, 1, 1, 0, 0);
    Scroll(ScrollCode::kLineDown);
    EXPECT_EQ(Xzoom, 1);
}

TEST_F(Panel, ARefusedZoomLeavesTheBarBesideItAndFindsBack)
{
    ViewPicture();
    SetDisplayGeometry(0, 0, 3, 16, 0, 0);
    Scroll(ScrollCode::kLineUp);  // the other axis can't follow
    EXPECT_EQ(Xzoom, 3);
    EXPECT_EQ(GetScrollPos(hDlgPanel, 310), 4);
    Scroll(ScrollCode::kLineDown);
    EXPECT_EQ(Xzoom, 3);
    EXPECT_EQ(Yzoom, 16);
    EXPECT_EQ(GetScrollPos(hDlgPanel, 310), 3);
    EXPECT_EQ(GetDlgItemText(hDlgPanel, 311), "3");
}

TEST_F(Panel, OtherMovesOfTheZoomBarAreIgnored)
{
    ViewPicture();
    for (const ScrollCode code : {ScrollCode::kPageUp, ScrollCode::kPageDown, ScrollCode::kThumbTrack, ScrollCode::kTop,
                                  ScrollCode::kBottom, ScrollCode::kEnd}) {
        Scroll(code);
        EXPECT_EQ(Xzoom, 3);
    }
}

TEST_F(Panel, TheDisplayBoxStopsAndRestartsTheLiveRefresh)
{
    KillTimer(hWndMain, 3);
    ASSERT_TRUE(OperateCheck(hDlgPanel, 1013, false));
    EXPECT_EQ(DisplayEnabled, 0);
    EXPECT_FALSE(TimerIsSet(hWndMain, 3));
    ASSERT_TRUE(OperateCheck(hDlgPanel, 1013, true));
    EXPECT_EQ(DisplayEnabled, 1);
    EXPECT_TRUE(TimerIsSet(hWndMain, 3));
}

TEST_F(Panel, OtherCommandsAreNotItsOwn)
{
    EXPECT_EQ(PanelProc(hDlgPanel, WM_COMMAND, MakeLong(311, 0), 1), 0);
    EXPECT_EQ(PanelProc(hDlgPanel, WM_VSCROLL, 0, 311), 0);
    EXPECT_EQ(PanelProc(hDlgPanel, WM_TIMER, 1, 0), 0);
    EXPECT_THAT(Commands(), IsEmpty());
}

}  // namespace
}  // namespace kelvo
