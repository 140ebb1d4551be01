#include "grabber/host_frames.h"

#include "grabber/board_state.h"
#include "grabber/copm2.h"
#include "grabber/frame_account.h"
#include "grabber/frame_read.h"
#include "grabber/frame_size.h"
#include "grabber/host_frames_write.h"
#include "platform/box.h"
#include "platform/memory.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "state/buffer_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state.h"
#include "state/state_registry.h"
#include "state/windows.h"
#include "ui/gather.h"
#include "ui/status.h"

#include <algorithm>

namespace kelvo {

namespace write {
HostFrameVariables hostFrames;
}

constinit const std::vector<std::vector<std::int16_t>>& HostFrames = write::hostFrames.HostFrames;
constinit const std::int32_t& HostFramesAllocated = write::hostFrames.HostFramesAllocated;
constinit const std::int32_t& HostFrameNext = write::hostFrames.HostFrameNext;
constinit const std::int32_t& HostFramesWithoutBlank = write::hostFrames.HostFramesWithoutBlank;

namespace {

const StateNames kStateNames{
    Named("HostFramesAllocated", HostFramesAllocated),
    Named("HostFrameNext", HostFrameNext),
};

constexpr std::uint32_t kFramesLeftFree = 10;
constexpr std::uint32_t kFewestFrames = 8;
constexpr std::uint32_t kMostCountedFrames = kMostHostFrames - 1;

std::int64_t FrameBytes()
{
    return static_cast<std::int64_t>(CameraFrameValues()) * 2;
}

// The count of frames that memory and the camera's section allow.
std::uint32_t FramesAllowed(std::int64_t frameBytes)
{
    auto frames = static_cast<std::uint32_t>(AvailablePhysicalMemory() / static_cast<std::uint64_t>(frameBytes));
    // Unsigned and not guarded: with memory for fewer than ten frames this is a huge number, and the next limit holds.
    frames -= kFramesLeftFree;
    frames = std::min(std::max(frames, kFewestFrames), kMostCountedFrames);
    const std::int32_t limit =
        GetPrivateProfileInt(ActiveCameraSection(), "MaxNumFramesToAllocate", kMostCountedFrames, IniFilePath);
    return std::min(frames, static_cast<std::uint32_t>(limit));
}

// The system grants more than it has and then swaps: a frame beyond what may be taken now counts as refused.
bool MakeFrame(std::vector<std::int16_t>& frame, std::int64_t frameBytes)
{
    return static_cast<std::uint64_t>(frameBytes) <= AvailablePhysicalMemory() &&
           AllocateBlock(frame, CameraFrameValues());
}

// One more frame than is counted. The bytes that could be had.
std::int64_t MakeFrames(std::uint32_t count, std::int64_t frameBytes)
{
    std::vector<std::vector<std::int16_t>>().swap(write::hostFrames.HostFrames);
    for (std::uint32_t i = 0; i <= count; ++i) {
        std::vector<std::int16_t> frame;
        if (!MakeFrame(frame, frameBytes)) {
            MessageBox(hWndMain, "Unable to allocate all of RAM memory requested!", "RAM Memory Warning!");
            return static_cast<std::int64_t>(i) * frameBytes;
        }
        write::hostFrames.HostFrames.push_back(std::move(frame));
        StatusMessage(Format("  Allocating frame buffer #%d", static_cast<int>(i + 1)), 0);
    }
    return static_cast<std::int64_t>(count) * frameBytes;
}

// Frames that stood when the camera's size changed don't serve it. All are of one size.
void DropFramesOfAnotherSize()
{
    if (!HostFrames.empty() && HostFrames.front().size() != CameraFrameValues()) FreeHostFrames();
}

void EnsureHostFrames()
{
    DropFramesOfAnotherSize();
    if (!HostFramesAllocated) AllocateHostFrames();
}

// Copies count values with DataOffset added; what would lie outside either block is left out.
void CopyWithOffset(std::span<const std::int16_t> frame, std::int64_t from, std::span<std::int16_t> destination,
                    std::int64_t to, std::int64_t count)
{
    const std::int64_t first = std::max<std::int64_t>({0, -from, -to});
    const std::int64_t end = std::min({count, std::ssize(frame) - from, std::ssize(destination) - to});
    for (std::int64_t i = first; i < end; ++i) {
        destination[static_cast<std::size_t>(to + i)] = WithDataOffset(frame[static_cast<std::size_t>(from + i)]);
    }
}

}  // namespace

std::int64_t AllocateHostFrames()
{
    if (numBufFrames == 0) return 0;
    DropFramesOfAnotherSize();
    const std::int64_t frameBytes = FrameBytes();
    if (frameBytes == 0) return 0;
    if (HostFramesAllocated) return numBufFrames * frameBytes;
    const std::uint32_t count = FramesAllowed(frameBytes);
    write::camera.numBufFrames = static_cast<std::int32_t>(count);
    write::hostFrames.HostFramesAllocated = 1;
    return MakeFrames(count, frameBytes);
}

std::int32_t UsableHostFrames()
{
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(numBufFrames, 0, std::ssize(HostFrames)));
}

