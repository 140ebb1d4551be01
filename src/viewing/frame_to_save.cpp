#include "viewing/frame_to_save.h"

#include "acquire/averaging.h"
#include "grabber/frame_size.h"
#include "grabber/host_frames.h"
#include "imagefile/header.h"
#include "state/camera_config.h"
#include "state/frame_state.h"
#include "ui/gather.h"

#include <algorithm>

namespace kelvo {

namespace {

bool CopyFrameOnView(std::span<std::int16_t> counts)
{
    const std::span<const std::int16_t> pixels = ImageBufferPixels(ImageHeader.ImageHeaderDataOffset);
    if (pixels.size() < counts.size()) return false;
    std::copy_n(pixels.begin(), counts.size(), counts.begin());
    return true;
}

}  // namespace

std::size_t ValuesOnView()
{
    if (!ViewingFile) return CameraFrameValues();
    const Point size = FrameSizeOnView();
    return static_cast<std::size_t>(std::max(size.x, 0)) * static_cast<std::size_t>(std::max(size.y, 0));
}

bool FrameCanBeGathered(std::uint32_t mode)
{
    if (ViewingFile) return true;
    const std::size_t values = CameraFrameValues();
    return (mode & kTakeNewFrames) && values > 0 && (LiveVideo || RawFrame.size() >= values);
}

bool GatherFrameToSave(std::span<std::int16_t> counts, std::uint32_t frames, std::uint32_t mode)
{
    ResetGather();
    if (!FrameCanBeGathered(mode)) return false;
    if (ViewingFile) return CopyFrameOnView(counts);
    if (const auto replayed = ReplayedFrame(); !replayed.empty() && replayed.size() == counts.size()) {
        std::ranges::copy(replayed, counts.begin());
        return true;
    }
    const Point size = FrameSizeOnView();
    return AverageFrames(counts, {}, frames, 0, 0, size.x - 1, size.y - 1, mode) != 0;
}

Point ActivePartOnView()
{
    if (ValuesOnView() == 0) return {};
    const Point size = FrameSizeOnView();
    if (ViewingFile) return size;
    return {std::clamp(ActiveConfig.Hactive, 1, size.x), std::clamp(ActiveConfig.Vactive, 1, size.y)};
}

void CutToActivePart(std::vector<std::int16_t>& frame)
{
    const Point part = ActivePartOnView();
    const auto columns = static_cast<std::ptrdiff_t>(part.x);
    const auto pitch = static_cast<std::ptrdiff_t>(FrameSizeOnView().x);
    for (std::ptrdiff_t row = 1; columns < pitch && row < part.y; ++row) {
        std::copy_n(frame.begin() + row * pitch, columns, frame.begin() + row * columns);
    }
    frame.resize(static_cast<std::size_t>(part.x) * static_cast<std::size_t>(part.y));
}

}  // namespace kelvo
