#include "regions/frame_on_view.h"

#include "display/units.h"
#include "grabber/frame_size.h"
#include "grabber/host_frames.h"
#include "imagefile/header.h"
#include "state/cal_state.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "viewing/coefficient_view.h"

namespace kelvo {

namespace {

constexpr std::int16_t kFloatData = 8;  // DataType

std::span<const std::int16_t> WholeFrame()
{
    if (ViewingFile) return ImageBufferPixels(ImageHeader.ImageHeaderDataOffset);
    const std::span<const std::int16_t> replayed = ReplayedFrame();
    return replayed.empty() ? std::span<const std::int16_t>(LiveFrame) : replayed;
}

}  // namespace

std::span<const std::int16_t> CountsOnView()
{
    const Point size = FrameSizeOnView();
    if (size.x <= 0 || size.y <= 0 || (!ViewingFile && !CameraOn)) return {};
    const auto pixels = static_cast<std::size_t>(size.x) * static_cast<std::size_t>(size.y);
    const std::span<const std::int16_t> frame = WholeFrame();
    return frame.size() < pixels ? std::span<const std::int16_t>() : frame.first(pixels);
}

bool StoredCountsAreRaw()
{
    return ViewingFile && ImageHeader.IntensityCold == kUncalibratedIntensity && ImageHeader.SampleBytes != 4 &&
           ImageHeader.DataType != kFloatData && !IsCoefficientFile(ViewFilePath) && IsUnitAvailable(kUnitCounts) != 0;
}

MeasureOptions OptionsOnView(const BadDetMap& bad)
{
    MeasureOptions options;
    options.bad = bad;
    options.sources = CountsOfSources();
    options.countsAreRaw = StoredCountsAreRaw();
    if (!ViewingFile && ReplayedFrame().empty()) {
        options.raw = RawFrame;
        options.decomList = DecomList;
    }
    return options;
}

}  // namespace kelvo
