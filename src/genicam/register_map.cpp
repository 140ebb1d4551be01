#include "genicam/register_map.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace kelvo {

namespace {

constexpr std::int32_t kGainSteps = 15;
constexpr std::int32_t kBlackLevelSteps = 255;
constexpr double kWorthTelling = 1e-3;
constexpr double kUsPerSecond = 1e6;
constexpr double kUsPerMs = 1e3;

bool Differs(double wanted, double got)
{
    return std::fabs(got - wanted) > kWorthTelling * std::fabs(wanted);
}

class Setter {
  public:
    Setter(const FeatureAccess& camera, CameraSettings& settings, std::vector<std::string>& notes)
        : camera_(camera), settings_(settings), notes_(notes)
    {
    }

    void Exposure(double wantedUs)
    {
        SwitchFeature(camera_, Feature::kExposureAuto, false);
        const std::optional<double> got = SetNumber(Feature::kExposure, wantedUs, "an integration time");
        settings_.exposureUs = got;
        if (got && Differs(wantedUs, *got)) {
            notes_.push_back(Format("The camera integrates for %.4g ms where %.4g ms were asked.", *got / kUsPerMs,
                                    wantedUs / kUsPerMs));
        }
    }

    void Rate(double wantedHz)
    {
        SwitchFeature(camera_, Feature::kRateSwitch, true);
        const std::optional<double> got = SetNumber(Feature::kRate, wantedHz, "a frame rate");
        settings_.rateHz = got;
        if (got && Differs(wantedHz, *got)) {
            notes_.push_back(Format("The camera gives %.5g frames a second where %.5g were asked.", *got, wantedHz));
        }
    }

    // A step in the camera's own range; what it has there is what the step means. The camera no longer chooses itself.
    std::optional<double> Step(Feature feature, Feature automatic, std::int32_t step, std::int32_t steps,
                               const char* what)
    {
        SwitchFeature(camera_, automatic, false);
        const std::optional<FeatureRange> range = RangeOfFeature(camera_, feature);
        return SetNumber(feature, range ? ValueOfStep(step, steps, *range) : step, what);
    }

    void Switch(Feature feature, bool on, const char* what)
    {
        constexpr std::array<std::string_view, 3> kPatterns = {"GreyHorizontalRamp", "GrayHorizontalRamp",
                                                               "Testimage1"};
        if (!FindFeature(camera_, feature)) {
            if (on) notes_.push_back(Format("The camera has no %s.", what));
            return;
        }
        if (!SwitchFeature(camera_, feature, on, kPatterns)) Refused(what);
    }

    bool RefusedNothing() const { return refusedNothing_; }

  private:
    std::optional<double> SetNumber(Feature feature, double wanted, const char* what)
    {
        if (!FindFeature(camera_, feature)) {
            notes_.push_back(Format("The camera has no feature for %s: the head keeps the number alone.", what));
            return std::nullopt;
        }
        const std::optional<double> got = SetFeature(camera_, feature, wanted);
        if (!got) Refused(what);
        return got;
    }
    void Refused(const char* what)
    {
        refusedNothing_ = false;
        notes_.push_back(Format("The camera refused %s.", what));
    }

    const FeatureAccess& camera_;
    CameraSettings& settings_;
    std::vector<std::string>& notes_;
    bool refusedNothing_ = true;
};

}  // namespace

CameraWishes WishesOf(const HeadRegisters& head)
{
    CameraWishes wishes{.gainIndex = GainIndexOfCode(head.gainCode),
                        .blackLevel = head.dac[0],
                        .flipColumns = head.flipCols,
                        .flipRows = head.flipRows,
                        .testPattern = head.testMode};
    const double seconds = FramePeriodSeconds(head);
    if (seconds <= 0) return wishes;
    wishes.rateHz = 1 / seconds;
    const double integration = IntegrationSeconds(head);
    if (integration > 0) wishes.exposureUs = integration * kUsPerSecond;
    return wishes;
}

double ValueOfStep(std::int32_t step, std::int32_t steps, const FeatureRange& range)
{
    return range.lowest + (range.highest - range.lowest) * step / steps;
}

bool ApplyWishes(const FeatureAccess& camera, const CameraWishes& wishes, const std::optional<CameraWishes>& former,
                 CameraSettings& settings, std::vector<std::string>& notes)
{
    Setter set(camera, settings, notes);
    const auto asks = [&](auto CameraWishes::*wish) { return !former || (*former).*wish != wishes.*wish; };
    const bool asksRate = wishes.rateHz && asks(&CameraWishes::rateHz);
    const bool asksExposure = wishes.exposureUs && asks(&CameraWishes::exposureUs);
    const bool getsShorter = former && former->exposureUs && wishes.exposureUs < former->exposureUs;
    if (asksExposure && getsShorter) set.Exposure(*wishes.exposureUs);
    if (asksRate) set.Rate(*wishes.rateHz);
    if (asksExposure && !getsShorter) set.Exposure(*wishes.exposureUs);
    // A longer exposure may have made the camera slower.
    if (asksRate || asksExposure) {
        if (const auto actual = ReadFeature(camera, Feature::kActualRate)) {
            settings.rateHz = actual;
        } else if (const auto rate = ReadFeature(camera, Feature::kRate)) {
            settings.rateHz = rate;
        }
    }
    if (asks(&CameraWishes::gainIndex)) {
        settings.gain = set.Step(Feature::kGain, Feature::kGainAuto, wishes.gainIndex, kGainSteps, "a gain");
    }
    if (asks(&CameraWishes::blackLevel)) {
        settings.blackLevel = set.Step(Feature::kBlackLevel, Feature::kBlackLevelAuto, wishes.blackLevel,
                                       kBlackLevelSteps, "a black level");
    }
    if (asks(&CameraWishes::flipColumns)) set.Switch(Feature::kFlipColumns, wishes.flipColumns, "flip of columns");
    if (asks(&CameraWishes::flipRows)) set.Switch(Feature::kFlipRows, wishes.flipRows, "flip of rows");
    if (asks(&CameraWishes::testPattern)) set.Switch(Feature::kTestPattern, wishes.testPattern, "test pattern");
    return set.RefusedNothing();
}

std::string NoteOnKeptFrame(const WireFrame& frame)
{
    constexpr std::uint8_t kTimingReg = 0x50;
    constexpr std::uint8_t kDelaySelector = 5;
    constexpr std::uint8_t kSerialReg = 0x60;
    constexpr std::uint8_t kDacReg = 0x70;
    constexpr std::uint8_t kDac0 = 1;
    if (frame[0] == kTimingReg && frame[1] == kDelaySelector) {
        return "The camera has no start delays: the head keeps them as numbers alone.";
    }
    if (frame[0] == kDacReg && frame[1] > kDac0) {
        return "The camera has none of the DACs 1 to 7: the head keeps them as numbers alone.";
    }
    const bool isBiasWord = frame[0] == kSerialReg && frame[1] == 0 && (frame[2] != 0 || frame[3] != 0);
    if (isBiasWord) {
        return "The camera has no biases, column gain or fast frame: the head keeps them as numbers alone.";
    }
    return {};
}

}  // namespace kelvo
