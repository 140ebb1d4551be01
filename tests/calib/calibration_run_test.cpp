// Calibration runs on a camera of 2 x 4 detectors whose frames are given: every step that asks or fails, and what is
// left behind.

#include "calib/calibration_report.h"
#include "calib/calibration_set.h"
#include "calib/last_set.h"
#include "calib/one_point_run.h"
#include "calib/reload_lists.h"
#include "calib/run_fixture.h"
#include "grabber/board.h"
#include "pixel/bad_pixels.h"
#include "platform/dialog.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/pointer.h"
#include "platform/profile.h"
#include "platform/window.h"
#include "state/cal_settings_write.h"
#include "state/cal_state_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "support/recording_board.h"
#include "ui/status.h"
#include "video/video.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

namespace kelvo {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

using TwoPointRun = CalibrationRun;

// Good detectors and the strong one and the far one respond: low mean (1000 + 1010 + 990 + 1000 + 1000 + 1000 + 1500)
// / 7 = 1071.43, response (6 x 1000 + 2000) / 7 = 1142.86. Gains 1000 / 1142.86 = 0.875; the strong one's 1.75 is out
// of range, and 1500 lies 428 above the mean.
TEST_F(TwoPointRun, MakesALastSetAndPutsItInForce)
{
    EXPECT_EQ(TwoPointOf(kLow, kHigh), 1);
    EXPECT_EQ(CalType, 2);
    EXPECT_EQ(CalDone, 1);
    EXPECT_THAT(ListOf<float>("Last.gai"), ElementsAre(0.875F, 0.875F, 0.875F, 0.875F, 0.875F, 0.0F, 0.0F, 0.0F));
    // The mean as a float is 8777143 / 8192, a little above 7500 / 7: x 0.875 that is 937.500015, and 62.499985 is
    // left.
    const auto offsets = ListOf<std::int16_t>("Last.off");
    EXPECT_THAT(offsets, ElementsAre(62, 72, 52, 62, 62, 0, 0, 0));
    EXPECT_THAT(ListOf<std::int16_t>("Last.noi"), Each(0));
    EXPECT_THAT(ListOf<std::uint32_t>("Last.dcm"), SizeIs(8));
    EXPECT_EQ(FileContents(InDirectory("Last.bad")), "   1,   1\n   1,   2\n   1,   3\n");
    // 5 and 7 have neighbours; 6 has 2 above it.
    EXPECT_THAT(DecomList, ElementsAre(0, 1, 2, 3, 4, 1, 2, 3));
    EXPECT_THAT(GainList, ElementsAre(0.875F, 0.875F, 0.875F, 0.875F, 0.875F, 0.1F, 0.1F, 0.1F));
    EXPECT_EQ(FileContents(InDirectory("Last.cal")), FileContents(IniFilePath));
    EXPECT_EQ(KeyOf(InDirectory("Last.cal"), "Calibration", "GainFile"), "Last.gai");
    EXPECT_EQ(KeyOf(InDirectory("Last.cal"), "Calibration", "OffsetFile"), "Last.off");
    EXPECT_EQ(KeyOf(InDirectory("Last.cal"), "Calibration", "DecomFile"), "Last.dcm");
    EXPECT_EQ(KeyOf(InDirectory("Last.cal"), "Calibration", "BadDetFile"), "Last.bad");
    EXPECT_EQ(KeyOf(InDirectory("Last.cal"), "Calibration", "CalType"), "2");
    EXPECT_EQ(KeyOf(InDirectory("Last.cal"), "Calibration", "DriverNumber"), "2");
    EXPECT_EQ(KeyOf(InDirectory("Last.cal"), "Calibration", "CalFile"), LastCalPath());
    EXPECT_EQ(KeyOf(InDirectory("Last.cal"), "Calibration", "IntensityCold"), "1071");
    EXPECT_EQ(KeyOf(InDirectory("Last.cal"), "Calibration", "IntensityHot"), "2214");
    EXPECT_EQ(KeyOf(InDirectory("Last.cal"), "Calibration", "TemperatureCold"), "-999.000000");
    EXPECT_EQ(KeyOf(InDirectory("Last.cal"), "Setup", "IndexFrameRate"), "3") << "the video settings in force";
    EXPECT_EQ(KeyOf(InDirectory("Last.cal"), "Setup", "Mark"), "of the machine");
    EXPECT_EQ(DisplayUnit, 2);
    ASSERT_THAT(op->Boxes(), SizeIs(2));
    EXPECT_EQ(op->Boxes()[0].caption, "Bad pixel count");
    EXPECT_THAT(op->Boxes()[0].text, HasSubstr("Total bad pixels =      3 ( 37.5 %)"));
    EXPECT_THAT(op->Boxes()[0].text, HasSubstr("Inoperable opens =     1"));
    EXPECT_THAT(op->Boxes()[0].text, HasSubstr("Low response (I<mean) =     1"));
    EXPECT_THAT(op->Boxes()[0].text, HasSubstr("High offset =     1"));
    EXPECT_EQ(op->Boxes()[1].caption, "Kelvo Calibration Statistics");
    EXPECT_THAT(op->Boxes()[1].text, Not(HasSubstr("@")));
    EXPECT_THAT(op->Boxes()[1].text, Not(HasSubstr("Sensitivity")));
}

TEST_F(TwoPointRun, TheSetNamesItsCameraWhereTheSettingsLeaveItToTheDefault)
{
    PutFile(IniFilePath, "[Setup]\nMark=of the machine\n");
    ForgetProfile(IniFilePath);
    EXPECT_EQ(TwoPointOf(kLow, kHigh), 1);
    EXPECT_EQ(KeyOf(LastCalPath(), "Setup", "ActiveCamera"), "2");
    EXPECT_EQ(LoadCalibration(hWndMain, LastCalPath()), 1);
}

TEST_F(TwoPointRun, TemperaturesAreToldAndKept)
{
    AtLow({kLow}, "20");
    AtHigh({kHigh}, "25.5");
    EXPECT_EQ(TwoPoint(), 1);
    EXPECT_THAT(op->Boxes()[1].text, HasSubstr(" @ 20.000"));
    EXPECT_THAT(op->Boxes()[1].text, HasSubstr(" @ 25.500"));
    // 5.5 / 1142.857 = 0.0048; 207.8
    EXPECT_THAT(op->Boxes()[1].text, HasSubstr("Sensitivity:  0.0048 \xC2\xB0"
                                               "C/count  (207.8 counts/\xC2\xB0"
                                               "C)"));
    EXPECT_EQ(KeyOf(InDirectory("Last.cal"), "Calibration", "TemperatureHot"), "25.500000");
    EXPECT_EQ(CalSettings.TemperatureHot, 25.5F);
    EXPECT_EQ(CalSettings.TemperatureCold, 20.0F);
}

TEST_F(TwoPointRun, CancelAtTheLowSourceChangesNothing)
{
    write::cal.CalType = 1;
    write::calSet.CalDone = 1;
    const std::string status = StatusText;
    Press(kIdCancel);
    EXPECT_EQ(TwoPoint(), 0);
    EXPECT_EQ(CalType, 1);
    EXPECT_EQ(CalDone, 1);
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(TwoPointRun, CancelAtTheHighSourceLeavesTheUnityState)
{
    AtLow({kLow});
    Press(kIdCancel);
    EXPECT_EQ(TwoPoint(), 0);
    ExpectUnity();
    EXPECT_EQ(CalDone, 0);
    EXPECT_THAT(op->Boxes(), IsEmpty());
    EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
}

TEST_F(TwoPointRun, OneFrameGivesNoNoiseAndTheOldFileGoes)
{
    PutFile(InDirectory("Last.noi"), "old");
    write::calSet.CalSettings.NumFrames = 1;
    EXPECT_EQ(TwoPointOf(kLow, kHigh), 1);
    EXPECT_FALSE(Stands("Last.noi"));
    EXPECT_THAT(op->Boxes()[1].text, Not(HasSubstr("noise")));
    EXPECT_THAT(ListOf<float>("Last.gai"), ElementsAre(0.875F, 0.875F, 0.875F, 0.875F, 0.875F, 0.0F, 0.0F, 0.0F));
}

// Detector 2 flickers between 980 and 1000: over two frames a deviation of 14.1 counts, 283 twentieths.
TEST_F(TwoPointRun, ANoisyDetectorIsReplaced)
{
    Frame other = kLow;
    other[2] = 1000;
    Frame one = kLow;
    one[2] = 980;
    AtLow({one, other});
    AtHigh({kHigh});
    EXPECT_EQ(TwoPoint(), 1);
    EXPECT_THAT(ListOf<std::int16_t>("Last.noi"), ElementsAre(0, 0, 283, 0, 0, 0, 0, 0));
    EXPECT_THAT(op->Boxes()[0].text, HasSubstr("Noisy =     1"));
    EXPECT_EQ(ListOf<float>("Last.gai")[2], 0.0F);
    EXPECT_EQ(DecomList[2], 3U);
}

TEST_F(TwoPointRun, AFrozenImageIsStartedBeforeEachCapture)
{
    write::frames.LiveVideo = 0;
    AtLow({kLow});
    AtHigh({kHigh}, "", [] {
        if (LiveVideo) ToggleFreeze(write::frames.LiveVideo);
    });
    TakeBoardCalls();
    EXPECT_EQ(TwoPoint(), 1);
    EXPECT_THAT(TakeBoardCalls(), ElementsAre("grab", "freeze", "grab"));
    EXPECT_EQ(LiveVideo, 1);
    EXPECT_THAT(op->Boxes(), SizeIs(2)) << "no question about one frame";
}

TEST_F(TwoPointRun, WithoutSubstitutionNoListIsNamed)
{
    write::display.SubstBadPixels = 0;
    write::calSet.CalSettings.BadDetFile = InDirectory("Perm.bad");
    EXPECT_EQ(TwoPointOf(kLow, kHigh), 1);
    EXPECT_FALSE(Stands("Last.bad"));
    EXPECT_EQ(KeyOf(InDirectory("Last.cal"), "Calibration", "BadDetFile"), "");
    EXPECT_THAT(DecomList, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7));
}

TEST_F(TwoPointRun, AListOfBadDetectorsIsJoinedWithWhatTheGainsShow)
{
    write::calSet.CalSettings.BadDetFile = InDirectory("Perm.bad");
    PutFile(CalSettings.BadDetFile, "   0,   0\n");
    EXPECT_EQ(TwoPointOf(kLow, kHigh), 1);
    EXPECT_EQ(FileContents(InDirectory("Last.bad")), "   0,   0\n   1,   1\n   1,   2\n   1,   3\n");
    EXPECT_THAT(FileContents(InDirectory("Last.report.txt")), HasSubstr("      1  Listed before\n"));
}

// --- Refusals -------------------------------------------------------------------------------------------------------

TEST_F(TwoPointRun, WithTooFewGoodDetectorsItFails)
{
    EXPECT_EQ(TwoPointOf(kLow, kLow), 0);
    EXPECT_THAT(BoxTexts(), ElementsAre("Calibration failed due to too few good detectors in array."));
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
    ExpectUnity();
}

// Four up and four down by a little less: the mean response is 20 counts.
TEST_F(TwoPointRun, WithTooSmallARangeItFails)
{
    const Frame low(8, 1000);
    const Frame high = {1100, 1100, 1100, 1100, 940, 940, 940, 940};
    EXPECT_EQ(TwoPointOf(low, high), 0);
    EXPECT_THAT(BoxTexts(), ElementsAre("Calibration failed due to insufficient range\nbetween low source and high "
                                        "source."));
    ExpectUnity();
}

TEST_F(TwoPointRun, ARangeOfTheNoiseFloorPasses)
{
    const Frame low(8, 1000);
    const Frame high = {1100, 1100, 1100, 1100, 950, 950, 950, 950};  // mean 25
    EXPECT_EQ(TwoPointOf(low, high), 1);
    EXPECT_THAT(op->Boxes()[0].text, HasSubstr("Total bad pixels =      8 (100.0 %)"));
}

TEST_F(TwoPointRun, AnArrayThatFallsWithFluxGetsPositiveGains)
{
    EXPECT_EQ(TwoPointOf(Frame(8, 2000), Frame(8, 1000)), 1);
    EXPECT_THAT(ListOf<float>("Last.gai"), Each(1.0F));
}

TEST_F(TwoPointRun, WithoutFramesItFails)
{
    const auto expectRefusal = [&](const char* why) {
        SCOPED_TRACE(why);
        EXPECT_EQ(TwoPoint(), 0);
        EXPECT_EQ(op->Boxes().back().text, "Video Data Acquisition Failed, Hardware error!");
        EXPECT_EQ(op->Boxes().back().caption, "Kelvo Calibration Error!");
        ExpectUnity();
        EXPECT_FALSE(Stands("Last.cal"));
    };
    write::calSet.CalSettings.NumFrames = 0;
    AtLow({kLow});
    expectRefusal("no frame is wanted");
    write::calSet.CalSettings.NumFrames = 2;
    write::frames.GrabberPresent = 0;
    AtLow({kLow});
    expectRefusal("no capture board");
    write::frames.GrabberPresent = 1;
    AtLow({Frame(8)});
    expectRefusal("frames of nothing");
    AtLow({kLow});
    AtHigh({Frame(8)});
    expectRefusal("nothing from the second source");
}

// The n-th allocation from a source's dialog on fails, one after the other; no frame is wanted, so that the run ends
// by itself at the capture.
TEST_F(TwoPointRun, MemoryForSumsThatIsRefusedIsNamed)
{
    for (int n = 1; n < 16; ++n) {
        write::calSet.CalSettings.NumFrames = 0;
        op->Do([n] {
            FailAllocation(n);
            OperatePress(DialogInFront(), kIdOk);
        });
        EXPECT_EQ(TwoPoint(), 0);
        FailAllocation(0);
        EXPECT_EQ(CalType, 0);
    }
    EXPECT_THAT(BoxTexts(), Contains("Failure to allocate or lock LowSumBuffer memory!"));
    EXPECT_THAT(BoxTexts(), Contains("Failure to allocate or lock HighSumBuffer memory!"));
    EXPECT_THAT(BoxTexts(), Contains("Failure to allocate or lock NoiseBuffer memory!"));
    ExpectUnity();
}

TEST_F(TwoPointRun, MemoryForListsThatIsRefusedIsNamed)
{
    for (int n = 1; n < 16; ++n) {
        AtLow({kLow});
        AtHigh({kHigh}, "", [n] { FailAllocation(n); });
        TwoPoint();
        FailAllocation(0);
    }
    EXPECT_THAT(BoxTexts(), Contains("Failure to allocate video memory!"));
    EXPECT_THAT(BoxTexts(), Contains("Failure to allocate Gain List memory!"));
    EXPECT_THAT(BoxTexts(), Contains("Failure to load Decommutation array into memory!"));
    EXPECT_THAT(BoxTexts(), Contains("Failure to allocate OffsetList memory!"));
}

// While the box of the bad pixels is in front the lists in force are taken away, and memory for new ones is refused.
TEST_F(TwoPointRun, GainsThatCantBeInstalledAreTold)
{
    op->AtNextBox([](const FrontBox& box) {
        EXPECT_EQ(box.caption, "Bad pixel count");
        write::cal.GainList.clear();
        FailAllocation(1);
    });
    EXPECT_EQ(TwoPointOf(kLow, kHigh), 0);
    EXPECT_THAT(BoxTexts(), ElementsAre(HasSubstr("Total bad"), "Hardware Timeout Error, Download of Gain Coefficients",
                                        "Failure to download Gain list!"));
    EXPECT_EQ(op->Boxes()[1].caption, "Kelvo message");
    EXPECT_EQ(op->Boxes()[2].caption, "Kelvo Download Error!");
    ExpectUnity();
}

TEST_F(TwoPointRun, OffsetsThatCantBeInstalledAreTold)
{
    op->AtNextBox([](const FrontBox&) {
        write::cal.OffsetList.clear();
        FailAllocation(2);  // the first makes the new list
    });
    EXPECT_EQ(TwoPointOf(kLow, kHigh), 0);
    EXPECT_THAT(BoxTexts(),
                ElementsAre(HasSubstr("Total bad"), "Hardware Timeout Error, Download of Offset Coefficients"));
    ExpectUnity();
}

TEST_F(TwoPointRun, MemoryForOffsetsThatIsRefusedIsTold)
{
    op->AtNextBox([](const FrontBox&) { FailAllocation(1); });
    EXPECT_EQ(TwoPointOf(kLow, kHigh), 0);
    EXPECT_THAT(BoxTexts(), ElementsAre(HasSubstr("Total bad"), "Failure to allocate OffsetList memory!",
                                        "Failure to lock Gain list memory!"));
    ExpectUnity();
}

TEST_F(TwoPointRun, ATableThatCantBeReadIsTold)
{
    AtLow({kLow});
    AtHigh({kHigh}, "", [] { PutFile(DefaultDir + "/DECOM.TMP", "short"); });
    EXPECT_EQ(TwoPoint(), 0);
    EXPECT_EQ(op->Boxes().back().text, "Failure to load Decommutation array into memory!");
    ExpectUnity();
}

// A pattern that isn't there stops the run with the new lists installed and without a calibration.
TEST_F(TwoPointRun, SubstitutionThatFailsLeavesTheNewListsInstalled)
{
    PutFile(InDirectory("Last.gai"), "the former gains");
    write::calSet.CalSettings.PRSfile = InDirectory("missing.prs");
    EXPECT_EQ(TwoPointOf(kLow, kHigh), 0);
    EXPECT_EQ(CalType, 0);
    EXPECT_EQ(CalDone, 0);
    EXPECT_THAT(DecomList, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7));
    EXPECT_THAT(GainList, ElementsAre(0.875F, 0.875F, 0.875F, 0.875F, 0.875F, 0.1F, 0.1F, 0.1F));
    EXPECT_THAT(OffsetList, ElementsAre(62, 72, 52, 62, 62, 0, 0, 0));
    EXPECT_EQ(FileContents(InDirectory("Last.gai")), "the former gains");
    EXPECT_FALSE(Stands("Last.off"));
}

