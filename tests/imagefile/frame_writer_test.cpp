#include "imagefile/frame_writer.h"

#include "platform/files.h"
#include "support/full_disk.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr uid_t kNobody = 65534;

using Counts = std::vector<std::int16_t>;

// Of frames of 2 x 2 counts: 8 bytes each.
ImageHeaderRecord Header(std::uint32_t frames = 1, std::int16_t frameHeader = 0)
{
    ImageHeaderRecord header;
    header.ByteSwap = 0xFFFF;
    header.ImageWidth = 2;
    header.ImageHeight = 2;
    header.SampleBytes = 2;
    header.HeaderVersion = 8;
    header.FrameCount = frames;
    header.ImageHeaderDataOffset = frameHeader;
    return header;
}

std::string Bytes(const ImageHeaderRecord& header)
{
    return {reinterpret_cast<const char*>(&header), sizeof header};
}

// Frame f has the counts 256 f + 1 to 256 f + 4.
Counts Frame(int f)
{
    const auto first = static_cast<std::int16_t>(256 * f + 1);
    return {first, static_cast<std::int16_t>(first + 1), static_cast<std::int16_t>(first + 2),
            static_cast<std::int16_t>(first + 3)};
}
std::string Samples(char f)
{
    return {1, f, 2, f, 3, f, 4, f};
}
std::string SwappedSamples(char f)
{
    return {f, 1, f, 2, f, 3, f, 4};
}

std::string WordsSwapped(std::string bytes)
{
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) std::swap(bytes[i], bytes[i + 1]);
    return bytes;
}

class WritingFrames : public testing::Test {
  protected:
    std::string At(std::string_view name) const { return directory / name; }
    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(directory.Path())) {
            names.push_back(entry.path().filename());
        }
        std::ranges::sort(names);
        return names;
    }
    // A frame put into the file at path, opened for it alone.
    FrameWritten Append(ImageHeaderRecord header, Counts counts)
    {
        auto file = FrameWriter::OpenInPlace(path);
        if (!file) return {FrameFault::kNoHeader, 0};
        const FrameWritten written = file->AppendFrame(header, counts);
        EXPECT_TRUE(file->Keep());
        return written;
    }
    // In a process without the rights that the superuser has.
    static bool AsNobody(const std::function<bool()>& work)
    {
        const pid_t child = fork();
        if (child == 0) {
            const bool ordinary = geteuid() != 0 || setuid(kNobody) == 0;
            _exit(ordinary && work() ? 0 : 1);
        }
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

    TempDirectory directory;
    std::string path = At("a.img");
};

// --- A file of its own ----------------------------------------------------------------------------------------------

TEST_F(WritingFrames, AnImageIsItsHeaderAndItsCounts)
{
    auto file = FrameWriter::Create(path);
    ASSERT_TRUE(file);
    EXPECT_TRUE(file->BeganEmpty());
    Counts counts = Frame(5);
    const FrameWritten written = file->WriteImage(Header(), counts);
    EXPECT_EQ(written.fault, FrameFault::kNone);
    EXPECT_EQ(written.bytes, 8U);
    EXPECT_FALSE(FileExists(path)) << "it has no name yet";
    EXPECT_TRUE(file->Keep());
    EXPECT_EQ(FileContents(path), Bytes(Header()) + Samples(5));
    EXPECT_THAT(Names(), ElementsAre("a.img"));
}

TEST_F(WritingFrames, AnImageStandsBehindTheHeaderWhateverThatCounts)
{
    auto file = FrameWriter::Create(path);
    Counts counts = Frame(5);
    EXPECT_EQ(file->WriteImage(Header(3, 80), counts).fault, FrameFault::kNone);
    EXPECT_TRUE(file->Keep());
    EXPECT_EQ(FileContents(path), Bytes(Header(3, 80)) + Samples(5));
}

