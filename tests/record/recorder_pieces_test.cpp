// What the recorder made, taken apart, put together and corrected afterwards.
#include "batch/apply_command.h"
#include "batch/cut_command.h"
#include "batch/join_command.h"
#include "grabber/board_state_write.h"
#include "grabber/correction.h"
#include "record/recorder_fixture.h"
#include "state/cal_state_write.h"

#include <gmock/gmock.h>

#include <cstring>
#include <filesystem>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

class RecorderPieces : public RecorderTest {
  protected:
    void RecordTo(std::int64_t lastNumber, const RecorderSettings& settings)
    {
        Start(settings);
        GoToFrame(lastNumber);
        StopRecorder();
    }
    void ExpectSame(const std::string& one, const std::string& other) const
    {
        EXPECT_TRUE(LongFile(Out(one)) == LongFile(Out(other))) << one << ' ' << other;
        EXPECT_FALSE(LongFile(Out(one)).empty());
        EXPECT_EQ(ReadFramesFile(Out(one + ".frames")).fault, FramesFault::kNone);
        EXPECT_TRUE(LongFile(Out(one + ".frames")) == LongFile(Out(other + ".frames"))) << one << ' ' << other;
    }
    void Join(std::vector<std::string> names) const
    {
        for (std::string& name : names) name = Out(name);
        ASSERT_EQ(JoinCommand(names), 0);
    }
};

TEST_F(RecorderPieces, CutEvery64FramesAndJoinedAreTheRun)
{
    SkipSimFrames(70, 75);
    RecordTo(146, Settings());
    for (const char* const range : {"0:64", "64:128", "128:"}) {
        const std::vector<std::string> arguments = {"--frames", range, Out("event001.seq"), Out(range)};
        ASSERT_EQ(CutCommand(arguments), 0);
    }
    Join({"0:64", "64:128", "128:", "joined.seq"});
    ExpectSame("joined.seq", "event001.seq");
}

TEST_F(RecorderPieces, AFileEach64FramesJoinedHasTheFramesOfOneRun)
{
    SkipSimFrames(66, 69);
    RecorderSettings settings = Settings();
    settings.splitGigabytes = static_cast<double>(512 + 64 * kFrameBytes) / 1e9;
    RecordTo(140, settings);
    EXPECT_THAT(CurrentRecorderStatus().files, SizeIs(3));
    Join({"event001.seq", "event001-2.seq", "event001-3.seq", "joined.seq"});
    const TakenApart joined = TakeApart(Out("joined.seq"), kPixels);
    const FramesFile journal = ReadFramesFile(Out("joined.seq.frames"));
    EXPECT_EQ(+joined.header.FrameCount, 136U);
    ASSERT_THAT(joined.frames, SizeIs(136));
    ASSERT_THAT(journal.records, SizeIs(136));
    for (std::size_t i = 0; i < 136; ++i) {
        const auto number = static_cast<std::int64_t>(i) + (i < 65 ? 1 : 5);
        EXPECT_EQ(+joined.frameHeaders[i].FrameNum, static_cast<std::int64_t>(i));
        EXPECT_EQ(+joined.frameHeaders[i].AllFramesNum, number);
        EXPECT_EQ(journal.records[i].number, number);
        EXPECT_EQ(journal.records[i].flags, 0U);
        if (i % 31 != 0) continue;
        EXPECT_EQ(joined.frames[i], Expected(number - 1, grabUs + number * 10'000)) << number;
    }
    EXPECT_THAT(GapsOf(journal.records), ElementsAre(FrameGap{65, 66, 4, 0, 0, 0}));
}

// A set of two sources with a bad detector and a mirrored table, in force and on the disk.
class RecorderApplied : public RecorderPieces {
  protected:
    void SetUp() override
    {
        RecorderPieces::SetUp();
        write::board.DataOffset = 300;
        write::cal.CalType = 2;
        write::cal.OffsetList.resize(kPixels);
        write::cal.GainList.resize(kPixels);
        for (std::size_t i = 0; i < kPixels; ++i) {
            write::cal.OffsetList[i] = static_cast<std::int16_t>(280 + i % 50);
            write::cal.GainList[i] = 0.75F + 0.01F * static_cast<float>(i % 40);
        }
        write::cal.DecomList[1000] = write::cal.DecomList[1001];
        CalibrationListsChanged();
        PutFile(directory / "warm.cal",
                "[Calibration]\nCalType=2\nDecomFile=warm.dcm\nGainFile=warm.gai\nOffsetFile=warm.off\n"
                "IntensityCold=3000\nIntensityHot=9000\nTemperatureCold=20.0\nTemperatureHot=25.0\n");
        PutList("warm.dcm", DecomList);
        PutList("warm.off", OffsetList);
        PutList("warm.gai", GainList);
    }
    template <typename Entry>
    void PutList(const std::string& name, const std::vector<Entry>& list) const
    {
        PutFile(directory / name, {reinterpret_cast<const char*>(list.data()), list.size() * sizeof(Entry)});
    }
    void Apply(const std::string& in, const std::string& outName, std::int64_t first, std::int64_t end) const
    {
        const ApplyRequest request = {directory / "warm.cal", Out(in), Out(outName), first, end};
        EXPECT_EQ(ApplySet(request, {}), std::nullopt);
    }
};

TEST_F(RecorderApplied, FramesAreThoseOfTheLivePicture)
{
    RecorderSettings settings = Settings();
    settings.pixels = RecordPixels::kBoth;
    RecordTo(6, settings);
    Apply("event001.seq", "even.seq", 0, -1);
    const TakenApart applied = TakeApart(Out("even.seq"), kPixels);
    const TakenApart recorded = TakeApart(Out("event001_cal.seq"), kPixels);
    ASSERT_THAT(applied.frames, SizeIs(6));
    ASSERT_THAT(recorded.frames, SizeIs(6));
    for (std::size_t i = 0; i < 6; ++i) {
        const auto number = static_cast<std::int64_t>(i) + 1;
        const std::vector<std::int16_t> raw = Expected(number - 1, grabUs + number * 10'000);
        std::vector<std::int16_t> live(kPixels);
        CorrectLiveFrame(raw, live, 300);
        EXPECT_EQ(applied.frames[i], live) << number;
        EXPECT_EQ(recorded.frames[i], live) << number;
        // The formula for one pixel: the bad one's neighbour answers for it.
        const std::size_t d = DecomList[1001];
        const double counts = 300 + raw[d] - OffsetList[d];
        EXPECT_EQ(live[1000], static_cast<std::int16_t>(counts / static_cast<double>(GainList[d])));
    }
    EXPECT_EQ(ReadFramesFile(Out("even.seq.frames")).records, ReadFramesFile(Out("event001_cal.seq.frames")).records)
        << "checksums, times and numbers";
}

TEST_F(RecorderApplied, ShardsJoinedAreOneRunByteForByte)
{
    SkipSimFrames(20, 21);
    RecordTo(42, Settings());
    Apply("event001.seq", "whole.seq", 0, -1);
    Apply("event001.seq", "0.seq", 0, 16);
    Apply("event001.seq", "1.seq", 16, 19);
    Apply("event001.seq", "2.seq", 19, 39);
    Apply("event001.seq", "3.seq", 39, -1);
    Join({"0.seq", "1.seq", "2.seq", "3.seq", "joined.seq"});
    ExpectSame("joined.seq", "whole.seq");
}

}  // namespace
}  // namespace kelvo
