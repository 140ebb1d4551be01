// The complete rebuild of the table in force: readout order, substitution, orientation.
#pragma once

#include "pixel/decommutation.h"
#include "platform/types.h"
#include "state/camera_config.h"

#include <cstdint>
#include <string_view>

namespace kelvo {

// How the picture is turned: mirrorHoriz reverses its rows, mirrorVert its columns, rotateCcw turns it to the left.
struct Orientation {
    std::int32_t mirrorHoriz = 0;
    std::int32_t mirrorVert = 0;
    std::int32_t rotateCcw = 0;
    friend bool operator==(const Orientation&, const Orientation&) = default;
};
Orientation OrientationInForce();
// For each pixel of a picture that is turned so, Vroi x Hroi, the place in the table before orientation of what it
// shows (ReorderDecomList). Empty where memory is refused or the region is empty.
DecomTable PlacesShown(const Orientation& orientation, const CameraConfig& config);

// Builds the table, replaces the bad pixels of badDetFile in it (with substitute, a calibration loaded and a name),
// mirrors and rotates it, installs it, writes DECOM.TMP, and sets the check of "Replace bad pixels" as substitute says.
// So a substitution travels with its pixel through the orientation. A frozen picture is shown anew.
// 1; 0 after a box, the table in force unchanged: "Camera should be on.", "Failure to allocate memory", or what a step
// tells. An installation that fails is told ("Hardware Timeout Error, Download of Decommutation List"), and the rebuild
// goes on.
std::int32_t SetImageOrientation(std::int32_t substitute, std::int32_t mirrorHoriz, std::int32_t mirrorVert,
                                 std::int32_t rotateCcw, std::string_view badDetFile, const CameraConfig& config,
                                 std::int32_t readoutShift);

// The same with all that is in force: SubstBadPixels, MirrorHoriz, MirrorVert, RotateCCW, the set's list of bad
// detectors, the readout shift of the frame rate's row.
std::int32_t RebuildTable(const CameraConfig& config);

// The table in force as a set's file: what DECOM.TMP holds, unless that one couldn't be written. False where the file
// stays as it was; nothing is told.
bool SaveTableInForce(std::string_view path);

// Prepares the table for a calibration run: unity coefficients, then the table in plain order. Non-zero where the unity
// download succeeded, whatever the rebuild gave.
std::int32_t SetCommutationOrder();

// F9: bad pixels are replaced, or not. With a calibration loaded the table is rebuilt, and its copies follow: the
// calibration's .dcm and the key SubstBadPixels of its .cal. Where the rebuild fails the flag stays. Nothing happens
// with DualCamera.
void ToggleBadPixelReplacement(HWND window);

}  // namespace kelvo
