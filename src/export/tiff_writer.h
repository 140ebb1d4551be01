// Frames as TIFF, by libtiff: a page a frame, one strip each, little-endian, 16-bit signed integers (SampleFormat 2) or
// 32-bit floats (SampleFormat 3). Each page's ImageDescription is JSON with "form", "unit", "scale" and "time"; that of
// the first one has the whole provenance, the places of the bad detectors and the pixels outside of the region too.
// Files that might reach 4 GB are BigTIFF, whose offsets have 64 bits.
//
// TIFF Revision 6.0, Aldus, June 1992, with SampleFormat of its section 19.
#pragma once

#include "export/frame_sink.h"
#include "platform/files.h"

#include <cstdint>
#include <string>

struct tiff;  // libtiff's

namespace kelvo {

class TiffWriter final : public FrameSink {
  public:
    static constexpr std::int64_t kBigTiffFrom = 4'000'000'000;  // bytes, less than an offset of 32 bits reaches
    TiffWriter(std::string path, bool replace, std::int64_t bigTiffFrom = kBigTiffFrom)
        : FrameSink(std::move(path), replace), bigTiffFrom_(bigTiffFrom)
    {
    }
    ~TiffWriter() override;
    ExportFailure Begin(const ExportDescription& description) override;
    ExportFailure Add(const ExportedFrame& frame) override;
    ExportFailure End() override;

    // The file as libtiff reaches it.
    struct Stream {
        File* file = nullptr;
        std::uint64_t position = 0;
        bool hasFailed = false;
    };

  private:
    std::string DescriptionOf(const ExportedFrame& frame) const;
    void Close();

    std::int64_t bigTiffFrom_;
    ExportDescription description_;
    Stream stream_;
    tiff* tiff_ = nullptr;
    bool isFirst_ = true;
};

}  // namespace kelvo
