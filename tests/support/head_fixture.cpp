#include "support/head_fixture.h"

#include "config/settings.h"
#include "head/comm_link_write.h"
#include "head/identify_head.h"
#include "head/program_head.h"
#include "head/video_settings.h"
#include "platform/profile.h"
#include "state/camera_config_write.h"
#include "state/frame_state_write.h"
#include "state/windows.h"

namespace kelvo {

const std::string_view kInSbSection =
    "Description=InSb 320 x 256\nHactive=320\nVactive=256\nHroi=320\nVroi=256\nDecomScheme=2\nnCommPort=2\n"
    "IndexFrameRate=3\nIndexIntegrationTime=10,11,12,13\nQVF1058_Gain0=4\nQVF1058_DAC0=160\nQVF1058_DAC5=7\n";

const std::string_view kHgCdTeSection =
    "Description=HgCdTe 64 x 64 (J108)\nHactive=64\nVactive=64\nHroi=64\nVroi=64\nDecomScheme=2\nnCommPort=2\n"
    "IndexFrameRate=3\nIndexIntegrationTime=10\nQVF1058_Gain0=0\nQVF1058_AdDelay=2\n";

void HeadTest::SetUp()
{
    head = std::make_unique<ScriptedHead>();
    Wire("sim:head.cnf");
    PutSection(kInSbSection);
    write::frames.CameraOn = 0;
}

void HeadTest::PutSection(std::string_view lines)
{
    FlushProfiles();
    PutFile(CameraFilePath, "[Camera.2]\n" + std::string(lines));
    ForgetProfile(CameraFilePath);
    ReadCameraConfig(2, 1, write::camera.ActiveConfig);
    LoadVideoSettings();
}

void HeadTest::PutSetup(std::string_view lines)
{
    FlushProfiles();
    PutFile(IniFilePath, "[Setup]\n" + std::string(lines));
    ForgetProfile(IniFilePath);
}

void HeadTest::Wire(std::string_view device)
{
    WritePrivateProfileString("Ports", "COM2", device, DefaultDir + "/platform.ini");
}

void HeadTest::IdentifyAsInSb()
{
    head->BeInSb();
    ASSERT_EQ(IdentifyCameraHead(), 1);
    head->Taken();
}

void HeadTest::IdentifyAsHgCdTe()
{
    head->BeHgCdTe();
    ASSERT_EQ(IdentifyCameraHead(), 1);
    head->Taken();
}

Frames HeadTest::Programming(std::int32_t& result)
{
    if (!CommPortOpen) write::link.CommPortOpen = OpenCommLink();
    head->Taken();
    result = LoadCameraHead();
    return head->Taken();
}

}  // namespace kelvo
