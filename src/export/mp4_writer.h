// Frames as a video: MP4 through the machine's own ffmpeg, which is handed the frames as they come (24 bits a pixel),
// with the contrast, brightness and colors that are on view when it begins, or those of a range that was asked for, and
// what PictureOptions add. They hold for all frames: a count has one color from the first to the last. The rate is that
// of the recording, 10 Hz where it isn't known; a side of an odd number of pixels gets a black line. The provenance
// stands in the comment.
#pragma once

#include "export/exported_picture.h"
#include "export/frame_sink.h"
#include "platform/child_process.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

class Mp4Writer final : public FrameSink {
  public:
    Mp4Writer(std::string path, bool replace, PictureOptions options)
        : FrameSink(std::move(path), replace), options_(std::move(options))
    {
    }
    // Counts alone. Also fails where there is no ffmpeg: "A video needs the program ffmpeg, which isn't installed".
    ExportFailure Begin(const ExportDescription& description) override;
    ExportFailure Add(const ExportedFrame& frame) override;
    ExportFailure End() override;

  private:
    std::string Complaint();

    PictureOptions options_;
    std::size_t pixels_ = 0;  // of a frame
    std::optional<ExportedPicture> picture_;
    std::vector<std::uint8_t> bytes_;
    std::optional<ChildProcess> ffmpeg_;
};

}  // namespace kelvo
