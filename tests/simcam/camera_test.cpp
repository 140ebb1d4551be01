// Frames as the board gets them: window, flips, gain, biases, test mode, and that they are functions of their number.
#include "platform/profile.h"
#include "state/windows_write.h"
#include "support/camera_fixture.h"
#include "support/shipped_file.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace kelvo {
namespace {

using testing::Each;
using testing::IsEmpty;

class SimFrames : public SimCameraTest {
  protected:
    void SetUp() override
    {
        SimCameraTest::SetUp();
        Open("insb320.cnf");
        Program320x256();
        PutSimSource(*camera, SimSource::kLow);
    }
    double MedianCount(std::int64_t n)
    {
        Counts frame = Frame(n);
        std::ranges::nth_element(frame, frame.begin() + 40960);
        return frame[40960];
    }
    Counts Board(int boardWidth, int boardHeight, std::int64_t n = 1)
    {
        Counts counts(static_cast<std::size_t>(boardWidth) * static_cast<std::size_t>(boardHeight), -1);
        ReadSimFrame(*camera, n, 0, boardWidth, boardHeight, counts);
        return counts;
    }
    static std::int16_t At(const Counts& frame, int pitch, int x, int y)
    {
        return frame[static_cast<std::size_t>(y) * static_cast<std::size_t>(pitch) + static_cast<std::size_t>(x)];
    }
};

TEST_F(SimFrames, AFrameIsAFunctionOfItsNumber)
{
    const Counts seventh = Frame(7);
    EXPECT_NE(Frame(8), seventh);
    Frame(1000000);
    EXPECT_EQ(Frame(7), seventh);
    EXPECT_EQ(Frame(7, 5000000), seventh);  // a still source doesn't move
}

TEST_F(SimFrames, TheSeedMakesTheArrayAndItsNoise)
{
    const Counts first = Frame(7);
    PutCopyWith("insb320.cnf", "same.cnf", "Seed=320256");
    Open("same.cnf");
    Program320x256();
    PutSimSource(*camera, SimSource::kLow);
    EXPECT_EQ(Frame(7), first);
    PutCopyWith("insb320.cnf", "other.cnf", "Seed=320257");
    Open("other.cnf");
    Program320x256();
    PutSimSource(*camera, SimSource::kLow);
    EXPECT_NE(Frame(7), first);
}

TEST_F(SimFrames, WhatTheWindowDoesNotCoverIsZero)
{
    const Counts plain = Frame(1);
    const Counts board = Board(352, 260);
    for (int y = 0; y < 260; ++y) {
        for (int x = 0; x < 352; ++x) {
            const int expected = x < 320 && y < 256 ? At(plain, 320, x, y) : 0;
            ASSERT_EQ(At(board, 352, x, y), expected) << x << ' ' << y;
        }
    }
}

TEST_F(SimFrames, TheBoardCutsALargerWindow)
{
    const Counts plain = Frame(1);
    const Counts board = Board(128, 100);
    for (int y = 0; y < 100; ++y) {
        for (int x = 0; x < 128; ++x) ASSERT_EQ(At(board, 128, x, y), At(plain, 320, x, y));
    }
}

TEST_F(SimFrames, NothingIsWrittenBeyondTheBlock)
{
    Counts counts(1000, -1);
    ReadSimFrame(*camera, 1, 0, 320, 256, counts);  // three whole lines fit
    EXPECT_NE(counts[959], -1);
    EXPECT_THAT(Counts(counts.begin() + 960, counts.end()), Each(-1));
    ReadSimFrame(*camera, 1, 0, 0, 5, counts);
    ReadSimFrame(*camera, 1, 0, 5, -1, counts);
    ReadSimFrame(*camera, 1, 0, 2147483647, 2147483647, counts);
    EXPECT_EQ(counts[999], -1);
}

// Columns 64 to 191 (units 8 and 23: 8 and 116 mirrored), rows 16 to 111 (units 2 and 13: 16 and 44).
TEST_F(SimFrames, AWindowShowsItsDetectors)
{
    const Counts whole = Frame(1);
    Send({{0x60, 2, 17, 0xD2}, {0x60, 4, 132, 44}});
    const Counts board = Board(160, 120);
    for (int y = 0; y < 120; ++y) {
        for (int x = 0; x < 160; ++x) {
            const int expected = x < 128 && y < 96 ? At(whole, 320, x + 64, y + 16) : 0;
            ASSERT_EQ(At(board, 160, x, y), expected) << x << ' ' << y;
        }
    }
    EXPECT_THAT(SimTruth(*camera, 128, 0), IsEmpty());
    EXPECT_THAT(SimTruth(*camera, 0, 96), IsEmpty());
}

// Last column and row far beyond the array: units 127 and 63.
// Gain index 4 is code 12; offset 160; 100 rows and 200 columns; 96 lines and 40 columns; columns 64 to 191, rows 16 to
// 111; detector bias 11 and column gain 1 arrive mirrored (13, 4).
TEST_F(SimFrames, TheHeadTellsWhatItsRegistersHold)
{
    Send({{0x60, 12 * 4, 0, 0}, {0x70, 1, 160, 0}, {0x50, 0, 0, 11}, {0x50, 1, 25, 50}, {0x50, 3, 98, 10}});
    Send({{0x50, 5, 0, 0x97}, {0x60, 2, 17, 0xD2}, {0x60, 4, 132, 44}, {0x60, 0, 13 * 8 + 2 * 2 + 1, 0x08 + 0x02}});
    const auto told = SimHeadRegisters(*camera);
    const std::map<std::string, double> registers(told.begin(), told.end());
    const std::map<std::string, double> expected = {
        {"clock", 11},         {"rows", 100},        {"columns", 200},   {"integration_rows", 98},
        {"delays", 0x97},      {"gain", 12},         {"offset", 160},    {"integration_columns", 10},
        {"left", 64},          {"top", 16},          {"right", 191},     {"bottom", 111},
        {"detector_bias", 11}, {"pedestal_bias", 2}, {"column_gain", 1}, {"test_mode", 0},
        {"flip_columns", 1},   {"flip_rows", 0}};
    for (const auto& [name, value] : expected) EXPECT_EQ(registers.at(name), value) << name;
}

TEST_F(SimFrames, AWindowBeyondTheArrayEndsWithIt)
{
    const Counts whole = Frame(1);
    Send({{0x60, 2, 0x01, 0xFE}, {0x60, 4, 0x80, 63}});
    EXPECT_EQ(Frame(1), whole);
    Send({{0x60, 2, 0xFE, 0x02}});  // from the last unit to the first: none
    EXPECT_THAT(Frame(1), Each(0));
}

TEST_F(SimFrames, FlipsTurnThePicture)
{
    const Counts plain = Frame(1);
    const auto truth = SimTruth(*camera, 10, 20);
    Send({{0x60, 0, 0x7E, 0x42 + 8}});
    const Counts columns = Frame(1);
    Send({{0x60, 0, 0x7E, 0x42 + 8 + 4}});
    const Counts both = Frame(1);
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < 320; ++x) {
            ASSERT_EQ(At(columns, 320, x, y), At(plain, 320, 319 - x, y));
            ASSERT_EQ(At(both, 320, x, y), At(plain, 320, 319 - x, 255 - y));
        }
    }
    EXPECT_EQ(SimTruth(*camera, 309, 235), truth);
}

