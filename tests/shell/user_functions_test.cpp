// As delivered there are no user-written functions.
#include "usermodule/user_functions.h"

#include "platform/menu.h"
#include "resources/menu.h"
#include "shell/commands.h"
#include "state/windows.h"
#include "support/picture_fixture.h"
#include "usermodule/user_menu.h"

#include <gmock/gmock.h>

namespace kelvo {
namespace {

using testing::IsEmpty;

class UserFunctionsAsDelivered : public PictureTest {};

TEST_F(UserFunctionsAsDelivered, TakeTheirMenuAway)
{
    SetMenu(hWndMain, MainMenu());
    const int tops = TopMenuCount(hWndMain);
    BeginUserMenu();
    InitUserModules();
    EXPECT_EQ(TopMenuCount(hWndMain), tops - 1);
    for (int i = 0; i < TopMenuCount(hWndMain); ++i) EXPECT_NE(TopMenuText(hWndMain, i), "&USER");
    EXPECT_EQ(UserMenuCount, 0);
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(UserFunctionsAsDelivered, SlotsDoNothingAndReturnOne)
{
    using Slot = std::int32_t (*)(std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t);
    constexpr Slot kSlots[] = {UserFunction0, UserFunction1, UserFunction2, UserFunction3, UserFunction4,
                               UserFunction5, UserFunction6, UserFunction7, UserFunction8, UserFunction9};
    for (const Slot slot : kSlots) EXPECT_EQ(slot(1, -2, 3, 2147483647, 0), 1);
    UserDispatch(900, "a", "b", "c", "d");
    EXPECT_THAT(op->Boxes(), IsEmpty());
    EXPECT_THAT(Commands(), IsEmpty());
}

TEST_F(UserFunctionsAsDelivered, EveryNumberOfTheirsIsTold)
{
    for (const int id : {180, 900, 999}) EXPECT_EQ(RunCommand(hWndMain, id), 0) << id;
    ASSERT_EQ(op->Boxes().size(), 3U);
    for (const TestOperator::Box& box : op->Boxes()) {
        EXPECT_EQ(box.text, "Error in User Menu ID number(s).");
        EXPECT_EQ(box.caption, "User Software Module Error");
    }
}

}  // namespace
}  // namespace kelvo
