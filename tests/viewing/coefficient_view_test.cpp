#include "viewing/coefficient_view.h"

#include "display/units.h"
#include "imagefile/header_write.h"
#include "platform/memory.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows_write.h"
#include "support/operator.h"
#include "support/stored_files.h"
#include "ui/status.h"
#include "viewing/viewing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

namespace kelvo {
namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;

class CoefficientView : public ::testing::Test {
  protected:
    CoefficientView()
    {
        SetDefaultDir(directory_.Path());
        write::display.DisplayLow = 0;
        write::display.DisplayHigh = 1000;
        write::camera.ActiveConfig.Xzoom = write::camera.ActiveConfig.Yzoom = 1;
        write::camera.ActiveConfig.Hroi = 2;
        write::camera.ActiveConfig.Vroi = 2;
        PutFile(CameraFilePath,
                "[Camera.1]\nHroi=2\nVroi=2\nHtotal=2\nVtotal=2\n[Camera.7]\nHroi=3\nVroi=1\nHtotal=3\nVtotal=1\n");
        PutFile(IniFilePath, "[Setup]\nActiveCamera=1\n");
    }

    std::string File(std::string_view name) const { return directory_ / name; }

    template <typename T>
    std::string List(std::string_view name, const std::vector<T>& entries)
    {
        PutFile(File(name), {reinterpret_cast<const char*>(entries.data()), entries.size() * sizeof(T)});
        return File(name);
    }

    static std::vector<std::int16_t> Pixels()
    {
        const auto pixels = ImageBufferPixels(0);
        return {pixels.begin(), pixels.begin() + ImageHeader.ImageWidth * ImageHeader.ImageHeight};
    }

