// Scripts that run beside the operator's work, against a program that is small enough to be seen at a glance.
#include "platform/box.h"
#include "platform/clock.h"
#include "platform/faults.h"
#include "platform/front.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "script/script.h"
#include "state/windows_write.h"
#include "support/operator.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr int kCount = 101;  // counts
constexpr int kAsk = 102;    // a box
constexpr std::uint32_t kTicks = 1;

int commands = 0;
int ticks = 0;
int escapes = 0;

LRESULT HostWndProc(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
        case WM_COMMAND:
            if (LowWord(wParam) == kAsk) MessageBox(window, "Go on?", kMessageCaption);
            ++commands;
            return 0;
        case WM_TIMER:
            ++ticks;
            return 0;
        case WM_KEYDOWN:
            if (static_cast<Key>(wParam) == Key::kEscape) {
                ++escapes;
                StopScriptByEscape();
            }
            return 0;
        case WM_DESTROY:
            write::windows.hWndMain = nullptr;
            return 0;
        default:
            return DefWindowProc(window, message, wParam, lParam);
    }
}

class ScriptBeside : public testing::Test {
  protected:
    ScriptBeside()
    {
        commands = ticks = escapes = 0;
        RegisterWindowClass({.name = "HOST", .procedure = HostWndProc, .icon = {}});
        write::windows.hWndMain = CreateMainWindow("HOST", "Host");
        ShowWindowMaximised(hWndMain);
    }
    ~ScriptBeside() override
    {
        ResetScript();
        DestroyWindow(hWndMain);
    }

    // Runs the script to its end, which may be brought about by the operator's steps.
    void Run(const std::string& source)
    {
        const std::string path = directory / "work.lua";
        PutFile(path, source);
        const BesideListener listener{.printed = [this](std::string_view text) { printed.emplace_back(text); },
                                      .ended =
                                          [this](const std::string& failure) {
                                              failures.push_back(failure);
                                              PostQuitMessage(0);
                                          }};
        started = StartScriptBeside(path, listener, startError);
        if (started) RunMessageLoop(hWndMain);
    }

    TestOperator op;
    TempDirectory directory;
    std::vector<std::string> printed;
    std::vector<std::string> failures;  // a text for each end that was told
    bool started = false;
    std::string startError;
};

TEST_F(ScriptBeside, RunsToItsEndAndLeavesTheProgramOpen)
{
    const std::int64_t start = TickMs();
    Run("print('one', 2) wait(500) command(101) print('three') return 'anything'");
    EXPECT_THAT(printed, ElementsAre("one\t2", "three"));
    EXPECT_THAT(failures, ElementsAre(""));
    EXPECT_EQ(commands, 1);
    EXPECT_GE(TickMs() - start, 500);
    EXPECT_FALSE(ScriptRunsBeside());
    EXPECT_NE(hWndMain, nullptr);
}

TEST_F(ScriptBeside, TheOperatorWorksMeanwhile)
{
    for (int i = 0; i < 3; ++i) {
        op.Do([] {
            EXPECT_TRUE(ScriptRunsBeside());
            SendMessage(hWndMain, WM_COMMAND, kCount, 0);
        });
    }
    Run("for i = 1, 10 do wait(10) end");
    EXPECT_EQ(commands, 3);
    EXPECT_THAT(failures, ElementsAre(""));
}

TEST_F(ScriptBeside, AnotherOneCanBeStartedAfterwards)
{
    Run("print(1)");
    Run("wait(10) print(2)");
    EXPECT_THAT(printed, ElementsAre("1", "2"));
    EXPECT_THAT(failures, ElementsAre("", ""));
}

TEST_F(ScriptBeside, OneRunsAtATime)
{
    op.Do([this] {
        std::string error;
        EXPECT_FALSE(StartScriptBeside(directory / "work.lua", {}, error));
        EXPECT_EQ(error, "another script runs");
    });
    Run("wait(100)");
    EXPECT_THAT(failures, ElementsAre(""));
}

// Without a call that lets the program go on it would never come to the operator again.
TEST_F(ScriptBeside, LetsTimersAndOperatorHaveTheirTurnInAnEndlessLoop)
{
    SetTimer(hWndMain, kTicks, 0);
    for (int i = 0; i < 4; ++i) {
        op.Do([] {
            DelayMs(5);
            SendMessage(hWndMain, WM_COMMAND, kCount, 0);
        });
    }
    op.Do([] { StopScriptBeside(); });
    Run("while true do end");
    EXPECT_EQ(commands, 4);
    EXPECT_GT(ticks, 0);
    EXPECT_THAT(failures, ElementsAre(kStoppedByOperator));
}

