// The window REGIONS, which stays open beside the main window and blocks nothing: the regions' figures in the frame on
// view, ten times a second, and what is done with regions by fields and buttons. While it is open and shows them over
// the picture, the left button and the arrow keys of the main window are theirs (regions/region_editing.h).
#pragma once

#include "platform/types.h"

#include <cstdint>

namespace kelvo {

constexpr int kRegApply = 1;  // the fields' values to the selected region; Return presses it
constexpr int kRegTable = 22101;
constexpr int kRegHead = 22102;
constexpr int kRegDraw = 22103;  // 0: select and move; then the shapes in the order of RegionShape
constexpr int kRegAdd = 22104;   // one of the shape that is drawn, a rectangle where none is
constexpr int kRegRemove = 22105;
constexpr int kRegName = 22106;
constexpr int kRegEmissivity = 22107;
constexpr int kRegReflected = 22108;  // °C
constexpr int kRegX1 = 22110;
constexpr int kRegY1 = 22111;
constexpr int kRegX2 = 22112;
constexpr int kRegY2 = 22113;
constexpr int kRegShow = 22114;
constexpr int kRegLeaveOut = 22115;
constexpr int kRegSet = 22116;      // names the set that tells the bad detectors of files
constexpr int kRegSetName = 22117;  // or why none is left out
constexpr int kRegLoad = 22118;
constexpr int kRegSave = 22119;
constexpr int kRegMessage = 22120;

HWND RegionsWindow();  // null while it isn't open
// The command: opens it, or brings it to the front. "Unable to display dialog" where it can't be made.
void OpenRegionsWindow();
void CloseRegionsWindow();
LRESULT fnREGIONSDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

// The window is gone.
void ResetRegionsWindow();

}  // namespace kelvo
