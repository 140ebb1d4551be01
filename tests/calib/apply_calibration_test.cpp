// Sets applied to stored frames and to host memory, and recordings corrected in place. Frames are 2 rows of 4.
#include "calib/apply_calibration.h"

#include "grabber/correction.h"
#include "grabber/host_frames_write.h"
#include "imagefile/header_write.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/profile.h"
#include "state/buffer_state_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "support/calibration_fixture.h"
#include "support/stored_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

using Frame = std::vector<std::int16_t>;

constexpr std::size_t kPixels = 8;
const Frame kFirst = {1000, 1100, 1200, 1300, 1400, 1500, 1600, 1700};
const Frame kSecond = {2000, 2001, 2003, 2007, 2011, 2013, 2017, 2019};
const Frame kThird = {90, 91, 92, 93, 94, 95, 96, 97};

// The set's lists as CalibrationTest::PutSet writes them, and what they make of a detector's count.
double GainOf(std::size_t detector)
{
    return 1.0 + 0.25 * static_cast<double>(detector);
}
std::int16_t Corrected(std::int16_t count, std::size_t detector)
{
    const int difference = count - (100 + static_cast<int>(detector));
    return static_cast<std::int16_t>(std::trunc(difference / GainOf(detector)));
}
Frame Corrected(const Frame& frame)
{
    Frame corrected;
    for (std::size_t d = 0; d < frame.size(); ++d) corrected.push_back(Corrected(frame[d], d));
    return corrected;
}
Frame Reversed(Frame frame)
{
    std::ranges::reverse(frame);
    return frame;
}

class ApplyingASet : public CalibrationTest {
  protected:
    void SetUp() override
    {
        CalibrationTest::SetUp();
        image = InDirectory("raw.seq");
        cal = InDirectory("warm.cal");
        result = InDirectory("even.seq");
        PutSet(cal);
        WriteImageFile(image, PlainHeader(4, 2), {kFirst, kSecond, kThird});
        write::camera.numBufFrames = 0;
    }

    int Apply(int start, int end, int resultStart = 0)
    {
        return ApplyCalibration(hWndMain, image, cal, result, start, end, resultStart);
    }
    void ExpectOneBox(const std::string& text, const std::string& caption)
    {
        ASSERT_THAT(op->Boxes(), SizeIs(1));
        EXPECT_EQ(op->Boxes()[0].text, text);
        EXPECT_EQ(op->Boxes()[0].caption, caption);
    }
    void ExpectRefused(int start, int end, const std::string& text, const std::string& caption, int resultStart = 0)
    {
        const std::string before = FileContents(image);
        const ImageHeaderRecord header = ImageHeader;
        EXPECT_EQ(Apply(start, end, resultStart), 0);
        ExpectOneBox(text, caption);
        EXPECT_EQ(FileContents(image), before);
        EXPECT_EQ(std::memcmp(&ImageHeader, &header, sizeof header), 0);
        EXPECT_EQ(op->Texts("beep", "sound").size(), 1U);
        EXPECT_TRUE(result == image || !FileExists(result));
    }

    static ImageHeaderRecord HeaderIn(const std::string& path)
    {
        ImageHeaderRecord header;
        const std::string bytes = FileContents(path);
        EXPECT_GE(bytes.size(), sizeof header);
        std::memcpy(&header, bytes.data(), std::min(bytes.size(), sizeof header));
        return header;
    }
    // Frame f of a file with that many bytes before its counts.
    static Frame FrameIn(const std::string& path, std::size_t f, std::size_t offset = 0)
    {
        const std::string bytes = FileContents(path);
        const std::size_t start = 512 + f * (2 * kPixels + offset) + offset;
        Frame frame(kPixels);
        if (start + 2 * kPixels > bytes.size()) return {};
        std::memcpy(frame.data(), bytes.data() + start, 2 * kPixels);
        return frame;
    }
    static std::size_t SizeOf(const std::string& path) { return FileContents(path).size(); }

    // The text of the .cal with a line of it changed; an empty replacement takes the line out.
    void PutCal(const std::string& line, const std::string& replacement)
    {
        std::string text(kCalText);
        const std::size_t place = text.find(line + "\n");
        ASSERT_NE(place, std::string::npos);
        text.replace(place, line.size() + (replacement.empty() ? 1 : 0), replacement);
        PutFile(cal, text);
        ForgetProfile(cal);
    }

