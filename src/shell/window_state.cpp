#include "shell/window_state.h"

#include "platform/application.h"
#include "platform/menu.h"
#include "platform/text.h"
#include "platform/window.h"
#include "platform/window_place.h"
#include "resources/ids.h"
#include "shell/start_options.h"
#include "state/windows.h"
#include "ui/window_file.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>

namespace kelvo {

namespace {

constexpr const char* kWindow = "Window";
constexpr const char* kView = "View";
constexpr const char* kTheme = "Theme";

struct ThemeItem {
    Theme theme;
    std::string_view name;  // in the file
    int command;
};
constexpr ThemeItem kThemes[] = {{Theme::kDesktop, "desktop", kCmdThemeDesktop},
                                 {Theme::kLight, "light", kCmdThemeLight},
                                 {Theme::kDark, "dark", kCmdThemeDark}};

struct PlaceField {
    const char* key;
    int WindowPlace::*value;
};
constexpr PlaceField kPlaceFields[] = {
    {"X", &WindowPlace::x}, {"Y", &WindowPlace::y}, {"Width", &WindowPlace::width}, {"Height", &WindowPlace::height}};
constexpr int kFarthest = 100'000;  // no desktop reaches so far

std::optional<WindowPlace> StoredPlace()
{
    WindowPlace place;
    for (const PlaceField& field : kPlaceFields) place.*field.value = WindowFileInt(kWindow, field.key, 0);
    place.maximised = WindowFileInt(kWindow, "Maximised", 1) != 0;
    const bool isSize = place.width > 0 && place.height > 0;
    const bool isNear = std::ranges::all_of(kPlaceFields, [&](const PlaceField& field) {
        return place.*field.value > -kFarthest && place.*field.value < kFarthest;
    });
    return isSize && isNear ? std::optional(place) : std::nullopt;
}

void CheckTheme(HWND window, Theme theme)
{
    for (const ThemeItem& item : kThemes) CheckMenuItem(window, item.command, item.theme == theme);
}

void ChooseTheme(Theme theme)
{
    ChangeTheme(theme);
    CheckTheme(hWndMain, theme);
    WriteWindowFile(kView, kTheme, std::ranges::find(kThemes, theme, &ThemeItem::theme)->name);
}

}  // namespace

void ShowMainWindow(HWND window)
{
    if (const std::optional<WindowPlace> place = StoredPlace()) {
        ShowWindowAt(window, *place);
    } else {
        ShowWindowMaximised(window);
    }
}

void KeepWindowPlace()
{
    const WindowPlace place = GetWindowPlace(hWndMain);
    if (place.width <= 0) return;  // it has gone already
    for (const PlaceField& field : kPlaceFields) {
        WriteWindowFile(kWindow, field.key, Format("%d", place.*field.value));
    }
    WriteWindowFile(kWindow, "Maximised", place.maximised ? "1" : "0");
}

void UseStoredTheme(HWND window)
{
    if (startOptions.theme) {  // in force already
        CheckTheme(window, *startOptions.theme);
        return;
    }
    const auto* const stored = std::ranges::find(kThemes, WindowFileText(kView, kTheme), &ThemeItem::name);
    const Theme theme = stored == std::end(kThemes) ? Theme::kDesktop : stored->theme;
    if (theme != Theme::kDesktop) ChangeTheme(theme);
    CheckTheme(window, theme);
}

void UseDesktopTheme()
{
    ChooseTheme(Theme::kDesktop);
}

void UseLightTheme()
{
    ChooseTheme(Theme::kLight);
}

void UseDarkTheme()
{
    ChooseTheme(Theme::kDark);
}

}  // namespace kelvo
