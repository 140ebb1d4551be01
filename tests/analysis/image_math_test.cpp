// Image math on files made byte by byte, and on the frame on view.
#include "analysis/image_math.h"

#include "imagefile/header_write.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "support/full_disk.h"
#include "support/picture_fixture.h"
#include "support/recording_board.h"
#include "support/stored_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <vector>

namespace kelvo {
namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;

using Frame = std::vector<std::int16_t>;
using Frames = std::vector<Frame>;

class ImageMathRun : public PictureTest {
  protected:
    std::string Image(const std::string& name, int width, int height, const Frames& frames) const
    {
        return Image(name, PlainHeader(width, height), frames);
    }
    std::string Image(const std::string& name, const ImageHeaderRecord& header, const Frames& frames) const
    {
        std::string path = directory / name;
        WriteImageFile(path, header, frames);
        return path;
    }
    ImageMath Math(const Weights& weights, const std::string& frame1, const std::string& frame2) const
    {
        return {.weights = weights, .frame1 = frame1, .frame2 = frame2, .result = directory / "result.img"};
    }
    std::string Result() const { return FileContents(directory / "result.img"); }
    ImageHeaderRecord ResultHeader() const
    {
        ImageHeaderRecord header;
        const std::string bytes = Result();
        if (bytes.size() >= sizeof header) std::memcpy(&header, bytes.data(), sizeof header);
        return header;
    }
    Frame ResultSamples() const
    {
        const std::string bytes = Result();
        if (bytes.size() < sizeof(ImageHeaderRecord)) return {};
        Frame samples((bytes.size() - sizeof(ImageHeaderRecord)) / 2);
        std::memcpy(samples.data(), bytes.data() + sizeof(ImageHeaderRecord), 2 * samples.size());
        return samples;
    }
    std::vector<std::string> FilesLeft() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(directory.Path())) {
            names.push_back(entry.path().filename().string());
        }
        std::ranges::sort(names);
        return names;
    }

    static constexpr Weights kSum{.c1 = 1, .c2 = 1, .c3 = 0};
    static constexpr Weights kFirstAlone{.c1 = 1, .c2 = 0, .c3 = 0};
};

void ExpectFailure(const ImageMathOutcome& outcome, std::string_view text, std::string_view caption)
{
    ASSERT_TRUE(outcome.failure.has_value());
    EXPECT_EQ(outcome.failure->text, text);
    EXPECT_EQ(outcome.failure->caption, caption);
}

// ---- What comes out

TEST_F(ImageMathRun, AllConstantsZeroWriteAFrameOfZerosOfTheSizeOnView)
{
    View(3, 2, {1, 2, 3, 4, 5, 6});
    const ImageMathOutcome outcome = RunImageMath(Math({}, directory / "gone.img", ""));
    EXPECT_FALSE(outcome.failure);
    EXPECT_EQ(outcome.frames, 1U);
    EXPECT_EQ(outcome.wrapped, 0);
    EXPECT_EQ(+ResultHeader().ImageWidth, 3);
    EXPECT_EQ(+ResultHeader().ImageHeight, 2);
    EXPECT_EQ(ResultSamples(), Frame(6, 0));
}

TEST_F(ImageMathRun, ASequenceOfTenFramesWithC2ZeroGivesTen)
{
    Frames frames;
    for (std::int16_t f = 0; f < 10; ++f) frames.push_back({f, static_cast<std::int16_t>(10 * f)});
    const ImageMathOutcome outcome = RunImageMath(Math({.c1 = 2, .c2 = 0, .c3 = 1}, Image("a.seq", 2, 1, frames), ""));
    EXPECT_FALSE(outcome.failure);
    EXPECT_EQ(outcome.frames, 10U);
    EXPECT_THAT(ResultSamples(),
                ElementsAre(1, 1, 3, 21, 5, 41, 7, 61, 9, 81, 11, 101, 13, 121, 15, 141, 17, 161, 19, 181));
    EXPECT_EQ(+ResultHeader().FrameCount, 1U);  // readers count by the length
    ImageHeaderRecord read;
    EXPECT_EQ(ReadImageHeader(directory / "result.img", read), 512);
    EXPECT_EQ(+read.FrameCount, 10U);
}

