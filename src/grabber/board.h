// The frame grabber: opened at camera turn-on, closed at program exit.
#pragma once

#include "grabber/board_state.h"

#include <cstdint>
#include <span>
#include <string>

namespace kelvo {

// Opens the board and makes the frames at the current Hroi and Vroi. 1 (GrabberPresent is 1 then), or 0 at the first
// failure, some of which show a box; the frames in host memory are valid in all cases where memory was there.
int init_itex();

// At program start, and again after a change of camera: then host frames are made anew. 1.
int ResetBoardState();
void ReleaseBoard();  // the display table and the host frames are freed; GrabberPresent 0
void ExitBoard();     // ReleaseBoard, and the board is closed
int CheckBoardModules();
void GetBoardErrorText(std::int32_t code, std::string& text);

// Reads the active camera's section into ActiveConfig. Where its frames have another size than those before,
// FrameSizeChanged follows; where host frames of the same size stand they stay counted, unless the section wants none.
void ReadActiveSection();
// After a change of Hroi or Vroi: drops frames, lists, host frames and what follows from their size, and DECOM.TMP;
// makes FrameA again if the board is open.
void FrameSizeChanged();

// Trigger and sync lines.
int SetTriggerMode(std::int32_t enable);   // 1; 0 if the grab or the arming fails
int WaitForTrigger(std::int32_t timeout);  // 1 when triggered; otherwise 0, and armed again
// The next frame in readout order with DataOffset added, Hroi x Vroi. 1; 0 after the box of GetVideoData's failures.
int ReadFrameNow(std::span<std::int16_t> buffer);
void ExternalSyncOn(std::int32_t flag);
void ExternalSyncPulse();

// As before the program start: nothing is known of a board (grabber/board_state.h). The board itself isn't asked.
void ForgetBoard();

}  // namespace kelvo