// Gains of 2.5 at a mean of 15000: an offset of -22500 fits, of low mean 1 with a gain of 2.5: 1 - 37500.
class RangeQuestion : public TwoPointRun {
  protected:
    void SetUp() override
    {
        TwoPointRun::SetUp();
        write::calSet.CalSettings.GainAcceptanceRange = 1.6F;
        write::calSet.CalSettings.MinOffset = 20000;
        write::calSet.CalSettings.MaxOffset = 20000;
    }
    // Mean low 14000, mean response 100; detector 0: gain 2.4, offset 7000 - 33600 = -26600 fits; with 500: -33100.
    const Frame low{500, 15928, 15928, 15928, 15929, 15929, 15929, 15929};
    const Frame high{740, 16008, 16008, 16008, 16009, 16009, 16009, 16009};
};

TEST_F(RangeQuestion, YesKeepsTheWrappedOffsets)
{
    AtLow({low});
    AtHigh({high});
    op->Answer({Button::kOk, Button::kYes, Button::kOk});
    EXPECT_EQ(TwoPoint(), 1);
    ASSERT_THAT(op->Boxes(), SizeIs(3));
    EXPECT_EQ(op->Boxes()[1].text, "Some OFFSET coefficients out of range!\nDo you wish to continue ?");
    EXPECT_EQ(op->Boxes()[1].caption, "Warning!  Continue?");
    EXPECT_THAT(op->Boxes()[1].buttons, ElementsAre("yes", "no"));
    EXPECT_EQ(ListOf<float>("Last.gai")[0], 2.4F);
    EXPECT_EQ(ListOf<std::int16_t>("Last.off")[0], 500 - 33600 + 65536);
    EXPECT_EQ(CalType, 2);
}