    TestOperator operator_;
    TempDirectory directory_;
};

TEST_F(CoefficientView, KnowsItsFilesByTheirNames)
{
    for (const char* name : {"a.gai", "a.OFF", "x/a.Bad", "a.noi", "a.dcm", "DECOM.TMP", "decom.tmp"}) {
        EXPECT_TRUE(IsCoefficientFile(name)) << name;
    }
    for (const char* name : {"a.img", "a.cal", "other.tmp", "gai", "baddet.tmp"})
        EXPECT_FALSE(IsCoefficientFile(name)) << name;
}

TEST_F(CoefficientView, ShowsGainsScaledToTheCamerasRange)
{
    // 0.5 to 2.5: the span of 2 takes the camera's 1000 counts, 500 a unit.
    EXPECT_EQ(ViewCoefficientFile(List<float>("c.gai", {0.5F, 1.0F, 1.5F, 2.5F})), 1);
    EXPECT_THAT(Pixels(), ElementsAre(0, 250, 500, 1000));
    EXPECT_FLOAT_EQ(ViewScaleGain, 500.0F);
    EXPECT_FLOAT_EQ(ViewScaleOffset, 0.5F);
    EXPECT_EQ(ImageHeader.DisplayHigh, 4095);
    EXPECT_EQ(ImageHeader.ByteSwap, 0);
    EXPECT_EQ(ViewingFile, 1);
    EXPECT_EQ(DisplayUnit, 21) << "values of floats";
    EXPECT_EQ(IsUnitAvailable(18), 1) << "which are gains";
    EXPECT_EQ(IsUnitAvailable(0), 0);
}

TEST_F(CoefficientView, ShowsOffsetsAsTheyStand)
{
    EXPECT_EQ(ViewCoefficientFile(List<std::int16_t>("c.off", {-5, 0, 7, 300})), 1);
    EXPECT_THAT(Pixels(), ElementsAre(-5, 0, 7, 300));
    EXPECT_EQ(DisplayUnit, 19);
}

TEST_F(CoefficientView, TheHeaderTellsTheTypeOfTheEntries)
{
    PutFile(File("c.bad"), "0,1\n");
    const std::pair<std::string, int> rows[] = {
        {List<float>("c.gai", {1, 2, 3, 4}), 8},        {List<std::int16_t>("c.off", {1, 2, 3, 4}), 1},
        {List<std::int16_t>("c.noi", {1, 2, 3, 4}), 1}, {File("c.bad"), 2},
        {List<std::int32_t>("c.dcm", {1, 2, 3, 4}), 4}, {List<std::int32_t>("decom.tmp", {1, 2, 3, 4}), 4},
    };
    for (const auto& [path, type] : rows) {
        EXPECT_EQ(ViewCoefficientFile(path), 1) << path;
        EXPECT_EQ(+ImageHeader.DataType, type) << path;
        EXPECT_EQ(+ImageHeader.SampleBytes, 2) << "of the counts on view";
    }
}

// The list is read and converted before the video is frozen for it.
TEST_F(CoefficientView, AListThatIsNotReadLeavesLiveVideoAndThePicture)
{
    PutFile(File("c.bad"), "0,1\n");
    const std::string lists[] = {List<float>("c.gai", {1, 2, 3, 4}), List<std::int16_t>("c.off", {1, 2, 3, 4}),
                                 List<std::int32_t>("c.dcm", {1, 2, 3, 4}), File("c.bad")};
    write::frames.CameraOn = 1;
    write::frames.LiveVideo = 1;
    write::frames.LiveFrame = {1, 2, 3, 4};
    write::frames.ImageBuffer = {9, 0, 8, 0, 7, 0, 6, 0};
    write::file.ImageHeader = PlainHeader(9, 9);
    write::display.ViewScaleGain = 3.0F;
    write::display.ViewScaleOffset = 4.0F;
    write::display.Xpan = 1;
    write::display.DisplayUnit = 0;
    write::display.ColorBarShown = 1;
    StatusMessage("before", 2);
    const auto buffer = ImageBuffer;
    const std::string header = HeaderBytes(ImageHeader);

    const auto expectNothingChanged = [&](const std::string& what) {
        EXPECT_EQ(LiveVideo, 1) << what;
        EXPECT_EQ(ViewingFile, 0) << what;
        EXPECT_EQ(ImageBuffer, buffer) << what;
        EXPECT_EQ(HeaderBytes(ImageHeader), header) << what;
        EXPECT_EQ(ViewScaleGain, 3.0F) << what;
        EXPECT_EQ(ViewScaleOffset, 4.0F) << what;
        EXPECT_EQ(Xpan, 1) << what;
        EXPECT_EQ(DisplayUnit, 0) << what;
        EXPECT_EQ(ColorBarShown, 1) << what;
        EXPECT_EQ(StatusText, "before") << what;
        EXPECT_EQ(ViewFilePath, "") << what;
    };
    std::size_t boxes = 0;
    for (const std::string& path : lists) {
        for (const int allocation : {1, 2}) {
            FailAllocation(allocation);
            EXPECT_EQ(ViewCoefficientFile(path), 0) << path;
            EXPECT_EQ(operator_.Boxes().size(), ++boxes) << path;
            expectNothingChanged(path);
        }
    }
    PutFile(File("short.off"), "1");
    PutFile(File("c.xyz"), "data");
    for (const char* name : {"none.off", "short.off", "c.xyz"}) {
        EXPECT_EQ(ViewCoefficientFile(File(name)), 0) << name;
        EXPECT_EQ(operator_.Boxes().size(), ++boxes) << name;
        expectNothingChanged(name);
    }
}

TEST_F(CoefficientView, AListTakesThePlaceOfLiveVideo)
{
    write::frames.CameraOn = 1;
    write::frames.LiveVideo = 1;
    write::frames.LiveFrame = {1, 2, 3, 4};
    EXPECT_EQ(ViewCoefficientFile(List<std::int16_t>("c.off", {-5, 0, 7, 300})), 1);
    EXPECT_EQ(LiveVideo, 0);
    EXPECT_EQ(ViewingFile, 1);
    EXPECT_THAT(Pixels(), ElementsAre(-5, 0, 7, 300));
}

TEST_F(CoefficientView, ATableOfEqualEntriesSpansAHundred)
{
    PutFile(CameraFilePath, "[Camera.1]\nHtotal=2\nVtotal=1\n");
    EXPECT_EQ(ViewCoefficientFile(List<std::int32_t>("c.dcm", {9, 9})), 1);
    EXPECT_FLOAT_EQ(ViewScaleGain, 10.0F);  // 1000 counts over a span of 100
    EXPECT_FLOAT_EQ(ViewScaleOffset, 9.0F);
    EXPECT_THAT(Pixels(), ElementsAre(0, 0));
}

TEST_F(CoefficientView, EveryListedBadPixelIsFourThousand)
{
    PutFile(File("c.bad"), "   0,   1\n   1,   0\n");
    EXPECT_EQ(ViewCoefficientFile(File("c.bad")), 1);
    EXPECT_THAT(Pixels(), ElementsAre(0, 4000, 4000, 0));
    EXPECT_EQ(ImageHeader.DisplayLow, 0);
    EXPECT_EQ(ImageHeader.DisplayHigh, 255);
}

TEST_F(CoefficientView, TheCompanionNamesTheCamera)
{
    PutFile(File("c.cal"), "[Setup]\nActiveCamera=7\n");
    EXPECT_EQ(ViewCoefficientFile(List<std::int16_t>("c.off", {1, 2, 3})), 1);
    EXPECT_EQ(ImageHeader.ImageWidth, 3);
    EXPECT_EQ(ImageHeader.ImageHeight, 1);
}

TEST_F(CoefficientView, ANoiseFileTakesItsCalibrationFromTheCompanion)
{
    PutFile(File("c.cal"),
            "[Setup]\nActiveCamera=1\nVideoGain1=9\n"
            "[Calibration]\nIntensityCold=1000\nIntensityHot=3000\nTemperatureCold=20.0\nTemperatureHot=30."
            "5\nNumFrames=30\n");
    EXPECT_EQ(ViewCoefficientFile(List<std::int16_t>("c.noi", {20, 40, 60, 80})), 1);
    EXPECT_EQ(ImageHeader.IntensityCold, 1000);
    EXPECT_EQ(ImageHeader.IntensityHot, 3000);
    EXPECT_EQ(+ImageHeader.TemperatureCold, 20.0F);
    EXPECT_EQ(+ImageHeader.TemperatureHot, 30.5F);
    EXPECT_EQ(ImageHeader.FramesAveraged, 30);
    EXPECT_EQ(ImageHeader.VideoGain1, 9);
    EXPECT_EQ(ImageHeader.VideoOffset1, 160);
    EXPECT_EQ(ImageHeader.VideoGain2, 6);
}

TEST_F(CoefficientView, ACalibrationWithoutSenseIsDropped)
{
    PutFile(File("c.cal"),
            "[Setup]\nActiveCamera=1\n[Calibration]\nIntensityCold=3000\nIntensityHot=1000\nTemperatureCold="
            "20\nTemperatureHot=30\n");
    EXPECT_EQ(ViewCoefficientFile(List<std::int16_t>("c.noi", {1, 2, 3, 4})), 1);
    EXPECT_EQ(ImageHeader.IntensityCold, 0);
    EXPECT_EQ(ImageHeader.IntensityHot, 0);
    EXPECT_EQ(+ImageHeader.TemperatureCold, -999.0F);
    EXPECT_EQ(+ImageHeader.TemperatureHot, -999.0F);
}

TEST_F(CoefficientView, PanGoesToTheCorner)
{
    write::display.Xpan = 5;
    write::display.Ypan = -3;
    ViewCoefficientFile(List<std::int16_t>("c.off", {1, 2, 3, 4}));
    EXPECT_EQ(Xpan, 0);
    EXPECT_EQ(Ypan, 0);
}

TEST_F(CoefficientView, TheStatusLineIsAsBefore)
{
    StatusMessage("before", 2);
    ViewCoefficientFile(List<std::int16_t>("c.off", {1, 2, 3, 4}));
    EXPECT_EQ(StatusText, "before");
    EXPECT_EQ(StatusAlign, 2);
    EXPECT_THAT(operator_.Texts("status", "text"),
                ElementsAre("before", " Setting up image header ...", " Reading image data from file...",
                            " Loading image data to screen...", " Setting screen display parameters...", "before"));
}

TEST_F(CoefficientView, AMissingFileIsToldWithItsPathAsText)
{
    EXPECT_EQ(ViewCoefficientFile(File("no.gai")), 0);
    EXPECT_EQ(operator_.Boxes().at(0).text, File("no.gai"));
    EXPECT_EQ(operator_.Boxes().at(0).caption, "Unable to open file");
}

TEST_F(CoefficientView, AShortFileIsToldAndTheHeaderStays)
{
    write::file.ImageHeader = PlainHeader(9, 9);
    EXPECT_EQ(ViewCoefficientFile(List<float>("c.gai", {1.0F, 1.0F, 1.0F})), 0);
    EXPECT_EQ(operator_.Boxes().at(0).text, File("c.gai"));
    EXPECT_EQ(operator_.Boxes().at(0).caption, "Failed to read entire file");
    EXPECT_EQ(ImageHeader.ImageWidth, 9);
}

TEST_F(CoefficientView, AnotherExtensionIsTheWrongType)
{
    PutFile(File("c.xyz"), "data");
    EXPECT_EQ(ViewCoefficientFile(File("c.xyz")), 0);
    EXPECT_EQ(operator_.Boxes().at(0).caption, "Incorrect data type passed");
}

TEST_F(CoefficientView, EachRefusedBlockHasItsWords)
{
    PutFile(File("c.bad"), "0,1\n");
    const std::pair<std::string, std::string> rows[] = {
        {List<float>("c.gai", {1, 2, 3, 4}), "Failure to lock FLOAT memory!"},
        {List<std::int16_t>("c.off", {1, 2, 3, 4}), "Failure to lock INTEGER memory!"},
        {List<std::int32_t>("c.dcm", {1, 2, 3, 4}), "Failure to lock LONG memory!"},
        {File("c.bad"), "Failure to allocate & lock BYTE memory!"},
    };
    for (const auto& [path, words] : rows) {
        FailAllocation(1);
        EXPECT_EQ(ViewCoefficientFile(path), 0);
        EXPECT_EQ(operator_.Boxes().back().text, words);
        EXPECT_EQ(operator_.Boxes().back().caption, "Kelvo message");
    }
    FailAllocation(2);
    EXPECT_EQ(ViewCoefficientFile(rows[1].first), 0);
    EXPECT_EQ(operator_.Boxes().back().text, "Failure to allocate or lock memory!");
    EXPECT_EQ(operator_.Boxes().back().caption, "ViewImage Memory Error!");
}

TEST_F(CoefficientView, HostileSizesTakeNoMemory)
{
    for (const char* section :
         {"Hroi=-1\nVroi=5\n", "Hroi=32767\nVroi=32767\nHtotal=2147483647\nVtotal=2147483647\n", "Hroi=0\n"}) {
        PutFile(CameraFilePath, std::string("[Camera.1]\n") + section);
        EXPECT_EQ(ViewCoefficientFile(List<std::int16_t>("c.off", {1, 2, 3, 4})), 0);
        EXPECT_EQ(operator_.Boxes().back().caption, "Failed to read entire file");
    }
}

TEST_F(CoefficientView, LoadedAsAnImageItEndsInAMessageOverThePicture)
{
    // The list is then read as an image file: here its first bytes say a sample size that is refused.
    std::vector<float> gains(256, 1.0F);
    PutFile(CameraFilePath, "[Camera.1]\nHroi=16\nVroi=16\nHtotal=16\nVtotal=16\n");
    EXPECT_EQ(ViewImage(List("c.gai", gains), 0), 0);
    EXPECT_THAT(operator_.Boxes().at(0).text, StartsWith("Invalid data sample size: "));
    EXPECT_EQ(ViewingFile, 1);
    EXPECT_EQ(ImageHeader.ImageWidth, 16);
    EXPECT_EQ(ImageHeader.DisplayHigh, 4095);
    EXPECT_EQ(ViewFilePath, File("c.gai"));
}

}  // namespace
}  // namespace kelvo
