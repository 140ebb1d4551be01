// The dialogs that ask which frames and which rectangle of them move between the host frames and a buffer file:
// BUF_LOAD and BUF_SAVE. What is chosen stands in state/buffer_state.h.
#pragma once

#include "platform/types.h"

namespace kelvo {

// For the file named in FilePathBuf, whose frames and rectangle stand in the fields when it opens. 1: BufferFirstFrame,
// BufferLastFrame, the rectangle and BufferLoadAt are what was typed, inside the file's. 0: cancelled, or the file's
// header can't be read, which has been told; all of them are as before.
int BufferLoadDialog(HWND parent);

// For the frames and the rectangle that stand in the variables; the first ones it takes are the largest. 1: they are
// what was typed. 0: cancelled, or "No frames stored in buffer."; they are as before.
int BufferSaveDialog(HWND parent);

}  // namespace kelvo
