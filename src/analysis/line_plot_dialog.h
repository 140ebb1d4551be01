// The dialog LINEPLOT: the counts along a straight line of the frame on view, stored, frozen or live, as a plot with
// its figures, and the line's mark in the picture. What it shows is drawn by analysis/line_plot_view.h.
//
// Open it holds the picture: nobody else draws frames meanwhile. Coordinates are taken at once, while the operator
// types; the keys of section LinePlot are written at Exit and after the set-up.
#pragma once

#include "platform/types.h"
#include "ui/command_end.h"

namespace kelvo {

// The command: the dialog, or the reason on the status line why there is nothing to measure.
CommandEnd LinePlot();

// Runs the dialog, frees LineScratchFrame afterwards and shows the frame without a mark. 1 after Exit; 0 where it
// couldn't open or the board failed, which a box has told. Blocks.
int LinePlotDialog(HWND window);

LRESULT fnLINEPLOTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

// As at the start of the program.
void ResetLinePlotDialog();

}  // namespace kelvo
