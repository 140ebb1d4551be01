// Triggers, and the steps of a run, on a board that writes down what it is asked.
#include "record/triggered_save.h"

#include "grabber/board_state_write.h"
#include "imagefile/header_write.h"
#include "platform/clock.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/profile.h"
#include "record/triggered_save_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/head_state_write.h"
#include "state/windows_write.h"
#include "support/full_disk.h"
#include "support/recording_board.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWidget>

#include <gmock/gmock.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// A key of the keyboard, held as long as it lives.
class HeldEnter {
  public:
    HeldEnter() { Strike(QEvent::KeyPress); }
    ~HeldEnter() { Strike(QEvent::KeyRelease); }
    HeldEnter(const HeldEnter&) = delete;
    HeldEnter& operator=(const HeldEnter&) = delete;

  private:
    void Strike(QEvent::Type type)
    {
        QKeyEvent key(type, Qt::Key_Return, Qt::NoModifier);
        QApplication::sendEvent(&widget_, &key);
    }
    QWidget widget_;
};

// Live video of 3 columns and 2 rows: the pixels are picture + 100 row + column.
class Triggers : public BoardTest {
  protected:
    Triggers()
    {
        PutFile(IniFilePath, "[Camera.2]\nMaxNumFramesToAllocate=3\n");
        write::camera.numBufFrames = 8;
        GoLive(3, 2);
        write::cal.CalType = 0;
        write::board.DataOffset = 0;
        write::cal.DecomList = {0, 1, 2, 3, 4, 5};
        write::cal.OffsetList.assign(6, 0);
        write::cal.GainList.assign(6, 1);
        settings = {};
    }
    // What the trigger's own operations were asked, without the frames in between.
    std::vector<std::string> TriggerCalls()
    {
        std::vector<std::string> calls;
        for (const std::string& call : recordingBoard.asked) {
            const bool ofTrigger = call.find("trig") != std::string::npos || call.starts_with("icp_grab");
            if (ofTrigger) calls.push_back(call);
        }
        ForgetAsked();
        return calls;
    }
    std::vector<std::string> BoxTexts() const
    {
        std::vector<std::string> texts;
        for (const auto& box : op.Boxes()) texts.push_back(box.text);
        return texts;
    }
    TriggerSettings& settings = write::triggered.triggerSettings;
};

constexpr std::int32_t kGatherMode = 0x48;

TEST_F(Triggers, SettingsHaveTheirDefaults)
{
    settings.Right = 7;
    ReadTriggerKeys();
    EXPECT_EQ(settings.CodeTrigger, 0);
    EXPECT_EQ(settings.Type1, 0);
    EXPECT_EQ(settings.NumTriggers, 1);
    EXPECT_EQ(settings.TriggerDelay, 0);
    EXPECT_EQ(settings.NumFramesToAverage, 1);
    EXPECT_EQ(settings.VgaOffDuringSave, 1);
    EXPECT_EQ(settings.SoftwareAll, 0);
    EXPECT_EQ(settings.Left, 0);
    EXPECT_EQ(settings.Top, 0);
    EXPECT_EQ(settings.Right, 128);
    EXPECT_EQ(settings.Bottom, 128);
    EXPECT_EQ(settings.IntensityLo1, 2048);
    EXPECT_EQ(settings.IntensityHi1, 4095);
}

TEST_F(Triggers, SettingsAreReadFromTheirSection)
{
    PutFile(IniFilePath,
            "[Trigger]\nType1=2\nCodeTrigger=1\nNumTriggers=12\nTriggerDelay=901\nNumFramesToAverage=999\nLeft=3\n"
            "Right=none\nIntensityHi1=16000\nVgaOffDuringSave=0\n");
    settings.Right = 77;
    ReadTriggerKeys();
    EXPECT_EQ(settings.Type1, 2);
    EXPECT_EQ(settings.CodeTrigger, 1);
    EXPECT_EQ(settings.NumTriggers, 12);
    EXPECT_EQ(settings.TriggerDelay, 901);
    EXPECT_EQ(settings.NumFramesToAverage, 999);
    EXPECT_EQ(settings.Left, 3);
    EXPECT_EQ(settings.Right, 77) << "no number stands there";
    EXPECT_EQ(settings.IntensityHi1, 16000);
    EXPECT_EQ(settings.VgaOffDuringSave, 0);
}

