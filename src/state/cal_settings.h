// The calibration set: what the operator chose for the next run, and the files of the set in force. Keys of section
// Calibration of kelvo.ini bear the fields' names.
#pragma once

#include <cstdint>
#include <string>

namespace kelvo {

struct CalSettingsRecord {
    std::int32_t NumSources = 2;
    std::uint32_t NumFrames = 30;  // summed at each source
    std::int32_t ChosenType = 2;   // 1 or 2: the run that the CALIB dialog offers
    std::int32_t NoiseFloor = 25;  // least response, counts
    std::int32_t IntensityCold = 0;
    float TemperatureCold = -999.0F;  // °C; -999: not given
    std::int32_t IntensityHot = 0;
    float TemperatureHot = -999.0F;
    float Factor = 1.0F;  // always 1
    float GainAcceptanceRange = 0.22F;
    std::string PRSfile = "nearccw.prs";
    std::string DecomFile;  // whole paths of the set in force; before there is one, as kelvo.ini has them
    std::string BadDetFile;
    std::string GainFile;
    std::string OffsetFile;
    std::string CalFile;
    std::int32_t MinOffset = 400;  // counts below and above the mean
    std::int32_t MaxOffset = 400;
    float AllowedNoiseLevel = 9.0F;  // counts
    float EmissivityCold = 1.0F;
    float EmissivityHot = 1.0F;
    std::string OpticsFile;
};

// As kelvo.ini has them from the start on; the files are those of the set in force.
extern const CalSettingsRecord& CalSettings;
extern const CalSettingsRecord& CalSettings2;  // read with DualCamera; nothing else uses it

extern const std::int32_t& ReplaceNoisy;  // 1: noisy pixels are replaced too
extern const std::int32_t& CalDone;       // 1 once a run's coefficients stand
extern const std::int32_t& BadDetCount;   // pixels replaced by the last run or rebuild; below 0 where it failed

}  // namespace kelvo
