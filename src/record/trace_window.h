// The dialog TRACES: traces of the view's regions, of live video or of the file on view, as a plot over time or as a
// spectrum, and as a file. Without a region the whole picture is traced.
//
// Live video is traced as long as the dialog is open and nobody stops it; a recording that runs goes on beside it.
#pragma once

#include "platform/types.h"

namespace kelvo {

// What is plotted of the chosen region, in the order of the list.
enum class TraceFigure { kMean, kDeviation, kMinimum, kMaximum, kSpectrum };

// The command: opens the dialog until the operator leaves it, which ends a live trace. "Unable to display dialog" where
// it can't be made.
void OpenTraceWindow();

// Nothing was traced from a file.
void ResetTraceWindow();

}  // namespace kelvo
