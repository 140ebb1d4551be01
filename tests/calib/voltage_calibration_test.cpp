// The voltage calibration: its arithmetic, single signals on a board of given frames, and the keys.
#include "calib/voltage_calibration.h"

#include "calib/run_fixture.h"
#include "platform/application.h"
#include "platform/clock.h"
#include "platform/faults.h"
#include "platform/front.h"
#include "platform/memory.h"
#include "state/camera_config_write.h"
#include "state/frame_state_write.h"
#include "state/head_state_write.h"
#include "support/recording_board.h"
#include "ui/status.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

// --- Arithmetic -----------------------------------------------------------------------------------------------------

TEST(VoltageArithmetic, VoltsACountAreTheVoltageOverTheDifferenceOfTheSignals)
{
    EXPECT_EQ(VoltsPerCountOf(0.5F, 6950.0F, 8200.0F), -0.0004F);
    EXPECT_EQ(VoltsPerCountOf(-0.5F, 9450.0F, 8200.0F), -0.0004F);
    // The difference of two singles is exact in double.
    const float zero = 8200.25F;
    const float signal = 8199.875F;
    EXPECT_EQ(VoltsPerCountOf(0.3F, signal, zero), static_cast<float>(double{0.3F} / -0.375));
}

TEST(VoltageArithmetic, AQuotientThatIsZeroOrNotFiniteIsNoMeasurement)
{
    EXPECT_EQ(VoltsPerCountOf(0.5F, 8200.0F, 8200.0F), std::nullopt);
    EXPECT_EQ(VoltsPerCountOf(0.0F, 8200.0F, 8200.0F), std::nullopt);
    EXPECT_EQ(VoltsPerCountOf(0.0F, 8201.0F, 8200.0F), std::nullopt);
    EXPECT_EQ(VoltsPerCountOf(0.5F, std::numeric_limits<float>::infinity(), 8200.0F), std::nullopt);
}

TEST(VoltageArithmetic, VoltsAStepTakeTheSignOfTheSteps)
{
    // 15 steps of 0.01 V at -0.000282 V a count.
    const float shifted = 8200.0F - 0.15F / 0.000282F;
    EXPECT_NEAR(VoltsPerStepOf(8200.0F, shifted, -0.000282F, 15), 0.01F, 1e-7F);
    const float shiftedBack = 8200.0F + 0.15F / 0.000282F;
    EXPECT_NEAR(VoltsPerStepOf(8200.0F, shiftedBack, -0.000282F, -15), 0.01F, 1e-7F);
}

TEST(VoltageArithmetic, TheZeroIsSummedInSinglePrecisionInOrder)
{
    std::array<float, kGainSteps> signals{};
    signals.fill(0.25F);
    signals[0] = 16777216.0F;  // 2^24: a quarter more is lost in each step
    EXPECT_EQ(CountsAtZeroOf(signals), 16777216.0F / 16.0F);
    signals.fill(8200.5F);
    EXPECT_EQ(CountsAtZeroOf(signals), 8200.5F);
}

// --- On a board -----------------------------------------------------------------------------------------------------

class VoltageRun : public CalibrationRun {
  protected:
    void SetUp() override
    {
        CalibrationRun::SetUp();
        write::camera.ActiveConfig.Hactive = 4;
        write::camera.ActiveConfig.Vactive = 2;
        write::head.VideoGain = {7, 7, 7, 7};
        write::head.VideoOffset = {140, 140, 140, 140};
        write::camera.VoltsOffset = 0.5F;
        write::camera.ADoffset = 1.0F;
        write::camera.VoltsPerCountVsGain.fill(2.0F);
        write::frames.GrabberPresent = 1;
    }

    // The board's frame is the signal that gain and offset in force give for a voltage.
    void PutVolts(double volts)
    {
        recordingBoard.onRead = [this, volts](std::int32_t) {
            const double perCount = -0.0004 / (1.0 + VideoGain[0]);
            const double counts = 8200.0 + (volts + (VideoOffset[0] - 128) * 0.01) / perCount / 10;
            seen.emplace_back(VideoGain[0], VideoOffset[0]);
            recordingBoard.frames = {Frame(8, static_cast<std::int16_t>(std::lround(counts)))};
        };
    }
    std::vector<std::pair<int, int>> seen;  // gain and offset at each frame
};

