// Operator scripts, run against a program that is small enough to be seen at a glance.
#include "script/script.h"

#include "platform/application.h"
#include "platform/box.h"
#include "platform/clock.h"
#include "platform/dialog.h"
#include "platform/faults.h"
#include "platform/file_dialog.h"
#include "platform/files.h"
#include "platform/front.h"
#include "platform/memory.h"
#include "platform/menu.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "platform/transcript.h"
#include "platform/window.h"
#include "state/cal_state.h"
#include "state/frame_state.h"
#include "state/state_registry.h"
#include "state/windows_write.h"
#include "support/temp_directory.h"
#include "ui/status.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

// --- The program --------------------------------------------------------------------------------------------------

constexpr int kAsk = 101;       // a box with Yes and No; the answer goes to the status line
constexpr int kDialog = 102;    // a dialog
constexpr int kFile = 103;      // a file dialog; the first path goes to the status line
constexpr int kLater = 104;     // a box 500 ms later, by a timer
constexpr int kLive = 105;      // live video on or off
constexpr int kStubborn = 106;  // a dialog that doesn't leave when it is asked to
constexpr int kGrey = 107;      // in the menu, disabled
constexpr int kExit = 119;      // asks, then quits
constexpr int kBoxes = 120;     // three boxes, one after the other
constexpr std::uint32_t kLaterTimer = 2;
constexpr std::uint32_t kLiveTimer = 3;
constexpr int kFrameMs = 20;
constexpr std::string_view kDialogName = "ABOUT";

bool live = false;
bool boxAtStart = false;
int framesShown = 0;
int windowsClosed = 0;

LRESULT PlainDialog(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM /*lParam*/)
{
    if (message != WM_COMMAND) return message == WM_INITDIALOG ? 1 : 0;
    const int id = LowWord(wParam);
    if (id == kIdOk || id == kIdCancel) EndDialog(dialog, id);
    return 1;
}

LRESULT StubbornDialog(HWND /*dialog*/, std::uint32_t message, WPARAM /*wParam*/, LPARAM /*lParam*/)
{
    return message == WM_INITDIALOG || message == WM_COMMAND ? 1 : 0;
}

bool Agreed(std::string_view question)
{
    return MessageBox(hWndMain, question, kMessageCaption, BoxIcon::kQuestion, BoxButtons::kYesNo) == Button::kYes;
}

void AskForFile()
{
    FileDialogRequest request;
    request.owner = hWndMain;
    request.title = "Load";
    request.filters = {{"Images (*.img)", "*.img"}};
    const FileDialogResult result = RunFileDialog(request);
    StatusMessage(result.paths.empty() ? "cancelled" : result.paths[0], 0);
}

void RunCommand(int id)
{
    switch (id) {
        case kAsk:
            StatusMessage(Agreed("Go on?") ? "yes" : "no", 0);
            break;
        case kDialog:
            StatusMessage(Format("dialog %d", DialogBox(kDialogName, hWndMain, PlainDialog)), 0);
            break;
        case kFile:
            AskForFile();
            break;
        case kLater:
            SetTimer(hWndMain, kLaterTimer, 500);
            break;
        case kLive:
            live = !live;
            if (live) SetTimer(hWndMain, kLiveTimer, 0);
            break;
        case kStubborn:
            DialogBox(kDialogName, hWndMain, StubbornDialog);
            break;
        case kGrey:
            StatusMessage("grey was run", 0);
            break;
        case kExit:
            if (Agreed("Exit?")) PostQuitMessage(0);
            break;
        case kBoxes:
            for (const char* text : {"one", "two", "three"}) MessageBox(hWndMain, text, kMessageCaption);
            break;
        default:
            break;
    }
}

void RunTimer(HWND window, std::uint32_t id)
{
    KillTimer(window, id);
    if (id == kLaterTimer) MessageBox(window, "later", kMessageCaption);
    if (id != kLiveTimer || !live) return;
    DelayMs(kFrameMs);  // the camera sets the pace
    ++framesShown;
    NoteScriptFrame();
    SetTimer(window, kLiveTimer, 0);
}

