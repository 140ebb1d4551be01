// The frames of a noise measurement: consecutive ones of the live camera, or those of a file, with the calibration that
// they are to be read with. analysis/noise_figures.h has the arithmetic.
#pragma once

#include "analysis/noise_figures.h"
#include "imagefile/header.h"

#include <cstdint>
#include <optional>
#include <string>

namespace kelvo {

struct NoiseRequest {
    bool live = true;
    std::string file;          // where not live
    std::string set;           // .cal for a file; empty: none
    std::int64_t frames = 64;  // kLeastNoiseFrames to kMostNoiseFrames
};

struct NoiseMeasurement {
    std::string source;       // "live video", or the file's path
    std::string calibration;  // of gains, pair and bad detectors: the .cal's path, "the file's own", "none"
    bool raw = true;          // the counts are the detectors' own
    std::int32_t columns = 0;
    std::int32_t rows = 0;
    std::uint32_t frames = 0;
    std::int64_t lost = 0;        // frames that are missing between the first and the last
    std::int64_t beganUtcNs = 0;  // the measurement, not the recording
    bool knowsSaturated = false;  // noise.saturatedPixels says something: raw counts of Kelvo's own converter
    std::string changes;          // of a file of another program, what was done to its samples (StoredFrames)
    bool knowsBad = false;        // bad detectors were told, be it none
    NoisePair pair{kUncalibratedIntensity, kUncalibratedIntensity, kUncalibratedTemperature, kUncalibratedTemperature};
    std::optional<double> countsPerDegree;
    PixelNoise noise;
};

// Live: every frame that the camera gives from now on, as the detectors give them, uncorrected and in the order in
// which they come, by the way of a recording (grabber/recording.h); gains, table and pair are those in force, bad
// detectors those of the last calibration and of the gains. Nothing of state, picture and files changes.
//
// A file: its first frames. Of corrected ones (StoredFrames::AreCorrected) the pair is the header's, a set tells the
// bad detectors alone. Others are the detectors' own in the order of the readout, and a set has table, gains and pair;
// without one the picture stays in that order, and there is no NETD.
//
// Blocks; Escape stops it. nullopt with the reason in why, a sentence for the operator; empty where a box has told it.
std::optional<NoiseMeasurement> GatherNoise(const NoiseRequest& request, std::string& why);

}  // namespace kelvo
