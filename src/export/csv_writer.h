// A frame as text: lines of comma-separated values (RFC 4180, lines end with a line feed), a row of the picture a line,
// behind lines that begin with "# " and tell the provenance. Decimal points whatever the locale; floats in the shortest
// form that reads back to the same bits, bad detectors as "nan", a pixel outside of the region as an empty field in any
// form.
#pragma once

#include "export/frame_sink.h"

namespace kelvo {

class CsvWriter final : public FrameSink {
  public:
    using FrameSink::FrameSink;
    // Also fails where more than one frame is to come.
    ExportFailure Begin(const ExportDescription& description) override;
    ExportFailure Add(const ExportedFrame& frame) override;
    ExportFailure End() override;

  private:
    ExportDescription description_;
};

}  // namespace kelvo