LRESULT HostWndProc(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
        case WM_COMMAND:
            RunCommand(LowWord(wParam));
            return 0;
        case WM_TIMER:
            RunTimer(window, static_cast<std::uint32_t>(wParam));
            return 0;
        case WM_DESTROY:
            ++windowsClosed;
            write::windows.hWndMain = nullptr;
            PostQuitMessage(0);
            return 0;
        default:
            return DefWindowProc(window, message, wParam, lParam);
    }
}

int RunHost()
{
    constexpr MenuEntry kMenu[] = {
        {.kind = MenuEntry::Kind::kTop, .id = 0, .text = "&Test"},
        {.kind = MenuEntry::Kind::kItem, .id = kAsk, .text = "&Ask"},
        {.kind = MenuEntry::Kind::kItem, .id = kGrey, .text = "&Grey", .enabled = false},
    };
    RegisterWindowClass({.name = "HOST", .procedure = HostWndProc, .icon = {}});
    write::windows.hWndMain = CreateMainWindow("HOST", "Host");
    SetMenu(hWndMain, kMenu);
    SetWindowText(hWndMain, "Host");
    ShowWindowMaximised(hWndMain);
    StatusMessage("started", 0);
    if (boxAtStart) MessageBox(hWndMain, "at the start", kMessageCaption);
    if (FaultIsSet("no mouse")) MessageBox(hWndMain, "no mouse", kMessageCaption);
    return RunMessageLoop(hWndMain);
}

// --- A run --------------------------------------------------------------------------------------------------------

struct Outcome {
    bool started = false;
    int exitCode = -1;
    std::string startError;
    std::string errors;  // what went to stderr; the toolkit complains there about what offscreen lacks
    std::string output;  // what went to stdout
};

class OperatorScript : public testing::Test {
  protected:
    OperatorScript()
    {
        live = false;
        boxAtStart = false;
        framesShown = 0;
        windowsClosed = 0;
    }

    Outcome Run(const std::string& script, const std::vector<std::string>& arguments = {})
    {
        CommandLine commandLine;
        commandLine.offscreen = true;
        commandLine.virtualTime = true;
        StartApplication(commandLine);

        const std::string path = Write("test.lua", script);
        Outcome outcome;
        testing::internal::CaptureStderr();
        testing::internal::CaptureStdout();
        outcome.started = StartScript(path, arguments, outcome.startError);
        if (outcome.started) outcome.exitCode = FinishScript(RunHost());
        outcome.errors = testing::internal::GetCapturedStderr();
        outcome.output = testing::internal::GetCapturedStdout();
        return outcome;
    }

    void ExpectSuccess(const std::string& script)
    {
        const Outcome outcome = Run(script);
        EXPECT_TRUE(outcome.started) << outcome.startError;
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_THAT(outcome.errors, Not(HasSubstr("kelvo:")));
        EXPECT_EQ(windowsClosed, 1);
    }

    void ExpectFailure(const std::string& script, const std::string& message)
    {
        const Outcome outcome = Run(script);
        EXPECT_TRUE(outcome.started) << outcome.startError;
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_THAT(outcome.errors, HasSubstr(message));
    }

    std::string Write(const std::string& name, const std::string& contents)
    {
        std::string path = directory_ / name;
        PutFile(path, contents);
        return path;
    }

    TempDirectory directory_;
};

// --- Start and end ------------------------------------------------------------------------------------------------

TEST_F(OperatorScript, EndClosesTheProgramWithZero)
{
    ExpectSuccess("wait(1)");
}

TEST_F(OperatorScript, EmptyScriptStartsAndClosesTheProgram)
{
    ExpectSuccess("");
}

TEST_F(OperatorScript, NumberReturnedIsTheExitCode)
{
    EXPECT_EQ(Run("wait(1) return 7").exitCode, 7);
}

TEST_F(OperatorScript, OtherResultsAreFailures)
{
    const Outcome outcome = Run("wait(1) return 256");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("the script returned 256"));
}

TEST_F(OperatorScript, FalseIsNoSuccess)
{
    ExpectFailure("wait(1) return false", "the script returned false");
}

