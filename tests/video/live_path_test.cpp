// The live path corrects and looks up in one pass, into LiveFrame and the bitmap on the screen. Whatever the lists, the
// size, the pan and the cursor are, the frame, the bitmap and the screen are those of the plain way: the definition of
// correction, the cross, DrawFrame.
#include "dibapi32/dibapi32.h"
#include "display/display_pipeline_write.h"
#include "display/frame_bitmap.h"
#include "grabber/copm2.h"
#include "grabber/correction.h"
#include "platform/memory.h"
#include "platform/paint.h"
#include "platform/profile.h"
#include "platform/window.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "support/picture_fixture.h"
#include "support/recording_board.h"
#include "video/video.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

namespace kelvo {
namespace {

class LivePath : public PictureTest {
  protected:
    LivePath() : LivePath(1.0) {}
    explicit LivePath(double scale) : PictureTest(scale)
    {
        RegisterQuietBoard();
        WritePrivateProfileString("Board", "Board", "recording", DefaultDir + "/platform.ini");
        EXPECT_EQ(itx_load_cnf(""), 0);
        write::display.Contrast = 40;
        write::display.Brightness = 500;
        write::frames.LiveVideo = 1;
        write::frames.ViewingFile = 0;
    }
    ~LivePath() override
    {
        write::frames.LiveVideo = 0;
        write::frames.ImageCursorOn = 0;
        write::cal.CalType = 0;
        write::display.Xpan = write::display.Ypan = 0;
        write::cal.DecomList.clear();
        write::cal.OffsetList.clear();
        write::cal.GainList.clear();
        CalibrationListsChanged();
        FreeDib(write::picture.FrameBitmap);
    }

    std::int32_t Random(std::int32_t low, std::int32_t high)
    {
        return std::uniform_int_distribution<std::int32_t>(low, high)(random);
    }

    // A camera of that size with random lists and a random frame on its board.
    void MakeCamera(std::int32_t width, std::int32_t height)
    {
        write::camera.ActiveConfig.Hroi = width;
        write::camera.ActiveConfig.Vroi = height;
        const auto pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
        const auto last = static_cast<std::int32_t>(pixels) - 1;
        write::cal.CalType = Random(0, 2);
        write::cal.DecomList.resize(pixels);
        write::cal.OffsetList.resize(pixels);
        write::cal.GainList.resize(pixels);
        raw.resize(pixels);
        const bool inOrder = Random(0, 1) != 0;
        for (std::size_t i = 0; i < pixels; ++i) {
            const bool substituted = !inOrder || Random(0, 30) == 0;
            write::cal.DecomList[i] =
                substituted ? static_cast<std::uint32_t>(Random(0, last)) : static_cast<std::uint32_t>(i);
            write::cal.OffsetList[i] = static_cast<std::int16_t>(Random(-500, 500));
            write::cal.GainList[i] = static_cast<float>(Random(1, 4000)) / 1000.0F;
            raw[i] = static_cast<std::int16_t>(Random(0, 16383));
        }
        CalibrationListsChanged();
        write::frames.RawFrame.assign(pixels, 0);
        SetBoardFrames({raw});
    }

    std::vector<std::int16_t> PlainFrame() const
    {
        std::vector<std::int16_t> frame(raw.size());
        CorrectByDefinition({CalType, 0, DecomList, OffsetList, GainList}, raw, frame);
        return frame;
    }

    static std::vector<std::uint32_t> Screen()
    {
        UpdateWindow(hWndMain);
        DeviceBitmap picture;
        EXPECT_TRUE(CaptureWindowPixels(hWndMain, true, picture));
        return std::move(picture.pixels);
    }

    // Nothing of a larger picture is to be erased.
    static void ClearScreen()
    {
        ResetDisplayPipeline();
        FillSurface(hWndMain, GetClientRect(hWndMain), 0x123456);
    }

    void ExpectAsPlain(bool onScreen)
    {
        ClearScreen();
        ASSERT_EQ(RefreshLiveFrame(), 1);
        const std::vector<std::int16_t> frame = PlainFrame();
        ASSERT_EQ(LiveFrame, frame);
        const Dib bitmap = MakeFrameBitmap(frame, nullptr);
        ASSERT_TRUE(bitmap);
        ASSERT_TRUE(FrameBitmap);
        ASSERT_EQ(FrameBitmap->bytes, bitmap->bytes);
        if (!onScreen) return;
        const std::vector<std::uint32_t> screen = Screen();
        FreeDib(write::picture.FrameBitmap);
        ClearScreen();
        DrawFrame(frame);
        ASSERT_EQ(Screen(), screen);
    }

