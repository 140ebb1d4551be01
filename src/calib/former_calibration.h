// What is in force as a calibration begins, as one value: what doesn't come to its end puts it back. The CALIB dialog's
// Ok stores its choices before a run begins, and a run works in the plain state, so that both have something to undo.
#pragma once

#include "state/cal_settings_write.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

class FormerCalibration {
  public:
    // All that stands now, but for the three tables: they stay where they are.
    FormerCalibration();

    bool IsCalibration() const { return calType_ != 0; }

    // The tables move in here, without a copy: who calls this is about to install others. Nothing without a
    // calibration.
    void TakeTables();

    // What the CALIB dialog's Ok stores of the set in force: the list of bad detectors, the replacement of bad and of
    // noisy pixels, sources and type, the key SubstBadPixels of kelvo.ini, the check of "Replace bad pixels".
    void PutBackChoices() const;

    // All of it, DECOM.TMP included. The limits and the frame count of the next run stay as they were chosen meanwhile:
    // they belong to no set. A frozen picture is shown anew where it had other tables. Once.
    void PutBack();

  private:
    void PutBackSubstitution() const;
    void PutBackTables();

    std::int32_t calType_;
    std::int32_t intensityCold_;
    std::int32_t intensityHot_;
    float temperatureCold_;
    float temperatureHot_;
    CalSettingsVariables settings_;
    std::int32_t substBadPixels_;
    std::optional<std::string> substKey_;
    bool replacementChecked_;
    std::int32_t displayLow_;
    std::int32_t displayHigh_;

    bool hasTables_ = false;
    std::vector<std::uint32_t> decomList_;
    std::vector<std::int16_t> offsetList_;
    std::vector<float> gainList_;
};

}  // namespace kelvo
