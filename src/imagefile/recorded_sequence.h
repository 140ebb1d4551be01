// A sequence that is being recorded: NAME.seq with a FrameHeader before each frame, and its journal NAME.seq.frames
// (imagefile/frames_file.h). It may be used on any one thread, and shows no box.
//
// Whatever ends it, what has been appended stands: the journal has the record first, the frame is one write behind it,
// and readers count frames by the length. The file is locked as long as it is open, which tells others that it grows.
#pragma once

#include "imagefile/frames_file.h"
#include "imagefile/header.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kelvo {

class SequenceWriter {
  public:
    // Both files, new, with their heads. Of header count the sizes and what describes the camera; the rest is set:
    // native order, frame headers, no frame yet. nullopt, and neither file stands, where one of them stands already or
    // can't be made.
    static std::optional<SequenceWriter> Create(std::string_view path, const ImageHeaderRecord& header,
                                                const FramesHead& head);

    // One frame more: its pixels as the file shall have them. The record's checksums are worked out here. False where
    // the disk took only a part: that is cut off again, and the files end with the frame before.
    bool Append(const FrameRecord& record, std::span<const std::int16_t> pixels);
    // Takes the last frame back: another file that belongs with this one hasn't got it. False where the disk refused.
    bool DropLast();
    bool SyncData();  // to the disk, as far as it came; false if it may not have arrived
    // The header's count, the closing record, and all of it to the disk. False if something of that failed: the frames
    // stand all the same.
    bool Close(const FrameRecord& closing);

    std::int64_t Frames() const { return frames_; }
    std::int64_t Bytes() const { return std::int64_t{sizeof(ImageHeaderRecord)} + frames_ * frameBytes_; }
    std::int64_t FrameBytes() const { return frameBytes_; }  // with its FrameHeader
    bool IsNamed() const { return file_.IsNamed(); }         // nobody has deleted it
    const std::string& Path() const { return path_; }

  private:
    SequenceWriter(std::string path, File file, FramesFileWriter journal, const ImageHeaderRecord& header);
    bool CutToFrames();

    std::string path_;
    File file_;
    FramesFileWriter journal_;
    ImageHeaderRecord header_;
    std::int64_t frameBytes_;
    std::int64_t frames_ = 0;
};

// "Sat Nov 21 12:04:01.123 2026\n" and its terminator: local time, in C's words whatever the locale.
std::array<char, 30> FrameTimeText(std::int64_t utcNs);
// What a frame of a record has in front of it, as frame number index (from 0) of its file.
FrameHeaderRecord FrameHeaderOf(const FrameRecord& record, std::int64_t index);

}  // namespace kelvo
