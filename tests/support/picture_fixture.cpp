#include "support/picture_fixture.h"

#include "display/display_pipeline.h"
#include "imagefile/header_write.h"
#include "platform/dialog.h"
#include "platform/menu.h"
#include "platform/profile.h"
#include "platform/window.h"
#include "resources/ids.h"
#include "shell/panel.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows_write.h"

#include <array>
#include <cstring>

namespace kelvo {

namespace {

std::vector<int> commandsSeen;

constexpr std::array<MenuEntry, 4> kMenu{{
    {MenuEntry::Kind::kTop, 0, "&Image"},
    {MenuEntry::Kind::kItem, kCmdNormalGray, "&Normal gray", {}, MenuEntry::Check::kRadio},
    {MenuEntry::Kind::kItem, kCmdInvertedGray, "&Inverted gray", {}, MenuEntry::Check::kRadio},
    {MenuEntry::Kind::kItem, kCmdNormalColor, "Normal &color", {}, MenuEntry::Check::kRadio},
}};

LRESULT WindowProcedure(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
        case WM_PAINT:
            RepaintPicture();
            return 0;
        case WM_COMMAND:
            commandsSeen.push_back(LowWord(wParam));
            return 0;
        default:
            return DefWindowProc(window, message, wParam, lParam);
    }
}

CommandLine Offscreen(double scale)
{
    CommandLine commandLine;
    commandLine.offscreen = true;
    commandLine.virtualTime = true;
    commandLine.scale = scale;
    return commandLine;
}

}  // namespace

PictureTest::PictureTest(double scale) : op(std::make_unique<TestOperator>(Offscreen(scale)))
{
    commandsSeen.clear();
    SetDefaultDir(directory.Path());
    write::camera.ActiveCamera = 2;
    write::camera.ActiveConfig.Hroi = 32;
    write::camera.ActiveConfig.Vroi = 24;
    write::camera.ActiveConfig.Xzoom = 3;
    write::camera.ActiveConfig.Yzoom = 3;
    write::display.DisplayLow = 0;
    write::display.DisplayHigh = 16383;
    write::display.Contrast = 1;
    write::display.Brightness = 1000;

    RegisterWindowClass({"PICTURE", WindowProcedure, {}, false, 0x804020});
    write::windows.hWndMain = CreateMainWindow("PICTURE", "Picture");
    SetMenu(hWndMain, kMenu);
    ShowWindowMaximised(hWndMain);
    const Rect client = GetClientRect(hWndMain);
    write::windows.ClientWidth = static_cast<std::int16_t>(client.Width());
    write::windows.ClientHeight = static_cast<std::int16_t>(client.Height());
    write::windows.TextHeight = 20;
    write::windows.ViewWidth = client.Width();
    write::windows.ViewHeight = client.Height() - 60;
}

PictureTest::~PictureTest()
{
    DestroyWindow(hWndMain);
    write::windows.hWndMain = nullptr;
    write::windows.hDlgPanel = nullptr;
}

const std::vector<int>& PictureTest::Commands()
{
    return commandsSeen;
}

void PictureTest::View(int width, int height, const std::vector<std::int16_t>& counts)
{
    write::file.ImageHeader = {};
    write::file.ImageHeader.ImageWidth = static_cast<std::int16_t>(width);
    write::file.ImageHeader.ImageHeight = static_cast<std::int16_t>(height);
    write::file.ImageHeader.HeaderVersion = 8;
    write::file.ImageHeader.DisplayHigh = 16383;
    write::file.ImageHeader.TemperatureCold = -999.0F;
    write::file.ImageHeader.TemperatureHot = -999.0F;
    write::frames.ImageBuffer.resize(counts.size() * 2);
    std::memcpy(write::frames.ImageBuffer.data(), counts.data(), ImageBuffer.size());
    write::frames.ViewingFile = 1;
    write::windows.ViewFilePath = "picture.img";
}

void PictureTest::DockPanel()
{
    ASSERT_TRUE(CreateDockedPanel("PANEL", hWndMain, PanelProc));
    ASSERT_TRUE(hDlgPanel);
}

std::uint32_t PictureTest::Shown(int x, int y)
{
    UpdateWindow(hWndMain);
    return ScreenColor({x, y});
}

std::string PictureTest::IniKey(const char* section, const char* key)
{
    return GetPrivateProfileString(section, key, "missing", IniFilePath);
}

std::string PictureTest::CameraKey(const char* key)
{
    return GetPrivateProfileString("Camera.2", key, "missing", CameraFilePath);
}

}  // namespace kelvo
