#include "support/picture_fixture.h"

#include "display/display_pipeline.h"
#include "imagefile/header.h"
#include "platform/dialog.h"
#include "platform/menu.h"
#include "platform/profile.h"
#include "platform/window.h"
#include "resources/ids.h"
#include "shell/panel.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/windows.h"

#include <array>
#include <cstring>

namespace kelvo {

namespace {

std::vector<int> commandsSeen;

constexpr std::array<MenuEntry, 4> kMenu{{
    {MenuEntry::Kind::kTop, 0, "&Image"},
    {MenuEntry::Kind::kItem, kCmdNormalGray, "&Normal gray", {}, true},
    {MenuEntry::Kind::kItem, kCmdInvertedGray, "&Inverted gray", {}, true},
    {MenuEntry::Kind::kItem, kCmdNormalColor, "Normal &color", {}, true},
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
    ActiveCamera = 2;
    ActiveConfig.Hroi = 32;
    ActiveConfig.Vroi = 24;
    ActiveConfig.Xzoom = 3;
    ActiveConfig.Yzoom = 3;
    DisplayLow = 0;
    DisplayHigh = 16383;
    Contrast = 1;
    Brightness = 1000;

    RegisterWindowClass({"PICTURE", WindowProcedure, {}, false, 0x804020});
    hWndMain = CreateMainWindow("PICTURE", "Picture");
    SetMenu(hWndMain, kMenu);
    ShowWindowMaximised(hWndMain);
    const Rect client = GetClientRect(hWndMain);
    ClientWidth = static_cast<std::int16_t>(client.Width());
    ClientHeight = static_cast<std::int16_t>(client.Height());
    TextHeight = 20;
    ViewWidth = client.Width();
    ViewHeight = client.Height() - 60;
}

PictureTest::~PictureTest()
{
    DestroyWindow(hWndMain);
    hWndMain = nullptr;
    hDlgPanel = nullptr;
}

const std::vector<int>& PictureTest::Commands()
{
    return commandsSeen;
}

void PictureTest::View(int width, int height, const std::vector<std::int16_t>& counts)
{
    ImageHeader = {};
    ImageHeader.ImageWidth = static_cast<std::int16_t>(width);
    ImageHeader.ImageHeight = static_cast<std::int16_t>(height);
    ImageHeader.HeaderVersion = 8;
    ImageHeader.DisplayHigh = 16383;
    ImageHeader.TemperatureCold = -999.0F;
    ImageHeader.TemperatureHot = -999.0F;
    ImageBuffer.resize(counts.size() * 2);
    std::memcpy(ImageBuffer.data(), counts.data(), ImageBuffer.size());
    ViewingFile = 1;
    ViewFilePath = "picture.img";
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