TEST_F(RangeQuestion, NoLeavesTheUnityStateAndTheFormerFiles)
{
    PutFile(InDirectory("Last.noi"), "former noise");
    AtLow({low});
    AtHigh({high});
    op->Answer({Button::kOk, Button::kNo});
    EXPECT_EQ(TwoPoint(), 0);
    EXPECT_THAT(op->Texts("status", "text"), Contains("Downloading Unity Coefficients"));
    ExpectUnity();
    EXPECT_EQ(DisplayLow, 0);
    EXPECT_EQ(DisplayHigh, 0x3FFF);
    EXPECT_EQ(FileContents(InDirectory("Last.noi")), "former noise");
    EXPECT_FALSE(Stands("Last.off"));
}

// The lists in force are taken away while the question stands, and memory for new ones is refused.
TEST_F(RangeQuestion, UnityCoefficientsThatCantBeFilledInAreTold)
{
    for (const bool gains : {true, false}) {
        AtLow({low});
        AtHigh({high});
        op->Answer({Button::kOk, Button::kNo});
        op->AtNextBox([](const FrontBox&) {});
        op->AtNextBox([gains](const FrontBox& box) {
            EXPECT_EQ(box.caption, "Warning!  Continue?");
            if (gains) write::cal.GainList.clear();
            write::cal.OffsetList.clear();
            FailAllocation(1);
        });
        EXPECT_EQ(TwoPoint(), 0);
        EXPECT_EQ(op->Boxes().back().text, gains ? "Hardware Timeout Error, Download of Gain Coefficients"
                                                 : "Hardware Timeout Error, Download of Offset Coefficients");
        ExpectUnity();
    }
}

