#include "platform/window.h"

#include "platform/faults.h"
#include "platform/front.h"
#include "platform/menu.h"
#include "platform/paint.h"
#include "platform/qt_window.h"
#include "platform/timers.h"
#include "window_fixture.h"

#include <QCoreApplication>
#include <QDialog>
#include <QScrollBar>
#include <QWheelEvent>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

namespace kelvo {
namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;

constexpr MenuEntry kFileMenu[] = {{MenuEntry::Kind::kTop, 0, "&File"}, {MenuEntry::Kind::kItem, 107, "&Load"}};

std::vector<std::uint32_t> Numbers()
{
    std::vector<std::uint32_t> numbers;
    for (const SeenMessage& seen : seenMessages) numbers.push_back(seen.message);
    return numbers;
}

TEST(MainWindow, ComesToTheFrontFromAnIcon)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    QMainWindow& frame = *window->frame;
    QWidget other;
    other.show();
    other.activateWindow();
    frame.showMinimized();
    ASSERT_TRUE(frame.isMinimized());
    ASSERT_FALSE(frame.isActiveWindow());
    BringToFront(window, "permission");
    QCoreApplication::processEvents();
    EXPECT_FALSE(frame.isMinimized());
    EXPECT_TRUE(frame.isMaximized());
    EXPECT_TRUE(frame.isActiveWindow());
    EXPECT_EQ(qgetenv("XDG_ACTIVATION_TOKEN"), "permission");
    BringToFront(nullptr, "");
}

// A desktop puts a title bar around a dialog, and tells its size only once the dialog is shown.
TEST(DockedWindow, ItsFrameLiesInsideTheArea)
{
    CommandLine commandLine = OffscreenAt(1);
    commandLine.windowFrames = true;
    TestOperator op(commandLine);
    HWND main = ShowRecordingWindow();
    QDialog dialog(main->frame);
    dialog.resize(300, 200);
    HWND window = RegisterWindow(WindowKind::kDialog, &dialog, nullptr, main);
    const Rect area{100, 150, 900, 700};
    DockWindow(window, area);
    dialog.show();
    QCoreApplication::processEvents();
    const QRect frame = dialog.frameGeometry();
    ASSERT_GT(frame.height(), dialog.height()) << "it has a title bar";
    EXPECT_EQ(frame.top(), area.top);
    EXPECT_EQ(frame.x() + frame.width(), area.right);
    EXPECT_EQ(dialog.size(), QSize(300, 200));
    // A longer text makes it wider, to the left then.
    dialog.resize(321, 200);
    QCoreApplication::processEvents();
    EXPECT_EQ(dialog.frameGeometry().x() + dialog.frameGeometry().width(), area.right);
    EXPECT_EQ(dialog.frameGeometry().top(), area.top);
    // From now on its place is the operator's, also one beyond the area.
    dialog.move(200, 300);
    QCoreApplication::processEvents();
    EXPECT_EQ(dialog.pos(), QPoint(200, 300));
    dialog.move(700, 300);
    dialog.resize(340, 200);
    QCoreApplication::processEvents();
    EXPECT_EQ(dialog.pos(), QPoint(700, 300));
    ForgetWindow(window);
}

TEST(MainWindow, GetsCreateBeforeItsHandleIsReturned)
{
    TestOperator op;
    ASSERT_TRUE(RegisterWindowClass({.name = "KELVO", .procedure = RecordingWndProc, .icon = {}}));
    HWND window = CreateMainWindow("KELVO", "Kelvo");
    ASSERT_THAT(seenMessages, SizeIs(1));
    EXPECT_EQ(seenMessages[0].message, WM_CREATE);
    EXPECT_EQ(seenMessages[0].window, window);
    EXPECT_EQ(GetWindowText(window), "Kelvo");
    EXPECT_THAT(op.Texts("title", "text"), ElementsAre("Kelvo"));
}

TEST(MainWindow, IsRefusedWithoutItsClassOrByAFault)
{
    TestOperator op;
    EXPECT_EQ(CreateMainWindow("KELVO", "Kelvo"), nullptr);  // no class yet
    SetFault("register main class", true);
    EXPECT_FALSE(RegisterWindowClass({.name = "KELVO", .procedure = RecordingWndProc, .icon = {}}));
    SetFault("register main class", false);
    EXPECT_TRUE(RegisterWindowClass({.name = "KELVO", .procedure = RecordingWndProc, .icon = {}}));
    SetFault("create main window", true);
    EXPECT_EQ(CreateMainWindow("KELVO", "Kelvo"), nullptr);
    SetFault("create main window", false);
    EXPECT_NE(CreateMainWindow("KELVO", "Kelvo"), nullptr);
}

