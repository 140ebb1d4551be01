// The APPLYCAL dialog: which frames, which set, where to (calib/apply_calibration.h). It works without a camera.
#pragma once

#include "platform/types.h"

#include <cstdint>

namespace kelvo {

constexpr int kApplyBrowse = 111;

// 1: the frames are corrected; the set's name is kept (key CalPath of section ApplyCal), and a result that is a file is
// on view at its first frame, as a sequence that load next and load last step through. 0: cancelled, or the dialog
// couldn't be opened. Blocks.
std::int32_t ShowApplyCalDialog(HWND window);
LRESULT fnAPPLYCALDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

// No image was corrected yet.
void ResetApplyDialog();

}  // namespace kelvo
