#include "head/camera_report.h"

#include "head/camera_head_write.h"
#include "imagefile/header.h"
#include "platform/clock.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "record/recording_head.h"
#include "state/camera_config.h"
#include "state/frame_state_write.h"
#include "state/head_state.h"
#include "state/windows_write.h"
#include "support/head_fixture.h"
#include "support/operator.h"
#include "support/state_value.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>

namespace kelvo {
namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::SizeIs;

CameraReport told;
std::vector<std::string> notes;

// A board that answers nothing but these.
constexpr BoardTable kTellingBoard{
    .name = "telling",
    .report = [](BoardModule) { return told; },
    .take_notes = [](BoardModule) { return std::exchange(notes, {}); },
};

class CameraReportOf : public testing::Test {
  protected:
    CameraReportOf()
    {
        told = {};
        notes.clear();
        SetDefaultDir(directory.Path());
        PutFile(directory / "platform.ini", "[Board]\nBoard=telling\n");
        RegisterBoard(kTellingBoard);
        write::frames.CameraOn = 1;
    }
    // Long enough for the next question.
    static void Later() { DelayMs(1000); }

    TempDirectory directory;
    TestOperator op;
};

TEST_F(CameraReportOf, WhatIsToldTakesThePlaceOfWhatIsReckoned)
{
    SetFrameRate(50);
    AskCamera();
    EXPECT_EQ(FrameRate, 50) << "nothing is told";
    told.rateHz = 49.5;
    told.integrationMs = 3.25;
    told.columns = 320;
    told.rows = 256;
    told.bits = 14;
    AskCamera();
    EXPECT_EQ(FrameRate, 49.5F);
    EXPECT_EQ(IntegrationMsecInForce, 3.25);
    EXPECT_EQ(StateReal("CameraRate"), 49.5);
    EXPECT_EQ(StateReal("CameraIntegration"), 3.25);
    EXPECT_EQ(StateNumber("CameraColumns"), 320);
    EXPECT_EQ(StateNumber("CameraRows"), 256);
    EXPECT_EQ(StateNumber("CameraBits"), 14);
    EXPECT_EQ(StateNumber("CameraLost"), 0);

    SetFrameRate(100);
    EXPECT_EQ(FrameRate, 49.5F) << "whatever the head is sent";
    ImageHeaderRecord header;
    BuildImageHeader(&header, 0, 0, 0, 0, 3, 3);
    EXPECT_EQ(float{header.FrameRate}, 49.5F);
    EXPECT_EQ(float{header.IntegrationMsec}, 3.25F);

    ForgetCameraReport();
    EXPECT_EQ(FrameRate, 100);
    EXPECT_EQ(StateReal("CameraRate"), 0);
}

TEST_F(HeadTest, TheCameraIsAskedWhatBecameOfASetting)
{
    RegisterBoard(kTellingBoard);
    WritePrivateProfileString("Board", "Board", "telling", DefaultDir + "/platform.ini");
    IdentifyAsInSb();
    write::frames.CameraOn = 1;
    told = {};
    SetFrameRateIndex(3);
    const float reckoned = FrameRate;
    ASSERT_NE(reckoned, 24.5F);
    EXPECT_EQ(reckoned, FrameRateAtClock(HeadTiming.MasterClockIndex));
    told.rateHz = 24.5;
    SetFrameRateIndex(3);
    EXPECT_EQ(FrameRate, 24.5F);
    EXPECT_EQ(GetPrivateProfileString(ActiveCameraSection(), "fFrameRate", "", CameraFilePath),
              Format("%f", static_cast<double>(reckoned)))
        << "what was asked for";
    told.integrationMs = 7.5;
    SetIntegrationIndex(5, IntegrationSlot);
    EXPECT_EQ(IntegrationMsecInForce, 7.5);
    told.rateHz = 12.25;
    LoadHeadTiming(write::registers.HeadTiming);
    EXPECT_EQ(FrameRate, 12.25F);
    told.columns = 64;
    LoadFpaSerialWord(FpaSerialWord);
    EXPECT_EQ(StateNumber("CameraColumns"), 64);
}

TEST_F(CameraReportOf, NotesComeInOneBoxAndThenOnTheStatusLine)
{
    FollowCamera();
    EXPECT_THAT(op.Boxes(), IsEmpty());
    Later();
    notes = {"The first.", "The second."};
    FollowCamera();
    ASSERT_THAT(op.Boxes(), SizeIs(1));
    EXPECT_EQ(op.Boxes().front().text, "The first.\nThe second.");
    notes = {"The third.", "The fourth."};
    FollowCamera();
    EXPECT_THAT(notes, SizeIs(2)) << "not so soon";
    Later();
    FollowCamera();
    EXPECT_THAT(op.Boxes(), SizeIs(1));
    EXPECT_THAT(op.Texts("status", "text"), Contains("The third. The fourth."));

    ForgetCameraReport();
    notes = {"After the next turn-on."};
    FollowCamera();
    EXPECT_THAT(op.Boxes(), SizeIs(2));
}

TEST_F(CameraReportOf, ALostCameraIsToldOnceAndSoIsItsReturn)
{
    EXPECT_FALSE(CameraIsLost());
    told.link = CameraLink::kLost;
    told.linkText = "The cable is out";
    EXPECT_TRUE(CameraIsLost());
    EXPECT_TRUE(CameraIsLost());
    told.link = CameraLink::kUp;
    EXPECT_FALSE(CameraIsLost());
    std::vector<std::string> texts = op.Texts("status", "text");
    std::erase_if(texts,
                  [](const std::string& text) { return text != "The cable is out" && text != "The camera is back"; });
    EXPECT_EQ(texts, (std::vector<std::string>{"The cable is out", "The camera is back"}));
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(CameraReportOf, ACameraThatIsOffIsNotAsked)
{
    write::frames.CameraOn = 0;
    told.rateHz = 10;
    told.link = CameraLink::kLost;
    notes = {"Nobody hears this."};
    FollowCamera();
    EXPECT_FALSE(CameraIsLost());
    EXPECT_EQ(StateReal("CameraRate"), 0);
    EXPECT_THAT(notes, SizeIs(1));
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(CameraReportOf, ARecordingHasItsClockAndWhatWasDoneToItsCounts)
{
    EXPECT_THAT(HeadOfRecording().Text(frames_key::kClock), testing::StartsWith("CLOCK_MONOTONIC"));
    EXPECT_EQ(HeadOfRecording().Text(frames_key::kCounts), "");
    told.clock = "the camera's own";
    told.counts = "shifted right by 1";
    EXPECT_EQ(HeadOfRecording().Text(frames_key::kClock), "the camera's own");
    EXPECT_EQ(HeadOfRecording().Text(frames_key::kCounts), "shifted right by 1");
}

}  // namespace
}  // namespace kelvo
