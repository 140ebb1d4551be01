// Scripts of the menu: which ones stand in it, and the window that tells of their course.
#include "shell/menu_scripts.h"

#include "platform/clock.h"
#include "platform/dialog.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/front.h"
#include "platform/menu.h"
#include "platform/qt_window.h"
#include "platform/window.h"
#include "resources/dialog_ids.h"
#include "resources/ids.h"
#include "resources/menu.h"
#include "script/script.h"
#include "shell/main_window.h"
#include "shell/script_window.h"
#include "state/windows_write.h"
#include "support/picture_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>

namespace kelvo {
namespace {

using testing::HasSubstr;

class MenuScripts : public PictureTest {
  protected:
    void SetUp() override
    {
        SetDefaultDir(directory.Path());
        SetMenu(hWndMain, MainMenu());
        std::filesystem::create_directories(ScriptDirectory());
    }
    void TearDown() override
    {
        StopScriptBeside();
        if (HWND window = ScriptWindow()) EndDialog(window, 0);
        ResetMenuScripts();
        ResetScript();
    }

    static void Put(const std::string& name, const std::string& source)
    {
        PutFile(ScriptDirectory() + "/" + name, source);
    }
    static std::string ItemText(int place)
    {
        const auto item = GetMenuItem(hWndMain, kCmdScriptFirst + place);
        return item ? item->text : "";
    }
    static HWND ScriptWindow()
    {
        for (HWND dialog : WindowsOfKind(WindowKind::kDialog)) {
            if (DialogName(dialog) == "SCRIPT") return dialog;
        }
        return nullptr;
    }
    static std::string Text(int id) { return GetDlgItemText(ScriptWindow(), id); }
    // The loop runs until the script has ended.
    void RunToItsEnd(int place)
    {
        op->Do([place] { RunMenuScript(kCmdScriptFirst + place); });
        WaitForEnd();
    }
    void WaitForEnd()
    {
        op->Do([this] {
            DelayMs(10);  // with steps to do the operator leaves the clock no rest
            ScriptRunsBeside() ? WaitForEnd() : PostQuitMessage(0);
        });
    }
};

TEST_F(MenuScripts, StandInTheOrderOfTheirNames)
{
    Put("warm-up.lua", "");
    Put("a&b.lua", "");
    Put("notes.txt", "");
    Put(".hidden.lua", "");
    std::filesystem::create_directories(ScriptDirectory() + "/more.lua");
    ListScriptsInMenu();
    EXPECT_EQ(ItemText(0), "&1 a&&b");
    EXPECT_EQ(ItemText(1), "&2 warm-up");
    EXPECT_EQ(ItemText(2), "");
}

TEST_F(MenuScripts, AreReadAnewWhenTheMenuOpens)
{
    ListScriptsInMenu();
    EXPECT_EQ(ItemText(0), "(none)");
    Put("new.lua", "");
    MainWndProc(hWndMain, WM_INITMENUPOPUP, kCmdScriptFirst, 0);
    EXPECT_EQ(ItemText(0), "&1 new");
    std::filesystem::remove(ScriptDirectory() + "/new.lua");
    MainWndProc(hWndMain, WM_INITMENUPOPUP, kCmdRecentFirst, 0);
    EXPECT_EQ(ItemText(0), "&1 new") << "another menu opened";
    MainWndProc(hWndMain, WM_INITMENUPOPUP, kCmdScriptFirst, 0);
    EXPECT_EQ(ItemText(0), "(none)");
}

TEST_F(MenuScripts, MoreThanTheMenuHoldsAreTold)
{
    for (int i = 0; i < kScriptCount + 3; ++i) Put("s" + std::to_string(1000 + i) + ".lua", "");
    ListScriptsInMenu();
    EXPECT_EQ(ItemText(kScriptCount - 1), "s1063");
    EXPECT_EQ(ItemText(kScriptCount), "(3 more)");
    op->Do([] { RunMenuScript(kCmdScriptFirst + kScriptCount); });
    op->Do([] { PostQuitMessage(0); });
    RunMessageLoop(hWndMain);
    ASSERT_EQ(op->Boxes().size(), 1U);
    EXPECT_THAT(op->Boxes()[0].text, HasSubstr("67 scripts stand in"));
}

TEST_F(MenuScripts, NoneIsTold)
{
    op->Do([] { RunMenuScript(kCmdScriptFirst); });
    op->Do([] { PostQuitMessage(0); });
    RunMessageLoop(hWndMain);
    ASSERT_EQ(op->Boxes().size(), 1U);
    EXPECT_THAT(op->Boxes()[0].text, HasSubstr("There are no scripts."));
}

TEST_F(MenuScripts, PrintIntoTheirWindow)
{
    Put("work.lua",
        "print('20.5 \xC2\xB0"
        "C') wait(200) print('two')");
    RunToItsEnd(0);
    RunMessageLoop(hWndMain);
    ASSERT_NE(ScriptWindow(), nullptr);
    EXPECT_EQ(Text(kScriptState), "work.lua: finished");
    EXPECT_EQ(Text(kScriptText),
              "20.5 \xC2\xB0"
              "C\ntwo");
    EXPECT_FALSE(DlgItemEnabled(ScriptWindow(), kScriptStop));
    EXPECT_TRUE(DlgItemEnabled(ScriptWindow(), kScriptSave));
}

TEST_F(MenuScripts, StopByTheButtonOfTheWindow)
{
    Put("work.lua", "print('begins') while true do end");
    op->Do([] { RunMenuScript(kCmdScriptFirst); });
    op->Do([] {
        EXPECT_EQ(Text(kScriptState), "work.lua: running");
        EXPECT_TRUE(OperatePress(ScriptWindow(), kScriptStop));
    });
    WaitForEnd();
    RunMessageLoop(hWndMain);
    EXPECT_EQ(Text(kScriptState), "work.lua: stopped");
    EXPECT_EQ(Text(kScriptText), "begins");
}

TEST_F(MenuScripts, ErrorBringsTheWindowBack)
{
    Put("work.lua", "wait(50)\nerror('no frame')");
    op->Do([] { RunMenuScript(kCmdScriptFirst); });
    op->Do([] { OperatePress(ScriptWindow(), kScriptClose); });
    op->Do([] { EXPECT_EQ(ScriptWindow(), nullptr); });
    WaitForEnd();
    RunMessageLoop(hWndMain);
    ASSERT_NE(ScriptWindow(), nullptr);
    EXPECT_EQ(Text(kScriptState), "work.lua: failed");
    EXPECT_THAT(Text(kScriptText), HasSubstr("work.lua:2: no frame"));
}

TEST_F(MenuScripts, WhatDoesNotCompileIsToldInTheWindow)
{
    Put("work.lua", "print(");
    RunToItsEnd(0);
    RunMessageLoop(hWndMain);
    EXPECT_EQ(Text(kScriptState), "work.lua: failed");
    EXPECT_THAT(Text(kScriptText), HasSubstr("work.lua:1:"));
}

TEST_F(MenuScripts, OneThatIsGoneIsToldInTheWindow)
{
    Put("work.lua", "");
    ListScriptsInMenu();
    std::filesystem::remove(ScriptDirectory() + "/work.lua");
    RunToItsEnd(0);
    RunMessageLoop(hWndMain);
    EXPECT_EQ(Text(kScriptState), "work.lua: failed");
    EXPECT_THAT(Text(kScriptText), HasSubstr("can't be read"));
}

TEST_F(MenuScripts, SecondOneWaitsForTheFirstToEnd)
{
    Put("work.lua", "wait(1000)");
    op->Do([] { RunMenuScript(kCmdScriptFirst); });
    op->Do([] { RunMenuScript(kCmdScriptFirst); });
    WaitForEnd();
    RunMessageLoop(hWndMain);
    ASSERT_EQ(op->Boxes().size(), 1U);
    EXPECT_THAT(op->Boxes()[0].text, HasSubstr("work.lua is still running."));
}

TEST_F(MenuScripts, TextIsSavedWhole)
{
    Put("work.lua", "for i = 1, 3 do print(i) end");
    RunToItsEnd(0);
    RunMessageLoop(hWndMain);
    op->Do([] { OperatePress(ScriptWindow(), kScriptSave); });
    op->Do([this] { ChooseFiles({directory / "text"}); });
    op->Do([] { PostQuitMessage(0); });
    RunMessageLoop(hWndMain);
    EXPECT_EQ(ReadWholeFile(directory / "text.txt", 100), "1\n2\n3\n");
}

TEST_F(MenuScripts, TextThatCannotBeSavedIsTold)
{
    Put("work.lua", "print(1)");
    RunToItsEnd(0);
    RunMessageLoop(hWndMain);
    op->Do([] { OperatePress(ScriptWindow(), kScriptSave); });
    op->Do([this] {
        SetFault("disk", true);
        ChooseFiles({directory / "text"});
    });
    op->Do([] {
        SetFault("disk", false);
        PostQuitMessage(0);
    });
    RunMessageLoop(hWndMain);
    ASSERT_EQ(op->Boxes().size(), 1U);
    EXPECT_THAT(op->Boxes()[0].text, HasSubstr("Unable to write the text"));
    EXPECT_FALSE(FileExists(directory / "text.txt"));
}

}  // namespace
}  // namespace kelvo
