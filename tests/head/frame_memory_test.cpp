// No memory is taken while a frame is on its way. operator new is replaced in this program, and its calls are counted
// from the moment at which a timer's message reaches its window's procedure until the procedure returns: reading the
// board, correcting, looking up and painting the surface, with all that the toolkit does meanwhile. What the toolkit
// takes afterwards, from its event loop, to bring the surface onto the screen is its own affair and isn't counted.
#include "display/display_pipeline.h"
#include "head/camera_head.h"
#include "head/video_setup_fixture.h"
#include "platform/memory.h"
#include "platform/profile.h"
#include "platform/timers.h"
#include "shell/main_window.h"
#include "simcam/sim_camera.h"
#include "state/camera_config_write.h"
#include "state/display_state.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "support/recording_board.h"
#include "video/cursor_cross.h"
#include "video/video.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

namespace {

std::atomic<bool> isCounting = false;
std::atomic<int> taken = 0;
std::thread::id counted;  // the thread whose calls count: the toolkit has others

void* Take(std::size_t bytes, std::size_t alignment)
{
    if (isCounting && std::this_thread::get_id() == counted) ++taken;
    const std::size_t whole = (std::max<std::size_t>(bytes, 1) + alignment - 1) / alignment * alignment;
    void* const block = std::aligned_alloc(alignment, whole);
    if (!block) throw std::bad_alloc();
    return block;
}

constexpr std::size_t kPlain = alignof(std::max_align_t);

}  // namespace

