// A frame as a picture that leaves the program: its pixels in the colors of a look, one by one, and beside and below
// them what the options ask for. Nothing stands over the frame but regions, which are drawn as the screen draws them.
//
// The scale lies on the right of the frame, the time below both; what is smaller than they are stands on their dark
// ground. A scale of few rows makes the picture higher. All pictures of an export have one size and one scale.
#pragma once

#include "export/frame_sink.h"
#include "export/picture_options.h"
#include "platform/paint.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

class ExportedPicture {
  public:
    // nullopt where memory is refused, or text can't be drawn. Text needs an application object
    // (platform/application.h).
    static std::optional<ExportedPicture> Make(const ExportDescription& description, PictureOptions options);

    const DeviceBitmap& Picture() const { return picture_; }
    const PictureLook& Look() const { return *options_.look; }  // NOLINT(bugprone-unchecked-optional-access): Make

    // Makes the picture that of this frame of counts. False where its time can't be drawn.
    bool Show(const ExportedFrame& frame);

  private:
    struct Mark {
        std::size_t pixel = 0;
        std::uint32_t color = 0;
    };

    bool LayOut(const ExportDescription& description);
    bool DrawScale();
    bool DrawRegions(const Provenance& provenance);
    bool DrawName(const Region& region, const Point& place, const Point& size);
    void MarkLine(std::span<const Point> line, const Rect& frame, std::uint32_t color);
    bool DrawTime(const FrameTiming& timing);

    PictureOptions options_;
    DeviceBitmap picture_;
    DeviceBitmap timeLine_;
    std::vector<Mark> marks_;  // of the regions, over the frame
    std::size_t columns_ = 0;
    std::size_t rows_ = 0;
    int bodyHeight_ = 0;     // of frame and scale
    std::string localTime_;  // of the header; empty: it has none
    bool isSequence_ = false;
};

// When a frame was taken, as a picture tells it: in UTC where its recording knows that
// ("2026-11-18T11:06:40.123456789Z"), otherwise of a sequence the seconds since its first frame ("0.050000 s"),
// otherwise the header's time ("2026-11-18T12:06:40 local time"). Empty where none is known.
std::string TimeOfPicture(const FrameTiming& timing, std::string_view localTime, bool isSequence);

}  // namespace kelvo
