#include "viewing/viewing.h"

#include "platform/memory.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows_write.h"
#include "support/operator.h"
#include "support/stored_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

namespace kelvo {
namespace {

using ::testing::ElementsAre;

class Viewing : public ::testing::Test {
  protected:
    Viewing()
    {
        SetDefaultDir(directory_.Path());
        write::display.DisplayHigh = 16383;
        write::camera.ActiveConfig.Xzoom = write::camera.ActiveConfig.Yzoom = 1;
        write::camera.ActiveConfig.Hroi = write::camera.ActiveConfig.Vroi = 4;
    }

    std::string File(std::string_view name) const { return directory_ / name; }

    // A file whose frame f holds the counts 100 f, 100 f + 1, ... row by row.
    std::string Counted(std::string_view name, int frames, int width = 3, int height = 2)
    {
        std::vector<std::vector<std::int16_t>> all;
        for (int f = 0; f < frames; ++f) {
            std::vector<std::int16_t> frame;
            for (int i = 0; i < width * height; ++i) frame.push_back(static_cast<std::int16_t>(100 * f + i));
            all.push_back(frame);
        }
        WriteImageFile(File(name), PlainHeader(width, height), all);
        return File(name);
    }

    std::size_t Beeps() const { return operator_.Texts("beep", "sound").size(); }

    static std::vector<std::int16_t> Pixels()
    {
        const auto pixels = ImageBufferPixels(ImageHeader.ImageHeaderDataOffset);
        const auto count =
            static_cast<std::size_t>(ImageHeader.ImageWidth) * static_cast<std::size_t>(ImageHeader.ImageHeight);
        return {pixels.begin(), pixels.begin() + static_cast<std::ptrdiff_t>(count)};
    }

