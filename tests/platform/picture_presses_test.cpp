// A modal dialog that takes presses on the picture: those come to it, and all else that is done to the main window goes
// nowhere.
#include "platform/dialog_fixture.h"
#include "platform/menu.h"
#include "platform/qt_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <QWindow>

#include <optional>

namespace kelvo {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kDialog = "DISPLAY";

std::vector<SeenMessage> Presses(const std::vector<SeenMessage>& seen)
{
    std::vector<SeenMessage> presses;
    for (const SeenMessage& each : seen) {
        if (each.message == WM_LBUTTONDOWN) presses.push_back(each);
    }
    return presses;
}

class PicturePresses : public DialogFixture {
  protected:
    // Runs the dialog; the work is done while it is in front.
    void InFront(bool takesPresses, const std::function<void()>& work)
    {
        dialogRule = [takesPresses](HWND dialog, const SeenMessage& seen) -> LRESULT {
            if (seen.message == WM_INITDIALOG && takesPresses) TakePicturePresses(dialog);
            return 0;
        };
        Then([this, &work] {
            dialogSaw.clear();
            mainSaw.clear();
            work();
            mainDuring_ = mainSaw;
            EndDialog(DialogInFront(), 7);
        });
        EXPECT_EQ(DialogBox(kDialog, mainWindow, DialogTestProc), 7);
    }
    // As the window system brings it: to the window, not to a widget in it.
    void SendToWindow(QEvent& event) { QCoreApplication::sendEvent(mainWindow->frame->windowHandle(), &event); }
    void PressInWindow(Point client, Qt::MouseButton button)
    {
        const QPointF at(mainWindow->widget->mapTo(mainWindow->frame, QPoint(client.x, client.y)));
        QMouseEvent press(QEvent::MouseButtonPress, at, at, button, button, Qt::NoModifier);
        SendToWindow(press);
    }
    // Input that the main window heard of: what it paints and where the focus is doesn't count.
    std::vector<std::uint32_t> MainHeard() const
    {
        std::vector<std::uint32_t> heard;
        for (const SeenMessage& each : mainDuring_) {
            const bool isInput = each.message == WM_COMMAND || each.message == WM_CLOSE || each.message == WM_KEYDOWN ||
                                 each.message == WM_DROPFILES ||
                                 (each.message >= WM_MOUSEMOVE && each.message <= WM_MOUSEWHEEL);
            if (isInput) heard.push_back(each.message);
        }
        return heard;
    }

  private:
    std::vector<SeenMessage> mainDuring_;
};

TEST_F(PicturePresses, ComeToTheDialogThatTakesThem)
{
    InFront(true, [this] { PressInWindow({123, 45}, Qt::LeftButton); });
    EXPECT_THAT(Presses(dialogSaw), ElementsAre(SeenMessage{WM_LBUTTONDOWN, 0, MakeLong(123, 45)}));
    EXPECT_THAT(MainHeard(), IsEmpty());
}

TEST_F(PicturePresses, ComeToItByTheHandsOfAScriptToo)
{
    InFront(true, [] { OperateMouse({123, 45}, 1); });
    EXPECT_THAT(Presses(dialogSaw), ElementsAre(SeenMessage{WM_LBUTTONDOWN, 0, MakeLong(123, 45)}));
    EXPECT_THAT(MainHeard(), IsEmpty());
}

TEST_F(PicturePresses, AreCountedInTheSurfaceThatScrolls)
{
    SetScrollExtent(mainWindow, {.right = 4000, .bottom = 3000, .topInset = 20, .bottomInset = 30});
    ScrollPictureTo(mainWindow, {700, 300});
    InFront(true, [this] {
        PressInWindow({123, 45}, Qt::LeftButton);
        PressInWindow({123, 19}, Qt::LeftButton);  // above the picture's area
    });
    EXPECT_THAT(Presses(dialogSaw), ElementsAre(SeenMessage{WM_LBUTTONDOWN, 0, MakeLong(823, 345)}));
}

TEST_F(PicturePresses, ComeToNoOtherDialog)
{
    InFront(false, [] { OperateMouse({123, 45}, 1); });
    EXPECT_THAT(Presses(dialogSaw), IsEmpty());
    EXPECT_THAT(MainHeard(), IsEmpty());
}

TEST_F(PicturePresses, NothingElseComesToTheMainWindow)
{
    InFront(true, [this] {
        PressInWindow({123, 45}, Qt::RightButton);
        PressInWindow({123, 45}, Qt::MiddleButton);
        for (const int deed : {0, 2, 3, 4, 5, 6, 7, 8}) OperateMouse({123, 45}, deed);
        QWheelEvent wheel(QPointF(123, 145), QPointF(123, 145), {}, {0, 120}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        SendToWindow(wheel);
        QKeyEvent key(QEvent::KeyPress, Qt::Key_Up, Qt::NoModifier);
        SendToWindow(key);
        QCoreApplication::sendEvent(mainWindow->widget, &key);
        QCloseEvent close;
        SendToWindow(close);
        EXPECT_FALSE(close.isAccepted());
        QCloseEvent closeFrame;
        QCoreApplication::sendEvent(mainWindow->frame, &closeFrame);
        EXPECT_FALSE(closeFrame.isAccepted());
        EXPECT_FALSE(OperateDrop({"/some/file"}));
    });
    EXPECT_THAT(MainHeard(), IsEmpty());
    EXPECT_THAT(Presses(dialogSaw), IsEmpty());
}

TEST_F(PicturePresses, ComeToTheMainWindowAgainAfterwards)
{
    InFront(true, [] {});
    mainSaw.clear();
    OperateMouse({123, 45}, 1);
    EXPECT_THAT(Presses(mainSaw), ElementsAre(SeenMessage{WM_LBUTTONDOWN, 0, MakeLong(123, 45)}));
}

TEST_F(PicturePresses, AreNotForTheDialogBehindABox)
{
    InFront(true, [this] {
        op->AtNextBox([this](const FrontBox& /*box*/) {
            PressInWindow({123, 45}, Qt::LeftButton);
            OperateMouse({123, 45}, 1);
        });
        MessageBox(DialogInFront(), "text", "caption");
    });
    EXPECT_THAT(Presses(dialogSaw), IsEmpty());
    EXPECT_THAT(MainHeard(), IsEmpty());
}

TEST_F(PicturePresses, LeaveTheKeyboardWithTheDialog)
{
    InFront(true, [this] {
        mainWindow->frame->activateWindow();
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
        EXPECT_EQ(QApplication::activeWindow(), DialogInFront()->widget);
    });
}

}  // namespace

}  // namespace kelvo
