// Which pair of a list of bad detectors a place of the picture belongs to. Pure: the picture is a table.
#pragma once

#include "pixel/decommutation.h"
#include "pixel/pixel_pair.h"
#include "platform/types.h"
#include "state/camera_config.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace kelvo {

// How far, in pixels of the picture, a press may miss.
constexpr int kPairReach = 2;

struct PairAtPixel {
    std::size_t line = 0;          // of the list
    std::optional<Point> answers;  // the pixel that answers for the pair, where that one was meant
    friend bool operator==(const PairAtPixel&, const PairAtPixel&) = default;
};

// The pair whose bad detector shows nearest to a pixel (column x, row y), at most kPairReach away; where none does, the
// pair whose answering pixel is nearest. Of several as near as another the upper left one. nullopt: no pair is near.
// shown: for each pixel of the picture, Vroi x Hroi, the place in the table, before orientation, of what it shows;
// table: DecomList, the samples that they show, orientation included; one of another size has no answering pixels.
std::optional<PairAtPixel> PairNear(Point pixel, std::span<const PixelPair> lines, std::span<const std::uint32_t> shown,
                                    std::span<const std::uint32_t> table, const CameraConfig& config);

}  // namespace kelvo
