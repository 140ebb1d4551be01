#include "record/capture_sequence.h"

#include "acquire/averaging.h"
#include "display/display_pipeline.h"
#include "grabber/board_state_write.h"
#include "grabber/capture.h"
#include "grabber/host_frames_write.h"
#include "grabber/recording.h"
#include "platform/memory.h"
#include "state/buffer_state_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/frame_state_write.h"
#include "support/recording_board.h"
#include "video/video.h"

#include <QApplication>
#include <QKeyEvent>

#include <gmock/gmock.h>

#include <array>
#include <cstdio>
#include <memory>

namespace kelvo {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

// Frames of 2 x 2 whose counts all tell the frame's number by the board, from 1.
class CaptureBurst : public BoardTest {
  protected:
    CaptureBurst()
    {
        write::camera.numBufFrames = 6;
        PutFile(directory / "kelvo.ini", "[Camera.2]\nMaxNumFramesToAllocate=6\n");
        GoLive(2, 2);
        write::cal.DecomList = {3, 2, 1, 0};
        CalibrationListsChanged();
        std::vector<std::vector<std::int16_t>> frames;
        for (std::int16_t number = 0; number < 200; ++number) {
            frames.push_back({static_cast<std::int16_t>(10 * number), static_cast<std::int16_t>(10 * number + 1),
                              static_cast<std::int16_t>(10 * number + 2), static_cast<std::int16_t>(10 * number + 3)});
        }
        SetBoardFrames(frames);
        AllocateHostFrames();
        EXPECT_EQ(numBufFrames, 6);
        list[0] = {.Name = "A", .Frames = 3, .Skip = 2};
        list[1] = {.Name = "B", .Frames = 2};
        list[2] = {.Name = "C", .Frames = 0, .Trigger = 1};
        list[3] = {.Name = "D", .Frames = 1, .Trigger = 4};
        list[4] = {.Name = "E", .Frames = -2, .Skip = -3};
    }
    int Capture(std::string_view composition) { return CaptureSequence(100.0F, 100, composition, list); }

    // The numbers of the frames in the first slots.
    static std::vector<int> Numbers(std::size_t slots)
    {
        std::vector<int> numbers;
        for (std::size_t slot = 0; slot < slots; ++slot) numbers.push_back(HostFrames[slot][3] / 10);
        return numbers;
    }

