#include "display/units.h"

#include "imagefile/header.h"
#include "platform/text.h"
#include "state/cal_state.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/head_state.h"
#include "state/windows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string_view>
#include <utility>

namespace kelvo {

namespace {

struct UnitNames {
    std::string_view name;
    std::string_view unit;
};

// Latin-1: degree sign 0xB0, superscript two 0xB2, middle dot 0xB7.
constexpr std::string_view kCelsius =
    "\xB0"
    "C";
constexpr std::string_view kKelvin =
    "\xB0"
    "K";
constexpr std::string_view kFahrenheit =
    "\xB0"
    "F";
constexpr std::string_view kPhotonRadiance = "Ph/cm\xB2\xB7sr\xB7sec";
constexpr std::string_view kRadiance = "W/cm\xB2\xB7sr";
constexpr std::string_view kPhotonExitance = "Ph/cm\xB2\xB7sec";
constexpr std::string_view kExitance = "W/cm\xB2";

constexpr std::array<UnitNames, kUnitCount> kUnits{{
    {"Signal", "Counts"},
    {"Signal", "V"},
    {"Temperature", kCelsius},
    {"Temperature", kKelvin},
    {"Temperature", kFahrenheit},
    {"Radiance", kPhotonRadiance},
    {"Radiance", kRadiance},
    {"Exitance", kPhotonExitance},
    {"Exitance", kExitance},
    {"Noise", "Counts"},
    {"Noise", "V"},
    {"Noise", kCelsius},
    {"Noise", kKelvin},
    {"Noise", kFahrenheit},
    {"Noise", kPhotonRadiance},
    {"Noise", kRadiance},
    {"Noise", kPhotonExitance},
    {"Noise", kExitance},
    {"Gain", ""},
    {"Offset", ""},
    {"Emissivity", ""},
    {"Value", "Counts"},
    {"StdDev", "V"},
    {"StdDev", kCelsius},
    {"StdDev", kKelvin},
    {"StdDev", kFahrenheit},
    {"StdDev", kPhotonRadiance},
    {"StdDev", kRadiance},
    {"StdDev", kPhotonExitance},
    {"StdDev", kExitance},
}};

constexpr double kNoiseScale = 20.0;  // noise lists hold noise x 20
constexpr double kRoundingUp = 0.1;   // before a value is cut to a count
constexpr double kFahrenheitZero = 32.0;
// Singles, as the coefficients of stored plots were made with them.
constexpr float kKelvinZero = 273.15F;
constexpr float kFahrenheitStep = 1.8F;

// What a linear scale of two known points needs, in double.
struct Calibration {
    double intensityCold = 0;
    double intensitySpan = 0;
    double temperatureCold = 0;
    double temperatureSpan = 0;
    bool valid = false;
};

Calibration CalibrationOf(std::int32_t intensityCold, std::int32_t intensityHot, float temperatureCold,
                          float temperatureHot)
{
    return {static_cast<double>(intensityCold), static_cast<double>(intensityHot) - intensityCold,
            static_cast<double>(temperatureCold),
            static_cast<double>(temperatureHot) - static_cast<double>(temperatureCold),
            intensityCold < intensityHot && temperatureCold < temperatureHot};
}

const UnitScope* scope = nullptr;

// Of the file whose counts are read; null: they are the camera's.
const ImageHeaderRecord* StoredHeader()
{
    if (scope) return scope->Header();
    return ViewingFile ? &ImageHeader : nullptr;
}

std::string_view StoredPath()
{
    return scope ? std::string_view(scope->Path()) : std::string_view(ViewFilePath);
}

// How a count maps back to the stored value.
double StoredGain()
{
    return scope ? 1.0 : static_cast<double>(ViewScaleGain);
}

double StoredOffset()
{
    return scope ? 0.0 : static_cast<double>(ViewScaleOffset);
}

Calibration CalibrationInForce()
{
    if (const ImageHeaderRecord* header = StoredHeader()) {
        return CalibrationOf(header->IntensityCold, header->IntensityHot, header->TemperatureCold,
                             header->TemperatureHot);
    }
    return CalibrationOf(IntensityCold, IntensityHot, TemperatureCold, TemperatureHot);
}

bool IsTemperature(std::int32_t unit)
{
    return unit >= kUnitCelsius && unit <= kUnitFahrenheit;
}

bool IsTemperatureDifference(std::int32_t unit)
{
    return (unit >= kUnitNoiseCelsius && unit <= kUnitNoiseFahrenheit) ||
           (unit >= kUnitDeviationCelsius && unit <= kUnitDeviationFahrenheit);
}

// A difference has no zero to shift: only its step is scaled, and only for Fahrenheit.
bool IsFahrenheitDifference(std::int32_t unit)
{
    return unit == kUnitNoiseFahrenheit || unit == kUnitDeviationFahrenheit;
}

double FromCelsius(double celsius, std::int32_t unit)
{
    if (unit == kUnitKelvin) return celsius + static_cast<double>(kKelvinZero);
    if (unit == kUnitFahrenheit) return celsius * static_cast<double>(kFahrenheitStep) + kFahrenheitZero;
    if (IsFahrenheitDifference(unit)) return celsius * static_cast<double>(kFahrenheitStep);
    return celsius;
}

// Kelvin is added here too, as on the way out.
double ToCelsius(double value, std::int32_t unit)
{
    if (unit == kUnitKelvin) return value + static_cast<double>(kKelvinZero);
    if (unit == kUnitFahrenheit) return (value - kFahrenheitZero) / static_cast<double>(kFahrenheitStep);
    if (IsFahrenheitDifference(unit)) return value / static_cast<double>(kFahrenheitStep);
    return value;
}

double CelsiusOf(double counts, std::int32_t unit, const Calibration& cal)
{
    if (IsTemperature(unit)) {
        return cal.temperatureSpan * (counts - cal.intensityCold) / cal.intensitySpan + cal.temperatureCold;
    }
    if (unit <= kUnitNoiseFahrenheit) return counts / kNoiseScale * cal.temperatureSpan / cal.intensitySpan;
    const double scaled = counts / StoredGain() + StoredOffset();
    return scaled * cal.temperatureSpan / cal.intensitySpan;
}

// A value, and how many decimals its text has; 0: the text is that of the count.
struct Reading {
    double value = 0;
    int decimals = 0;
};

// Two counts and their volts, which all others go by.
struct VoltsLine {
    std::int32_t lowCount = 0;
    std::int32_t highCount = 0;
    double lowVolts = 0;
    double highVolts = 0;
    double Span() const { return highVolts - lowVolts; }
    double CountSpan() const { return static_cast<double>(highCount) - lowCount; }
};

VoltsLine VoltsInForce()
{
    const std::optional<std::pair<float, float>> given = scope ? scope->Volts() : std::nullopt;
    if (given) {
        return {scope->Header()->DisplayLow, scope->Header()->DisplayHigh, static_cast<double>(given->first),
                static_cast<double>(given->second)};
    }
    return {DisplayLow, DisplayHigh, static_cast<double>(VoltsLow), static_cast<double>(VoltsHigh)};
}

Reading ReadingOf(double count, std::int32_t unit)
{
    const double gain = StoredGain();
    const Calibration cal = CalibrationInForce();
    const VoltsLine volts = VoltsInForce();
    if ((IsTemperature(unit) || IsTemperatureDifference(unit)) && cal.valid) {
        return {FromCelsius(CelsiusOf(count, unit, cal), unit), 3};
    }
    switch (unit) {
        case kUnitVolts:
            return {volts.Span() * (count - volts.lowCount) / volts.CountSpan() + volts.lowVolts, 3};
        case kUnitNoiseCounts:
            return {count / kNoiseScale, 3};
        case kUnitNoiseVolts:
            return {volts.Span() * (count / kNoiseScale) / volts.CountSpan(), 4};
        case kUnitGain:
        case kUnitOffset:
        case kUnitValue:
            return {count / gain + StoredOffset(), 3};
        // Times the gain and plus the gain, where its neighbours divide by it and add the offset: not to be brought
        // into line with them.
        case kUnitDeviationVolts:
            return {volts.Span() * (count * gain + gain) / volts.CountSpan(), 4};
        default:
            return {count, 0};
    }
}

// A difference of counts as one of stored values: what noise lists and stored deviations are scaled by comes off.
double StoredDifference(double counts, std::int32_t unit)
{
    if (IsTemperature(unit)) return counts;
    if (unit >= kUnitNoiseCounts && unit <= kUnitNoiseFahrenheit) return counts / kNoiseScale;
    return counts / StoredGain();
}

// Toward zero; what lies beyond the integers stays at their end, what is no number is 0.
std::int64_t Truncated(double value)
{
    constexpr double kReach = 4611686018427387904.0;  // 2^62: two of these still add up
    if (std::isnan(value)) return 0;
    return static_cast<std::int64_t>(std::clamp(value, -kReach, kReach));
}

std::int64_t UnlimitedCounts(double value, std::int32_t unit)
{
    const Calibration cal = CalibrationInForce();
    if ((IsTemperature(unit) || IsTemperatureDifference(unit)) && cal.valid) {
        const double celsius = ToCelsius(value, unit);
        if (IsTemperatureDifference(unit)) return Truncated(cal.intensitySpan * celsius / cal.temperatureSpan);
        return Truncated((celsius - cal.temperatureCold) * cal.intensitySpan / cal.temperatureSpan + cal.intensityCold);
    }
    switch (unit) {
        case kUnitVolts:
        case kUnitNoiseVolts:
        case kUnitDeviationVolts: {
            const VoltsLine volts = VoltsInForce();
            return Truncated((value - volts.lowVolts) * volts.CountSpan() / volts.Span()) + volts.lowCount;
        }
        case kUnitGain:
        case kUnitOffset:
            return Truncated(value);
        case kUnitValue:
            return Truncated((value - StoredOffset()) * StoredGain() + kRoundingUp);
        default:
            return Truncated(std::floor(value + kRoundingUp));
    }
}

bool HasExtension(std::string_view extension, std::initializer_list<std::string_view> list)
{
    return std::ranges::any_of(list, [&](std::string_view one) { return EqualIgnoringCase(extension, one); });
}

}  // namespace

UnitScope::UnitScope()
{
    scope = this;
}

UnitScope::UnitScope(const ImageHeaderRecord& header, std::string path) : header_(&header), path_(std::move(path))
{
    scope = this;
}

UnitScope::UnitScope(const ImageHeaderRecord& header, std::string path, std::pair<float, float> volts)
    : header_(&header), path_(std::move(path)), volts_(volts)
{
    scope = this;
}

UnitScope::~UnitScope()
{
    scope = nullptr;
}

bool VoltsAreKnown()
{
    const VoltsLine line = VoltsInForce();
    return line.lowCount < line.highCount && line.lowVolts != line.highVolts;
}

double ValueOfCounts(double counts, std::int32_t unit)
{
    return ReadingOf(counts, unit).value;
}

double ValueOfDifference(double counts, std::int32_t unit)
{
    const Calibration cal = CalibrationInForce();
    const VoltsLine line = VoltsInForce();
    const double volts = line.Span() * counts / line.CountSpan();
    if ((IsTemperature(unit) || IsTemperatureDifference(unit)) && cal.valid) {
        const double celsius = StoredDifference(counts, unit) * cal.temperatureSpan / cal.intensitySpan;
        const bool inFahrenheit = unit == kUnitFahrenheit || IsFahrenheitDifference(unit);
        return inFahrenheit ? celsius * static_cast<double>(kFahrenheitStep) : celsius;
    }
    switch (unit) {
        case kUnitVolts:
            return volts;
        case kUnitNoiseVolts:
            return volts / kNoiseScale;
        case kUnitDeviationVolts:
            return volts * StoredGain();
        case kUnitNoiseCounts:
        case kUnitGain:
        case kUnitOffset:
        case kUnitValue:
            return StoredDifference(counts, unit);
        default:
            return counts;
    }
}

std::optional<double> CountsOfCelsius(double celsius)
{
    const Calibration cal = CalibrationInForce();
    if (!cal.valid || !IsUnitAvailable(kUnitCelsius)) return std::nullopt;
    return (celsius - cal.temperatureCold) * cal.intensitySpan / cal.temperatureSpan + cal.intensityCold;
}

std::optional<CountRange> CountsOfSources()
{
    if (!CalibrationInForce().valid || !IsUnitAvailable(kUnitCelsius)) return std::nullopt;
    const ImageHeaderRecord* const header = StoredHeader();
    if (header) return CountRange{.low = header->IntensityCold, .high = header->IntensityHot};
    return CountRange{.low = IntensityCold, .high = IntensityHot};
}

float CountsToUnit(std::int32_t counts, std::int32_t unit, std::string* text)
{
    const Reading reading = ReadingOf(static_cast<double>(counts), unit);
    const auto single = static_cast<float>(reading.value);
    if (text) {
        *text = reading.decimals ? Format("%.*f", reading.decimals, static_cast<double>(single)) : Format("%d", counts);
    }
    return single;
}

std::int32_t UnitToCounts(float value, std::int32_t unit)
{
    const ImageHeaderRecord* const header = StoredHeader();
    const std::int32_t low = header ? header->DisplayLow : DisplayLow;
    const std::int32_t high = header ? header->DisplayHigh : DisplayHigh;
    const std::int64_t counts = UnlimitedCounts(static_cast<double>(value), unit);
    return static_cast<std::int32_t>(std::max<std::int64_t>(std::min<std::int64_t>(counts, high), low));
}

void GetUnitName(std::int32_t unit, std::string& name, std::string& unitText)
{
    const bool known = unit >= 0 && unit < kUnitCount;
    const UnitNames& names = kUnits[static_cast<std::size_t>(known ? unit : kUnitCounts)];
    name = names.name;
    unitText = names.unit;
}

int IsUnitAvailable(std::int32_t unit)
{
    const ImageHeaderRecord* const header = StoredHeader();
    std::string extension;
    if (header) SplitPath(StoredPath(), nullptr, nullptr, nullptr, &extension);
    const bool picture = !HasExtension(extension, {".noi", ".off", ".gai", ".sdv", ".flt"});
    const bool noise = header && HasExtension(extension, {".noi"});
    const bool storedTemperatures = header && header->TemperatureCold < header->TemperatureHot;

    switch (unit) {
        case kUnitCelsius:
        case kUnitKelvin:
        case kUnitFahrenheit:
            if (header) return picture && storedTemperatures;
            return CalType > 1 && TemperatureCold < TemperatureHot;
        case kUnitNoiseCounts:
            return noise;
        case kUnitNoiseVolts:
        case kUnitNoiseCelsius:
        case kUnitNoiseKelvin:
        case kUnitNoiseFahrenheit:
            return noise && storedTemperatures;
        case kUnitGain:
            return header && HasExtension(extension, {".gai"});
        case kUnitOffset:
            return header && HasExtension(extension, {".off"});
        case kUnitValue: {
            constexpr std::int16_t kFloats = 8;
            return header && header->DataType == kFloats;
        }
        // A deviation would need a file that is .sdv and .flt at once, and the radiometric units have no formula.
        case kUnitDeviationVolts:
        case kUnitDeviationCelsius:
        case kUnitDeviationKelvin:
        case kUnitDeviationFahrenheit:
        case 5:
        case 6:
        case 7:
        case 8:
        case 14:
        case 15:
        case 16:
        case 17:
        case 20:
        case 26:
        case 27:
        case 28:
        case 29:
            return 0;
        default:
            return picture;
    }
}

}  // namespace kelvo