std::span<const std::int16_t> ReplayedFrame()
{
    if (!ReplayActive || LiveVideo || ViewingFile) return {};
    if (ReplayOnView < 0 || ReplayOnView >= std::ssize(HostFrames)) return {};
    const std::vector<std::int16_t>& frame = HostFrames[static_cast<std::size_t>(ReplayOnView)];
    return frame.size() == CameraFrameValues() ? std::span(frame) : std::span<const std::int16_t>();
}

void EndReplay()
{
    if (hWndMain) KillTimer(hWndMain, kReplayTimer);
    write::buffer.ReplayActive = 0;
    write::buffer.ReplayPaused = 0;
    write::buffer.ReplayOnView = -1;
}

void FreeHostFrames()
{
    if (!HostFramesAllocated) return;
    EndReplay();
    write::buffer.FramesInBuffer = 0;
    std::vector<std::vector<std::int16_t>>().swap(write::hostFrames.HostFrames);
    write::hostFrames.HostFramesAllocated = 0;
    write::buffer.HostFrameBytes = 0;
    write::buffer.AveragingCapacity = 0;
    std::vector<std::uint8_t>().swap(write::display.ColorMap);  // made anew when a picture next needs it
}

std::int32_t CaptureToHostFrames(std::int32_t count, std::int32_t skip)
{
    EnsureHostFrames();
    AccountCycleStops();
    itx_os_set_realtime_priority(1);
    write::hostFrames.HostFrameNext = 0;
    write::hostFrames.HostFramesWithoutBlank = 0;
    // After an allocation that stopped part-way fewer frames stand than are counted.
    const std::int32_t limit = std::min(count, UsableHostFrames());
    std::int32_t captured = 0;
    for (; captured < limit && GatherGoesOn(); ++captured) {
        for (std::int64_t blank = 0; blank <= skip; ++blank) {
            if (icp_wait_vb(IcpModule, FrameA) == kBoardTimeout) ++write::hostFrames.HostFramesWithoutBlank;
        }
        if (skip > 0) AccountHeldUp();  // what is left out is so on purpose
        if (!ReadBoardArea(write::hostFrames.HostFrames[static_cast<std::size_t>(captured)])) return 0;
        AccountFrameUsed();
    }
    AccountHeldUp();  // until the live cycle goes on
    write::hostFrames.HostFrameNext = captured >= numBufFrames ? 0 : captured;
    itx_os_set_realtime_priority(0);
    return captured;
}

std::int32_t ReadHostFrameRect(std::span<std::int16_t> destination, std::int32_t first, std::int32_t last,
                               std::int32_t top, std::int32_t left, std::int32_t bottom, std::int32_t right)
{
    EnsureHostFrames();
    // What is longer than the destination is cut there anyway.
    const std::int64_t values = std::min(RectangleValues(left, top, right, bottom), std::ssize(destination) + 1);
    // Both starts are counted in bytes and used as values: right for whole frames one at a time, and kept for others.
    const std::int64_t from = 2 * (std::int64_t{top} * ActiveConfig.Hroi + left);
    const std::int64_t end = std::min(last, UsableHostFrames() - 1);
    for (std::int64_t k = std::max(first, 0); k <= end; ++k) {
        CopyWithOffset(HostFrames[static_cast<std::size_t>(k)], from, destination, 2 * values * (k - first), values);
    }
    return 1;
}

std::int16_t ReadBufferPixel(std::int32_t frame, std::int32_t row, std::int32_t column)
{
    if (frame < 0 || frame >= std::ssize(HostFrames)) return 0;
    const std::vector<std::int16_t>& counts = HostFrames[static_cast<std::size_t>(frame)];
    const std::int64_t at = std::int64_t{row} * ActiveConfig.Hroi + column;
    const bool isThere = row >= 0 && column >= 0 && column < ActiveConfig.Hroi && at < std::ssize(counts);
    return isThere ? counts[static_cast<std::size_t>(at)] : std::int16_t{0};
}

int BufferBoardReady()
{
    return 1;
}

std::int32_t ResetHostFrameNext()
{
    write::hostFrames.HostFrameNext = 0;
    return 1;
}

void ResetHostFrames()
{
    write::hostFrames.HostFrames.clear();
    write::hostFrames.HostFramesAllocated = 0;
    write::hostFrames.HostFrameNext = 0;
    write::hostFrames.HostFramesWithoutBlank = 0;
}

}  // namespace kelvo
