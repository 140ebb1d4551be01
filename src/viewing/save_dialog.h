// The SAVE dialog: the name of the file to save to, with a list of files and directories of its own, and what goes with
// the name: frames to average, the sequence's first number, one file or many.
#pragma once

#include "platform/types.h"

#include <cstdint>

namespace kelvo {

// The pattern that the dialog opens with. The numbers are the radio buttons'.
constexpr int kSaveImages = 1468;     // *.img
constexpr int kSaveSequences = 1470;  // *.seq
constexpr int kSaveAnything = 1484;   // *.*
constexpr int kSaveBuffers = 1480;    // *.buf
extern const std::int32_t& SaveDialogMode;

// What a buffer is saved as: at most one is 1. Both 0 when the dialog opens.
extern const std::int32_t& SaveAverage;
extern const std::int32_t& SaveStdDev;

// Runs the dialog in SaveDialogMode. It begins in FirstFileDirectory (ui/select_file.h), if there is one, and from the
// first name taken on in the working directory. 1: the whole path is in FilePathBuf, the numbers in
// FramesToAverageImage, or in FramesToAverageSeq, SeqNumber and SeqNumberStart, and the working directory is the
// file's. 0: cancelled, the working directory as before; or "Unable to display dialog" under "System Error". MultiFrame
// is stored the moment it changes.
int SaveDialog(HWND window);

// As before the dialog was first opened.
void ResetSaveDialog();

}  // namespace kelvo
