#include "grabber/board.h"

#include "grabber/board_state_write.h"
#include "grabber/host_frames.h"
#include "platform/memory.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "state/buffer_state_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows_write.h"
#include "support/recording_board.h"
#include "video/video.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <limits>
#include <ostream>

namespace kelvo {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class BoardSetUp : public BoardTest {};

TEST_F(BoardSetUp, AsksTheBoardInThisOrder)
{
    PutFile(CameraFilePath, "[Camera.2]\ncnfFile=insb.cnf\nDataOffset=-12\n");
    SetSize(320, 256);
    write::frames.DisplayEnabled = 0;
    EXPECT_EQ(init_itex(), 1);
    EXPECT_THAT(recordingBoard.asked,
                ElementsAre("itx_load_cnf " + directory.Path() + "/insb.cnf", "itx_init_sys 0",
                            "itx_get_modcnf 0 ICP 100", "icp_delete_all_frames 11", "icp_get_slot0 11",
                            "amdig_lin_lut 12", "icp_create_frame 11 320 256 16 0", "icp_frame_attrib 11 5",
                            "itx_set_timeout 11 200", "icp_bm_mode 11 1", "icp_bm_ilace 11 0",
                            "icp_put_bm_firstf_start 11 0", "itx_get_modcnf 0 CMP 100"));
    EXPECT_TRUE(op.Boxes().empty());
    EXPECT_EQ(IcpModule, 11);
    EXPECT_EQ(AcqModule, 12);
    EXPECT_EQ(FrameA, 5);
    EXPECT_EQ(DataOffset, -12);
    EXPECT_EQ(DisplayEnabled, 1);
    EXPECT_EQ(GrabberPresent, 1);
    EXPECT_EQ(RawFrame.size(), 320U * 256U);
    EXPECT_EQ(LiveFrame.size(), 320U * 256U);
    EXPECT_EQ(VideoCopy.size(), 320U * 256U);
    EXPECT_THAT(RawFrame, Each(0));
}

TEST_F(BoardSetUp, ThePitchIsTheNextMultipleOf32)
{
    for (const auto& [columns, pitch] : {std::pair{125, 128}, {128, 128}, {129, 160}, {1, 32}, {32, 32}}) {
        SetSize(columns, 7);
        EXPECT_EQ(init_itex(), 1);
        EXPECT_EQ(FramePitch, pitch) << columns;
        EXPECT_EQ(FrameRows, 7);
    }
    EXPECT_THAT(recordingBoard.asked, Contains("icp_create_frame 11 128 7 16 0").Times(2));
}

TEST_F(BoardSetUp, ACnfFileOfNoneKeepsTheOldPath)
{
    SetSize(8, 8);
    EXPECT_EQ(init_itex(), 1);
    EXPECT_EQ(recordingBoard.asked.front(), "itx_load_cnf ") << "empty at the first start: the board decides";
    write::windows.CnfFilePath = "/elsewhere/old.cnf";
    PutFile(CameraFilePath, "[Camera.2]\ncnfFile=none\n");
    ForgetAsked();
    EXPECT_EQ(init_itex(), 1);
    EXPECT_EQ(recordingBoard.asked.front(), "itx_load_cnf /elsewhere/old.cnf");
}

TEST_F(BoardSetUp, TheComputingModulesAreLookedUpBelowCmp)
{
    recordingBoard.hasComputingModules = true;
    SetSize(8, 8);
    EXPECT_EQ(init_itex(), 1);
    const std::vector<std::string> last(recordingBoard.asked.end() - 6, recordingBoard.asked.end());
    EXPECT_THAT(last, ElementsAre("itx_get_modcnf 0 CMP 100", "itx_get_modcnf 20 CM-CLU 100",
                                  "itx_get_modcnf 20 CM-MMP 100", "itx_get_modcnf 20 CM-HF 100",
                                  "itx_get_modcnf 20 CM-PA 100", "itx_get_modcnf 20 CM-MEM 100"));
    EXPECT_EQ(CmpModule, 20);
    // The handle of each is told by how much had been asked.
    EXPECT_THAT((std::vector{CmMmp - CmClu, CmHf - CmClu, CmPa - CmClu, CmMem - CmClu}), ElementsAre(1, 2, 3, 4));
}

TEST_F(BoardSetUp, RunsAgainAtTheNextTurnOn)
{
    SetSize(8, 8);
    EXPECT_EQ(init_itex(), 1);
    write::frames.RawFrame.assign(64, 9);
    write::frames.GrabberPresent = 0;
    SetSize(16, 4);
    EXPECT_EQ(init_itex(), 1);
    EXPECT_EQ(GrabberPresent, 1);
    EXPECT_THAT(RawFrame, Each(0));
}

TEST_F(BoardSetUp, WithoutABoardItFailsWithoutAMessage)
{
    PutFile(directory / "platform.ini", "[Board]\nBoard=none\n");
    SetSize(8, 4);
    EXPECT_EQ(init_itex(), 0);
    EXPECT_THAT(recordingBoard.asked, IsEmpty());
    EXPECT_TRUE(op.Boxes().empty());
    EXPECT_EQ(GrabberPresent, 0);
    EXPECT_EQ(RawFrame.size(), 32U) << "the frames in host memory stand all the same";
}

struct SetUpFailure {
    const char* operation;
    std::int32_t answer;
    const char* text;  // of the box; empty: none
    const char* caption;
    const char* lastAsked;
    friend std::ostream& operator<<(std::ostream& stream, const SetUpFailure& failure)
    {
        return stream << failure.operation << " gives " << failure.answer;
    }
};

class BoardSetUpFails : public BoardTest, public testing::WithParamInterface<SetUpFailure> {};

TEST_P(BoardSetUpFails, EndsAtOnceWithItsBox)
{
    const SetUpFailure& failure = GetParam();
    recordingBoard.answers[failure.operation] = failure.answer;
    SetSize(8, 4);
    EXPECT_EQ(init_itex(), 0);
    EXPECT_THAT(recordingBoard.asked.back(), StartsWith(failure.lastAsked));
    EXPECT_EQ(GrabberPresent, 0);
    EXPECT_EQ(RawFrame.size(), 32U);
    EXPECT_EQ(LiveFrame.size(), 32U);
    if (*failure.text == '\0') {
        EXPECT_TRUE(op.Boxes().empty());
        return;
    }
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].text, failure.text);
    EXPECT_EQ(op.Boxes()[0].caption, failure.caption);
    EXPECT_EQ(op.Boxes()[0].icon, "none");
}

