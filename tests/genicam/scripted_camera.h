// A camera without a network: features as a table, and a stream that a test fills.
#pragma once

#include "genicam/camera_device.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kelvo {

struct ScriptedFeature {
    double value = 0;
    FeatureRange range{-1e9, 1e9};
    double step = 0;  // values are rounded to it; 0: they aren't
    std::string text{};
    std::vector<std::string> choices{};
    bool refuses = false;
};
using ScriptedFeatures = std::map<std::string, ScriptedFeature>;

// The features as the code sees them; asked gathers what was written and executed, "Gain=3", "TriggerSoftware".
FeatureAccess AccessTo(ScriptedFeatures& features, std::vector<std::string>& asked);

// What a test does to the camera while a link has it; guarded, since the link's thread looks at it.
struct ScriptedCamera {
    std::mutex mutex;
    ScriptedFeatures features;
    std::vector<std::string> asked;
    CameraShape shape;
    std::int32_t packetSize = 0;
    std::optional<ReceiveBuffer> streamBuffer;
    bool isThere = true;  // it can be opened
    bool isLost = false;  // control over it was
    bool answers = true;
    bool streams = false;
    int openings = 0;
    DeviceSettings openedWith;
    int streamsBegun = 0;
    std::vector<CameraBuffer> sent;  // not yet taken

    ScriptedCamera();
    // A frame of one count each, Mono16, 4 x 2.
    void Send(std::uint64_t number, std::uint16_t count, bool isWhole = true, std::int64_t utcNs = 0);
    void Set(bool ScriptedCamera::*what, bool on);
};

CameraOpener OpenerOf(const std::shared_ptr<ScriptedCamera>& camera);

}  // namespace kelvo
