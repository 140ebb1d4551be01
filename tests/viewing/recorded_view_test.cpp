// A recorded sequence on view while it is still being recorded.
#include "viewing/recorded_view.h"

#include "imagefile/recorded_sequence.h"
#include "imagefile/recovery.h"
#include "imagefile/sequence_file.h"
#include "platform/clock.h"
#include "platform/memory.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state.h"
#include "state/windows_write.h"
#include "support/picture_fixture.h"
#include "support/stored_files.h"
#include "ui/status.h"
#include "viewing/play_bar.h"
#include "viewing/playback.h"
#include "viewing/recorded_dialog.h"
#include "viewing/viewing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::int64_t kFrameMs = 10;

// 3 x 2 pixels; frame number n holds 100 n and on, and was taken at n times 10 ms.
class RecordedView : public PictureTest {
  protected:
    RecordedView()
    {
        write::display.DisplayHigh = 16383;
        write::camera.ActiveConfig.Xzoom = write::camera.ActiveConfig.Yzoom = 1;
        ImageHeaderRecord header = PlainHeader(3, 2);
        header.ImageHeaderDataOffset = 80;
        header.FrameRate = 50;
        writer = SequenceWriter::Create(path, header, {.columns = 3, .rows = 2, .pixelBytes = 12, .texts = {}});
    }

    void Record(std::int64_t first, std::int64_t last)
    {
        for (std::int64_t number = first; number <= last; ++number) {
            std::vector<std::int16_t> pixels;
            for (int i = 0; i < 6; ++i) pixels.push_back(static_cast<std::int16_t>(100 * number + i));
            const FrameRecord record = {
                .number = number, .monotonicNs = number * kFrameMs * 1'000'000, .utcNs = number * kFrameMs * 1'000'000};
            ASSERT_TRUE(writer->Append(record, pixels));
        }
    }
    void End()
    {
        ASSERT_TRUE(writer->Close(ClosingRecord(writer->Frames(), EndOfRecording::kStopped)));
        writer.reset();
    }
    // Killed: the files stay as they are, nobody holds them.
    void Kill() { writer.reset(); }

    std::int16_t FirstPixel() const { return ImageBufferPixels(ImageHeader.ImageHeaderDataOffset)[0]; }

    std::string path = directory / "run.seq";
    std::optional<SequenceWriter> writer;
};

TEST_F(RecordedView, AFileThatIsBeingRecordedIsViewedAsFarAsItCame)
{
    Record(1, 3);
    ASSERT_EQ(OpenStoredFile(path), 1);
    EXPECT_THAT(op->Boxes(), IsEmpty()) << "nothing is offered";
    EXPECT_EQ(FramesToPlay(), 3U);
    EXPECT_EQ(FirstPixel(), 100);
    EXPECT_THAT(StatusText, HasSubstr("being recorded, no gaps"));
    EXPECT_EQ(EndOf(*RecordedFileOnView()), "It is being recorded.");
    Record(4, 4);
    End();
}

TEST_F(RecordedView, ItGrowsAsTheViewerLooksAgain)
{
    Record(1, 2);
    OpenStoredFile(path);
    ASSERT_EQ(LoadNext(), 1);
    Record(3, 4);
    ASSERT_EQ(LoadNext(), 1) << "the last frame that was known isn't the last any more";
    EXPECT_EQ(FirstPixel(), 300);
    EXPECT_EQ(FramesToPlay(), 4U);
    ASSERT_TRUE(RecordOnView(3));
    EXPECT_EQ(RecordOnView(3)->number, 4);
    EXPECT_FALSE(LookAgain());
    Record(5, 5);
    EXPECT_TRUE(LookAgain());
    GoToFrame(4);
    EXPECT_EQ(FirstPixel(), 500);
}