INSTANTIATE_TEST_SUITE_P(
    EachOperation, BoardSetUpFails,
    testing::Values(
        SetUpFailure{"itx_load_cnf", -3, "", "", "itx_load_cnf"},
        SetUpFailure{"itx_init_sys", 1, "", "", "itx_init_sys"},
        SetUpFailure{"itx_get_modcnf", 0, "", "", "itx_get_modcnf"},
        SetUpFailure{"icp_get_slot0", 0, "No Acquisition Module Found on Board #0", "init_itex", "icp_get_slot0"},
        SetUpFailure{"icp_create_frame", -2, "FrameA on ICP-PCI#0 not created!", "init_itex()", "icp_create_frame"},
        SetUpFailure{"icp_frame_attrib", -2, "FrameA on ICP-PCI#0 not set up properly!", "init_itex()",
                     "icp_frame_attrib"},
        // only the low half of the answer counts
        SetUpFailure{"icp_frame_attrib", 0x1FFFE, "FrameA on ICP-PCI#0 not set up properly!", "init_itex()",
                     "icp_frame_attrib"}),
    [](const auto& row) { return std::string(row.param.operation) + std::to_string(row.index); });

TEST_F(BoardSetUp, AFrameOfOtherBitsIsRefused)
{
    recordingBoard.bits = 8;
    recordingBoard.colour = 1;  // the bits are looked at first
    SetSize(8, 8);
    EXPECT_EQ(init_itex(), 0);
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].text, "FrameA on ICP-PCI#0 not set up for 16-bit data input!");
    EXPECT_EQ(op.Boxes()[0].caption, "init_itex()");
}

TEST_F(BoardSetUp, AColourFrameIsRefused)
{
    recordingBoard.colour = 1;
    SetSize(8, 8);
    EXPECT_EQ(init_itex(), 0);
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].text, "FrameA on ICP-PCI#0 not set up for MonoColor data input!");
    EXPECT_EQ(op.Boxes()[0].caption, "init_itex()");
}

