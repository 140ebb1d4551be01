// "kelvo apply": recordings corrected without a window. Frames are 2 rows of 4.
#include "batch/apply_command.h"

#include "grabber/correction.h"
#include "imagefile/crc32c.h"
#include "imagefile/frames_file.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "support/stored_files.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

using Frame = std::vector<std::int16_t>;

const Frame kFrames[] = {{1000, 1100, 1200, 1300, 1400, 1500, 1600, 1700},
                         {2000, 2001, 2003, 2007, 2011, 2013, 2017, 2019},
                         {90, 91, 92, 93, 94, 95, 96, 97},
                         {-1, 16383, 0, 8200, 8201, 8202, 32767, -32768}};
const std::vector<std::uint32_t> kTable = {7, 6, 5, 5, 3, 2, 1, 0};  // detector 4 is replaced by 5
const std::vector<std::int16_t> kOffsets = {100, 101, 102, 103, 104, 105, 106, 107};
const std::vector<float> kGains = {1.0F, 1.25F, 1.5F, 1.75F, 2.0F, 2.25F, 2.5F, 0.0F};

template <typename Entry>
std::string BytesOf(const std::vector<Entry>& list)
{
    return {reinterpret_cast<const char*>(list.data()), list.size() * sizeof(Entry)};
}

class Applying : public testing::Test {
  protected:
    Applying()
    {
        PutFile(directory / "warm.cal",
                "[Calibration]\nCalType=2\nDecomFile=warm.dcm\nGainFile=warm.gai\nOffsetFile=warm.off\n"
                "IntensityCold=3000\nIntensityHot=9000\nTemperatureCold=20.0\nTemperatureHot=25.0\n");
        PutFile(directory / "warm.dcm", BytesOf(kTable));
        PutFile(directory / "warm.off", BytesOf(kOffsets));
        PutFile(directory / "warm.gai", BytesOf(kGains));
        request.set = directory / "warm.cal";
        request.in = directory / "raw.seq";
        request.out = directory / "even.seq";
        PutRecording();
    }

    // With FrameHeaders and a journal.
    void PutRecording(std::size_t frames = 4)
    {
        ImageHeaderRecord header = PlainHeader(4, 2);
        header.ImageHeaderDataOffset = 80;
        std::string bytes = HeaderBytes(header);
        std::vector<FrameRecord> records;
        for (std::size_t f = 0; f < frames; ++f) {
            const Frame& frame = kFrames[f % 4];
            FrameHeaderRecord before;
            before.FrameNum = static_cast<std::int32_t>(records.size());
            before.AllFramesNum = 500 + before.FrameNum;
            bytes += std::string(reinterpret_cast<const char*>(&before), sizeof before) + SampleBytes(frame);
            FrameRecord record;
            record.number = before.AllFramesNum;
            record.utcNs = 1'000'000'000LL * before.AllFramesNum;
            record.lostByRing = before.FrameNum == 2 ? 3 : 0;
            record.pixelCrc = Crc32c(std::as_bytes(std::span(frame)));
            records.push_back(Sealed(record));
        }
        PutFile(request.in, bytes);
        FramesHead head;
        head.columns = 4;
        head.rows = 2;
        head.pixelBytes = 16;
        head.texts = {{std::string(frames_key::kPixels), "raw"}, {std::string(frames_key::kComment), "a walk"}};
        const auto journal =
            FramesFileBytes(head, records, ClosingRecord(static_cast<std::int64_t>(frames), EndOfRecording::kStopped));
        PutFile(FramesPathOf(request.in), {reinterpret_cast<const char*>(journal.data()), journal.size()});
    }

    // What the live picture shows of it.
    static Frame Live(const Frame& raw)
    {
        Frame frame(raw.size());
        CorrectByDefinition({2, 0, kTable, kOffsets, kGains}, raw, frame);
        return frame;
    }
    static std::string FrameBytes(const std::string& path, std::size_t f)
    {
        return FileContents(path).substr(512 + f * 96, 96);
    }
    static std::string Pixels(const std::string& path, std::size_t f) { return FrameBytes(path, f).substr(80); }