TEST_F(WritingFrames, AFileThatIsNotKeptLeavesWhatStood)
{
    PutFile(path, "former");
    for (const bool drop : {true, false}) {
        auto file = FrameWriter::Create(path);
        Counts counts = Frame(1);
        EXPECT_EQ(file->WriteImage(Header(), counts).fault, FrameFault::kNone);
        if (drop) file->Drop();
    }
    EXPECT_EQ(FileContents(path), "former");
    EXPECT_THAT(Names(), ElementsAre("a.img"));
}

TEST_F(WritingFrames, AKeptFileReplacesTheOneThatStood)
{
    PutFile(path, std::string(4000, 'f'));
    auto file = FrameWriter::Create(path);
    Counts counts = Frame(1);
    ImageHeaderRecord header = Header();
    EXPECT_EQ(file->WriteLastFrame(header, counts).fault, FrameFault::kNone);
    EXPECT_TRUE(file->Keep());
    EXPECT_EQ(FileContents(path), Bytes(Header()) + Samples(1));
}

// The first two frames were never there.
TEST_F(WritingFrames, AFrameLiesBehindThoseThatTheHeaderCounts)
{
    auto file = FrameWriter::Create(path);
    Counts counts = Frame(7);
    ImageHeaderRecord header = Header(3);
    EXPECT_EQ(file->WriteLastFrame(header, counts).fault, FrameFault::kNone);
    EXPECT_TRUE(file->Keep());
    EXPECT_EQ(FileContents(path), Bytes(Header(3)) + std::string(16, '\0') + Samples(7));
}

// --- A file in place ------------------------------------------------------------------------------------------------

TEST_F(WritingFrames, AFileThatIsNotThereIsMade)
{
    EXPECT_EQ(Append(Header(), Frame(1)).fault, FrameFault::kNone);
    EXPECT_EQ(FileContents(path), Bytes(Header()) + Samples(1));
}

TEST_F(WritingFrames, FramesLieBackToBackAndTheHeaderCountsThem)
{
    for (int f = 1; f <= 3; ++f) {
        ImageHeaderRecord header = Header();
        {
            auto file = FrameWriter::OpenInPlace(path);
            ASSERT_TRUE(file);
            EXPECT_EQ(file->BeganEmpty(), f == 1);
            if (f > 1) header = file->ReadHeader().value();
        }
        EXPECT_EQ(+header.FrameCount, static_cast<std::uint32_t>(std::max(f - 1, 1)));
        EXPECT_EQ(Append(header, Frame(f)).fault, FrameFault::kNone);
    }
    EXPECT_EQ(FileContents(path), Bytes(Header(3)) + Samples(1) + Samples(2) + Samples(3));
}

TEST_F(WritingFrames, SamplesLieBehindTheirFrameHeaders)
{
    PutFile(path, Bytes(Header(1, 80)) + std::string(80, 'h') + Samples(1));
    auto file = FrameWriter::OpenInPlace(path);
    ImageHeaderRecord header = file->ReadHeader().value();
    Counts counts = Frame(2);
    EXPECT_EQ(file->AppendFrame(header, counts).fault, FrameFault::kNone);
    EXPECT_EQ(+header.FrameCount, 2U);
    EXPECT_TRUE(file->Keep());
    EXPECT_EQ(FileContents(path),
              Bytes(Header(2, 80)) + std::string(80, 'h') + Samples(1) + std::string(80, '\0') + Samples(2));
}

TEST_F(WritingFrames, OfASwappedFileHeaderAndSamplesAreSwapped)
{
    ImageHeaderRecord header = Header();
    header.ByteSwap = 0;
    Counts counts = Frame(5);
    auto file = FrameWriter::Create(path);
    EXPECT_EQ(file->WriteLastFrame(header, counts).fault, FrameFault::kNone);
    EXPECT_TRUE(file->Keep());
    EXPECT_EQ(FileContents(path), WordsSwapped(Bytes(header)) + SwappedSamples(5));
    EXPECT_EQ(+header.ImageWidth, 2) << "native in memory";

    file = FrameWriter::OpenInPlace(path);
    ImageHeaderRecord read = file->ReadHeader().value();
    EXPECT_EQ(Bytes(read), Bytes(header));
    counts = Frame(6);
    EXPECT_EQ(file->AppendFrame(read, counts).fault, FrameFault::kNone);
    EXPECT_TRUE(file->Keep());
    header.FrameCount = 2;
    EXPECT_EQ(FileContents(path), WordsSwapped(Bytes(header)) + SwappedSamples(5) + SwappedSamples(6));
}

