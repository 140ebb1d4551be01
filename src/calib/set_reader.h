// A calibration set as a value: what its files hold, read into memory of the reader's own. Reading changes nothing: no
// state, no file, no box; what is missing or broken stands in the value as a reason. Any number of sets can be held at
// once. calib/calibration_set.h puts one in force.
#pragma once

#include "pixel/coefficient_lists.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

constexpr std::int32_t kCameraNotNamed = 999;  // the .cal doesn't say of which camera the set is

// A key's text as the .cal has it; nullopt where there is no such key.
using SetText = std::optional<std::string>;

template <typename Number>
struct SetNumber {
    SetText text;
    std::optional<Number> value;  // nullopt where there is no text, or no number stands at its start
};

template <typename Entry>
struct SetList {
    std::string name;            // as the .cal has it: it may hold a path of the machine that made the set
    std::string path;            // that name in the directory of the .cal, for a set is moved as a whole
    std::vector<Entry> entries;  // Vroi x Hroi of the frame that was asked for; empty unless read is kComplete
    ListRead read = ListRead::kNoList;
};

struct CalibrationSet {
    std::string calPath;
    std::int32_t camera = kCameraNotNamed;  // N of the section that was in force

    // Section Setup: what the head ran with, as far as a set has it under names of its own. Indexes and raw offsets.
    std::int32_t videoGain1 = 0;
    std::int32_t videoOffset1 = 0;
    std::int32_t videoOffset2 = 0;
    std::string integrationTimes;  // four indexes, parted by commas

    bool memoryRefused = false;     // for the three lists: none of them was read
    SetList<std::uint32_t> decom;   // image order, each below Vroi x Hroi; one that isn't makes the list kNotRead
    SetList<float> gains;           // readout order; 0.0: a rejected detector
    SetList<std::int16_t> offsets;  // readout order, counts; of an odd frame the last one is in no file, and 0

    // Section Calibration
    std::int32_t type = 0;  // 0 none, 1 offsets only, 2 gains and offsets
    SetText typeText;
    SetText driverNumber;
    SetText calFile;                        // a path as the machine that made the set had it
    SetText badDetFile;                     // likewise; empty: no list
    SetNumber<float> temperatureCold;       // °C, -999.0 where none was given
    SetNumber<float> temperatureHot;        // °C
    SetNumber<std::int32_t> intensityCold;  // counts
    SetNumber<std::int32_t> intensityHot;   // counts
    SetNumber<std::int32_t> substBadPixels;

    // Section Display: 0 or 1 each
    SetNumber<std::int32_t> mirrorVert;
    SetNumber<std::int32_t> mirrorHoriz;
    SetNumber<std::int32_t> rotateCcw;
};

// Reads the set of a .cal file for frames of so many pixels: nothing in a set says how many it has, and a longer list
// is read as far as it is wanted. Without a count it is the frame of the active camera. A .cal that isn't there gives a
// set of no camera and without lists.
CalibrationSet ReadSet(const std::string& calPath, std::size_t pixels);
CalibrationSet ReadSet(const std::string& calPath);

// The path that a file named in a .cal has: of what the .cal says only name and extension count.
std::string InSetDirectory(const std::string& calPath, const std::string& path);

}  // namespace kelvo