    void ExpectFailure(const std::string& part)
    {
        const std::optional<std::string> failure = ApplySet(request, {});
        ASSERT_TRUE(failure);
        EXPECT_THAT(*failure, HasSubstr(part));
        EXPECT_FALSE(FileExists(request.out));
        EXPECT_FALSE(FileExists(FramesPathOf(request.out)));
    }

    TempDirectory directory;
    ApplyRequest request;
};

TEST_F(Applying, GivesImageOrderAsTheLivePictureShows)
{
    EXPECT_EQ(ApplySet(request, {}), std::nullopt);
    for (std::size_t f = 0; f < 4; ++f) EXPECT_EQ(Pixels(request.out, f), SampleBytes(Live(kFrames[f]))) << f;
    // Detector 6 in the second place: (1600 - 106) / 2.5 = 597.6; a gain of 0 gives 0.
    EXPECT_EQ(Pixels(request.out, 0).substr(0, 4), SampleBytes({0, 597}));
    EXPECT_EQ(FileContents(request.out).size(), 512 + 4 * 96);
}

// Several blocks of 1 MB, which two threads share.
TEST_F(Applying, PutsALongRecordingTogetherInItsOrder)
{
    constexpr std::size_t kLong = 60'000;
    PutRecording(kLong);
    std::int64_t toldLast = 0;
    EXPECT_EQ(ApplySet(request,
                       [&](std::int64_t done, std::int64_t all) {
                           EXPECT_GT(done, toldLast);
                           EXPECT_EQ(all, kLong);
                           toldLast = done;
                       }),
              std::nullopt);
    EXPECT_EQ(toldLast, kLong);
    const std::string result = FileContents(request.out);
    ASSERT_EQ(result.size(), 512 + kLong * 96);
    const FramesFile journal = ReadFramesFile(FramesPathOf(request.out));
    ASSERT_EQ(journal.records.size(), kLong);
    std::size_t wrong = 0;
    for (std::size_t f = 0; f < kLong; ++f) {
        const Frame live = Live(kFrames[f % 4]);
        FrameHeaderRecord before;
        std::memcpy(&before, result.data() + 512 + f * 96, sizeof before);
        const bool right = result.compare(512 + f * 96 + 80, 16, SampleBytes(live)) == 0 &&
                           std::cmp_equal(before.FrameNum, f) &&
                           journal.records[f].number == 500 + static_cast<std::int64_t>(f) &&
                           journal.records[f].pixelCrc == Crc32cByTable(std::as_bytes(std::span(live)));
        wrong += right ? 0 : 1;
    }
    EXPECT_EQ(wrong, 0U);
}

