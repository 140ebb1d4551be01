#include "acquire/averaging.h"

#include "grabber/board.h"
#include "grabber/board_state_write.h"
#include "grabber/host_frames_write.h"
#include "imagefile/header_write.h"
#include "platform/memory.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "state/buffer_state_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "support/recording_board.h"
#include "ui/gather.h"
#include "ui/status.h"
#include "video/video.h"

#include <QApplication>
#include <QKeyEvent>

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <ostream>

namespace kelvo {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::FloatEq;
using testing::IsEmpty;
using testing::Not;

// Live video of 2 x 2; three host frames are counted. The n-th captured frame (from 1) has n-th picture: pixels
// picture, picture + 1, picture + 100, picture + 101.
class Averaging : public BoardTest {
  protected:
    Averaging()
    {
        PutFile(IniFilePath, "[Camera.2]\nMaxNumFramesToAllocate=3\n");
        write::camera.numBufFrames = 8;
        GoLive(2, 2);
        write::cal.CalType = 0;
        write::board.DataOffset = 0;
        write::cal.DecomList = {0, 1, 2, 3};
        write::cal.OffsetList = {0, 0, 0, 0};
        write::cal.GainList = {1, 1, 1, 1};
    }
    void Pictures(std::vector<std::int32_t> pictures)
    {
        recordingBoard.reads = 0;
        recordingBoard.onRead = [this, pictures](std::int32_t n) {
            ++captured;
            recordingBoard.picture = pictures.at(static_cast<std::size_t>(n - 1) % pictures.size());
        };
    }
    int Average(std::uint32_t count, std::uint32_t mode, std::span<float> deviation = {})
    {
        if (mode & kAverage16) return AverageFrames(std::span(counts), deviation, count, 0, 0, 1, 1, mode);
        if (mode & kSum32) return AverageFrames(std::span(sums), deviation, count, 0, 0, 1, 1, mode);
        return AverageFrames(std::span(means), deviation, count, 0, 0, 1, 1, mode);
    }
    // The frozen frame, which no captured one looks like.
    void Freeze()
    {
        write::frames.LiveVideo = 0;
        write::frames.RawFrame = {7, 8, 9, 10};
    }
    void Store(std::initializer_list<std::vector<std::int16_t>> frames)
    {
        AllocateHostFrames();
        std::size_t k = 0;
        for (const auto& frame : frames) write::hostFrames.HostFrames.at(k++) = frame;
        write::buffer.BufferFirstFrame = 0;
        write::buffer.BufferLastFrame = static_cast<std::int32_t>(frames.size()) - 1;
        write::buffer.BufferRectTop = write::buffer.BufferRectLeft = 0;
        write::buffer.BufferRectBottom = write::buffer.BufferRectRight = 1;
    }
    std::vector<std::string> Progress() const
    {
        std::vector<std::string> texts = op.Texts("status", "text");
        std::erase_if(texts, [](const std::string& text) { return text.find("Allocating") != std::string::npos; });
        return texts;
    }