TEST_F(VoltageRun, ASignalIsTheMeanOfAllSamplesOfOneFrame)
{
    SetBoardFrames({{1, 2, 3, 4, 5, 6, 7, 9}});
    const std::int64_t before = TickMs();
    EXPECT_EQ(GetCalVoltSignal(128, 3), 4.625F);
    EXPECT_GE(TickMs() - before, 500);
    EXPECT_THAT(VideoGain, testing::Each(3));
    EXPECT_THAT(VideoOffset, testing::Each(128));
    EXPECT_EQ(CalType, 0);
    EXPECT_EQ(LiveVideo, 1);
}

TEST_F(VoltageRun, SamplesCountWithTheirSign)
{
    SetBoardFrames({{-100, 100, -300, 0, 0, 0, 0, -4}});
    EXPECT_EQ(GetCalVoltSignal(128, 0), -38.0F);
}

TEST_F(VoltageRun, OnlySamplesThatExistCount)
{
    write::camera.ActiveConfig.Hactive = 320;  // the frame in host memory is 4 x 2
    write::camera.ActiveConfig.Vactive = 256;
    SetBoardFrames({{8, 8, 8, 8, 8, 8, 8, 8}});
    EXPECT_EQ(GetCalVoltSignal(128, 0), 8.0F);
}