TEST_F(SimFrames, TheFileNamesTheReadoutOrder)
{
    const Counts plain = Frame(1);
    PutCopyWith("insb320.cnf", "quarters.cnf", "Scheme=7");
    Open("quarters.cnf");
    Program320x256();
    PutSimSource(*camera, SimSource::kLow);
    const Counts quarters = Frame(1);
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < 320; ++x) {
            ASSERT_EQ(At(quarters, 320, x, y), At(plain, 320, x % 4 * 80 + x / 4, y));
        }
    }
}

// 20 °C stands near 7500 counts, 700 below the converter's zero of 8200: 0.28 V. At gain code 8 (index 1) a count is
// 0.000311 V, at code 15 0.000113 V.
TEST_F(SimFrames, GainSpreadsTheVoltsAroundTheConvertersZero)
{
    const double atUnity = MedianCount(1);
    Send({{0x60, 8 * 4, 0, 0}});
    EXPECT_NEAR(MedianCount(1), 8200 + (atUnity - 8200) * 0.000400 / 0.000311, 2);
    Send({{0x60, 15 * 4, 0, 0}});
    EXPECT_NEAR(MedianCount(1), 8200 + (atUnity - 8200) * 0.000400 / 0.000113, 5);
}

// 0.01 V a step at -0.0004 V a count: 25 counts down for each step up.
TEST_F(SimFrames, TheOffsetDacMovesAllCounts)
{
    const double before = MedianCount(1);
    Send({{0x70, 1, 148, 0}});
    EXPECT_NEAR(MedianCount(1), before - 500, 1);
    Send({{0x70, 1, 28, 0}});
    EXPECT_NEAR(MedianCount(1), before + 2500, 1);
    Send({{0x70, 2, 0, 0}});  // the other DACs don't
    EXPECT_NEAR(MedianCount(1), before + 2500, 1);
}

