// Display units: which physical quantities can be read from the frame on view, and how a count becomes one and back.
//
// Every value on a screen passes through here. A unit is an index into one fixed table, 0 to 29, as lists store it.
// Unit texts are Latin-1. Counts and quantities meet in double; a result is rounded to single, and its text is made
// from the single.
//
// Read of the state: DisplayLow, DisplayHigh; VoltsLow, VoltsHigh; the calibration pair, of ImageHeader with a file on
// view, otherwise of the calibration in force; ViewScaleGain, ViewScaleOffset. Nothing here reports to the operator.
#pragma once

#include "display/lookup_table.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace kelvo {

struct ImageHeaderRecord;

constexpr std::int32_t kUnitCount = 30;

constexpr std::int32_t kUnitCounts = 0;
constexpr std::int32_t kUnitVolts = 1;
constexpr std::int32_t kUnitCelsius = 2;
constexpr std::int32_t kUnitKelvin = 3;
constexpr std::int32_t kUnitFahrenheit = 4;
constexpr std::int32_t kUnitNoiseCounts = 9;
constexpr std::int32_t kUnitNoiseVolts = 10;
constexpr std::int32_t kUnitNoiseCelsius = 11;
constexpr std::int32_t kUnitNoiseKelvin = 12;
constexpr std::int32_t kUnitNoiseFahrenheit = 13;
constexpr std::int32_t kUnitGain = 18;
constexpr std::int32_t kUnitOffset = 19;
constexpr std::int32_t kUnitValue = 21;
constexpr std::int32_t kUnitDeviationVolts = 22;
constexpr std::int32_t kUnitDeviationCelsius = 23;
constexpr std::int32_t kUnitDeviationKelvin = 24;
constexpr std::int32_t kUnitDeviationFahrenheit = 25;

// The value of a count. text, unless null, takes it as the operator reads it: three decimals, four for volts of noise
// and of deviation, or the plain count where that is the value. A temperature without a valid calibration is the count.
float CountsToUnit(std::int32_t counts, std::int32_t unit, std::string* text);

// The same of what needn't be a whole count, a mean, not yet rounded to single.
double ValueOfCounts(double counts, std::int32_t unit);
// What a difference of two counts, a deviation, is in that unit: scaled, without the unit's zero.
double ValueOfDifference(double counts, std::int32_t unit);

// The count that a temperature has on the line through the calibration pair, neither cut nor limited:
//     (celsius - TemperatureCold) x (IntensityHot - IntensityCold) / (TemperatureHot - TemperatureCold) + IntensityCold
// nullopt where temperatures can't be read.
std::optional<double> CountsOfCelsius(double celsius);
// The counts of the two sources; nullopt likewise.
std::optional<CountRange> CountsOfSources();

// The count of a value, limited to the range on view: the header's with a file on view, else the live one. The low end
// wins where the two cross. Not the inverse of CountsToUnit for kelvin, noise and deviation: both directions add
// 273.15, and the scale of 20 of noise lists is taken off only on the way out. Plot limits stored by operators rest on
// that.
std::int32_t UnitToCounts(float value, std::int32_t unit);

// Name and unit text: "Temperature", "\xB0" "C". An index outside the table gives "Signal" and "Counts".
void GetUnitName(std::int32_t unit, std::string& name, std::string& unitText);

// 1 if the frame on view can be read in that unit, else 0. It depends on the extension of ViewFilePath, ImageHeader's
// DataType and the calibration pair.
int IsUnitAvailable(std::int32_t unit);

// While one lives all of the above holds for frames that needn't be on view: those of a file with that header and name,
// whose 4-byte samples count as they are, or the camera's. One at a time; the header must outlive it.
class UnitScope {
  public:
    UnitScope();  // the camera's
    UnitScope(const ImageHeaderRecord& header, std::string path);
    // volts: at the two ends of the header's display range (DisplayLow, DisplayHigh) in place of the camera's.
    UnitScope(const ImageHeaderRecord& header, std::string path, std::pair<float, float> volts);
    ~UnitScope();
    UnitScope(const UnitScope&) = delete;
    UnitScope& operator=(const UnitScope&) = delete;

    const ImageHeaderRecord* Header() const { return header_; }  // null: the camera's
    const std::string& Path() const { return path_; }
    const std::optional<std::pair<float, float>>& Volts() const { return volts_; }

  private:
    const ImageHeaderRecord* header_ = nullptr;
    std::string path_;
    std::optional<std::pair<float, float>> volts_;
};

// Whether a count is known in volts: the display range isn't empty, and its ends have different volts. The higher one
// has fewer where a camera counts up as its voltage falls.
bool VoltsAreKnown();

}  // namespace kelvo