TEST_F(BoardSetUp, NoSizeMakesNoFrame)
{
    for (const auto& [columns, rows] : {std::pair{0, 8}, {8, 0}, {-5, -5}, {std::numeric_limits<int>::max(), -1}}) {
        SetSize(columns, rows);
        init_itex();
        EXPECT_THAT(RawFrame, IsEmpty()) << columns << " x " << rows;
    }
}

class BoardState : public BoardTest {};

TEST_F(BoardState, TheFirstResetOnlySetsTheErrorLevel)
{
    SetSize(8, 8);
    write::camera.numBufFrames = 4;
    EXPECT_EQ(ResetBoardState(), 1);
    EXPECT_THAT(recordingBoard.asked, ElementsAre("itx_err_level 1"));
    EXPECT_EQ(HostFramesAllocated, 0);
    EXPECT_THAT(op.Texts("status", "text"), IsEmpty());
}

TEST_F(BoardState, ALaterResetMakesTheHostFramesAnew)
{
    PutFile(IniFilePath, "[Camera.2]\nMaxNumFramesToAllocate=2\n");
    SetSize(8, 8);
    write::camera.numBufFrames = 4;
    ResetBoardState();
    ForgetAsked();
    EXPECT_EQ(ResetBoardState(), 1);
    EXPECT_EQ(HostFramesAllocated, 1);
    EXPECT_EQ(HostFrames.size(), 3U);
    EXPECT_THAT(recordingBoard.asked, ElementsAre("itx_err_level 1"));
    const std::vector<std::string> texts = op.Texts("status", "text");
    ASSERT_FALSE(texts.empty());
    EXPECT_EQ(texts.back(), "Wait - Vantir initializing Image Processor");
    EXPECT_EQ(std::get<std::int64_t>(TranscriptLines().back().fields.back().second), 6) << "centred";
}

TEST_F(BoardState, ReleasingFreesTheDisplayTableAndTheHostFrames)
{
    PutFile(IniFilePath, "[Camera.2]\nMaxNumFramesToAllocate=2\n");
    SetSize(8, 8);
    write::camera.numBufFrames = 4;
    AllocateHostFrames();
    write::display.DisplayLut.assign(10, 1);
    write::frames.GrabberPresent = 1;
    ForgetAsked();
    ReleaseBoard();
    EXPECT_THAT(DisplayLut, IsEmpty());
    EXPECT_THAT(HostFrames, IsEmpty());
    EXPECT_EQ(GrabberPresent, 0);
    EXPECT_THAT(recordingBoard.asked, IsEmpty());
    ExitBoard();
    EXPECT_THAT(recordingBoard.asked, ElementsAre("itx_exit 0"));
}

TEST_F(BoardState, TheErrorTextIsAlwaysTheSame)
{
    for (const int code : {-1, 0, 7}) {
        std::string text = "before";
        GetBoardErrorText(code, text);
        EXPECT_EQ(text, "ICP-PCI frame grabber error");
    }
}

TEST_F(BoardState, CheckingLooksBothModulesUpAgain)
{
    EXPECT_EQ(CheckBoardModules(), 1);
    EXPECT_EQ(IcpModule, 11);
    EXPECT_EQ(AcqModule, 12);
    EXPECT_THAT(recordingBoard.asked, ElementsAre("itx_get_modcnf 0 ICP 100", "icp_get_slot0 11"));
    recordingBoard.answers["icp_get_slot0"] = 0;
    EXPECT_EQ(CheckBoardModules(), 0);
    EXPECT_EQ(AcqModule, 0);
    recordingBoard.answers = {{"itx_get_modcnf", 0}};
    EXPECT_EQ(CheckBoardModules(), 0);
}

class TriggerLines : public BoardTest {
  protected:
    TriggerLines()
    {
        SetSize(4, 2);
        init_itex();
        ForgetAsked();
    }
};

TEST_F(TriggerLines, TriggerModeArmsOneCaptureOrGrabs)
{
    EXPECT_EQ(SetTriggerMode(1), 1);
    EXPECT_EQ(SetTriggerMode(0), 1);
    EXPECT_THAT(recordingBoard.asked,
                ElementsAre("amdig_trigen 12 1", "icp_trig_snap 11 5", "amdig_trigen 12 0", "icp_grab 11 5"));
    recordingBoard.answers["icp_trig_snap"] = -1;
    EXPECT_EQ(SetTriggerMode(1), 0);
    EXPECT_EQ(SetTriggerMode(0), 1);
    recordingBoard.answers["icp_grab"] = -1;
    EXPECT_EQ(SetTriggerMode(0), 0);
    EXPECT_TRUE(op.Boxes().empty());
}

