#include "output/capture_to_dib.h"

#include "acquire/averaging.h"
#include "dibapi32/dibapi32.h"
#include "display/color_map.h"
#include "display/display_pipeline.h"
#include "display/gray_lookup.h"
#include "grabber/frame_size.h"
#include "grabber/host_frames.h"
#include "imagefile/header.h"
#include "platform/box.h"
#include "platform/memory.h"
#include "state/cal_state.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "video/video.h"

#include <algorithm>
#include <limits>
#include <span>
#include <vector>

namespace kelvo {

namespace {

constexpr int kBits = 8;

// Counts in image order; those of the camera lie in own.
struct Frame {
    std::vector<std::int16_t> own;
    std::span<const std::int16_t> counts;
    Point size;
};

bool Tell(const char* text)
{
    MessageBox(hWndMain, text, kMessageCaption);
    return false;
}

bool TakeStoredFrame(Frame& frame)
{
    const auto columns = static_cast<std::size_t>(std::max(frame.size.x, 0));
    const auto rows = static_cast<std::size_t>(std::max(frame.size.y, 0));
    const std::span<const std::int16_t> pixels = ImageBufferPixels(ImageHeader.ImageHeaderDataOffset);
    if (columns * rows == 0 || pixels.size() < columns * rows) return Tell("Failure to allocate video memory!");
    frame.counts = pixels.first(columns * rows);
    return true;
}

// False where AverageFrames would hand back its block as it stands, a picture that never was on the screen.
bool CameraHasPicture()
{
    const std::size_t values = CameraFrameValues();
    return GrabberPresent && values > 0 && (LiveVideo || RawFrame.size() >= values);
}

// A gather turns only what a calibration corrects: without one the frame comes as the detector was read out. False
// where memory is refused.
bool PutInImageOrder(std::vector<std::int16_t>& counts)
{
    if (CalType != 0) return true;
    std::vector<std::int16_t> readout;
    if (!EnsureDecomList() || !AllocateBlock(readout, counts.size())) return false;
    readout.swap(counts);
    for (std::size_t i = 0; i < counts.size(); ++i) {
        const std::size_t raw = i < DecomList.size() ? DecomList[i] : i;
        counts[i] = raw < readout.size() ? readout[raw] : std::int16_t{0};
    }
    return true;
}

bool TakeCameraFrame(Frame& frame)
{
    frame.counts = ReplayedFrame();
    if (!frame.counts.empty()) return true;
    if (!AllocateBlock(frame.own, CameraFrameValues())) return Tell("Failure to allocate video memory!");
    if (!CameraHasPicture() || AverageFrames(std::span(frame.own), {}, 1, 0, 0, frame.size.x - 1, frame.size.y - 1,
                                             kAverage16 | kTakeNewFrames) < 1) {
        return Tell("Video Data Acquisition Failed, Hardware error");
    }
    if (!PutInImageOrder(frame.own)) return Tell("Failure to allocate video memory!");
    frame.counts = frame.own;
    return true;
}

FrameRect DefaultRect()
{
    FrameRect rect = DefaultFrameRect();
    if (!ViewingFile) rect.top = 0;  // a picture that is panned down is whole all the same
    return rect;
}

Dib ColoredDib(const FrameRect& rect)
{
    constexpr std::int64_t kLongest = std::numeric_limits<std::int32_t>::max();
    if (rect.Width() > kLongest || rect.Height() > kLongest) return nullptr;
    Dib dib = CreateDIB(static_cast<int>(rect.Width()), static_cast<int>(rect.Height()), kBits);
    if (!dib) return nullptr;
    static DibPaletteCache palette;
    ReadyColorMap();
    std::ranges::copy(palette.InForce(), DibPalette(*dib).begin());
    return dib;
}

// The rows of the rectangle, from the bottom up, into a bitmap that is all 0.
void LookUpRectangle(const Frame& frame, const FrameRect& rect, std::span<std::uint8_t> bits)
{
    if (DisplayLut.empty()) return;
    static GrayTable table;
    FillGrayTable(table, DisplayLut);
    const std::int64_t left = std::max(rect.left, 0);
    const std::int64_t right = std::min<std::int64_t>(rect.right, frame.size.x - 1);
    if (right < left) return;
    const std::int64_t top = std::max(rect.top, 0);
    const std::int64_t bottom = std::min<std::int64_t>(rect.bottom, frame.size.y - 1);
    const auto columns = static_cast<std::size_t>(right + 1 - left);
    for (std::int64_t row = top; row <= bottom; ++row) {
        const std::int64_t source = row * frame.size.x + left;
        const std::int64_t target = (rect.bottom - row) * DibRowBytes(kBits, rect.Width()) + left - rect.left;
        LookUpGrays(frame.counts.subspan(static_cast<std::size_t>(source), columns), table,
                    bits.subspan(static_cast<std::size_t>(target), columns));
    }
}

}  // namespace

Dib CaptureToDib(std::int32_t /*contrast*/, std::int32_t /*brightness*/, const FrameRect* rectangle)
{
    const FrameRect rect = rectangle ? *rectangle : DefaultRect();
    Dib dib = ColoredDib(rect);
    if (!dib) {
        Tell("Failure to allocate video memory!");
        return nullptr;
    }
    Frame frame;
    frame.size = FrameSizeOnView();
    if (!(ViewingFile ? TakeStoredFrame(frame) : TakeCameraFrame(frame))) return nullptr;
    EnsureDisplayLut();
    LookUpRectangle(frame, rect, DibBits(*dib));
    return dib;
}

}  // namespace kelvo