TEST(ChildWindow, IsRefusedByAFault)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    SetFault("register status class", true);
    EXPECT_FALSE(RegisterWindowClass({.name = "StatusWndClass", .procedure = RecordingWndProc, .icon = {}}));
    SetFault("register status class", false);
    EXPECT_TRUE(RegisterWindowClass({.name = "StatusWndClass", .procedure = RecordingWndProc, .icon = {}}));
    SetFault("create status window", true);
    EXPECT_EQ(CreateChildWindow("StatusWndClass", window, {0, 0, 100, 20}), nullptr);
    SetFault("create status window", false);
    EXPECT_NE(CreateChildWindow("StatusWndClass", window, {0, 0, 100, 20}), nullptr);
}

TEST(ChildWindow, NeedsAParent)
{
    TestOperator op;
    ASSERT_TRUE(RegisterWindowClass({.name = "StatusWndClass", .procedure = RecordingWndProc, .icon = {}}));
    EXPECT_EQ(CreateChildWindow("StatusWndClass", nullptr, {0, 0, 100, 20}), nullptr);
}

// The screen is 1280 x 1024 at every ratio.
void ExpectTrueClientSize(double scale)
{
    TestOperator op(OffscreenAt(scale));
    ASSERT_TRUE(RegisterWindowClass({.name = "KELVO", .procedure = RecordingWndProc, .icon = {}}));
    HWND window = CreateMainWindow("KELVO", "Kelvo");
    SetMenu(window, kFileMenu);
    ShowWindowMaximised(window);
    const Rect client = GetClientRect(window);
    EXPECT_EQ(ScreenRect(), (Rect{0, 0, 1280, 1024}));
    EXPECT_EQ(client.left, 0);
    EXPECT_EQ(client.top, 0);
    EXPECT_EQ(client.Width(), 1280);
    const Point top = ClientToScreen(window, {0, 0});
    EXPECT_GT(top.y, 10);  // the menu bar
    EXPECT_LT(top.y, 60);
    EXPECT_EQ(client.Height(), 1024 - top.y);
    ASSERT_FALSE(Seen(WM_SIZE).empty());
    const auto size = static_cast<WPARAM>(Seen(WM_SIZE).back().lParam);
    EXPECT_EQ(LowWord(size), client.Width());
    EXPECT_EQ(HighWord(size), client.Height());
    EXPECT_EQ(GetWindowRect(window), (Rect{0, 0, 1280, 1024}));
}

TEST(MainWindow, SpansTheScreenLessTheMenuBarWhenShown)
{
    ExpectTrueClientSize(1);
}

TEST(MainWindow, SpansTheScreenAtRatioOneAndAHalf)
{
    ExpectTrueClientSize(1.5);
}

TEST(MainWindow, SpansTheScreenAtRatioTwo)
{
    ExpectTrueClientSize(2);
}

TEST(MainWindow, DoesNotTakePostedMessagesWhileItIsShown)
{
    TestOperator op;
    ASSERT_TRUE(RegisterWindowClass({.name = "KELVO", .procedure = RecordingWndProc, .icon = {}}));
    HWND window = CreateMainWindow("KELVO", "Kelvo");
    PostMessage(window, WM_COMMAND, 169, 0);
    ShowWindowMaximised(window);
    HandlePendingEvents();
    EXPECT_TRUE(Seen(WM_COMMAND).empty());
    RunSteps(op, window);
    EXPECT_THAT(SeenCommands(), ElementsAre(169));
}

TEST(MainWindow, TellsTheFocusThatItGetsFromOutside)
{
    TestOperator op;
    ShowRecordingWindow();
    ASSERT_THAT(Seen(WM_SETFOCUS), SizeIs(1));
    EXPECT_EQ(Seen(WM_SETFOCUS)[0].wParam, 0U);
}