    int captured = 0;
    std::vector<std::int16_t> counts = std::vector<std::int16_t>(4, -5);
    std::vector<std::int32_t> sums = std::vector<std::int32_t>(4, -5);
    std::vector<float> means = std::vector<float>(4, -5);
};

TEST_F(Averaging, OneLiveFrameIsOneCapturedFrame)
{
    Pictures({1000});
    EXPECT_EQ(Average(1, kAverage16 | kTakeNewFrames), 1);
    EXPECT_THAT(counts, ElementsAre(1000, 1001, 1100, 1101));
    EXPECT_EQ(captured, 1);
    EXPECT_EQ(Average(1, kSum32 | kTakeNewFrames), 1);
    EXPECT_THAT(sums, ElementsAre(1000, 1001, 1100, 1101));
    EXPECT_EQ(Average(1, kAverageFloat | kTakeNewFrames | kPlainFrame), 1);
    EXPECT_THAT(means, ElementsAre(1000, 1001, 1100, 1101));
    EXPECT_THAT(op.Boxes(), IsEmpty());
    EXPECT_THAT(Progress(), IsEmpty());
}

TEST_F(Averaging, TheMeanOfCountsTruncatesTowardZero)
{
    Pictures({10, 11, -1000});
    EXPECT_EQ(Average(2, kAverage16 | kTakeNewFrames), 1);
    EXPECT_EQ(counts[0], 10);  // 21 / 2
    Pictures({-10, -11});
    EXPECT_EQ(Average(2, kAverage16 | kTakeNewFrames), 1);
    EXPECT_EQ(counts[0], -10);  // -21 / 2
}

TEST_F(Averaging, ASumIsNotDividedAndAFloatMeanKeepsItsFraction)
{
    Pictures({10, 11});
    EXPECT_EQ(Average(2, kSum32 | kTakeNewFrames), 1);
    EXPECT_THAT(sums, ElementsAre(21, 23, 221, 223));
    Pictures({10, 11});
    EXPECT_EQ(Average(2, kAverageFloat | kTakeNewFrames), 1);
    EXPECT_THAT(means, ElementsAre(10.5F, 11.5F, 110.5F, 111.5F));
}

TEST_F(Averaging, MoreFramesThanTheStoreHoldsComeInBatches)
{
    Pictures({1, 2, 3, 4, 5, 6, 7});
    EXPECT_EQ(Average(7, kSum32 | kTakeNewFrames | kShowProgress), 1);
    EXPECT_EQ(sums[0], 28);
    EXPECT_EQ(captured, 7);
    EXPECT_THAT(Progress(),
                ElementsAre(" Captured 3 of 7 frames", " Captured 3 of 7 frames; reading frame 1",
                            " Captured 3 of 7 frames; reading frame 2", " Captured 3 of 7 frames; reading frame 3",
                            " Captured 6 of 7 frames", " Captured 6 of 7 frames; reading frame 4",
                            " Captured 6 of 7 frames; reading frame 5", " Captured 6 of 7 frames; reading frame 6",
                            " Captured 7 of 7 frames", " Captured 7 of 7 frames; reading frame 7"));
}

TEST_F(Averaging, TheLastStepsAreNamed)
{
    std::vector<float> deviation(4);
    EXPECT_EQ(Average(2, kAverage16 | kTakeNewFrames | kShowProgress), 1);
    EXPECT_EQ(Progress().back(), " Averaging data");
    EXPECT_EQ(Average(2, kSum32 | kTakeNewFrames | kShowProgress, deviation), 1);
    EXPECT_EQ(Progress().back(), " Calculting pixel standard deviations");
    EXPECT_EQ(Average(2, kAverageFloat | kTakeNewFrames | kShowProgress), 1);
    EXPECT_EQ(Progress().back(), " Averaging data");
}

// 10, 12, 17: mean 13, squares of the differences 9 + 1 + 16 = 26, over n - 1 = 2: 13.
TEST_F(Averaging, DeviationsAreThoseOfTheSampleInEachFormat)
{
    for (const std::uint32_t format : {kAverage16, kSum32, kAverageFloat}) {
        Pictures({10, 12, 17});
        std::vector<float> deviation(4);
        EXPECT_EQ(Average(3, format | kTakeNewFrames, deviation), 1);
        EXPECT_THAT(deviation, Each(FloatEq(std::sqrt(13.0F)))) << format;
    }
    EXPECT_THAT(counts, ElementsAre(13, 14, 113, 114));
    EXPECT_THAT(means, ElementsAre(13, 14, 113, 114));
}

TEST_F(Averaging, TheDeviationOfOneFrameIsLeftUntouched)
{
    for (const std::uint32_t format : {kAverage16, kSum32, kAverageFloat}) {
        std::vector<float> deviation(4, -3);
        EXPECT_EQ(Average(1, format | kTakeNewFrames, deviation), 1);
        EXPECT_THAT(deviation, Each(-3));
    }
}

TEST_F(Averaging, NoFramesLeaveTheBlockAsItStands)
{
    EXPECT_EQ(Average(0, kAverage16 | kTakeNewFrames), 1);
    EXPECT_EQ(Average(0, kSum32 | kTakeNewFrames), 1);
    EXPECT_EQ(Average(0, kAverageFloat | kTakeNewFrames), 1);
    EXPECT_THAT(counts, Each(-5));
    EXPECT_THAT(sums, Each(-5));
    EXPECT_THAT(means, Each(-5));
    EXPECT_EQ(captured, 0);
    EXPECT_THAT(recordingBoard.asked, Not(Contains(testing::HasSubstr("icp_read_area"))));
}

TEST_F(Averaging, WithoutASourceTheBlockIsOnlyFinished)
{
    write::cal.CalType = 1;
    write::cal.OffsetList = {1, 2, 3, 4};
    EXPECT_EQ(Average(1, kAverage16), 1);
    EXPECT_THAT(counts, ElementsAre(-6, -7, -8, -9));
    EXPECT_EQ(Average(2, kAverageFloat), 1);
    EXPECT_THAT(means, ElementsAre(-3.5F, -4.5F, -5.5F, -6.5F));  // -5 / 2 less the offset
}

TEST_F(Averaging, FrozenOneFrameIsTheFrozenFrame)
{
    Freeze();
    write::board.DataOffset = 100;
    EXPECT_EQ(Average(1, kAverage16 | kTakeNewFrames), 1);
    EXPECT_THAT(counts, ElementsAre(107, 108, 109, 110));
    EXPECT_EQ(Average(1, kSum32 | kTakeNewFrames), 1);
    EXPECT_THAT(sums, ElementsAre(107, 108, 109, 110));
    EXPECT_EQ(Average(1, kAverageFloat | kTakeNewFrames), 1);
    EXPECT_THAT(means, ElementsAre(107, 108, 109, 110));
    EXPECT_EQ(captured, 0);
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(Averaging, FrozenSeveralFramesBecomeTheFrozenOneIfTheOperatorAgrees)
{
    Freeze();
    op.Answer({Button::kYes});
    EXPECT_EQ(Average(5, kAverageFloat | kTakeNewFrames), 1);
    EXPECT_THAT(means, ElementsAre(7, 8, 9, 10));
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].text, "Number of frames to average is 5, but image is frozen.");
    EXPECT_EQ(op.Boxes()[0].caption, "Capture Only One Frame?");
    EXPECT_THAT(op.Boxes()[0].buttons, ElementsAre("yes", "no"));
    EXPECT_EQ(op.Texts("beep", "sound").size(), 1U);
}

