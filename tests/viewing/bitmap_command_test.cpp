#include "viewing/bitmap_command.h"

#include "display/display_pipeline.h"
#include "display/lookup_table.h"
#include "grabber/host_frames_write.h"
#include "platform/faults.h"
#include "platform/front.h"
#include "platform/memory.h"
#include "state/buffer_state_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "support/recording_board.h"
#include "support/stored_files.h"
#include "video/video.h"
#include "viewing/viewing.h"

#include <gmock/gmock.h>

#include <cstring>
#include <filesystem>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A reader of 8-bit bitmaps that knows nothing of the code under test: the gray values, row by row from the top.
struct Grays {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<int> values;
};

Grays GraysIn(const std::string& file)
{
    const auto number = [&](std::size_t at) {
        std::int32_t value = 0;
        std::memcpy(&value, file.data() + at, sizeof value);
        return value;
    };
    Grays grays;
    if (file.size() < 54 || !file.starts_with("BM")) return grays;
    grays.width = number(18);
    grays.height = number(22);
    const std::int32_t row = (grays.width + 3) / 4 * 4;
    for (std::int32_t y = grays.height - 1; y >= 0; --y) {
        for (std::int32_t x = 0; x < grays.width; ++x) {
            grays.values.push_back(
                static_cast<unsigned char>(file.at(static_cast<std::size_t>(number(10) + y * row + x))));
        }
    }
    return grays;
}

// Live video of 4 x 3 of which the detector fills 3 x 2. The table is the count's upper byte: 256 counts a gray value.
class BitmapOfTheCamera : public BoardTest {
  protected:
    BitmapOfTheCamera()
    {
        GoLive(4, 3);
        write::camera.ActiveConfig.Hactive = 3;
        write::camera.ActiveConfig.Vactive = 2;
        write::cal.DecomList.resize(12);
        for (std::uint32_t i = 0; i < 12; ++i) write::cal.DecomList[i] = i;
        write::cal.OffsetList.assign(12, 0);
        write::cal.GainList.assign(12, 1);
        CalibrationListsChanged();
        write::display.DisplayHigh = 16383;
        EnsureDisplayLut();
        write::display.DisplayLut.resize(16384);
        for (std::size_t i = 0; i < 16384; ++i) write::display.DisplayLut[i] = static_cast<std::uint8_t>(i / 64);
    }

    int SaveAs(const std::string& name)
    {
        op.Do([path = directory / name] { ChooseFiles({path}); });
        return SaveBitmapCommand();
    }
    Grays Saved(const std::string& name) const { return GraysIn(FileContents(directory / name)); }

    // A picture whose pixels are 64 (base + 10 y + x): the gray values are base + 10 y + x.
    static void Show(std::int32_t base)
    {
        std::vector<std::int16_t> frame;
        for (int y = 0; y < 3; ++y) {
            for (int x = 0; x < 4; ++x) frame.push_back(static_cast<std::int16_t>(64 * (base + 10 * y + x)));
        }
        SetBoardFrames({frame});
    }
};

TEST_F(BitmapOfTheCamera, IsAFreshCaptureOfTheActivePart)
{
    Show(10);
    ASSERT_EQ(RefreshLiveFrame(), 1);
    Show(100);
    recordingBoard.reads = 0;
    recordingBoard.onRead = [](std::int32_t) {};
    EXPECT_EQ(SaveAs("live.bmp"), 1);
    EXPECT_EQ(recordingBoard.reads, 1) << "one frame";
    const Grays grays = Saved("live.bmp");
    EXPECT_EQ(grays.width, 3);
    EXPECT_EQ(grays.height, 2);
    EXPECT_THAT(grays.values, ElementsAre(100, 101, 102, 110, 111, 112));
    EXPECT_EQ(LiveVideo, 1);
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(BitmapOfTheCamera, IsTheFrozenFrameAsItIsSeen)
{
    Show(10);
    ASSERT_EQ(RefreshLiveFrame(), 1);
    ToggleLiveVideo();
    ASSERT_EQ(LiveVideo, 0);
    Show(100);
    for (std::uint32_t i = 0; i < 12; ++i) write::cal.DecomList[i] = 11 - i;  // turned since
    CalibrationListsChanged();
    write::frames.ImageCursorOn = 1;
    write::frames.CursorX = 1;
    write::frames.CursorY = 1;
    EXPECT_EQ(SaveAs("frozen.bmp"), 1);
    EXPECT_THAT(Saved("frozen.bmp").values, ElementsAre(33, 32, 31, 23, 22, 21)) << "without the cross";
    EXPECT_EQ(LiveFrame.at(6), 64 * 21) << "nor is it in the frame on view";
    EXPECT_EQ(LiveVideo, 0);
    EXPECT_EQ(ViewingFile, 0);
}

TEST_F(BitmapOfTheCamera, WhileReplayShowsABurstIsItsFrame)
{
    Show(10);
    ASSERT_EQ(RefreshLiveFrame(), 1);
    ToggleLiveVideo();
    std::vector<std::int16_t> stored(12);
    for (std::size_t i = 0; i < 12; ++i) stored[i] = static_cast<std::int16_t>(64 * (70 + i));
    write::hostFrames.HostFrames = {std::vector<std::int16_t>(12, 5), stored};
    write::buffer.FramesInBuffer = 2;
    write::buffer.ReplayActive = 1;
    write::buffer.ReplayOnView = 1;
    EXPECT_EQ(SaveAs("replay.bmp"), 1);
    EXPECT_THAT(Saved("replay.bmp").values, ElementsAre(70, 71, 72, 74, 75, 76));
}

TEST_F(BitmapOfTheCamera, IsNeverLargerThanTheFrame)
{
    Show(10);
    for (const std::int32_t active : {99, 4}) {
        write::camera.ActiveConfig.Hactive = active;
        write::camera.ActiveConfig.Vactive = active;
        EXPECT_EQ(SaveAs(std::to_string(active) + ".bmp"), 1);
        const Grays grays = Saved(std::to_string(active) + ".bmp");
        EXPECT_EQ(grays.width, 4);
        EXPECT_EQ(grays.height, 3);
        EXPECT_EQ(grays.values.back(), 33);
    }
}

TEST_F(BitmapOfTheCamera, WithoutAPictureIsTold)
{
    write::frames.GrabberPresent = 0;
    EXPECT_EQ(SaveBitmapCommand(), 0);
    write::frames.GrabberPresent = 1;
    recordingBoard.answers["icp_read_area"] = -1;
    EXPECT_EQ(SaveBitmapCommand(), 0);
    EXPECT_EQ(op.Boxes().back().text, "Video Data Acquisition Failed, Hardware error");
    EXPECT_EQ(op.Boxes().back().caption, "Kelvo message");
    EXPECT_THAT(op.Texts("file", "title"), IsEmpty()) << "no name is asked for";
}

TEST_F(BitmapOfTheCamera, CancelledLeavesNothing)
{
    op.Do([] { CancelFileDialog(); });
    EXPECT_EQ(SaveBitmapCommand(), 0);
    for (const auto& entry : std::filesystem::directory_iterator(directory.Path())) {
        EXPECT_NE(entry.path().extension(), ".bmp");
    }
    EXPECT_THAT(op.Boxes(), IsEmpty());
    EXPECT_EQ(LiveVideo, 1);
}

}  // namespace
}  // namespace kelvo