TEST_F(TriggerLines, AMissedTriggerIsArmedAgain)
{
    EXPECT_EQ(WaitForTrigger(30), 1);
    EXPECT_THAT(recordingBoard.asked, ElementsAre("icp_wait_trig 11 5 30"));
    for (const int answer : {0, -7, 2}) {
        ForgetAsked();
        recordingBoard.answers["icp_wait_trig"] = answer;
        EXPECT_EQ(WaitForTrigger(30), 0);
        EXPECT_THAT(recordingBoard.asked, ElementsAre("icp_wait_trig 11 5 30", "icp_trig_snap 11 5"));
    }
}

TEST_F(TriggerLines, SyncLines)
{
    ExternalSyncOn(0);
    ExternalSyncOn(1);
    ExternalSyncPulse();
    EXPECT_THAT(recordingBoard.asked, ElementsAre("amdig_exsyncp 12 1", "amdig_exsen 12 0", "amdig_exsyncp 12 1",
                                                  "amdig_exsyncp 12 0", "amdig_exsyncp 12 1"));
}

TEST_F(TriggerLines, AFrameNowIsRawWithTheOffset)
{
    write::board.DataOffset = -1001;
    write::cal.DecomList = {7, 6, 5, 4, 3, 2, 1, 0};  // not looked at
    write::cal.CalType = 1;
    write::cal.OffsetList.assign(8, 500);
    std::vector<std::int16_t> buffer(9, 77);
    EXPECT_EQ(ReadFrameNow(buffer), 1);
    EXPECT_THAT(buffer, ElementsAre(-1, 0, 1, 2, 99, 100, 101, 102, 77));
    EXPECT_THAT(recordingBoard.asked, ElementsAre("priority 1", "icp_wait_vb 11 5", "icp_read_area 11 5 0 0 4 2"))
        << "the priority stays raised";
}

TEST_F(TriggerLines, AFrameNowFailsAsTheLiveOneDoes)
{
    std::vector<std::int16_t> buffer(8);
    recordingBoard.answers["icp_wait_vb"] = -7;
    EXPECT_EQ(ReadFrameNow(buffer), 0);
    EXPECT_THAT(recordingBoard.asked, ElementsAre("priority 1", "icp_wait_vb 11 5", "priority 0"));
    recordingBoard.answers = {{"icp_read_area", 1}};
    EXPECT_EQ(ReadFrameNow(buffer), 0);
    ASSERT_EQ(op.Boxes().size(), 2U);
    EXPECT_EQ(op.Boxes()[0].text, "Timeout waiting for vertical blank!");
    EXPECT_EQ(op.Boxes()[0].caption, "icp_wait_vb() Error!");
    EXPECT_EQ(op.Boxes()[1].text, "icp_read_area() Error");
    EXPECT_EQ(op.Boxes()[1].caption, "ITEX Board Error!");
    EXPECT_EQ(recordingBoard.asked.back(), "priority 0");
}

TEST_F(TriggerLines, AFrameNowNeedsRoom)
{
    std::vector<std::int16_t> buffer(7);
    EXPECT_EQ(ReadFrameNow(buffer), 0);
    EXPECT_THAT(recordingBoard.asked, IsEmpty());
}

class FrameSize : public BoardTest {};