// The length tells how many frames there are, whatever the header counts; a part of one is no frame.
TEST_F(WritingFrames, AFrameStandsBehindTheWholeOnes)
{
    for (const std::uint32_t counted : {0U, 1U, 3U, 9U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        PutFile(path, Bytes(Header(counted)) + Samples(1) + Samples(2) + Samples(3) + "part");
        auto file = FrameWriter::OpenInPlace(path);
        ImageHeaderRecord header = file->ReadHeader().value();
        Counts counts = Frame(4);
        EXPECT_EQ(file->AppendFrame(header, counts).fault, FrameFault::kNone);
        EXPECT_EQ(+header.FrameCount, 4U);
        EXPECT_TRUE(file->Keep());
        EXPECT_EQ(FileContents(path), Bytes(Header(4)) + Samples(1) + Samples(2) + Samples(3) + Samples(4)) << counted;
    }
}

TEST_F(WritingFrames, AFrameShorterThanARecordIsFilledUpWithZeros)
{
    ImageHeaderRecord larger = Header();
    larger.ImageHeight = 3;
    PutFile(path, Bytes(larger) + std::string(12, 'x'));
    for (std::uint32_t frames = 2; frames <= 3; ++frames) {
        auto file = FrameWriter::OpenInPlace(path);
        ImageHeaderRecord header = file->ReadHeader().value();
        Counts counts = Frame(static_cast<int>(frames));
        EXPECT_EQ(file->AppendFrame(header, counts).fault, FrameFault::kNone);
        EXPECT_TRUE(file->Keep());
    }
    larger.FrameCount = 3;
    const std::string zeros(4, '\0');
    EXPECT_EQ(FileContents(path), Bytes(larger) + std::string(12, 'x') + Samples(2) + zeros + Samples(3) + zeros);
}

TEST_F(WritingFrames, SidesAsLargeAsTheFieldsHoldMakeFrames)
{
    ImageHeaderRecord wide = Header();
    wide.ImageWidth = 32767;
    wide.ImageHeight = 1;
    PutFile(path, Bytes(wide) + std::string(std::size_t{2} * 32767, 'x'));
    auto file = FrameWriter::OpenInPlace(path);
    ImageHeaderRecord header = file->ReadHeader().value();
    Counts counts(32767, 0x0101);
    EXPECT_EQ(file->AppendFrame(header, counts).fault, FrameFault::kNone);
    EXPECT_EQ(+header.FrameCount, 2U);
}

TEST_F(WritingFrames, AHeaderThatMakesNoFramesIsRefusedAndTheFileStays)
{
    std::vector<ImageHeaderRecord> headers(6, Header());
    headers[0].ImageWidth = 0;
    headers[1].ImageHeight = -2;
    headers[2].SampleBytes = 0;
    headers[3].SampleBytes = 5;
    headers[4].ImageHeaderDataOffset = -1;
    headers[5].ByteSwap = 0xFF01;  // the spectrometer's
    std::vector<std::string> files;
    for (const ImageHeaderRecord& header : headers) files.push_back(Bytes(header) + Samples(1) + "part");
    files.push_back(Bytes(Header()).substr(0, 511));
    for (const std::string& contents : files) {
        PutFile(path, contents);
        EXPECT_FALSE(FrameWriter::OpenInPlace(path)->ReadHeader());
        EXPECT_EQ(FileContents(path), contents);
    }
}

TEST_F(WritingFrames, AFrameHasAPlaceUpToTwoGigabytesBehindTheEnd)
{
    PutFile(path, Bytes(Header()) + Samples(1));
    auto file = FrameWriter::OpenInPlace(path);
    // 512 + 8 (n - 1) <= 520 + 2^31 - 1, that is n <= 2^28 + 1
    EXPECT_TRUE(file->HasPlaceFor(Header(1)));
    EXPECT_TRUE(file->HasPlaceFor(Header(0x10000001)));
    EXPECT_FALSE(file->HasPlaceFor(Header(0x10000002)));
    EXPECT_FALSE(file->HasPlaceFor(Header(0))) << "8 bytes before the first";
}

// --- What can fail --------------------------------------------------------------------------------------------------

TEST_F(WritingFrames, WithoutRightsThereIsNoFileAndWhatStoodStays)
{
    std::filesystem::create_directory(At("closed"));
    PutFile(At("closed/a.img"), Bytes(Header()) + Samples(1));
    std::filesystem::permissions(At("closed/a.img"), std::filesystem::perms(0444));
    std::filesystem::permissions(At("closed"), std::filesystem::perms(0555));
    std::filesystem::permissions(directory.Path(), std::filesystem::perms(0755));
    EXPECT_TRUE(AsNobody([&] { return !FrameWriter::Create(At("closed/new.img")); }));
    EXPECT_TRUE(AsNobody([&] { return !FrameWriter::Create(At("closed/a.img")); }));
    EXPECT_TRUE(AsNobody([&] { return !FrameWriter::OpenInPlace(At("closed/new.img")); }));
    EXPECT_TRUE(AsNobody([&] { return !FrameWriter::OpenInPlace(At("closed/a.img")); }));
    EXPECT_EQ(FileContents(At("closed/a.img")), Bytes(Header()) + Samples(1));
    std::filesystem::permissions(At("closed"), std::filesystem::perms(0777));
    EXPECT_TRUE(AsNobody([&] { return FrameWriter::Create(At("closed/new.img")).has_value(); })) << "rights decide";
}

TEST_F(WritingFrames, ADirectoryIsNoFile)
{
    EXPECT_FALSE(FrameWriter::OpenInPlace(directory.Path()));
    EXPECT_FALSE(FrameWriter::Create(At("none/a.img")));
    EXPECT_FALSE(FrameWriter::OpenInPlace(At("none/a.img")));
}

TEST_F(WritingFrames, AHeaderThatTheDiskDoesntTakeIsReturned)
{
    const FullDisk disk(511);
    Counts counts = Frame(1);
    auto image = FrameWriter::Create(path);
    const FrameWritten written = image->WriteImage(Header(), counts);
    EXPECT_EQ(written.fault, FrameFault::kNoHeader);
    EXPECT_EQ(written.bytes, 0U);
    image.reset();
    EXPECT_THAT(Names(), IsEmpty());
    EXPECT_EQ(Append(Header(), Frame(1)).fault, FrameFault::kNoHeader);
    EXPECT_EQ(FileContents(path), "") << "a file in place stays, with nothing that keeps the first frame out";
}

TEST_F(WritingFrames, ACutFirstFrameIsReturnedWithItsBytes)
{
    const FullDisk disk(512 + 5);
    ImageHeaderRecord header = Header();
    Counts counts = Frame(1);
    {
        auto file = FrameWriter::Create(path);
        const FrameWritten written = file->WriteLastFrame(header, counts);
        EXPECT_EQ(written.fault, FrameFault::kCut);
        EXPECT_EQ(written.bytes, 5U);
        EXPECT_EQ(+header.FrameCount, 1U);
        file->Drop();
    }
    EXPECT_THAT(Names(), IsEmpty());
    {
        auto file = FrameWriter::OpenInPlace(path);
        const FrameWritten written = file->AppendFrame(header, counts);
        EXPECT_EQ(written.fault, FrameFault::kCut);
        EXPECT_EQ(written.bytes, 5U);
        EXPECT_EQ(FileContents(path), Bytes(Header(0))) << "no frame is counted that isn't there";
        file->Drop();
    }
    EXPECT_THAT(Names(), IsEmpty()) << "it began with this frame";
    PutFile(path, "");
    {
        auto file = FrameWriter::OpenInPlace(path);
        EXPECT_EQ(file->AppendFrame(header, counts).fault, FrameFault::kCut);
        file->Drop();
    }
    EXPECT_THAT(Names(), ElementsAre("a.img")) << "an empty one stood there before";
    EXPECT_EQ(FileContents(path), "");
}

TEST_F(WritingFrames, ACutImageStaysAsFarAsItCameButReplacesNothing)
{
    const FullDisk disk(512 + 5);
    for (const char* name : {"a.img", "former.img"}) {
        if (name[0] == 'f') PutFile(At(name), "former");
        auto file = FrameWriter::Create(At(name));
        Counts counts = Frame(1);
        EXPECT_EQ(file->WriteImage(Header(), counts).fault, FrameFault::kCut);
        file->KeepCut();
    }
    EXPECT_EQ(FileContents(path), Bytes(Header()) + Samples(1).substr(0, 5));
    EXPECT_EQ(FileContents(At("former.img")), "former");
    EXPECT_THAT(Names(), ElementsAre("a.img", "former.img"));
}

TEST_F(WritingFrames, ACutLaterFrameIsCutOffAgain)
{
    ImageHeaderRecord counting = Header(1);
    counting.FramesAveraged = 7;
    const std::string former = Bytes(counting) + Samples(1);
    for (const rlim_t room : {rlim_t{0}, rlim_t{3}, rlim_t{7}}) {
        PutFile(path, former);
        const FullDisk disk(512 + 8 + room);
        auto file = FrameWriter::OpenInPlace(path);
        ImageHeaderRecord header = file->ReadHeader().value();
        header.FramesAveraged = 2;
        Counts counts = Frame(2);
        const FrameWritten written = file->AppendFrame(header, counts);
        EXPECT_EQ(written.fault, FrameFault::kCut);
        EXPECT_EQ(written.bytes, room);
        EXPECT_EQ(+header.FrameCount, 1U);
        EXPECT_EQ(FileContents(path), former);
        file->Drop();
        EXPECT_EQ(FileContents(path), former) << "it had a frame before";
    }
}

// The disk has room again after the first write that it refused.
TEST_F(WritingFrames, InAFileOfItsOwnTheHeaderWithoutItFollowsThePartialFrame)
{
    const FullDisk disk(512 + 8 + 3);
    std::signal(SIGXFSZ, [](int) {
        rlimit now{};
        getrlimit(RLIMIT_FSIZE, &now);
        now.rlim_cur = now.rlim_max;
        setrlimit(RLIMIT_FSIZE, &now);
    });
    auto file = FrameWriter::Create(path);
    ImageHeaderRecord header = Header(2);
    Counts counts = Frame(2);
    const FrameWritten written = file->WriteLastFrame(header, counts);
    std::signal(SIGXFSZ, SIG_IGN);
    EXPECT_EQ(written.fault, FrameFault::kCut);
    EXPECT_EQ(written.bytes, 3U);
    EXPECT_EQ(+header.FrameCount, 1U);
    file->KeepCut();
    EXPECT_EQ(FileContents(path), Bytes(Header(2)) + std::string(8, '\0') + Samples(2).substr(0, 3) + Bytes(Header(1)));
}

TEST_F(WritingFrames, WithoutRoomForThatHeaderBothAreTold)
{
    const FullDisk disk(512 + 8 + 3);
    auto file = FrameWriter::Create(path);
    ImageHeaderRecord header = Header(2);
    Counts counts = Frame(2);
    EXPECT_EQ(file->WriteLastFrame(header, counts).fault, FrameFault::kCutNoHeader);
    EXPECT_EQ(+header.FrameCount, 1U);
}

TEST_F(WritingFrames, ADeviceThatTakesNothingIsToldApart)
{
    std::filesystem::create_symlink("/dev/full", path);
    auto file = FrameWriter::Create(path);
    ASSERT_TRUE(file);
    Counts counts = Frame(1);
    EXPECT_EQ(file->WriteImage(Header(), counts).fault, FrameFault::kNoHeader);
    file->Drop();
    EXPECT_TRUE(std::filesystem::is_symlink(path));
}

}  // namespace
}  // namespace kelvo
