// The dialog DIFFER: the reference of the difference that the picture shows (display/difference_view.h).
#pragma once

#include "ui/command_end.h"

namespace kelvo {

// The controls of DIFFER.
constexpr int kDifferLive = 22201;
constexpr int kDifferFile = 22202;
constexpr int kDifferFileName = 22203;
constexpr int kDifferBrowse = 22204;
constexpr int kDifferFrame = 22205;
constexpr int kDifferOff = 22206;
constexpr int kDifferNow = 22207;

// Asks for a reference: the camera's newest picture at its Ok, or a frame of a file, and shows the
// difference to it; or ends the one that is shown. Without a picture of the camera on view "There is no picture of the
// camera on view." What won't do as a reference is told in a box, and the dialog goes on.
CommandEnd CompareWithReference();

// At the end of a command: where the difference no longer fits the picture it ends, and the status line says why.
void TellUnfitDifference();

}  // namespace kelvo
