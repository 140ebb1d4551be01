// The simulated board behind the board's own operations.
#include "grabber/board.h"
#include "grabber/frame_account.h"
#include "grabber/host_frames.h"
#include "platform/clock.h"
#include "platform/faults.h"
#include "simcam/sim_board_fixture.h"
#include "state/camera_config_write.h"
#include "state/frame_state_write.h"
#include "state/windows_write.h"
#include "video/video.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <ostream>

namespace kelvo {
namespace {

using testing::Each;
using testing::IsEmpty;

class SimBoard : public SimBoardTest {};

TEST_F(SimBoard, TheFileOfTheSectionBecomesTheCurrentCamera)
{
    EXPECT_EQ(init_itex(), 1);
    std::string error;
    const auto current = CurrentSimCamera();
    ASSERT_TRUE(current);
    EXPECT_EQ(current, OpenSimCamera("insb320.cnf", error)) << "the head of that file is the same camera";
    EXPECT_EQ(CmpModule, 0);
    EXPECT_EQ(GrabberPresent, 1);
}

TEST_F(SimBoard, TellsTheSizeAndTheBitsOfItsCamera)
{
    EXPECT_EQ(icp_report(0).columns, std::nullopt) << "before the set-up";
    ASSERT_EQ(init_itex(), 1);
    const CameraReport report = icp_report(IcpModule);
    EXPECT_EQ(report.columns, 320);
    EXPECT_EQ(report.rows, 256);
    EXPECT_EQ(report.bits, 14);
    EXPECT_EQ(report.rateHz, std::nullopt) << "the head has no reading back";
    EXPECT_EQ(report.integrationMs, std::nullopt);
    EXPECT_EQ(report.link, CameraLink::kUp);
}

TEST_F(SimBoard, NoFileOrABadOneFailsWithoutAMessage)
{
    for (const char* name : {"none", "missing.cnf", "camera.ini"}) {
        write::windows.CnfFilePath.clear();
        PutFile(CameraFilePath, std::string("[Camera.2]\ncnfFile=") + name + "\n");
        write::camera.ActiveCamera = 2;
        EXPECT_EQ(init_itex(), 0) << name;
        EXPECT_EQ(GrabberPresent, 0);
        EXPECT_THAT(op.Boxes(), IsEmpty());
        ++write::camera.ActiveCamera;
    }
}

struct Fault {
    const char* name;
    const char* text;  // of the box at the set-up; empty: none
    friend std::ostream& operator<<(std::ostream& stream, const Fault& fault) { return stream << fault.name; }
};

class SimBoardFault : public SimBoardTest, public testing::WithParamInterface<Fault> {};

TEST_P(SimBoardFault, EndsTheSetUpWithItsBoxAndLeavesNoHarm)
{
    SetFault(GetParam().name, true);
    EXPECT_EQ(init_itex(), 0);
    if (*GetParam().text == '\0') {
        EXPECT_THAT(op.Boxes(), IsEmpty());
    } else {
        ASSERT_EQ(op.Boxes().size(), 1U);
        EXPECT_EQ(op.Boxes()[0].text, GetParam().text);
    }
    SetFault(GetParam().name, false);
    EXPECT_EQ(init_itex(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    EachOperation, SimBoardFault,
    testing::Values(Fault{"itx_load_cnf", ""}, Fault{"itx_init_sys", ""}, Fault{"itx_get_modcnf", ""},
                    Fault{"icp_get_slot0", "No Acquisition Module Found on Board #0"},
                    Fault{"icp_create_frame", "FrameA on ICP-PCI#0 not created!"},
                    Fault{"icp_frame_attrib", "FrameA on ICP-PCI#0 not set up properly!"},
                    Fault{"icp_frame_attrib bits", "FrameA on ICP-PCI#0 not set up for 16-bit data input!"},
                    Fault{"icp_frame_attrib colour", "FrameA on ICP-PCI#0 not set up for MonoColor data input!"}));

TEST_F(SimBoard, WaitsForTheNextBlankAfterTheGrab)
{
    OpenAt100Hz();
    AdvanceVirtualClock(3'333);
    const std::int64_t start = TickUs();
    EXPECT_EQ(icp_grab(IcpModule, FrameA), 0);
    EXPECT_EQ(icp_wait_vb(IcpModule, FrameA), 0);
    EXPECT_EQ(TickUs() - start, 10'000);
    EXPECT_EQ(icp_wait_vb(IcpModule, FrameA), 0);
    EXPECT_EQ(TickUs() - start, 20'000);
    AdvanceVirtualClock(9'999);
    EXPECT_EQ(icp_wait_vb(IcpModule, FrameA), 0);
    EXPECT_EQ(TickUs() - start, 30'000);
    AdvanceVirtualClock(10'001);
    EXPECT_EQ(icp_wait_vb(IcpModule, FrameA), 0);
    EXPECT_EQ(TickUs() - start, 50'000) << "the blank at 40 ms has passed";
    EXPECT_EQ(icp_frame_count(IcpModule), 5);
}

TEST_F(SimBoard, CountsFramesWhetherOrNotAnyoneLooks)
{
    OpenAt100Hz();
    icp_grab(IcpModule, FrameA);
    EXPECT_EQ(icp_frame_count(IcpModule), 0);
    AdvanceVirtualClock(1'234'567);
    EXPECT_EQ(icp_frame_count(IcpModule), 123);
    icp_freeze(IcpModule, FrameA);
    AdvanceVirtualClock(1'000'000);
    EXPECT_EQ(icp_frame_count(IcpModule), 123);
    icp_grab(IcpModule, FrameA);
    EXPECT_EQ(icp_frame_count(IcpModule), 0);
}

TEST_F(SimBoard, GivesTheLastWholeFrame)
{
    OpenAt100Hz();
    icp_grab(IcpModule, FrameA);
    const std::int64_t start = TickUs();
    AdvanceVirtualClock(36'000);
    std::vector<std::int16_t> frame(320UL * 256UL);
    EXPECT_EQ(icp_read_area(IcpModule, FrameA, 0, 0, 320, 256, frame), 0);
    EXPECT_EQ(frame, Expected(2, start + 30'000)) << "the third frame: number 2";
    EXPECT_NE(frame, Expected(1, start + 20'000)) << "noise is of each frame";
}

TEST_F(SimBoard, FrozenTheFrameStaysWhateverComesInFront)
{
    OpenAt100Hz();
    PutSimSource(*camera, SimSource::kLow);
    icp_grab(IcpModule, FrameA);
    const std::int64_t start = TickUs();
    AdvanceVirtualClock(25'000);
    const std::vector<std::int16_t> expected = Expected(1, start + 20'000);
    icp_freeze(IcpModule, FrameA);
    PutSimSource(*camera, SimSource::kHigh);
    AdvanceVirtualClock(500'000);
    std::vector<std::int16_t> frame(320UL * 256UL);
    EXPECT_EQ(icp_read_area(IcpModule, FrameA, 0, 0, 320, 256, frame), 0);
    EXPECT_EQ(frame, expected);
}

TEST_F(SimBoard, FramesOfTwoGrabsAreNeverTheSame)
{
    OpenAt100Hz();
    PutSimSource(*camera, SimSource::kLow);
    std::vector<std::vector<std::int16_t>> frames;
    for (int grab = 0; grab < 3; ++grab) {
        icp_grab(IcpModule, FrameA);
        icp_wait_vb(IcpModule, FrameA);
        frames.emplace_back(320UL * 256UL);
        icp_read_area(IcpModule, FrameA, 0, 0, 320, 256, frames.back());
    }
    EXPECT_NE(frames[0], frames[1]);
    EXPECT_NE(frames[1], frames[2]);
    EXPECT_NE(frames[0], frames[2]);
}

TEST_F(SimBoard, AnAreaIsCutOutOfTheFrame)
{
    OpenAt100Hz();
    icp_grab(IcpModule, FrameA);
    AdvanceVirtualClock(15'000);
    std::vector<std::int16_t> frame(320UL * 256UL);
    ASSERT_EQ(icp_read_area(IcpModule, FrameA, 0, 0, 320, 256, frame), 0);
    std::vector<std::int16_t> area(3UL * 2UL);
    ASSERT_EQ(icp_read_area(IcpModule, FrameA, 17, 40, 3, 2, area), 0);
    for (int row = 0; row < 2; ++row) {
        for (int column = 0; column < 3; ++column) {
            EXPECT_EQ(area[static_cast<std::size_t>(row * 3 + column)],
                      frame[static_cast<std::size_t>((40 + row) * 320 + 17 + column)]);
        }
    }
}

TEST_F(SimBoard, AnAreaOutsideTheFrameOrTheBufferIsRefused)
{
    OpenAt100Hz();
    icp_grab(IcpModule, FrameA);
    AdvanceVirtualClock(15'000);
    std::vector<std::int16_t> buffer(320UL * 256UL, -1);
    EXPECT_NE(icp_read_area(IcpModule, FrameA, 0, 0, 321, 256, buffer), 0);
    EXPECT_NE(icp_read_area(IcpModule, FrameA, 1, 0, 320, 256, buffer), 0);
    EXPECT_NE(icp_read_area(IcpModule, FrameA, 0, 1, 320, 256, buffer), 0);
    EXPECT_NE(icp_read_area(IcpModule, FrameA, -1, 0, 8, 8, buffer), 0);
    EXPECT_NE(icp_read_area(IcpModule, FrameA, 0, 0, -8, 8, buffer), 0);
    EXPECT_NE(icp_read_area(IcpModule, FrameA + 1, 0, 0, 8, 8, buffer), 0);
    EXPECT_NE(icp_read_area(IcpModule, FrameA, 0, 0, 320, 256, std::span(buffer).first(320UL * 256UL - 1)), 0);
    EXPECT_THAT(buffer, Each(-1));
}

TEST_F(SimBoard, WithTheClocksOffNoBlankComes)
{
    OpenAt100Hz();
    icp_grab(IcpModule, FrameA);
    AdvanceVirtualClock(25'000);
    Send(*camera, {{0x90, 0x10, 0, 0}});
    const std::int64_t start = TickUs();
    EXPECT_EQ(icp_wait_vb(IcpModule, FrameA), kBoardTimeout);
    EXPECT_EQ(TickUs() - start, 2'000'000) << "200 hundredths of a second";
    EXPECT_EQ(icp_frame_count(IcpModule), 2);
    Send(*camera, {{0x90, 0x30, 0, 0}});
    EXPECT_EQ(icp_wait_vb(IcpModule, FrameA), 0);
    EXPECT_EQ(icp_frame_count(IcpModule), 3);
}

TEST_F(SimBoard, ABlankBeyondTheTimeOutIsNone)
{
    OpenAt100Hz();
    itx_set_timeout(IcpModule, 1);
    icp_grab(IcpModule, FrameA);
    EXPECT_EQ(icp_wait_vb(IcpModule, FrameA), 0) << "10 ms, just in time";
    SendClockIndex(*camera, 63);
    EXPECT_EQ(icp_wait_vb(IcpModule, FrameA), kBoardTimeout);
}

TEST_F(SimBoard, AChangeOfRateKeepsTheCount)
{
    OpenAt100Hz();
    icp_grab(IcpModule, FrameA);
    icp_wait_vb(IcpModule, FrameA);
    icp_wait_vb(IcpModule, FrameA);
    SendClockIndex(*camera, 5);  // 48 MHz / 12: half the pixel clock
    const std::int64_t start = TickUs();
    EXPECT_EQ(icp_frame_count(IcpModule), 2);
    icp_wait_vb(IcpModule, FrameA);
    EXPECT_EQ(TickUs() - start, 20'000);
    EXPECT_EQ(icp_frame_count(IcpModule), 3);
}

// 100 Hz: a frame is complete each 10 ms from the opening on.
class SimTrigger : public SimBoardTest {
  protected:
    SimTrigger() { OpenAt100Hz(); }
    // Hundredths of a second; how long it took, in microseconds, to what is returned.
    static std::pair<int, std::int64_t> Wait(std::int32_t hundredths)
    {
        const std::int64_t start = TickUs();
        const int fired = icp_wait_trig(IcpModule, FrameA, hundredths);
        return {fired, TickUs() - start};
    }
};

TEST_F(SimTrigger, ACaptureIsTheFirstFrameBehindThePulse)
{
    std::vector<std::int16_t> frame(320UL * 256UL);
    EXPECT_EQ(SetTriggerMode(1), 1);
    EXPECT_EQ(Wait(3), std::make_pair(0, std::int64_t{30'000})) << "no pulse, and blanks are none";
    PulseSimTrigger();
    EXPECT_EQ(Wait(3), std::make_pair(1, std::int64_t{10'000}));
    ASSERT_EQ(icp_read_area(IcpModule, FrameA, 0, 0, 320, 256, frame), 0);
    EXPECT_EQ(frame, Expected(0, TickUs()));
    EXPECT_EQ(Wait(1), std::make_pair(0, std::int64_t{10'000})) << "one arming, one frame";
}

TEST_F(SimTrigger, APulseBeforeTheArmingFiresNothing)
{
    amdig_trigen(AcqModule, 1);
    PulseSimTrigger();
    EXPECT_EQ(icp_trig_snap(IcpModule, FrameA), 0);
    EXPECT_EQ(Wait(5).first, 0);
}

TEST_F(SimTrigger, APulseIsTakenWhileTheInputIsOn)
{
    EXPECT_EQ(icp_trig_snap(IcpModule, FrameA), 0);
    PulseSimTrigger();
    EXPECT_EQ(Wait(5).first, 0);
    EXPECT_EQ(ReadSimLines().triggers, 0);
    EXPECT_EQ(SetTriggerMode(1), 1);
    PulseSimTrigger();
    EXPECT_EQ(Wait(5).first, 1);
    EXPECT_EQ(ReadSimLines().triggers, 1);
    EXPECT_EQ(SetTriggerMode(0), 1);
    PulseSimTrigger();
    EXPECT_EQ(ReadSimLines().triggers, 1);
}

TEST_F(SimTrigger, PulsesOfAPeriodEndAWaitEarly)
{
    SetSimTriggerPeriod(25'000);
    EXPECT_EQ(SetTriggerMode(1), 1);
    EXPECT_EQ(Wait(2), std::make_pair(0, std::int64_t{20'000}));
    EXPECT_EQ(Wait(100), std::make_pair(1, std::int64_t{10'000})) << "the pulse at 25 ms, its frame at 30 ms";
    SetSimTriggerPeriod(0);
    EXPECT_EQ(icp_trig_snap(IcpModule, FrameA), 0);
    EXPECT_EQ(Wait(10).first, 0);
}

TEST_F(SimTrigger, FailsByItsFaultsAndUnarmed)
{
    EXPECT_EQ(Wait(5), std::make_pair(0, std::int64_t{50'000})) << "not armed";
    EXPECT_EQ(SetTriggerMode(1), 1);
    PulseSimTrigger();
    SetFault("icp_wait_trig", true);
    EXPECT_EQ(Wait(5), std::make_pair(0, std::int64_t{50'000}));
    SetFault("icp_wait_trig", false);
    EXPECT_EQ(Wait(5).first, 1);
    SetFault("icp_trig_snap", true);
    EXPECT_EQ(SetTriggerMode(1), 0);
}

TEST_F(SimTrigger, TheSyncOutputIsSeen)
{
    EXPECT_EQ(ReadSimLines().syncLevel, 0);
    ExternalSyncOn(1);
    EXPECT_EQ(ReadSimLines().syncLevel, 1);
    EXPECT_EQ(ReadSimLines().syncPulses, 1);
    ExternalSyncPulse();
    ExternalSyncPulse();
    EXPECT_EQ(ReadSimLines().syncLevel, 1);
    EXPECT_EQ(ReadSimLines().syncPulses, 3);
}

TEST_F(SimTrigger, AClosedBoardTakesNoPulse)
{
    amdig_trigen(AcqModule, 1);
    itx_exit(0);
    PulseSimTrigger();
    EXPECT_EQ(ReadSimLines().triggers, 0);
}

// Live video with the whole way from the board to the picture.

class SimLive : public SimBoardTest {
  protected:
    void SetUp() override
    {
        OpenAt100Hz();
        write::frames.CameraOn = 1;
        ClearFrameAccount();
        ToggleFreeze(write::frames.LiveVideo);
    }
};

TEST_F(SimLive, APauseOf25MsAt100HzLosesTwoFrames)
{
    for (int i = 0; i < 10; ++i) ASSERT_EQ(RefreshLiveFrame(), 1);
    EXPECT_EQ(CurrentFrameAccount().lost, 0);
    DelayMs(25);
    for (int i = 0; i < 10; ++i) ASSERT_EQ(RefreshLiveFrame(), 1);
    EXPECT_EQ(CurrentFrameAccount().lost, 2);
    EXPECT_EQ(CurrentFrameAccount().missed, 0);
    EXPECT_EQ(CurrentFrameAccount().shown, 20);
    EXPECT_EQ(CurrentFrameAccount().delivered, 22);
}

TEST_F(SimLive, APauseOfADialogCountsApart)
{
    for (int i = 0; i < 3; ++i) ASSERT_EQ(RefreshLiveFrame(), 1);
    AccountHeldUp();
    DelayMs(25);
    for (int i = 0; i < 3; ++i) ASSERT_EQ(RefreshLiveFrame(), 1);
    EXPECT_EQ(CurrentFrameAccount().lost, 0);
    EXPECT_EQ(CurrentFrameAccount().missed, 2);
}

TEST_F(SimLive, TheRateOfTheAccountIsTheBoards)
{
    for (int i = 0; i < 300; ++i) ASSERT_EQ(RefreshLiveFrame(), 1);
    EXPECT_DOUBLE_EQ(CurrentFrameAccount().deliveredHz, 100);
    EXPECT_DOUBLE_EQ(CurrentFrameAccount().shownHz, 100);
}

TEST_F(SimLive, FailuresOfTheBoardAreTold)
{
    SetFault("icp_wait_vb", true);
    EXPECT_EQ(RefreshLiveFrame(), 0);
    SetFault("icp_wait_vb", false);
    SetFault("icp_read_area", true);
    EXPECT_EQ(RefreshLiveFrame(), 0);
    SetFault("icp_read_area", false);
    SetFault("icp_grab", true);
    write::frames.LiveVideo = 0;
    ToggleFreeze(write::frames.LiveVideo);
    ASSERT_EQ(op.Boxes().size(), 3U);
    EXPECT_EQ(op.Boxes()[0].text, "Timeout waiting for vertical blank!");
    EXPECT_EQ(op.Boxes()[1].text, "icp_read_area() Error");
    EXPECT_EQ(op.Boxes()[2].text, "Error starting grab to image processing board");
}

TEST_F(SimLive, ABurstHasEachFrameOnce)
{
    PutFile(IniFilePath, "[Camera.2]\nMaxNumFramesToAllocate=8\n");
    write::camera.numBufFrames = 8;
    const std::int64_t start = TickUs();
    EXPECT_EQ(CaptureToHostFrames(6, 1), 6);
    EXPECT_EQ(TickUs() - start, 120'000) << "every second frame at 100 Hz";
    for (int i = 0; i < 6; ++i) {
        const std::int64_t number = 2 * i + 1;
        EXPECT_EQ(HostFrames[static_cast<std::size_t>(i)], Expected(number, start + 10'000 * (number + 1))) << i;
    }
}

TEST_F(SimLive, AnotherFrameSizeGoesOnLive)
{
    ASSERT_EQ(RefreshLiveFrame(), 1);
    write::camera.ActiveConfig.Hroi = 125;
    write::camera.ActiveConfig.Vroi = 64;
    EXPECT_EQ(RefreshLiveFrame(), 1) << "a part of the old frame is enough";
    FrameSizeChanged();
    EXPECT_EQ(FramePitch, 128);
    EXPECT_EQ(RefreshLiveFrame(), 1);
    EXPECT_EQ(LiveFrame.size(), 125U * 64U);
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

struct Slowest {
    const char* file;
    int columns;
    int rows;
    WireFrame frameSize;
    WireFrame slowestClock;
    double periodUs;
    friend std::ostream& operator<<(std::ostream& stream, const Slowest& camera) { return stream << camera.file; }
};

class SlowestRate : public SimBoardTest, public testing::WithParamInterface<Slowest> {};

// The last row of the frame rate list: a pixel clock of crystal / (2 x 63 + 2), 4 times slower on the HgCdTe head.
TEST_P(SlowestRate, GivesLiveVideo)
{
    const Slowest& slowest = GetParam();
    PutFile(CameraFilePath, std::string("[Camera.2]\ncnfFile=") + slowest.file + "\n");
    write::camera.ActiveConfig.Hroi = slowest.columns;
    write::camera.ActiveConfig.Vroi = slowest.rows;
    ASSERT_EQ(init_itex(), 1);
    Send(*CurrentSimCamera(), {slowest.frameSize, {0x90, 0x30, 0, 0}, slowest.slowestClock});
    EXPECT_NEAR(SimFramePeriodUs(*CurrentSimCamera()), slowest.periodUs, 1e-3);
    write::frames.CameraOn = 1;
    ToggleFreeze(write::frames.LiveVideo);
    const std::int64_t start = TickUs();
    for (int i = 0; i < 5; ++i) EXPECT_EQ(RefreshLiveFrame(), 1);
    EXPECT_NEAR(static_cast<double>(TickUs() - start), 5 * slowest.periodUs, 1);
    EXPECT_THAT(op.Boxes(), IsEmpty());
    EXPECT_TRUE(std::ranges::any_of(LiveFrame, [](std::int16_t count) { return count != 0; }));
}

INSTANTIATE_TEST_SUITE_P(
    EachCamera, SlowestRate,
    testing::Values(
        // 320 x 256 samples at 48 MHz / 128, 640 x 512 at 196.608 MHz / 128, 64 x 64 at 48 MHz / 128 / 4
        Slowest{"insb320.cnf", 320, 256, {0x50, 1, 64, 80}, {0x50, 0, 0, 63}, 81920 / 0.375},
        Slowest{"insb640.cnf", 640, 512, {0x50, 1, 128, 160}, {0x50, 0, 0, 63}, 327680 / 1.536},
        Slowest{"hgcdte64.cnf", 64, 64, {0, 0, 0, 0}, {0x90, 63, 0, 0}, 4096 / 0.09375}));

}  // namespace
}  // namespace kelvo
