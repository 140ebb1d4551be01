// The voltage calibration: what a count is in volts at each of the 16 gains, what a step of the offset is, and how many
// counts 0 V is, measured with a known DC voltage at the inputs of all channels. It touches no list of detectors.
//
// With V volts, offset control o and gain g a mean signal is A/Doffset + (V + (o - 128) x Volts/Offset) /
// VoltsPerCountVsGain[g] (state/camera_config.h). So the signals at 0 V and V give the volts per count, two offsets the
// volts per step.
#pragma once

#include "platform/types.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace kelvo {

constexpr std::size_t kGainSteps = 16;
constexpr int kInputVoltage = 101;  // the field

// The mean signal that couldn't be had; a mean of exactly this value reads so too.
constexpr float kNoCalVoltSignal = -16000.0F;

// Runs CALVOLT: it asks for 0 V and measures all gains before it opens, then takes a voltage of -0.51 to 0.51 V,
// measures again, and asks whether the results are to be kept. 1: VoltsOffset, ADoffset and VoltsPerCountVsGain are the
// measured ones and stand in the camera file; 0: cancelled, or the zero couldn't be measured, and they are as before;
// or the dialog couldn't be opened. Esc ends a measurement between two gains.
//
// From the first measurement on the system is uncalibrated (CalType 0) and live; the status line says so at the end and
// how to go back, and where the keys were written to another camera's section than the active one's. Gain and offset of
// before are sent again. Without a measurement the status line is as before. Blocks, some 9 s for the zero and 10 s for
// a voltage.
std::int32_t RunVoltageCalibration(HWND window);
LRESULT fnCALVOLTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

// Sets offset (0 to 255) and gain (index 0 to 15) on all four channels, waits 500 ms, and takes the mean of all samples
// of one new frame, in counts. kNoCalVoltSignal after a box: "Failure to allocate video memory!", after which the
// system stands at unity gain and offset; "Video Data Acquisition Failed, Hardware error" under "GetCalVoltSignal()
// Error"; or where the head didn't take the settings. CalType is 0 and live video runs anew after it.
float GetCalVoltSignal(std::int32_t offset, std::int32_t gain);

// Writes Volts/Offset, A/Doffset and VoltsPerCountVsGain, "%f" each, to the section of the camera file that CameraNum
// of section Setup names (default 1).
void SaveVoltageCalibration();

// --- The arithmetic, in single operands, double expressions, results stored single
// --------------------------------------

// Volts a count from the mean signals at 0 V and at so many volts; nullopt where it is 0 or no finite number.
std::optional<float> VoltsPerCountOf(float volts, float signal, float zeroSignal);
// Volts a step of the offset control from the signals at two offsets, stepsBetween (not 0) apart.
float VoltsPerStepOf(float signal, float shiftedSignal, float voltsPerCount, std::int32_t stepsBetween);
// Mean of the signals at 0 V over all gains: the sum in single precision at each step, in order.
float CountsAtZeroOf(std::span<const float, kGainSteps> zeroSignals);

// Nothing was measured.
void ResetVoltageCalibration();

}  // namespace kelvo
