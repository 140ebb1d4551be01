// What another thread asks of the main one, and messages that are known by a name.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace kelvo {

// Runs the action on the main thread, as an event of its own, whichever thread asks; never where there is no
// application any more.
void RunOnMainThread(std::function<void()> action);

// The same number for the same name, beyond all numbers of platform/window.h.
std::uint32_t RegisterWindowMessage(std::string_view name);

}  // namespace kelvo
