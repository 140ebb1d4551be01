#include "imagefile/stored_frames.h"

#include "imagefile/frames_file.h"
#include "support/stored_files.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <fstream>

namespace kelvo {
namespace {

using ::testing::ElementsAre;

std::vector<std::int16_t> CountsOf(StoredFrames& frames, std::int64_t frame)
{
    std::vector<std::int16_t> counts(frames.Pixels());
    std::string why;
    EXPECT_TRUE(frames.ReadCounts(frame, counts, why)) << why;
    return counts;
}

std::string WhyNotOpened(const std::string& path)
{
    std::string why;
    EXPECT_FALSE(StoredFrames::Open(path, why));
    return why;
}

TEST(StoredFrames, GivesEachFrameOfASequence)
{
    const TempDirectory directory;
    const std::string path = directory.Path() + "/a.seq";
    WriteImageFile(path, PlainHeader(2, 2), {{1, 2, 3, 4}, {-5, 6, 7, 8}});
    std::string why;
    std::optional<StoredFrames> frames = StoredFrames::Open(path, why);
    ASSERT_TRUE(frames) << why;
    EXPECT_EQ(frames->Frames(), 2);
    EXPECT_THAT(CountsOf(*frames, 1), ElementsAre(-5, 6, 7, 8));
    EXPECT_THAT(CountsOf(*frames, 0), ElementsAre(1, 2, 3, 4));
    EXPECT_EQ(frames->Journal(), nullptr);
    std::vector<std::int16_t> counts(4);
    EXPECT_FALSE(frames->ReadCounts(2, counts, why));
    EXPECT_EQ(why, "has no such frame");
}

TEST(StoredFrames, RoundsFloatsAsTheScreenDoes)
{
    const TempDirectory directory;
    const std::string path = directory.Path() + "/a.img";
    ImageHeaderRecord header = PlainHeader(3, 1);
    header.SampleBytes = 4;
    header.DataType = 8;
    std::ofstream file(path, std::ios::binary);
    file << HeaderBytes(header);
    for (const float value : {1.5F, -0.7F, 40000.0F}) {
        const auto bytes = std::bit_cast<std::array<char, 4>>(value);
        file.write(bytes.data(), bytes.size());
    }
    file.close();
    std::string why;
    std::optional<StoredFrames> frames = StoredFrames::Open(path, why);
    ASSERT_TRUE(frames) << why;
    EXPECT_THAT(CountsOf(*frames, 0), ElementsAre(2, 0, 32767));  // half a count is added, the fraction dropped
}

TEST(StoredFrames, TimesComeFromTheJournalAndElseFromTheRate)
{
    const TempDirectory directory;
    const std::string path = directory.Path() + "/a.seq";
    ImageHeaderRecord header = PlainHeader(1, 1);
    header.FrameRate = 50;
    WriteImageFile(path, header, {{1}, {2}, {3}});
    std::string why;
    std::optional<StoredFrames> plain = StoredFrames::Open(path, why);
    ASSERT_TRUE(plain) << why;
    EXPECT_EQ(plain->SecondsOf(2), 0.04);

    FramesHead head;
    head.columns = 1;
    head.rows = 1;
    head.pixelBytes = 2;
    const FrameRecord first = Sealed({.number = 1, .monotonicNs = 500});
    const FrameRecord second = Sealed({.number = 4, .monotonicNs = 250'000'500});
    const std::array records = {first, second};
    ASSERT_TRUE(ReplaceFramesFile(FramesPathOf(path), head, records, std::nullopt));
    std::optional<StoredFrames> timed = StoredFrames::Open(path, why);
    ASSERT_TRUE(timed) << why;
    ASSERT_NE(timed->RecordOf(1), nullptr);
    EXPECT_EQ(timed->RecordOf(1)->number, 4);
    EXPECT_EQ(timed->RecordOf(2), nullptr);
    EXPECT_EQ(timed->SecondsOf(1), 0.25);
}

TEST(StoredFrames, AreCorrectedAsTheJournalSaysAndElseTheHeader)
{
    const TempDirectory directory;
    const std::string path = directory.Path() + "/a.seq";
    std::string why;
    const auto areCorrected = [&](int cold, int hot, const char* pixels) {
        ImageHeaderRecord header = PlainHeader(1, 1);
        header.IntensityCold = static_cast<std::int16_t>(cold);
        header.IntensityHot = static_cast<std::int16_t>(hot);
        WriteImageFile(path, header, {{1}});
        FramesHead head;
        head.columns = head.rows = 1;
        head.pixelBytes = 2;
        if (pixels != nullptr) head.SetText(frames_key::kPixels, pixels);
        EXPECT_TRUE(ReplaceFramesFile(FramesPathOf(path), head, {}, std::nullopt));
        return StoredFrames::Open(path, why).value().AreCorrected();
    };
    EXPECT_FALSE(areCorrected(-10000, -10000, nullptr));
    EXPECT_FALSE(areCorrected(-10000, 0, nullptr));
    EXPECT_FALSE(areCorrected(0, 0, nullptr));  // nobody filled it in
    EXPECT_TRUE(areCorrected(7000, -10000, nullptr));
    EXPECT_TRUE(areCorrected(7000, 7400, nullptr));
    EXPECT_TRUE(areCorrected(0, 400, nullptr));
    EXPECT_FALSE(areCorrected(7000, 7400, "raw"));
    EXPECT_TRUE(areCorrected(-10000, -10000, "corrected"));
}

TEST(StoredFrames, AJournalOfAnotherSequenceIsNone)
{
    const TempDirectory directory;
    const std::string path = directory.Path() + "/a.seq";
    WriteImageFile(path, PlainHeader(2, 1), {{1, 2}});
    FramesHead head;
    head.columns = 1;
    head.rows = 2;
    head.pixelBytes = 4;
    ASSERT_TRUE(ReplaceFramesFile(FramesPathOf(path), head, {}, std::nullopt));
    std::string why;
    const std::optional<StoredFrames> frames = StoredFrames::Open(path, why);
    ASSERT_TRUE(frames) << why;
    EXPECT_EQ(frames->Journal(), nullptr);
}

TEST(StoredFrames, WhatIsNoneIsRefusedWithAReason)
{
    const TempDirectory directory;
    EXPECT_EQ(WhyNotOpened(directory.Path() + "/none.seq"), "can't be opened");
    const std::string path = directory.Path() + "/a.seq";
    std::ofstream(path) << "no image";
    EXPECT_EQ(WhyNotOpened(path), "isn't an image file");
    std::ofstream(path, std::ios::binary) << HeaderBytes(PlainHeader(4, 4)) << "too short";
    EXPECT_EQ(WhyNotOpened(path), "holds no whole frame");
}

}  // namespace
}  // namespace kelvo