TEST_F(Applying, ALongRecordingWithABadFrameLeavesNothing)
{
    PutRecording(60'000);
    std::string bytes = FileContents(request.in);
    bytes[512 + 45'000 * 96 + 90] ^= 1;
    PutFile(request.in, bytes);
    ExpectFailure("frame 45000 doesn't fit its checksum");
}

TEST_F(Applying, MarksTheHeaderAndKeepsTheFrameHeaders)
{
    EXPECT_EQ(ApplySet(request, {}), std::nullopt);
    ImageHeaderRecord header;
    std::memcpy(&header, FileContents(request.out).data(), sizeof header);
    EXPECT_EQ(header.IntensityCold, 3000);
    EXPECT_EQ(+header.TemperatureHot, 25.0F);
    EXPECT_EQ(+header.FrameCount, 4U);
    for (std::size_t f = 0; f < 4; ++f) {
        EXPECT_EQ(FrameBytes(request.out, f).substr(0, 80), FrameBytes(request.in, f).substr(0, 80)) << f;
    }
}

TEST_F(Applying, CarriesTheJournalAlongWithNewChecksums)
{
    EXPECT_EQ(ApplySet(request, {}), std::nullopt);
    const FramesFile before = ReadFramesFile(FramesPathOf(request.in));
    const FramesFile after = ReadFramesFile(FramesPathOf(request.out));
    ASSERT_EQ(after.fault, FramesFault::kNone);
    ASSERT_EQ(after.records.size(), 4U);
    ASSERT_TRUE(after.closing);
    EXPECT_EQ(after.closing->number, 4);
    EXPECT_EQ(after.head.Text(frames_key::kPixels), "corrected");
    EXPECT_EQ(after.head.Text(frames_key::kCalibration), request.set);
    EXPECT_EQ(after.head.Text(frames_key::kChecksum).size(), 64U);
    EXPECT_EQ(after.head.Text(frames_key::kComment), "a walk");
    for (std::size_t f = 0; f < 4; ++f) {
        FrameRecord expected = before.records[f];
        const Frame live = Live(kFrames[f]);
        expected.pixelCrc = Crc32c(std::as_bytes(std::span(live)));
        EXPECT_EQ(after.records[f], Sealed(expected)) << f;
    }
}

TEST_F(Applying, TakesARangeWhoseFramesCountFromZero)
{
    request.first = 1;
    request.end = 3;
    EXPECT_EQ(ApplySet(request, {}), std::nullopt);
    EXPECT_EQ(FileContents(request.out).size(), 512 + 2 * 96);
    EXPECT_EQ(Pixels(request.out, 0), SampleBytes(Live(kFrames[1])));
    FrameHeaderRecord before;
    std::memcpy(&before, FrameBytes(request.out, 1).data(), sizeof before);
    EXPECT_EQ(+before.FrameNum, 1);
    EXPECT_EQ(+before.AllFramesNum, 502);
    const FramesFile journal = ReadFramesFile(FramesPathOf(request.out));
    ASSERT_EQ(journal.records.size(), 2U);
    EXPECT_EQ(journal.records[0].flags, kFirstOfPart);
    EXPECT_EQ(journal.records[1].lostByRing, 3U);
    ASSERT_TRUE(journal.closing);
    EXPECT_EQ(journal.closing->number, 2);
    EXPECT_EQ(journal.closing->mark, static_cast<std::uint32_t>(EndOfRecording::kNextPart));
}

TEST_F(Applying, SubtractsOffsetsAloneWithAOnePointSet)
{
    PutFile(directory / "warm.cal", "[Calibration]\nCalType=1\nDecomFile=warm.dcm\nOffsetFile=warm.off\n");
    ForgetProfile(directory / "warm.cal");
    EXPECT_EQ(ApplySet(request, {}), std::nullopt);
    EXPECT_EQ(Pixels(request.out, 0), SampleBytes({1593, 1494, 1395, 1395, 1197, 1098, 999, 900}));
}

TEST_F(Applying, WorksWithoutFrameHeadersAndJournal)
{
    WriteImageFile(request.in, PlainHeader(4, 2), {kFrames[0], kFrames[3]});
    DeleteFileNamed(FramesPathOf(request.in));
    EXPECT_EQ(ApplySet(request, {}), std::nullopt);
    EXPECT_EQ(FileContents(request.out).substr(512), SampleBytes(Live(kFrames[0])) + SampleBytes(Live(kFrames[3])));
    EXPECT_FALSE(FileExists(FramesPathOf(request.out)));
}

TEST_F(Applying, TellsHowFarItIs)
{
    std::vector<std::pair<std::int64_t, std::int64_t>> told;
    EXPECT_EQ(ApplySet(request, [&](std::int64_t done, std::int64_t all) { told.emplace_back(done, all); }),
              std::nullopt);
    ASSERT_FALSE(told.empty());
    EXPECT_EQ(told.back(), std::make_pair(std::int64_t{4}, std::int64_t{4}));
}

TEST_F(Applying, RefusesWhatItCannotCorrect)
{
    const std::string recording = FileContents(request.in);
    request.in = directory / "gone.seq";
    ExpectFailure("can't be opened");
    request.in = directory / "raw.seq";
    request.first = 4;
    ExpectFailure("has 4 frames: there are none of that range");
    request.first = 0;
    request.end = 5;
    ExpectFailure("has 4 frames");
    request.end = -1;
    PutFile(request.in, "short");
    ExpectFailure("isn't an image file");
    ImageHeaderRecord header = PlainHeader(4, 2);
    header.SampleBytes = 4;
    PutFile(request.in, HeaderBytes(header) + std::string(64, 'x'));
    ExpectFailure("floats");
    header = PlainHeader(4, 2);
    header.ByteSwap = 0;
    PutFile(request.in, HeaderBytes(header) + std::string(64, 'x'));
    ExpectFailure("byte-swapped");
    PutFile(request.in, recording);
    request.set = directory / "gone.cal";
    ExpectFailure("gone.cal can't be opened");
}

TEST_F(Applying, RefusesASetThatDoesNotFit)
{
    PutFile(directory / "warm.gai", BytesOf(std::vector<float>{1, 1}));
    ExpectFailure("warm.gai doesn't fit the frames");
    DeleteFileNamed(directory / "warm.off");
    PutFile(directory / "warm.gai", BytesOf(kGains));
    ExpectFailure("warm.off can't be read");
    PutFile(directory / "warm.off", BytesOf(kOffsets));
    PutFile(directory / "warm.dcm", BytesOf(std::vector<std::uint32_t>{0, 1, 2, 3, 4, 5, 6, 8}));
    ExpectFailure("warm.dcm doesn't fit the frames");
}

TEST_F(Applying, RefusesAResultThatStands)
{
    PutFile(request.out, "mine");
    const std::optional<std::string> failure = ApplySet(request, {});
    ASSERT_TRUE(failure);
    EXPECT_THAT(*failure, HasSubstr("stands already"));
    EXPECT_EQ(FileContents(request.out), "mine");
}

TEST_F(Applying, RefusesAFrameThatIsNotWhatWasRecorded)
{
    std::string bytes = FileContents(request.in);
    bytes[512 + 96 + 85] ^= 1;
    PutFile(request.in, bytes);
    ExpectFailure("frame 1 doesn't fit its checksum");
}

TEST_F(Applying, RefusesARecordingThatWasNotClosed)
{
    const std::string journal = FileContents(FramesPathOf(request.in));
    PutFile(FramesPathOf(request.in), journal.substr(0, journal.size() - 64));
    ExpectFailure("recover it first");
}

TEST_F(Applying, LeavesNothingWhereTheDiskRefuses)
{
    for (int n = 1; n < 12; ++n) {
        SetFaultOnce("disk", n);
        const std::optional<std::string> failure = ApplySet(request, {});
        ClearFaults();
        if (!failure) {
            EXPECT_EQ(Pixels(request.out, 3), SampleBytes(Live(kFrames[3])));
            EXPECT_GT(n, 4);
            return;
        }
        EXPECT_FALSE(FileExists(request.out)) << n;
        EXPECT_FALSE(FileExists(FramesPathOf(request.out))) << n;
    }
    FAIL() << "never done";
}

TEST_F(Applying, TheCommandTakesItsArgumentsInAnyOrder)
{
    const std::vector<std::string> arguments = {request.in, "--frames", "1:3", "--set=" + request.set, request.out};
    EXPECT_EQ(ApplyCommand(arguments), 0);
    EXPECT_EQ(FileContents(request.out).size(), 512 + 2 * 96);
}

TEST_F(Applying, TheCommandRefusesWhatItDoesNotUnderstand)
{
    const std::string set = "--set=" + request.set;
    const std::vector<std::vector<std::string>> wrong = {{},
                                                         {request.in, request.out},
                                                         {set, request.in},
                                                         {set, "--frames", "3", request.in, request.out},
                                                         {set, "--frames", "a:b", request.in, request.out},
                                                         {set, "--frames"},
                                                         {set, "--quick=1", request.in, request.out},
                                                         {set, request.in, request.in, request.out}};
    for (const std::vector<std::string>& arguments : wrong) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(ApplyCommand(arguments), 2);
        EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("apply"));
    }
    EXPECT_FALSE(FileExists(request.out));
}

}  // namespace
}  // namespace kelvo
