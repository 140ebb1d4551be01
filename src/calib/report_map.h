// The report's map of bad detectors on a surface, by whole factors: a detector is a square of points, or, where the
// whole frame has no room, a square of detectors shares one point. Pure: gives positions and pixels; who paints them
// is calib/report_dialog.h.
#pragma once

#include "calib/calibration_report.h"
#include "platform/paint.h"
#include "platform/types.h"

#include <optional>
#include <string>

namespace kelvo {

constexpr int kLargestMapLevel = 64;

struct MapView {
    int columns = 0;  // of the frame
    int rows = 0;
    int width = 0;  // of the surface, points
    int height = 0;
    int level = 1;   // 1 and more: points on the side of a detector; below: 2 - level detectors share a point's side
    Point middle{};  // the detector in the middle of the surface, as far as the frame's edges allow
    int Block() const { return level >= 1 ? level : 1; }
    int Step() const { return level >= 1 ? 1 : 2 - level; }
};

// The whole frame at the largest level at which it has room.
MapView WholeMap(int columns, int rows, int width, int height);
// So many levels nearer (negative: farther), not beyond kLargestMapLevel nor beyond the whole frame; the detector at
// that point of the surface stays there where the edges allow.
MapView Zoomed(const MapView& view, int levels, Point about);
// The detector at that point comes into the middle.
MapView Centred(const MapView& view, Point at);

// The cells on the surface, Step() detectors on a side, and the points that they take.
struct MapPart {
    Point first{};  // cell, from the frame's upper left corner
    int across = 0;
    int down = 0;
    Rect destination{};
};
MapPart PartShown(const MapView& view);

// A pixel a cell: the colour of its class, or goodColor. A cell of several detectors shows the first bad one of them:
// none goes unseen.
DeviceBitmap MapPicture(const CalibrationReport& report, const MapView& view, std::uint32_t goodColor);

// The detector that a point shows, column and row; nullopt beside the map. Of several the one whose colour is seen.
std::optional<Point> DetectorAt(const CalibrationReport& report, const MapView& view, Point at);
// "Column 12, row 34: Noisy. Column 13, row 34 answers for it."
std::string DetectorText(const CalibrationReport& report, Point detector);

}  // namespace kelvo