TEST_F(Averaging, FrozenSeveralFramesEndWithANo)
{
    Freeze();
    op.Answer({Button::kNo});
    EXPECT_EQ(Average(5, kAverage16 | kTakeNewFrames), 0);
    EXPECT_THAT(counts, Each(-5));
}

TEST_F(Averaging, StoredFramesReplaceTheCount)
{
    Store({{1, 2, 3, 4}, {3, 4, 5, 6}, {8, 8, 8, 8}});
    EXPECT_EQ(Average(1, kSum32 | kUseStoredFrames), 1);
    EXPECT_THAT(sums, ElementsAre(12, 14, 16, 18));
    write::buffer.BufferFirstFrame = 1;
    EXPECT_EQ(Average(1, kAverage16 | kUseStoredFrames), 1);
    EXPECT_THAT(counts, ElementsAre(5, 6, 6, 7));
    EXPECT_EQ(captured, 0);
    write::buffer.BufferLastFrame = -7;  // no frames at all
    EXPECT_EQ(Average(1, kSum32 | kUseStoredFrames), 1);
    EXPECT_THAT(sums, ElementsAre(12, 14, 16, 18));
}

TEST_F(Averaging, NewFramesGoBeforeStoredOnes)
{
    Pictures({50});
    write::buffer.BufferLastFrame = 2;
    EXPECT_EQ(Average(1, kAverage16 | kTakeNewFrames | kUseStoredFrames), 1);
    EXPECT_EQ(counts[0], 50);
    EXPECT_EQ(captured, 1);
}

// ---- Calibration

TEST_F(Averaging, CalibrationAppliesToTheMeanOnly)
{
    write::cal.CalType = 2;
    write::cal.OffsetList = {1, 1, 1, 1};
    write::cal.GainList = {0.5F, 2, 1, 4};
    std::vector<float> deviation(4);
    for (const std::uint32_t format : {kAverage16, kSum32, kAverageFloat}) {
        Pictures({10, 12, 17});
        EXPECT_EQ(Average(3, format | kTakeNewFrames, deviation), 1);
        EXPECT_THAT(deviation, Each(FloatEq(std::sqrt(13.0F)))) << "of raw counts";
        EXPECT_EQ(CalType, 2);
    }
    EXPECT_THAT(counts, ElementsAre(24, 6, 112, 28));  // 13, 14, 113, 114 less 1, divided
    EXPECT_THAT(sums, ElementsAre(76, 20, 338, 85));   // 39, 42, 339, 342 less 1, divided
    EXPECT_THAT(means, ElementsAre(24, 6.5F, 112, 28.25F));
}

