// Frames as a video: MP4 through the machine's own ffmpeg, which is handed the frames as they come (24 bits a pixel),
// with the contrast, brightness and colors that are on view when it begins. They hold for all frames: a count has one
// color from the first to the last. The rate is that of the recording, 10 Hz where it isn't known; a side of an odd
// number of pixels gets a black line. The provenance stands in the comment.
#pragma once

#include "export/frame_sink.h"
#include "export/picture_look.h"
#include "platform/child_process.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

class Mp4Writer final : public FrameSink {
  public:
    using FrameSink::FrameSink;
    // Counts alone. Also fails where there is no ffmpeg: "A video needs the program ffmpeg, which isn't installed".
    ExportFailure Begin(const ExportDescription& description) override;
    ExportFailure Add(const ExportedFrame& frame) override;
    ExportFailure End() override;

  private:
    std::string Complaint();

    std::optional<PictureLook> look_;
    std::vector<std::uint8_t> picture_;
    std::optional<ChildProcess> ffmpeg_;
};

}  // namespace kelvo
