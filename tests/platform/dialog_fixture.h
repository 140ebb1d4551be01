// A main window offscreen, and an operator who acts each time the program waits.
#pragma once

#include "platform/application.h"
#include "platform/dialog.h"
#include "platform/front.h"
#include "platform/transcript.h"
#include "platform/window.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

inline LRESULT MainTestProc(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    mainSaw.push_back({message, wParam, lParam});
    return DefWindowProc(window, message, wParam, lParam);
}

inline LRESULT DialogTestProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    dialogSaw.push_back({message, wParam, lParam});
    return dialogRule ? dialogRule(dialog, dialogSaw.back()) : 0;
}

class DialogFixture : public testing::Test {
  protected:
    void SetUp() override { Start({}); }
    void TearDown() override { SetIdleHook(nullptr); }

    void Start(CommandLine commandLine)
    {
        commandLine.offscreen = true;
        commandLine.virtualTime = true;
        StartApplication(commandLine);
        RegisterWindowClass({.name = "TEST", .procedure = MainTestProc, .icon = {}});
        mainWindow = CreateMainWindow("TEST", "Test");
        ASSERT_NE(mainWindow, nullptr);
        ShowWindowMaximised(mainWindow);
        mainSaw.clear();
    }

    // Each step runs once, in order, when the program waits; a step may open boxes, in which the next one runs.
    void Then(std::function<void()> step)
    {
        steps_.push_back(std::move(step));
        SetIdleHook([this] {
            if (next_ == steps_.size() || stepPosted_) return;
            stepPosted_ = true;
            PostAction([this] {
                stepPosted_ = false;
                const auto now = steps_[next_++];
                now();
            });
        });
    }

    bool AllStepsRan() const { return next_ == steps_.size(); }

    HWND mainWindow = nullptr;

  private:
    std::vector<std::function<void()>> steps_;
    std::size_t next_ = 0;
    bool stepPosted_ = false;
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
