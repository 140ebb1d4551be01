// The settings that a first start finds.
#include "config/settings.h"
#include "config/settings_fixture.h"
#include "display/lookup_table.h"
#include "platform/profile.h"
#include "state/display_state.h"
#include "state/windows.h"
#include "support/shipped_file.h"

#include <algorithm>
#include <filesystem>

namespace kelvo {
namespace {

class ShippedDefaults : public SettingsTest {
  protected:
    void SetUp() override
    {
        SettingsTest::SetUp();
        for (const char* name : {"kelvo.ini", "camera.ini", "platform.ini", "buffbrd.ini"}) {
            ASSERT_TRUE(std::filesystem::copy_file(ShippedFile(name), directory / name)) << name;
        }
    }

    std::string Machine(const char* section, const char* key)
    {
        return GetPrivateProfileString(section, key, "missing", directory / "platform.ini");
    }
};

TEST_F(ShippedDefaults, TheActiveCameraIsTheInSbViewer)
{
    ReadAll();
    EXPECT_EQ(ActiveCamera, 2);
    EXPECT_EQ(ActiveConfig.Hroi, 320);
    EXPECT_EQ(ActiveConfig.Hactive, 320);
    EXPECT_EQ(ActiveConfig.Vroi, 256);
    EXPECT_EQ(ActiveConfig.Vactive, 256);
    EXPECT_EQ(ActiveConfig.UnityGain, 16384);
    EXPECT_EQ(ActiveConfig.UnityOffset, 8192);
    EXPECT_EQ(ActiveConfig.ZeroOffset, 0);
    EXPECT_EQ(ActiveConfig.DecomScheme, 2);
    EXPECT_EQ(ActiveConfig.BufferCapture, 1);
    EXPECT_EQ(nCommPort, 2);
    EXPECT_EQ(Xzoom, 3);
    EXPECT_EQ(Yzoom, 3);
    EXPECT_EQ(ActiveConfig.Description.find("J108"), std::string::npos);
}

// The simulated cameras' scene runs from 21.5 degrees at the top to 26.5 degrees in the disc, good detectors within 300
// counts of the mean; 20 degrees stands at 7500 counts, a degree is 250 and up to 290 at the warm end. The window shows
// all of the background and the mean of the disc, and is no wider than twice that.
TEST_F(ShippedDefaults, TheDisplayShowsTheLiveSceneWell)
{
    ReadAll();
    EXPECT_EQ(ImageColor, 1230);
    const LutWindow window = WindowOf(16383, Contrast, Brightness);
    EXPECT_LT(window.start, 7500 + 250 * 1.5 - 300);
    EXPECT_GT(window.end, 7500 + 250 * 6.5);
    EXPECT_LT(window.end - window.start, 2 * (250 * 5 + 300));
}

TEST_F(ShippedDefaults, TheOtherCamerasAreDescribed)
{
    struct Case {
        int number, width, height, port, zoom;
        bool hgCdTe;
    };
    for (const Case& each : {Case{1, 640, 512, 1, 2, false}, Case{3, 64, 64, 3, 8, true}}) {
        CameraConfig record;
        ReadCameraConfig(each.number, 1, record);
        EXPECT_EQ(record.Hroi, each.width);
        EXPECT_EQ(record.Hactive, each.width);
        EXPECT_EQ(record.Vroi, each.height);
        EXPECT_EQ(record.Vactive, each.height);
        EXPECT_EQ(nCommPort, each.port);
        EXPECT_EQ(record.Xzoom, each.zoom);
        EXPECT_EQ(record.Yzoom, each.zoom);
        EXPECT_EQ(record.Description.find("J108") != std::string::npos, each.hgCdTe);
        EXPECT_EQ(record.UnityGain, 16384);
        EXPECT_EQ(record.UnityOffset, 8192);
    }
}

TEST_F(ShippedDefaults, TheSimulatedCamerasAndTheirBoardAreWired)
{
    EXPECT_EQ(Machine("Ports", "COM1"), "sim:insb640.cnf");
    EXPECT_EQ(Machine("Ports", "COM2"), "sim:insb320.cnf");
    EXPECT_EQ(Machine("Ports", "COM3"), "sim:hgcdte64.cnf");
    EXPECT_EQ(Machine("Ports", "COM4"), "sim:insb320x4.cnf");
    EXPECT_EQ(Machine("Board", "Board"), "sim");
}

TEST_F(ShippedDefaults, EveryCameraHasTheSameKeys)
{
    for (const char* key : {"Description", "Vtotal", "Htotal", "Xoffset", "SignalMultiplier", "VoltsPerCountVsGain"}) {
        for (const char* section : {"Camera.1", "Camera.2", "Camera.3", "Camera.4"}) {
            EXPECT_TRUE(HasProfileKey(section, key, CameraFilePath)) << section << ' ' << key;
        }
    }
}

TEST_F(ShippedDefaults, ReadingThemChangesNoFile)
{
    ReadAll();
    EXPECT_FALSE(ProfilesPending());
}

}  // namespace
}  // namespace kelvo