TEST_F(ImageMathRun, TheShorterOfTwoSequencesRepeatsItsLast)
{
    Frames ten;
    for (std::int16_t f = 0; f < 10; ++f) ten.push_back({static_cast<std::int16_t>(100 * f)});
    const std::string longer = Image("ten.seq", 1, 1, ten);
    const std::string shorter = Image("three.seq", 1, 1, {{1}, {2}, {3}});
    EXPECT_EQ(RunImageMath(Math(kSum, longer, shorter)).frames, 10U);
    EXPECT_THAT(ResultSamples(), ElementsAre(1, 102, 203, 303, 403, 503, 603, 703, 803, 903));
    EXPECT_EQ(RunImageMath(Math(kSum, shorter, longer)).frames, 10U);
    EXPECT_THAT(ResultSamples(), ElementsAre(1, 102, 203, 303, 403, 503, 603, 703, 803, 903));
}

TEST_F(ImageMathRun, OnlyTheLow16BitsOfALargeSumSurvive)
{
    const std::string source = Image("a.img", 3, 1, {{20000, 1, -20000}});
    const ImageMathOutcome outcome = RunImageMath(Math({.c1 = 2, .c2 = 0, .c3 = 0}, source, ""));
    EXPECT_EQ(outcome.wrapped, 2);
    EXPECT_THAT(ResultSamples(), ElementsAre(-25536, 2, 25536));
}

TEST_F(ImageMathRun, AnUnusedSourceIsNotRead)
{
    const std::string source = Image("a.img", 2, 1, {{5, 6}});
    EXPECT_FALSE(RunImageMath(Math({.c1 = 0, .c2 = 1, .c3 = 0}, "", source)).failure);
    EXPECT_THAT(ResultSamples(), ElementsAre(5, 6));
    EXPECT_FALSE(RunImageMath(Math(kFirstAlone, source, directory / "gone.img")).failure);
}

TEST_F(ImageMathRun, UnlikeSourcesAreCombinedInMemoryOrder)
{
    const std::string wide = Image("wide.img", 3, 2, {{1, 2, 3, 4, 5, 6}});
    const std::string narrow = Image("narrow.img", 2, 3, {{10, 20, 30, 40, 50, 60}});
    EXPECT_FALSE(RunImageMath(Math(kSum, wide, narrow)).failure);
    EXPECT_EQ(+ResultHeader().ImageWidth, 2);
    EXPECT_EQ(+ResultHeader().ImageHeight, 2);
    EXPECT_EQ(+ResultHeader().RightColumn, 1);
    EXPECT_THAT(ResultSamples(), ElementsAre(11, 22, 33, 44));
}

TEST_F(ImageMathRun, UnlikeSourcesOfSeveralFramesFailAtFrameTwo)
{
    const std::string several = Image("several.seq", 3, 1, {{1, 2, 3}, {4, 5, 6}});
    const std::string other = Image("other.img", 2, 1, {{10, 20}});
    const ImageMathOutcome outcome = RunImageMath(Math(kSum, several, other));
    ExpectFailure(
        outcome,
        "Failure to read Source1 (Frame 2) image data!\nWhat was written stays in " + (directory / ".result.img.new"),
        "File Read Error!");
    EXPECT_EQ(outcome.frames, 1U);
    EXPECT_EQ(FileContents(directory / ".result.img.new").size(), 512U + 4);
    EXPECT_FALSE(FileExists(directory / "result.img"));
    // Source 2 reads in its own steps.
    EXPECT_FALSE(RunImageMath(Math(kSum, other, several)).failure);
    EXPECT_THAT(ResultSamples(), ElementsAre(11, 22, 14, 25));
}

TEST_F(ImageMathRun, FrameHeadersArePassedOver)
{
    ImageHeaderRecord header = PlainHeader(2, 1);
    header.ImageHeaderDataOffset = 80;
    const std::string path = directory / "headed.seq";
    const std::string before(80, 'x');
    PutFile(path, HeaderBytes(header) + before + SampleBytes({1, 2}) + before + SampleBytes({3, 4}));
    EXPECT_EQ(RunImageMath(Math(kFirstAlone, path, "")).frames, 2U);
    EXPECT_THAT(ResultSamples(), ElementsAre(1, 2, 3, 4));
    EXPECT_EQ(+ResultHeader().ImageHeaderDataOffset, 0);
}

