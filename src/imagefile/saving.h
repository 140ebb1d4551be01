// Saving what is on the screen: single images, numbered sequences, frames of one file.
#pragma once

#include "platform/types.h"

#include <cstdint>
#include <string>

namespace kelvo {

extern std::int32_t FramesToAverageImage;  // 1 to 1000
extern std::int32_t FramesToAverageSeq;
extern std::int32_t SeqNumber;       // the next number
extern std::int32_t SeqNumberStart;  // as entered
extern std::int32_t SaveDialogMode;  // the SAVE dialog's pattern: 1468 *.img, 1470 *.seq, 1480 *.buf, 1484 *.*
extern std::int32_t SaveAverage;
extern std::int32_t SaveStdDev;

// 1 when the file was written; 0 when it was not, after a box.
int SaveImage(const std::string& path, std::uint32_t framesToAverage);
// 1; -1 when nothing was written or the operator declined; 0 on a header failure; the bytes written on a short write.
std::int32_t SaveSequence(const std::string& basePath, std::int32_t& sequenceNumber, std::uint32_t framesToAverage);

// The SAVE dialog in SaveDialogMode. 1 and the path in FilePathBuf, or 0.
int SaveDialog(HWND window);

}  // namespace kelvo