// 1835 uV of read noise at 0.0004 V a count, and the rounding's 1/12.
TEST_F(SimFrames, WithTheBiasesOffOnlyReadNoiseIsLeft)
{
    Send({{0x80, 0, 0, 0}});
    Pixels pixels = Gather(0, 256);
    const std::vector<std::string> kinds = Kinds();
    std::vector<double> means;
    std::vector<double> variances;
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        EXPECT_NEAR(pixels.mean[i], 8200, kinds[i] == "noisy" ? 600.0 : 2.0) << kinds[i];
        if (kinds[i] != "good") continue;
        means.push_back(pixels.mean[i]);
        variances.push_back(pixels.deviation[i] * pixels.deviation[i]);
    }
    EXPECT_NEAR(MeanOf(means), 8200, 0.02);
    EXPECT_NEAR(std::sqrt(MeanOf(variances)), std::sqrt(4.5875 * 4.5875 + 1.0 / 12), 0.01);
    PutSimSource(*camera, SimSource::kHigh);
    EXPECT_NEAR(MedianCount(1), 8200, 1);
}

// Past the detector: no pattern, no bad ones, no shot noise; the same in test mode.
TEST_F(SimFrames, AVoltageAtTheInputsComesThroughWithoutTheDetectors)
{
    PutSimSource(*camera, SimSource::kVolts);
    ASSERT_TRUE(SetSimInputVolts(*camera, 0.3));
    const auto expect = [&](double mean, double sigma) {
        const Counts frame = Frame(1);
        const std::vector<double> values(frame.begin(), frame.end());
        EXPECT_NEAR(MeanOf(values), mean, 6 * sigma / std::sqrt(81920.0) + 0.001);
        EXPECT_NEAR(RmsAbout(values, mean), std::sqrt(sigma * sigma + 1.0 / 12), 0.02 * sigma);
        EXPECT_LT(*std::ranges::max_element(values) - mean, 4.1 * sigma + 1) << "no detector stands out";
    };
    expect(8200 - 0.3 / 0.0004, 4.5875);
    Send({{0x60, 15 * 4, 0, 0}});
    expect(8200 - 0.3 / 0.000113, 1835e-6 / 0.000113);
    Send({{0x70, 1, 113, 0}});
    expect(8200 - 0.15 / 0.000113, 1835e-6 / 0.000113);
    Send({{0x60, 0, 0x7E, 0x42 + 16}});
    expect(8200 - 0.15 / 0.000113, 1835e-6 / 0.000113);
    EXPECT_EQ(Frame(1, 7000000), Frame(1)) << "it stands still";
    EXPECT_FALSE(SetSimInputVolts(*camera, 5.1));
    EXPECT_FALSE(SetSimInputVolts(*camera, std::nan("")));
    EXPECT_EQ(SimInputVolts(*camera), 0.3);
}

TEST_F(SimFrames, HalfTheIntegrationTimeGivesHalfTheFlux)
{
    const double full = MedianCount(1);
    Send({{0x50, 3, 2, 0}});  // no integration
    const double none = MedianCount(1);
    Send({{0x50, 3, 123, 20}});  // 121 lines and 20: half of 242 and 40
    EXPECT_NEAR(MedianCount(1) - none, (full - none) / 2, 2);
}

TEST_F(SimFrames, TestModeGivesARamp)
{
    Send({{0x60, 0, 0x7E, 0x42 + 16}});
    const Counts frame = Frame(1);
    EXPECT_EQ(At(frame, 320, 0, 0), 0);
    EXPECT_EQ(At(frame, 320, 1, 0), 16);
    EXPECT_EQ(At(frame, 320, 0, 1), 16);
    EXPECT_EQ(At(frame, 320, 319, 255), (319 + 255) * 16);
    EXPECT_EQ(Frame(2), frame);
    Send({{0x60, 0, 0x7E, 0x42}});
    EXPECT_NE(Frame(1), frame);
}

TEST_F(SimFrames, DriftIsNoneAsShippedAndGrowsWithTimeWhereItIsAsked)
{
    PutCopyWith("insb320.cnf", "drifting.cnf", "DriftCountsPerMinute=10");
    Open("drifting.cnf");
    Program320x256();
    PutSimSource(*camera, SimSource::kLow);
    const Counts start = Frame(1, 0);
    const Counts later = Frame(1, 120000000);  // two minutes
    std::vector<double> differences;
    const std::vector<std::string> kinds = Kinds();
    for (std::size_t i = 0; i < start.size(); ++i) {
        if (kinds[i] == "good") differences.push_back(later[i] - start[i]);
    }
    EXPECT_NEAR(MeanOf(differences), 0, 0.5);
    EXPECT_NEAR(RmsAbout(differences, 0), 20, 0.3);
}