    // Host memory as a burst leaves it: so many slots, the frames in the first of them, in image order.
    static void PutHostFrames(std::size_t slots, const std::vector<Frame>& frames)
    {
        write::camera.numBufFrames = static_cast<std::int32_t>(slots);
        write::hostFrames.HostFramesAllocated = 1;
        write::hostFrames.HostFrames.assign(slots, Frame(kPixels, -1));
        std::ranges::copy(frames, write::hostFrames.HostFrames.begin());
        write::buffer.FramesInBuffer = static_cast<std::int32_t>(frames.size());
        write::hostFrames.HostFrameNext = static_cast<std::int32_t>(frames.size());
    }

    std::string image;
    std::string cal;
    std::string result;
};

// --- From a file to a file ------------------------------------------------------------------------------------------

TEST_F(ApplyingASet, SubtractsOffsetAndDividesByGainInReadoutOrder)
{
    EXPECT_EQ(Apply(0, 2), 1);
    EXPECT_THAT(op->Boxes(), IsEmpty());
    EXPECT_EQ(FrameIn(result, 0), Corrected(kFirst));
    EXPECT_EQ(FrameIn(result, 0)[1], 799);  // (1100 - 101) / 1.25 = 799.2
    EXPECT_EQ(FrameIn(result, 1), Corrected(kSecond));
    EXPECT_EQ(FrameIn(result, 2), Corrected(kThird));
    EXPECT_EQ(FrameIn(result, 2)[7], -3);  // (97 - 107) / 2.75 = -3.6: toward zero
    EXPECT_EQ(SizeOf(result), 512 + 3 * 2 * kPixels);
}

TEST_F(ApplyingASet, LeavesTheInputAlone)
{
    const std::string before = FileContents(image);
    EXPECT_EQ(Apply(0, 2), 1);
    EXPECT_EQ(FileContents(image), before);
}

TEST_F(ApplyingASet, LeavesTheCalibrationInForceAlone)
{
    write::cal.CalType = 1;
    write::cal.DecomList = {1, 2, 3};
    write::cal.OffsetList = {4};
    write::cal.GainList = {5};
    write::cal.IntensityCold = 77;
    EXPECT_EQ(Apply(0, 2), 1);
    EXPECT_EQ(CalType, 1);
    EXPECT_THAT(DecomList, ElementsAre(1, 2, 3));
    EXPECT_THAT(OffsetList, ElementsAre(4));
    EXPECT_THAT(GainList, ElementsAre(5));
    EXPECT_EQ(IntensityCold, 77);
}

TEST_F(ApplyingASet, MarksTheHeaderWithTheSetsSources)
{
    EXPECT_EQ(Apply(1, 2), 1);
    const ImageHeaderRecord header = HeaderIn(result);
    EXPECT_EQ(header.IntensityCold, 3000);
    EXPECT_EQ(header.IntensityHot, 9000);
    EXPECT_EQ(+header.TemperatureCold, 20.5F);
    EXPECT_EQ(+header.TemperatureHot, 25.0F);
    EXPECT_EQ(+header.FrameCount, 2U);
    EXPECT_EQ(header.ImageWidth, 4);
    EXPECT_EQ(std::memcmp(&ImageHeader, &header, sizeof header), 0);
}

TEST_F(ApplyingASet, SubtractsTheOffsetAloneWithAOnePointSet)
{
    PutCal("IntensityHot=9000", "IntensityHot=-10000");
    EXPECT_EQ(Apply(0, 0), 1);
    EXPECT_THAT(FrameIn(result, 0), ElementsAre(900, 999, 1098, 1197, 1296, 1395, 1494, 1593));
    EXPECT_EQ(HeaderIn(result).IntensityHot, -10000);
}

TEST_F(ApplyingASet, OfASetWithoutAColdSourceGivesAHeaderAndNoFrames)
{
    PutCal("IntensityCold=3000", "");
    EXPECT_EQ(Apply(0, 2), 1);
    EXPECT_THAT(op->Boxes(), IsEmpty());
    EXPECT_EQ(SizeOf(result), 512U);
    EXPECT_EQ(HeaderIn(result).IntensityCold, -10000);
    EXPECT_EQ(+HeaderIn(result).FrameCount, 3U);
}

TEST_F(ApplyingASet, StoresAHotTemperatureAtOrBelowTheColdOneAsNone)
{
    PutCal("TemperatureHot=25.000000", "TemperatureHot=20.500000");
    EXPECT_EQ(Apply(0, 0), 1);
    EXPECT_EQ(+HeaderIn(result).TemperatureCold, 20.5F);
    EXPECT_EQ(+HeaderIn(result).TemperatureHot, -999.0F);
}

TEST_F(ApplyingASet, StoresAColdTemperatureAtAbsoluteZeroAsNone)
{
    PutCal("TemperatureCold=20.500000", "TemperatureCold=-273.0");
    EXPECT_EQ(Apply(0, 0), 1);
    EXPECT_EQ(+HeaderIn(result).TemperatureCold, -999.0F);
    EXPECT_EQ(+HeaderIn(result).TemperatureHot, 25.0F);
}

