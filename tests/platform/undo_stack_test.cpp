#include "platform/undo_stack.h"

#include "platform/reset.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace kelvo {
namespace {

// Steps that write down what is called.
class UndoStack : public testing::Test {
  protected:
    ~UndoStack() override { ClearUndoSteps(); }

    void Push(const std::string& name)
    {
        PushUndoStep({.name = name,
                      .takeBack = [this, name] { return Called("-" + name); },
                      .doAgain = [this, name] { return Called("+" + name); }});
    }
    bool Called(const std::string& what)
    {
        calls += what + ' ';
        return succeeds;
    }

    std::string calls;
    bool succeeds = true;
};

TEST_F(UndoStack, GoesDownAndUpAgainInOrder)
{
    EXPECT_EQ(NextUndoName(), std::nullopt);
    EXPECT_FALSE(TakeBackUndoStep());
    EXPECT_FALSE(DoUndoStepAgain());
    Push("zoom");
    Push("contrast");
    EXPECT_EQ(calls, "");  // they have been done
    EXPECT_EQ(NextUndoName(), "contrast");
    EXPECT_TRUE(TakeBackUndoStep());
    EXPECT_EQ(NextUndoName(), "zoom");
    EXPECT_EQ(NextRedoName(), "contrast");
    EXPECT_TRUE(TakeBackUndoStep());
    EXPECT_FALSE(TakeBackUndoStep());
    EXPECT_TRUE(DoUndoStepAgain());
    EXPECT_EQ(calls, "-contrast -zoom +zoom ");
}

TEST_F(UndoStack, ANewStepForgetsThoseAbove)
{
    Push("zoom");
    Push("contrast");
    TakeBackUndoStep();
    Push("colours");
    EXPECT_EQ(NextRedoName(), std::nullopt);
    EXPECT_EQ(NextUndoName(), "colours");
    TakeBackUndoStep();
    EXPECT_EQ(NextUndoName(), "zoom");
}

TEST_F(UndoStack, AStepThatCouldNotBeDoneStays)
{
    Push("zoom");
    succeeds = false;
    EXPECT_FALSE(TakeBackUndoStep());
    EXPECT_EQ(NextUndoName(), "zoom");
    EXPECT_EQ(NextRedoName(), std::nullopt);
    EXPECT_EQ(calls, "-zoom ");  // it isn't done again for that
    succeeds = true;
    TakeBackUndoStep();
    succeeds = false;
    EXPECT_FALSE(DoUndoStepAgain());
    EXPECT_EQ(NextRedoName(), "zoom");
    EXPECT_EQ(calls, "-zoom -zoom +zoom ");
}

TEST_F(UndoStack, AStepThatGoesOnIsTakenBackAsOneAndDoneAgainToItsEnd)
{
    ExtendLastUndoStep([] { return true; }, [] { return true; });  // there is none to go on
    DropLastUndoStep();
    EXPECT_EQ(NextUndoName(), std::nullopt);
    Push("contrast");
    Push("zoom");
    ExtendLastUndoStep([this] { return Called("-further"); }, [this] { return Called("+further"); });
    EXPECT_EQ(NextUndoName(), "zoom");
    TakeBackUndoStep();
    EXPECT_EQ(NextUndoName(), "contrast");
    DoUndoStepAgain();
    EXPECT_EQ(calls, "-further +further ");
    DropLastUndoStep();
    EXPECT_EQ(NextUndoName(), "contrast");
    EXPECT_EQ(NextRedoName(), std::nullopt);
}

TEST_F(UndoStack, ForgetsTheOldestOfTooMany)
{
    for (int i = 0; i < kMostUndoSteps + 3; ++i) Push(std::to_string(i));
    int taken = 0;
    while (TakeBackUndoStep()) ++taken;
    EXPECT_EQ(taken, kMostUndoSteps);
    EXPECT_TRUE(calls.ends_with(" -4 -3 "));
}

TEST_F(UndoStack, IsEmptyAfterAReset)
{
    Push("zoom");
    Push("contrast");
    TakeBackUndoStep();
    ResetPlatform();
    EXPECT_EQ(NextUndoName(), std::nullopt);
    EXPECT_EQ(NextRedoName(), std::nullopt);
}

}  // namespace
}  // namespace kelvo
