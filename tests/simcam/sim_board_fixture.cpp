#include "simcam/sim_board_fixture.h"

#include "grabber/board.h"
#include "platform/application.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state.h"
#include "state/windows_write.h"

namespace kelvo {

SimBoardTest::SimBoardTest()
{
    SetDefaultDir(directory.Path());
    CopyShippedFiles(DefaultDir);
    PutFile(directory / "platform.ini", "[Board]\nBoard=sim\n");
    PutFile(CameraFilePath, "[Camera.2]\ncnfFile=insb320.cnf\n");
    write::camera.ActiveCamera = 2;
    write::camera.ActiveConfig.Hroi = 320;
    write::camera.ActiveConfig.Vroi = 256;
    write::camera.ActiveConfig.Xzoom = 1;
    write::camera.ActiveConfig.Yzoom = 1;
    write::display.DisplayHigh = 16383;
    RegisterSimulatedBoard();
}

void SimBoardTest::Send(SimCamera& camera, std::initializer_list<WireFrame> frames)
{
    for (const WireFrame& frame : frames) AnswerSimFrame(camera, frame);
}

void SimBoardTest::SendClockIndex(SimCamera& camera, int index)
{
    Send(camera, {{0x50, 0, 0, static_cast<std::uint8_t>(index)}});
}

void SimBoardTest::OpenAt100Hz()
{
    ASSERT_EQ(init_itex(), 1);
    camera = CurrentSimCamera();
    ASSERT_TRUE(camera);
    SendClockIndex(*camera, 2);
    Send(*camera, {{0x50, 1, 50, 100}, {0x90, 0x30, 0, 0}});
    ASSERT_EQ(SimFramePeriodUs(*camera), 10'000);
}

std::vector<std::int16_t> SimBoardTest::Expected(std::int64_t number, std::int64_t timeUs) const
{
    std::vector<std::int16_t> frame(320UL * 256UL);
    ReadSimFrame(*camera, number, timeUs, 320, 256, frame);
    return frame;
}

}  // namespace kelvo
