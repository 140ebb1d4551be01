// Frames as a FITS cube, by cfitsio: columns x rows x frames (NAXIS1 to NAXIS3), 16-bit signed integers or 32-bit
// floats, the first row on top (ROWORDER 'TOP-DOWN'). Behind it a binary table FRAMES with a row a frame: its place,
// number, times and what is missing before it; where bad detectors are known an image MASK, 1 for each; and of a region
// an image OUTSIDE, 1 for each pixel outside of it. All parts carry CHECKSUM and DATASUM.
//
// DATE-OBS is the start of the first frame's exposure, UTC, where the recording knows when frames were complete: that
// moment, less the integration time. Otherwise there is none, and LOCTIME has the local time of the header. EXPTIME is
// in seconds.
//
// FITS Standard 4.0, Pence et al. 2018.
#pragma once

#include "export/frame_sink.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kelvo {

class FitsWriter final : public FrameSink {
  public:
    using FrameSink::FrameSink;
    ~FitsWriter() override;
    ExportFailure Begin(const ExportDescription& description) override;
    ExportFailure Add(const ExportedFrame& frame) override;
    ExportFailure End() override;

  private:
    bool WriteHead();
    bool WriteWhen(const FrameTiming& first);
    bool WriteHistory(const std::string& line);
    bool WriteTable();
    bool WriteMask(const char* name, const char* comment, std::vector<std::uint8_t>& mask);
    bool CutToFrames();
    void Close();
    bool CloseWhole();
    ExportFailure GoneWell(bool isDone) const;

    ExportDescription description_;
    std::vector<FrameTiming> timings_;
    void* fits_ = nullptr;  // cfitsio's fitsfile
    int status_ = 0;
};

}  // namespace kelvo
