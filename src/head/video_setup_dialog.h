// The oscilloscope dialog's procedure. VideoSetupDialog, which runs it, is declared in head/video_setup.h.
#pragma once

#include "platform/types.h"

#include <cstdint>

namespace kelvo {

// QVF1058, the set-up of heads with one channel. The working copies of gain and offset are its own until OK.
LRESULT fnVIDEOSETDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

// As before the dialog was first opened.
void ResetVideoSetupDialog();

}  // namespace kelvo