TEST_F(ScriptBeside, StopsWhereItCatchesItsErrors)
{
    op.Do([] {});
    op.Do([] { StopScriptBeside(); });
    Run("while true do pcall(function() while true do end end) end");
    EXPECT_THAT(failures, ElementsAre(kStoppedByOperator));
}

TEST_F(ScriptBeside, EscapeStopsItInsideAFunctionThatCCodeCallsBack)
{
    SetFaultOnce("escape", 3);
    Run("string.gsub('x', 'x', function() while true do pcall(function() while true do end end) end end)");
    EXPECT_THAT(failures, ElementsAre(kStoppedByOperator));
}

TEST_F(ScriptBeside, EscapeStopsItWhileItWaits)
{
    op.Do([] { OperateKey("Escape"); });
    Run("wait(60000) print('too late')");
    EXPECT_EQ(escapes, 1);
    EXPECT_THAT(failures, ElementsAre(kStoppedByOperator));
    EXPECT_THAT(printed, IsEmpty());
}

TEST_F(ScriptBeside, WhatItHoldsIsClosedWhereItIsStopped)
{
    const std::string holds = "local held <close> = setmetatable({}, { __close = function() print('closed') end }) ";
    op.Do([] { StopScriptBeside(); });
    Run(holds + "wait(60000)");
    op.Do([] { StopScriptBeside(); });
    Run(holds + "while true do end");
    SetFaultOnce("escape", 3);
    Run(holds + "string.gsub('x', 'x', function() while true do end end)");
    EXPECT_THAT(failures, ElementsAre(kStoppedByOperator, kStoppedByOperator, kStoppedByOperator));
    EXPECT_THAT(printed, ElementsAre("closed", "closed", "closed"));
}

TEST_F(ScriptBeside, EscapeLeavesAClosingFunctionWithoutAnEnd)
{
    SetFaultOnce("escape", 3);
    Run("local held <close> = setmetatable({}, { __close = function() while true do end end }) error('broken')");
    EXPECT_THAT(failures, ElementsAre(HasSubstr("broken")));
}

TEST_F(ScriptBeside, ItsOwnEscapeIsNotTheOperators)
{
    Run("key('Escape') print('goes on')");
    EXPECT_EQ(escapes, 1);
    EXPECT_THAT(printed, ElementsAre("goes on"));
    EXPECT_THAT(failures, ElementsAre(""));
}

TEST_F(ScriptBeside, ErrorTellsFileLineAndScreen)
{
    Run("wait(1)\nlocal x = nil\nprint(x.y)");
    ASSERT_EQ(failures.size(), 1U);
    EXPECT_THAT(failures[0], HasSubstr("work.lua:3: attempt to index a nil value"));
    EXPECT_THAT(failures[0], HasSubstr("on screen: the main window"));
    EXPECT_FALSE(ScriptRunsBeside());
}

TEST_F(ScriptBeside, WhatTheOperatorHasInFrontIsNotTakenOver)
{
    op.Do([] { SendMessage(hWndMain, WM_COMMAND, kAsk, 0); });
    Run("wait(10) command(101)");  // the box is answered by the operator, before or after
    EXPECT_THAT(failures, testing::SizeIs(1));
    EXPECT_THAT(op.Boxes(), testing::SizeIs(1));
}

TEST_F(ScriptBeside, SyntaxErrorIsToldAtOnce)
{
    Run("local x =\n\nend");
    EXPECT_FALSE(started);
    EXPECT_THAT(startError, HasSubstr("work.lua:3:"));
    EXPECT_THAT(failures, IsEmpty());
    EXPECT_FALSE(ScriptRuns());
}

TEST_F(ScriptBeside, MissingFileIsTold)
{
    std::string error;
    EXPECT_FALSE(StartScriptBeside(directory / "none.lua", {}, error));
    EXPECT_THAT(error, HasSubstr("none.lua can't be read"));
}

TEST_F(ScriptBeside, MoreMemoryThanItsShareIsAnErrorOfTheScript)
{
    Run("wait(1)\nlocal s = ('x'):rep(2000000000)");
    ASSERT_EQ(failures.size(), 1U);
    EXPECT_THAT(failures[0], HasSubstr("not enough memory"));
}

TEST_F(ScriptBeside, StandardInputIsEmpty)
{
    Run("print(io.read('a') == '', io.stdin)");
    EXPECT_THAT(printed, ElementsAre("true\tnil"));
    EXPECT_THAT(failures, ElementsAre(""));
}

TEST_F(ScriptBeside, EndOfTheProgramEndsItInSilence)
{
    op.Do([] { PostQuitMessage(0); });
    Run("wait(60000)");
    EXPECT_EQ(FinishScript(5), 5);
    EXPECT_FALSE(ScriptRuns());
    EXPECT_THAT(failures, IsEmpty());
}

}  // namespace
}  // namespace kelvo