TEST_F(OperatorScript, FaultAtTheTopHoldsForTheStart)
{
    ExpectSuccess(R"(
        sim.fault("no mouse", true)
        assert(box().text == "no mouse")
        answer("ok"))");
}

TEST_F(OperatorScript, FirstLookFindsTheBoxOfTheStart)
{
    boxAtStart = true;
    ExpectSuccess(R"(
        assert(status() == "started")
        local front = box()
        assert(front.text == "at the start" and front.caption == "Kelvo message" and front.icon == "exclamation")
        assert(#front.buttons == 1 and front.buttons[1] == "ok" and front.default == "ok")
        answer("ok")
        assert(box() == nil))");
}

TEST_F(OperatorScript, ScriptThatEndsBeforeTheStartFailsWithTheBoxOfTheStart)
{
    boxAtStart = true;
    ExpectFailure("", "the script ended with message box \"at the start\" in front");
    EXPECT_EQ(windowsClosed, 1);
}

TEST_F(OperatorScript, EarlyErrorKeepsTheProgramFromStarting)
{
    const Outcome outcome = Run("\nerror('nothing works')");
    EXPECT_FALSE(outcome.started);
    EXPECT_THAT(outcome.startError, HasSubstr("test.lua:2: nothing works"));
    EXPECT_EQ(hWndMain, nullptr);
}

TEST_F(OperatorScript, SyntaxErrorNamesFileAndLine)
{
    const Outcome outcome = Run("local x =\n\nend");
    EXPECT_FALSE(outcome.started);
    EXPECT_THAT(outcome.startError, HasSubstr("test.lua:3:"));
}

TEST_F(OperatorScript, CompiledChunksAreRefused)
{
    EXPECT_FALSE(Run("\x1bLua").started);
}

TEST_F(OperatorScript, MissingFileIsToldByName)
{
    std::string error;
    EXPECT_FALSE(StartScript(directory_ / "none.lua", {}, error));
    EXPECT_THAT(error, HasSubstr("none.lua can't be read"));
    EXPECT_FALSE(ScriptRuns());
}

TEST_F(OperatorScript, WithoutAScriptTheProgramsOwnCodeStands)
{
    EXPECT_EQ(FinishScript(5), 5);
    NoteScriptFrame();
    EXPECT_FALSE(ScriptRuns());
}

TEST_F(OperatorScript, ErrorTellsLineTracebackAndScreen)
{
    const Outcome outcome = Run("local function inner()\n  wait(1)\n  error('broken')\nend\ninner()\n");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("test.lua:3: broken"));
    EXPECT_THAT(outcome.errors, HasSubstr("stack traceback:"));
    EXPECT_THAT(outcome.errors, HasSubstr("test.lua:5"));
    EXPECT_THAT(outcome.errors, HasSubstr("on screen: the main window"));
    EXPECT_EQ(windowsClosed, 1);
}

TEST_F(OperatorScript, WhatItHoldsIsClosedWhereItFails)
{
    const Outcome outcome = Run(R"(
        local held <close> = setmetatable({}, { __close = function() print(pcall(wait, 1)) end })
        wait(1)
        error("broken"))");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("broken"));
    EXPECT_EQ(outcome.output, "false\twait: the script is over\n");
    EXPECT_EQ(windowsClosed, 1);
}

TEST_F(OperatorScript, ErrorValuesWithoutATextAreReported)
{
    ExpectFailure("wait(1) error(setmetatable({}, {__tostring = function() error('again') end}))",
                  "(a value without a text)");
}

TEST_F(OperatorScript, EndWithABoxInFrontIsAFailureThatNamesIt)
{
    ExpectFailure("command(101)", "the script ended with message box \"Go on?\" in front");
    EXPECT_EQ(StatusText, "no");  // dismissed the way that changes least
    EXPECT_EQ(windowsClosed, 1);
}

TEST_F(OperatorScript, EndWithADialogInFrontIsAFailureThatNamesIt)
{
    ExpectFailure("command(102)", "the script ended with dialog ABOUT in front");
    EXPECT_EQ(StatusText, "dialog 2");
    EXPECT_EQ(windowsClosed, 1);
}