    void ExpectRandomPicturesAsPlain(int count)
    {
        for (int i = 0; i < count; ++i) {
            const std::int32_t width = Random(1, 130);
            const std::int32_t height = Random(1, 70);
            MakeCamera(width, height);
            write::camera.ActiveConfig.Xzoom = Random(1, 5);
            write::camera.ActiveConfig.Yzoom = Random(0, 2) == 0 ? Random(1, 5) : Xzoom;
            write::frames.ImageCursorOn = Random(0, 1);
            // Pan and cursor in all cases: in the frame, at its edges, outside; mostly the usual ones.
            write::display.Xpan = Random(0, 1) == 0 ? 0 : Random(-width / 2, width + 2);
            write::display.Ypan = Random(0, 1) == 0 ? 0 : Random(-height / 2, height + 2);
            write::frames.CursorX = Random(-1, width);
            write::frames.CursorY = Random(-1, height);
            SCOPED_TRACE(testing::Message()
                         << "case " << i << ": " << width << " x " << height << ", CalType " << CalType << ", pan "
                         << Xpan << ", " << Ypan << ", cursor " << ImageCursorOn << " at " << CursorX << ", " << CursorY
                         << ", zoom " << Xzoom << " x " << Yzoom);
            if (Xpan > width || Ypan > height) continue;  // nothing is drawn: the bitmap before stays
            // To look at the screen takes longest.
            ASSERT_NO_FATAL_FAILURE(ExpectAsPlain(i % 20 == 0));
        }
    }

    std::mt19937 random{7};
    std::vector<std::int16_t> raw;
};

TEST_F(LivePath, RandomPicturesAreThoseOfThePlainWay)
{
    ExpectRandomPicturesAsPlain(300);
}

// Each picture goes into the bitmap of the one before.
TEST_F(LivePath, TheBitmapIsUsedAgainAndHoldsNothingOfTheFrameBefore)
{
    MakeCamera(33, 9);
    for (const std::int32_t pan : {0, 4, -4, 4}) {
        write::display.Xpan = pan;
        for (int frame = 0; frame < 3; ++frame) {
            for (std::int16_t& count : raw) count = static_cast<std::int16_t>(Random(0, 16383));
            SetBoardFrames({raw});
            ASSERT_EQ(RefreshLiveFrame(), 1);
            const Dib plain = MakeFrameBitmap(PlainFrame(), nullptr);
            ASSERT_EQ(FrameBitmap->bytes, plain->bytes) << "pan " << pan;
        }
    }
    write::display.Xpan = 0;
    RefreshLiveFrame();
    const std::uint8_t* const block = FrameBitmap->bytes.data();
    RefreshLiveFrame();
    EXPECT_EQ(FrameBitmap->bytes.data(), block);

    const Dib held = FrameBitmap;
    const std::vector<std::uint8_t> before = held->bytes;
    for (std::int16_t& count : raw) count = 16383;
    SetBoardFrames({raw});
    RefreshLiveFrame();
    EXPECT_EQ(held->bytes, before) << "who holds a picture keeps it";
    EXPECT_NE(FrameBitmap->bytes, before);
}

TEST_F(LivePath, GoesInOnePassWhereTheFrameIsDrawnFromItsOwnPixels)
{
    MakeCamera(20, 10);
    std::vector<std::int16_t> frame(raw.size());
    const auto onePass = [&] { return CorrectLiveFrame(raw, frame, 0, BeginPicture()); };
    EXPECT_TRUE(onePass());
    write::display.Xpan = 3;
    write::display.Ypan = 2;
    EXPECT_TRUE(onePass());
    write::display.Xpan = -1;
    EXPECT_FALSE(onePass()) << "what lies left of the frame is the end of the row before";
    write::display.Xpan = 0;
    write::display.Ypan = -1;
    EXPECT_FALSE(onePass());
    write::display.Ypan = 0;
    write::frames.ViewingFile = 1;
    EXPECT_FALSE(onePass());
    write::frames.ViewingFile = 0;
    FailAllocation(1);
    CalibrationListsChanged();
    EXPECT_FALSE(onePass()) << "no memory for the plan";
    EXPECT_FALSE(CorrectLiveFrame(raw, frame, 0)) << "nobody wants them";
}

class LivePathAtRatioTwo : public LivePath {
  protected:
    LivePathAtRatioTwo() : LivePath(2.0) {}
};

TEST_F(LivePathAtRatioTwo, RandomPicturesAreThoseOfThePlainWay)
{
    ExpectRandomPicturesAsPlain(100);
}

}  // namespace
}  // namespace kelvo