TEST_F(VoltageRun, WithoutMemoryTheSystemStandsAtUnity)
{
    write::cal.CalType = 2;
    FailAllocation(1);
    EXPECT_EQ(GetCalVoltSignal(128, 0), kNoCalVoltSignal);
    FailAllocation(0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Failure to allocate video memory!");
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
    ExpectUnity();
}

TEST_F(VoltageRun, AFrameThatDoesNotComeIsTold)
{
    SetBoardFrames({});
    EXPECT_EQ(GetCalVoltSignal(128, 0), kNoCalVoltSignal);
    EXPECT_THAT(BoxTexts(), testing::Contains("Video Data Acquisition Failed, Hardware error"));
    EXPECT_EQ(op->Boxes().back().caption, "GetCalVoltSignal() Error");
    EXPECT_THAT(op->Texts("beep", "sound"), testing::Not(IsEmpty()));
}

TEST_F(VoltageRun, MeasuresEachGainAtTheNeutralOffsetAndTwoOffsetsAtGain2)
{
    std::vector<std::pair<int, int>> expected;
    for (int gain = 0; gain < 16; ++gain) expected.emplace_back(gain, 128);
    PutVolts(0);
    op->Answer({Button::kOk});
    op->Do([&] {
        ASSERT_EQ(DialogName(DialogInFront()), "CALVOLT");
        EXPECT_EQ(seen, expected);
        seen.clear();
        PutVolts(0.3);
        OperateText(DialogInFront(), kInputVoltage, "0.3");
        OperatePress(DialogInFront(), kIdOk);
    });
    EXPECT_EQ(RunVoltageCalibration(hWndMain), 1);
    expected.emplace_back(2, 128);
    expected.emplace_back(2, 143);
    EXPECT_EQ(seen, expected);
    // The signal at 0 V is 8200 at all gains. At 0.3 V and gain 0 it lies 75 counts below.
    EXPECT_EQ(ADoffset, 8200.0F);
    EXPECT_EQ(VoltsPerCountVsGain[0], static_cast<float>(double{0.3F} / -75.0));
    EXPECT_EQ(VoltsPerCountVsGain[15], static_cast<float>(double{0.3F} / -1200.0));
    // 15 steps are 112.5 counts at gain 2: from 7975 to 7863.
    EXPECT_EQ(VoltsOffset, static_cast<float>(-112.0 * double{VoltsPerCountVsGain[2]} / 15));
    EXPECT_THAT(VideoGain, testing::Each(7)) << "those of before";
    EXPECT_THAT(VideoOffset, testing::Each(140));
    EXPECT_EQ(
        StatusText,
        " The camera is uncalibrated now: Calibration, Load previous... brings a calibration back; the voltages are "
        "kept in Camera.1, as CameraNum says, not in Camera.2")
        << "without the key";
}

TEST_F(VoltageRun, ShowsEntry0OfTheCountsWhateverTheLabelSays)
{
    PutVolts(0);
    op->Answer({Button::kOk, Button::kNo});
    op->Do([&] {
        PutVolts(0.3);
        OperateText(DialogInFront(), kInputVoltage, "0.3");
        OperatePress(DialogInFront(), kIdOk);
    });
    op->Do([] { OperatePress(DialogInFront(), kIdCancel); });
    EXPECT_EQ(RunVoltageCalibration(hWndMain), 0);
    EXPECT_EQ(op->Boxes().back().text,
              "ADoffset[2] = 8200.000000 counts\nVolt/Offset = 0.009956\nVolt/CountAtGain[2] = -0.004000");
    EXPECT_EQ(op->Boxes().back().caption, "Voltage calibration results");
    EXPECT_EQ(VoltsOffset, 0.5F) << "after No and Cancel as before";
    EXPECT_EQ(ADoffset, 1.0F);
    EXPECT_THAT(VoltsPerCountVsGain, testing::Each(2.0F));
}

TEST_F(VoltageRun, AVoltageOfZeroOrBelowShiftsTheOffsetDown)
{
    PutVolts(0);
    op->Answer({Button::kOk});
    WritePrivateProfileString("Setup", "CameraNum", "2", IniFilePath);
    op->Do([&] {
        PutVolts(-0.3);
        OperateText(DialogInFront(), kInputVoltage, "-0.3");
        OperatePress(DialogInFront(), kIdOk);
    });
    EXPECT_EQ(RunVoltageCalibration(hWndMain), 1);
    EXPECT_EQ(seen.back(), std::make_pair(2, 113));
    EXPECT_GT(VoltsOffset, 0.0F);
    EXPECT_EQ(StatusText, " The camera is uncalibrated now: Calibration, Load previous... brings a calibration back");
}

TEST_F(VoltageRun, AFailureAtTheShiftedOffsetIsTold)
{
    PutVolts(0);
    op->Answer({Button::kOk});
    op->Do([&] {
        recordingBoard.onRead = [](std::int32_t) {
            const std::int16_t counts = VideoOffset[0] == 128 ? static_cast<std::int16_t>(8000 - VideoGain[0]) : 0;
            recordingBoard.frames = {Frame(8, counts)};
            if (VideoOffset[0] != 128) recordingBoard.frames = {Frame(8, -16000)};
        };
        OperateText(DialogInFront(), kInputVoltage, "0.3");
        OperatePress(DialogInFront(), kIdOk);
    });
    op->Do([] { OperatePress(DialogInFront(), kIdCancel); });
    EXPECT_EQ(RunVoltageCalibration(hWndMain), 0);
    // A true mean of exactly -16000 reads as a failure too.
    EXPECT_EQ(op->Boxes().back().text, "Unable to get signal at gain=2 & offset=128 \xC2\xB1 15 - try again.");
    EXPECT_EQ(op->Boxes().back().caption, "ERROR!");
}

TEST_F(VoltageRun, AFailureInTheGainsKeepsTheDialogAndBeginsAgainAtGain0)
{
    PutVolts(0);
    op->Answer({Button::kOk});
    op->Do([&] {
        recordingBoard.onRead = [this](std::int32_t) {
            seen.emplace_back(VideoGain[0], VideoOffset[0]);
            recordingBoard.frames = {Frame(8, static_cast<std::int16_t>(VideoGain[0] == 3 ? -16000 : 8000))};
        };
        seen.clear();
        OperateText(DialogInFront(), kInputVoltage, "0.3");
        OperatePress(DialogInFront(), kIdOk);
    });
    op->Do([&] {
        EXPECT_EQ(op->Boxes().back().text, "Unable to get signal at gain & offset - try again.");
        EXPECT_EQ(StatusText, " Apply DC voltage to input channels; Enter voltage value; Press OK");
        EXPECT_THAT(seen, SizeIs(4));
        seen.clear();
        PutVolts(0.3);
        OperatePress(DialogInFront(), kIdOk);
    });
    EXPECT_EQ(RunVoltageCalibration(hWndMain), 1);
    EXPECT_EQ(seen.front(), std::make_pair(0, 128));
    EXPECT_THAT(seen, SizeIs(18));
}

TEST_F(VoltageRun, ASignalEqualToTheZeroIsAFailedMeasurement)
{
    SetBoardFrames({Frame(8, 8200)});
    op->Answer({Button::kOk});
    op->Do([] {
        OperateText(DialogInFront(), kInputVoltage, "0.3");
        OperatePress(DialogInFront(), kIdOk);
    });
    op->Do([] { OperatePress(DialogInFront(), kIdCancel); });
    EXPECT_EQ(RunVoltageCalibration(hWndMain), 0);
    EXPECT_EQ(op->Boxes().back().text, "Unable to get signal at gain & offset - try again.");
}

TEST_F(VoltageRun, AFailureAtZeroVoltsEndsTheDialog)
{
    SetBoardFrames({Frame(8, -16000)});
    op->Answer({Button::kOk});
    EXPECT_EQ(RunVoltageCalibration(hWndMain), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(2));
    EXPECT_EQ(op->Boxes()[1].text, "Unable to get signal - try again.");
    EXPECT_EQ(op->Boxes()[1].caption, "ERROR!");
}

TEST_F(VoltageRun, CancelAtTheFirstBoxLeavesEverything)
{
    write::cal.CalType = 2;
    StatusMessage("as before", 6);
    const std::string before = Everything();
    op->Answer({Button::kCancel});
    EXPECT_EQ(RunVoltageCalibration(hWndMain), 0);
    EXPECT_EQ(Everything(), before);
    EXPECT_EQ(StatusText, "as before");
    EXPECT_EQ(StatusAlign, 6);
    EXPECT_THAT(seen, IsEmpty());
}

TEST_F(VoltageRun, ADialogThatCannotBeOpenedIsTold)
{
    SetFault("load dialog CALVOLT", true);
    EXPECT_EQ(RunVoltageCalibration(hWndMain), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Unable to display dialog");
    EXPECT_EQ(op->Boxes()[0].caption, "System Error");
}

TEST_F(VoltageRun, KeysAreWrittenToTheSectionThatCameraNumNames)
{
    write::camera.VoltsOffset = 0.01F;
    write::camera.ADoffset = 8200.5F;
    write::camera.VoltsPerCountVsGain.fill(-0.000311F);
    SaveVoltageCalibration();
    EXPECT_EQ(KeyOf(CameraFilePath, "Camera.1", "Volts/Offset"), "0.010000") << "1 where the key is missing";
    WritePrivateProfileString("Setup", "CameraNum", "3", IniFilePath);
    SaveVoltageCalibration();
    EXPECT_EQ(KeyOf(CameraFilePath, "Camera.3", "Volts/Offset"), "0.010000");
    EXPECT_EQ(KeyOf(CameraFilePath, "Camera.3", "A/Doffset"), "8200.500000");
    EXPECT_EQ(KeyOf(CameraFilePath, "Camera.3", "VoltsPerCountVsGain"),
              "-0.000311,-0.000311,-0.000311,-0.000311,-0.000311,-0.000311,-0.000311,-0.000311,-0.000311,-0.000311,"
              "-0.000311,-0.000311,-0.000311,-0.000311,-0.000311,-0.000311");
    EXPECT_EQ(KeyOf(CameraFilePath, "Camera.2", "Volts/Offset"), "missing") << "the active camera's isn't named";
}

TEST(ShippedSettings, NameTheCameraThatTheyTurnOnForItsVoltageCalibration)
{
    const TestOperator op;  // brings what is shipped
    const std::string shipped = ResourceText("defaults/kelvo.ini");
    EXPECT_NE(shipped.find("\nActiveCamera=2\n"), std::string::npos);
    EXPECT_NE(shipped.find("\nCameraNum=2\n"), std::string::npos);
}

}  // namespace
}  // namespace kelvo