TEST_F(RecordedView, ItsEndEndsTheGrowth)
{
    Record(1, 2);
    OpenStoredFile(path);
    Record(3, 3);
    End();
    EXPECT_TRUE(LookAgain()) << "one more frame";
    EXPECT_FALSE(RecordedFileOnView()->grows);
    EXPECT_EQ(SummaryOf(*RecordedFileOnView()), "no gaps");
    EXPECT_EQ(EndOf(*RecordedFileOnView()), "It was stopped by the operator.");
    EXPECT_FALSE(LookAgain());
}

TEST_F(RecordedView, AKilledRecordingGrowsNoMore)
{
    Record(1, 2);
    OpenStoredFile(path);
    Kill();
    EXPECT_FALSE(LookAgain());
    EXPECT_EQ(SummaryOf(*RecordedFileOnView()), "not closed, no gaps");
}

TEST_F(RecordedView, OneThatHasJustBegunIsToldAndNotOpened)
{
    EXPECT_EQ(OpenStoredFile(path), 0);
    ASSERT_EQ(op->Boxes().size(), 1U);
    EXPECT_EQ(op->Boxes()[0].text, "run.seq is being recorded and has no frame yet.");
    EXPECT_EQ(ViewingFile, 0);
}

TEST_F(RecordedView, WhatAnotherChangedIsReadAgain)
{
    Record(1, 3);
    Kill();
    op->Answer({Button::kNo});
    OpenStoredFile(path);
    EXPECT_EQ(SummaryOf(*RecordedFileOnView()), "not closed, no gaps");
    std::optional<File> file = File::Open(path, FileMode::kReadWrite);
    ASSERT_TRUE(file->SetLength(512 + 2 * (80 + 12) + 40));
    ASSERT_EQ(RecoverSequence(path, false).outcome, Recovery::kRepaired);
    ASSERT_EQ(LoadNext(), 1);
    EXPECT_EQ(SummaryOf(*RecordedFileOnView()), "no gaps");
    EXPECT_EQ(FramesToPlay(), 2U);
}

TEST_F(RecordedView, WithoutMemoryForTheJournalThePictureIsShown)
{
    Record(1, 3);
    End();
    int complaints = 0;
    for (int n = 1; n <= 20; ++n) {
        FailAllocation(n);
        const int shown = OpenStoredFile(path);
        FailAllocation(0);
        if (!shown || SummaryOf(*RecordedFileOnView()) == "no gaps") continue;
        EXPECT_EQ(SummaryOf(*RecordedFileOnView()), "there is no memory for its journal");
        EXPECT_THAT(StatusText, HasSubstr("   there is no memory for its journal"));
        EXPECT_EQ(FirstPixel(), 100);
        ++complaints;
    }
    EXPECT_GE(complaints, 1);
    ASSERT_EQ(OpenStoredFile(path), 1);
    EXPECT_EQ(SummaryOf(*RecordedFileOnView()), "no gaps");
}

TEST_F(RecordedView, HoldsNothingOfTheFile)
{
    Record(1, 2);
    OpenStoredFile(path);
    LookAgain();
    End();
    EXPECT_FALSE(IsHeldNow(path));
}

TEST_F(RecordedView, ARecordIsBelievedOnceItsFrameStands)
{
    Record(1, 2);
    OpenStoredFile(path);
    // The journal is one ahead of the frames: its record is written first.
    std::optional<File> journal = File::Open(FramesPathOf(path), FileMode::kReadWrite);
    const FrameRecord ahead = Sealed({.number = 77});
    ASSERT_TRUE(journal->Seek(journal->Length()));
    journal->Write(std::as_bytes(std::span(&ahead, 1)));
    LookAgain();
    EXPECT_EQ(RecordedFileOnView()->gaps.size(), 0U) << "what isn't there leaves no gap";
    EXPECT_EQ(SummaryOf(*RecordedFileOnView()), "being recorded, no gaps");
}

