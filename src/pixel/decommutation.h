// The readout order of the detector, and the table that turns a raw frame into an image. Orientation and bad-pixel
// substitution live in the same table.
#pragma once

#include "config/frame_rate_table.h"
#include "state/camera_config.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelvo {

// Vroi x Hroi entries in image order, each the raw index of an image pixel.
using DecomTable = std::vector<std::uint32_t>;

// The table of DecomScheme, without orientation and substitution. readoutShift: ReadoutShift of the frame rate row in
// force, 0 in all present configurations. Entries that the scheme doesn't write stay 0; a destination that stays
// negative or falls past the table is dropped.
// nullopt after a box: "Failure to Lock Decommuation list in Memory" where memory is refused or the region is empty;
// "The readout order can't be built: ..." where a source stays negative, or where the lines are too short for the
// channels of the scheme (below 2 columns in schemes 4 and 5, below 4 in scheme 7).
std::optional<DecomTable> BuildDecomList(const CameraConfig& config, std::int32_t readoutShift);

// Permutes the table in place, in this order: mirrorHoriz reverses the rows, mirrorVert the columns, rotateCcw turns to
// the left, which is exact for a square region only. Positions that a pass doesn't reach keep what they held, and those
// outside the table are dropped. 1; 0 after "Failure to allocate and lock Temporary memory!", the table unchanged.
std::int32_t ReorderDecomList(DecomTable& list, const CameraConfig& config, std::int32_t mirrorHoriz,
                              std::int32_t mirrorVert, std::int32_t rotateCcw);

// Where the pixels of an image stand in the table: made once for a walk over all of them.
struct PositionRule {
    std::int64_t count = 0;  // entries of the table
    std::int64_t rowStep = 0;
    std::int64_t columnStep = 1;
    std::int64_t start = 0;
    bool wraps = true;

    // The count is added once, and the remainder keeps its sign: what is below minus the count stays negative.
    static std::int64_t Wrap(std::int64_t x, std::int64_t count)
    {
        if (x < 0) x += count;
        return x >= 0 && x < count ? x : x % count;
    }
    // Negative or beyond the table where the pixel has no place there.
    std::int64_t Of(std::int64_t row, std::int64_t column) const
    {
        const std::int64_t position = start + row * rowStep + column * columnStep;
        return wraps ? Wrap(position, count) : position;
    }
    bool Holds(std::int64_t position) const { return position >= 0 && position < count; }
    // The position, -1 where the table has none.
    std::int64_t InTable(std::int64_t row, std::int64_t column) const
    {
        if (count == 0) return -1;
        const std::int64_t position = Of(row, column);
        return Holds(position) ? position : -1;
    }
};
PositionRule PositionRuleOf(const CameraConfig& config);
// The table position of image pixel (row, column), which may lie outside the image; -1 where it lies outside the table.
std::int64_t DecomPosition(const CameraConfig& config, std::int32_t row, std::int32_t column);

// DECOM.TMP in DefaultDir: the table last installed.
std::string DecomTempPath();

// False where an entry names a sample beyond the Vroi x Hroi of a frame: such a table is no table of this camera.
bool DecomEntriesLieInFrame(std::span<const std::uint32_t> list, const CameraConfig& config);

// A new table from DECOM.TMP, or one built for the frame rate in force, after a beep, where that can't be opened.
// nullopt after a box: "Failure to allocate Decommutation memory!", or "Failed to read file:\nDECOM.TMP" where it is
// short or has entries outside the frame.
std::optional<DecomTable> LoadDecomList(const CameraConfig& config);

}  // namespace kelvo
