// One pixel through the frames of a source, a count a frame: of the host frames, or of an image file, from which only
// that pixel is read, frame by frame. Memory is taken for one count a frame, whatever the frames' size.
//
// A file may be damaged, or be written to meanwhile: nothing is taken from outside the bytes that it has.
#pragma once

#include "imagefile/header.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

// An image file as it was when it was chosen.
struct TraceFile {
    std::string path;
    ImageHeaderRecord header;      // in native order; FrameCount is the number of frames that the file's length holds
    std::int32_t headerBytes = 0;  // 512 or 1024
    ImageHeaderRecord asRead;      // the file's first bytes, by which a file that has become another is told
};

// Reads a file's header, and leaves ImageHeader as it is. nullopt after a box: ReadImageHeader's; "Invalid data sample
// size: %d bytes per sample" under "Use different function to read this image file."; or "Error reading Image File
// Header\n%s" where the sizes make no frame or the file holds no whole one.
std::optional<TraceFile> ReadTraceFile(std::string_view path);

// A pixel of the frames first to last, both from 0 and included.
struct TracePlace {
    std::int32_t first = 0;
    std::int32_t last = 0;
    std::int32_t row = 0;
    std::int32_t column = 0;
};

enum class TraceRead {
    kComplete,
    kNoMemory,
    kShort,    // the file has ended before the last frame, or the place lies outside its frames
    kChanged,  // the file isn't the one that was chosen, or is gone
    kStopped   // by Esc
};

// Both leave counts empty unless they give kComplete. Host frames that don't stand read as 0.
TraceRead ReadHostTrace(const TracePlace& place, std::vector<std::int16_t>& counts);
// The counts that viewing the file shows there: floats are rounded, words of a byte-swapped file exchanged, with a
// FrameHeader before the samples the last of them as they stand (imagefile/frame_file.h, SwapRecordWords). Blocks;
// many frames can be stopped by Esc.
TraceRead ReadFileTrace(const TraceFile& file, const TracePlace& place, std::vector<std::int16_t>& counts);

}  // namespace kelvo