TEST(MainWindow, TellsThatTheFocusGoesToAnotherWindowOfOurs)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    op.Do([window] { MessageBox(window, "text", "caption"); });
    RunSteps(op, window);
    ASSERT_THAT(Seen(WM_KILLFOCUS), SizeIs(1));
    EXPECT_NE(Seen(WM_KILLFOCUS)[0].wParam, 0U);
    ASSERT_THAT(Seen(WM_SETFOCUS), SizeIs(2));
    EXPECT_NE(Seen(WM_SETFOCUS)[1].wParam, 0U);
}

TEST(Messages, SentOnesComeAtOnceAndPostedOnesInOrder)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    seenMessages.clear();
    PostMessage(window, WM_COMMAND, 1, 0);
    PostMessage(window, WM_COMMAND, 2, 0);
    SendMessage(window, WM_COMMAND, 3, 0);
    EXPECT_THAT(SeenCommands(), ElementsAre(3));
    RunSteps(op, window);
    EXPECT_THAT(SeenCommands(), ElementsAre(3, 1, 2));
}

TEST(Messages, PostedBeforeTheEndArrive)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    PostQuitMessage(7);
    PostMessage(window, WM_COMMAND, 1, 0);
    EXPECT_EQ(RunMessageLoop(window), 7);
    EXPECT_THAT(SeenCommands(), ElementsAre(1));
}

TEST(Messages, ToAWindowThatIsGoneAreDropped)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    ASSERT_TRUE(RegisterWindowClass({.name = "StatusWndClass", .procedure = RecordingWndProc, .icon = {}}));
    HWND child = CreateChildWindow("StatusWndClass", window, {0, 0, 100, 20});
    PostMessage(child, WM_COMMAND, 1, 0);
    SetTimer(child, 1, 10);
    DestroyWindow(child);
    EXPECT_FALSE(TimerIsSet(child, 1));
    EXPECT_EQ(SendMessage(child, WM_COMMAND, 2, 0), 0);
    EXPECT_EQ(GetClientRect(child), Rect{});
    SendMessage(nullptr, WM_COMMAND, 3, 0);
    PostMessage(nullptr, WM_COMMAND, 3, 0);
    RunSteps(op, window);
    EXPECT_THAT(SeenCommands(), ElementsAre());
}

TEST(MainWindow, ClosesThroughDestroyAndEndsTheLoop)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    seenMessages.clear();
    PostMessage(window, WM_CLOSE, 0, 0);
    EXPECT_EQ(RunMessageLoop(window), 0);
    EXPECT_THAT(Numbers(), ElementsAre(WM_CLOSE, WM_DESTROY));
    EXPECT_EQ(GetClientRect(window), Rect{});
}

TEST(MainWindow, DestroysItsChildrenWithIt)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    ASSERT_TRUE(RegisterWindowClass({.name = "StatusWndClass", .procedure = RecordingWndProc, .icon = {}}));
    HWND child = CreateChildWindow("StatusWndClass", window, {0, 0, 100, 20});
    seenMessages.clear();
    DestroyWindow(window);
    DestroyWindow(window);
    ASSERT_THAT(seenMessages, SizeIs(2));
    EXPECT_EQ(seenMessages[0].window, window);
    EXPECT_EQ(seenMessages[1].window, child);
}

TEST(ChildWindow, MovesInItsParentsClientArea)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    ASSERT_TRUE(RegisterWindowClass({.name = "StatusWndClass", .procedure = RecordingWndProc, .icon = {}}));
    HWND child = CreateChildWindow("StatusWndClass", window, {0, 0, 100, 20});
    MoveWindow(child, {10, 30, 210, 60});
    EXPECT_EQ(GetClientRect(child), (Rect{0, 0, 200, 30}));
    const Point corner = ClientToScreen(window, {10, 30});
    EXPECT_EQ(GetWindowRect(child), (Rect{corner.x, corner.y, corner.x + 200, corner.y + 30}));
    EXPECT_EQ(ScreenToClient(child, corner), (Point{0, 0}));
}

TEST(Painting, ComesOnceForManyInvalidations)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    RunSteps(op, window);
    seenMessages.clear();
    const Rect part{0, 0, 10, 10};
    InvalidateRect(window, &part, false);
    InvalidateRect(window, nullptr, true);
    EXPECT_TRUE(Seen(WM_PAINT).empty());
    RunSteps(op, window);
    EXPECT_THAT(Seen(WM_PAINT), SizeIs(1));
}

