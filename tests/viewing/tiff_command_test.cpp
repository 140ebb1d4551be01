#include "viewing/tiff_command.h"

#include "grabber/host_frames_write.h"
#include "imagefile/header_write.h"
#include "imagefile/tiff_file.h"
#include "platform/faults.h"
#include "platform/front.h"
#include "platform/memory.h"
#include "state/buffer_state_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/head_state_write.h"
#include "support/full_disk.h"
#include "support/recording_board.h"
#include "support/stored_files.h"
#include "support/tiff_reader.h"
#include "ui/status.h"
#include "video/video.h"
#include "viewing/viewing.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <random>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

TEST(TiffScale, IsTheRangeIn256Steps)
{
    EXPECT_EQ(TiffScale(0, 16383), 64);
    EXPECT_EQ(TiffScale(2000, 3000), 3) << "1001 / 256";
    EXPECT_EQ(TiffScale(0, 511), 2);
    EXPECT_EQ(TiffScale(0, 510), 1);
}

TEST(TiffScale, IsNeverBelowOne)
{
    EXPECT_EQ(TiffScale(0, 254), 1);
    EXPECT_EQ(TiffScale(100, 100), 1);
    EXPECT_EQ(TiffScale(3000, 2000), 1);
    EXPECT_EQ(TiffScale(INT32_MAX, INT32_MIN), 1);
    EXPECT_EQ(TiffScale(INT32_MIN, INT32_MAX), 16777216);
}

TEST(PackToBytes, DividesTowardZeroAndHoldsTheRest)
{
    std::vector<std::int16_t> counts = {0, 63, 64, 16383, 16384, -1, -63, -64, 32767, -32768};
    EXPECT_EQ(PackToBytes(counts, 64), 4U) << "16384, -64, 32767 and -32768";
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(counts.data());
    EXPECT_THAT(std::vector<int>(bytes, bytes + 10), ElementsAre(0, 0, 1, 255, 255, 0, 0, 0, 255, 0));
}

TEST(PackToBytes, IsThePlainDefinitionOnRandomCounts)
{
    std::mt19937 random(5);
    for (const std::int32_t scale : {1, 2, 3, 64, 255, 16777216}) {
        std::vector<std::int16_t> counts(1001);
        for (std::int16_t& count : counts) count = static_cast<std::int16_t>(random());
        std::vector<int> expected;
        std::size_t outside = 0;
        for (const std::int16_t count : counts) {
            const double quotient = std::trunc(static_cast<double>(count) / scale);
            outside += quotient < 0 || quotient > 255 ? 1U : 0U;
            expected.push_back(static_cast<int>(std::min(255.0, std::max(0.0, quotient))));
        }
        EXPECT_EQ(PackToBytes(counts, scale), outside) << scale;
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(counts.data());
        EXPECT_THAT(std::vector<int>(bytes, bytes + 1001), ElementsAreArray(expected)) << scale;
    }
}

// Live video of 4 x 3 of which the detector reads 3 x 2.
class TiffOfTheCamera : public BoardTest {
  protected:
    TiffOfTheCamera()
    {
        BuildTiffHead();
        write::camera.numBufFrames = 8;
        GoLive(4, 3);
        write::camera.ActiveConfig.Hactive = 3;
        write::camera.ActiveConfig.Vactive = 2;
        write::cal.CalType = 0;
        write::cal.DecomList.resize(12);
        for (std::uint32_t i = 0; i < 12; ++i) write::cal.DecomList[i] = i;
        write::cal.OffsetList.assign(12, 0);
        write::cal.GainList.assign(12, 1);
        CalibrationListsChanged();
        write::display.DisplayLow = 0;
        write::display.DisplayHigh = 16383;
        write::head.FrameRate = 50.25F;
        write::head.IntegrationMsecInForce = 1.5;
        write::cal.IntensityCold = 3000;
        write::cal.TemperatureCold = 20.0F;
        write::cal.IntensityHot = 9000;
        write::cal.TemperatureHot = 25.0F;
    }

