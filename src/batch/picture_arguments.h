// The options of "kelvo export" that are of pictures: which counts are spread over which colors, and what stands beside
// the frame. No setting has a say in it, so that a command makes the same pictures anywhere.
#pragma once

#include "batch/batch_arguments.h"
#include "display/lookup_table.h"
#include "export/export_formats.h"
#include "export/frame_sink.h"
#include "export/picture_options.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

struct PictureWish {
    std::optional<CountRange> range;  // nullopt: the display range of the file's header
    std::string colors;               // "gray", "inverted", "color": MATROX.PAL of the data directory, or Kelvo's own
    std::string palette;              // that file
    bool scale = false;
    bool time = false;
    std::int32_t unit = 0;  // of the scale (display/units.h)
    std::vector<Region> regions;
};

// Takes --range, --colors, --data, --scale, --unit, --time and --draw-regions. nullopt with why: one of them has a
// value that it can't have, stands beside a format of values, or the file of regions can't be read.
std::optional<PictureWish> PictureWishOf(const BatchArguments& taken, ExportFormat format, std::string& why);

// For that source, a file. Text in a picture makes the application object (platform/application.h), without a display.
// nullopt with why: its header has no display range and none was asked for, it can't be read in the unit, or memory is
// refused.
std::optional<PictureOptions> PictureOptionsOf(const PictureWish& wish, const Provenance& provenance, std::string& why);

}  // namespace kelvo