TEST_F(FrameSize, AChangeDropsWhatHasTheOldSize)
{
    PutFile(IniFilePath, "[Camera.2]\nMaxNumFramesToAllocate=2\n");
    PutFile(directory / "DECOM.TMP", "old");
    SetSize(8, 8);
    write::camera.numBufFrames = 4;
    AllocateHostFrames();
    for (auto* frame : {&write::frames.RawFrame, &write::frames.LiveFrame, &write::cal.OffsetList})
        frame->assign(64, 1);
    write::board.VideoCopy.assign(64, 1);
    write::cal.DecomList.assign(64, 1);
    write::cal.GainList.assign(64, 1);
    write::cal.CalType = 2;
    write::buffer.HostFrameBytes = 256;
    write::buffer.AveragingCapacity = 17;

    SetSize(4, 4);
    FrameSizeChanged();
    for (const auto* frame : {&write::frames.RawFrame, &write::frames.LiveFrame, &write::cal.OffsetList})
        EXPECT_THAT(*frame, IsEmpty());
    EXPECT_THAT(VideoCopy, IsEmpty());
    EXPECT_THAT(DecomList, IsEmpty());
    EXPECT_THAT(GainList, IsEmpty());
    EXPECT_EQ(CalType, 0);
    EXPECT_THAT(HostFrames, IsEmpty());
    EXPECT_EQ(HostFrameBytes, 0);
    EXPECT_EQ(AveragingCapacity, 0U);
    EXPECT_FALSE(std::filesystem::exists(directory / "DECOM.TMP"));
    EXPECT_THAT(recordingBoard.asked, IsEmpty()) << "the board isn't open";
    std::vector<std::int16_t> frame;
    EXPECT_EQ(GetVideoData(frame), 0);
    EXPECT_TRUE(op.Boxes().empty());
}

TEST_F(FrameSize, WithTheBoardOpenItsFrameIsMadeAgainAndLiveVideoGoesOn)
{
    GoLive(8, 8);
    SetSize(40, 4);
    FrameSizeChanged();
    EXPECT_THAT(recordingBoard.asked, ElementsAre("icp_freeze 11 5", "icp_delete_all_frames 11",
                                                  "icp_create_frame 11 64 4 16 0", "icp_grab 11 5"));
    EXPECT_EQ(RefreshLiveFrame(), 1);
    EXPECT_EQ(LiveFrame.size(), 160U);
    EXPECT_EQ(LiveFrame[41], 1101);
}

class ActiveSection : public BoardTest {
  protected:
    void PutSection(const std::string& keys)
    {
        PutFile(CameraFilePath, "[Camera.2]\n" + keys);
        ForgetProfile(CameraFilePath);
    }
    void MakeHostFrames(int frames)
    {
        PutFile(IniFilePath, Format("[Camera.2]\nMaxNumFramesToAllocate=%d\n", frames));
        write::camera.numBufFrames = 8;
        AllocateHostFrames();
        ASSERT_EQ(numBufFrames, frames);
    }
};

TEST_F(ActiveSection, WithAnotherSizeTheBoardAndTheListsFollow)
{
    GoLive(8, 8);
    MakeHostFrames(2);
    write::cal.OffsetList.assign(64, 1);
    PutSection("Hroi=4\nVroi=2\n");
    ReadActiveSection();
    EXPECT_THAT(OffsetList, IsEmpty());
    EXPECT_THAT(HostFrames, IsEmpty());
    EXPECT_THAT(recordingBoard.asked, Contains("icp_create_frame 11 32 2 16 0"));
    EXPECT_EQ(RefreshLiveFrame(), 1);
    EXPECT_THAT(LiveFrame, ElementsAre(1000, 1001, 1002, 1003, 1100, 1101, 1102, 1103));
}

TEST_F(ActiveSection, AFirstReadingDropsNothing)
{
    PutFile(directory / "DECOM.TMP", "kept");
    SetSize(0, 0);
    PutSection("Hroi=4\nVroi=2\nnumBufFrames=5\n");
    ReadActiveSection();
    EXPECT_EQ(ActiveConfig.Hroi, 4);
    EXPECT_EQ(numBufFrames, 5);
    EXPECT_TRUE(std::filesystem::exists(directory / "DECOM.TMP"));
}

TEST_F(ActiveSection, HostFramesThatStandStayCounted)
{
    SetSize(4, 2);
    MakeHostFrames(3);
    PutSection("Hroi=4\nVroi=2\nnumBufFrames=8\n");
    ReadActiveSection();
    EXPECT_EQ(numBufFrames, 3);
    EXPECT_EQ(AllocateHostFrames(), 3 * 16);
}

TEST_F(ActiveSection, ThatWantsNoHostFramesFreesThem)
{
    SetSize(4, 2);
    MakeHostFrames(3);
    PutSection("Hroi=4\nVroi=2\nnumBufFrames=0\n");
    ReadActiveSection();
    EXPECT_EQ(numBufFrames, 0);
    EXPECT_EQ(HostFramesAllocated, 0);
    EXPECT_THAT(HostFrames, IsEmpty());
}

}  // namespace
}  // namespace kelvo