TEST_F(ImageMathRun, FloatsAreTheCountsThatTheViewerMakesOfThem)
{
    ImageHeaderRecord header = PlainHeader(4, 1);
    header.SampleBytes = 4;
    header.DataType = 8;
    const float samples[] = {1.5F, -0.7F, 40000.0F, 2.4F};
    const std::string path = directory / "float.flt";
    PutFile(path, HeaderBytes(header) + std::string(reinterpret_cast<const char*>(samples), sizeof samples));
    EXPECT_FALSE(RunImageMath(Math(kFirstAlone, path, "")).failure);
    EXPECT_THAT(ResultSamples(), ElementsAre(2, 0, 32767, 2));
    EXPECT_EQ(+ResultHeader().SampleBytes, 2);
    EXPECT_EQ(+ResultHeader().DataType, 1);
}

TEST_F(ImageMathRun, TheSpectrometersHeaderIsPassedOver)
{
    SpiffHeaderRecord spiff;
    spiff.Image = PlainHeader(2, 1);
    spiff.Image.SampleBytes = 4;
    const float samples[] = {1, 2, 3, 4};
    const std::string path = directory / "averages.seq";
    PutFile(path, std::string(reinterpret_cast<const char*>(&spiff), sizeof spiff) +
                      std::string(reinterpret_cast<const char*>(samples), sizeof samples));
    EXPECT_EQ(RunImageMath(Math(kFirstAlone, path, "")).frames, 2U);
    EXPECT_THAT(ResultSamples(), ElementsAre(1, 2, 3, 4));
}

// Neither the samples of a source nor the result's are swapped, whatever the headers say.
TEST_F(ImageMathRun, ByteSwapSwapsNothing)
{
    ImageHeaderRecord header = PlainHeader(2, 1);
    header.ByteSwap = 0;
    write::file.ByteSwap = 0;
    EXPECT_FALSE(RunImageMath(Math(kFirstAlone, Image("a.img", header, {{1, 0x102}}), "")).failure);
    EXPECT_EQ(+ResultHeader().ByteSwap, 0);
    EXPECT_EQ(+ResultHeader().ImageWidth, 2);
    EXPECT_THAT(ResultSamples(), ElementsAre(1, 0x102));
}

TEST_F(ImageMathRun, TheRangeSpansThoseOfTheSourceFiles)
{
    write::display.DisplayLow = 7;
    write::display.DisplayHigh = 8;
    ImageHeaderRecord low = PlainHeader(1, 1);
    low.DisplayLow = -100;
    low.DisplayHigh = 500;
    ImageHeaderRecord high = PlainHeader(1, 1);
    high.DisplayLow = 50;
    high.DisplayHigh = 900;
    const std::string one = Image("low.img", low, {{1}});
    const std::string two = Image("high.img", high, {{2}});
    EXPECT_FALSE(RunImageMath(Math(kSum, one, two)).failure);
    EXPECT_EQ(+ResultHeader().DisplayLow, -100);
    EXPECT_EQ(+ResultHeader().DisplayHigh, 900);
    EXPECT_FALSE(RunImageMath(Math({.c1 = 0, .c2 = 1, .c3 = 0}, one, two)).failure);
    EXPECT_EQ(+ResultHeader().DisplayLow, 50);
    EXPECT_EQ(+ResultHeader().DisplayHigh, 900);
    // The image on the screen adds none.
    View(1, 1, {4});
    EXPECT_FALSE(RunImageMath(Math(kSum, one, "")).failure);
    EXPECT_EQ(+ResultHeader().DisplayLow, -100);
    EXPECT_EQ(+ResultHeader().DisplayHigh, 500);
    EXPECT_FALSE(RunImageMath(Math(kSum, "", "")).failure);
    EXPECT_EQ(+ResultHeader().DisplayLow, 7);
    EXPECT_EQ(+ResultHeader().DisplayHigh, 8);
}

