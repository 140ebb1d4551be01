// What stands in front of the camera.
#include "simcam/sim_scene.h"
#include "simcam/sim_settings.h"
#include "support/camera_fixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>

namespace kelvo {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class SimScene : public SimCameraTest {
  protected:
    void SetUp() override
    {
        SimCameraTest::SetUp();
        Open("insb320.cnf");
        Program320x256();
    }
    std::int16_t At(const Counts& frame, int x, int y) const
    {
        return frame[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
    }
    // Each pixel in °C by its own two points, 20 and 40 °C: what an operator's correction makes of it. Warmer than
    // 20 °C by how much, along the straight line between the points.
    std::vector<double> Corrected(std::int64_t timeUs)
    {
        PutSimSource(*camera, SimSource::kLow);
        const Pixels low = Gather(0, 32);
        PutSimSource(*camera, SimSource::kHigh);
        SetSimSourceDegrees(*camera, SimSource::kHigh, 40);
        const Pixels high = Gather(100, 32);
        PutSimSource(*camera, SimSource::kScene);
        const Counts frame = Frame(1000, timeUs);
        std::vector<double> degrees;
        for (std::size_t i = 0; i < frame.size(); ++i) {
            const double span = high.mean[i] - low.mean[i];
            degrees.push_back(span > 1000 ? 20 + 20 * (frame[i] - low.mean[i]) / span : NAN);
        }
        return degrees;
    }
    // Mean over a block of 9 x 9 around a place, without what can't be corrected.
    double Around(const std::vector<double>& degrees, double across, double down) const
    {
        std::vector<double> values;
        const int x0 = static_cast<int>(across * width);
        const int y0 = static_cast<int>(down * height);
        for (int y = y0 - 4; y <= y0 + 4; ++y) {
            for (int x = x0 - 4; x <= x0 + 4; ++x) {
                const double value = degrees[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                                             static_cast<std::size_t>(x)];
                if (!std::isnan(value)) values.push_back(value);
            }
        }
        std::ranges::sort(values);
        return values[values.size() / 2];
    }
};

TEST_F(SimScene, TheSourceStaysUntilAnotherIsChosen)
{
    EXPECT_EQ(SimSourceInFront(*camera), SimSource::kScene);  // as the file says
    PutSimSource(*camera, SimSource::kHigh);
    EXPECT_EQ(SimSourceInFront(*camera), SimSource::kHigh);
    EXPECT_EQ(SimSourceDegrees(*camera, SimSource::kLow), 20);
    EXPECT_EQ(SimSourceDegrees(*camera, SimSource::kHigh), 25);
}

TEST_F(SimScene, TemperaturesOutsideTheBenchAreRefused)
{
    for (const double degrees : {-40.01, 150.01, std::nan(""), HUGE_VAL}) {
        EXPECT_FALSE(SetSimSourceDegrees(*camera, SimSource::kLow, degrees)) << degrees;
    }
    EXPECT_EQ(SimSourceDegrees(*camera, SimSource::kLow), 20);
    EXPECT_TRUE(SetSimSourceDegrees(*camera, SimSource::kLow, -40));
    EXPECT_TRUE(SetSimSourceDegrees(*camera, SimSource::kLow, 150));
}

TEST_F(SimScene, AWarmerSourceGivesMoreCountsAtOnce)
{
    PutSimSource(*camera, SimSource::kLow);
    const Counts before = Frame(5);
    SetSimSourceDegrees(*camera, SimSource::kLow, 25);
    const Counts after = Frame(5);
    EXPECT_GT(At(after, 100, 100), At(before, 100, 100) + 1000);
}

// At 0 s the disc stands at (0.5, 0.45 + 0.28); its middle is 4 °C above the background of 22 °C. The straight line
// between the two points lies above the true curve: by up to 1.2 °C at 26 °C.
TEST_F(SimScene, TheDiscIsWarmAndMoves)
{
    const std::vector<double> start = Corrected(0);
    EXPECT_GT(Around(start, 0.5, 0.73) - Around(start, 0.1, 0.5), 2.5);
    // A quarter of its way across, 2.25 s: at 0.85 across and 0.45 + 0.28 cos(2 pi 2.25 / 7) down = 0.329.
    const std::vector<double> later = Corrected(2250000);
    EXPECT_LT(std::fabs(Around(later, 0.5, 0.66) - Around(later, 0.1, 0.5)), 0.3);
    EXPECT_GT(Around(later, 0.85, 0.329) - Around(later, 0.1, 0.5), 2.5);
}

// At 10 s the four bars stand from 1 - 0.5 x 1.21 = 0.395 on, each 0.03 wide with gaps of the same width.
TEST_F(SimScene, TheBarsAreSeenOnceCorrected)
{
    const std::vector<double> degrees = Corrected(10000000);
    for (int bar = 0; bar < 4; ++bar) {
        const double middle = 0.395 + 0.06 * bar + 0.015;
        EXPECT_GT(Around(degrees, middle, 0.8) - Around(degrees, middle - 0.03, 0.8), 0.4) << bar;
    }
}

TEST_F(SimScene, TheSceneIsAFunctionOfTime)
{
    PutSimSource(*camera, SimSource::kScene);
    const Counts first = Frame(9, 3000000);
    EXPECT_NE(Frame(9, 4000000), first);
    EXPECT_EQ(Frame(9, 3000000), first);
}

class SimRawScene : public SimScene {
  protected:
    // Two frames of 8 columns x 4 rows: the first at 1000 but for the sample at column 6, row 1; the second all 1000.
    void PutRaw(const std::string& name)
    {
        std::string bytes;
        for (int i = 0; i < 64; ++i) {
            const int value = i == 14 ? 1100 : 1000;
            bytes.push_back(static_cast<char>(value & 0xFF));
            bytes.push_back(static_cast<char>(value >> 8));
        }
        PutFile(directory / name, bytes);
    }
};

// Mean 1003.125, 20 counts a degree: the warm sample is 5 °C above the others. Detectors 240 to 279 by 64 to 127 see
// it.
TEST_F(SimRawScene, RawFramesCoverTheArrayAndFollowOneAnother)
{
    PutRaw("x.raw");
    EXPECT_THAT(LoadSimRawFrames(*camera, directory / "x.raw", 8, 4), IsEmpty());
    PutSimSource(*camera, SimSource::kRaw);
    const Counts warm = Frame(1, 0);
    const Counts cool = Frame(1, 120000);  // 9 frames a second: the second frame
    int warmer = 0;
    int inside = 0;
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < 320; ++x) {
            if (At(warm, x, y) - At(cool, x, y) < 600) continue;
            ++warmer;
            if (x >= 240 && x < 280 && y >= 64 && y < 128) ++inside;
        }
    }
    EXPECT_EQ(warmer, inside);
    EXPECT_GT(inside, 40 * 64 * 97 / 100);
    EXPECT_EQ(Frame(1, 230000), warm);  // again from the start
}

