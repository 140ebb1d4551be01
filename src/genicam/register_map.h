// What a head's registers ask of a camera, and what became of it. The wire has no reading back: what a camera clamps or
// rounds is read from it and told.
#pragma once

#include "genicam/feature_table.h"
#include "wirehead/head_registers.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

// As the registers give it, in the camera's units where these don't depend on the camera.
struct CameraWishes {
    std::optional<double> rateHz{};      // nullopt: the head's clocks are off, or no frame size was sent
    std::optional<double> exposureUs{};  // the same
    std::int32_t gainIndex = 0;          // 0 to 15, by rising gain
    std::int32_t blackLevel = 0;         // 0 to 255: DAC 0
    bool flipColumns = false;
    bool flipRows = false;
    bool testPattern = false;
    friend bool operator==(const CameraWishes&, const CameraWishes&) = default;
};
CameraWishes WishesOf(const HeadRegisters& head);

// A step of the head's in the camera's range: evenly spaced, 0 its lowest value and `steps` its highest.
double ValueOfStep(std::int32_t step, std::int32_t steps, const FeatureRange& range);

// What the camera has really been set to; nullopt: it hasn't got the feature.
struct CameraSettings {
    std::optional<double> rateHz{};
    std::optional<double> exposureUs{};
    std::optional<double> gain{};
    std::optional<double> blackLevel{};
    friend bool operator==(const CameraSettings&, const CameraSettings&) = default;
};

// Sets what differs between the wishes and the former ones (nullopt: all), and reads back into settings. An exposure, a
// gain or a black level that the camera chose by itself is its choice no longer: one that follows the scene measures
// nothing. The exposure is set before the rate where it gets shorter and behind it where it gets longer, since each
// limits the other. Notes are sentences for the operator on what can't be or became something else; a value that the
// camera holds to within its own steps (0.1 %) isn't worth one. False where the camera refused a feature that it has:
// it may be lost.
bool ApplyWishes(const FeatureAccess& camera, const CameraWishes& wishes, const std::optional<CameraWishes>& former,
                 CameraSettings& settings, std::vector<std::string>& notes);

// The sentence on registers that a frame of the wire sets and a camera has nothing for: the other DACs, biases, column
// gain, delays. Empty where the camera follows the frame.
std::string NoteOnKeptFrame(const WireFrame& frame);

}  // namespace kelvo