// --- Files ----------------------------------------------------------------------------------------------------------

TEST_F(TwoPointRun, ADirectoryInTheWayOfTheNoiseFileIsToldAndTheRunGoesOn)
{
    std::filesystem::create_directories(InDirectory("Last.noi/inside"));
    EXPECT_EQ(TwoPointOf(kLow, kHigh), 1);
    EXPECT_EQ(op->Boxes()[0].caption, "Noise File Storage Failure");
    EXPECT_EQ(op->Boxes()[0].text, LastSetFile(".noi"));
    EXPECT_TRUE(Stands("Last.cal"));
}

TEST_F(TwoPointRun, AListThatCantBeSavedLeavesTheFormerSetAndTheCalibrationInForce)
{
    PutSet(InDirectory("Last.cal"));
    const std::string formerGains = FileContents(InDirectory("Last.gai"));
    std::filesystem::remove(InDirectory("Last.off"));
    std::filesystem::create_directories(InDirectory("Last.off/inside"));
    EXPECT_EQ(TwoPointOf(kLow, kHigh), 1);
    EXPECT_THAT(BoxTexts(), Contains(HasSubstr("Last.off")));
    EXPECT_THAT(op->Boxes().back().text,
                HasSubstr("its files couldn't be saved.\nThe former ones stand:\n" + InDirectory("Last.cal")));
    EXPECT_EQ(FileContents(InDirectory("Last.gai")), formerGains);
    EXPECT_EQ(FileContents(InDirectory("Last.cal")), kCalText);
    EXPECT_EQ(CalType, 2);
    EXPECT_EQ(CalSettings.CalFile, LastCalPath());
}

