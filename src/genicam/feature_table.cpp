#include "genicam/feature_table.h"

#include <algorithm>
#include <array>

namespace kelvo {

namespace {

using Names = std::array<FeatureName, 3>;  // an empty name ends them

// Names of SFNC, then of its first version ("Abs", "Raw"), then of cameras without it.
constexpr std::array<Names, kFeatures> kNames = {{
    {{{"AcquisitionFrameRate", FeatureKind::kReal}, {"AcquisitionFrameRateAbs", FeatureKind::kReal}}},
    {{{"AcquisitionFrameRateEnable", FeatureKind::kSwitch}, {"AcquisitionFrameRateEnabled", FeatureKind::kSwitch}}},
    {{{"AcquisitionResultingFrameRate", FeatureKind::kReal},
      {"ResultingFrameRate", FeatureKind::kReal},
      {"ResultingFrameRateAbs", FeatureKind::kReal}}},
    {{{"ExposureTime", FeatureKind::kReal},
      {"ExposureTimeAbs", FeatureKind::kReal},
      {"ExposureTimeRaw", FeatureKind::kWhole}}},
    {{{"ExposureAuto", FeatureKind::kChoice}}},
    {{{"Gain", FeatureKind::kReal}, {"GainAbs", FeatureKind::kReal}, {"GainRaw", FeatureKind::kWhole}}},
    {{{"GainAuto", FeatureKind::kChoice}}},
    {{{"BlackLevel", FeatureKind::kReal},
      {"BlackLevelAbs", FeatureKind::kReal},
      {"BlackLevelRaw", FeatureKind::kWhole}}},
    {{{"BlackLevelAuto", FeatureKind::kChoice}}},
    {{{"ReverseX", FeatureKind::kSwitch}}},
    {{{"ReverseY", FeatureKind::kSwitch}}},
    {{{"TestPattern", FeatureKind::kChoice}, {"TestImageSelector", FeatureKind::kChoice}}},
    {{{"TriggerMode", FeatureKind::kChoice}}},
    {{{"TriggerSource", FeatureKind::kChoice}}},
    {{{"TriggerSoftware", FeatureKind::kCommand}}},
    {{{"DeviceVendorName", FeatureKind::kText}}},
    {{{"DeviceModelName", FeatureKind::kText}}},
    {{{"DeviceSerialNumber", FeatureKind::kText}, {"DeviceID", FeatureKind::kText}}},
}};

constexpr std::string_view kOff = "Off";

}  // namespace

std::span<const FeatureName> NamesOf(Feature feature)
{
    const Names& names = kNames.at(static_cast<std::size_t>(feature));
    const auto* const end = std::ranges::find(names, std::string_view(), &FeatureName::name);
    return {names.begin(), end};
}

std::optional<FeatureName> FindFeature(const FeatureAccess& camera, Feature feature)
{
    for (const FeatureName& name : NamesOf(feature)) {
        if (camera.has(std::string(name.name))) return name;
    }
    return std::nullopt;
}

std::optional<double> SetFeature(const FeatureAccess& camera, Feature feature, double wanted)
{
    const auto found = FindFeature(camera, feature);
    if (!found) return std::nullopt;
    const std::string name(found->name);
    if (const auto range = camera.range(name, found->kind); range && range->lowest <= range->highest) {
        wanted = std::clamp(wanted, range->lowest, range->highest);
    }
    if (!camera.write(name, found->kind, wanted)) return std::nullopt;
    return camera.read(name, found->kind);
}

std::optional<double> ReadFeature(const FeatureAccess& camera, Feature feature)
{
    const auto found = FindFeature(camera, feature);
    return found ? camera.read(std::string(found->name), found->kind) : std::nullopt;
}

std::optional<FeatureRange> RangeOfFeature(const FeatureAccess& camera, Feature feature)
{
    const auto found = FindFeature(camera, feature);
    return found ? camera.range(std::string(found->name), found->kind) : std::nullopt;
}

bool SwitchFeature(const FeatureAccess& camera, Feature feature, bool on, std::span<const std::string_view> words)
{
    const auto found = FindFeature(camera, feature);
    if (!found) return false;
    const std::string name(found->name);
    if (found->kind == FeatureKind::kSwitch) return camera.write(name, found->kind, on ? 1 : 0);
    const std::vector<std::string> choices = camera.choices(name);
    const auto choose = [&](auto isIt) {
        const auto choice = std::ranges::find_if(choices, isIt);
        return choice != choices.end() && camera.writeText(name, *choice);
    };
    if (!on) return choose([](const std::string& choice) { return choice == kOff; });
    for (const std::string_view word : words) {
        if (std::ranges::find(choices, word) != choices.end()) {
            return choose([word](const std::string& choice) { return choice == word; });
        }
    }
    return choose([](const std::string& choice) { return choice != kOff; });
}

}  // namespace kelvo
