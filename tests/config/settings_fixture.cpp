#include "config/settings_fixture.h"

#include "config/display_settings.h"
#include "config/settings.h"
#include "imagefile/header.h"
#include "platform/box.h"
#include "platform/profile.h"
#include "platform/window.h"
#include "state/camera_config_write.h"
#include "state/windows_write.h"

namespace kelvo {

// No window stands here, and no setting asks for one.
[[gnu::weak]] Rect GetClientRect(HWND)
{
    ADD_FAILURE() << "the settings take the client size as the main window left it";
    return {};
}
[[gnu::weak]] Button MessageBox(HWND, std::string_view text, std::string_view, BoxIcon, BoxButtons)
{
    ADD_FAILURE() << "a box: " << text;
    return Button::kOk;
}
[[gnu::weak]] std::uint32_t ByteSwap = 0;
[[gnu::weak]] std::int32_t IrigEnable = 0;
[[gnu::weak]] SpiffHeaderRecord SpiffHeader;

void SettingsTest::SetUp()
{
    SetDefaultDir(directory.Path());
    write::windows.ClientWidth = 1280;
    write::windows.ClientHeight = 940;
    write::camera.ActiveCamera = 2;
}

void SettingsTest::PutKelvoIni(std::string_view contents)
{
    PutFile(IniFilePath, contents);
}

void SettingsTest::PutCameraIni(std::string_view contents)
{
    PutFile(CameraFilePath, contents);
}

void SettingsTest::ReadAll()
{
    ReadSetupKeys();
    ReadCameraConfig(ActiveCamera, 1, write::camera.ActiveConfig);
    ReadDisplayKeys();
}

}  // namespace kelvo
