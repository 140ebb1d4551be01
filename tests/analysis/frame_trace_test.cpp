#include "analysis/frame_trace.h"

#include "grabber/host_frames_write.h"
#include "imagefile/header_write.h"
#include "platform/memory.h"
#include "state/camera_config_write.h"
#include "state/frame_state.h"
#include "support/picture_fixture.h"
#include "support/stored_files.h"
#include "viewing/viewing.h"

#include <QApplication>
#include <QKeyEvent>

#include <gmock/gmock.h>

#include <cstring>
#include <filesystem>
#include <memory>

namespace kelvo {

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int kColumns = 5;
constexpr int kRows = 4;
constexpr int kFrames = 3;

class FrameTrace : public PictureTest {
  protected:
    static std::int16_t CountAt(int frame, int row, int column)
    {
        return static_cast<std::int16_t>(1000 * frame + 10 * row + column);
    }
    // A file whose frames have these header bytes and samples, each frame's own.
    template <typename Sample>
    std::string PutFrames(const ImageHeaderRecord& header, int frames, const std::string& before = {}) const
    {
        std::string bytes = before + HeaderBytes(header);
        if (!before.empty()) bytes.resize(1024);
        for (int frame = 0; frame < frames; ++frame) {
            bytes.append(static_cast<std::size_t>(header.ImageHeaderDataOffset), static_cast<char>('a' + frame));
            for (int i = 0; i < kColumns * kRows; ++i) {
                const auto sample = static_cast<Sample>(CountAt(frame, i / kColumns, i % kColumns));
                bytes.append(reinterpret_cast<const char*>(&sample), sizeof sample);
            }
        }
        const std::string path = directory / "frames.buf";
        PutFile(path, bytes);
        return path;
    }
    static std::vector<std::int16_t> Trace(const std::string& path, int row, int column, int first = 0,
                                           int last = kFrames - 1)
    {
        std::vector<std::int16_t> counts;
        const std::optional<TraceFile> file = ReadTraceFile(path);
        EXPECT_TRUE(file);
        if (!file) return counts;
        EXPECT_EQ(ReadFileTrace(*file, {first, last, row, column}, counts), TraceRead::kComplete);
        return counts;
    }
    // Every pixel as the viewer shows it.
    static void ExpectAsViewed(const std::string& path)
    {
        for (int frame = 0; frame < kFrames; ++frame) {
            ASSERT_EQ(ViewImage(path, static_cast<std::uint32_t>(frame)), 1);
            const std::span<const std::int16_t> shown = ImageBufferPixels(ImageHeader.ImageHeaderDataOffset);
            for (int i = 0; i < kColumns * kRows; ++i) {
                const std::vector<std::int16_t> counts = Trace(path, i / kColumns, i % kColumns);
                ASSERT_EQ(counts[static_cast<std::size_t>(frame)], shown[static_cast<std::size_t>(i)])
                    << frame << ", " << i;
            }
        }
    }
};

TEST_F(FrameTrace, IsThePixelOfEachFrameOfTheFile)
{
    const std::string path = PutFrames<std::int16_t>(PlainHeader(kColumns, kRows), kFrames);
    EXPECT_THAT(Trace(path, 2, 3), ElementsAre(23, 1023, 2023));
    EXPECT_THAT(Trace(path, 0, 0, 1, 2), ElementsAre(1000, 2000));
    EXPECT_THAT(Trace(path, kRows - 1, kColumns - 1, 2, 2), ElementsAre(2034));
    ExpectAsViewed(path);
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(FrameTrace, LiesBehindTheHeaderOfEachFrame)
{
    ImageHeaderRecord header = PlainHeader(kColumns, kRows);
    header.ImageHeaderDataOffset = 80;
    const std::string path = PutFrames<std::int16_t>(header, kFrames);
    EXPECT_THAT(Trace(path, 2, 3), ElementsAre(23, 1023, 2023));
    ExpectAsViewed(path);
}

TEST_F(FrameTrace, RoundsFloatsBehindTheLongHeader)
{
    ImageHeaderRecord header = PlainHeader(kColumns, kRows);
    header.SampleBytes = 4;
    header.DataType = 8;
    std::string spiff(111, '\0');
    spiff[0] = 1;
    const std::string path = PutFrames<float>(header, kFrames, spiff);
    const std::optional<TraceFile> file = ReadTraceFile(path);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->headerBytes, 1024);
    EXPECT_EQ(+file->header.FrameCount, 3U);
    EXPECT_THAT(Trace(path, 2, 3), ElementsAre(23, 1023, 2023));
    ExpectAsViewed(path);

    std::string bytes = FileContents(path);
    const float rounded[] = {1.5F, -0.7F};
    std::memcpy(bytes.data() + 1024, rounded, sizeof rounded);
    PutFile(path, bytes);
    EXPECT_EQ(Trace(path, 0, 0).front(), 2);
    EXPECT_EQ(Trace(path, 0, 1).front(), 0);
}

TEST_F(FrameTrace, ExchangesTheBytesOfASwappedFile)
{
    ImageHeaderRecord header = PlainHeader(kColumns, kRows);
    header.ByteSwap = 0;
    const std::string path = PutFrames<std::int16_t>(header, kFrames);
    EXPECT_THAT(Trace(path, 2, 3), ElementsAre(23 << 8, -253, -6393));  // 0x1700, 0xFF03, 0xE707
    ExpectAsViewed(path);
    // With headers before the samples the exchange ends before the last of them.
    header.ImageHeaderDataOffset = 8;
    ExpectAsViewed(PutFrames<std::int16_t>(header, kFrames));
}

TEST_F(FrameTrace, ReadsABufferFileWhoseHeaderIsSwappedToo)
{
    ImageHeaderRecord header = PlainHeader(kColumns, kRows);
    header.ByteSwap = 0;
    const std::string path = PutFrames<std::int16_t>(header, kFrames);
    std::string bytes = FileContents(path);
    for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) std::swap(bytes[at], bytes[at + 1]);
    PutFile(path, bytes);
    const std::optional<TraceFile> file = ReadTraceFile(path);
    ASSERT_TRUE(file);
    EXPECT_EQ(+file->header.ImageWidth, kColumns);
    EXPECT_EQ(+file->header.FrameCount, 3U);
    EXPECT_THAT(Trace(path, 2, 3), ElementsAre(23, 1023, 2023));
}