TEST_F(ApplyingASet, ReadsAGainOfZeroAsItStandsAndGivesZero)
{
    PutGains(InDirectory("warm.gai"), {0.0F, 1, 1, 1, 1, 1, 1, 1e-9F});
    EXPECT_EQ(Apply(0, 0), 1);
    EXPECT_THAT(FrameIn(result, 0), ElementsAre(0, 999, 1098, 1197, 1296, 1395, 1494, 0));
}

TEST_F(ApplyingASet, KeepsTheLow16BitsOfAQuotientThatIsTooLarge)
{
    PutGains(InDirectory("warm.gai"), {0.01F, 1, 1, 1, 1, 1, 1, 1});
    EXPECT_EQ(Apply(0, 0), 1);
    const auto quotient = static_cast<std::int32_t>(900 / double{0.01F});  // 90000
    EXPECT_EQ(FrameIn(result, 0)[0], static_cast<std::int16_t>(quotient & 0xFFFF));
}

TEST_F(ApplyingASet, ClearsWhatTheTableDoesNotReach)
{
    // Detector 3 is replaced by 2, which is reached twice; the last entry names no detector of the frame.
    PutTable(InDirectory("warm.dcm"), {0, 1, 2, 2, 4, 5, 6, 8});
    EXPECT_EQ(Apply(0, 1), 1);
    Frame expected = Corrected(kFirst);
    expected[3] = expected[7] = 0;
    EXPECT_EQ(FrameIn(result, 0), expected);
    expected = Corrected(kSecond);
    expected[3] = expected[7] = 0;
    EXPECT_EQ(FrameIn(result, 1), expected);
}

TEST_F(ApplyingASet, OfAnOddFrameTakesTheLastOffsetAsZero)
{
    WriteImageFile(image, PlainHeader(3, 1), {{1000, 1000, 1000}});
    PutTable(InDirectory("warm.dcm"), {0, 1, 2});
    PutGains(InDirectory("warm.gai"), {1, 1, 1});
    PutOffsets(InDirectory("warm.off"), {10, 20});
    EXPECT_EQ(Apply(0, 0), 1);
    EXPECT_EQ(FileContents(result).substr(512), SampleBytes({990, 980, 1000}));
}

TEST_F(ApplyingASet, PutsTheRangeToTheResultsStart)
{
    EXPECT_EQ(Apply(1, 2, 3), 1);
    EXPECT_THAT(FrameIn(result, 0), testing::Each(0));
    EXPECT_EQ(FrameIn(result, 3), Corrected(kSecond));
    EXPECT_EQ(FrameIn(result, 4), Corrected(kThird));
    EXPECT_EQ(SizeOf(result), 512 + 5 * 2 * kPixels);
}

TEST_F(ApplyingASet, CarriesEachFramesHeaderAlong)
{
    ImageHeaderRecord header = PlainHeader(4, 2);
    header.ImageHeaderDataOffset = 80;
    const std::string one(80, 'a');
    const std::string two(80, 'b');
    PutFile(image, HeaderBytes(header) + one + SampleBytes(kFirst) + two + SampleBytes(kSecond));
    EXPECT_EQ(Apply(0, 1), 1);
    const std::string bytes = FileContents(result);
    EXPECT_EQ(bytes.size(), 512 + 2 * (80 + 2 * kPixels));
    EXPECT_EQ(bytes.substr(512, 80), one);
    EXPECT_EQ(bytes.substr(512 + 80 + 2 * kPixels, 80), two);
    EXPECT_EQ(FrameIn(result, 0, 80), Corrected(kFirst));
    EXPECT_EQ(FrameIn(result, 1, 80), Corrected(kSecond));
}

TEST_F(ApplyingASet, TellsItsSteps)
{
    EXPECT_EQ(Apply(0, 2), 1);
    EXPECT_THAT(op->Texts("status", "text"),
                testing::IsSupersetOf({"Loading decommutation list...", "Loading gain list...",
                                       "Loading offset list...", " Correcting frame 0 of 0 to 2"}));
}

// --- In place -------------------------------------------------------------------------------------------------------

TEST_F(ApplyingASet, InPlaceRewritesTheHeaderAndTheRange)
{
    result = image;
    op->Answer({Button::kYes});
    EXPECT_EQ(Apply(1, 1, 1), 1);
    EXPECT_EQ(FrameIn(image, 0), kFirst);
    EXPECT_EQ(FrameIn(image, 1), Corrected(kSecond));
    EXPECT_EQ(FrameIn(image, 2), kThird);
    EXPECT_EQ(+HeaderIn(image).FrameCount, 1U);
    EXPECT_EQ(HeaderIn(image).IntensityCold, 3000);
    EXPECT_EQ(SizeOf(image), 512 + 3 * 2 * kPixels);
}