// ---- The image on the screen

TEST_F(ImageMathRun, WithAFileOnViewTheScreenIsItsFrameAndItsHeaderStays)
{
    View(2, 2, {10, 20, 30, 40});
    write::file.ImageHeader.IntegrationMsec = 1.5F;
    const ImageHeaderRecord before = ImageHeader;
    const std::string source = Image("a.img", 2, 2, {{1, 2, 3, 4}});
    EXPECT_FALSE(RunImageMath(Math({.c1 = 1, .c2 = -1, .c3 = 0}, "", source)).failure);
    EXPECT_THAT(ResultSamples(), ElementsAre(9, 18, 27, 36));
    EXPECT_EQ(HeaderBytes(ImageHeader), HeaderBytes(before));
    EXPECT_EQ(+ResultHeader().IntegrationMsec, 1.5F);  // of the file on view
}

TEST_F(ImageMathRun, WithoutAFileOnViewTheHeaderIsTheResults)
{
    const std::string source = Image("a.img", 5, 1, {{1, 2, 3, 4, 5}});
    EXPECT_FALSE(RunImageMath(Math(kFirstAlone, source, "")).failure);
    EXPECT_EQ(HeaderBytes(ImageHeader), HeaderBytes(ResultHeader()));
}

TEST_F(ImageMathRun, WithoutAPictureTheScreenCannotBeRead)
{
    const ImageHeaderRecord before = ImageHeader;
    ExpectFailure(RunImageMath(Math(kSum, "", "")), "Failure to read Source1!", "Data Read Error!");
    const std::string source = Image("a.img", 1, 1, {{1}});
    ExpectFailure(RunImageMath(Math(kSum, source, "")), "Failure to read Source2!", "Data Read Error!");
    EXPECT_EQ(HeaderBytes(ImageHeader), HeaderBytes(before));
    EXPECT_THAT(FilesLeft(), ElementsAre("a.img"));
}

// ---- Failures

TEST_F(ImageMathRun, EachFailureOfASourceIsNamed)
{
    const std::string good = Image("good.img", 1, 1, {{1}});
    PutFile(directory / "short.img", std::string(511, '\0'));
    PutFile(directory / "cut.img", HeaderBytes(PlainHeader(1, 1)) + "x");
    ImageHeaderRecord bytes = PlainHeader(1, 1);
    bytes.SampleBytes = 1;
    Image("bytes.img", bytes, {{1}});
    Image("negative.img", PlainHeader(-1, 1), {{1}});
    const struct {
        const char* name;
        const char* text;
        const char* caption;
    } cases[] = {
        {"gone.img", "Failure to open %s file!", "File Error!"},
        {"short.img", "Failure to read %s ImageHeader!", "File Read Error!"},
        {"cut.img", "Failure to read %s image data!", "File Read Error!"},
        {"bytes.img", "Failure to read %s image data!", "File Read Error!"},
        {"negative.img", "Failure to read %s image data!", "File Read Error!"},
    };
    for (const auto& each : cases) {
        for (const bool second : {false, true}) {
            const std::string bad = directory / each.name;
            std::string text = each.text;
            text.replace(text.find("%s"), 2, second ? "Source2" : "Source1");
            ExpectFailure(RunImageMath(second ? Math(kSum, good, bad) : Math(kSum, bad, good)), text, each.caption);
            EXPECT_TRUE(Result().empty());
        }
    }
    EXPECT_THAT(op->Boxes(), testing::IsEmpty());
}

TEST_F(ImageMathRun, EachBlockThatCannotBeHadIsNamed)
{
    const std::string source = Image("a.img", 1, 1, {{1}});
    const char* const words[] = {"Source1", "Source2", "Result"};
    for (int n = 1; n <= 3; ++n) {
        FailAllocation(n);
        ExpectFailure(RunImageMath(Math(kSum, source, source)),
                      std::string("Failure to allocate && lock memory for ") + words[n - 1] + "!",
                      "Global Memory Error!");
        FailAllocation(0);
    }
    View(1, 1, {1});
    FailAllocation(1);
    ExpectFailure(RunImageMath(Math(kSum, "", source)), "Failure to allocate && lock memory for Source1!",
                  "Global Memory Error!");
    FailAllocation(0);
    EXPECT_THAT(FilesLeft(), ElementsAre("a.img"));
}

