#include "fileboard/file_camera.h"
#include "fileboard/recorded_files.h"
#include "grabber/copm2.h"
#include "platform/clock.h"
#include "platform/faults.h"
#include "platform/serial.h"
#include "state/windows_write.h"
#include "support/operator.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace kelvo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::int64_t kMs = 1000;  // in us

// A board that plays two references and a scene of three frames, one of which is lost: complete 20, 40 and 80 ms after
// its start.
class FileBoard : public testing::Test {
  protected:
    FileBoard()
    {
        SetDefaultDir(directory.Path());
        PutFile(directory / "platform.ini", "[Board]\nBoard=file\n");
        PutRecording(directory / "low.seq", {100, 101});
        PutRecording(directory / "high.seq", {200, 201});
        PutRecording(directory / "scene.seq", {1, 2, 4});
        PutJournal(directory / "scene.seq",
                   {{.number = 1, .monotonicNs = 1'020'000'000, .integrationMs = 5},
                    {.number = 2, .monotonicNs = 1'040'000'000},
                    {.number = 4, .monotonicNs = 1'080'000'000, .lostByBoard = 1}},
                   kRawPixels);
        RegisterFileBoard();
        RegisterFileHeads();
    }

    void PutCamera(const std::string& more = "", const std::string& name = "camera.cnf")
    {
        PutFile(directory / name, "[Frames]\nLow=low.seq\nHigh=high.seq\nScene=scene.seq\n" + more);
    }

    // As init_itex does; columns and rows of the frame.
    void OpenBoard(std::int32_t columns = kTestColumns, std::int32_t rows = kTestRows)
    {
        ASSERT_EQ(itx_load_cnf(directory / "camera.cnf"), 0);
        ASSERT_EQ(itx_init_sys(0), 0);
        icp = itx_get_modcnf(0, "ICP", 100);
        ASSERT_NE(icp, 0);
        camera = CurrentFileCamera();
        ASSERT_NE(icp_get_slot0(icp), 0);
        frame = icp_create_frame(icp, columns, rows, 16, 0);
        ASSERT_NE(frame, kNoBoardFrame);
        ASSERT_EQ(icp_grab(icp, frame), 0);
        buffer.resize(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows));
    }

    // The next frame's number and value; {0, 0}: none came within a second.
    std::pair<std::int64_t, int> Next(std::int64_t after)
    {
        FrameStamp stamp;
        const std::int32_t result =
            icp_next_frame(icp, frame, after, 1000 * kMs, kTestColumns, kTestRows, buffer, stamp);
        if (result == kBoardTimeout) return {0, 0};
        EXPECT_EQ(result, 0);
        return {stamp.number, buffer.front()};
    }
    int Newest()
    {
        if (icp_wait_vb(icp, frame) == kBoardTimeout) return 0;
        EXPECT_EQ(icp_read_area(icp, frame, 0, 0, kTestColumns, kTestRows, buffer), 0);
        return buffer.front();
    }

    using Answer = std::pair<std::int64_t, int>;
    TempDirectory directory;
    TestOperator op;
    std::shared_ptr<FileCamera> camera;
    BoardModule icp = 0;
    BoardFrame frame = kNoBoardFrame;
    std::vector<std::int16_t> buffer;
};

TEST_F(FileBoard, FramesComeInOrderAndALostOneLeavesItsNumber)
{
    PutCamera();
    OpenBoard();
    const std::int64_t startUs = TickUs();
    EXPECT_EQ(Next(0), Answer(1, 1));
    EXPECT_EQ(TickUs(), startUs + 20 * kMs);
    EXPECT_EQ(Next(1), Answer(2, 2));
    EXPECT_EQ(Next(2), Answer(4, 4));
    EXPECT_EQ(TickUs(), startUs + 80 * kMs);
    EXPECT_EQ(icp_frame_count(icp), 4);
    EXPECT_EQ(Next(4), Answer(5, 1)) << "from the beginning";
    EXPECT_EQ(Next(7), Answer(8, 4));
}

TEST_F(FileBoard, WhoComesLateStillGetsEachFrame)
{
    PutCamera();
    OpenBoard();
    DelayMs(1000);
    EXPECT_EQ(Next(0), Answer(1, 1));
    FrameStamp stamp;
    EXPECT_EQ(icp_next_frame(icp, frame, 1, 0, kTestColumns, kTestRows, buffer, stamp), 0);
    EXPECT_EQ(stamp.number, 2);
    EXPECT_EQ(stamp.utcNs, UtcNsAtTick(stamp.monotonicNs / 1000));
}

TEST_F(FileBoard, TheLiveViewTakesTheNewest)
{
    PutCamera();
    OpenBoard();
    EXPECT_EQ(Newest(), 1);
    EXPECT_EQ(Newest(), 2);
    EXPECT_EQ(Newest(), 4);
    EXPECT_EQ(Newest(), 1);
    DelayMs(40);
    EXPECT_EQ(icp_read_area(icp, frame, 0, 0, kTestColumns, kTestRows, buffer), 0);
    EXPECT_EQ(buffer.front(), 2) << "the third isn't complete";
    // Frozen, the frame stays, and areas are cut out of it.
    icp_freeze(icp, frame);
    DelayMs(1000);
    std::vector<std::int16_t> area(2);
    EXPECT_EQ(icp_read_area(icp, frame, 2, 1, 2, 1, area), 0);
    EXPECT_THAT(area, ElementsAre(2, 2));
    EXPECT_NE(icp_read_area(icp, frame, 3, 1, 2, 1, area), 0);
    EXPECT_NE(icp_read_area(icp, frame, 0, 0, kTestColumns, kTestRows, area), 0);
}

TEST_F(FileBoard, AGrabCountsFromItsStartAndTheRecordingGoesOn)
{
    PutCamera("Rate=100\n");
    OpenBoard();
    EXPECT_EQ(Next(0), Answer(1, 1));
    ASSERT_EQ(icp_grab(icp, frame), 0);
    EXPECT_EQ(icp_frame_count(icp), 0);
    EXPECT_EQ(Next(0), Answer(1, 2));
    EXPECT_EQ(Next(1), Answer(3, 4)) << "the gap lies behind it";
}

TEST_F(FileBoard, AGatheringBeginsWithTheFirstFrame)
{
    PutCamera("[Bench]\nSource=low\n");
    OpenBoard();
    EXPECT_EQ(Newest(), 100);
    EXPECT_EQ(Newest(), 101);
    EXPECT_EQ(Newest(), 100);
    icp_get_slot0(icp);
    EXPECT_EQ(icp_frame_count(icp), 3) << "counts never fall back";
    EXPECT_EQ(Newest(), 100);
    EXPECT_EQ(icp_frame_count(icp), 4);
}

TEST_F(FileBoard, AnotherSourceBeginsWhenItIsPutInFront)
{
    PutCamera();
    OpenBoard();
    EXPECT_EQ(Next(0), Answer(1, 1));
    EXPECT_TRUE(PutFileSource(*camera, FileSource::kHigh));
    EXPECT_EQ(Next(1), Answer(2, 200));
    EXPECT_EQ(Next(2), Answer(3, 201));
    EXPECT_TRUE(PutFileSource(*camera, FileSource::kLow));
    EXPECT_EQ(Next(3), Answer(4, 100));
    EXPECT_EQ(SetFileOfSource(*camera, FileSource::kLow, directory / "high.seq"), "");
    EXPECT_EQ(Next(4), Answer(5, 200));
    EXPECT_EQ(StateOfSource(*camera, FileSource::kLow).name, "high.seq");
}

TEST_F(FileBoard, AFileThatDoesNotFitLeavesTheFormerOne)
{
    PutCamera();
    OpenBoard();
    WriteImageFile(directory / "small.seq", PlainHeader(2, 2), {{1, 2, 3, 4}});
    EXPECT_THAT(SetFileOfSource(*camera, FileSource::kScene, directory / "small.seq"),
                HasSubstr("small.seq has frames of 2 x 2, low.seq of 4 x 2: a camera's have one size."));
    EXPECT_THAT(SetFileOfSource(*camera, FileSource::kScene, directory / "none.seq"), HasSubstr("can't be opened"));
    EXPECT_EQ(Next(0), Answer(1, 1));
    EXPECT_EQ(StateOfSource(*camera, FileSource::kScene).name, "scene.seq");
}

TEST_F(FileBoard, SamplesAbove32767AreTakenLowerWithThoseOfAllSources)
{
    PutNpy(directory / "low.npy", "<u2", {100, 101});
    PutNpy(directory / "high.npy", "<u2", {40000, 40001});
    PutFile(directory / "camera.cnf", "[Frames]\nLow=low.npy\nRate=50\n");
    OpenBoard();
    EXPECT_EQ(Next(0), Answer(1, 100));
    EXPECT_EQ(SetFileOfSource(*camera, FileSource::kHigh, directory / "high.npy"), "");
    EXPECT_EQ(Next(1), Answer(2, 101 - 32768));
    EXPECT_TRUE(PutFileSource(*camera, FileSource::kHigh));
    EXPECT_EQ(Next(2), Answer(3, 40000 - 32768));
    EXPECT_THAT(icp_report(icp).counts, HasSubstr("less 32768"));
    EXPECT_THAT(SetFileOfSource(*camera, FileSource::kScene, directory / "scene.seq"),
                HasSubstr("scene.seq has samples with a sign."));
}

TEST_F(FileBoard, ARefusedFileLeavesTheSamplesOfTheOthers)
{
    PutNpy(directory / "low.npy", "<u2", {100, 101});
    PutNpy(directory / "high.npy", "<u2", {40000, 40001});
    PutFile(directory / "camera.cnf", "[Frames]\nLow=low.npy\nScene=scene.seq\n[Bench]\nSource=low\n");
    OpenBoard();
    EXPECT_THAT(SetFileOfSource(*camera, FileSource::kHigh, directory / "high.npy"),
                HasSubstr("scene.seq has samples with a sign."));
    EXPECT_EQ(StateOfSource(*camera, FileSource::kHigh).name, "");
    EXPECT_EQ(Next(0), Answer(1, 100));
    EXPECT_EQ(icp_report(icp).counts, "");
}

TEST_F(FileBoard, OnceEndsAndSaysSo)
{
    PutCamera("End=once\n");
    OpenBoard();
    EXPECT_EQ(icp_report(icp).link, CameraLink::kUp);
    EXPECT_EQ(Next(3), Answer(4, 4));
    const std::int64_t beforeUs = TickUs();
    EXPECT_EQ(Next(4), Answer(0, 0));
    EXPECT_EQ(TickUs(), beforeUs + 1000 * kMs) << "it waits as long as it may";
    const CameraReport report = icp_report(icp);
    EXPECT_EQ(report.link, CameraLink::kLost);
    EXPECT_EQ(report.linkText, "scene.seq has ended: no more frames come");
    EXPECT_EQ(icp_wait_vb(icp, frame), kBoardTimeout);
    EXPECT_TRUE(StateOfSource(*camera, FileSource::kScene).ended);

    PutFileSource(*camera, FileSource::kScene);
    EXPECT_EQ(icp_report(icp).link, CameraLink::kUp);
    EXPECT_EQ(Next(4), Answer(5, 1));
}

TEST_F(FileBoard, AWindowOfAnotherSizeIsFilledWithZeros)
{
    PutCamera();
    OpenBoard(6, 3);
    ASSERT_EQ(icp_wait_vb(icp, frame), 0);
    ASSERT_EQ(icp_read_area(icp, frame, 0, 0, 6, 3, buffer), 0);
    EXPECT_THAT(buffer, ElementsAre(1, 1, 1, 1, 0, 0, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_THAT(icp_take_notes(icp), Contains("The frames of scene.seq are 4 x 2. The window was set to 6 x 3: what "
                                              "they don't fill is 0."));
    ASSERT_EQ(icp_read_area(icp, frame, 0, 0, 3, 1, buffer), 0);
    EXPECT_THAT(std::span(buffer).first(3), ElementsAre(1, 1, 1));
}

TEST_F(FileBoard, TheReportIsTheRecordingsOwn)
{
    PutCamera();
    OpenBoard();
    const CameraReport report = icp_report(icp);
    EXPECT_EQ(report.rateHz, 50);
    EXPECT_EQ(report.integrationMs, 5);
    EXPECT_EQ(report.columns, kTestColumns);
    EXPECT_EQ(report.rows, kTestRows);
    EXPECT_THAT(report.clock, HasSubstr("as scene.seq was played again"));
    EXPECT_EQ(report.counts, "");
}

TEST_F(FileBoard, WhatWasAskedOtherwiseIsNotedOnce)
{
    PutCamera();
    OpenBoard();
    EXPECT_THAT(icp_take_notes(icp), IsEmpty()) << "nothing was asked yet";
    // 48 MHz / 12 = 4 MHz; 64 x 80 units of 16 pixels: 48.828 Hz. Lines 244 - 2 = 242 of 320 pixels and 160 more.
    for (const WireFrame& sent : {WireFrame{0x50, 0, 0, 5}, WireFrame{0x50, 1, 64, 80}, WireFrame{0x50, 3, 244, 40},
                                  WireFrame{0x90, 0x30, 0, 0}}) {
        AnswerFileFrame(*camera, sent);
    }
    EXPECT_THAT(icp_take_notes(icp),
                ElementsAre("scene.seq is played at 50.00 Hz. The head was set to 48.83 Hz.",
                            "The integration time is that of scene.seq, 5.000 ms. The head was set to 19.400 ms."));
    EXPECT_THAT(icp_take_notes(icp), IsEmpty());
    AnswerFileFrame(*camera, {0x50, 0, 0, 2});
    EXPECT_THAT(icp_take_notes(icp), SizeIs(2));
    PutFileSource(*camera, FileSource::kLow);
    EXPECT_THAT(icp_take_notes(icp),
                ElementsAre("low.seq doesn't tell its frame rate: it is played at 50.00 Hz.",
                            "low.seq doesn't tell its integration time: that of the head's settings is shown."));
}

TEST_F(FileBoard, TheHeadAnswersKeepsItsRegistersAndOutlivesItsLine)
{
    PutCamera();
    PutFile(directory / "platform.ini", "[Ports]\nCOM2=file:camera.cnf\n[Board]\nBoard=file\n");
    const std::array<std::uint8_t, 4> identify{0, 0, 0, 0};
    const std::array<std::uint8_t, 4> dac{0x70, 1, 77, 0};
    {
        const SerialHandle port = OpenSerialPort("COM2");
        ASSERT_TRUE(port) << LastSerialErrorText();
        std::array<std::uint8_t, 4> answer{};
        EXPECT_EQ(WriteSerialPort(*port, dac), 4);
        EXPECT_EQ(ReadSerialPort(*port, answer), 4);
        EXPECT_EQ(answer, dac);
        EXPECT_EQ(WriteSerialPort(*port, identify), 4);
        EXPECT_EQ(ReadSerialPort(*port, answer), 4);
        SetFault("head silent", true);
        EXPECT_EQ(WriteSerialPort(*port, dac), 4);
        EXPECT_EQ(ReadSerialPort(*port, answer), 0);
    }
    EXPECT_THAT(FileHeadRegisters(*CurrentFileCamera()), Contains(std::pair<std::string, double>("offset", 77)));
    const SerialHandle again = OpenSerialPort("COM2");
    ASSERT_TRUE(again);
    EXPECT_THAT(FileHeadRegisters(*CurrentFileCamera()), Contains(std::pair<std::string, double>("offset", 77)));
}

TEST_F(FileBoard, ACameraThatCannotBeMadeSaysWhy)
{
    EXPECT_NE(itx_load_cnf(directory / "camera.cnf"), 0);
    EXPECT_THAT(icp_take_notes(0), ElementsAre(HasSubstr("The file of the recorded camera can't be read.")));
    EXPECT_THAT(icp_take_notes(0), IsEmpty());
    EXPECT_NE(itx_init_sys(0), 0);
    EXPECT_EQ(itx_get_modcnf(0, "ICP", 100), 0);
    EXPECT_EQ(icp_get_slot0(1), 0);
    EXPECT_EQ(icp_report(0).rateHz, std::nullopt);
    EXPECT_EQ(icp_wait_vb(1, 1), kBoardTimeout);
    EXPECT_NE(icp_grab(1, 1), 0);

    PutFile(directory / "camera.cnf", "[Frames]\nLow=low.seq\nHigh=missing.seq\n");
    EXPECT_NE(itx_load_cnf(directory / "camera.cnf"), 0);
    EXPECT_THAT(icp_take_notes(0), ElementsAre(HasSubstr("missing.seq can't be opened.")));
    EXPECT_NE(itx_load_cnf(""), 0);
}

TEST_F(FileBoard, SourcesOfTwoSizesAreNoCamera)
{
    WriteImageFile(directory / "high.seq", PlainHeader(2, 2), {{1, 2, 3, 4}});
    PutCamera();
    std::string error;
    EXPECT_FALSE(OpenFileCamera("camera.cnf", error));
    EXPECT_THAT(error, HasSubstr("high.seq has frames of 2 x 2, low.seq of 4 x 2"));
}

TEST_F(FileBoard, FaultsFailTheirOperations)
{
    PutCamera();
    OpenBoard();
    SetFault("icp_read_area", true);
    EXPECT_EQ(icp_wait_vb(icp, frame), 0);
    EXPECT_NE(icp_read_area(icp, frame, 0, 0, kTestColumns, kTestRows, buffer), 0);
    SetFault("icp_read_area", false);
    SetFault("icp_wait_vb", true);
    EXPECT_EQ(icp_wait_vb(icp, frame), kBoardTimeout);
    SetFault("icp_wait_vb", false);
    SetFault("icp_grab", true);
    EXPECT_NE(icp_grab(icp, frame), 0);
}

}  // namespace
}  // namespace kelvo
