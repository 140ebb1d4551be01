// A recorded sequence as it lies on the disk, frame by frame: for what repairs, cuts, joins and checks it. Any file
// gives a clear result; no window and no box.
#pragma once

#include "imagefile/header.h"
#include "platform/files.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace kelvo {

class SequenceFile {
  public:
    // Of a file of whole 512 bytes that describe frames of integers or floats; also of one whose header is swapped. Not
    // of files of the spectrometer trigger. The mode is kRead or kReadWrite.
    static std::optional<SequenceFile> Open(std::string_view path, FileMode mode);

    const ImageHeaderRecord& Header() const { return header_; }                           // in native order
    std::int64_t FrameBytes() const { return frameBytes_; }                               // with its FrameHeader
    std::size_t HeaderBytesOfFrame() const { return static_cast<std::size_t>(before_); }  // 0 or 80
    std::int64_t Frames() const { return frames_; }                                       // whole ones, by the length
    std::int64_t BytesBehind() const { return behind_; }                                  // of a part of one

    // Frame number index, FrameHeader and pixels, to block, which has FrameBytes. False beyond the end or on an error.
    bool ReadFrame(std::int64_t index, std::span<std::byte> block);
    // Cuts off what isn't a whole frame and makes the header's count true. False where the disk refused.
    bool EndWithLastFrame();
    // False: it is being recorded. Held as long as the file is open.
    bool Lock() { return file_.Lock(); }

    // The 512 bytes of a header in this file's own order, that many frames counted.
    ImageHeaderRecord HeaderForFile(std::int64_t frames) const;

  private:
    SequenceFile(File file, const ImageHeaderRecord& header, bool swapped);

    File file_;
    ImageHeaderRecord header_;
    bool swapped_;
    std::int64_t before_;
    std::int64_t frameBytes_;
    std::int64_t frames_ = 0;
    std::int64_t behind_ = 0;
};

// Frames were changed where they stand: their checksums in the journal beside the sequence, if one lies there, are made
// true again. Where these are all its frames and pixels isn't empty the journal's head says what they are now. False
// where the journal couldn't be read or rewritten: it stands as it was.
bool RenewChecksums(std::string_view path, std::int64_t first, std::int64_t count, std::string_view pixels);

// Whether somebody records into it now. Waits for up to 200 ms where somebody holds it.
bool IsBeingRecorded(std::string_view path);
// Whether anybody holds it at this moment, and be it to ask the same.
bool IsHeldNow(std::string_view path);

}  // namespace kelvo
