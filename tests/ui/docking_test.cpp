#include "ui/docking.h"

#include "platform/dialog.h"
#include "platform/window.h"
#include "resources/dialog_ids.h"
#include "state/windows_write.h"
#include "support/operator.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

LRESULT Plain(HWND /*dialog*/, std::uint32_t message, WPARAM /*wParam*/, LPARAM /*lParam*/)
{
    return message == WM_INITDIALOG ? 1 : 0;
}

class LowerCorners : public testing::TestWithParam<LowerCorner> {
  protected:
    LowerCorners()
    {
        RegisterWindowClass({.name = "HOST", .procedure = DefWindowProc, .icon = {}});
        write::windows.hWndMain = CreateMainWindow("HOST", "Host");
        ShowWindowMaximised(hWndMain);
        dialog = CreateModelessDialog("ABOUT", hWndMain, Plain);
    }
    ~LowerCorners() override
    {
        EndDialog(dialog, 0);
        DestroyWindow(hWndMain);
        write::windows.hWndMain = nullptr;
    }

    TestOperator op;
    HWND dialog = nullptr;
};

TEST_P(LowerCorners, TakeADialogThatKeepsItsSize)
{
    constexpr int kMargin = 12;
    ASSERT_NE(dialog, nullptr);
    const Rect before = GetWindowRect(dialog);
    DockInCorner(dialog, GetParam());
    const Rect after = GetWindowRect(dialog);
    EXPECT_EQ(after.Width(), before.Width());
    EXPECT_EQ(after.Height(), before.Height());
    EXPECT_EQ(after.bottom, ViewArea().bottom - kPlayBarRoom);
    if (GetParam() == LowerCorner::kLeft) {
        EXPECT_EQ(after.left, ViewArea().left + kMargin);
    } else {
        EXPECT_EQ(after.right, ViewArea().right - kMargin);
    }
}

INSTANTIATE_TEST_SUITE_P(Both, LowerCorners, testing::Values(LowerCorner::kLeft, LowerCorner::kRight),
                         [](const auto& corner) { return corner.param == LowerCorner::kLeft ? "Left" : "Right"; });

}  // namespace
}  // namespace kelvo