TEST_F(FrameTrace, LeavesTheHeaderOnViewAlone)
{
    View(2, 1, {1, 2});
    const ImageHeaderRecord before = ImageHeader;
    Trace(PutFrames<std::int16_t>(PlainHeader(kColumns, kRows), kFrames), 0, 0);
    EXPECT_EQ(std::memcmp(&before, &ImageHeader, sizeof before), 0);
}

TEST_F(FrameTrace, CountsTheWholeFramesThatTheFileHolds)
{
    const std::string path = PutFrames<std::int16_t>(PlainHeader(kColumns, kRows), kFrames);
    std::filesystem::resize_file(path, 512 + 2 * 2 * kColumns * kRows + 7);
    const std::optional<TraceFile> file = ReadTraceFile(path);
    ASSERT_TRUE(file);
    EXPECT_EQ(+file->header.FrameCount, 2U);
}

TEST_F(FrameTrace, RefusesWhatIsNoFileOfFrames)
{
    const std::string path = directory / "frames.buf";
    EXPECT_FALSE(ReadTraceFile(path));
    PutFile(path, std::string(100, 'x'));
    EXPECT_FALSE(ReadTraceFile(path));
    ImageHeaderRecord header = PlainHeader(kColumns, kRows);
    PutFile(path, HeaderBytes(header) + std::string(2 * kColumns * kRows - 1, 'x'));
    EXPECT_FALSE(ReadTraceFile(path));
    header.SampleBytes = 3;
    PutFile(path, HeaderBytes(header) + std::string(1000, 'x'));
    EXPECT_FALSE(ReadTraceFile(path));
    header = PlainHeader(-5, kRows);
    header.FrameCount = 0xFFFFFFFF;
    PutFile(path, HeaderBytes(header) + std::string(1000, 'x'));
    EXPECT_FALSE(ReadTraceFile(path));
    header = PlainHeader(kColumns, kRows);
    header.ImageHeaderDataOffset = -80;
    PutFile(path, HeaderBytes(header) + std::string(1000, 'x'));
    EXPECT_FALSE(ReadTraceFile(path));
    EXPECT_FALSE(ReadTraceFile(directory.Path()));

    const std::vector<TestOperator::Box> boxes = op->Boxes();
    ASSERT_THAT(boxes, SizeIs(7));
    EXPECT_EQ(boxes[0].text, "Failed to open file\n" + path);
    EXPECT_EQ(boxes[0].caption, "Read Image Header Error");
    for (const std::size_t number : {1U, 2U, 4U, 5U}) {
        EXPECT_EQ(boxes[number].text, "Error reading Image File Header\n" + path) << number;
        EXPECT_EQ(boxes[number].caption, "Kelvo message") << number;
    }
    EXPECT_EQ(boxes[3].text, "Invalid data sample size: 3 bytes per sample");
    EXPECT_EQ(boxes[3].caption, "Use different function to read this image file.");
    EXPECT_EQ(boxes[6].text, "Failed to open file\n" + directory.Path());
}

