// Which handles there are: every window of the program, by its widget.

#include "platform/qt_window.h"
#include "platform/timers.h"

#include <algorithm>

namespace kelvo {

namespace {

std::vector<std::unique_ptr<Window>> windows;  // oldest first
std::uint64_t nextSerial = 1;

}  // namespace

HWND RegisterWindow(WindowKind kind, QWidget* widget, WindowProc procedure, HWND parent)
{
    auto window = std::make_unique<Window>();
    window->kind = kind;
    window->widget = widget;
    window->procedure = procedure;
    window->parent = parent;
    window->serial = nextSerial++;
    windows.push_back(std::move(window));
    return windows.back().get();
}

void ForgetWindow(HWND window)
{
    if (!IsWindow(window)) return;
    KillTimersOf(window);
    std::erase_if(windows, [=](const auto& entry) { return entry.get() == window; });
}

bool IsWindow(HWND window)
{
    return window && std::ranges::any_of(windows, [=](const auto& entry) { return entry.get() == window; });
}

HWND WindowOf(const QWidget* widget)
{
    for (; widget; widget = widget->parentWidget()) {
        for (const auto& window : windows) {
            if (window->widget == widget || (window->frame && window->frame == widget)) return window.get();
        }
    }
    return nullptr;
}

HWND MainWindow()
{
    const auto found = std::ranges::find(windows, WindowKind::kMain, [](const auto& entry) { return entry->kind; });
    return found == windows.end() ? nullptr : found->get();
}

std::vector<HWND> WindowsOfKind(WindowKind kind)
{
    std::vector<HWND> result;
    for (const auto& window : windows) {
        if (window->kind == kind) result.push_back(window.get());
    }
    return result;
}

std::vector<HWND> AllWindows()
{
    std::vector<HWND> result;
    result.reserve(windows.size());
    for (const auto& window : windows) result.push_back(window.get());
    return result;
}

std::vector<HWND> ChildrenOf(HWND parent)
{
    std::vector<HWND> result;
    for (const auto& window : windows) {
        if (window->parent == parent) result.push_back(window.get());
    }
    return result;
}

void ForgetWindows()
{
    KillAllTimers();
    windows.clear();
}

}  // namespace kelvo
