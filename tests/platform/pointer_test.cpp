#include "platform/pointer.h"

#include "platform/faults.h"
#include "platform/front.h"
#include "platform/qt_window.h"
#include "window_fixture.h"

#include <QApplication>

#include <gtest/gtest.h>

namespace kelvo {
namespace {

TEST(Pointer, IsWhereItWasPut)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    SetPointerPosition({320, 240});
    EXPECT_EQ(GetPointerPosition(), (Point{320, 240}));
    OperateMouse({100, 50}, 0);
    EXPECT_EQ(GetPointerPosition(), ClientToScreen(window, {100, 50}));
}

TEST(Pointer, IsReadInsideItsClip)
{
    TestOperator op;
    ShowRecordingWindow();
    ClipPointer({100, 200, 300, 400});
    EXPECT_TRUE(PointerIsClipped());
    SetPointerPosition({0, 0});
    EXPECT_EQ(GetPointerPosition(), (Point{100, 200}));
    SetPointerPosition({1000, 1000});
    EXPECT_EQ(GetPointerPosition(), (Point{299, 399}));
    SetPointerPosition({150, 250});
    EXPECT_EQ(GetPointerPosition(), (Point{150, 250}));
    ReleasePointerClip();
    EXPECT_FALSE(PointerIsClipped());
    SetPointerPosition({0, 0});
    EXPECT_EQ(GetPointerPosition(), (Point{0, 0}));
}

TEST(Pointer, StaysInAnEmptyClip)
{
    TestOperator op;
    ClipPointer({100, 200, 100, 200});
    EXPECT_EQ(GetPointerPosition(), (Point{100, 200}));
}

TEST(Pointer, FollowsTheScrollingOfThePicture)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    SetScrollExtent(window, {5000, 4000, 40, 20});
    ASSERT_TRUE(ScrollPictureTo(window, {400, 300}));
    OperateMouse({100, 150}, 0);
    const Point screen = ClientToScreen(window, {100, 150});
    EXPECT_EQ(GetPointerPosition(), (Point{screen.x + 400, screen.y + 300}));
    // Put on a place of the surface, it is read there again, whether that place is seen or not.
    SetPointerPosition({screen.x + 500, screen.y + 500});
    EXPECT_EQ(GetPointerPosition(), (Point{screen.x + 500, screen.y + 500}));
    SetPointerPosition({320, 240});
    EXPECT_EQ(GetPointerPosition(), (Point{320, 240}));
}

TEST(Pointer, HasAShapeOverTheClientArea)
{
    TestOperator op;
    HWND window = ShowRecordingWindow();
    EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
    SetPointer(Pointer::kCross);
    EXPECT_EQ(CurrentPointer(), Pointer::kCross);
    EXPECT_NE(window->widget->cursor().shape(), Qt::ArrowCursor);
    SetPointer(Pointer::kArrow);
    EXPECT_EQ(window->widget->cursor().shape(), Qt::ArrowCursor);
}

TEST(Hourglass, ShowsOverAllAndEndsWithItsScope)
{
    TestOperator op;
    SetPointer(Pointer::kCross);
    {
        const Hourglass outer;
        EXPECT_EQ(CurrentPointer(), Pointer::kHourglass);
        ASSERT_NE(QApplication::overrideCursor(), nullptr);
        EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
        {
            const Hourglass inner;
        }
        EXPECT_EQ(CurrentPointer(), Pointer::kHourglass);
        EXPECT_NE(QApplication::overrideCursor(), nullptr);
    }
    EXPECT_EQ(CurrentPointer(), Pointer::kCross);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST(Hourglass, GivesWayToABoxThatWaits)
{
    TestOperator op;
    const Hourglass hourglass;
    bool shown = true;
    op.AtNextBox([&](const FrontBox&) { shown = QApplication::overrideCursor() != nullptr; });
    MessageBox(nullptr, "text", "caption");
    EXPECT_FALSE(shown);
    EXPECT_NE(QApplication::overrideCursor(), nullptr);
}

TEST(Pointer, MayBeMissing)
{
    EXPECT_TRUE(PointerPresent());
    SetFault("no mouse", true);
    EXPECT_FALSE(PointerPresent());
}

}  // namespace
}  // namespace kelvo