TEST_F(Averaging, OneFrameIsCorrectedToo)
{
    write::cal.CalType = 1;
    write::cal.OffsetList = {1, 2, 3, 4};
    Pictures({1000});
    EXPECT_EQ(Average(1, kAverage16 | kTakeNewFrames), 1);
    EXPECT_THAT(counts, ElementsAre(999, 999, 1097, 1097));
    EXPECT_EQ(CalType, 1);
}

TEST_F(Averaging, AMirroredOrSubstitutedPixelIsAsOnTheScreen)
{
    write::cal.CalType = 2;
    write::cal.OffsetList = {1, 2, 3, 4};
    write::cal.GainList = {1, 2, 3, 4};
    write::cal.DecomList = {1, 0, 3, 3};
    Pictures({1000});
    EXPECT_EQ(Average(1, kAverage16 | kTakeNewFrames), 1);
    EXPECT_THAT(counts, ElementsAre(499, 999, 274, 274));  // 999 / 2, 999 / 1, 1097 / 4
    std::vector<std::int16_t> shown;
    write::frames.DisplayEnabled = 0;
    ASSERT_EQ(GetVideoData(shown), 1);
    EXPECT_EQ(shown, counts);
}

TEST_F(Averaging, DataOffsetIsPartOfTheCounts)
{
    write::board.DataOffset = 500;
    Pictures({1000});
    EXPECT_EQ(Average(1, kAverage16 | kTakeNewFrames), 1);
    EXPECT_THAT(counts, ElementsAre(1500, 1501, 1600, 1601));
}

// ---- Rectangles and blocks

TEST_F(Averaging, APartOfTheFrameStaysWithinItsBlocks)
{
    write::cal.CalType = 1;
    write::cal.OffsetList = {1, 2, 3, 4};
    Pictures({1000});
    // The copy is flat: two values from element 2 x 2 on, which lies behind the frame.
    std::vector<std::int16_t> row = {77, 78, 79};
    EXPECT_EQ(AverageFrames(std::span(row).first(2), {}, 1, 0, 1, 1, 1, kAverage16 | kTakeNewFrames), 1);
    EXPECT_THAT(row, ElementsAre(76, 76, 79));
    // The first row is where it should be.
    EXPECT_EQ(AverageFrames(std::span(row).first(2), {}, 1, 0, 0, 1, 0, kAverage16 | kTakeNewFrames), 1);
    EXPECT_THAT(row, ElementsAre(999, 999, 79));
}

TEST_F(Averaging, AnEmptyRectangleGathersNothing)
{
    EXPECT_EQ(AverageFrames(std::span(counts), {}, 2, 1, 0, 0, 1, kAverage16 | kTakeNewFrames), 1);
    EXPECT_THAT(counts, Each(-5));
}

TEST_F(Averaging, ABlockThatIsMissingOrShortIsRefused)
{
    EXPECT_EQ(AverageFrames(std::span<std::int16_t>(), {}, 1, 0, 0, 1, 1, kAverage16 | kTakeNewFrames), 0);
    EXPECT_EQ(AverageFrames(std::span(sums).first(3), {}, 1, 0, 0, 1, 1, kSum32 | kTakeNewFrames), 0);
    ASSERT_EQ(op.Boxes().size(), 2U);
    EXPECT_EQ(op.Boxes()[0].text, "Unable to allocate or lock memory!");
    EXPECT_EQ(op.Boxes()[0].caption, "Kelvo message");
    EXPECT_THAT(sums, Each(-5));
}

struct Refusal {
    std::uint32_t format;
    int allocation;  // the n-th is refused
    const char* text;
    friend std::ostream& operator<<(std::ostream& stream, const Refusal& refusal) { return stream << refusal.text; }
};

class AveragingMemory : public Averaging, public testing::WithParamInterface<Refusal> {};

