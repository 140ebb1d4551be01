// What a calibration did, told beyond the classic result box: when, with which camera as it was set, how uneven the
// array was and is, how loud, which detectors are bad and why, and who answers for them. calib/report_file.h keeps it
// beside the set, calib/report_dialog.h shows it.
//
// Residual non-uniformity is the deviation of pixels from their mean, in percent of that mean. Before: of the good
// detectors' mean raw counts at each source. After: of the corrected pixels of fresh frames, taken while the run's last
// source still stands there.
#pragma once

#include "calib/orientation.h"
#include "platform/types.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

struct NonUniformity {
    std::string source;  // "low source, 20.000 °C", Latin-1
    double mean = 0;     // counts
    double percent = 0;
};

struct BadDetectorClass {
    std::string name;
    std::int32_t count = 0;
    std::uint32_t color = 0;  // of the map, 0x00RRGGBB
};

constexpr std::uint32_t kNobodyAnswers = 0xFFFFFFFF;

struct CalibrationReport {
    std::string title;                                       // "2 Point Calibration"
    std::vector<std::pair<std::string, std::string>> facts;  // name and value, in the order of the report
    std::uint32_t frameCount = 0;
    std::vector<NonUniformity> before;
    std::optional<NonUniformity> after;  // nullopt: no fresh frames came
    std::int32_t afterFrames = 0;
    std::vector<BadDetectorClass> classes;  // the entries of map less 1
    std::int32_t columns = 0;
    std::int32_t rows = 0;
    std::vector<std::uint8_t> map;       // image order: 0 good, otherwise the class + 1
    Orientation turned;                  // of map and answers, as OrientMap found it
    std::vector<std::uint32_t> answers;  // of each pixel of map the one whose detector it shows, or kNobodyAnswers
    std::string calPath;
    std::string note;  // what else there is to know
};

// Deviation over the mean in percent of the values whose use entry isn't 0; use may be empty: all count. nullopt for
// fewer than two values or a mean of 0.
std::optional<NonUniformity> NonUniformityOf(std::span<const std::int16_t> values, std::span<const std::uint8_t> use,
                                             std::string source);
std::optional<NonUniformity> NonUniformityOf(std::span<const std::int32_t> values, std::span<const std::uint8_t> use,
                                             std::string source);
std::optional<NonUniformity> NonUniformityOf(std::span<const float> values, std::span<const std::uint8_t> use,
                                             std::string source);
// "low source", or "low source, 20.000 °C" where a temperature is given (above -274).
std::string SourceName(std::string_view source, float temperature);

// When, with which camera and program, as the head was last set, and what was done to the camera's counts where it
// tells that: the facts of a run of so many frames.
std::vector<std::pair<std::string, std::string>> FactsOfRun(std::uint32_t frameCount);
// The good detectors' mean noise (counts rms) as a fact. response: counts a kelvin, 0 where the temperatures of two
// sources don't tell it; with it the noise is told in mK too: NETD = mean noise / response.
std::pair<std::string, std::string> NoiseFact(double noise, double response);

// Makes the report's map (image order, before orientation) of each detector's class (readout order); 0: good.
void MapClasses(CalibrationReport& report, std::span<const std::uint8_t> classes, std::span<const std::uint32_t> decom);
// Adds the class of pixels that a list of bad detectors names and the run found good.
void MapListed(CalibrationReport& report, std::span<const std::uint8_t> badMap);
// Who answers for each pixel of the map that isn't good: table before and after the replacement of bad detectors (image
// order). Without memory nobody is named.
void MapAnswers(CalibrationReport& report, std::span<const std::uint32_t> before, std::span<const std::uint32_t> after);
// Turns map and answers as the picture on the screen is turned. Without memory they stay as the detector lies.
void OrientMap(CalibrationReport& report);
// The map turned back, for whoever looks a detector up by its row and column. Empty where the report is of another
// region than the camera's.
std::vector<std::uint8_t> MapBeforeOrientation(const CalibrationReport& report);

// In a line drawn through two temperatures and the radiances there, what the temperature read half-way in temperature
// is off by, in °C: the curve of Planck's law between wavelengths in um. 0 where the two are equal.
double StraightLineError(double coldC, double hotC, double fromUm, double toUm);

// Gathers frames through the lists in force and fills after. Without frames after stays empty; what failed has been
// told by then.
void MeasureAfter(CalibrationReport& report, const std::string& source, std::uint32_t frameCount);

// The report as lines, Latin-1, "\n" at each end.
std::string ReportText(const CalibrationReport& report);

}  // namespace kelvo
