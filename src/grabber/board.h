// The frame grabber: opened at camera turn-on, closed at program exit.
#pragma once

#include "grabber/copm2.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace kelvo {

// Handles of the board's modules; 0 before init_itex. The computing modules are looked up and not used further.
extern BoardModule IcpModule;
extern BoardModule AcqModule;
extern BoardModule CmpModule;
extern BoardModule CmClu;
extern BoardModule CmMmp;
extern BoardModule CmHf;
extern BoardModule CmPa;
extern BoardModule CmMem;
extern BoardFrame FrameA;                    // the frame on the board
extern std::int32_t FramePitch;              // Hroi rounded up to a multiple of 32
extern std::int32_t FrameRows;               // Vroi
extern std::int32_t DataOffset;              // counts added to each raw value; key DataOffset of the camera section
extern std::vector<std::uint8_t> VideoCopy;  // Hroi x Vroi, filled by nothing

// Opens the board and makes the frames at the current Hroi and Vroi. 1 (GrabberPresent is 1 then), or 0 at the first
// failure, some of which show a box; the frames in host memory are valid in all cases where memory was there.
int init_itex();

// At program start, and again after a change of camera: then host frames are made anew. 1.
int ResetBoardState();
void ReleaseBoard();  // the display table and the host frames are freed; GrabberPresent 0
void ExitBoard();     // ReleaseBoard, and the board is closed
int CheckBoardModules();
void GetBoardErrorText(std::int32_t code, std::string& text);

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

}  // namespace kelvo