// --- The report -----------------------------------------------------------------------------------------------------

TEST_F(TwoPointRun, TheReportOpensFromTheResult)
{
    AtLow({kLow}, "20");
    AtHigh({kHigh}, "25");
    op->Answer({Button::kOk, Button::kReport});
    bool seen = false;
    op->Do([&seen] {
        ASSERT_TRUE(DialogInFront());
        EXPECT_EQ(DialogName(DialogInFront()), "CALREPORT");
        EXPECT_THAT(GetDlgItemText(DialogInFront(), 1001), HasSubstr("1  Inoperable opens"));
        seen = true;
        OperatePress(DialogInFront(), kIdOk);
    });
    EXPECT_EQ(TwoPoint(), 1);
    EXPECT_TRUE(seen);
    const std::string report = FileContents(InDirectory("Last.report.txt"));
    // Of 1000, 1010, 990, 1000, 1000 the deviation is sqrt(200 / 4) = 7.0711, 0.7071 % of the mean.
    EXPECT_THAT(report, HasSubstr("before  low source, 20.000 \xC2\xB0"
                                  "C"));
    EXPECT_THAT(report, HasSubstr("   1000.0 counts    0.7071 %  2 frames"));
    // Corrected: (2000 - 62) / 0.875 and (2010 - 72) / 0.875, both 2214.857; a substituted pixel reads as its source.
    EXPECT_THAT(report, HasSubstr("   2214.9 counts    0.0000 %  2 frames"));
}

TEST_F(TwoPointRun, AReportThatCantBeShownIsTold)
{
    SetFault("load dialog CALREPORT", true);
    AtLow({kLow});
    AtHigh({kHigh});
    op->Answer({Button::kOk, Button::kReport});
    EXPECT_EQ(TwoPoint(), 1);
    EXPECT_EQ(op->Boxes().back().text, "Unable to display dialog");
    EXPECT_EQ(op->Boxes().back().caption, "System Error");
}

// --- One point ------------------------------------------------------------------------------------------------------

class OnePointRun : public CalibrationRun {
  protected:
    void SetUp() override
    {
        CalibrationRun::SetUp();
        write::cal.CalType = 0;
    }
    int OnePoint(const Frame& counts)
    {
        AtLow({counts});
        return OnePointCalibrate(hWndMain);
    }
    // A calibration in force: its gain file beside its .cal.
    void PutInForce(std::int32_t type)
    {
        PutSet(InDirectory("warm.cal"));
        write::calSet.CalSettings.CalFile = InDirectory("warm.cal");
        write::calSet.CalSettings.GainFile = InDirectory("warm.gai");
        write::calSet.CalSettings.DecomFile = InDirectory("warm.dcm");
        write::calSet.CalSettings.OffsetFile = InDirectory("warm.off");
        write::cal.CalType = type;
    }
    // Mean 1050; 2000 lies outside at once. Of the rest the mean is 1000.
    const Frame source{1000, 1010, 990, 1000, 1000, 1005, 995, 1400};
};

TEST_F(OnePointRun, AListThatCantBeSavedNamesTheSetThatStands)
{
    PutInForce(2);
    std::filesystem::remove(InDirectory("warm.off"));
    std::filesystem::create_directories(InDirectory("warm.off/inside"));
    EXPECT_EQ(OnePoint(source), 1);
    EXPECT_EQ(op->Boxes().back().text,
              "The calibration is in force, but its files couldn't be saved.\nThe former ones stand:\n" +
                  InDirectory("warm.cal"));
    EXPECT_EQ(CalSettings.CalFile, InDirectory("warm.cal"));
}

TEST_F(OnePointRun, ANewOneFindsOffsetsAlone)
{
    write::calSet.CalSettings.MaxOffset = 300;
    EXPECT_EQ(OnePoint(source), 1);
    EXPECT_EQ(CalType, 1);
    EXPECT_EQ(CalSettings.NumSources, 1);
    EXPECT_THAT(ListOf<float>("last.gai"), ElementsAre(1, 1, 1, 1, 1, 1, 1, 0));
    EXPECT_THAT(ListOf<std::int16_t>("last.off"), ElementsAre(0, 10, -10, 0, 0, 5, -5, 0));
    EXPECT_THAT(ListOf<std::int16_t>("last.noi"), Each(0));
    EXPECT_THAT(ListOf<std::uint32_t>("last.dcm"), ElementsAre(0, 1, 2, 3, 4, 5, 6, 7)) << "before replacement";
    EXPECT_EQ(FileContents(InDirectory("last.bad")), "   1,   3\n");
    EXPECT_THAT(DecomList, ElementsAre(0, 1, 2, 3, 4, 5, 6, 3));
    const std::string cal = InDirectory("last.cal");
    EXPECT_EQ(KeyOf(cal, "Calibration", "GainFile"), "last.gai");
    EXPECT_EQ(KeyOf(cal, "Calibration", "OffsetFile"), "last.off");
    EXPECT_EQ(KeyOf(cal, "Calibration", "BadDetFile"), "last.bad");
    EXPECT_EQ(KeyOf(cal, "Calibration", "CalType"), "1");
    EXPECT_EQ(KeyOf(cal, "Calibration", "IntensityCold"), "1000");
    EXPECT_EQ(KeyOf(cal, "Calibration", "IntensityHot"), "missing");
    EXPECT_EQ(KeyOf(cal, "Calibration", "DriverNumber"), "2");
    EXPECT_EQ(KeyOf(cal, "Setup", "IndexFrameRate"), "3");
    EXPECT_EQ(DisplayLow, 0);
    EXPECT_EQ(DisplayHigh, 16383);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text,
              "Total bad pixels =      1 ( 12.5 %)\n\nMean signal =  1000.0 counts\n\nMean noise =     0.0 counts");
    EXPECT_EQ(op->Boxes()[0].caption, "Calibration results");
}