TEST_P(AveragingMemory, RefusedEndsTheCallWithItsBox)
{
    write::cal.CalType = 1;
    std::vector<float> deviation(4, -3);
    FailAllocation(GetParam().allocation);
    EXPECT_EQ(Average(2, GetParam().format | kTakeNewFrames, deviation), 0);
    FailAllocation(0);
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].text, GetParam().text);
    EXPECT_EQ(op.Boxes()[0].caption, "Kelvo message");
    EXPECT_EQ(op.Texts("beep", "sound").size(), 1U);
    EXPECT_EQ(CalType, 1);
    EXPECT_THAT(deviation, Each(-3));
    EXPECT_EQ(captured, 0);
}

constexpr const char* kMemory = "Unable to allocate or lock memory!";
constexpr const char* kLong = "Unable to allocate or lock 32-bit LONG memory!";
constexpr const char* kDouble = "Unable to allocate or lock 32-bit double memory for sum of squares!";

INSTANTIATE_TEST_SUITE_P(EachBlock, AveragingMemory,
                         testing::Values(Refusal{kAverage16, 1, kLong}, Refusal{kAverage16, 2, kDouble},
                                         Refusal{kAverage16, 3, kMemory}, Refusal{kSum32, 1, kMemory},
                                         Refusal{kSum32, 2, kDouble}, Refusal{kSum32, 3, kMemory},
                                         Refusal{kAverageFloat, 1, kMemory}, Refusal{kAverageFloat, 2, kDouble},
                                         Refusal{kAverageFloat, 3, kMemory}),
                         [](const auto& row) {
                             return Format("Format%uAllocation%d", row.param.format, row.param.allocation);
                         });

// ---- The grabber

TEST_F(Averaging, WithoutHostFramesItEndsWithItsBoxes)
{
    FreeHostFrames();
    write::camera.numBufFrames = 0;
    write::buffer.AveragingCapacity = 0;
    write::cal.CalType = 2;
    EXPECT_EQ(Average(2, kAverage16 | kTakeNewFrames), 0);
    ASSERT_EQ(op.Boxes().size(), 2U);
    EXPECT_EQ(op.Boxes()[0].text, "Buffer board memory not accessable!");
    EXPECT_EQ(op.Boxes()[0].caption, "Hardware Error");
    EXPECT_EQ(op.Boxes()[1].text, "ICP-PCI frame grabber error");
    EXPECT_EQ(op.Boxes()[1].caption, "Image Buffer Board Error!");
    EXPECT_EQ(CalType, 2);
}

TEST_F(Averaging, ANegativeGrabberHandleIsToldAndCountsAsDone)
{
    recordingBoard.answers["itx_get_modcnf"] = -3;
    write::cal.CalType = 2;
    EXPECT_EQ(Average(2, kAverage16 | kTakeNewFrames), 1);
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].text, "ICP-PCI frame grabber error");
    EXPECT_EQ(op.Boxes()[0].caption, "Buffer Board Error");
    EXPECT_THAT(counts, Each(-5));
    EXPECT_EQ(CalType, 2);
}

TEST_F(Averaging, ACaptureThatFailsIsToldAndTheRunGoesOnWithWhatTheStoreHolds)
{
    Pictures({10});
    EXPECT_EQ(Average(1, kAverage16 | kTakeNewFrames), 1);
    recordingBoard.answers["icp_read_area"] = -1;
    write::cal.CalType = 1;
    EXPECT_EQ(Average(1, kSum32 | kTakeNewFrames), 1);
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].text, "icp_read_area() Error");
    EXPECT_THAT(sums, ElementsAre(10, 11, 110, 111));
    EXPECT_EQ(CalType, 1);
}

// Three host frames: the second batch of five frames fails at its second frame.
TEST_F(Averaging, WhereOnlyNewFramesServeABatchThatFailsEndsTheRun)
{
    for (const std::uint32_t format : {kAverage16, kSum32, kAverageFloat}) {
        recordingBoard.answers.clear();
        recordingBoard.reads = 0;
        recordingBoard.onRead = [](std::int32_t n) {
            if (n == 5) recordingBoard.answers["icp_read_area"] = -1;
        };
        write::cal.CalType = 2;
        const std::size_t boxes = op.Boxes().size();
        EXPECT_EQ(Average(5, format | kTakeNewFrames | kNewFramesOnly), 0) << format;
        ASSERT_EQ(op.Boxes().size(), boxes + 1);
        EXPECT_EQ(op.Boxes().back().text, "icp_read_area() Error");
        EXPECT_EQ(CalType, 2);
    }
    recordingBoard.answers.clear();
    recordingBoard.onRead = nullptr;
    EXPECT_EQ(Average(5, kSum32 | kTakeNewFrames | kNewFramesOnly), 1);
    EXPECT_THAT(sums, ElementsAre(5000, 5005, 5500, 5505));
}