TEST_F(SimRawScene, TheSizeComesFromTheCallTheSettingsOrTheName)
{
    PutRaw("fire_8x4.raw");
    EXPECT_THAT(LoadSimRawFrames(*camera, directory / "fire_8x4.raw", 0, 0), IsEmpty());
    PutRaw("plain.raw");
    EXPECT_THAT(LoadSimRawFrames(*camera, directory / "plain.raw", 0, 0), HasSubstr("name doesn't tell the size"));
    EXPECT_THAT(LoadSimRawFrames(*camera, directory / "plain.raw", 8, 0), HasSubstr("from 1 to 4096"));
    PutCopyWith("insb320.cnf", "sized.cnf", "RawColumns=8");
    PutCopyWith("sized.cnf", "sized.cnf", "RawRows=4");
    PutCopyWith("sized.cnf", "sized.cnf", "RawFile=plain.raw");
    PutCopyWith("sized.cnf", "sized.cnf", "Source=raw");
    Open("sized.cnf");
    EXPECT_EQ(SimSourceInFront(*camera), SimSource::kRaw);
    const RawSize size = RawSizeOfName("/a/b_640x512_12.raw").value_or(RawSize{});
    EXPECT_EQ(size.columns, 640);
    EXPECT_EQ(size.rows, 512);
    EXPECT_FALSE(RawSizeOfName("/a_8x4/scene.raw"));
    EXPECT_FALSE(RawSizeOfName("x.raw"));
    EXPECT_FALSE(RawSizeOfName("99999999999999x4.raw"));
}

TEST_F(SimRawScene, WhatIsNoWholeFrameIsToldAndKeepsTheScene)
{
    PutRaw("good.raw");
    ASSERT_THAT(LoadSimRawFrames(*camera, directory / "good.raw", 8, 4), IsEmpty());
    PutSimSource(*camera, SimSource::kRaw);
    const Counts before = Frame(3, 0);
    EXPECT_THAT(LoadSimRawFrames(*camera, directory / "none.raw", 8, 4), HasSubstr("can't be read"));
    EXPECT_THAT(LoadSimRawFrames(*camera, directory / "good.raw", 7, 4), HasSubstr("whole frames of 7 x 4"));
    EXPECT_THAT(LoadSimRawFrames(*camera, directory / "good.raw", -8, -4), HasSubstr("from 1 to 4096"));
    EXPECT_THAT(LoadSimRawFrames(*camera, directory / "good.raw", 2147483647, 2), HasSubstr("from 1 to 4096"));
    PutFile(directory / "empty.raw", "");
    EXPECT_THAT(LoadSimRawFrames(*camera, directory / "empty.raw", 8, 4), HasSubstr("whole frames"));
    EXPECT_EQ(Frame(3, 0), before);
}

}  // namespace
}  // namespace kelvo