TEST_F(Triggers, SoftwareFiresAtOnce)
{
    EXPECT_EQ(TestTrigger(0, 0, 0), 1);
    EXPECT_EQ(TestTrigger(0, 1, 0), 1);
}

TEST_F(Triggers, SoftwareWaitsForTheEnterKeyBehindTheFirstStep)
{
    settings.SoftwareAll = 1;
    EXPECT_EQ(TestTrigger(0, 0, 0), 1);
    EXPECT_EQ(TestTrigger(0, 1, 0), 0);
    const HeldEnter key;
    EXPECT_EQ(TestTrigger(0, 1, 0), 1);
}

TEST_F(Triggers, TheSerialOneNeverFiresAndAnUnknownOneAlways)
{
    EXPECT_EQ(TestTrigger(3, 0, 0), 0);
    EXPECT_EQ(TestTrigger(4, 0, 0), 1);
    EXPECT_EQ(TestTrigger(-1, 0, 0), 1);
}

// 1000 1001 1002 / 1100 1101 1102: columns 1 and 2 of both rows have the mean 1051.5.
TEST_F(Triggers, IntensityFiresWhereTheMeanOfTheRectangleLiesInTheWindow)
{
    settings = {.Left = 1, .Top = 0, .Right = 2, .Bottom = 1, .IntensityLo1 = 1051, .IntensityHi1 = 1052};
    EXPECT_EQ(TestTrigger(1, kGatherMode, 0), 1);
    settings.IntensityHi1 = 1051;
    EXPECT_EQ(TestTrigger(1, kGatherMode, 0), 0);
    settings.IntensityLo1 = 1052;
    settings.IntensityHi1 = 9999;
    EXPECT_EQ(TestTrigger(1, kGatherMode, 0), 0);
}

TEST_F(Triggers, BothEndsOfTheWindowBelongToIt)
{
    settings = {.Left = 0, .Top = 0, .Right = 0, .Bottom = 0, .IntensityLo1 = 1000, .IntensityHi1 = 1000};
    EXPECT_EQ(TestTrigger(1, kGatherMode, 0), 1);
}

TEST_F(Triggers, TheRectangleIsHeldToTheFrame)
{
    settings = {.Left = -5, .Top = 1, .Right = 128, .Bottom = 128, .IntensityLo1 = 1101, .IntensityHi1 = 1101};
    EXPECT_EQ(TestTrigger(1, kGatherMode, 0), 1) << "the whole second row";
    settings = {.Left = 9, .Top = 9, .Right = 3, .Bottom = 2, .IntensityLo1 = 1102, .IntensityHi1 = 1102};
    EXPECT_EQ(TestTrigger(1, kGatherMode, 0), 1) << "the last pixel";
}

TEST_F(Triggers, TheRectangleIsOneOfTheImageNotOfTheReadout)
{
    write::cal.DecomList = {5, 4, 3, 2, 1, 0};
    settings = {.Left = 0, .Top = 0, .Right = 0, .Bottom = 0, .IntensityLo1 = 1102, .IntensityHi1 = 1102};
    EXPECT_EQ(TestTrigger(1, kGatherMode, 0), 1);
    write::cal.CalType = 1;
    write::cal.OffsetList = {0, 0, 0, 0, 0, 2};
    settings.IntensityLo1 = settings.IntensityHi1 = 1100;
    EXPECT_EQ(TestTrigger(1, kGatherMode, 0), 1) << "and corrected";
}

