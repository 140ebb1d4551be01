#include "analysis/measured_frame.h"

#include "grabber/host_frames.h"
#include "imagefile/header.h"
#include "platform/memory.h"
#include "script/script.h"
#include "state/display_state.h"
#include "state/frame_state_write.h"
#include "video/something_on_view.h"
#include "video/video.h"

#include <algorithm>
#include <cstddef>

namespace kelvo {

namespace {

std::int32_t Prefix()
{
    return std::max<std::int32_t>(ImageHeader.ImageHeaderDataOffset, 0);
}

// The place of a camera's frame in ImageBuffer; empty where memory is refused.
std::span<std::int16_t> RoomForCameraFrame()
{
    const std::size_t values = CameraFrameValues();
    const std::size_t bytes = values * sizeof(std::int16_t) + static_cast<std::size_t>(Prefix());
    if (ImageBuffer.size() < bytes && !AllocateBlock(write::frames.ImageBuffer, bytes)) return {};
    return write::ImageBufferPixels(Prefix()).first(values);
}

}  // namespace

bool SomethingToMeasure()
{
    return SomethingOnView("measure");
}

bool KeepFrameOnView()
{
    if (ViewingFile) return true;
    const std::span<std::int16_t> room = RoomForCameraFrame();
    if (room.empty()) return false;
    if (LiveVideo) return true;
    const std::span<const std::int16_t> replayed = ReplayedFrame();
    const std::span<const std::int16_t> shown = replayed.empty() ? std::span(LiveFrame) : replayed;
    if (shown.size() == room.size()) std::ranges::copy(shown, room.begin());
    return true;
}

int ReadFrameToMeasure()
{
    if (!LiveVideo) return 1;
    const std::span<std::int16_t> room = RoomForCameraFrame();
    const std::size_t values = room.size();
    if (values == 0 || (LiveFrame.size() != values && !AllocateBlock(write::frames.LiveFrame, values))) return 0;
    if (!GetVideoData(std::span(write::frames.LiveFrame))) return 0;
    std::ranges::copy(LiveFrame, room.begin());
    NoteScriptFrame();
    return 1;
}

std::span<const std::int16_t> FrameToMeasure()
{
    const Point size = FrameSizeOnView();
    if (size.x <= 0 || size.y <= 0) return {};
    const auto count = static_cast<std::size_t>(size.x) * static_cast<std::size_t>(size.y);
    const std::span<const std::int16_t> pixels = ImageBufferPixels(Prefix());
    return pixels.size() < count ? std::span<const std::int16_t>{} : pixels.first(count);
}

CountRange RangeOnView()
{
    if (ViewingFile) return {.low = ImageHeader.DisplayLow, .high = ImageHeader.DisplayHigh};
    return {.low = DisplayLow, .high = DisplayHigh};
}

}  // namespace kelvo
