// Two-point and one-point calibration: from frames of one or two sources to the lists in force and their files.
//
// A run is one long procedure: it asks for the sources (CAL_COLD, CAL_HOT), gathers CalSettings.NumFrames frames of
// each through AverageFrames, calculates (calib/two_point.h, calib/one_point.h), installs the lists, replaces bad
// pixels, writes the set and shows a result box, from which a report opens (calib/calibration_report.h). Live video is
// started before each capture if the image is frozen. The files of a set change as one thing (calib/last_set.h): a run
// that doesn't complete leaves the former ones.
//
// A run that fails, or is cancelled once it has begun, leaves the camera uncalibrated: CalType 0, the plain table, gain
// 1 and one offset for all. What differs from that is told below.
#pragma once

#include "platform/types.h"
#include "state/camera_config.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace kelvo {

// Gains and offsets from two sources, as the set "Last" in the directory of kelvo.ini. 1: CalType is 2 and doneFlag 1.
// 0: doneFlag is 0 (unless the low source's dialog was cancelled, which changes nothing), and a box has told why; a
// cancel tells nothing. Where bad pixels can't be replaced the new gains and offsets stay installed, under CalType 0.
//
// Refused: where no frame came ("Video Data Acquisition Failed, Hardware error!"), where one detector in twenty or
// fewer responds by more than NoiseFloor, where the array's mean response is below it. An offset beyond 16 bits is
// asked about. Where the former set can't be copied aside ("Failed to save file: ...") there is no room for a new one
// either, and the run fails. A set that can't be written after that is told, and the calibration is in force without
// files (CalSettings.CalFile is empty).
int TwoPointCalibrate(HWND window, const CameraConfig& config, std::int32_t& doneFlag);

// Offsets from one source. With CalType 0 all gains are 1 and the result is the set "last" in DefaultDir, CalType 1.
// Otherwise an update: the gains come from the .gai of the set in force, whose offsets are overwritten; CalType stays,
// and noise isn't measured. 1; 0 after a box, a cancel, or, where an update's .gai can't be read, a beep. Where bad
// pixels can't be replaced CalType has its new value, and CalSettings.CalFile its former one. Sets the display's range.
int OnePointCalibrate(HWND window);

// Each detector's offset, low mean - meanLow x gain, rounded half away from zero; rangeFlag 1: one doesn't fit 16 bits,
// and its low bits are stored. meanGain and meanOffset are those of detectors with a gain, 0 where there are none. All
// lists in readout order. nullopt after "Failure to allocate OffsetList memory!".
std::optional<std::vector<std::int16_t>> CalculateOffsets(std::span<const float> gainList,
                                                          std::span<const std::int16_t> lowMeans, float meanLow,
                                                          float& meanGain, float& meanOffset, std::int32_t& rangeFlag);

// Makes a list (readout order, Vroi x Hroi) the one in force. 1, or 0 after "Hardware Timeout Error, Download of Gain
// Coefficients" or "... Offset Coefficients".
std::int32_t DownloadGains(std::span<const float> gainList);
std::int32_t DownloadOffsets(std::span<const std::int16_t> offsetList);

// The average of frames over the whole array in readout order, in counts, and each detector's standard deviation where
// noise isn't empty. Starts live video if the image is frozen; CalType is 0 from here on. Blocks. 1, or 0 after a box:
// "Invalid data array size" (frame holds less than Vroi x Hroi), "Video Data Acquisition Failed, Hardware error".
int GetCalibData(std::span<std::int16_t> frame, std::span<float> noise, std::uint32_t frameCount);

}  // namespace kelvo