    // base + 10 y + x
    static void Show(int base)
    {
        std::vector<std::int16_t> frame;
        for (int y = 0; y < 3; ++y) {
            for (int x = 0; x < 4; ++x) frame.push_back(static_cast<std::int16_t>(base + 10 * y + x));
        }
        SetBoardFrames({frame});
    }
    CommandEnd SaveAs(const std::string& name, CommandEnd (*save)())
    {
        op.Do([path = directory / name] { ChooseFiles({path}); });
        return save();
    }
    TiffPicture Saved(const std::string& name) const { return ReadTiff(FileContents(directory / name)); }
};

TEST_F(TiffOfTheCamera, LiveIsANewFrameOfTheActivePart)
{
    Show(1000);
    ASSERT_EQ(RefreshLiveFrame(), 1);
    Show(2000);
    EXPECT_EQ(SaveAs("live.tif", SaveTiff16), CommandEnd::kLeaveStatus);
    const TiffPicture picture = Saved("live.tif");
    ASSERT_EQ(picture.error, "");
    EXPECT_EQ(picture.width, 3U);
    EXPECT_EQ(picture.height, 2U);
    EXPECT_EQ(picture.bits, 16U);
    EXPECT_THAT(picture.samples, ElementsAre(2000, 2001, 2002, 2010, 2011, 2012));
    EXPECT_EQ(picture.description,
              "Kelvo Thermal Image\nFrameRate=50.25Hz IntegrationTime=1.500ms\nIhot=9000 Thot=25.000C\nIcold=3000 "
              "Tcold=20.000C");
    EXPECT_THAT(picture.fields.at(280).values, ElementsAre(0));
    EXPECT_THAT(picture.fields.at(281).values, ElementsAre(16383));
    EXPECT_EQ(LiveVideo, 1);
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(TiffOfTheCamera, EightBitsAreTheScaledCountsAndSoAreRangeAndIntensities)
{
    Show(6400);
    EXPECT_EQ(SaveAs("live8.tif", SaveTiff8), CommandEnd::kLeaveStatus);
    const TiffPicture picture = Saved("live8.tif");
    ASSERT_EQ(picture.error, "");
    EXPECT_EQ(picture.bits, 8U);
    EXPECT_THAT(picture.samples, ElementsAre(100, 100, 100, 100, 100, 100));  // 6400 to 6412, by 64
    EXPECT_THAT(picture.fields.at(280).values, ElementsAre(0));
    EXPECT_THAT(picture.fields.at(281).values, ElementsAre(255));
    EXPECT_EQ(picture.description,
              "Kelvo Thermal Image\nFrameRate=50.25Hz IntegrationTime=1.500ms\nIhot=140 Thot=25.000C\nIcold=46 "
              "Tcold=20.000C");
    EXPECT_EQ(StatusText.find("held"), std::string::npos) << StatusText;
}

TEST_F(TiffOfTheCamera, WhatDoesNotFitIntoAByteIsHeldAndTold)
{
    write::display.DisplayLow = 1000;
    write::display.DisplayHigh = 1255;  // scale 1
    // What the detector doesn't read isn't held.
    SetBoardFrames({{-1, 0, 255, 9000, 256, 1000, 254, -5, 9000, 0, 0, 0}});
    EXPECT_EQ(SaveAs("held.tif", SaveTiff8), CommandEnd::kLeaveStatus);
    EXPECT_THAT(Saved("held.tif").samples, ElementsAre(0, 0, 255, 255, 255, 254));
    EXPECT_EQ(StatusText.rfind(" Saved held.tif, 3 samples held at 0 or 255: 788 bytes in ", 0), 0U) << StatusText;
    EXPECT_THAT(Saved("held.tif").fields.at(280).values, ElementsAre(1000));
}

TEST_F(TiffOfTheCamera, FrozenIsTheFrameThatStandsWithoutTheCross)
{
    Show(1000);
    ASSERT_EQ(RefreshLiveFrame(), 1);
    ToggleLiveVideo();
    ASSERT_EQ(LiveVideo, 0);
    Show(2000);
    write::frames.ImageCursorOn = 1;
    write::frames.CursorX = 1;
    write::frames.CursorY = 1;
    recordingBoard.reads = 0;
    EXPECT_EQ(SaveAs("frozen.tif", SaveTiff16), CommandEnd::kLeaveStatus);
    EXPECT_THAT(Saved("frozen.tif").samples, ElementsAre(1000, 1001, 1002, 1010, 1011, 1012));
    EXPECT_EQ(recordingBoard.reads, 0) << "no new frame";
    EXPECT_EQ(SaveAs("frozen8.tif", SaveTiff8), CommandEnd::kLeaveStatus);
    EXPECT_THAT(Saved("frozen8.tif").samples, ElementsAre(15, 15, 15, 15, 15, 15));
    EXPECT_EQ(LiveVideo, 0);
}

TEST_F(TiffOfTheCamera, WhileReplayShowsABurstIsItsFrame)
{
    Show(1000);
    ASSERT_EQ(RefreshLiveFrame(), 1);
    ToggleLiveVideo();
    std::vector<std::int16_t> stored(12);
    for (std::size_t i = 0; i < 12; ++i) stored[i] = static_cast<std::int16_t>(700 + i);
    write::hostFrames.HostFrames = {std::vector<std::int16_t>(12, 5), stored};
    write::buffer.FramesInBuffer = 2;
    write::buffer.ReplayActive = 1;
    write::buffer.ReplayOnView = 1;
    EXPECT_EQ(SaveAs("replay.tif", SaveTiff16), CommandEnd::kLeaveStatus);
    EXPECT_THAT(Saved("replay.tif").samples, ElementsAre(700, 701, 702, 704, 705, 706));
    EXPECT_THAT(HostFrames.at(0), testing::Each(5)) << "the burst stays";
}

TEST_F(TiffOfTheCamera, CorrectedCountsAreThoseOfTheCalibrationInForce)
{
    write::cal.CalType = 2;
    for (std::uint32_t i = 0; i < 12; ++i) write::cal.DecomList[i] = 11 - i;  // on its head
    write::cal.OffsetList.assign(12, 100);
    write::cal.GainList.assign(12, 2);
    CalibrationListsChanged();
    Show(1000);
    EXPECT_EQ(SaveAs("corrected.tif", SaveTiff16), CommandEnd::kLeaveStatus);
    // (1023 - 100) / 2, and so on backwards; the row has 4 columns, of which 3 are read
    EXPECT_THAT(Saved("corrected.tif").samples, ElementsAre(461, 461, 460, 456, 456, 455));
}

TEST_F(TiffOfTheCamera, IsNeverLargerThanTheFrame)
{
    Show(1000);
    write::camera.ActiveConfig.Hactive = 99;
    write::camera.ActiveConfig.Vactive = 99;
    EXPECT_EQ(SaveAs("all.tif", SaveTiff16), CommandEnd::kLeaveStatus);
    const TiffPicture picture = Saved("all.tif");
    EXPECT_EQ(picture.width, 4U);
    EXPECT_EQ(picture.height, 3U);
    EXPECT_EQ(picture.samples.back(), 1023U);
}

TEST_F(TiffOfTheCamera, WithoutAPictureIsToldBeforeANameIsAskedFor)
{
    write::frames.GrabberPresent = 0;
    EXPECT_EQ(SaveTiff8(), CommandEnd::kResetStatus);
    write::frames.GrabberPresent = 1;
    write::frames.LiveVideo = 0;
    write::frames.RawFrame.clear();
    EXPECT_EQ(SaveTiff16(), CommandEnd::kResetStatus);
    ASSERT_EQ(op.Boxes().size(), 2U);
    for (const TestOperator::Box& box : op.Boxes()) {
        EXPECT_EQ(box.text, "Video Data Acquisition Failed, Hardware error");
        EXPECT_EQ(box.caption, "Kelvo message");
    }
    EXPECT_THAT(op.Texts("file", "title"), IsEmpty());
}

TEST_F(TiffOfTheCamera, AFrameThatDoesNotComeIsNotSaved)
{
    Show(1000);
    op.Do([path = directory / "a.tif"] {
        recordingBoard.answers["icp_read_area"] = -1;
        ChooseFiles({path});
    });
    EXPECT_EQ(SaveTiff16(), CommandEnd::kResetStatus);
    ASSERT_FALSE(op.Boxes().empty());
    EXPECT_EQ(op.Boxes().back().text, "Video Data Acquisition Failed, Hardware error");
    EXPECT_FALSE(std::filesystem::exists(directory / "a.tif"));
}

TEST_F(TiffOfTheCamera, CancelledLeavesNothing)
{
    Show(1000);
    StatusMessage("as before", 0);
    for (CommandEnd (*const save)() : {SaveTiff8, SaveTiff16}) {
        op.Do([] { CancelFileDialog(); });
        EXPECT_EQ(save(), CommandEnd::kLeaveStatus);
        EXPECT_EQ(StatusText, "as before");
    }
    for (const auto& entry : std::filesystem::directory_iterator(directory.Path())) {
        EXPECT_NE(entry.path().extension(), ".tif");
    }
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(TiffOfTheCamera, WithoutMemoryIsTold)
{
    Show(1000);
    op.Do([path = directory / "a.tif"] {
        SetFaultOnce("memory", 1);
        ChooseFiles({path});
    });
    EXPECT_EQ(SaveTiff16(), CommandEnd::kResetStatus);
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes().at(0).text, "Failure to allocate video memory!");
    EXPECT_FALSE(std::filesystem::exists(directory / "a.tif"));
}

// A frame of 5 x 4 on view; frame f has the counts 1000 f + 10 y + x.
class TiffOfAFile : public BoardTest {
  protected:
    TiffOfAFile()
    {
        BuildTiffHead();
        ImageHeaderRecord header = PlainHeader(5, 4);
        header.FrameRate = 25.5F;
        header.IntegrationMsec = 2.25F;
        header.IntensityCold = 640;
        header.TemperatureCold = 15.5F;
        header.IntensityHot = 1280;
        header.TemperatureHot = 30.5F;
        header.DisplayLow = 100;
        header.DisplayHigh = 4195;  // 4096 counts: scale 16
        std::vector<std::vector<std::int16_t>> frames(3);
        for (int f = 0; f < 3; ++f) {
            for (int y = 0; y < 4; ++y) {
                for (int x = 0; x < 5; ++x)
                    frames.at(static_cast<std::size_t>(f)).push_back(static_cast<std::int16_t>(1000 * f + 10 * y + x));
            }
        }
        WriteImageFile(directory / "a.seq", header, frames);
        EXPECT_NE(ViewImage(directory / "a.seq", 2), 0);
        EXPECT_EQ(ViewingFile, 1);
        // What is in force otherwise tells nothing of the file.
        write::head.FrameRate = 99.0F;
        write::display.DisplayHigh = 77;
        write::cal.IntensityCold = 7;
    }
    CommandEnd SaveAs(const std::string& name, CommandEnd (*save)())
    {
        op.Do([path = directory / name] { ChooseFiles({path}); });
        return save();
    }
    TiffPicture Saved(const std::string& name) const { return ReadTiff(FileContents(directory / name)); }
};

TEST_F(TiffOfAFile, HasTheFrameOnViewAndItsHeadersFacts)
{
    EXPECT_EQ(SaveAs("b.tif", SaveTiff16), CommandEnd::kLeaveStatus);
    const TiffPicture picture = Saved("b.tif");
    ASSERT_EQ(picture.error, "");
    EXPECT_EQ(picture.width, 5U);
    EXPECT_EQ(picture.height, 4U);
    for (std::uint32_t i = 0; i < 20; ++i) EXPECT_EQ(picture.samples.at(i), 2000 + 10 * (i / 5) + i % 5);
    EXPECT_EQ(picture.description,
              "Kelvo Thermal Image\nFrameRate=25.50Hz IntegrationTime=2.250ms\nIhot=1280 Thot=30.500C\nIcold=640 "
              "Tcold=15.500C");
    EXPECT_THAT(picture.fields.at(280).values, ElementsAre(100));
    EXPECT_THAT(picture.fields.at(281).values, ElementsAre(4195));
    EXPECT_EQ(ViewingFile, 1);
}

TEST_F(TiffOfAFile, OfEightBitsIsScaledByTheHeadersRange)
{
    EXPECT_EQ(SaveAs("b8.tif", SaveTiff8), CommandEnd::kLeaveStatus);
    const TiffPicture picture = Saved("b8.tif");
    ASSERT_EQ(picture.error, "");
    for (std::uint32_t i = 0; i < 20; ++i) EXPECT_EQ(picture.samples.at(i), (2000 + 10 * (i / 5) + i % 5) / 16);
    EXPECT_NE(picture.description.find("Ihot=80 "), std::string::npos) << picture.description;
    EXPECT_NE(picture.description.find("Icold=40 "), std::string::npos) << picture.description;
    EXPECT_THAT(picture.fields.at(280).values, ElementsAre(6)) << "100 / 16";
    EXPECT_THAT(picture.fields.at(281).values, ElementsAre(262)) << "4195 / 16";
}

TEST_F(TiffOfAFile, ABareNameGetsItsExtensionAndAnExistingFileIsAskedAbout)
{
    EXPECT_EQ(SaveAs("bare", SaveTiff16), CommandEnd::kLeaveStatus);
    EXPECT_FALSE(std::filesystem::exists(directory / "bare"));
    ASSERT_EQ(Saved("bare.tif").error, "");
    const std::string before = FileContents(directory / "bare.tif");

    op.Answer({Button::kNo});
    op.Do([path = directory / "bare"] { ChooseFiles({path}); });
    op.Do([] { CancelFileDialog(); });
    EXPECT_EQ(SaveTiff8(), CommandEnd::kLeaveStatus);
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes().at(0).text, directory / "bare.tif" + " already exists.\nDo you want to replace it?");
    EXPECT_EQ(FileContents(directory / "bare.tif"), before);
}

TEST_F(TiffOfAFile, AFailureIsToldAndLeavesWhatStood)
{
    PutFile(directory / "b.tif", "another's");
    op.Answer({Button::kYes});
    const FullDisk full(100);
    EXPECT_EQ(SaveAs("b.tif", SaveTiff16), CommandEnd::kResetStatus);
    ASSERT_EQ(op.Boxes().size(), 2U);
    EXPECT_EQ(op.Boxes().at(1).text, "Failed to save file: " + directory / "b.tif");
    EXPECT_EQ(op.Boxes().at(1).caption, "Kelvo message");
    EXPECT_EQ(FileContents(directory / "b.tif"), "another's");
}

TEST_F(TiffOfAFile, WhoseBufferHoldsLessThanItsHeaderSaysIsNotWritten)
{
    write::file.ImageHeader.ImageHeight = 400;
    EXPECT_EQ(SaveAs("b.tif", SaveTiff16), CommandEnd::kResetStatus);
    ASSERT_EQ(op.Boxes().size(), 1U);
    EXPECT_EQ(op.Boxes().at(0).text, "Video Data Acquisition Failed, Hardware error");
    EXPECT_FALSE(std::filesystem::exists(directory / "b.tif"));
}

}  // namespace
}  // namespace kelvo
