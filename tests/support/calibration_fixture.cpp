#include "support/calibration_fixture.h"

#include "calib/calibration_set.h"
#include "calib/last_set.h"
#include "grabber/board.h"
#include "platform/dialog.h"
#include "platform/files.h"
#include "platform/front.h"
#include "platform/menu.h"
#include "platform/profile.h"
#include "resources/menu.h"
#include "state/cal_settings.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "support/recording_board.h"

#include <gtest/gtest.h>

#include <memory>

namespace kelvo {

namespace {

template <typename Entry>
void PutEntries(const std::string& path, const std::vector<Entry>& entries)
{
    const auto* const bytes = reinterpret_cast<const char*>(entries.data());
    PutFile(path, {bytes, entries.size() * sizeof(Entry)});
}

}  // namespace

void CalibrationTest::SetUp()
{
    HeadTest::SetUp();
    RegisterQuietBoard();
    WritePrivateProfileString("Board", "Board", "recording", DefaultDir + "/platform.ini");
    SetMenu(hWndMain, MainMenu());
    PutSetup("ActiveCamera=2\nMark=of the machine\n");
    PutSection(
        "Hactive=320\nVactive=256\nHroi=4\nVroi=2\nDecomScheme=0\nnCommPort=2\nnumBufFrames=0\nIndexFrameRate=3\n"
        "IndexIntegrationTime=10\nUnityGain=16384\nUnityOffset=8192\nQVF1058_MasterClockFrequency=48000000\n"
        "QVF1058_MasterClockMinIndex=2\nQVF1058_MasterClockMaxIndex=63\n");
    IdentifyAsInSb();
    init_itex();
    write::frames.CameraOn = 1;
    write::display.SubstBadPixels = 1;
    LoadCalibrationSettings();
    TakeBoardCalls();
}

void CalibrationTest::PutSet(const std::string& calPath, std::string_view calText)
{
    PutFile(calPath, calText);
    PutGains(SetFile(calPath, ".gai"), {1.0F, 1.25F, 1.5F, 1.75F, 2.0F, 2.25F, 2.5F, 2.75F});
    PutOffsets(SetFile(calPath, ".off"), {100, 101, 102, 103, 104, 105, 106, 107});
    PutTable(SetFile(calPath, ".dcm"), {7, 6, 5, 4, 3, 2, 1, 0});
    PutFile(SetFile(calPath, ".noi"), "noise of each one");
}

void CalibrationTest::PutGains(const std::string& path, const std::vector<float>& gains)
{
    PutEntries(path, gains);
}

void CalibrationTest::PutOffsets(const std::string& path, const std::vector<std::int16_t>& offsets)
{
    PutEntries(path, offsets);
}

void CalibrationTest::PutTable(const std::string& path, const std::vector<std::uint32_t>& table)
{
    PutEntries(path, table);
}

std::string CalibrationTest::KeyOf(const std::string& file, const char* section, const char* key)
{
    return GetPrivateProfileString(section, key, "missing", file);
}

void CalibrationTest::Work(const std::function<void()>& open, std::function<void(HWND)> work,
                           std::function<void(HWND)> then)
{
    const auto ended = std::make_shared<bool>(false);
    op->Do([work = std::move(work)] { work(DialogInFront()); });
    if (then) op->Do([then = std::move(then)] { then(DialogInFront()); });
    op->Do([ended] {
        if (!*ended && DialogInFront()) OperatePress(DialogInFront(), kIdCancel);
    });
    open();
    *ended = true;
}

}  // namespace kelvo
