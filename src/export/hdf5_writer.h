// Frames as HDF5, by its library: the dataset "frames", frames x rows x columns, 16-bit signed integers or 32-bit
// floats, one chunk a frame, without compression. Datasets of one entry a frame: "index", "number" (-1: not known),
// "seconds" (NaN: not known), "utc_ns" (when the frame was complete; 0: not known), "integration_ms", "lost_by_board",
// "lost_by_ring", "passed_over", "lost_by_transport". Where bad detectors are known "mask", rows x columns, 1 for each;
// of a region "outside", likewise for the pixels outside of it. Attributes of the file: "program", "format" (1),
// "camera", "form", "quantity", "unit", "pixels", "calibration_set", "calibration_sha256" and "provenance", all of it
// as JSON; "frames" has "unit" too. What isn't known is an empty text.
#pragma once

#include "export/frame_sink.h"
#include "platform/files.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kelvo {

class Hdf5Writer final : public FrameSink {
  public:
    using FrameSink::FrameSink;
    ~Hdf5Writer() override;
    ExportFailure Begin(const ExportDescription& description) override;
    ExportFailure Add(const ExportedFrame& frame) override;
    ExportFailure End() override;

    // The file as the library reaches it. Once a write has failed the rest is taken and dropped: the library can then
    // close what it has open, which it refuses to do with a file that takes nothing.
    struct Stream {
        File* file = nullptr;
        bool hasFailed = false;
    };

  private:
    bool MakeFrames();
    bool WriteFacts();
    bool WriteTimings();
    bool WriteMask(const char* name, const std::vector<std::uint8_t>& mask);
    void Close();

    ExportDescription description_;
    std::vector<FrameTiming> timings_;
    Stream stream_;
    std::int64_t hdf_ = -1;  // the library's own numbers
    std::int64_t frames_ = -1;
};

}  // namespace kelvo
