// A frame as text: lines of comma-separated values (RFC 4180, lines end with a line feed), a row of the picture a line,
// behind lines that begin with "# " and tell the provenance. Decimal points whatever the locale; floats in the shortest
// form that reads back to the same bits, bad detectors as "nan".
#pragma once

#include "export/frame_sink.h"
#include "platform/files.h"

#include <optional>
#include <string>

namespace kelvo {

class CsvWriter final : public FrameSink {
  public:
    CsvWriter(std::string path, bool replace) : path_(std::move(path)), replace_(replace) {}
    // Also fails where more than one frame is to come.
    ExportFailure Begin(const ExportDescription& description) override;
    ExportFailure Add(const ExportedFrame& frame) override;
    ExportFailure End() override;

  private:
    std::string path_;
    bool replace_;
    ExportDescription description_;
    std::optional<NewFile> file_;
};

}  // namespace kelvo