TEST_F(OperatorScript, EndWithAFileDialogInFrontIsAFailureThatNamesIt)
{
    ExpectFailure("command(103)", "the script ended with file dialog \"Load\" in front");
    EXPECT_EQ(StatusText, "cancelled");
    EXPECT_EQ(windowsClosed, 1);
}

TEST_F(OperatorScript, EndWithSeveralBoxesToComeStillCloses)
{
    ExpectFailure("command(120)", "message box \"one\"");
    EXPECT_EQ(windowsClosed, 1);
}

TEST_F(OperatorScript, DialogThatDoesNotLeaveIsEnded)
{
    ExpectFailure("command(106)", "dialog ABOUT");
    EXPECT_EQ(windowsClosed, 1);
}

TEST_F(OperatorScript, ErrorWithADialogOpenStillCloses)
{
    ExpectFailure("command(102) error('lost')", "on screen: dialog ABOUT");
    EXPECT_EQ(windowsClosed, 1);
}

TEST_F(OperatorScript, EndWithLiveVideoStillCloses)
{
    ExpectSuccess("command(105)");
}

// --- The program ends first ---------------------------------------------------------------------------------------

TEST_F(OperatorScript, CallThatEndsTheProgramReturns)
{
    const Outcome outcome = Run(R"(
        command(119)
        answer("yes")
        print("after")
        assert(box() == nil and dialog() == nil and file() == nil)
        assert(status() == "started" and title() == "Host")
        local lines = transcript()
        assert(lines[#lines].kind == "print")
        return 3)");
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_EQ(outcome.output, "after\n");
    EXPECT_THAT(outcome.errors, Not(HasSubstr("kelvo:")));
}

TEST_F(OperatorScript, ActingAfterTheEndFails)
{
    const Outcome outcome = Run("command(119) answer('yes')\nwait(10)");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("test.lua:2: wait: the program has ended"));
}

TEST_F(OperatorScript, WindowCallsAfterTheEndFail)
{
    const Outcome outcome = Run(R"(
        command(119)
        answer("yes")
        for _, call in ipairs { function() return text(1) end, function() return menu(101) end,
                                function() return screen(0, 0) end, function() return screenshot("a.png") end } do
            local done, message = pcall(call)
            assert(not done and (message:find("the program has ended", 1, true) or message:find("no main window")),
                   message)
        end)");
    EXPECT_THAT(outcome.errors, Not(HasSubstr("kelvo:")));
    EXPECT_EQ(outcome.exitCode, 0);
}

TEST_F(OperatorScript, ProgramThatNeverWaitsStillRunsTheScriptOnce)
{
    const std::string path = Write("test.lua", "assert(box() == nil)\nlocal done, m = pcall(command, 101)\nprint(m)");
    std::string error;
    testing::internal::CaptureStdout();
    ASSERT_TRUE(StartScript(path, {}, error)) << error;
    EXPECT_TRUE(ScriptRuns());
    EXPECT_EQ(FinishScript(0), 0);
    EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr("the program has ended"));
}

TEST_F(OperatorScript, FirstCallThatActsFailsIfTheProgramNeverWaits)
{
    const std::string path = Write("test.lua", "command(101)");
    std::string error;
    testing::internal::CaptureStderr();
    ASSERT_TRUE(StartScript(path, {}, error)) << error;
    EXPECT_EQ(FinishScript(0), 1);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("command: the program has ended"));
}

// --- Boxes, dialogs, files ----------------------------------------------------------------------------------------

TEST_F(OperatorScript, CommandReturnsWithTheBoxInFront)
{
    ExpectSuccess(R"(
        command(101)
        assert(box().text == "Go on?" and box().icon == "question")
        answer("yes")
        assert(status() == "yes" and box() == nil))");
}

TEST_F(OperatorScript, BoxesComeOneAfterTheOther)
{
    ExpectSuccess(R"(
        command(120)
        for _, text in ipairs { "one", "two", "three" } do
            assert(box().text == text)
            answer("ok")
        end
        assert(box() == nil))");
}

TEST_F(OperatorScript, AnswerWithoutABoxNamesWhatIsOnTheScreen)
{
    ExpectFailure("command(102)\nanswer('ok')", "test.lua:2: no message box in front; on screen: dialog ABOUT");
}

