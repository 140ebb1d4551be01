// Frames as pictures: portable network graphics of three times 8 bits a pixel, in the colors on view or of a range that
// was asked for, with what PictureOptions add. One frame is NAME.png. Of a range each is a file of its own,
// NAME-000012.png, numbered as in its source, and takes its name as soon as it is whole; where one of those names
// stands and may not be replaced none is written.
//
// Texts inside tell where it comes from: Software, Description (the provenance as JSON, with the frame's time and the
// counts of the first and the last color), Source (the camera) and Creation Time (UTC) where they are known.
#pragma once

#include "export/exported_picture.h"
#include "export/frame_sink.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

class PngWriter final : public FrameSink {
  public:
    PngWriter(std::string path, bool replace, PictureOptions options)
        : FrameSink(std::move(path), replace), options_(std::move(options))
    {
    }
    std::vector<std::string> Targets(const ExportDescription& description) const override;
    // Counts alone.
    ExportFailure Begin(const ExportDescription& description) override;
    ExportFailure Add(const ExportedFrame& frame) override;
    ExportFailure End() override { return std::nullopt; }

  private:
    PictureOptions options_;
    ExportDescription description_;
    std::vector<std::string> targets_;
    std::optional<ExportedPicture> picture_;
};

}  // namespace kelvo
