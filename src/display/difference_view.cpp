#include "display/difference_view.h"

#include "display/units.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/state_registry.h"

#include <algorithm>
#include <array>
#include <functional>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

// What a reference belongs to.
struct Picture {
    std::int32_t camera = 0;
    std::array<std::int32_t, 2> size{};
    std::array<std::int32_t, 3> orientation{};
    std::int32_t calType = 0;
    // Of the calibration: another one has measured others.
    std::array<std::int32_t, 2> intensities{};
    std::size_t coefficients = 0;
};

struct Difference {
    std::vector<std::int16_t> reference;  // empty: none
    std::vector<std::int16_t> shown;
    std::string source;
    std::int32_t zero = 0;
    Picture picture;
};
Difference difference;

const StateNames kStateNames{
    {"DifferenceSource", [] { return StateValue{difference.source}; }},
};

struct Coefficients {
    std::optional<std::uint32_t> version{};  // CalibrationListsVersion
    std::size_t hash = 0;
};
Coefficients coefficients;

// Tells offsets and gains from others: a new run of the same sources measures others. Bad pixels are chosen without.
std::size_t CoefficientsInForce()
{
    if (coefficients.version != CalibrationListsVersion) {
        const auto bytes = [](const auto& list) {
            const auto values = std::as_bytes(std::span(list));
            return std::string_view(reinterpret_cast<const char*>(values.data()), values.size());
        };
        const std::hash<std::string_view> hash;
        coefficients = {CalibrationListsVersion, hash(bytes(OffsetList)) ^ (hash(bytes(GainList)) * 31)};
    }
    return coefficients.hash;
}

Picture PictureInForce()
{
    Picture picture{.camera = ActiveCamera,
                    .size = {ActiveConfig.Hroi, ActiveConfig.Vroi},
                    .orientation = {MirrorHoriz, MirrorVert, RotateCCW},
                    .calType = CalType,
                    .intensities = {},
                    .coefficients = 0};
    if (CalType != 0) {
        picture.intensities = {IntensityCold, IntensityHot};
        picture.coefficients = CoefficientsInForce();
    }
    return picture;
}

// Empty where the reference fits.
std::string_view WhyUnfit()
{
    const Picture& then = difference.picture;
    const Picture now = PictureInForce();
    if (!CameraOn) return "the camera is off";
    if (then.camera != now.camera) return "the camera is another one now";
    if (then.size != now.size) return "the frames have another size now";
    if (then.orientation != now.orientation) return "the picture lies another way now";
    const bool isCorrectedAlike =
        then.calType == now.calType && then.intensities == now.intensities && then.coefficients == now.coefficients;
    if (!isCorrectedAlike) return "the correction is another one now";
    return {};
}

}  // namespace

bool BeginDifference(std::span<const std::int16_t> reference, std::string_view source, std::int32_t zero)
{
    if (reference.empty() || reference.size() != PixelsOf(ActiveConfig)) return false;
    Difference made;
    if (!AllocateBlock(made.reference, reference.size()) || !AllocateBlock(made.shown, reference.size())) return false;
    std::ranges::copy(reference, made.reference.begin());
    made.source = source;
    made.zero = std::clamp(zero, 0, std::int32_t{std::numeric_limits<std::int16_t>::max()});
    made.picture = PictureInForce();
    difference = std::move(made);
    return true;
}

void EndDifference()
{
    difference = {};
}

std::string EndUnfitDifference()
{
    if (!DifferenceIsOn()) return {};
    const std::string_view why = WhyUnfit();
    if (why.empty()) return {};
    EndDifference();
    return "The difference is off: " + std::string(why) + ".";
}

bool DifferenceIsOn()
{
    return !difference.reference.empty();
}

const std::string& DifferenceSource()
{
    return difference.source;
}

bool DifferenceOnView()
{
    return DifferenceIsOn() && !ViewingFile && WhyUnfit().empty();
}

std::int32_t DifferenceZero()
{
    return difference.zero;
}

std::span<const std::int16_t> CountsToShow(std::span<const std::int16_t> frame)
{
    if (!DifferenceOnView() || frame.size() != difference.reference.size()) return frame;
    FillDifference(frame, difference.reference, difference.zero, difference.shown);
    return difference.shown;
}

// Simple enough for the compiler to do several pixels at once.
void FillDifference(std::span<const std::int16_t> frame, std::span<const std::int16_t> reference, std::int32_t zero,
                    std::span<std::int16_t> out)
{
    constexpr std::int32_t kLowest = std::numeric_limits<std::int16_t>::min();
    constexpr std::int32_t kHighest = std::numeric_limits<std::int16_t>::max();
    for (std::size_t i = 0; i < out.size(); ++i) {
        const std::int32_t value = zero + frame[i] - reference[i];
        out[i] = static_cast<std::int16_t>(std::min(std::max(value, kLowest), kHighest));
    }
}

std::int16_t ReferenceCount(std::size_t pixel)
{
    return pixel < difference.reference.size() ? difference.reference[pixel] : std::int16_t{0};
}

std::string DifferenceText(std::int32_t count, std::int32_t reference, std::int32_t unit)
{
    if (unit == kUnitCounts) return Format("%d", count - reference);
    const double value = static_cast<double>(CountsToUnit(count, unit, nullptr)) -
                         static_cast<double>(CountsToUnit(reference, unit, nullptr));
    return Format("%.3f", value);
}

void ResetDifferenceView()
{
    difference = {};
    coefficients = {};
}

}  // namespace kelvo
