#include "config/settings_fixture.h"

#include "config/display_settings.h"
#include "config/settings.h"
#include "platform/profile.h"
#include "state/camera_config.h"
#include "state/windows.h"
#include "support/shown.h"

#include <gmock/gmock.h>

namespace kelvo {

void SettingsTest::SetUp()
{
    SetDefaultDir(directory.Path());
    ClientWidth = 1280;
    ClientHeight = 940;
    ActiveCamera = 2;
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
    ReadCameraConfig(ActiveCamera, 1, ActiveConfig);
    ReadDisplayKeys();
}

}  // namespace kelvo