TEST_F(ApplyingASet, InPlaceWithALaterStartOverwritesFramesThatAreStillToBeRead)
{
    result = image;
    op->Answer({Button::kYes});
    EXPECT_EQ(Apply(0, 1, 1), 1);
    EXPECT_EQ(FrameIn(image, 0), kFirst);
    EXPECT_EQ(FrameIn(image, 1), Corrected(kFirst));
    EXPECT_EQ(FrameIn(image, 2), Corrected(Corrected(kFirst)));
}

TEST_F(ApplyingASet, AnExistingResultIsNotCut)
{
    WriteImageFile(result, PlainHeader(4, 2), {kThird, kThird, kThird, kThird});
    op->Answer({Button::kYes});
    EXPECT_EQ(Apply(0, 1), 1);
    EXPECT_EQ(FrameIn(result, 0), Corrected(kFirst));
    EXPECT_EQ(FrameIn(result, 1), Corrected(kSecond));
    EXPECT_EQ(FrameIn(result, 2), kThird);
    EXPECT_EQ(SizeOf(result), 512 + 4 * 2 * kPixels);
}

// --- What is refused ------------------------------------------------------------------------------------------------

TEST_F(ApplyingASet, RefusesAnImageThatCannotBeOpened)
{
    const std::string before = FileContents(image);
    image = InDirectory("gone.seq");
    EXPECT_EQ(Apply(0, 0), 0);
    ExpectOneBox(image, "Unable to open image file!");
}

TEST_F(ApplyingASet, RefusesEmptyHostMemory)
{
    image.clear();
    EXPECT_EQ(Apply(0, 0), 0);
    ExpectOneBox("No filename and no frames in Host RAM!", "Invalid image filename!");
}

TEST_F(ApplyingASet, RefusesASetThatCannotBeOpened)
{
    cal = InDirectory("gone.cal");
    ExpectRefused(0, 0, cal, "Unable to open calibration file!");
}

TEST_F(ApplyingASet, AsksBeforeItWritesOverAResult)
{
    WriteImageFile(result, PlainHeader(4, 2), {kThird});
    const std::string before = FileContents(result);
    op->Answer({Button::kNo});
    EXPECT_EQ(Apply(0, 0), 0);
    ExpectOneBox("Result file already exists!\nWrite over it?", "Overwrite file?");
    EXPECT_THAT(op->Boxes()[0].buttons, ElementsAre("yes", "no"));
    EXPECT_EQ(FileContents(result), before);
}

TEST_F(ApplyingASet, RefusesARangeThatIsNone)
{
    ExpectRefused(-1, 0, "StartFrame less than zero!", "StartFrame Error!");
}

TEST_F(ApplyingASet, RefusesAnEndBeforeTheStart)
{
    ExpectRefused(1, 0, "EndFrame less than StartFrame!", "EndFrame Error!");
}

TEST_F(ApplyingASet, RefusesAResultStartBelowZero)
{
    ExpectRefused(0, 0, "Resultant start frame less than zero!", "Resultant StartFrame Error!", -1);
}

TEST_F(ApplyingASet, ChecksInTheOrderOfTheFields)
{
    image = InDirectory("gone.seq");
    cal = InDirectory("gone.cal");
    EXPECT_EQ(Apply(-1, -2, -1), 0);
    ExpectOneBox(image, "Unable to open image file!");
}

TEST_F(ApplyingASet, AsksBeforeItCorrectsACalibratedFile)
{
    ImageHeaderRecord header = PlainHeader(4, 2);
    header.IntensityCold = 1;
    WriteImageFile(image, header, {kFirst});
    op->Answer({Button::kNo});
    ExpectRefused(0, 0, "Image file has already been calibrated: Continue?", image);
}

TEST_F(ApplyingASet, CorrectsACalibratedFileASecondTimeWhereTheOperatorWantsIt)
{
    EXPECT_EQ(Apply(0, 0), 1);
    image = result;
    result = InDirectory("twice.seq");
    op->Answer({Button::kYes});
    EXPECT_EQ(Apply(0, 0), 1);
    EXPECT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(FrameIn(result, 0), Corrected(Corrected(kFirst)));
}