TEST_F(SimFrames, TruthEndsWithTheArray)
{
    EXPECT_GE(SimTruth(*camera, 0, 0).size(), 4U);
    EXPECT_GE(SimTruth(*camera, 319, 255).size(), 4U);
    EXPECT_THAT(SimTruth(*camera, -1, 0), IsEmpty());
    EXPECT_THAT(SimTruth(*camera, 0, -1), IsEmpty());
    EXPECT_THAT(SimTruth(*camera, 320, 0), IsEmpty());
    EXPECT_THAT(SimTruth(*camera, 0, 256), IsEmpty());
}

// The sections that are shipped name these files, and their keys are what the fixture's frames were worked from.
TEST_F(SimFrames, TheShippedSectionsFitTheShippedCameras)
{
    write::windows.CameraFilePath = ShippedFile("camera.ini");
    const auto number = [](const char* section, const char* key) {
        return GetPrivateProfileInt(section, key, -999, CameraFilePath);
    };
    const auto text = [](const char* section, const char* key) {
        return GetPrivateProfileString(section, key, "missing", CameraFilePath);
    };
    struct Row {
        const char* section;
        const char* file;
        int columns, rows, port, clockHz, rate;
        const char* integration;
    };
    for (const Row& row : {Row{"Camera.1", "insb640.cnf", 640, 512, 1, 196608000, 0, "195,195,195,195"},
                           {"Camera.2", "insb320.cnf", 320, 256, 2, 48000000, 3, "10,10,10,10"},
                           {"Camera.3", "hgcdte64.cnf", 64, 64, 3, 48000000, 3, "0,0,0,0"}}) {
        const std::string cnf = directory / row.file;
        EXPECT_EQ(text(row.section, "cnfFile"), row.file);
        EXPECT_EQ(number(row.section, "nCommPort"), row.port);
        EXPECT_EQ(number(row.section, "IndexFrameRate"), row.rate);
        EXPECT_EQ(text(row.section, "IndexIntegrationTime"), row.integration);
        EXPECT_EQ(number(row.section, "QVF1058_MasterClockFrequency"), row.clockHz);
        EXPECT_EQ(GetPrivateProfileInt("Head", "Clock", 0, cnf), row.clockHz);
        for (const char* key : {"Hroi", "Hactive", "Htotal"}) EXPECT_EQ(number(row.section, key), row.columns) << key;
        for (const char* key : {"Vroi", "Vactive", "Vtotal"}) EXPECT_EQ(number(row.section, key), row.rows) << key;
        EXPECT_EQ(GetPrivateProfileInt("Array", "Columns", 0, cnf), row.columns);
        EXPECT_EQ(GetPrivateProfileInt("Array", "Rows", 0, cnf), row.rows);
        for (const char* key : {"Volts/Offset", "A/Doffset", "VoltsPerCountVsGain"}) {
            EXPECT_EQ(text(row.section, key), GetPrivateProfileString("Video", key, "", cnf)) << key;
        }
        EXPECT_EQ(text(row.section, "Volts/Offset"), "0.01");
        struct Key {
            const char* name;
            int value;
        };
        const int delay = row.columns == 64 ? 3 : 15;
        for (const Key& key : {Key{"QVF1058_MasterClockMinIndex", 2},
                               {"QVF1058_MasterClockMaxIndex", 63},
                               {"QVF1058_ExtraTimingRows", 0},
                               {"QVF1058_ExtraTimingCols", 0},
                               {"QVF1058_AdDelay", 0},
                               {"QVF1058_LineStartDelay", delay},
                               {"QVF1058_FrameStartDelay", delay},
                               {"QVF1058_SerialReg", 96},
                               {"QVF1058_DACReg", 112},
                               {"QVF1058_GainReg", 96},
                               {"QVF1058_BiasEnableReg", 128},
                               {"QVF1058_Gain0", 0},
                               {"QVF1058_DAC0", 128},
                               {"QVF1058_DAC7", 128},
                               {"DetBias", 15},
                               {"PedBias", 3},
                               {"ColGain", 4},
                               {"ColStart", 0},
                               {"RowStart", 0},
                               {"FlipCols", 0},
                               {"FlipRows", 0},
                               {"FastFrame", 1},
                               {"DecomScheme", 2},
                               {"BufferCapture", 1},
                               {"UnityGain", 16384},
                               {"UnityOffset", 8192},
                               {"ZeroOffset", 0},
                               {"DataOffset", 0}}) {
            EXPECT_EQ(number(row.section, key.name), key.value) << row.section << ' ' << key.name;
        }
    }
    EXPECT_NE(text("Camera.3", "Description").find("J108"), std::string::npos);
}

}  // namespace
}  // namespace kelvo