    std::array<SubSeqRecord, kSubSequences> list;
};

TEST_F(CaptureBurst, ThreeFramesWithTwoSkippedAndTwoFramesAreStoredAtTheTimes0And3And6And7And8)
{
    ASSERT_EQ(Capture("AB"), 1);
    EXPECT_EQ(LastBurst().frames, 5);
    EXPECT_EQ(HostFrameNext, 5);
    EXPECT_THAT(Numbers(5), ElementsAre(0, 3, 6, 7, 8));
    // 3 + 2 x 2 frame times of A and two of B; what came behind the last one has been passed over.
    const CaptureCounts counts = CurrentCaptureCounts();
    EXPECT_EQ(counts.recorded, 5);
    EXPECT_EQ(counts.delivered, counts.recorded + counts.passedOver);
    EXPECT_GE(counts.passedOver, 4);
    EXPECT_EQ(counts.lostByBoard, 0);
    EXPECT_EQ(counts.lostByRing, 0);
}

TEST_F(CaptureBurst, FramesStandInImageOrderWithTheirOffset)
{
    write::board.DataOffset = 1000;
    ASSERT_EQ(Capture("B"), 1);
    EXPECT_THAT(HostFrames[0], ElementsAre(1003, 1002, 1001, 1000));
    EXPECT_THAT(HostFrames[1], ElementsAre(1013, 1012, 1011, 1010));
}

TEST_F(CaptureBurst, NothingIsDrawnAndNoCursorGetsIntoAFrame)
{
    write::frames.ImageCursorOn = 1;
    write::frames.CursorX = 0;
    write::frames.CursorY = 0;
    write::frames.LiveFrame = {-7, -7, -7, -7};
    ASSERT_EQ(Capture("B"), 1);
    EXPECT_THAT(HostFrames[0], ElementsAre(3, 2, 1, 0));
    EXPECT_THAT(LiveFrame, Each(-7));
    EXPECT_EQ(FrameBitmap, nullptr);
}

TEST_F(CaptureBurst, ASubsequenceWithoutFramesIsPassedOverAndTheLettersBehindItAreRead)
{
    list[2].Trigger = 0;
    ASSERT_EQ(Capture("CBE"), 1);
    EXPECT_THAT(Numbers(2), ElementsAre(0, 1));
    EXPECT_EQ(LastBurst().frames, 2);
    ResetHostFrameNext();
    ASSERT_EQ(Capture("BCE"), 1);
    EXPECT_EQ(LastBurst().frames, 2);
}

TEST_F(CaptureBurst, TheTriggerOfALaterSubsequenceIsTestedAlsoWithoutFrames)
{
    write::cal.CalType = 2;
    EXPECT_EQ(Capture("BCB"), kBurstTrigger);  // trigger 1
    EXPECT_EQ(LastBurst().frames, 2);
    EXPECT_EQ(CalType, 0);
    EXPECT_FALSE(RecordingRuns());
}

TEST_F(CaptureBurst, TheTriggerOfTheFirstSubsequenceIsNotTested)
{
    EXPECT_EQ(Capture("D"), 1);
    EXPECT_EQ(LastBurst().frames, 1);
    EXPECT_EQ(Capture("DB"), 1);
    EXPECT_EQ(Capture("BD"), kBurstTrigger);
}

TEST_F(CaptureBurst, OnlyTheTriggers0And2And3MayFollow)
{
    for (std::int32_t trigger = -1; trigger <= 9; ++trigger) {
        ResetHostFrameNext();
        list[3].Trigger = trigger;
        const bool may = trigger == 0 || trigger == 2 || trigger == 3;
        EXPECT_EQ(Capture("BD"), may ? 1 : kBurstTrigger) << trigger;
    }
}

TEST_F(CaptureBurst, RefusesRatesBelow0)
{
    EXPECT_EQ(CaptureSequence(100.0F, -1, "A", list), kBurstWholeRate);
    EXPECT_EQ(CaptureSequence(-0.5F, 0, "A", list), kBurstRate);
    EXPECT_EQ(LastBurst().frames, 0);
    EXPECT_EQ(HostFrameNext, 0);
}

TEST_F(CaptureBurst, ACompositionWithoutALetterStoresNothing)
{
    for (const char* composition : {"", "  ", "1 2", "+"}) EXPECT_EQ(Capture(composition), 1) << composition;
    EXPECT_EQ(LastBurst().frames, 0);
    EXPECT_EQ(HostFrameNext, 0);
    EXPECT_THAT(op.Texts("status", "text"), Each(testing::Not(testing::HasSubstr("Captured"))));
}

TEST_F(CaptureBurst, DigitsAndBlanksAreNoLettersAndSmallOnesCount)
{
    ASSERT_EQ(Capture("1 b 0B"), 1);
    EXPECT_THAT(Numbers(4), ElementsAre(0, 1, 2, 3));
}

TEST_F(CaptureBurst, GoesOnBehindTheLastSlotAtTheFirst)
{
    ASSERT_EQ(Capture("BB"), 1);
    write::buffer.FramesInBuffer = 4;
    const std::vector<std::int16_t> third = HostFrames[2];
    ASSERT_EQ(Capture("BB"), 1);
    EXPECT_EQ(LastBurst().firstSlot, 4);
    EXPECT_EQ(LastBurst().frames, 4);
    EXPECT_EQ(HostFrameNext, 2);
    EXPECT_EQ(HostFrames[2], third);
    EXPECT_EQ(HostFrames[5][3], HostFrames[4][3] + 10);  // one after the other
    EXPECT_EQ(HostFrames[0][3], HostFrames[5][3] + 10);
    EXPECT_EQ(HostFrames[1][3], HostFrames[0][3] + 10);
}

TEST_F(CaptureBurst, TellsFramesSecondsAndRate)
{
    ASSERT_EQ(Capture("B"), 1);
    const Burst& burst = LastBurst();
    char text[100];
    // 2 x 2 values of two bytes, two frames
    const double rate = burst.seconds > 0 ? 16.0 / (burst.seconds * 1e6) : 0.0;
    std::snprintf(text, sizeof text, " Captured 2 frames to Host RAM in %6.3f seconds (%6.3f MB/s).", burst.seconds,
                  rate);
    EXPECT_EQ(op.Texts("status", "text").back(), text);
}

// ---- The calibration

class CorrectedBurst : public CaptureBurst {
  protected:
    CorrectedBurst()
    {
        write::cal.OffsetList = {1, 2, 3, 4};
        write::cal.GainList = {0.5F, 2.0F, -1.0F, 0.0F};
        CalibrationListsChanged();
    }
};

TEST_F(CorrectedBurst, IsCorrectedByOffsetThroughTheTableInPlace)
{
    write::cal.CalType = 1;
    ASSERT_EQ(Capture("B"), 1);
    EXPECT_EQ(CalType, 1);
    // Pixel i shows detector 3 - i: count 3 - i, less its offset 4 - i.
    EXPECT_THAT(HostFrames[0], ElementsAre(-1, -1, -1, -1));
    EXPECT_THAT(HostFrames[1], ElementsAre(9, 9, 9, 9));
}

TEST_F(CorrectedBurst, IsCorrectedByGainTowardZero)
{
    write::cal.CalType = 2;
    ASSERT_EQ(Capture("B"), 1);
    EXPECT_EQ(CalType, 2);
    // -1 and 9 by the gains of the detectors 3, 2, 1, 0; a quotient by 0 is 0.
    EXPECT_THAT(HostFrames[0], ElementsAre(0, 1, 0, -2));
    EXPECT_THAT(HostFrames[1], ElementsAre(0, -9, 4, 18));
}

TEST_F(CorrectedBurst, AnAppendedOneIsCorrectedBelowItsOwnNumberOfFramesAlone)
{
    write::cal.CalType = 1;
    ASSERT_EQ(Capture("B"), 1);  // slots 0 and 1, corrected
    write::buffer.FramesInBuffer = 2;
    list[1].Frames = 3;
    ASSERT_EQ(Capture("B"), 1);  // slots 2 to 4: of them only 2 is below 3
    EXPECT_EQ(HostFrames[2][0], HostFrames[2][3]);
    EXPECT_EQ(HostFrames[3][0], HostFrames[3][3] + 3);
    EXPECT_EQ(HostFrames[4][0], HostFrames[4][3] + 3);
}

TEST_F(CorrectedBurst, AWrappedOneIsCorrectedOnceASlotAndNotBeyondTheStore)
{
    write::cal.CalType = 1;
    list[1].Frames = 8;
    ASSERT_EQ(Capture("B"), 1);
    for (std::size_t slot = 0; slot < 6; ++slot) EXPECT_EQ(HostFrames[slot][0], HostFrames[slot][3]) << slot;
}

// ---- What goes wrong

TEST_F(CorrectedBurst, AFrameThatDoesNotComeEndsItAndTheFramesBeforeStayUncorrected)
{
    write::cal.CalType = 1;
    recordingBoard.onRead = [](std::int32_t read) {
        if (read == 4) recordingBoard.answers["icp_wait_vb"] = kBoardTimeout;
    };
    list[1].Frames = 6;
    EXPECT_EQ(Capture("B"), kBurstNoFrame);
    EXPECT_EQ(CalType, 1);
    EXPECT_EQ(LastBurst().frames, 4);
    EXPECT_EQ(HostFrameNext, 4);
    EXPECT_THAT(HostFrames[0], ElementsAre(3, 2, 1, 0));
    EXPECT_FALSE(RecordingRuns());
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(CorrectedBurst, AFrameThatCannotBeReadEndsIt)
{
    write::cal.CalType = 1;
    recordingBoard.onRead = [](std::int32_t read) { recordingBoard.answers["icp_read_area"] = read == 3 ? -1 : 0; };
    list[1].Frames = 6;
    EXPECT_EQ(Capture("B"), kBurstFrameUnreadable);
    EXPECT_EQ(CalType, 1);
    EXPECT_EQ(LastBurst().frames, 2);
    EXPECT_THAT(HostFrames[1], ElementsAre(13, 12, 11, 10));
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(CorrectedBurst, EscapeEndsItWithTheFramesThatWereStored)
{
    write::cal.CalType = 1;
    recordingBoard.onRead = [](std::int32_t read) {
        if (read != 3) return;
        QCoreApplication::postEvent(
            qApp, std::make_unique<QKeyEvent>(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier).release());
    };
    list[1].Frames = 6;
    EXPECT_EQ(Capture("BBD"), 1);
    EXPECT_LT(LastBurst().frames, 6);
    EXPECT_GT(LastBurst().frames, 0);
    EXPECT_EQ(HostFrameNext, LastBurst().frames);
    EXPECT_THAT(HostFrames[0], ElementsAre(-1, -1, -1, -1));
}

TEST_F(CaptureBurst, RefusesWithoutHostFrames)
{
    FreeHostFrames();
    write::cal.CalType = 2;
    EXPECT_EQ(Capture("B"), kBurstNoStore);
    EXPECT_EQ(CalType, 2);
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(CaptureBurst, RefusesWithoutMemoryForTheRing)
{
    FailAllocation(1);
    EXPECT_EQ(Capture("B"), kBurstNoStore);
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].text, "Unable to allocate memory to store data to disk!");
    EXPECT_FALSE(RecordingRuns());
}

// ---- Averaging beside a stored burst

TEST_F(CaptureBurst, StaysWhenAnAverageIsTaken)
{
    ASSERT_EQ(Capture("BB"), 1);
    write::buffer.FramesInBuffer = 4;
    const std::vector<std::vector<std::int16_t>> stored = HostFrames;
    std::array<std::int16_t, 4> mean{};
    for (const std::uint32_t count : {1U, 3U, 20U}) {
        ASSERT_EQ(AverageFrames(std::span(mean), {}, count, 0, 0, 1, 1, kAverage16 | kTakeNewFrames), 1) << count;
        EXPECT_EQ(HostFrames, stored) << count;
        EXPECT_EQ(HostFrameNext, 4) << count;
    }
    SetBoardFrames({{5, 6, 7, 8}});
    ASSERT_EQ(AverageFrames(std::span(mean), {}, 3, 0, 0, 1, 1, kAverage16 | kTakeNewFrames), 1);
    EXPECT_THAT(mean, ElementsAre(5, 6, 7, 8));
}

TEST_F(CaptureBurst, AnAverageWithoutMemoryForBothIsRefusedAndTheBurstStays)
{
    ASSERT_EQ(Capture("BB"), 1);
    write::buffer.FramesInBuffer = 4;
    const std::vector<std::vector<std::int16_t>> stored = HostFrames;
    std::array<std::int16_t, 4> mean{};
    FailAllocation(1);
    EXPECT_EQ(AverageFrames(std::span(mean), {}, 1, 0, 0, 1, 1, kAverage16 | kTakeNewFrames), 0);
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].text, "ICP-PCI frame grabber error");
    EXPECT_EQ(op.Boxes()[0].caption, "Image Buffer Board Error!");
    EXPECT_EQ(HostFrames, stored);
}

}  // namespace
}  // namespace kelvo