TEST_F(OperatorScript, AnswerWithAButtonThatTheBoxLacksFails)
{
    ExpectFailure("command(101) answer('cancel')",
                  "no button \"cancel\" in the box; on screen: message box \"Go on?\"");
}

TEST_F(OperatorScript, UnknownButtonNamesAreRefused)
{
    ExpectFailure("command(101) answer('maybe')", "must be one of ok, cancel, yes, no");
}

TEST_F(OperatorScript, DialogIsReadAndWorked)
{
    ExpectSuccess(R"(
        command(102)
        assert(dialog() == "ABOUT" and box() == nil and file() == nil)
        assert(enabled(1) == true)
        press(1)
        assert(dialog() == nil and status() == "dialog 1"))");
}

TEST_F(OperatorScript, UnknownControlIsNamed)
{
    ExpectFailure("command(102) press(4711)", "dialog ABOUT has no control 4711");
}

TEST_F(OperatorScript, ControlsNeedADialog)
{
    ExpectFailure("press(1)", "no dialog in front; on screen: the main window");
}

TEST_F(OperatorScript, PanelIsMissedByName)
{
    ExpectFailure("text('panel', 5)", "no control panel; on screen: the main window");
}

TEST_F(OperatorScript, FileDialogIsReadAndAnswered)
{
    const std::string image = Write("a.img", "x");
    ExpectSuccess("command(103) assert(file().title == 'Load' and file().filters[1] == 'Images (*.img)') choose('" +
                  image + "') assert(file() == nil and status() == '" + image + "')");
}

TEST_F(OperatorScript, FileDialogIsCancelled)
{
    ExpectSuccess("command(103) cancel() assert(file() == nil and status() == 'cancelled')");
}

TEST_F(OperatorScript, CancelLeavesADialogByItsCloseButton)
{
    ExpectSuccess("command(102) cancel() assert(dialog() == nil and status() == 'dialog 2')");
}

TEST_F(OperatorScript, CancelWithNoDialogFails)
{
    ExpectFailure("command(101) cancel()", "no dialog in front; on screen: message box \"Go on?\"");
}

TEST_F(OperatorScript, ChooseWithoutAFileDialogFails)
{
    ExpectFailure("choose('a')", "no file dialog in front; on screen: the main window");
}

TEST_F(OperatorScript, CommandsDoNotReachTheMainWindowUnderADialog)
{
    ExpectFailure("command(102) command(101)", "command 101 can't be reached; on screen: dialog ABOUT");
}

TEST_F(OperatorScript, DisabledMenuItemsGiveNoCommand)
{
    ExpectFailure("command(107)", "command 107 is disabled in the menu");
    EXPECT_EQ(StatusText, "started");
}

TEST_F(OperatorScript, MenuIsRead)
{
    ExpectSuccess(R"(
        local item = menu(107)
        assert(item.text == "&Grey" and item.enabled == false and item.checked == false)
        assert(menu(101).enabled and menu(4711) == nil))");
}

TEST_F(OperatorScript, CloseEndsTheProgramThroughItsWindow)
{
    ExpectSuccess("close() assert(title() == 'Host')");
}

// --- Time and frames ----------------------------------------------------------------------------------------------

TEST_F(OperatorScript, WaitLetsVirtualTimePass)
{
    ExpectSuccess("wait(30000)");
    EXPECT_GE(TickMs(), 30000);  // virtual time begins at 0
}

TEST_F(OperatorScript, TimersOfTheProgramRunWhileTheScriptWaits)
{
    ExpectSuccess(R"(
        command(104)
        assert(box() == nil)
        wait(400)
        assert(box() == nil)
        wait(200)
        assert(box().text == "later")
        answer("ok"))");
}

TEST_F(OperatorScript, FramesLetsThatManyLiveFramesPass)
{
    ExpectSuccess("command(105) frames(10) command(105)");
    EXPECT_GE(framesShown, 10);
    EXPECT_LE(framesShown, 13);
}