TEST(Painting, UpdatePaintsAtOnceWhatIsInvalidAndNothingElse)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    RunSteps(op, window);
    seenMessages.clear();
    UpdateWindow(window);
    EXPECT_TRUE(Seen(WM_PAINT).empty());
    InvalidateRect(window, nullptr, false);
    UpdateWindow(window);
    EXPECT_THAT(Seen(WM_PAINT), SizeIs(1));
}

TEST(Painting, ErasesWithTheClassBackground)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    ASSERT_TRUE(RegisterWindowClass({.name = "StatusWndClass",
                                     .procedure = RecordingWndProc,
                                     .icon = {},
                                     .systemBackground = false,
                                     .background = 0xFF0000}));  // blue
    HWND child = CreateChildWindow("StatusWndClass", window, {0, 0, 100, 20});
    EXPECT_EQ(ScreenColor({50, 10}), 0x0000FFU);
    FillSurface(child, {0, 0, 100, 20}, 0x0000FF);  // red
    EXPECT_EQ(ScreenColor({50, 10}), 0xFF0000U);
    const Rect left{0, 0, 50, 20};
    InvalidateRect(child, &left, true);
    EXPECT_EQ(ScreenColor({49, 10}), 0x0000FFU);
    EXPECT_EQ(ScreenColor({50, 10}), 0xFF0000U);
}

TEST(Mouse, ReachesTheWindowInClientCoordinates)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    seenMessages.clear();
    for (int button = 0; button <= 4; ++button) OperateMouse({300 + button, 200}, button);
    const std::pair<std::uint32_t, int> expected[] = {
        {WM_MOUSEMOVE, 300},   {WM_LBUTTONDOWN, 301}, {WM_LBUTTONUP, 301},     {WM_RBUTTONDOWN, 302},
        {WM_MBUTTONDOWN, 303}, {WM_MBUTTONUP, 303},   {WM_LBUTTONDBLCLK, 304}, {WM_LBUTTONUP, 304}};
    ASSERT_THAT(seenMessages, SizeIs(std::size(expected)));
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        EXPECT_EQ(seenMessages[i].message, expected[i].first);
        EXPECT_EQ(seenMessages[i].window, window);
        EXPECT_EQ(LowWord(static_cast<WPARAM>(seenMessages[i].lParam)), expected[i].second);
        EXPECT_EQ(HighWord(static_cast<WPARAM>(seenMessages[i].lParam)), 200);
    }
}

TEST(Mouse, OverAChildIsTheChilds)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    ASSERT_TRUE(RegisterWindowClass({.name = "StatusWndClass", .procedure = RecordingWndProc, .icon = {}}));
    HWND child = CreateChildWindow("StatusWndClass", window, {100, 100, 200, 120});
    seenMessages.clear();
    OperateMouse({110, 105}, 1);
    ASSERT_THAT(Seen(WM_LBUTTONDOWN), SizeIs(1));
    EXPECT_EQ(Seen(WM_LBUTTONDOWN)[0].window, child);
    EXPECT_EQ(Seen(WM_LBUTTONDOWN)[0].lParam, static_cast<LPARAM>(MakeLong(10, 5)));
}

TEST(Mouse, DoesNotReachTheWindowBehindABox)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    op.AtNextBox([](const FrontBox&) { OperateMouse({300, 200}, 1); });
    MessageBox(window, "text", "caption");
    EXPECT_TRUE(Seen(WM_LBUTTONDOWN).empty());
}

TEST(Wheel, SendsOneMessageANotch)
{
    TestOperator op;
    ShowRecordingWindow();
    OperateMouse({300, 200}, 5);
    OperateMouse({300, 200}, 6);
    OperateMouse({300, 200}, 6);
    std::vector<int> steps;
    for (const SeenMessage& seen : Seen(WM_MOUSEWHEEL)) steps.push_back(SignedHighWord(seen.wParam));
    EXPECT_THAT(steps, ElementsAre(1, -1, -1));
}

void TurnBy(QWidget* widget, int eighths)
{
    const QPointF at(300, 200);
    QWheelEvent event(at, widget->mapToGlobal(at), QPoint(), QPoint(0, eighths), Qt::NoButton, Qt::NoModifier,
                      Qt::ScrollUpdate, false);
    QCoreApplication::sendEvent(widget, &event);
}