void* operator new(std::size_t bytes)
{
    return Take(bytes, kPlain);
}
void* operator new[](std::size_t bytes)
{
    return Take(bytes, kPlain);
}
void* operator new(std::size_t bytes, std::align_val_t alignment)
{
    return Take(bytes, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t bytes, std::align_val_t alignment)
{
    return Take(bytes, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t bytes, const std::nothrow_t& /*tag*/) noexcept
{
    return Take(bytes, kPlain);
}
void* operator new[](std::size_t bytes, const std::nothrow_t& /*tag*/) noexcept
{
    return Take(bytes, kPlain);
}
void operator delete(void* block) noexcept
{
    std::free(block);
}
void operator delete[](void* block) noexcept
{
    std::free(block);
}
void operator delete(void* block, std::size_t /*bytes*/) noexcept
{
    std::free(block);
}
void operator delete[](void* block, std::size_t /*bytes*/) noexcept
{
    std::free(block);
}
void operator delete(void* block, std::align_val_t /*alignment*/) noexcept
{
    std::free(block);
}
void operator delete[](void* block, std::align_val_t /*alignment*/) noexcept
{
    std::free(block);
}
void operator delete(void* block, std::size_t /*bytes*/, std::align_val_t /*alignment*/) noexcept
{
    std::free(block);
}
void operator delete[](void* block, std::size_t /*bytes*/, std::align_val_t /*alignment*/) noexcept
{
    std::free(block);
}

namespace kelvo {
namespace {

constexpr int kFrames = 100;

struct Asked {
    int calls = 0;              // of operator new
    std::int64_t requests = 0;  // to the platform's allocator
};

template <typename Work>
void Count(Asked& asked, Work&& work)
{
    const std::int64_t requestsBefore = MemoryRequests();
    counted = std::this_thread::get_id();
    taken = 0;
    isCounting = true;
    work();
    isCounting = false;
    asked.calls += taken;
    asked.requests += MemoryRequests() - requestsBefore;
}

TEST(CountedMemory, IsSeen)
{
    Asked asked;
    std::vector<int> block;
    std::vector<std::uint8_t> pixels;
    Count(asked, [&] { block.push_back(1); });
    EXPECT_EQ(asked.calls, 1);
    EXPECT_EQ(asked.requests, 0);
    Count(asked, [&] { AllocateBlock(pixels, 100); });
    EXPECT_EQ(asked.calls, 2);
    EXPECT_EQ(asked.requests, 1);
}

class FrameMemory : public VideoSetUpTest {
  protected:
    void SetUp() override
    {
        VideoSetUpTest::SetUp();
        TurnOn(kInSbSection);
        write::frames.DisplayEnabled = 1;  // the quiet board leaves it off
        recordingBoard.writesDown = false;
    }
    void TearDown() override
    {
        write::frames.LiveVideo = 0;
        write::frames.ImageCursorOn = 0;
        RemovePictureLayer(DrawCursorCross);
        VideoSetUpTest::TearDown();
    }

    // A frame of live video and what follows it in the event loop.
    static void ShowFrame(Asked& asked)
    {
        Count(asked, [] { MainWndProc(hWndMain, WM_TIMER, kLiveTimer, 0); });
        EXPECT_EQ(LiveVideo, 1);
        KillTimer(hWndMain, kLiveTimer);
        HandlePendingEvents();
    }
    // So many that the rate has just been shown, which is done every 101 frames and takes texts.
    void Settle() const
    {
        Asked ignored;
        const auto rates = [this] {
            return std::ranges::count_if(
                StatusTexts(), [](const std::string& text) { return text.find("Displaying at") != std::string::npos; });
        };
        const auto before = rates();
        for (int frame = 0; frame < 101 && rates() == before; ++frame) ShowFrame(ignored);
        ASSERT_EQ(rates(), before + 1);
    }
};

TEST_F(FrameMemory, AHundredLiveFramesTakeNone)
{
    write::frames.LiveVideo = 1;
    for (const int zoom : {1, 2, 5}) {
        for (const int cursor : {0, 1}) {
            write::camera.ActiveConfig.Xzoom = write::camera.ActiveConfig.Yzoom = zoom;
            write::frames.ImageCursorOn = cursor;
            AddPictureLayer(DrawCursorCross);
            write::frames.CursorX = 30;
            write::frames.CursorY = 20;
            Settle();
            Asked asked;
            for (int frame = 0; frame < kFrames; ++frame) ShowFrame(asked);
            EXPECT_EQ(asked.calls, 0) << "zoom " << zoom << ", cursor " << cursor;
            EXPECT_EQ(asked.requests, 0) << "zoom " << zoom << ", cursor " << cursor;
        }
    }
}

TEST_F(FrameMemory, AHundredTicksOfTheOscilloscopeTakeNone)
{
    for (const int enabled : {0, 1}) {
        Asked asked;
        int ticks = 0;
        Run({[&](HWND dialog) {
            write::frames.DisplayEnabled = enabled;
            const auto tick = [dialog] { SendMessage(dialog, WM_TIMER, 1, 0); };
            for (int warm = 0; warm < 3; ++warm) tick(), HandlePendingEvents();
            for (; ticks < kFrames; ++ticks) {
                Count(asked, tick);
                HandlePendingEvents();
            }
        }});
        EXPECT_EQ(ticks, kFrames);
        EXPECT_EQ(asked.calls, 0) << "drawn by the live cycle: " << enabled;
        EXPECT_EQ(asked.requests, 0) << "drawn by the live cycle: " << enabled;
    }
}

TEST_F(FrameMemory, AHundredFramesOfTheSimulatedCameraTakeNone)
{
    CopyShippedFiles(DefaultDir);
    std::string error;
    const std::shared_ptr<SimCamera> camera = OpenSimCamera("insb320.cnf", error);
    ASSERT_TRUE(camera) << error;
    AnswerSimFrame(*camera, {0x90, 0x30, 0, 0});
    std::vector<std::int16_t> frame(320UL * 256UL);
    for (const SimSource source : {SimSource::kLow, SimSource::kScene}) {  // the scene moves
        PutSimSource(*camera, source);
        ReadSimFrame(*camera, 0, 0, 320, 256, frame);
        Asked asked;
        for (int n = 1; n <= kFrames; ++n) {
            Count(asked, [&] { ReadSimFrame(*camera, n, n * 10'000, 320, 256, frame); });
        }
        EXPECT_EQ(asked.calls, 0);
        EXPECT_EQ(asked.requests, 0);
    }
}

}  // namespace
}  // namespace kelvo
