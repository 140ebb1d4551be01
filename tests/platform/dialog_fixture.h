// A main window offscreen, and an operator who acts each time the program waits.
#pragma once

#include "platform/application.h"
#include "platform/dialog.h"
#include "platform/front.h"
#include "platform/transcript.h"
#include "platform/window.h"
#include "support/operator.h"
#include "support/test_start.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

struct SeenMessage {
    std::uint32_t message = 0;
    WPARAM wParam = 0;
    LPARAM lParam = 0;
    friend bool operator==(const SeenMessage&, const SeenMessage&) = default;
};

inline SeenMessage Command(int id, int notification = kButtonClicked)
{
    return {WM_COMMAND, MakeLong(id, notification), 1};
}

// What the window procedures below have seen, newest last.
inline std::vector<SeenMessage> mainSaw;
inline std::vector<SeenMessage> dialogSaw;
// Called for each message to the dialog, after it was noted. Its result is the procedure's.
inline std::function<LRESULT(HWND, const SeenMessage&)> dialogRule;
inline const bool isFresh = AtEachTestStart([] {
    mainSaw.clear();
    dialogSaw.clear();
    dialogRule = nullptr;
});

inline LRESULT MainTestProc(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    mainSaw.push_back({message, wParam, lParam});
    return DefWindowProc(window, message, wParam, lParam);
}

inline LRESULT DialogTestProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    const SeenMessage seen{message, wParam, lParam};  // what the rule does may bring further messages
    dialogSaw.push_back(seen);
    return dialogRule ? dialogRule(dialog, seen) : 0;
}

class DialogFixture : public testing::Test {
  protected:
    void SetUp() override { Start({}); }

    void TearDown() override
    {
        EXPECT_TRUE(op == nullptr || op->AllDone());
        op.reset();
        dialogRule = nullptr;
    }

    void Start(CommandLine commandLine)
    {
        if (op != nullptr) return;
        commandLine.offscreen = true;
        commandLine.virtualTime = true;
        op = std::make_unique<TestOperator>(commandLine);
        RegisterWindowClass({.name = "TEST", .procedure = MainTestProc, .icon = {}});
        mainWindow = CreateMainWindow("TEST", "Test");
        ASSERT_NE(mainWindow, nullptr);
        ShowWindowMaximised(mainWindow);
        mainSaw.clear();
    }

    // Runs when the program next waits, after the steps given before.
    void Then(std::function<void()> step) { op->Do(std::move(step)); }

    std::unique_ptr<TestOperator> op;
    HWND mainWindow = nullptr;
};

inline std::vector<std::string> TranscriptOf(const std::string& kind)
{
    std::vector<std::string> lines;
    for (const TranscriptLine& line : TranscriptLines()) {
        if (line.kind == kind) lines.push_back(TranscriptJson(line));
    }
    return lines;
}

}  // namespace kelvo