TEST_F(OnePointRun, ANewOneSavesAndLoadsWithoutABox)
{
    write::display.MirrorVert = 1;
    ASSERT_EQ(OnePoint(source), 1);
    EXPECT_EQ(CalSettings.DecomFile, InDirectory("last.dcm"));
    EXPECT_EQ(KeyOf(InDirectory("last.cal"), "Calibration", "DecomFile"), "last.dcm");
    EXPECT_THAT(ListOf<std::uint32_t>("last.dcm"), ElementsAre(0, 1, 2, 3, 4, 5, 6, 7)) << "as it is read out";
    const std::vector<std::uint32_t> inForce = DecomList;
    const std::size_t boxes = op->Boxes().size();
    EXPECT_EQ(SaveCalibrationAs(InDirectory("kept.cal")), 1);
    EXPECT_EQ(LoadCalibration(hWndMain, InDirectory("kept.cal")), 1);
    EXPECT_EQ(DecomList, inForce);
    EXPECT_EQ(LoadCalibration(hWndMain, InDirectory("last.cal")), 1);
    EXPECT_EQ(DecomList, inForce);
    EXPECT_THAT(op->Boxes(), SizeIs(boxes));
}

// A set elsewhere has its own table, and so has this one.
TEST_F(OnePointRun, ANewOneNamesNoTableOfAnotherSet)
{
    std::filesystem::create_directory(InDirectory("sets"));
    PutTable(InDirectory("sets/warm.dcm"), {7, 6, 5, 4, 3, 2, 1, 0});
    write::calSet.CalSettings.DecomFile = InDirectory("sets/warm.dcm");
    ASSERT_EQ(OnePoint(source), 1);
    EXPECT_EQ(CalSettings.DecomFile, InDirectory("last.dcm"));
    EXPECT_THAT(ListOf<std::uint32_t>("last.dcm"), ElementsAre(0, 1, 2, 3, 4, 5, 6, 7));
}

TEST_F(OnePointRun, AFormerTableStaysAndOneOfAnotherFrameDoesNot)
{
    PutTable(InDirectory("Last.dcm"), {7, 6, 5, 4, 3, 2, 1, 0});
    ASSERT_EQ(OnePoint(source), 1);
    EXPECT_THAT(ListOf<std::uint32_t>("Last.dcm"), ElementsAre(7, 6, 5, 4, 3, 2, 1, 0));
    for (const std::vector<std::uint32_t>& table :
         {std::vector<std::uint32_t>{3, 2, 1}, std::vector<std::uint32_t>(9)}) {
        PutTable(InDirectory("Last.dcm"), table);
        write::cal.CalType = 0;
        ASSERT_EQ(OnePoint(source), 1);
        EXPECT_THAT(ListOf<std::uint32_t>("Last.dcm"), ElementsAre(0, 1, 2, 3, 4, 5, 6, 7));
    }
}

TEST_F(OnePointRun, AnUpdateOfASetWithoutATableAddsIt)
{
    PutInForce(1);
    std::filesystem::remove(InDirectory("warm.dcm"));
    write::calSet.CalSettings.MinOffset = 4000;
    write::calSet.CalSettings.MaxOffset = 4000;
    EXPECT_EQ(OnePoint(Frame(8, 1000)), 1);
    EXPECT_THAT(ListOf<std::uint32_t>("warm.dcm"), ElementsAre(0, 1, 2, 3, 4, 5, 6, 7));
    EXPECT_EQ(KeyOf(InDirectory("warm.cal"), "Calibration", "DecomFile"), "warm.dcm");
}

TEST_F(OnePointRun, TheNoiseOfAFormerRunIsNotTakenAlong)
{
    PutFile(InDirectory("last.noi"), "of a former run");
    write::calSet.CalSettings.NumFrames = 1;
    ASSERT_EQ(OnePoint(source), 1);
    EXPECT_FALSE(Stands("last.noi"));
    EXPECT_EQ(SaveCalibrationAs(InDirectory("kept.cal")), 1);
    EXPECT_FALSE(Stands("kept.noi"));
}

TEST_F(OnePointRun, AnUpdateKeepsGainsAndTypeAndMeasuresNoNoise)
{
    PutInForce(2);
    const std::string gains = FileContents(InDirectory("warm.gai"));
    write::calSet.CalSettings.MinOffset = 4000;
    write::calSet.CalSettings.MaxOffset = 4000;
    EXPECT_EQ(OnePoint(Frame(8, 1000)), 1);
    EXPECT_EQ(CalType, 2);
    EXPECT_EQ(FileContents(InDirectory("warm.gai")), gains);
    // 1000 - 1000 x (1, 1.25, 1.5, ...)
    EXPECT_THAT(ListOf<std::int16_t>("warm.off"), ElementsAre(0, -250, -500, -750, -1000, -1250, -1500, -1750));
    EXPECT_EQ(FileContents(InDirectory("warm.noi")), "noise of each one");
    EXPECT_EQ(KeyOf(InDirectory("warm.cal"), "Calibration", "CalFile"), InDirectory("warm.cal"));
    EXPECT_EQ(op->Boxes()[0].text, "Total new bad pixels =      0 (  0.0 %)\n\nMean signal =  1000.0 counts");
    EXPECT_FALSE(Stands("last.cal"));
}

