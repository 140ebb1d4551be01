// The dialog IMGMATH, which asks for an image math (analysis/image_math.h) and runs it. It begins with what section
// ImageMath of kelvo.ini says, and writes nothing there.
#pragma once

#include "platform/types.h"

#include <cstdint>

namespace kelvo {

// The controls of IMGMATH.
constexpr int kMathConstant1 = 701;
constexpr int kMathFrame1 = 702;
constexpr int kMathConstant2 = 704;
constexpr int kMathFrame2 = 705;
constexpr int kMathConstant3 = 706;
constexpr int kMathResult = 707;
constexpr int kMathBrowse = 111;

// Runs the dialog until a result is written (1) or the operator leaves it (0; also "Unable to display dialog"). What
// was written is told on the status line: "1234 samples wrapped" where sums left 16 bits, otherwise the file. What
// won't do, and what failed, is told in a box with a sound, and the dialog goes on.
std::int32_t ImageMathDialog(HWND window);

LRESULT fnIMGMATHDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

// As before the dialog was first opened.
void ResetImageMathDialog();

}  // namespace kelvo
