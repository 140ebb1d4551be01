#include "fileboard/recorded_source.h"

#include "fileboard/recorded_files.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class RecordedSourceFiles : public testing::Test {
  protected:
    // Null where it can't be, with the reason in error; there until the next one is opened.
    RecordedSource* Open(const std::string& rule, double rateHz = 0)
    {
        error.clear();
        opened_ = RecordedSource::Open(directory / rule, rateHz, true, error);
        return opened_ ? &*opened_ : nullptr;
    }
    // The first count of each frame.
    static std::vector<int> ValuesOf(RecordedSource& source)
    {
        std::vector<int> values;
        for (std::int64_t frame = 0; frame < source.Frames(); ++frame) {
            std::vector<std::int16_t> counts(source.Columns() * source.Rows(), -1);
            EXPECT_TRUE(source.Read(frame, counts));
            values.push_back(counts.back());
        }
        return values;
    }

    TempDirectory directory;
    std::string error;

  private:
    std::optional<RecordedSource> opened_;
};

std::string BigEndian(const std::vector<std::int16_t>& samples)
{
    std::string bytes = SampleBytes(samples);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) std::swap(bytes[i], bytes[i + 1]);
    return bytes;
}

std::string Padded(std::string text, std::size_t block, char fill)
{
    text.resize((text.size() + block - 1) / block * block, fill);
    return text;
}

std::string FitsCard(const std::string& text)
{
    return Padded(text, 80, ' ');
}

// Little-endian numbers of a TIFF file.
std::string Tiff16(int value)
{
    return {static_cast<char>(value & 0xFF), static_cast<char>(value >> 8)};
}
std::string Tiff32(int value)
{
    return Tiff16(value & 0xFFFF) + Tiff16(value >> 16);
}
std::string TiffTag(int tag, int type, int value)
{
    return Tiff16(tag) + Tiff16(type) + Tiff32(1) + Tiff32(value);
}

TEST_F(RecordedSourceFiles, EveryKindGivesItsFrames)
{
    for (const char* name : {"a.seq", "a.img", "a.buf"}) PutRecording(directory / name, {7, 8});
    PutNpy(directory / "a.npy", "<i2", {7, 8});
    const std::string fits = FitsCard("SIMPLE  =                    T") + FitsCard("BITPIX  =                   16") +
                             FitsCard("NAXIS   =                    3") + FitsCard("NAXIS1  =                    4") +
                             FitsCard("NAXIS2  =                    2") + FitsCard("NAXIS3  =                    2") +
                             FitsCard("END");
    PutFile(directory / "a.fits",
            Padded(fits, 2880, ' ') + Padded(BigEndian(FrameOfValue(7)) + BigEndian(FrameOfValue(8)), 2880, '\0'));
    // One page, its strip behind the directory of 9 tags: 8 + 2 + 9 x 12 + 4 = 122.
    PutFile(directory / "a.tif", "II" + Tiff16(42) + Tiff32(8) + Tiff16(9) + TiffTag(256, 3, 4) + TiffTag(257, 3, 2) +
                                     TiffTag(258, 3, 16) + TiffTag(259, 3, 1) + TiffTag(262, 3, 1) +
                                     TiffTag(273, 4, 122) + TiffTag(277, 3, 1) + TiffTag(278, 3, 2) +
                                     TiffTag(279, 4, 16) + Tiff32(0) + SampleBytes(FrameOfValue(7)));
    for (const char* name : {"a.seq", "a.img", "a.buf", "a.npy", "a.fits", "a.tif"}) {
        RecordedSource* source = Open(name);
        ASSERT_TRUE(source) << error;
        EXPECT_EQ(source->Name(), name);
        EXPECT_EQ(source->Columns(), 4U) << name;
        EXPECT_EQ(source->Rows(), 2U) << name;
        std::vector<int> values{7, 8};
        if (std::string_view(name) == "a.tif") values.pop_back();
        EXPECT_EQ(ValuesOf(*source), values) << name;
        std::vector<std::int16_t> counts(8);
        EXPECT_FALSE(source->Read(source->Frames(), counts));
        EXPECT_FALSE(source->Read(-1, counts));
    }
}