TEST_F(FrameTrace, OfALargerFrameThanCamerasHaveIsRead)
{
    ImageHeaderRecord header = PlainHeader(1200, 2);  // beyond the sides for which the header's count is corrected
    header.FrameCount = 4000000000U;
    PutFile(directory / "wide.buf", HeaderBytes(header) + std::string(4 * 2400, '\1'));
    const std::optional<TraceFile> file = ReadTraceFile(directory / "wide.buf");
    ASSERT_TRUE(file);
    EXPECT_EQ(+file->header.FrameCount, 2U);
}

TEST_F(FrameTrace, OfAFileThatWasCutOrReplacedIsNone)
{
    const std::string path = PutFrames<std::int16_t>(PlainHeader(kColumns, kRows), kFrames);
    const std::optional<TraceFile> file = ReadTraceFile(path);
    ASSERT_TRUE(file);
    std::vector<std::int16_t> counts;
    std::filesystem::resize_file(path, 512 + 2 * 2 * kColumns * kRows + 2);
    EXPECT_EQ(ReadFileTrace(*file, {0, 2, 1, 1}, counts), TraceRead::kShort);
    EXPECT_THAT(counts, IsEmpty());
    EXPECT_EQ(ReadFileTrace(*file, {0, 1, 1, 1}, counts), TraceRead::kComplete);
    PutFrames<std::int16_t>(PlainHeader(kRows, kColumns), kFrames);
    EXPECT_EQ(ReadFileTrace(*file, {0, 2, 1, 1}, counts), TraceRead::kChanged);
    EXPECT_THAT(counts, IsEmpty());
    std::filesystem::remove(path);
    EXPECT_EQ(ReadFileTrace(*file, {0, 2, 1, 1}, counts), TraceRead::kChanged);
}

TEST_F(FrameTrace, GoesOnWhileTheFileGrows)
{
    ImageHeaderRecord header = PlainHeader(kColumns, kRows);
    const std::string path = PutFrames<std::int16_t>(header, 2);
    const std::optional<TraceFile> file = ReadTraceFile(path);
    ASSERT_TRUE(file);
    header.FrameCount = 3;
    PutFrames<std::int16_t>(header, 3);
    std::vector<std::int16_t> counts;
    EXPECT_EQ(ReadFileTrace(*file, {0, 1, 2, 3}, counts), TraceRead::kComplete);
    EXPECT_THAT(counts, ElementsAre(23, 1023));
}