TEST_F(Averaging, WhereOnlyNewFramesServeABlankThatRunsOutEndsTheRun)
{
    recordingBoard.answers["icp_wait_vb"] = kBoardTimeout;
    EXPECT_EQ(Average(2, kSum32 | kTakeNewFrames | kNewFramesOnly), 0);
    EXPECT_EQ(Average(2, kSum32 | kTakeNewFrames), 1) << "others take what stands on the board";
    recordingBoard.answers.clear();
    EXPECT_EQ(Average(2, kSum32 | kTakeNewFrames | kNewFramesOnly), 1);
}

TEST_F(Averaging, TheCapacityIsWorkedOutOnceAndKept)
{
    EXPECT_EQ(Average(1, kAverage16 | kTakeNewFrames), 1);
    EXPECT_EQ(AveragingCapacity, 3U);
    EXPECT_EQ(HostFrameBytes, 24);
    write::buffer.AveragingCapacity = 2;
    Pictures({1, 2, 3, 4, 5});
    EXPECT_EQ(Average(5, kSum32 | kTakeNewFrames | kShowProgress), 1);
    EXPECT_EQ(sums[0], 15);
    EXPECT_EQ(Progress().at(0), " Captured 2 of 5 frames");
}

TEST_F(Averaging, WithAFileOnViewTheCapacityFollowsItsSize)
{
    Freeze();
    write::buffer.AveragingCapacity = 0;
    write::frames.ViewingFile = 1;
    write::file.ImageHeader.ImageWidth = 3;
    write::file.ImageHeader.ImageHeight = 2;
    EXPECT_EQ(Average(1, kAverage16 | kTakeNewFrames), 1);
    EXPECT_EQ(AveragingCapacity, 2U);  // 24 bytes over 12
    write::buffer.AveragingCapacity = 0;
    write::file.ImageHeader.ImageWidth = 0;
    EXPECT_EQ(Average(1, kAverage16 | kTakeNewFrames), 0);
    EXPECT_EQ(op.Boxes().back().caption, "Image Buffer Board Error!");
}

// ---- The store changes between two runs

TEST_F(Averaging, TheFrozenFrameIsReadThroughAStoreMadeAnew)
{
    Freeze();
    EXPECT_EQ(Average(1, kAverage16 | kTakeNewFrames), 1);
    FreeHostFrames();
    write::frames.RawFrame = {70, 80, 90, 100};
    EXPECT_EQ(Average(1, kAverage16 | kTakeNewFrames), 1);
    EXPECT_THAT(counts, ElementsAre(70, 80, 90, 100));
    EXPECT_EQ(AveragingCapacity, 3U);
}

TEST_F(Averaging, TheFrozenFrameOfAnotherSizeTakesAStoreOfThatSize)
{
    Freeze();
    EXPECT_EQ(Average(1, kAverage16 | kTakeNewFrames), 1);
    SetSize(2, 1);
    write::frames.RawFrame = {70, 80};
    EXPECT_EQ(AverageFrames(std::span(counts), {}, 1, 0, 0, 1, 0, kAverage16 | kTakeNewFrames), 1);
    EXPECT_THAT(counts, ElementsAre(70, 80, 9, 10));
    SetSize(0, 1);
    EXPECT_EQ(AverageFrames(std::span(counts), {}, 1, 0, 0, 1, 0, kAverage16 | kTakeNewFrames), 0);
    EXPECT_EQ(op.Boxes().back().caption, "Image Buffer Board Error!");
}

