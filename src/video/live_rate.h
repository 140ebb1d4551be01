// The rate at which live video runs, for the status line: over 101 frames on end.
#pragma once

#include <optional>

namespace kelvo {

// A live frame has been displayed. Hz, rounded down, at the 101st since the rate began, where it begins anew.
std::optional<int> CountLiveFrame();

// Live video stands still, or isn't displayed: that time is no part of the rate, which begins with the next frame.
void RestartLiveRate();

}  // namespace kelvo