TEST_F(ImageMathRun, ALaterFrameThatIsCutLeavesThoseBeforeItBeside)
{
    const std::string source = Image("a.seq", 1, 1, {{1}, {2}, {3}});
    ImageHeaderRecord header = PlainHeader(1025, 1);  // so wide that its count is taken as stored
    header.FrameCount = 3;
    const std::string cut = Image("cut.seq", header, {Frame(1025, 7), Frame(1025, 8)});
    PutFile(directory / "result.img", "former");
    const ImageMathOutcome outcome = RunImageMath(Math({.c1 = 0, .c2 = 1, .c3 = 0}, source, cut));
    ASSERT_TRUE(outcome.failure);
    EXPECT_THAT(outcome.failure->text, StartsWith("Failure to read Source2 (Frame 3) image data!\n"));
    EXPECT_EQ(FileContents(directory / ".result.img.new").size(), 512U + 2 * 2050);
    EXPECT_EQ(Result(), "former");
}

TEST_F(ImageMathRun, AFullDiskLeavesTheFormerResult)
{
    const std::string source = Image("a.img", 40, 20, {Frame(800, 5)});
    PutFile(directory / "result.img", "former");
    const ImageHeaderRecord before = ImageHeader;
    {
        const FullDisk disk(300);
        ExpectFailure(RunImageMath(Math(kFirstAlone, source, "")), "Unable to store ImageHeader to Result file!",
                      "File Error");
    }
    EXPECT_THAT(FilesLeft(), ElementsAre("a.img", "result.img"));
    {
        const FullDisk disk(1000);
        ExpectFailure(
            RunImageMath(Math(kFirstAlone, source, "")),
            "Unable to store image data to Result file!\nWhat was written stays in " + (directory / ".result.img.new"),
            "File Error");
    }
    EXPECT_EQ(FileContents(directory / ".result.img.new").size(), 1000U);
    EXPECT_EQ(Result(), "former");
    EXPECT_EQ(HeaderBytes(ImageHeader), HeaderBytes(before));
    // The next run takes the name again.
    EXPECT_FALSE(RunImageMath(Math(kFirstAlone, source, "")).failure);
    EXPECT_EQ(Result().size(), 512U + 1600);
    EXPECT_THAT(FilesLeft(), ElementsAre("a.img", "result.img"));
}

TEST_F(ImageMathRun, TheJournalOfAReplacedRecordingGoesWithIt)
{
    const ImageMath math = Math(kFirstAlone, Image("a.img", 1, 1, {{1}}), "");
    PutFile(math.result, "a recording");
    PutFile(math.result + ".frames", "its journal");
    {
        const FullDisk disk(300);
        EXPECT_TRUE(RunImageMath(math).failure);
    }
    EXPECT_EQ(FileContents(math.result + ".frames"), "its journal");
    EXPECT_FALSE(RunImageMath(math).failure);
    EXPECT_THAT(FilesLeft(), ElementsAre("a.img", "result.img"));
}

TEST_F(ImageMathRun, AResultThatCannotBeMadeIsTold)
{
    ImageMath math = Math(kFirstAlone, Image("a.img", 1, 1, {{1}}), "");
    math.result = directory / "gone/result.img";
    const ImageMathOutcome outcome = RunImageMath(math);
    ExpectFailure(outcome, "Unable to create Result file!", "File Error");
    EXPECT_TRUE(outcome.failure->namesResult);
    EXPECT_FALSE(ResultCanBeWritten(math.result));
    EXPECT_FALSE(ResultCanBeWritten(directory.Path()));
    EXPECT_TRUE(ResultCanBeWritten(directory / "result.img"));
    EXPECT_THAT(FilesLeft(), ElementsAre("a.img"));
}