// Worked out with a stored picture of one pixel the capacity is four times the frames that there are.
TEST_F(Averaging, NoFrameIsAddedTwiceWhereTheCapacityIsThatOfASmallStoredPicture)
{
    Freeze();
    write::frames.ViewingFile = 1;
    write::file.ImageHeader.ImageWidth = 1;
    write::file.ImageHeader.ImageHeight = 1;
    EXPECT_EQ(Average(1, kAverage16 | kTakeNewFrames), 1);
    EXPECT_EQ(AveragingCapacity, 12U);
    write::frames.ViewingFile = 0;
    write::frames.LiveVideo = 1;
    Pictures({1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    EXPECT_EQ(Average(10, kSum32 | kTakeNewFrames), 1);
    EXPECT_EQ(sums[0], 55);
    EXPECT_EQ(captured, 10);
}

TEST_F(Averaging, WithMemoryRefusedPartWayTheFramesThatStandServe)
{
    FailAllocation(3);
    AllocateHostFrames();
    ASSERT_EQ(HostFrames.size(), 2U);
    ASSERT_EQ(numBufFrames, 3);
    Pictures({1, 2, 3, 4, 5});
    EXPECT_EQ(Average(5, kSum32 | kTakeNewFrames), 1);
    EXPECT_EQ(sums[0], 15);
}

TEST_F(Averaging, WithTheStoreTurnedOffMeanwhileItEndsWithItsBox)
{
    EXPECT_EQ(Average(1, kAverage16 | kTakeNewFrames), 1);
    write::camera.numBufFrames = 0;
    EXPECT_EQ(Average(4, kAverage16 | kTakeNewFrames), 0);
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes()[0].text, "ICP-PCI frame grabber error");
    EXPECT_EQ(op.Boxes()[0].caption, "Image Buffer Board Error!");
}

TEST_F(Averaging, ARectangleOutsideTheFrameStaysWithinItsBlocks)
{
    constexpr int kLow = std::numeric_limits<int>::min();
    constexpr int kHuge = std::numeric_limits<int>::max();
    write::cal.CalType = 2;
    write::cal.OffsetList = {0, 0, 0, 0};
    write::cal.GainList = {1, 1, 1, 1};
    std::vector<std::int16_t> block(100, -5);
    Pictures({1000});
    // Six columns from -2, four rows from -1: the first of the frame is the ninth value of the flat copy.
    EXPECT_EQ(AverageFrames(std::span(block).first(24), {}, 1, -2, -1, 3, 2, kAverage16 | kTakeNewFrames), 1);
    EXPECT_THAT(std::vector(block.begin() + 8, block.begin() + 12), ElementsAre(1000, 1001, 1100, 1101));
    EXPECT_EQ(std::ranges::count(block, -5), 96);
    EXPECT_EQ(AverageFrames(std::span(block).first(1), {}, 1, 500, 500, 500, 500, kAverage16 | kTakeNewFrames), 1);
    EXPECT_EQ(AverageFrames(std::span(block), {}, 1, kLow, kLow, kHuge, kHuge, kAverage16 | kTakeNewFrames), 0);
    EXPECT_EQ(op.Boxes().back().text, "Unable to allocate or lock memory!");
    EXPECT_EQ(std::ranges::count(block, -5), 96);
}

TEST_F(Averaging, ARangeOfStoredFramesBeyondAnyStoreEnds)
{
    Store({{1, 2, 3, 4}});
    write::buffer.BufferFirstFrame = std::numeric_limits<int>::min();
    write::buffer.BufferLastFrame = std::numeric_limits<int>::max();
    EXPECT_EQ(Average(1, kAverage16 | kUseStoredFrames), 1);
    EXPECT_THAT(counts, Each(-5)) << "no frame has such a number";
}

// --- Stopped by the operator ---

// Escape while the third frame is read: no fourth one is asked for, and what was calibrated is calibrated again.
TEST_F(Averaging, EscapeEndsItAsAFailureAndTheCalibrationStays)
{
    write::cal.CalType = 2;
    recordingBoard.onRead = [this](std::int32_t) {
        if (++captured != 3) return;
        QApplication::postEvent(
            qApp, std::make_unique<QKeyEvent>(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier).release());
    };
    EXPECT_EQ(Average(30, kSum32 | kTakeNewFrames), 0);
    EXPECT_TRUE(GatherWasStopped());
    EXPECT_EQ(captured, 3);
    EXPECT_EQ(CalType, 2);
    EXPECT_EQ(StatusField, "");
    EXPECT_THAT(op.Boxes(), IsEmpty());
    recordingBoard.onRead = nullptr;
    EXPECT_EQ(Average(2, kSum32 | kTakeNewFrames), 1) << "the next one runs";
    EXPECT_FALSE(GatherWasStopped());
}

}  // namespace
}  // namespace kelvo
