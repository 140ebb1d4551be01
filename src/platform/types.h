// What all platform headers share. A window is known by its handle alone; what stands behind it is the toolkit's
// business.
#pragma once

#include <cstdint>

namespace kelvo {

struct Window;  // defined beside the toolkit
using HWND = Window*;

using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;
using WindowProc = LRESULT (*)(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam);

// Logical pixels; right and bottom are exclusive.
struct Rect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
    bool Empty() const { return right <= left || bottom <= top; }
    friend bool operator==(const Rect&, const Rect&) = default;
};

struct Point {
    int x = 0;
    int y = 0;
    friend bool operator==(const Point&, const Point&) = default;
};

// Two 16-bit halves in one parameter, as window messages carry them.
constexpr std::uintptr_t MakeLong(int low, int high)
{
    return static_cast<std::uintptr_t>(static_cast<std::uint16_t>(low)) |
           (static_cast<std::uintptr_t>(static_cast<std::uint16_t>(high)) << 16);
}
constexpr int LowWord(std::uintptr_t value)
{
    return static_cast<int>(value & 0xFFFF);
}
constexpr int HighWord(std::uintptr_t value)
{
    return static_cast<int>((value >> 16) & 0xFFFF);
}
constexpr int SignedLowWord(std::uintptr_t value)
{
    return static_cast<std::int16_t>(value & 0xFFFF);
}
constexpr int SignedHighWord(std::uintptr_t value)
{
    return static_cast<std::int16_t>((value >> 16) & 0xFFFF);
}

}  // namespace kelvo
