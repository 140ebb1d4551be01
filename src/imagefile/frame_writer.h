// Image files being written: created or opened, frames put into them whole, the header true to what is there. No window
// and no box: what failed is returned, and who records tells the operator.
//
//     std::optional<FrameWriter> file = FrameWriter::Create(path);
//     const FrameWritten written = file->WriteImage(header, counts);
//     if (written.fault == FrameFault::kNone && file->Keep()) ...   // it stands
//     if (written.fault == FrameFault::kCut) file->KeepCut();       // or Drop
//
//     std::optional<FrameWriter> file = FrameWriter::OpenInPlace(path);  // for one more frame of a file
//     std::optional<ImageHeaderRecord> header = file->BeganEmpty() ? ... : file->ReadHeader();
//     const FrameWritten written = file->AppendFrame(*header, counts);
//
// In a byte-swapped file (ByteSwap 0) header and samples are swapped by 16-bit words on their way; the header in memory
// stays in native order, counts come back swapped.
#pragma once

#include "imagefile/header.h"
#include "platform/files.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kelvo {

enum class FrameFault {
    kNone,
    kNoHeader,     // the header couldn't be written; nothing of the frame was
    kCut,          // the disk took a part of the frame only
    kCutNoHeader,  // and then not the header that leaves it out either
    kNotCounted    // the frame was taken, but not the header that counts it
};

struct FrameWritten {
    FrameFault fault = FrameFault::kNone;
    std::size_t bytes = 0;  // of the frame's samples
};

class FrameWriter {
  public:
    // A file of its own, written beside its name: it takes the name when it is kept, and what stands there stays until
    // then. nullopt where the name can't be written.
    static std::optional<FrameWriter> Create(std::string_view path);
    // A file that is worked in place, made where there is none. nullopt where it can't be opened: one that stands and
    // can't be written isn't cut to nothing.
    static std::optional<FrameWriter> OpenInPlace(std::string_view path);

    // Nothing was in the file when it was opened.
    bool BeganEmpty() const { return beganEmpty_; }

    // The header of a file that has frames, in native order. The bytes are taken as they stand, whatever the frames in
    // hand measure. nullopt where they are too few or make no frames, and in a file of the spectrometer trigger.
    std::optional<ImageHeaderRecord> ReadHeader();
    // Whether the last frame that a header counts may begin where it says: behind the header, and no more than 2 GB
    // behind the end, for a frame may lie behind others that aren't there.
    bool HasPlaceFor(const ImageHeaderRecord& header);

    // For a file of its own, once. Writes the header, and one image right behind it, whatever FrameCount and
    // ImageHeaderDataOffset say.
    FrameWritten WriteImage(const ImageHeaderRecord& header, std::span<std::int16_t> counts);
    // The same, with the image at the place of the last frame that the header counts; what lies between reads as zeros.
    // Where the frame is cut and isn't the only one, FrameCount goes down by one and the header is written once more,
    // where the file stands: behind the partial frame. Readers count frames by the length.
    FrameWritten WriteLastFrame(ImageHeaderRecord& header, std::span<std::int16_t> counts);

    // For a file in place: one frame more, behind the whole frames that it has by its length; what was left of a frame
    // behind them is cut off first. Only when the frame is on the disk FrameCount becomes the number of frames, in the
    // file and in header, which is ReadHeader's, or one of the frame's own for a file that began empty. Of a frame that
    // is shorter than the header's the rest is zeros, and so is the place of its FrameHeader. On a fault all is as it
    // was: the frames, the header, the count.
    FrameWritten AppendFrame(ImageHeaderRecord& header, std::span<std::int16_t> counts);

    // Each of these ends the writing. Without one a file of its own is dropped, and one in place is closed as it is.

    // False if what was written may not have arrived; a file of its own is gone then, and the name as it was.
    bool Keep();
    // As far as it came; a file that stands under the name is worth more whole and stays instead.
    void KeepCut();
    // A file that began with this writing goes, or is empty again; one that had frames stays with what is in it.
    void Drop();

  private:
    explicit FrameWriter(std::string_view path) : path_(path) {}
    // NOLINTNEXTLINE(bugprone-unchecked-optional-access): one of the two is there, see below
    File& Contents() { return own_ ? own_->Contents() : *inPlace_; }
    bool WriteHeader(ImageHeaderRecord header);
    bool WriteHeaderInFront(const ImageHeaderRecord& header);
    bool BeginWithHeader(ImageHeaderRecord header);
    std::size_t WriteCounts(const ImageHeaderRecord& header, std::span<std::int16_t> counts);
    bool EndRecordAt(std::int64_t position);
    bool CutAt(std::int64_t position);
    bool CountFrames(ImageHeaderRecord& header, std::uint32_t frames);

    std::string path_;
    std::optional<NewFile> own_;  // one of the two is there until the writing ends
    std::optional<File> inPlace_;
    bool replacing_ = false;  // of its own: another file stands under the name
    bool made_ = false;       // in place: there was none
    bool beganEmpty_ = true;
    bool headerIsNative_ = false;  // in a byte-swapped file: some writers swap neither it nor the samples
};

}  // namespace kelvo
