// A main window whose procedure writes down what it gets, for the tests of the platform.
#pragma once

#include "platform/types.h"
#include "platform/window.h"
#include "support/operator.h"
#include "support/test_start.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <vector>

namespace kelvo {

struct SeenMessage {
    HWND window = nullptr;
    std::uint32_t message = 0;
    WPARAM wParam = 0;
    LPARAM lParam = 0;
};

inline std::vector<SeenMessage> seenMessages;
inline std::function<void(const SeenMessage&)> onMessage;  // empty: nothing is done
inline const bool isFresh = AtEachTestStart([] {
    seenMessages.clear();
    onMessage = nullptr;
});

inline LRESULT RecordingWndProc(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    seenMessages.push_back({window, message, wParam, lParam});
    if (onMessage) onMessage({window, message, wParam, lParam});
    if (message == WM_DESTROY) PostQuitMessage(0);
    return DefWindowProc(window, message, wParam, lParam);
}

// Those of one kind, in order.
inline std::vector<SeenMessage> Seen(std::uint32_t message)
{
    std::vector<SeenMessage> found;
    std::ranges::copy_if(seenMessages, std::back_inserter(found),
                         [=](const SeenMessage& seen) { return seen.message == message; });
    return found;
}

inline std::vector<WPARAM> SeenCommands()
{
    std::vector<WPARAM> ids;
    for (const SeenMessage& seen : Seen(WM_COMMAND)) ids.push_back(seen.wParam);
    return ids;
}

inline CommandLine OffscreenAt(double scale, Theme theme = Theme::kLight)
{
    CommandLine commandLine;
    commandLine.offscreen = true;
    commandLine.virtualTime = true;
    commandLine.scale = scale;
    commandLine.theme = theme;
    return commandLine;
}

// Shown and maximised, with the class "KELVO" and RecordingWndProc.
inline HWND ShowRecordingWindow()
{
    EXPECT_TRUE(RegisterWindowClass({.name = "KELVO", .procedure = RecordingWndProc, .icon = "1_LN2DEWAR"}));
    HWND window = CreateMainWindow("KELVO", "Kelvo");
    EXPECT_NE(window, nullptr);
    ShowWindowMaximised(window);
    return window;
}

// Runs the loop until the operator's steps are done and the program waits again.
inline void RunSteps(TestOperator& op, HWND window)
{
    op.Do([] { PostQuitMessage(0); });
    RunMessageLoop(window);
}

}  // namespace kelvo