TEST(Wheel, AddsUpTheSmallStepsOfATouchPad)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    for (int i = 0; i < 7; ++i) TurnBy(window->widget, 40);  // 280: two notches and a third
    EXPECT_EQ(Seen(WM_MOUSEWHEEL).size(), 2U);
    TurnBy(window->widget, 80);
    EXPECT_EQ(Seen(WM_MOUSEWHEEL).size(), 3U);
    TurnBy(window->widget, -360);
    ASSERT_EQ(Seen(WM_MOUSEWHEEL).size(), 6U);
    EXPECT_EQ(SignedHighWord(Seen(WM_MOUSEWHEEL)[5].wParam), -1);
}

TEST(DockedPanel, HasTheNewWidthWhenTheSizeIsTold)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    QWidget panel(window->widget);
    panel.setFixedHeight(44);
    panel.show();
    window->dockedPanel = &panel;
    std::vector<std::pair<int, int>> widths;  // told and of the panel
    onMessage = [&](const SeenMessage& seen) {
        if (seen.message == WM_SIZE) widths.emplace_back(LowWord(static_cast<WPARAM>(seen.lParam)), panel.width());
    };
    window->frame->showNormal();
    window->frame->resize(900, 700);
    RunSteps(op, window);
    ASSERT_FALSE(widths.empty());
    EXPECT_EQ(widths.back(), std::pair(900, 900));
    for (const auto& [told, has] : widths) EXPECT_EQ(told, has);
}

TEST(Drop, HandsOverThePathsWithTheirBytes)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    const std::vector<std::string> paths = {"/tmp/a b%.img", "/tmp/\xC3\xA4\xFF.seq"};
    op.Do([paths] { EXPECT_TRUE(OperateDrop(paths)); });
    RunSteps(op, window);
    EXPECT_THAT(Seen(WM_DROPFILES), SizeIs(1));
    EXPECT_EQ(DroppedFiles(), paths);
}

TEST(Scrolling, AppearsWhereThePictureIsLargerThanItsArea)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    const Rect client = GetClientRect(window);
    SetScrollExtent(window, {client.right, client.bottom - 20, 40, 20});
    EXPECT_EQ(GetScrollOrigin(window), (Point{0, 0}));
    EXPECT_EQ(ScreenColor({client.right - 3, 200}), ScreenColor({300, 200}));  // no bar
    SetScrollExtent(window, {client.right + 100, 300, 40, 20});
    EXPECT_EQ(ScreenColor({client.right - 3, 200}), ScreenColor({300, 200}));  // only the bar below
    EXPECT_NE(ScreenColor({300, client.bottom - 25}), ScreenColor({300, 200}));
}

TEST(Scrolling, StaysInSurfaceCoordinatesForTheWindow)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    SetScrollExtent(window, {5000, 4000, 40, 20});
    seenMessages.clear();
    const std::uint32_t kGreen = 0x00FF00;
    onMessage = [=](const SeenMessage& seen) {
        if (seen.message == WM_PAINT) FillSurface(window, {600, 500, 610, 510}, kGreen);
    };
    ASSERT_TRUE(ScrollPictureTo(window, {400, 300}));
    EXPECT_EQ(GetScrollOrigin(window), (Point{400, 300}));
    EXPECT_THAT(Seen(WM_PAINT), SizeIs(1));
    EXPECT_EQ(ScreenColor({200, 200}), kGreen);
    EXPECT_EQ(ScreenColor({209, 209}), kGreen);
    EXPECT_NE(ScreenColor({210, 210}), kGreen);
    EXPECT_NE(ScreenColor({199, 200}), kGreen);

    seenMessages.clear();
    OperateMouse({200, 200}, 1);
    ASSERT_THAT(Seen(WM_LBUTTONDOWN), SizeIs(1));
    EXPECT_EQ(Seen(WM_LBUTTONDOWN)[0].lParam, static_cast<LPARAM>(MakeLong(600, 500)));
    // What lies above the picture area isn't painted over.
    FillSurface(window, {400, 300, 5000, 4000}, kGreen);
    EXPECT_NE(ScreenColor({200, 39}), kGreen);
    EXPECT_EQ(ScreenColor({200, 40}), kGreen);
}