TEST_F(OnePointRun, ItsDialogNamesWhatItDoes)
{
    const auto titled = [&](std::int32_t type, std::int32_t chosen) {
        write::cal.CalType = type;
        write::calSet.CalSettings.ChosenType = chosen;
        Press(kIdCancel);
        EXPECT_EQ(OnePointCalibrate(hWndMain), 0);
        return op->Texts("dialog", "text").back();
    };
    EXPECT_EQ(titled(0, 1), "1 Point Calibration");
    EXPECT_EQ(titled(0, 2), "2 Point Calibration") << "an update of nothing, after a two-point run was chosen";
    EXPECT_EQ(titled(1, 1), "1 Point Update");
    EXPECT_EQ(titled(2, 2), "1 Point Update");
}

TEST_F(OnePointRun, OneFrameGivesNoNoiseList)
{
    write::calSet.CalSettings.NumFrames = 1;
    EXPECT_EQ(OnePoint(source), 1);
    EXPECT_FALSE(Stands("last.noi"));
    EXPECT_THAT(op->Boxes()[0].text, Not(HasSubstr("noise")));
}

TEST_F(OnePointRun, WithoutSubstitutionNoDetectorIsRejected)
{
    write::display.SubstBadPixels = 0;
    EXPECT_EQ(OnePoint(source), 1);
    EXPECT_THAT(op->Boxes()[0].text, HasSubstr("Total bad pixels =      0 (  0.0 %)"));
    EXPECT_THAT(ListOf<float>("last.gai"), Each(1.0F));
    EXPECT_FALSE(Stands("last.bad"));
}

// Two frames, 4 and 40 counts apart in two detectors: deviations of 2.83 and 28.3, of which the table shows the first
// alone.
TEST_F(OnePointRun, WithoutSubstitutionTheNoiseOfAllDetectorsCountsWhateverTheTableShows)
{
    write::display.SubstBadPixels = 0;
    write::camera.ActiveConfig.DecomScheme = 3;  // each pixel shows raw sample 0
    Frame first(8, 1000);
    Frame second(8, 1000);
    first[0] = 998;
    second[0] = 1002;
    first[5] = 980;
    second[5] = 1020;
    AtLow({first, second});
    EXPECT_EQ(OnePointCalibrate(hWndMain), 1);
    // (2.828 + 28.284) / 8
    EXPECT_THAT(op->Boxes()[0].text, HasSubstr("Mean noise =     3.9 counts"));
}

TEST_F(OnePointRun, CancelChangesNothing)
{
    write::cal.CalType = 2;
    Press(kIdCancel);
    EXPECT_EQ(OnePointCalibrate(hWndMain), 0);
    EXPECT_EQ(CalType, 2);
    EXPECT_EQ(StatusText, " Press OK when LOW flux source is in front of camera");
}

TEST_F(OnePointRun, AnUpdateWithoutItsGainFileBeepsAndLeavesTheUnityState)
{
    PutInForce(2);
    std::filesystem::remove(InDirectory("warm.gai"));
    const std::size_t beeps = op->Texts("beep", "sound").size();
    EXPECT_EQ(OnePoint(source), 0);
    EXPECT_THAT(op->Boxes(), IsEmpty());
    EXPECT_GE(op->Texts("beep", "sound").size(), beeps + 3) << "the source's dialog, the capture, the failure";
    ExpectUnity();
    PutFile(InDirectory("warm.gai"), "short");
    write::cal.CalType = 2;
    EXPECT_EQ(OnePoint(source), 0);
    ExpectUnity();
}

TEST_F(OnePointRun, NoPixelInsideTheFirstWindowIsTold)
{
    write::calSet.CalSettings.MinOffset = 100;
    write::calSet.CalSettings.MaxOffset = 100;
    EXPECT_EQ(OnePoint({0, 0, 0, 0, 2000, 2000, 2000, 2000}), 0);
    EXPECT_THAT(BoxTexts(), ElementsAre("Failure to find good pixels!"));
    ExpectUnity();
}

// 900 and 1100 lie inside 100 of 1000.5 or so; their mean is 1000, but each lies 100 off, noisy both.
TEST_F(OnePointRun, NoPixelThatIsQuietEnoughIsTold)
{
    Frame other(8, 1040);
    AtLow({Frame(8, 1000), other});
    EXPECT_EQ(OnePointCalibrate(hWndMain), 0);  // a deviation of 28 counts everywhere
    EXPECT_THAT(BoxTexts(), ElementsAre("Failure to find good pixels!"));
    EXPECT_EQ(CalType, 0);
    EXPECT_THAT(DecomList, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7));
}

TEST_F(OnePointRun, WithoutFramesItFails)
{
    write::calSet.CalSettings.NumFrames = 0;
    EXPECT_EQ(OnePoint(source), 0);
    EXPECT_EQ(op->Boxes().back().text, "Video Data Acquisition Failed, Hardware error");
    EXPECT_EQ(op->Boxes().back().caption, "Kelvo message") << "a noise list was wanted";
    write::calSet.CalSettings.NumFrames = 1;
    write::frames.GrabberPresent = 0;
    EXPECT_EQ(OnePoint(source), 0);
    EXPECT_EQ(op->Boxes().back().text, "Video Data Acquisition Failed, Hardware error");
    EXPECT_EQ(op->Boxes().back().caption, "GetCalibData Error");
    ExpectUnity();
}

TEST_F(OnePointRun, AFrameThatIsTooSmallIsRefused)
{
    Frame small(7);
    EXPECT_EQ(GetCalibData(small, {}, 1), 0);
    EXPECT_EQ(op->Boxes().back().text, "Invalid data array size");
    EXPECT_EQ(op->Boxes().back().caption, "GetCalibData Error");
}