TEST_F(OperatorScript, FramesWithoutLiveVideoFailsAfterTenSeconds)
{
    ExpectFailure("frames(2)", "frames: 2 more didn't come within 10 s; on screen: the main window");
    EXPECT_GE(TickMs(), 10'000);
    EXPECT_LT(TickMs(), 11'000);
}

TEST_F(OperatorScript, FramesCanBeTriedAgain)
{
    ExpectSuccess("assert(not pcall(frames, 1)) command(105) frames(2) command(105)");
}

TEST_F(OperatorScript, ScriptActsWhileLiveVideoNeverRests)
{
    ExpectSuccess(R"(
        command(105)
        command(101)
        answer("yes")
        assert(status() == "yes"))");
}

// --- Reading ------------------------------------------------------------------------------------------------------

TEST_F(OperatorScript, StateReadsRegisteredNames)
{
    static int CalType = 2;
    static std::string Description = "cold \xB0";
    RegisterVariable("CalType", CalType);
    RegisterVariable("Description", Description);
    RegisterState("Gain", [] { return StateValue(0.5); });
    RegisterState("TwoNumbers", [] { return StateValue(std::vector<double>{1.0, 2.5}); });
    RegisterState("Nothing", [] { return StateValue(); });
    ExpectSuccess(R"(
        assert(state("CalType") == 2 and math.type(state("CalType")) == "integer")
        assert(state("Description") == "cold °")
        assert(state("Gain") == 0.5 and state("Nothing") == nil)
        local list = state("TwoNumbers")
        assert(#list == 2 and list[2] == 2.5))");
}

TEST_F(OperatorScript, UnknownStateListsNamesNearIt)
{
    RegisterState("LiveVideo", [] { return StateValue(std::int64_t{0}); });
    RegisterState("CameraOn", [] { return StateValue(std::int64_t{0}); });
    ExpectFailure("return state('livevideo')", "no state \"livevideo\"; near it: LiveVideo");
}

TEST_F(OperatorScript, PixelAndRawGoThroughTheirHooks)
{
    ScriptHooks hooks;
    hooks.pixel = [](int x, int y) { return x < 3 ? std::optional<int>(10 * y + x) : std::nullopt; };
    hooks.raw = [](std::int64_t i) { return std::optional<int>(static_cast<int>(i) + 1); };
    SetScriptHooks(hooks);
    ExpectSuccess("assert(pixel(2, 4) == 42 and pixel(3, 0) == nil and raw(7) == 8)");
}

TEST_F(OperatorScript, PixelIsNilWithoutAFrame)
{
    ExpectSuccess("assert(pixel(0, 0) == nil and raw(0) == nil)");
}

TEST_F(OperatorScript, NoSimulatedCameraIsSaid)
{
    ExpectFailure("sim.source('low', 20)", "no simulated camera");
}

TEST_F(OperatorScript, NoTruthWithoutASimulatedCamera)
{
    ExpectFailure("sim.truth(0, 0)", "no simulated camera");
}

TEST_F(OperatorScript, NoHeadWithoutASimulatedCamera)
{
    ExpectFailure("sim.head()", "no simulated camera");
}

TEST_F(OperatorScript, SimulatedCameraIsReachedThroughItsHooks)
{
    static std::string placed;
    using Numbers = std::vector<std::pair<std::string, double>>;
    ScriptHooks hooks;
    hooks.source = [](std::string_view source, std::optional<double> degreesC) {
        placed = Format("%s %.1f", std::string(source).c_str(), degreesC.value_or(-1));
        return std::string(source == "sun" ? "no such source" : "");
    };
    hooks.truth = [](int x, int y) { return Numbers{{"gain", x + 0.5}, {"dead", y}}; };
    hooks.registers = [] { return Numbers{{"offset", 128}}; };
    SetScriptHooks(hooks);
    ExpectSuccess(R"(
        sim.source("low", 20)
        local done, message = pcall(sim.source, "sun")
        assert(not done and message:find("no such source"))
        assert(sim.truth(1, 0).gain == 1.5 and sim.truth(1, 0).dead == 0)
        assert(sim.head().offset == 128))");
    EXPECT_EQ(placed, "sun -1.0");
}

TEST_F(OperatorScript, TheBoardsLinesAreReachedThroughTheirHooks)
{
    static std::vector<double> pulses;
    pulses.clear();
    ScriptHooks hooks;
    hooks.trigger = [](std::optional<double> periodMs) {
        pulses.push_back(periodMs.value_or(-1));
        return std::string(periodMs == 7 ? "not so fast" : "");
    };
    hooks.lines = [] { return std::vector<std::pair<std::string, double>>{{"triggers", 3}}; };
    SetScriptHooks(hooks);
    ExpectSuccess(R"(
        sim.trigger()
        sim.trigger(250)
        assert(select(2, pcall(sim.trigger, 7)):find("not so fast", 1, true))
        assert(sim.lines().triggers == 3))");
    EXPECT_EQ(pulses, (std::vector<double>{-1, 250, 7}));
}

TEST_F(OperatorScript, NoLinesWithoutASimulatedCamera)
{
    ExpectFailure("assert(not pcall(sim.trigger)) sim.lines()", "no simulated camera");
}

TEST_F(OperatorScript, NoSignalWithoutOneToTakeIt)
{
    ExpectFailure("signal()", "signal: no signal from outside can come");
}

TEST_F(OperatorScript, TheSignalIsSentThroughItsHook)
{
    static int sent = 0;
    sent = 0;  // of an earlier round too
    ScriptHooks hooks;
    hooks.signal = [] { return ++sent == 1; };
    SetScriptHooks(hooks);
    ExpectSuccess("signal() assert(not pcall(signal))");
    EXPECT_EQ(sent, 2);
}

TEST_F(OperatorScript, MemoryFaultFailsTheNthAllocation)
{
    const Outcome outcome = Run("sim.fault('memory', 2)");
    EXPECT_TRUE(outcome.started);
    EXPECT_TRUE(MemoryAvailable(1));
    EXPECT_FALSE(MemoryAvailable(1));
    EXPECT_TRUE(MemoryAvailable(1));
}

TEST_F(OperatorScript, AFaultCanComeOnce)
{
    ExpectSuccess(R"(
        sim.fault("lens", 2)
        assert(sim.fault_to_come("lens") == 2 and sim.fault_to_come("shutter") == 0)
        sim.fault("lens", 0)
        assert(sim.fault_to_come("lens") == 0)
        assert(not pcall(sim.fault, "lens", -1)))");
}

TEST_F(OperatorScript, ControlsAreListedWithWhatTheyTake)
{
    ExpectSuccess(R"(
        assert(select(2, pcall(controls)):find("no dialog in front", 1, true))
        assert(select(2, pcall(controls, "menu")):find('must be "panel"', 1, true))
        command(102)
        local list = controls()
        assert(#list == 9)
        assert(list[1].id == 1 and list[1].kind == "button" and list[1].works)
        assert(list[2].id == 1001 and list[2].kind == "label" and not list[2].works)
        press(1))");
}

TEST_F(OperatorScript, TheWholeStateIsATable)
{
    ExpectSuccess(R"(
        local all = state()
        assert(all.CalType == state("CalType") and all.StatusText == state("StatusText"))
        assert(all.GainList == "0 bytes, cbf29ce484222325", all.GainList))");
}

TEST_F(OperatorScript, FaultsAreTakenOffAgain)
{
    ExpectSuccess("sim.fault('no mouse') sim.fault('no mouse', false) assert(box() == nil)");
}

TEST_F(OperatorScript, TranscriptComesAsTables)
{
    ExpectSuccess(R"(
        command(101)
        answer("yes")
        local asked, answered
        for _, line in ipairs(transcript()) do
            assert(math.type(line.t) == "integer" and type(line.kind) == "string")
            if line.kind == "box" then asked = line end
            if line.kind == "answer" then answered = line end
        end
        assert(asked.text == "Go on?" and asked.caption == "Kelvo message" and #asked.buttons == 2)
        assert(answered.button == "yes"))");
}

TEST_F(OperatorScript, PrintReachesStandardOutputAndTranscript)
{
    const Outcome outcome = Run("print('a', 1, nil)");
    EXPECT_EQ(outcome.output, "a\t1\tnil\n");
    const std::vector<TranscriptLine>& lines = TranscriptLines();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.front().kind, "print");
    EXPECT_EQ(std::get<std::string>(lines.front().fields.at(0).second), "a\t1\tnil");
}

TEST_F(OperatorScript, ScreenshotMakesItsDirectory)
{
    const std::string picture = directory_ / "deep/er/a.png";
    ExpectSuccess("assert(screenshot('" + picture + "') == '" + picture + "')");
    EXPECT_THAT(FileContents(picture), StartsWith("\x89PNG\r\n\x1a\n"));
}

TEST_F(OperatorScript, FilesAreListedAndRead)
{
    Write("b.txt", "two");
    Write("a.txt", std::string("o\0e", 3));
    const std::string here = directory_.Path();
    ExpectSuccess("local names = listdir('" + here +
                  "') assert(names[1] == 'a.txt' and names[2] == 'b.txt')"
                  "assert(#readfile('" +
                  here + "/a.txt') == 3 and readfile('" + here + "/none') == nil)");
}

// --- Lua ----------------------------------------------------------------------------------------------------------

TEST_F(OperatorScript, ArgumentsReachTheScript)
{
    const Outcome outcome = Run("print(arg[1], arg[2], select('#', ...), (...))", {"one", "two"});
    EXPECT_EQ(outcome.output, "one\ttwo\t2\tone\n");
}

TEST_F(OperatorScript, ProtectedCallsCatchFailuresAcrossWaits)
{
    ExpectSuccess(R"(
        local done, message = pcall(function() wait(5) command(102) answer("ok") end)
        assert(not done and message:find("no message box in front", 1, true))
        cancel())");
}

TEST_F(OperatorScript, ActingInsideASortIsRefusedWithTheReason)
{
    ExpectFailure("wait(1) table.sort({2, 1}, function(a, b) wait(1) return a < b end)",
                  "wait lets the program go on, which can't be from inside a C function");
}

TEST_F(OperatorScript, ModulesBesideTheScriptAreFound)
{
    Write("helper.lua", "return { answer = 42 }");
    ExpectSuccess("assert(require('helper').answer == 42)");
}

TEST_F(OperatorScript, ProcessCanNotBeLeftBehindTheProgramsBack)
{
    ExpectSuccess("assert(os.exit == nil and os.time() > 0 and coroutine == nil)");
}

// --- The registry -------------------------------------------------------------------------------------------------

TEST(StateRegistry, ReadsAtTheMomentOfAsking)
{
    static double value = 1.0;
    RegisterVariable("Value", value);
    value = 2.0;
    EXPECT_EQ(ReadState("Value"), StateValue(2.0));
    EXPECT_EQ(ReadState("value"), std::nullopt);
}

TEST(StateRegistry, LaterRegistrationReplaces)
{
    RegisterState("Twice", [] { return StateValue(std::int64_t{1}); });
    RegisterState("Twice", [] { return StateValue(std::int64_t{2}); });
    EXPECT_EQ(ReadState("Twice"), StateValue(std::int64_t{2}));
}

// Names that are near to none of the program's own.
TEST(StateRegistry, NearNamesComeNearestFirst)
{
    for (const char* name : {"QuartzLow", "QuartzHigh", "QuartzUnit", "PrismType"}) {
        RegisterState(name, [] { return StateValue(); });
    }
    EXPECT_THAT(NearStateNames("quartzlow"), ElementsAre("QuartzLow"));
    EXPECT_THAT(NearStateNames("PrismTyp"), ElementsAre("PrismType"));
    EXPECT_THAT(NearStateNames("Quartz"), ElementsAre("QuartzHigh", "QuartzLow", "QuartzUnit"));
    EXPECT_THAT(NearStateNames("Wobble"), IsEmpty());
}

// A program that has a module's variables has their names: nothing has to be called for it.
TEST(StateRegistry, AModuleBringsItsNamesAlong)
{
    EXPECT_EQ(ReadState("DisplayEnabled"), StateValue(std::int64_t{DisplayEnabled}));
    EXPECT_EQ(ReadState("SequencePath"), StateValue(LoadName));
}

}  // namespace
}  // namespace kelvo
