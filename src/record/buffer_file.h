// Buffer files (.buf): frames of the host store on disk, an ImageHeader of 512 bytes and 16-bit frames back to back,
// without frame headers. Inside the header's reserved area stand, 16 bits each, Frames of each letter of the
// composition that the frames were captured with, from byte 64 on, and Skip of each, from byte 88 on: twelve letters at
// most.
//
// A file whose header has ByteSwap 0 holds the words of header and frames with their bytes exchanged.
//
// Rectangles are in the camera's rows and columns, inclusive. In the store a row lies at row - RowStart and a column at
// column - ColStart (the window of the head, FpaSerialWord), in a file at row - TopRow and column - LeftColumn of its
// header.
#pragma once

#include "imagefile/header.h"
#include "record/sequence_library.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace kelvo {

// Results of both transfers below 0. The operator reads one text for all of them.
inline constexpr int kBufferRectangleOutside = -14;  // of the file's frame, or of the store's
inline constexpr int kBufferRange = -17;             // first above last, or a frame that file or store don't have
inline constexpr int kBufferRectangleOrder = -21;    // top above bottom, or left above right
inline constexpr int kBufferRectangleNegative = -22;
inline constexpr int kBufferNoFile = -25;       // can't be created or opened
inline constexpr int kBufferHeaderRead = -26;   // too short, or of frames that no buffer file has
inline constexpr int kBufferHeaderWrite = -27;  //
inline constexpr int kBufferFrameRead = -28;    // not in full
inline constexpr int kBufferFrameWrite = -29;   // not in full

// The header in native order, its FrameCount as the file's length has it (0: none is whole). nullopt where the file
// can't be read, or isn't one of 16-bit frames without frame headers. Tells nothing.
std::optional<ImageHeaderRecord> ReadBufferHeader(std::string_view path);

// Writes that rectangle of the frames in slots first to last. list has Frames and Skip of the composition's letters,
// which are taken in either case. The file takes its name when it is whole: after a failure what stood there stands.
// ImageHeader stays as it is. 1, or a code.
int SaveBufferFile(std::string_view path, std::int32_t first, std::int32_t last, std::int32_t top, std::int32_t left,
                   std::int32_t bottom, std::int32_t right, std::string_view composition,
                   std::span<const SubSeqRecord> list);

// Reads that rectangle of the file's frames first to last, each into the slot of its own number and each row to its
// own place there, the rest of the slot staying, and shows each as it arrives unless a stored file is on view. 1, or a
// code: where range or rectangle don't fit nothing is read, and after kBufferFrameRead the frames before it stand.
int LoadBufferFile(std::string_view path, std::int32_t first, std::int32_t last, std::int32_t top, std::int32_t left,
                   std::int32_t bottom, std::int32_t right);

}  // namespace kelvo
