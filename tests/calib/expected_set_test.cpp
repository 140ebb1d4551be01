// A whole two-point run from kept frames, against files that another program worked out (expected_set.py).
#include "calib/two_point_run.h"
#include "grabber/board.h"
#include "platform/dialog.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "state/cal_settings_write.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "support/calibration_fixture.h"
#include "support/recording_board.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace kelvo {
namespace {

// An array whose counts rise with flux, and one whose counts fall, through 0, and of which some detectors rise.
class ExpectedSet : public CalibrationTest, public testing::WithParamInterface<const char*> {
  protected:
    const std::string kept = KELVO_EXPECTED + std::string(GetParam());

    void SetUp() override
    {
        CalibrationTest::SetUp();
        PutSection(
            "Hactive=320\nVactive=256\nHroi=32\nVroi=24\nDecomScheme=7\nnCommPort=2\nnumBufFrames=4\n"
            "IndexFrameRate=3\nIndexIntegrationTime=10\nUnityGain=16384\nUnityOffset=8192\nNumOutputs=4\n"
            "QVF1058_MasterClockFrequency=48000000\nQVF1058_MasterClockMinIndex=2\nQVF1058_MasterClockMaxIndex=63\n");
        FrameSizeChanged();
        PutFile(InDirectory("nearccw.prs"), "row,col\n0,1\n-1,0\n0,-1\n1,0\n-1,1\n-1,-1\n1,-1\n1,1\n");
        write::frames.LiveVideo = 1;
        write::display.SubstBadPixels = 1;
        write::calSet.ReplaceNoisy = 1;
        write::calSet.CalSettings.PRSfile = InDirectory("nearccw.prs");
        write::calSet.CalSettings.NumFrames = 5;
        write::calSet.CalSettings.AllowedNoiseLevel = 30.0F;
    }

    std::vector<std::vector<std::int16_t>> Frames(const std::string& name) const
    {
        const std::string bytes = FileContents(kept + "/" + name);
        std::vector<std::vector<std::int16_t>> frames(5, std::vector<std::int16_t>(768));
        EXPECT_EQ(bytes.size(), 5 * 768 * sizeof(std::int16_t));
        for (std::size_t i = 0; i < frames.size(); ++i) {
            std::memcpy(frames[i].data(), bytes.data() + i * 1536, 1536);
        }
        return frames;
    }
    void Source(int edit, const char* temperature, const std::string& frames)
    {
        op->Do([=, this] {
            SetBoardFrames(Frames(frames));
            OperateText(DialogInFront(), edit, temperature);
            OperatePress(DialogInFront(), kIdOk);
        });
    }
    void Run()
    {
        Source(1224, "20", "low.raw");
        Source(1226, "25", "high.raw");
        ASSERT_EQ(TwoPointCalibrate(hWndMain, ActiveConfig, write::calSet.CalDone), 1);
    }
    // Section Calibration of the .cal, with the set's own path as its name.
    std::string CalSection() const
    {
        std::string text = FileContents(InDirectory("Last.cal"));
        text.erase(0, text.find("[Calibration]"));
        if (const std::size_t next = text.find("\n["); next != std::string::npos) text.erase(next + 1);
        const std::string path = directory / "";
        for (std::size_t at = text.find(path); at != std::string::npos; at = text.find(path))
            text.erase(at, path.size());
        return text;
    }
};

TEST_P(ExpectedSet, FilesAreThoseOfTheIndependentCalculation)
{
    Run();
    for (const char* name : {"Last.gai", "Last.off", "Last.noi", "Last.bad", "Last.dcm"}) {
        EXPECT_EQ(FileContents(InDirectory(name)), FileContents(kept + "/" + name)) << name;
    }
    EXPECT_EQ(CalSection(), FileContents(kept + "/calibration.txt"));
}

// What is kept is what the script makes. NumPy is one of the system's packages, so that its own Python has it.
TEST_P(ExpectedSet, KeptFilesAreThoseOfTheScript)
{
    const std::string command = "/usr/bin/python3 " KELVO_EXPECTED_SCRIPT " " + kept + " " + directory.Path();
    ASSERT_EQ(std::system(command.c_str()), 0);
    for (const char* name : {"Last.gai", "Last.off", "Last.noi", "Last.bad", "Last.dcm", "calibration.txt"}) {
        EXPECT_EQ(FileContents(InDirectory(name)), FileContents(kept + "/" + name)) << name;
    }
}

// In the falling array there are gains of both signs, means below zero, and detectors of each kind of rejection.
TEST(ExpectedFallingSet, HoldsWhatItIsFor)
{
    const auto bytes = FileContents(KELVO_EXPECTED "/falling/Last.gai");
    std::vector<float> gains(bytes.size() / sizeof(float));
    std::memcpy(gains.data(), bytes.data(), gains.size() * sizeof(float));
    ASSERT_EQ(gains.size(), 768U);
    EXPECT_EQ(std::ranges::count_if(gains, [](float gain) { return gain < 0; }), 2);
    EXPECT_GT(std::ranges::count_if(gains, [](float gain) { return gain > 0; }), 700);
    EXPECT_GE(std::ranges::count(gains, 0.0F), 9);
    EXPECT_NE(FileContents(KELVO_EXPECTED "/falling/calibration.txt").find("IntensityHot=-"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Arrays, ExpectedSet, testing::Values("", "/falling"),
                         [](const auto& array) { return std::string(*array.param ? "Falling" : "Rising"); });

}  // namespace
}  // namespace kelvo
