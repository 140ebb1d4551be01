// A calibration of stored raw frames, without a camera or a window: from what frames of one or two sources come to, to
// the lists of a set. The lists are to the bit those of a run in the window (calib/two_point_run.h,
// calib/one_point_run.h) from the same frames with the same settings: it is the same arithmetic in the same order.
#pragma once

#include "calib/orientation.h"
#include "calib/two_point.h"
#include "pixel/bad_pixels.h"
#include "pixel/decommutation.h"
#include "pixel/search_pattern.h"
#include "state/camera_config.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

// What raw frames of one source come to, a value a detector in readout order (acquire/frame_sums.h).
struct GatheredSource {
    std::vector<std::int32_t> sums;
    std::vector<double> squares;   // empty: noise isn't asked about
    std::int32_t frames = 0;       // of 32 bits no sum of up to 65535 leaves the range
    float temperatureC = -999.0F;  // -999: not given
};
constexpr std::int32_t kMostGatheredFrames = 65535;

struct StoredCalibrationSettings {
    CameraConfig config;
    Orientation orientation;
    bool replaceBad = true;   // SubstBadPixels
    TwoPointSettings limits;  // of both kinds of run; frameCount is that of the sources
    SearchPattern pattern;    // where the neighbours are
    BadDetMap listed;         // image order: bad whatever their gain; empty: none
};

struct StoredCalibration {
    std::int32_t type = 0;  // CalType: 1 or 2
    // As the set's files have them: readout order, the table in image order.
    std::vector<float> gains;
    std::vector<std::int16_t> offsets;
    std::vector<std::int16_t> noise;  // 1/20 count; empty: not measured
    DecomTable table;
    BadDetMap bad;  // empty: the set has no list

    std::int32_t intensityCold = 0;  // counts
    std::int32_t intensityHot = 0;   // of two points
    std::int32_t detectorsBad = 0;   // that the run rejects, the list left aside
    std::string told;                // the text of the run's result, Latin-1
};

// Two points with a high source, one without. nullopt with the reason in why: no frame or nothing but zeros, sums that
// don't fit the region, no memory, or what a run refuses, in its words ("Calibration failed due to too few good
// detectors in array.", "... insufficient range\nbetween low source and high source.", "Failure to find good pixels!",
// "Some OFFSET coefficients out of range!", about which a run asks). A readout order that can't be built, and entries
// outside the list, are told in boxes.
std::optional<StoredCalibration> CalibrateStored(const StoredCalibrationSettings& settings, GatheredSource low,
                                                 std::optional<GatheredSource> high, std::string& why);

}  // namespace kelvo