TEST_F(ImageMathRun, AResultIsKnownAsASourceByAnyName)
{
    const std::string source = Image("a.img", 1, 1, {{1}});
    std::filesystem::create_symlink(source, directory / "soft.img");
    std::filesystem::create_hard_link(source, directory / "hard.img");
    for (const char* name : {"a.img", "A.IMG", "soft.img", "hard.img"}) {
        EXPECT_TRUE(ResultIsSource({.weights = kSum, .frame1 = source, .frame2 = "", .result = directory / name}));
        EXPECT_TRUE(ResultIsSource({.weights = kSum, .frame1 = "", .frame2 = source, .result = directory / name}));
    }
    EXPECT_FALSE(ResultIsSource({.weights = kSum, .frame1 = source, .frame2 = "", .result = directory / "b.img"}));
    // The part that a former run left is written anew.
    const std::string part = Image(".b.img.new", 1, 1, {{1}});
    EXPECT_TRUE(ResultIsSource({.weights = kSum, .frame1 = part, .frame2 = "", .result = directory / "b.img"}));
    EXPECT_FALSE(ResultIsSource({.weights = kSum, .frame1 = part, .frame2 = "", .result = directory / "c.img"}));
    // One that is left out isn't looked at.
    EXPECT_FALSE(ResultIsSource({.weights = {}, .frame1 = source, .frame2 = source, .result = source}));
}

// ---- The camera

// Live video of 4 x 3; pixels are picture + column + 100 x row.
class ImageMathOfCamera : public BoardTest {
  protected:
    ImageMathOfCamera()
    {
        PutFile(IniFilePath, "[Camera.2]\nMaxNumFramesToAllocate=3\n");
        write::camera.numBufFrames = 8;
        GoLive(4, 3);
        write::camera.ActiveConfig.Hactive = 3;
        write::camera.ActiveConfig.Vactive = 2;
        write::cal.CalType = 0;
    }
    ImageMathOutcome Run() const
    {
        return RunImageMath({.weights = {.c1 = 1, .c2 = 0, .c3 = 0}, .frame1 = "", .frame2 = "", .result = result});
    }
    void ExpectResult(const Frame& samples) const
    {
        const std::string bytes = FileContents(result);
        ASSERT_EQ(bytes.size(), 512U + 2 * samples.size());
        EXPECT_EQ(bytes.substr(512), SampleBytes(samples));
    }

    const std::string result = directory / "result.img";
};

// The columns of Hactive out of rows of Hroi.
TEST_F(ImageMathOfCamera, TheActivePartOfTheFrameIsTaken)
{
    EXPECT_FALSE(Run().failure);
    ExpectResult({1000, 1001, 1002, 1100, 1101, 1102});
    EXPECT_EQ(+ImageHeader.ImageWidth, 3);
    EXPECT_EQ(+ImageHeader.ImageHeight, 2);
    write::frames.LiveVideo = 0;
    write::frames.RawFrame = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    EXPECT_FALSE(Run().failure);
    ExpectResult({1, 2, 3, 5, 6, 7});
}

TEST_F(ImageMathOfCamera, AnActivePartBeyondTheFrameIsTheFrame)
{
    write::camera.ActiveConfig.Hactive = 640;
    write::camera.ActiveConfig.Vactive = 512;
    EXPECT_FALSE(Run().failure);
    ExpectResult({1000, 1001, 1002, 1003, 1100, 1101, 1102, 1103, 1200, 1201, 1202, 1203});
}

// The averaging tells of such a board, and calls it done.
TEST_F(ImageMathOfCamera, ABoardWithoutItsModulesGivesNoFrame)
{
    recordingBoard.answers["itx_get_modcnf"] = -3;
    ExpectFailure(Run(), "Failure to read Source1!", "Data Read Error!");
    EXPECT_FALSE(FileExists(result));
    EXPECT_EQ(op.Boxes().size(), 1U);
}

TEST_F(ImageMathOfCamera, AFrameThatDoesNotComeIsNoFormerOne)
{
    EXPECT_FALSE(Run().failure);
    SetBoardFrames({});
    recordingBoard.answers["icp_wait_vb"] = -1;
    recordingBoard.answers["icp_read_area"] = -1;
    ExpectFailure(Run(), "Failure to read Source1!", "Data Read Error!");
}

}  // namespace
}  // namespace kelvo
