// What a picture or a video shows beside the frame itself, as a value: the window, the command line and scripts fill
// it, and the writers of pictures are made with one.
#pragma once

#include "display/scale_ticks.h"
#include "export/export_source.h"
#include "export/picture_look.h"
#include "regions/region.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

// The values that the first and the last color stand for.
struct PictureScale {
    ScaleLine line;
    std::string title;  // the unit
};

struct PictureOptions {
    std::optional<PictureLook> look{};    // nullopt: the one on view when the export begins
    std::optional<PictureScale> scale{};  // a scale of the colors on the right of the frame
    bool time = false;                    // a line below the frame: when it was taken
    std::vector<Region> regions{};        // drawn over the frame with their names, in pixels of the source's frame
};

// The scale of a look for an export, in that unit (display/units.h) or, where the frames can't be read in it, in the
// first one in which they can. Of the camera's picture with a difference on view it is the difference's.
PictureScale ScaleOfExport(const PictureLook& look, ExportWhat what, const Provenance& provenance, std::int32_t unit);

}  // namespace kelvo
