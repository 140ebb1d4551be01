// A region: a shape on the picture whose pixels are measured together. It lives in pixels of the frame on view, image
// coordinates, columns to the right and rows downward, both from 0. Pure arithmetic: no window, no state.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

enum class RegionShape { kRectangle, kEllipse, kLine, kPoint };

// Where a shape stands. A rectangle and an ellipse fill it from (x1, y1) to (x2, y2), both included, in either order; a
// line leads from the first to the second; a point is the first.
struct RegionPlace {
    std::int32_t x1 = 0;
    std::int32_t y1 = 0;
    std::int32_t x2 = 0;
    std::int32_t y2 = 0;
    friend bool operator==(const RegionPlace&, const RegionPlace&) = default;
};

struct Region {
    std::int32_t number = 0;  // never given twice while the program runs; 0: none yet
    std::string name{};       // as typed; "R1" where the operator gave none
    RegionShape shape = RegionShape::kRectangle;
    RegionPlace place{};
    double emissivity = 1.0;             // 0.001 to 1; ours: regions/region_value.h has the formula
    std::optional<double> reflectedC{};  // °C of what the surface reflects; only with an emissivity below 1
    friend bool operator==(const Region&, const Region&) = default;
};

// Pixels of one row, first to last, both included.
struct PixelRun {
    std::int32_t row = 0;
    std::int32_t first = 0;
    std::int32_t last = 0;
    friend bool operator==(const PixelRun&, const PixelRun&) = default;
};

// Coordinates lie between -32768 and 32767. The pixels of a shape in a frame of columns x rows, from above; what lies
// outside of the frame is left out, and no pixel comes twice.
//
// An ellipse has those pixels whose centre lies in or on the ellipse that touches the outer edges of its place: with
// the place's width w and height h, and dx, dy twice the distance from its centre, (dx h)^2 + (dy w)^2 <= (w h)^2, in
// integers. A line is the digital line of Bresenham (1965) from end to end, the same from either one.
std::vector<PixelRun> PixelsOf(RegionShape shape, const RegionPlace& place, std::int32_t columns, std::int32_t rows);

std::size_t PixelCountOf(const std::vector<PixelRun>& runs);

// All of a frame, as "picture": what is measured where there are no regions.
Region WholePicture(std::int32_t columns, std::int32_t rows);

}  // namespace kelvo
