// The advanced video set-up: the head's window, delays and biases, changed while the oscilloscope shows what they do.
#pragma once

#include "platform/types.h"

#include <array>
#include <cstdint>

namespace kelvo {

// The order in which the converter delivers its pixels: 12 or 21; 1: a head whose order can't be chosen.
extern const std::int32_t& AdPixelOrder;

// 1: closed by OK, and what was changed is kept in the settings, the camera's frame size with it. 0: cancelled, and the
// head, Hroi and Vroi are as they were, and the calibration that a size in between had dropped is in force again; or
// the dialog couldn't be opened. Either way a head that missed some of what was sent is told in one box. Blocks.
int AdvancedDialog(HWND parent);
LRESULT fnADVANCEDDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

// A window of the focal plane, pixels, limits inclusive.
struct HeadWindow {
    std::int32_t colStart = 0;
    std::int32_t rowStart = 0;
    std::int32_t colEnd = 0;
    std::int32_t rowEnd = 0;
    friend bool operator==(const HeadWindow&, const HeadWindow&) = default;
};
// The smallest window at (left, top) that the focal plane can read out around a picture of columns x rows: sides are
// rounded up to multiples of 8, at least 128 across and 8 down. Left and top stay as they are.
HeadWindow WindowFromRectangle(std::int32_t left, std::int32_t top, std::int32_t columns, std::int32_t rows);

// Takes the numbers of the dialog's fields over into HeadTiming, FpaSerialWord and ActiveConfig. Nothing is sent. A
// field that is no number of its range is written back with the value in force and gets the focus, and nothing is
// taken. 1: something changed. A new Hroi or Vroi drops the frames and the calibration of the old size
// (FrameSizeChanged).
int ApplyAdvancedFields(HWND dialog);

// As before the dialog was first opened.
void ResetAdvancedDialog();

}  // namespace kelvo