TEST_F(FrameTrace, OutsideTheFramesIsNone)
{
    const std::optional<TraceFile> file = ReadTraceFile(PutFrames<std::int16_t>(PlainHeader(kColumns, kRows), kFrames));
    ASSERT_TRUE(file);
    std::vector<std::int16_t> counts;
    for (const TracePlace& place : {TracePlace{0, 2, kRows, 0}, TracePlace{0, 2, 0, kColumns}, TracePlace{0, 2, -1, 0},
                                    TracePlace{-1, 2, 0, 0}, TracePlace{2, 1, 0, 0}, TracePlace{0, 3, 0, 0}}) {
        EXPECT_EQ(ReadFileTrace(*file, place, counts), TraceRead::kShort);
        EXPECT_THAT(counts, IsEmpty());
    }
}

TEST_F(FrameTrace, WithoutMemoryIsNone)
{
    const std::optional<TraceFile> file = ReadTraceFile(PutFrames<std::int16_t>(PlainHeader(kColumns, kRows), kFrames));
    ASSERT_TRUE(file);
    std::vector<std::int16_t> counts;
    FailAllocation(1);
    EXPECT_EQ(ReadFileTrace(*file, {0, 2, 1, 1}, counts), TraceRead::kNoMemory);
    FailAllocation(1);
    EXPECT_EQ(ReadHostTrace({0, 2, 1, 1}, counts), TraceRead::kNoMemory);
    EXPECT_THAT(counts, IsEmpty());
}

TEST_F(FrameTrace, TakesMemoryForOneCountAFrame)
{
    const std::optional<TraceFile> file = ReadTraceFile(PutFrames<std::int16_t>(PlainHeader(kColumns, kRows), kFrames));
    ASSERT_TRUE(file);
    std::vector<std::int16_t> counts;
    const std::int64_t before = MemoryRequests();
    ASSERT_EQ(ReadFileTrace(*file, {0, 2, 1, 1}, counts), TraceRead::kComplete);
    EXPECT_EQ(MemoryRequests(), before + 1);
    EXPECT_THAT(counts, SizeIs(3));
}

TEST_F(FrameTrace, OfManyFramesIsStoppedByEscape)
{
    constexpr std::size_t kMany = 1500;
    const std::string path = directory / "many.buf";
    PutFile(path, HeaderBytes(PlainHeader(1, 1)) + std::string(2 * kMany, '\1'));
    const std::optional<TraceFile> file = ReadTraceFile(path);
    ASSERT_TRUE(file);
    std::vector<std::int16_t> counts;
    const auto read = [&] { return ReadFileTrace(*file, {0, kMany - 1, 0, 0}, counts); };
    QApplication::postEvent(qApp,
                            std::make_unique<QKeyEvent>(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier).release());
    EXPECT_EQ(read(), TraceRead::kStopped);
    EXPECT_THAT(counts, IsEmpty());
    EXPECT_EQ(read(), TraceRead::kComplete);
    EXPECT_THAT(counts, SizeIs(kMany));
    EXPECT_THAT(counts, Each(0x0101));
}

TEST_F(FrameTrace, OfHostFramesIsThatPixelOfEach)
{
    write::camera.ActiveConfig.Hroi = kColumns;
    write::camera.ActiveConfig.Vroi = kRows;
    for (int frame = 0; frame < kFrames; ++frame) {
        std::vector<std::int16_t> counts;
        for (int i = 0; i < kColumns * kRows; ++i) counts.push_back(CountAt(frame, i / kColumns, i % kColumns));
        write::hostFrames.HostFrames.push_back(counts);
    }
    std::vector<std::int16_t> counts;
    EXPECT_EQ(ReadHostTrace({0, 2, 2, 3}, counts), TraceRead::kComplete);
    EXPECT_THAT(counts, ElementsAre(23, 1023, 2023));
    EXPECT_EQ(ReadHostTrace({1, 4, 2, 3}, counts), TraceRead::kComplete);
    EXPECT_THAT(counts, ElementsAre(1023, 2023, 0, 0));
}

}  // namespace

}  // namespace kelvo