TEST_F(RecordedView, PlayingWaitsAtTheEndForMore)
{
    Record(1, 3);
    OpenStoredFile(path);
    StartPlaying();
    const auto tick = [](std::int64_t ms) {
        AdvanceVirtualClock(ms * 1000);
        PlayNextFrame();
    };
    tick(kFrameMs);
    EXPECT_EQ(CurrentFrame, 1U);
    tick(kFrameMs);
    EXPECT_EQ(CurrentFrame, 2U);
    for (int i = 0; i < 5; ++i) tick(100);
    EXPECT_EQ(CurrentFrame, 2U) << "it doesn't go around";
    EXPECT_TRUE(Playing());
    Record(4, 5);
    tick(kFrameMs);
    EXPECT_EQ(CurrentFrame, 3U);
    tick(kFrameMs);
    EXPECT_EQ(CurrentFrame, 4U);
    Record(6, 8);
    tick(10 * kFrameMs);
    EXPECT_EQ(CurrentFrame, 7U) << "late, it goes to the last one and no further";
    tick(100);
    End();
    tick(20);
    EXPECT_EQ(CurrentFrame, 0U) << "it has ended, and is gone through again";
    EXPECT_TRUE(Playing());
}

TEST_F(RecordedView, ManyGapsAreListedToTheirFrames)
{
    RecordedFile recorded;
    recorded.isUsable = true;
    recorded.frames = 3;
    recorded.journal.records = {{.number = 1}, {.number = 5, .flags = kMarkedFrame, .mark = 2}, {.number = 6}};
    recorded.gaps = GapsOf(recorded.journal.records);
    // Their times are those of 1 January 1970, UTC.
    EXPECT_THAT(GapLines(recorded),
                ElementsAre(testing::AllOf(
                    testing::Field(&RecordedLine::frame, 1),
                    testing::Field(&RecordedLine::text,
                                   testing::StartsWith("number 2: 3 missing, 3 unexplained; before frame 1, ")))));
    EXPECT_THAT(MarkLines(recorded), ElementsAre(testing::Field(&RecordedLine::frame, 1)));
}

TEST(BarTicks, StandWhereTheSlidersThumbStandsOverTheirFrames)
{
    RecordedFile recorded;
    recorded.isUsable = true;
    recorded.frames = 11;
    recorded.journal.records.resize(12);
    recorded.journal.records[2].flags = kMarkedFrame;
    recorded.journal.records[5].flags = kTriggerFrame;
    recorded.journal.records[11].flags = kMarkedFrame;  // its frame isn't there yet
    recorded.gaps = {{.beforeFrame = 5}, {.beforeFrame = 10}};
    // 215 wide, the thumb 15: the frames stand from 7 on, 20 apart.
    EXPECT_THAT(TicksOf(recorded, 215), ElementsAre(BarTick{47, false}, BarTick{107, true}, BarTick{207, true}));
    EXPECT_THAT(TicksOf(recorded, 15), IsEmpty());
    recorded.frames = 1;
    EXPECT_THAT(TicksOf(recorded, 215), IsEmpty());
}

TEST(BarTicks, ManyAtOnePlaceAreOne)
{
    RecordedFile recorded;
    recorded.isUsable = true;
    recorded.frames = 1000000;
    for (std::int64_t frame = 1; frame < recorded.frames; ++frame) recorded.gaps.push_back({.beforeFrame = frame});
    EXPECT_EQ(TicksOf(recorded, 115).size(), 101U);
}

TEST_F(RecordedView, EachEndOfARecordingHasItsWords)
{
    RecordedFile recorded;
    recorded.isUsable = true;
    std::vector<std::string> words;
    for (std::uint32_t end = 0; end <= 7; ++end) {
        recorded.journal.closing = ClosingRecord(0, static_cast<EndOfRecording>(end));
        words.push_back(EndOf(recorded));
    }
    EXPECT_THAT(
        words,
        ElementsAre("It was stopped by the operator.", "It is complete.", "It goes on in the next file.",
                    "It was stopped: the disk was almost full.", "It was stopped: the disk refused to take more.",
                    "It was stopped: its file was deleted.", "It was cut short, and made whole afterwards.",
                    "It was closed for a reason unknown to this version."));
}

}  // namespace
}  // namespace kelvo