TEST_F(Triggers, IntensityTakesOneNewFrameATest)
{
    ForgetAsked();
    settings = {.IntensityLo1 = 0, .IntensityHi1 = 1};
    for (int test = 0; test < 3; ++test) EXPECT_EQ(TestTrigger(1, kGatherMode, 0), 0);
    const auto reads = std::ranges::count_if(recordingBoard.asked,
                                             [](const std::string& call) { return call.starts_with("icp_read_area"); });
    EXPECT_EQ(reads, 3);
}

TEST_F(Triggers, WithoutAFrameIntensityHasNotFired)
{
    settings = {.IntensityLo1 = -32768, .IntensityHi1 = 32767};
    EXPECT_EQ(TestTrigger(1, kGatherMode | 0x800, 0), 1);
    EXPECT_FALSE(TriggerTestFailed());
    recordingBoard.answers["icp_read_area"] = -1;
    EXPECT_EQ(TestTrigger(1, kGatherMode | 0x800, 0), 0);
    EXPECT_TRUE(TriggerTestFailed());
    EXPECT_EQ(TestTrigger(3, 0, 0), 0);
    EXPECT_FALSE(TriggerTestFailed());
}

TEST_F(Triggers, ExternalArmsWaitsAndGoesBackToTheGrab)
{
    ForgetAsked();
    EXPECT_EQ(TestTrigger(2, 1, 0), 1);
    EXPECT_THAT(TriggerCalls(), ElementsAre("amdig_trigen 12 1", "icp_trig_snap 11 5", "icp_wait_trig 11 5 5",
                                            "amdig_trigen 12 0", "icp_grab 11 5"));
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(Triggers, ExternalWaitsInSlicesAndArmsAgainOnceInTenSeconds)
{
    recordingBoard.answers["icp_wait_trig"] = 0;
    ForgetAsked();
    EXPECT_EQ(TestTrigger(2, 1, 0), 0);
    EXPECT_THAT(TriggerCalls(), ElementsAre("amdig_trigen 12 1", "icp_trig_snap 11 5", "icp_wait_trig 11 5 5"));
    for (int slice = 2; slice < 200; ++slice) EXPECT_EQ(TestTrigger(2, 0, 0), 0);
    EXPECT_THAT(TriggerCalls(), SizeIs(198)) << "waits and nothing else";
    EXPECT_EQ(TestTrigger(2, 0, 0), 0);
    EXPECT_THAT(TriggerCalls(), ElementsAre("icp_wait_trig 11 5 5", "icp_trig_snap 11 5"));
    EXPECT_EQ(TestTrigger(2, 0, 0), 0);
    EXPECT_THAT(TriggerCalls(), ElementsAre("icp_wait_trig 11 5 5"));
}

TEST_F(Triggers, AShortWaitIsOneSlice)
{
    recordingBoard.answers["icp_wait_trig"] = 0;
    ForgetAsked();
    EXPECT_EQ(WaitExternalTrigger(10), 0);
    EXPECT_THAT(TriggerCalls(), ElementsAre("icp_wait_trig 11 5 1", "icp_trig_snap 11 5"));
    recordingBoard.answers["icp_wait_trig"] = 1;
    EXPECT_EQ(WaitExternalTrigger(10), 1);
    EXPECT_THAT(TriggerCalls(), ElementsAre("icp_wait_trig 11 5 1"));
}

TEST_F(Triggers, ABoardThatRefusesIsTold)
{
    recordingBoard.answers["icp_trig_snap"] = -1;
    recordingBoard.answers["icp_grab"] = -1;
    EXPECT_EQ(ArmExternalTrigger(1), 0);
    EXPECT_EQ(ArmExternalTrigger(0), 0);
    EXPECT_EQ(TestTrigger(2, 1, 0), 1);
    EXPECT_THAT(BoxTexts(), ElementsAre("Unable to start triggered acquisiton",
                                        "Error starting grab after trigger to image processing board"));
    EXPECT_EQ(op.Boxes()[0].caption, "Frame Grabber Warning");
    EXPECT_EQ(op.Boxes()[1].caption, "Frame Grabber Error!");
}

// ---- Runs

class TriggeredRun : public Triggers {
  protected:
    TriggeredRun()
    {
        settings.NumTriggers = 3;
        settings.NumFramesToAverage = 2;
    }
    void Begin()
    {
        ASSERT_EQ(BeginTriggeredRun(), RunBegan::kYes);
        NameTriggeredFile(path);
    }
    StepWritten Step(std::int32_t picture)
    {
        recordingBoard.picture = picture;
        EXPECT_TRUE(TriggerHasFired());
        EXPECT_EQ(GatherTriggeredFrame(), 1);
        return WriteTriggeredFrame();
    }
    std::string File() const { return ReadWholeFile(path, 1 << 20).value_or(""); }
    template <typename T>
    static T At(const std::string& bytes, std::size_t offset)
    {
        T value{};
        EXPECT_LE(offset + sizeof value, bytes.size());
        std::memcpy(&value, bytes.data() + offset, sizeof value);
        return value;
    }
    // First and last sample of each frame behind the header.
    static std::vector<float> Ends(const std::string& file)
    {
        std::vector<float> ends;
        for (std::size_t at = kHeader; at + kFrame <= file.size(); at += kFrame) {
            ends.push_back(At<float>(file, at));
            ends.push_back(At<float>(file, at + kFrame - 4));
        }
        return ends;
    }
    static constexpr std::size_t kHeader = 1024;
    static constexpr std::size_t kFrame = std::size_t{6} * 4;
    std::string path = directory / "scan.seq";
};

TEST_F(TriggeredRun, IsAFloatFrameForEachStepBehindOneHeader)
{
    Begin();
    EXPECT_EQ(TriggersLeft, 3);
    EXPECT_EQ(Step(1000), StepWritten::kYes);
    EXPECT_EQ(Step(2000), StepWritten::kYes);
    EXPECT_EQ(TriggersLeft, 1);
    EXPECT_EQ(TriggersDone(), 2);
    EXPECT_EQ(Step(3000), StepWritten::kYes);
    EXPECT_EQ(File().size(), kHeader + 3 * kFrame);
    EXPECT_THAT(Ends(File()), ElementsAre(1000, 1102, 2000, 2102, 3000, 3102));
    ImageHeaderRecord read;
    EXPECT_EQ(ReadImageHeader(path, read), 1024);
    EXPECT_EQ(+read.FrameCount, 3U) << "by the length";
}

TEST_F(TriggeredRun, AveragesItsFrames)
{
    Begin();
    recordingBoard.onRead = [](std::int32_t n) { recordingBoard.picture = n % 2 ? 1000 : 1003; };
    EXPECT_EQ(Step(0), StepWritten::kYes);
    EXPECT_EQ(At<float>(File(), kHeader), 1001.5F);
}

// Offsets and types are those of docs/files.md, counted by hand.
TEST_F(TriggeredRun, WritesTheHeaderOfTheSpectrometer)
{
    PutFile(IniFilePath, "[Setup]\nSpiffHeaderIdentity=4711\n");
    ForgetProfile(IniFilePath);
    write::display.DisplayLow = 5;
    write::display.DisplayHigh = 70000;
    write::head.VideoOffset = {1, std::bit_cast<std::int32_t>(12.75F), 3, 4};
    write::file.SpiffHeader.SpiffHeaderIdentity = 99;  // of a file that was looked at
    write::file.SpiffHeader.Reserved42.fill(7);
    Begin();
    const std::int64_t before = WallClockSeconds();
    EXPECT_EQ(Step(1000), StepWritten::kYes);
    const std::string file = File();
    EXPECT_EQ(file[0], 1);
    EXPECT_EQ(At<std::int32_t>(file, 1), 4711);
    EXPECT_GE(At<std::int32_t>(file, 5), before);
    EXPECT_LE(At<std::int32_t>(file, 5), WallClockSeconds());
    EXPECT_EQ(At<std::int16_t>(file, 9), 3);
    EXPECT_EQ(At<std::int32_t>(file, 11), 70000);
    EXPECT_EQ(At<std::int32_t>(file, 15), 5);
    EXPECT_EQ(At<std::int16_t>(file, 19), 0);
    EXPECT_EQ(At<std::int16_t>(file, 21), 0);
    EXPECT_EQ(file[23], 1);
    EXPECT_EQ(At<std::int16_t>(file, 24), 3);
    EXPECT_EQ(At<std::int16_t>(file, 26), 2);
    EXPECT_EQ(At<std::int16_t>(file, 28), 12);
    EXPECT_EQ(At<float>(file, 30), 1.0F);
    EXPECT_EQ(At<float>(file, 34), 3.0F);
    EXPECT_EQ(At<float>(file, 38), 1.0F);
    EXPECT_EQ(file.substr(42, 69), std::string(69, '\0'));
    EXPECT_EQ(At<std::int16_t>(file, 111 + 2), 3) << "ImageWidth";
    EXPECT_EQ(At<std::int16_t>(file, 111 + 4), 2) << "ImageHeight";
    EXPECT_EQ(At<std::int16_t>(file, 111 + 6), 4) << "SampleBytes";
    EXPECT_EQ(At<std::int16_t>(file, 111 + 40), 8) << "HeaderVersion";
    EXPECT_EQ(At<std::uint32_t>(file, 111 + 42), 1U) << "FrameCount";
    EXPECT_EQ(At<std::int16_t>(file, 111 + 50), 1) << "BottomRow";
    EXPECT_EQ(At<std::int16_t>(file, 111 + 52), 2) << "RightColumn";
    EXPECT_EQ(At<std::int16_t>(file, 111 + 54), 2) << "FramesAveraged";
    EXPECT_EQ(At<std::int16_t>(file, 111 + 124), 8) << "DataType";
    EXPECT_EQ(file.substr(623, 401), std::string(401, '\0'));
}

TEST_F(TriggeredRun, AnOrdinaryOffsetLeavesItsWordZero)
{
    write::head.VideoOffset = {128, 128, 128, 128};
    Begin();
    EXPECT_EQ(Step(1000), StepWritten::kYes);
    EXPECT_EQ(At<std::int16_t>(File(), 28), 0);
    write::head.VideoOffset = {0, std::bit_cast<std::int32_t>(1e30F), 0, 0};
    Begin();
    EXPECT_EQ(Step(1000), StepWritten::kYes);
    EXPECT_EQ(At<std::int16_t>(File(), 28), 0);
}

TEST_F(TriggeredRun, LeavesWhatStoodUnderTheNameUntilTheFirstStepIsWhole)
{
    PutFile(path, "before");
    Begin();
    EXPECT_EQ(File(), "before");
    EXPECT_TRUE(TriggerHasFired());
    EXPECT_EQ(GatherTriggeredFrame(), 1);
    EXPECT_EQ(File(), "before");
    EXPECT_EQ(WriteTriggeredFrame(), StepWritten::kYes);
    EXPECT_EQ(File().size(), kHeader + kFrame);
}

TEST_F(TriggeredRun, TellsAFileThatCannotBeMadeOrOpened)
{
    path = directory / "none/scan.seq";
    Begin();
    EXPECT_EQ(Step(1000), StepWritten::kNotOpened);
    path = directory / "scan.seq";
    Begin();
    EXPECT_EQ(Step(1000), StepWritten::kYes);
    DeleteFileNamed(path);
    EXPECT_EQ(Step(1000), StepWritten::kNotOpened);
}

TEST_F(TriggeredRun, AHeaderThatTheDiskDoesNotTakeLeavesNoFile)
{
    PutFile(path, "before");
    Begin();
    const FullDisk disk(1000);
    EXPECT_EQ(Step(1000), StepWritten::kNoHeader);
    EXPECT_EQ(File(), "before");
}

TEST_F(TriggeredRun, AFirstFrameThatIsCutLeavesNoFileAndTheNextBeginsIt)
{
    PutFile(path, "before");
    Begin();
    {
        const FullDisk disk(kHeader + kFrame - 1);
        EXPECT_EQ(Step(1000), StepWritten::kCut);
    }
    EXPECT_EQ(File(), "before");
    EXPECT_EQ(Step(2000), StepWritten::kYes);
    EXPECT_THAT(Ends(File()), ElementsAre(2000, 2102));
}

TEST_F(TriggeredRun, ALaterFrameThatIsCutIsTakenOutAgain)
{
    Begin();
    EXPECT_EQ(Step(1000), StepWritten::kYes);
    {
        const FullDisk disk(kHeader + 2 * kFrame - 3);
        EXPECT_EQ(Step(2000), StepWritten::kCut);
    }
    EXPECT_EQ(File().size(), kHeader + kFrame);
    EXPECT_EQ(Step(3000), StepWritten::kYes);
    EXPECT_THAT(Ends(File()), ElementsAre(1000, 1102, 3000, 3102));
}

TEST_F(TriggeredRun, PartOfAFrameAtTheEndIsNoFrame)
{
    Begin();
    EXPECT_EQ(Step(1000), StepWritten::kYes);
    PutFile(path, File() + "some bytes");
    EXPECT_EQ(Step(2000), StepWritten::kYes);
    EXPECT_EQ(File().size(), kHeader + 2 * kFrame);
    EXPECT_THAT(Ends(File()), ElementsAre(1000, 1102, 2000, 2102));
}

TEST_F(TriggeredRun, HasNoFrameWhereTheBoardGivesNone)
{
    Begin();
    EXPECT_TRUE(TriggerHasFired());
    recordingBoard.answers["icp_read_area"] = -1;
    EXPECT_EQ(GatherTriggeredFrame(), 0);
    recordingBoard.answers.clear();
    EXPECT_EQ(GatherTriggeredFrame(), 1);
}

TEST_F(TriggeredRun, NeedsMemoryForBothItsFrames)
{
    FailAllocation(1);
    EXPECT_EQ(BeginTriggeredRun(), RunBegan::kNoIntegerMemory);
    FailAllocation(2);
    EXPECT_EQ(BeginTriggeredRun(), RunBegan::kNoFloatMemory);
    EXPECT_EQ(BeginTriggeredRun(), RunBegan::kYes);
}

TEST_F(TriggeredRun, APressOfTheEnterKeyIsOneStep)
{
    settings.SoftwareAll = 1;
    Begin();
    EXPECT_TRUE(TriggerHasFired()) << "the first one needs no key";
    EXPECT_FALSE(TriggerHasFired());
    {
        const HeldEnter key;
        EXPECT_TRUE(TriggerHasFired());
        EXPECT_FALSE(TriggerHasFired()) << "still down";
    }
    EXPECT_FALSE(TriggerHasFired());
    EXPECT_EQ(TriggersLeft, 1);
}

TEST_F(TriggeredRun, AKeyThatIsHeldFromTheStartIsNoStep)
{
    settings.SoftwareAll = 1;
    Begin();
    const HeldEnter key;
    EXPECT_TRUE(TriggerHasFired());
    EXPECT_FALSE(TriggerHasFired());
}

TEST_F(TriggeredRun, ArmsTheBoardOnceForEachStep)
{
    settings.Type1 = 2;
    Begin();
    EXPECT_EQ(TrigFirstPass, 1);
    recordingBoard.answers["icp_wait_trig"] = 0;
    ForgetAsked();
    EXPECT_FALSE(TriggerHasFired());
    EXPECT_EQ(TrigFirstPass, 0);
    EXPECT_FALSE(TriggerHasFired());
    recordingBoard.answers["icp_wait_trig"] = 1;
    EXPECT_TRUE(TriggerHasFired());
    EXPECT_EQ(TrigFirstPass, 1);
    EXPECT_TRUE(TriggerHasFired());
    const std::string arm = "amdig_trigen 12 1";
    EXPECT_EQ(std::ranges::count(recordingBoard.asked, arm), 2);
}

}  // namespace
}  // namespace kelvo
