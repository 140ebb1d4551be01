// The features of a camera under the names that cameras give them. The standard's names (GenICam SFNC 2.7) come first;
// older cameras say ExposureTimeAbs or GainRaw, and some lack black level or flips altogether.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

enum class Feature {
    kRate,            // frames a second, Hz
    kRateSwitch,      // that the rate is to hold
    kActualRate,      // what comes of it, Hz
    kExposure,        // of a frame, µs
    kExposureAuto,    // that the camera chooses it
    kGain,            // in the camera's own unit
    kGainAuto,        //
    kBlackLevel,      // in the camera's own unit
    kBlackLevelAuto,  //
    kFlipColumns,     //
    kFlipRows,        //
    kTestPattern,     //
    kTrigger,         // whether frames wait for a trigger
    kTriggerSource,   //
    kTriggerNow,      // the software trigger
    kMaker,           // who made it
    kModel,           //
    kSerial,          //
};
constexpr std::size_t kFeatures = 18;

enum class FeatureKind { kReal, kWhole, kSwitch, kChoice, kCommand, kText };

struct FeatureName {
    std::string_view name;
    FeatureKind kind = FeatureKind::kReal;
};

// In the order in which they are looked for.
std::span<const FeatureName> NamesOf(Feature feature);

// The lowest and the highest value that a feature takes now.
struct FeatureRange {
    double lowest = 0;
    double highest = 0;
};

// One camera's features by name. What fails gives nullopt or false; nothing is told.
struct FeatureAccess {
    std::function<bool(const std::string& name)> has;  // and can be used now
    std::function<std::optional<double>(const std::string& name, FeatureKind kind)> read;
    std::function<std::optional<FeatureRange>(const std::string& name, FeatureKind kind)> range;
    std::function<bool(const std::string& name, FeatureKind kind, double value)> write;
    std::function<std::optional<std::string>(const std::string& name)> readText;
    std::function<bool(const std::string& name, const std::string& value)> writeText;
    std::function<std::vector<std::string>(const std::string& name)> choices;  // of one that is chosen by name
    std::function<bool(const std::string& name)> execute;
};

// The first of its names that the camera has; nullopt: it has none of them.
std::optional<FeatureName> FindFeature(const FeatureAccess& camera, Feature feature);

// What a feature that is a number became: clamped to its range, written and read back. nullopt where the camera hasn't
// got it, or refuses.
std::optional<double> SetFeature(const FeatureAccess& camera, Feature feature, double wanted);
std::optional<double> ReadFeature(const FeatureAccess& camera, Feature feature);
std::optional<FeatureRange> RangeOfFeature(const FeatureAccess& camera, Feature feature);
// A switch, or a choice between "Off" and something else: the first of `words` that the camera knows, or the first
// choice that isn't "Off". False where there is nothing to switch.
bool SwitchFeature(const FeatureAccess& camera, Feature feature, bool on, std::span<const std::string_view> words = {});

}  // namespace kelvo
