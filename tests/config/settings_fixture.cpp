#include "config/settings_fixture.h"

#include "config/display_settings.h"
#include "config/settings.h"
#include "platform/profile.h"
#include "state/camera_config_write.h"
#include "state/windows_write.h"
#include "support/shown.h"

#include <gmock/gmock.h>

namespace kelvo {

void SettingsTest::SetUp()
{
    SetDefaultDir(directory.Path());
    write::windows.ClientWidth = 1280;
    write::windows.ClientHeight = 940;
    write::camera.ActiveCamera = 2;
}

void SettingsTest::TearDown()
{
    EXPECT_THAT(BoxesShown(), testing::IsEmpty());
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