TEST_F(OnePointRun, AFrozenImageIsStarted)
{
    write::frames.LiveVideo = 0;
    TakeBoardCalls();
    EXPECT_EQ(OnePoint(source), 1);
    EXPECT_THAT(TakeBoardCalls(), ElementsAre("grab"));
}

TEST_F(OnePointRun, OffsetsOutOfRangeAreAskedAbout)
{
    PutInForce(2);
    PutGains(InDirectory("warm.gai"), {1, 1, 1, 1, 1, 1, 1, 4});
    write::calSet.CalSettings.MinOffset = 20000;
    write::calSet.CalSettings.MaxOffset = 20000;
    op->Answer({Button::kNo});
    EXPECT_EQ(OnePoint(Frame(8, 12000)), 0);  // 12000 - 48000
    EXPECT_EQ(op->Boxes().back().text, "Some OFFSET coefficients out of range!\nDo you wish to continue ?");
    ExpectUnity();
    write::cal.CalType = 2;
    op->Answer({Button::kYes});
    EXPECT_EQ(OnePoint(Frame(8, 12000)), 1);
    EXPECT_EQ(ListOf<std::int16_t>("warm.off")[7], -36000 + 65536);
}

TEST_F(OnePointRun, SubstitutionThatFailsKeepsTheNewTypeAndTheFormerName)
{
    write::calSet.CalSettings.CalFile = InDirectory("former.cal");
    write::calSet.CalSettings.PRSfile = InDirectory("missing.prs");
    EXPECT_EQ(OnePoint(source), 0);
    EXPECT_EQ(CalType, 1);
    EXPECT_EQ(CalSettings.CalFile, InDirectory("former.cal"));
    EXPECT_FALSE(Stands("last.cal"));
}

TEST_F(OnePointRun, OffsetMemoryThatIsRefusedEndsInTheUnityState)
{
    // Counted up to the offsets' list: each step's refusal has words of its own.
    std::vector<std::string> seen;
    for (int n = 1; n < 40; ++n) {
        write::cal.CalType = 0;
        AtLow({source});
        FailAllocation(n);
        const int result = OnePointCalibrate(hWndMain);
        FailAllocation(0);
        if (result == 0 && !op->Boxes().empty()) seen.push_back(op->Boxes().back().text);
        if (result == 0 && CalType == 0) {
            EXPECT_THAT(DecomList.size(), testing::AnyOf(0, 8));
        }
    }
    for (const char* text : {"Failure to allocate video memory!", "Failure to allocate or lock StdDev memory!",
                             "Failure to allocate or lock Gain memory!", "Failure to get decommutation order!",
                             "Failure to allocate OffsetList memory!"}) {
        EXPECT_THAT(seen, Contains(text));
    }
}

// --- Lists read again -----------------------------------------------------------------------------------------------

class ReloadedLists : public CalibrationRun {
  protected:
    void SetUp() override
    {
        CalibrationRun::SetUp();
        PutSet(InDirectory("warm.cal"));
        settings.GainFile = InDirectory("warm.gai");
        settings.OffsetFile = InDirectory("warm.off");
    }
    std::string LastBox() const { return op->Boxes().back().text; }

    CalSettingsRecord settings;
    std::vector<float> gains = std::vector<float>(8);
    Frame offsets = Frame(8);
};

TEST_F(ReloadedLists, AreThoseOfTheFiles)
{
    EXPECT_EQ(ReloadGains(gains, ActiveConfig, settings), 1);
    EXPECT_THAT(gains, ElementsAre(1.0F, 1.25F, 1.5F, 1.75F, 2.0F, 2.25F, 2.5F, 2.75F));
    EXPECT_EQ(ReloadOffsets(offsets, ActiveConfig, settings), 1);
    EXPECT_THAT(offsets, ElementsAre(100, 101, 102, 103, 104, 105, 106, 107));
}

TEST_F(ReloadedLists, FailuresAreToldAndLeaveTheList)
{
    FailAllocation(1);
    EXPECT_EQ(ReloadGains(gains, ActiveConfig, settings), 0);
    EXPECT_EQ(LastBox(), "Failure to allocate or lock File list memory for gain reload.");
    FailAllocation(1);
    EXPECT_EQ(ReloadOffsets(offsets, ActiveConfig, settings), 0);
    EXPECT_EQ(LastBox(), "Failure to allocate or lock File list memory for gain reload");
    EXPECT_EQ(ReloadGains(std::span(gains).first(7), ActiveConfig, settings), 0);
    EXPECT_EQ(LastBox(), "Failure to lock Gain list memory for reload");
    EXPECT_EQ(ReloadOffsets(std::span(offsets).first(7), ActiveConfig, settings), 0);
    EXPECT_EQ(LastBox(), "Failure to lock Gain list memory for reload of offsets.");
    PutFile(settings.GainFile, "short");
    EXPECT_EQ(ReloadGains(gains, ActiveConfig, settings), 0);
    EXPECT_EQ(LastBox(), "Failure to read Gain list memory for reload of offsets.");
    settings.GainFile = settings.OffsetFile = InDirectory("missing");
    EXPECT_EQ(ReloadGains(gains, ActiveConfig, settings), 0);
    EXPECT_EQ(LastBox(), "Failure to open offset file!");
    EXPECT_EQ(ReloadOffsets(offsets, ActiveConfig, settings), 0);
    EXPECT_EQ(LastBox(), "Failure to open offset file!");
    EXPECT_THAT(gains, Each(0.0F));
    EXPECT_THAT(offsets, Each(0));
}

}  // namespace
}  // namespace kelvo