TEST_F(ApplyingASet, RefusesFloatsSwappedFilesAndTheSpectrometersOwn)
{
    ImageHeaderRecord floats = PlainHeader(4, 2);
    floats.SampleBytes = 4;
    floats.DataType = 8;
    PutFile(image, HeaderBytes(floats) + std::string(32, '\0'));
    EXPECT_EQ(Apply(0, 0), 0);
    ImageHeaderRecord swapped = PlainHeader(4, 2);
    swapped.ByteSwap = 0;
    WriteImageFile(image, swapped, {kFirst});
    EXPECT_EQ(Apply(0, 0), 0);
    PutFile(image, "\x01" + std::string(1023 + 32, '\0'));
    EXPECT_EQ(Apply(0, 0), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(3));
    EXPECT_THAT(op->Boxes()[0].text, HasSubstr("The file holds floats, not counts."));
    EXPECT_THAT(op->Boxes()[1].text, HasSubstr("The file is byte-swapped."));
    EXPECT_THAT(op->Boxes()[2].text, HasSubstr("spectrometer trigger"));
    for (const auto& box : op->Boxes()) EXPECT_EQ(box.caption, "Unable to apply a calibration!");
    EXPECT_FALSE(FileExists(result));
}

TEST_F(ApplyingASet, RefusesAHeaderThatMakesNoFrames)
{
    ImageHeaderRecord header = PlainHeader(4, 2);
    header.ImageWidth = -4;
    WriteImageFile(image, header, {kFirst});
    EXPECT_EQ(Apply(0, 0), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_THAT(op->Boxes()[0].text, HasSubstr("makes no frames"));
}

TEST_F(ApplyingASet, NamesTheListThatCannotBeRead)
{
    struct Row {
        const char* file;
        const char* title;
        const char* status;
    };
    std::size_t boxes = 0;
    for (const Row& row : {Row{"warm.dcm", "Decommutation File Load Error!", "Loading decommutation list..."},
                           Row{"warm.gai", "Gain File Load Error!", "Loading gain list..."},
                           Row{"warm.off", "Offset File Load Error!", "Loading offset list..."}}) {
        PutSet(cal);
        DeleteFileNamed(InDirectory(row.file));
        EXPECT_EQ(Apply(0, 0), 0);
        ASSERT_EQ(op->Boxes().size(), boxes + 2);
        EXPECT_EQ(op->Boxes()[boxes].text, "Failed to open file: " + InDirectory(row.file));
        EXPECT_EQ(op->Boxes()[boxes + 1].text, InDirectory(row.file));
        EXPECT_EQ(op->Boxes()[boxes + 1].caption, row.title);
        EXPECT_EQ(op->Texts("status", "text").back(), row.status);
        boxes += 2;
    }
    EXPECT_FALSE(FileExists(result));
}

TEST_F(ApplyingASet, RefusesAListThatIsShorterThanTheFrame)
{
    PutGains(InDirectory("warm.gai"), {1, 1, 1, 1, 1, 1, 1});
    EXPECT_EQ(Apply(0, 0), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(2));
    EXPECT_EQ(op->Boxes()[0].text, "Failed to read file: " + InDirectory("warm.gai"));
    EXPECT_EQ(op->Boxes()[1].caption, "Gain File Load Error!");
}

TEST_F(ApplyingASet, FindsTheListsBesideTheCalFileWhateverPathItNames)
{
    PutCal("GainFile=warm.gai", "GainFile=D:\\elsewhere\\WARM.GAI");
    EXPECT_EQ(Apply(0, 0), 1);
    EXPECT_EQ(FrameIn(result, 0), Corrected(kFirst));
}

TEST_F(ApplyingASet, ChangesNothingWhereMemoryIsRefused)
{
    int refused = 0;
    for (int n = 1; n < 16; ++n) {
        DeleteFileNamed(result);
        FailAllocation(n);
        const int done = Apply(0, 0);
        FailAllocation(0);
        if (done) {  // without memory for the fast way the plain one serves
            EXPECT_EQ(FrameIn(result, 0), Corrected(kFirst)) << n;
            continue;
        }
        ++refused;
        EXPECT_EQ(op->Boxes().back().text, "Failure to allocate memory!") << n;
        EXPECT_EQ(op->Boxes().back().caption, "Memory Error") << n;
        EXPECT_FALSE(FileExists(result)) << n;
    }
    EXPECT_EQ(refused, 6);  // three lists, the detectors that are reached, two blocks
    EXPECT_EQ(FrameIn(result, 0), Corrected(kFirst));
}

TEST_F(ApplyingASet, RefusesAResultThatCannotBeMade)
{
    result = InDirectory("no such directory/even.seq");
    EXPECT_EQ(Apply(0, 0), 0);
    ExpectOneBox(result, "Unable to open result file!");
}

// --- Failures on the way --------------------------------------------------------------------------------------------

TEST_F(ApplyingASet, AReadFailurePartWayEndsTheRunWithItsFramesAndTheHeaderOfAll)
{
    EXPECT_EQ(Apply(1, 5), 1);
    ExpectOneBox("Error reading uncalibrated frame #3.", "Error reading image data");
    EXPECT_EQ(+HeaderIn(result).FrameCount, 5U);
    EXPECT_EQ(SizeOf(result), 512 + 2 * 2 * kPixels);
    EXPECT_EQ(FrameIn(result, 1), Corrected(kThird));
}

TEST_F(ApplyingASet, OfAnEmptyInputGivesNoFrames)
{
    PutFile(image, HeaderBytes(PlainHeader(4, 2)));
    EXPECT_EQ(CountImageFrames(image), 0);
    EXPECT_EQ(Apply(0, 0), 1);
    ExpectOneBox("Error reading uncalibrated frame #0.", "Error reading image data");
    EXPECT_EQ(SizeOf(result), 512U);
}

TEST_F(ApplyingASet, AWriteFailureEndsTheRun)
{
    SetFaultOnce("disk full", 2);  // the header is taken
    EXPECT_EQ(Apply(0, 2), 1);
    ExpectOneBox("Error writing calibrated frame #0.", "Error writing image data");
}

TEST_F(ApplyingASet, AHeaderThatCannotBeWrittenLeavesNoResult)
{
    SetFaultOnce("disk full", 1);
    ExpectRefused(0, 2, result, "Error writing image data");
}

// --- Host memory ----------------------------------------------------------------------------------------------------

TEST_F(ApplyingASet, ToHostMemoryGathersIntoImageOrder)
{
    PutHostFrames(4, {});
    result.clear();
    EXPECT_EQ(Apply(1, 2, 0), 1);
    EXPECT_THAT(op->Boxes(), IsEmpty());
    EXPECT_EQ(HostFrames[1], Reversed(Corrected(kSecond)));  // the set's table is backwards
    EXPECT_EQ(HostFrames[2], Reversed(Corrected(kThird)));
    EXPECT_THAT(HostFrames[0], testing::Each(-1));
    EXPECT_EQ(FramesInBuffer, 3);
    EXPECT_EQ(HostFrameNext, 3);
}

TEST_F(ApplyingASet, FramesOfHostMemoryAreCorrectedPixelByPixelInImageOrder)
{
    PutHostFrames(4, {Reversed(kFirst), Reversed(kSecond)});
    image.clear();
    result.clear();
    EXPECT_EQ(Apply(0, 1), 1);
    EXPECT_EQ(HostFrames[0], Reversed(Corrected(kFirst)));
    EXPECT_EQ(HostFrames[1], Reversed(Corrected(kSecond)));
    EXPECT_EQ(FramesInBuffer, 2);
}

TEST_F(ApplyingASet, FramesOfHostMemoryGoToAFileAsTheyStand)
{
    PutHostFrames(4, {Reversed(kFirst), Reversed(kSecond)});
    image.clear();
    EXPECT_EQ(Apply(0, 1), 1);
    EXPECT_EQ(FrameIn(result, 0), Reversed(Corrected(kFirst)));
    EXPECT_EQ(FrameIn(result, 1), Reversed(Corrected(kSecond)));
    EXPECT_EQ(HostFrames[0], Reversed(kFirst));
    const ImageHeaderRecord header = HeaderIn(result);
    EXPECT_EQ(header.ImageWidth, 4);
    EXPECT_EQ(header.ImageHeight, 2);
    EXPECT_EQ(header.SampleBytes, 2);
    EXPECT_EQ(header.ImageHeaderDataOffset, 0);
    EXPECT_EQ(+header.FrameCount, 2U);
    EXPECT_EQ(header.IntensityCold, 3000);
}

TEST_F(ApplyingASet, AFrameBeyondThoseOfHostMemoryIsAReadFailure)
{
    PutHostFrames(4, {kFirst});
    image.clear();
    EXPECT_EQ(Apply(0, 1), 1);
    ExpectOneBox("Error reading uncalibrated frame #1.", "Error reading image data");
}

TEST_F(ApplyingASet, RefusesASlotThatHostMemoryHasNot)
{
    PutHostFrames(2, {});
    result.clear();
    EXPECT_EQ(Apply(1, 2), 0);
    ExpectOneBox("Host RAM has room for 2 frames; frame 2 has no place in it.", "EndFrame Error!");
    EXPECT_EQ(FramesInBuffer, 0);
    EXPECT_THAT(HostFrames[1], testing::Each(-1));
}

TEST_F(ApplyingASet, RefusesFramesOfAnotherSizeForHostMemory)
{
    PutHostFrames(4, {});
    WriteImageFile(image, PlainHeader(2, 4), {kFirst});
    result.clear();
    EXPECT_EQ(Apply(0, 0), 0);
    ExpectOneBox("The frames are 2 x 4 pixels, those of the camera 4 x 2.", "Unable to use Host RAM!");
}

TEST_F(ApplyingASet, LeavesTheHeaderOnViewWhereTheResultIsHostMemory)
{
    PutHostFrames(4, {});
    result.clear();
    write::file.ImageHeader = PlainHeader(17, 19);
    EXPECT_EQ(Apply(0, 0), 1);
    EXPECT_EQ(ImageHeader.ImageWidth, 17);
}

TEST(CountingFrames, GoesByTheLengthAndByHostMemory)
{
    TestOperator op;
    const TempDirectory directory;
    const std::string path = directory / "a.seq";
    WriteImageFile(path, PlainHeader(4, 2), {kFirst, kSecond, kThird});
    EXPECT_EQ(CountImageFrames(path), 3);
    PutFile(path, FileContents(path).substr(0, 512 + 40));  // two frames and a part
    EXPECT_EQ(CountImageFrames(path), 2);
    EXPECT_EQ(CountImageFrames(directory / "gone.seq"), 0);
    EXPECT_THAT(op.Boxes(), IsEmpty());
    PutFile(path, "short");
    EXPECT_EQ(CountImageFrames(path), 0);
    EXPECT_THAT(op.Boxes(), SizeIs(1));
    write::buffer.FramesInBuffer = 5;
    EXPECT_EQ(CountImageFrames(""), 5);
}

// --- Recordings, in place -------------------------------------------------------------------------------------------

class CorrectingARecording : public ApplyingASet {
  protected:
    void SetUp() override
    {
        ApplyingASet::SetUp();
        write::cal.CalType = 2;
        write::cal.DecomList = {7, 6, 5, 4, 3, 2, 1, 0};
        write::cal.OffsetList = {100, 101, 102, 103, 104, 105, 106, 107};
        write::cal.GainList = {1.0F, 1.25F, 1.5F, 1.75F, 2.0F, 2.25F, 2.5F, 2.75F};
        CalibrationListsChanged();
    }
    void PutWithFrameHeaders(const std::vector<Frame>& frames)
    {
        ImageHeaderRecord header = PlainHeader(4, 2);
        header.ImageHeaderDataOffset = 80;
        std::string bytes = HeaderBytes(header);
        for (const Frame& frame : frames) bytes += std::string(80, 'h') + SampleBytes(frame);
        PutFile(image, bytes);
    }
};

TEST_F(CorrectingARecording, LeavesImageOrderAndAnUnmarkedHeader)
{
    const std::string header = FileContents(image).substr(0, 512);
    EXPECT_EQ(ApplyCalToFile(image), 1);
    EXPECT_THAT(op->Boxes(), IsEmpty());
    EXPECT_EQ(FrameIn(image, 0), Reversed(Corrected(kFirst)));
    EXPECT_EQ(FrameIn(image, 1), Reversed(Corrected(kSecond)));
    EXPECT_EQ(FrameIn(image, 2), Reversed(Corrected(kThird)));
    EXPECT_EQ(FileContents(image).substr(0, 512), header);
}

TEST_F(CorrectingARecording, SubtractsOffsetsAloneAtType1)
{
    write::cal.CalType = 1;
    EXPECT_EQ(ApplyCalToFile(image), 1);
    EXPECT_THAT(FrameIn(image, 0), ElementsAre(1593, 1494, 1395, 1296, 1197, 1098, 999, 900));
}

TEST_F(CorrectingARecording, DoesNothingWithoutACalibration)
{
    write::cal.CalType = 0;
    const std::string before = FileContents(image);
    EXPECT_EQ(ApplyCalToFile(image), 1);
    EXPECT_EQ(ApplyCalToFile("gone"), 1);
    EXPECT_EQ(CorrectRecordedFrames(image, 0, 3), 1);
    EXPECT_EQ(FileContents(image), before);
}

TEST_F(CorrectingARecording, LeavesFramesAtAnyOtherType)
{
    write::cal.CalType = 3;
    const std::string before = FileContents(image);
    EXPECT_EQ(ApplyCalToFile(image), 1);
    EXPECT_EQ(FileContents(image), before);
}

// The table counts from the start of the block: with a FrameHeader of 80 bytes the first 40 counts are its own.
TEST_F(CorrectingARecording, CountsFromTheStartOfTheBlock)
{
    PutWithFrameHeaders({kFirst});
    EXPECT_EQ(ApplyCalToFile(image), 1);
    const Frame ofTheHeader(kPixels, 0x6868);  // "hh"
    EXPECT_EQ(FrameIn(image, 0, 80), Reversed(Corrected(ofTheHeader)));
    EXPECT_EQ(FileContents(image).substr(512, 80), std::string(80, 'h'));
}

TEST_F(CorrectingARecording, CountsFromThePixelsWhereItIsTheRecordersOwn)
{
    PutWithFrameHeaders({kFirst, kSecond, kThird});
    EXPECT_EQ(CorrectRecordedFrames(image, 0, 3), 1);
    EXPECT_EQ(FrameIn(image, 0, 80), Reversed(Corrected(kFirst)));
    EXPECT_EQ(FrameIn(image, 2, 80), Reversed(Corrected(kThird)));
    EXPECT_EQ(FileContents(image).substr(512, 80), std::string(80, 'h'));
}

TEST_F(CorrectingARecording, GivesWhatTheLivePictureShows)
{
    PutWithFrameHeaders({kSecond});
    write::cal.DecomList = {0, 1, 1, 3, 7, 6, 5, 4};
    CalibrationListsChanged();
    Frame live(kPixels);
    CorrectLiveFrame(kSecond, live, 0);
    EXPECT_EQ(CorrectRecordedFrames(image, 0, 1), 1);
    EXPECT_EQ(FrameIn(image, 0, 80), live);
}

TEST_F(CorrectingARecording, TakesARangeOfFrames)
{
    EXPECT_EQ(ApplyCalToFrames(image, 1, 1), 1);
    EXPECT_EQ(FrameIn(image, 0), kFirst);
    EXPECT_EQ(FrameIn(image, 1), Reversed(Corrected(kSecond)));
    EXPECT_EQ(FrameIn(image, 2), kThird);
    EXPECT_EQ(CorrectRecordedFrames(image, 2, 7), 1);
    EXPECT_EQ(FrameIn(image, 0), kFirst);
    EXPECT_EQ(FrameIn(image, 2), Reversed(Corrected(kThird)));
}

TEST_F(CorrectingARecording, CutFramesAreLeftAsTheyAre)
{
    const std::string whole = FileContents(image);
    PutFile(image, whole.substr(0, 512 + 40));
    EXPECT_EQ(ApplyCalToFile(image), 1);
    EXPECT_EQ(FrameIn(image, 1), Reversed(Corrected(kSecond)));
    EXPECT_EQ(FileContents(image).substr(544), whole.substr(544, 8));
    PutFile(image, whole.substr(0, 512));
    EXPECT_EQ(ApplyCalToFile(image), 1);
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(CorrectingARecording, TellsAFileThatCannotBeOpened)
{
    EXPECT_EQ(ApplyCalToFile(InDirectory("gone.seq")), 0);
    ExpectOneBox("Unable to open file!", "Filename Error!");
    EXPECT_EQ(op->Texts("beep", "sound").size(), 1U);
}

TEST_F(CorrectingARecording, TellsAShortReadAndKeepsWhatWasDone)
{
    SetFaultOnce("disk read", 4);  // of the reading: opening, header, first frame, second frame
    EXPECT_EQ(ApplyCalToFile(image), 0);
    ExpectOneBox("Unable to read uncalibrated data from file!", "File Read Error!");
    ClearFaults();
    EXPECT_EQ(FrameIn(image, 0), Reversed(Corrected(kFirst)));
    EXPECT_EQ(FrameIn(image, 1), kSecond);
}

TEST_F(CorrectingARecording, TellsAShortWrite)
{
    SetFaultOnce("disk full", 2);
    EXPECT_EQ(ApplyCalToFile(image), 0);
    ExpectOneBox("Unable to write calibrated data to file!", "File Write Error!");
}

TEST_F(CorrectingARecording, RefusesFramesOfAnotherSize)
{
    WriteImageFile(image, PlainHeader(2, 4), {kFirst});
    const std::string before = FileContents(image);
    EXPECT_EQ(ApplyCalToFile(image), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_THAT(op->Boxes()[0].text, HasSubstr("The frames are 2 x 4 pixels, those of the camera 4 x 2."));
    EXPECT_EQ(FileContents(image), before);
}

TEST_F(CorrectingARecording, TellsThatMemoryIsRefused)
{
    FailAllocation(2);
    EXPECT_EQ(ApplyCalToFile(image), 0);
    FailAllocation(0);
    ExpectOneBox("Failure to allocate memory!", "Memory Error");
    EXPECT_EQ(FrameIn(image, 0), kFirst);
}

TEST_F(CorrectingARecording, LeavesTheHeaderOnView)
{
    write::file.ImageHeader = PlainHeader(17, 19);
    EXPECT_EQ(ApplyCalToFile(image), 1);
    EXPECT_EQ(ImageHeader.ImageWidth, 17);
}

}  // namespace
}  // namespace kelvo