class PaintCounter : public QObject {
  public:
    int paints = 0;
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        paints += event->type() == QEvent::Paint;
        return false;
    }
};

// Live video paints beneath the bars with every frame; drawing them costs more than the picture.
TEST(Scrolling, APictureBeneathDoesntDrawTheBarsAgain)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    const Rect client = GetClientRect(window);
    SetScrollExtent(window, {5000, 4000, 40, 20});
    QCoreApplication::processEvents();
    PaintCounter counter;
    const QList<QScrollBar*> bars = window->widget->findChildren<QScrollBar*>();
    ASSERT_EQ(bars.size(), 2);
    for (QScrollBar* bar : bars) bar->installEventFilter(&counter);

    const std::uint8_t pixel = 0;
    const std::uint32_t color = 0x00FF0000;
    ASSERT_TRUE(StretchPixels(window, {0, 40, 5000, 4000}, {&pixel, 1, 1, 1, &color}));
    QCoreApplication::processEvents();
    EXPECT_EQ(counter.paints, 0);
    const std::uint32_t onBar = ScreenColor({client.right - 3, 200});
    EXPECT_NE(onBar, ScreenColor({200, 200}));  // the picture is there, and not on the bar

    ASSERT_TRUE(ScrollPictureTo(window, {400, 300}));
    QCoreApplication::processEvents();
    EXPECT_GT(counter.paints, 0);
}

TEST(Scrolling, EndsWhenThePictureShrinks)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    SetScrollExtent(window, {5000, 4000, 40, 20});
    ASSERT_TRUE(ScrollPictureTo(window, {400, 300}));
    seenMessages.clear();
    SetScrollExtent(window, {500, 400, 40, 20});
    EXPECT_EQ(GetScrollOrigin(window), (Point{0, 0}));
    UpdateWindow(window);
    EXPECT_THAT(Seen(WM_PAINT), SizeIs(1));  // the picture is where it was no longer
}

TEST(Scrolling, APictureMovesFreelyAndSomeOfItStays)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    const Rect client = GetClientRect(window);
    SetScrollExtent(window, {500, 400, 40, 20});
    ASSERT_TRUE(ScrollPictureTo(window, {-200, -100}));
    EXPECT_EQ(GetScrollOrigin(window), (Point{-200, -100}));
    EXPECT_EQ(GetPictureArea(window), (Rect{0, 40, client.right, client.bottom - 20})) << "all is seen: no bar";
    ASSERT_TRUE(ScrollPictureTo(window, {50, 0}));
    EXPECT_LT(GetPictureArea(window).bottom, client.bottom - 20) << "some is out of sight";
    ASSERT_TRUE(ScrollPictureTo(window, {9000, -9000}));
    EXPECT_EQ(GetScrollOrigin(window).x, 500 - 32);
    EXPECT_EQ(GetScrollOrigin(window).y, 40 + 32 - GetPictureArea(window).bottom);
    EXPECT_EQ(RestingOrigin(window, GetScrollOrigin(window)).x, 0);
}

TEST(Scrolling, APictureInTheMiddleStaysThere)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    const Rect client = GetClientRect(window);
    SetScrollExtent(window, {500, 400, 40, 20});
    ASSERT_TRUE(CentrePicture(window));
    EXPECT_EQ(GetScrollOrigin(window), (Point{(500 - client.right) / 2, (400 - client.bottom + 20) / 2}));
    SetScrollExtent(window, {700, 500, 40, 20});
    EXPECT_EQ(GetScrollOrigin(window), (Point{(700 - client.right) / 2, (500 - client.bottom + 20) / 2}));
    SetScrollExtent(window, {700, 500, 40, 20, 100});
    EXPECT_EQ(GetScrollOrigin(window).x, (800 - client.right) / 2) << "clear of what covers the right";
}

TEST(Theme, ChangePaintsEachWindowAnew)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    RunSteps(op, window);
    EXPECT_FALSE(DarkTheme());
    const std::uint32_t light = ScreenColor({300, 200});
    seenMessages.clear();
    ChangeTheme(Theme::kDark);
    RunSteps(op, window);
    EXPECT_TRUE(DarkTheme());
    EXPECT_THAT(Seen(WM_PAINT), SizeIs(1));
    EXPECT_LT(ScreenColor({300, 200}) & 0xFF, light & 0xFF);
}

}  // namespace
}  // namespace kelvo