    TestOperator operator_;
    TempDirectory directory_;
};

TEST_F(Viewing, ShowsTheFrameAskedFor)
{
    const std::string path = Counted("run1.seq", 3);
    EXPECT_EQ(ViewImage(path, 1), 1);
    EXPECT_EQ(ViewingFile, 1);
    EXPECT_EQ(ViewFilePath, path);
    EXPECT_EQ(+ImageHeader.FrameCount, 3U);
    EXPECT_THAT(Pixels(), ElementsAre(100, 101, 102, 103, 104, 105));
    EXPECT_TRUE(operator_.Boxes().empty());
}

TEST_F(Viewing, SkipsTheHeaderInFrontOfEachFrame)
{
    ImageHeaderRecord header = PlainHeader(2, 1);
    header.ImageHeaderDataOffset = 80;
    std::string bytes = HeaderBytes(header);
    bytes += std::string(80, 'a') + SampleBytes({1, 2});
    bytes += std::string(80, 'b') + SampleBytes({3, 4});
    PutFile(File("c.seq"), bytes);

    EXPECT_EQ(ViewImage(File("c.seq"), 1), 1);
    EXPECT_EQ(+ImageHeader.FrameCount, 2U);
    EXPECT_EQ(ImageBuffer.at(0), 'b');
    EXPECT_THAT(Pixels(), ElementsAre(3, 4));
}

TEST_F(Viewing, UndoesTheByteSwapFromTheStartOfTheRecord)
{
    ImageHeaderRecord header = PlainHeader(2, 1);
    header.ByteSwap = 0;
    PutFile(File("s.img"), HeaderBytes(header) + std::string("\x01\x02\x03\x04", 4));
    EXPECT_EQ(ViewImage(File("s.img"), 0), 1);
    EXPECT_THAT(Pixels(), ElementsAre(0x0102, 0x0304));
}

TEST_F(Viewing, LeavesTheLastWordsSwappedBehindAFrameHeader)
{
    ImageHeaderRecord header = PlainHeader(41, 1);
    header.ByteSwap = 0;
    header.ImageHeaderDataOffset = 80;
    std::string bytes = HeaderBytes(header) + std::string(80, '\0');
    for (int i = 0; i < 41; ++i) bytes += std::string("\x01\x02", 2);
    PutFile(File("s.seq"), bytes);
    EXPECT_EQ(ViewImage(File("s.seq"), 0), 1);
    // 41 words are exchanged from the record's start: 40 of the header, one sample.
    EXPECT_EQ(Pixels().at(0), 0x0102);
    EXPECT_EQ(Pixels().at(1), 0x0201);
}

TEST_F(Viewing, AFileSwappedAsAWholeIsRefusedByItsSampleSize)
{
    std::string bytes = HeaderBytes(PlainHeader(2, 1));
    bytes[0] = bytes[1] = 0;
    for (std::size_t i = 0; i < 512; i += 2) std::swap(bytes[i], bytes[i + 1]);
    PutFile(File("whole.img"), bytes + SampleBytes({1, 2}));
    EXPECT_EQ(ViewImage(File("whole.img"), 0), 0);
    EXPECT_EQ(operator_.Boxes().at(0).text, "Invalid data sample size: 512 bytes per sample");
}

TEST_F(Viewing, FloatSamplesAreTruncatedPlusAHalf)
{
    ImageHeaderRecord header = PlainHeader(3, 1);
    header.SampleBytes = 4;
    const float samples[] = {1.5F, -0.7F, 20.4F};
    std::string bytes = HeaderBytes(header);
    bytes.append(reinterpret_cast<const char*>(samples), sizeof samples);
    PutFile(File("f.flt"), bytes);

    EXPECT_EQ(ViewImage(File("f.flt"), 0), 1);
    EXPECT_THAT(Pixels(), ElementsAre(2, 0, 20));
    EXPECT_EQ(ImageHeader.DataType, 8);
    EXPECT_EQ(ViewScaleGain, 1.0F);
    EXPECT_EQ(ViewScaleOffset, 0.0F);
    EXPECT_EQ(DisplayUnit, 21);
}

TEST_F(Viewing, AFloatFileLeavesItsUnitUnlessTheCheckRefusesIt)
{
    ImageHeaderRecord header = PlainHeader(1, 1);
    header.SampleBytes = 4;
    PutFile(File("f.flt"), HeaderBytes(header) + std::string(4, '\0'));
    ViewImage(File("f.flt"), 0);
    ASSERT_EQ(DisplayUnit, 21);
    // A 16-bit file has no scaled values: the check takes the lowest unit that it offers.
    EXPECT_EQ(ViewImage(Counted("a.img", 1), 0), 1);
    EXPECT_EQ(DisplayUnit, 0);
}

TEST_F(Viewing, RefusesOtherSampleSizesAfterReadingTheHeader)
{
    for (const int size : {1, 3}) {
        ImageHeaderRecord header = PlainHeader(2, 2);
        header.SampleBytes = static_cast<std::int16_t>(size);
        PutFile(File("odd.img"), HeaderBytes(header) + std::string(100, 'x'));
        EXPECT_EQ(ViewImage(File("odd.img"), 0), 0);
        EXPECT_EQ(operator_.Boxes().back().text, Format("Invalid data sample size: %d bytes per sample", size));
        EXPECT_EQ(operator_.Boxes().back().caption, "Use different function to read this image file.");
    }
    EXPECT_EQ(ViewingFile, 0);
}

TEST_F(Viewing, AShortRecordIsToldAndLeavesNoBuffer)
{
    ViewImage(Counted("good.img", 1), 0);
    PutFile(File("cut.img"), HeaderBytes(PlainHeader(32, 32)) + std::string(1025, 'x'));
    EXPECT_EQ(ViewImage(File("cut.img"), 0), 0);
    EXPECT_EQ(operator_.Boxes().at(0).text, "Failed to read entire file\n" + File("cut.img"));
    EXPECT_EQ(operator_.Boxes().at(0).caption, "Kelvo message");
    EXPECT_EQ(operator_.Boxes().at(0).icon, "information");
    EXPECT_TRUE(ImageBuffer.empty());
    EXPECT_EQ(ViewingFile, 1);
    EXPECT_EQ(ImageHeader.ImageWidth, 3);  // still the header of the frame before
}

TEST_F(Viewing, AFrameBeyondTheEndReadsAsADamagedFile)
{
    EXPECT_EQ(ViewImage(Counted("two.seq", 2), 2), 0);
    EXPECT_EQ(operator_.Boxes().at(0).text, "Failed to read entire file\n" + File("two.seq"));
}

TEST_F(Viewing, ImpossibleSizesTakeNoMemory)
{
    const std::pair<int, int> sizes[] = {{0, 5}, {-3, 5}, {5, 0}, {32767, 32767}, {-32768, -32768}};
    for (const auto& [width, height] : sizes) {
        PutFile(File("lie.img"), HeaderBytes(PlainHeader(width, height)) + std::string(64, 'x'));
        FailAllocation(1);  // a call would be seen as a memory box
        EXPECT_EQ(ViewImage(File("lie.img"), 0), 0) << width << " x " << height;
        EXPECT_EQ(operator_.Boxes().back().text, "Failed to read entire file\n" + File("lie.img"));
    }
    FailAllocation(0);
}

TEST_F(Viewing, MemoryRefusedIsTold)
{
    const std::string path = Counted("a.img", 1);
    FailAllocation(1);
    EXPECT_EQ(ViewImage(path, 0), 0);
    EXPECT_EQ(operator_.Boxes().at(0).text, "Failure to allocate or lock memory!");
    EXPECT_EQ(operator_.Boxes().at(0).caption, "ViewImage Memory Error!");
    EXPECT_EQ(ViewingFile, 0);
}

TEST_F(Viewing, ScratchMemoryRefusedIsToldToo)
{
    ImageHeaderRecord header = PlainHeader(1, 1);
    header.SampleBytes = 4;
    PutFile(File("f.flt"), HeaderBytes(header) + std::string(4, '\0'));
    FailAllocation(2);
    EXPECT_EQ(ViewImage(File("f.flt"), 0), 0);
    EXPECT_EQ(operator_.Boxes().at(0).caption, "ViewImage Memory Error!");
    EXPECT_TRUE(ImageBuffer.empty());
}

TEST_F(Viewing, AMissingFileIsToldInTheHeadersWords)
{
    EXPECT_EQ(ViewImage(File("none.img"), 0), 0);
    EXPECT_EQ(operator_.Boxes().at(0).text, "Failed to open file\n" + File("none.img"));
    EXPECT_EQ(operator_.Boxes().at(0).caption, "Read Image Header Error");
}

TEST_F(Viewing, LoadNextStepsThroughTheFramesAndOnToTheNextFile)
{
    Counted("run1.seq", 2);
    Counted("run2.seq", 1);
    EXPECT_EQ(ViewSequence(File("run1.seq")), 1);
    EXPECT_EQ(CurrentFrame, 0U);
    EXPECT_EQ(LastFrame, 1U);
    EXPECT_EQ(LoadNext(), 1);
    EXPECT_EQ(CurrentFrame, 1U);
    EXPECT_EQ(LoadNext(), 1);
    EXPECT_EQ(LoadName, File("run2.seq"));
    EXPECT_EQ(CurrentFrame, 0U);
    EXPECT_EQ(SteppingFrames, 1);
    EXPECT_TRUE(operator_.Boxes().empty());
}

TEST_F(Viewing, ANameWhoseHeaderCannotBeReadEndsThere)
{
    Counted("run1.seq", 3);
    ASSERT_EQ(ViewSequence(File("run1.seq")), 1);
    LoadNext();
    PutFile(File("cut7.seq"), "too short for a header");
    Counted("cut8.seq", 1);  // where a step would go on
    EXPECT_EQ(ViewSequence(File("cut7.seq")), 0);
    EXPECT_EQ(operator_.Boxes().back().text, "Error reading Image File Header\n" + File("cut7.seq"));
    EXPECT_EQ(ViewSequence(File("none7.seq")), 0);
    EXPECT_EQ(LoadName, File("run1.seq"));
    EXPECT_EQ(CurrentFrame, 1U);
    EXPECT_EQ(LastFrame, 2U);
    EXPECT_EQ(ViewFilePath, File("run1.seq"));
    EXPECT_EQ(Pixels().at(0), 100);
}

TEST_F(Viewing, AMissingNextFileBeepsAndFallsBack)
{
    Counted("seq9.seq", 2);
    ViewSequence(File("seq9.seq"));
    LoadNext();
    const std::size_t before = Beeps();
    EXPECT_EQ(LoadNext(), 0);  // seq10 isn't there
    EXPECT_EQ(Beeps(), before + 1);
    EXPECT_EQ(LoadName, File("seq9.seq"));
    EXPECT_EQ(CurrentFrame, 0U);
    EXPECT_TRUE(operator_.Boxes().empty());
    EXPECT_EQ(LoadNext(), 1);  // frame 1 of seq9
    EXPECT_EQ(CurrentFrame, 1U);
    EXPECT_EQ(Pixels().at(0), 100);
}

TEST_F(Viewing, AFailedStepKeepsHeaderAndPicture)
{
    Counted("seq9.seq", 1);
    PutFile(File("seq10.seq"), "too short for a header");
    ViewSequence(File("seq9.seq"));
    EXPECT_EQ(LoadNext(), 0);
    EXPECT_EQ(ImageHeader.ImageWidth, 3);
    EXPECT_THAT(Pixels(), ElementsAre(0, 1, 2, 3, 4, 5));
}

TEST_F(Viewing, LoadLastGoesBackToTheLastFrameOfTheFileBefore)
{
    Counted("ab9.seq", 3);
    Counted("ab10.seq", 1);
    ViewSequence(File("ab10.seq"));
    EXPECT_EQ(LoadLast(), 1);
    EXPECT_EQ(LoadName, File("ab9.seq"));
    EXPECT_EQ(CurrentFrame, 2U);
    EXPECT_EQ(LoadLast(), 1);
    EXPECT_EQ(CurrentFrame, 1U);
}

TEST_F(Viewing, GoingBackFromTheFirstNumberBeepsWhereThereIsNoZero)
{
    Counted("a1.seq", 1);
    ViewSequence(File("a1.seq"));
    const std::size_t before = Beeps();
    EXPECT_EQ(LoadLast(), 0);  // a0 can't be opened
    EXPECT_GT(Beeps(), before);
    EXPECT_EQ(LoadName, File("a1.seq"));
}

TEST_F(Viewing, GoingBackFromNumberZeroShowsItsLastFrameAgain)
{
    Counted("a0.seq", 2);
    ViewSequence(File("a0.seq"));
    const std::size_t before = Beeps();
    EXPECT_EQ(LoadLast(), 1);
    EXPECT_EQ(Beeps(), before + 1);
    EXPECT_EQ(CurrentFrame, 1U);
}

TEST_F(Viewing, TheFirstLoadNextTakesMinusOneToZero)
{
    Counted("run1.seq", 1);
    write::frames.LoadName = File("run1.seq");
    write::frames.LastFrame = 0;
    write::frames.CurrentFrame = static_cast<std::uint32_t>(-1);
    EXPECT_EQ(LoadNext(), 1);
    EXPECT_EQ(CurrentFrame, 0U);
}

TEST_F(Viewing, AShortRecordIsToldEvenWhileStepping)
{
    Counted("run1.seq", 1);
    PutFile(File("run2.seq"), HeaderBytes(PlainHeader(3, 2)) + "x");
    ViewSequence(File("run1.seq"));
    EXPECT_EQ(LoadNext(), 0);
    EXPECT_EQ(operator_.Boxes().at(0).text, "Failed to read entire file\n" + File("run2.seq"));
}

// Settings are written a moment after they change: they are asked for on the disk.
TEST_F(Viewing, AViewChangesNoSetting)
{
    const std::string path = Counted("a.img", 2);
    const std::string ini = "[Display]\r\nContrast=16\r\nBrightness=500\r\n";
    const std::string cameras = "[Camera.1]\nXpan=0\nYpan=0\nXzoom=1\nYzoom=1\n";
    PutFile(IniFilePath, ini);
    PutFile(CameraFilePath, cameras);
    write::camera.ActiveCamera = 1;
    EXPECT_EQ(ViewImage(path, 0), 1);
    EXPECT_EQ(ViewImage(path, 1), 1);
    EXPECT_EQ(ViewSequence(path), 1);
    EXPECT_EQ(ViewImage(File("none.img"), 0), 0);
    EXPECT_TRUE(FlushProfiles());
    EXPECT_EQ(FileContents(IniFilePath), ini);
    EXPECT_EQ(FileContents(CameraFilePath), cameras);
}

TEST_F(Viewing, ARectangleIsReadWithoutSkippingTheFrameHeader)
{
    ImageHeaderRecord header = PlainHeader(4, 2);
    header.ImageHeaderDataOffset = 80;
    std::string bytes = HeaderBytes(header) + SampleBytes({10, 11, 12, 13, 14, 15, 16, 17}) + std::string(80, '\0');
    PutFile(File("r.seq"), bytes);
    EXPECT_THAT(GetImageRectFromFile(File("r.seq"), 0, 1, 0, 2, 1), ElementsAre(11, 12, 15, 16));
}

TEST_F(Viewing, ARectangleOfASwappedFileIsSwappedBack)
{
    ImageHeaderRecord header = PlainHeader(2, 1);
    header.ByteSwap = 0;
    PutFile(File("s.img"), HeaderBytes(header) + std::string("\x01\x02\x03\x04", 4));
    EXPECT_THAT(GetImageRectFromFile(File("s.img"), 0, 1, 0, 1, 0), ElementsAre(0x0304));
}

TEST_F(Viewing, ARectangleBeyondTheCountIsReadOnePastTheLast)
{
    const std::string path = Counted("two.seq", 2);
    EXPECT_TRUE(GetImageRectFromFile(path, 99, 0, 0, 2, 1).empty());
    EXPECT_EQ(operator_.Boxes().at(0).text, "Failed to read entire region of array\n" + path);
    EXPECT_EQ(operator_.Boxes().at(0).caption, "GetImageRectFromFile() Error!");
}

TEST_F(Viewing, ARectangleOfFloatsOrOutsideTheImageIsRefused)
{
    ImageHeaderRecord header = PlainHeader(2, 2);
    header.SampleBytes = 4;
    PutFile(File("f.flt"), HeaderBytes(header) + std::string(16, '\0'));
    EXPECT_TRUE(GetImageRectFromFile(File("f.flt"), 0, 0, 0, 1, 1).empty());
    EXPECT_TRUE(GetImageRectFromFile(Counted("a.img", 1), 0, 0, 0, 3, 1).empty());
    EXPECT_EQ(operator_.Boxes().size(), 2U);
}

}  // namespace
}  // namespace kelvo