TEST_F(RecordedSourceFiles, GapsOfTheJournalAreFramesLost)
{
    PutRecording(directory / "a.seq", {1, 2, 3, 4});
    // Three lost before the second, each in another place; three left out on purpose before the third; numbers of the
    // fourth tell of one more than its record does.
    PutJournal(directory / "a.seq",
               {{.number = 10, .monotonicNs = 1'000'000'000, .integrationMs = 2.5F},
                {.number = 14, .monotonicNs = 1'030'000'000, .lostByBoard = 1, .lostByRing = 1, .lostByTransport = 1},
                {.number = 18, .monotonicNs = 1'070'000'000, .passedOver = 3},
                {.number = 20, .monotonicNs = 1'090'000'000}},
               kRawPixels);
    RecordedSource* source = Open("a.seq");
    ASSERT_TRUE(source) << error;
    EXPECT_THAT(source->Times().frames,
                ElementsAre(PlayedFrame{0, 0}, PlayedFrame{4, 30'000}, PlayedFrame{5, 70'000}, PlayedFrame{7, 90'000}));
    EXPECT_EQ(source->Lost(), 4);
    EXPECT_EQ(source->IntegrationMs(), 2.5);
}

TEST_F(RecordedSourceFiles, ARuleNamesItsFilesInTheOrderOfTheirNumbers)
{
    PutRecording(directory / "run_10.seq", {5});
    PutRecording(directory / "run_9.seq", {3, 4});
    PutRecording(directory / "run_1.seq", {1, 2});
    PutRecording(directory / "walk_1.seq", {6});
    PutFile(directory / "run_9.seq.frames", "no journal");
    std::filesystem::create_directory(directory / "run_2.seq");
    EXPECT_THAT(FilesOfRule(directory / "run_*"),
                ElementsAre(directory / "run_1.seq", directory / "run_9.seq", directory / "run_10.seq"));
    EXPECT_THAT(FilesOfRule(directory / "*_1.seq"), ElementsAre(directory / "run_1.seq", directory / "walk_1.seq"));
    EXPECT_THAT(FilesOfRule(directory / "run_?.seq"), ElementsAre(directory / "run_1.seq", directory / "run_9.seq"));
    EXPECT_THAT(FilesOfRule(directory / "fly_*"), IsEmpty());
    EXPECT_THAT(FilesOfRule(directory / "none/run_*"), IsEmpty());

    RecordedSource* source = Open("run_*.seq", 100);
    ASSERT_TRUE(source) << error;
    EXPECT_EQ(source->Name(), "run_1.seq and 2 more");
    EXPECT_EQ(ValuesOf(*source), (std::vector<int>{1, 2, 3, 4, 5}));
    EXPECT_EQ(source->Times().frames.back(), (PlayedFrame{4, 40'000}));
}

TEST_F(RecordedSourceFiles, WhatIsLostBetweenTheFilesOfOneRunIsLostHereToo)
{
    PutRecording(directory / "p_1.seq", {1, 2});
    PutRecording(directory / "p_2.seq", {3});
    PutJournal(directory / "p_1.seq",
               {{.number = 1, .monotonicNs = 1'000'000}, {.number = 2, .monotonicNs = 11'000'000}}, kRawPixels);
    PutJournal(directory / "p_2.seq",
               {{.number = 4, .monotonicNs = 31'000'000, .flags = kFirstOfPart, .lostByBoard = 1}}, kRawPixels);
    RecordedSource* source = Open("p_*.seq");
    ASSERT_TRUE(source) << error;
    EXPECT_THAT(source->Times().frames, ElementsAre(PlayedFrame{0, 0}, PlayedFrame{1, 10'000}, PlayedFrame{3, 30'000}));
    // Alone, the second file has no frame before its first.
    source = Open("p_2.seq");
    ASSERT_TRUE(source) << error;
    EXPECT_EQ(source->Lost(), 0);
}

TEST_F(RecordedSourceFiles, WhatIsNoCameraIsRefusedWithItsName)
{
    PutRecording(directory / "corrected.seq", {1, 2});
    PutJournal(directory / "corrected.seq", {{.number = 1}, {.number = 2}}, kCorrectedPixels);
    EXPECT_FALSE(Open("corrected.seq"));
    EXPECT_THAT(error, HasSubstr("corrected.seq holds corrected frames: a camera's are raw."));

    ImageHeaderRecord calibrated = PlainHeader(4, 2);
    calibrated.IntensityCold = 1000;
    calibrated.IntensityHot = 2000;
    WriteImageFile(directory / "calibrated.img", calibrated, {FrameOfValue(1)});
    EXPECT_FALSE(Open("calibrated.img"));
    EXPECT_THAT(error, HasSubstr("holds corrected frames"));

    PutFile(directory / "text.seq", "These are no frames.");
    PutFile(directory / "empty.seq", "");
    PutFile(directory / "short.npy", "\x93NUMPY");
    std::filesystem::create_directory(directory / "folder.seq");
    for (const char* name : {"text.seq", "empty.seq", "short.npy", "folder.seq", "missing.seq"}) {
        EXPECT_FALSE(Open(name)) << name;
        EXPECT_THAT(error, HasSubstr(directory / name));
        EXPECT_TRUE(error.ends_with('.')) << error;
    }

    PutRecording(directory / "mixed_1.seq", {1});
    WriteImageFile(directory / "mixed_2.seq", PlainHeader(2, 2), {{1, 2, 3, 4}});
    EXPECT_FALSE(Open("mixed_*.seq"));
    EXPECT_THAT(error, HasSubstr("mixed_2.seq has frames of 2 x 2, "));
    EXPECT_FALSE(Open("nobody_*.seq"));
    EXPECT_THAT(error, HasSubstr("names no file: 1 to 256 can be played."));
}

TEST_F(RecordedSourceFiles, AFileThatIsCutMeanwhileGivesNoFrame)
{
    PutRecording(directory / "a.seq", {1, 2, 3});
    RecordedSource* source = Open("a.seq");
    ASSERT_TRUE(source) << error;
    std::filesystem::resize_file(directory / "a.seq", std::filesystem::file_size(directory / "a.seq") - 20);
    std::vector<std::int16_t> counts(8);
    EXPECT_TRUE(source->Read(0, counts));
    EXPECT_FALSE(source->Read(1, counts));
    EXPECT_FALSE(source->Read(2, counts));
}

}  // namespace
}  // namespace kelvo
