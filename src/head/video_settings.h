// The video settings: frame rate, integration time, gain and offset of the head, and the keys that keep them.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace kelvo {

// The indexes of a text, four numbers by slot parted by commas; of fewer the first counts for all slots. Nothing is
// sent.
void TakeIntegrationIndexes(std::string_view text);
// Keeps an index of the integration table for the slot in use, sends it, and works its time out.
void SetIntegration(std::int32_t index);
// IntegrationTime of the slot in use, at the index and the frame rate in force.
void UpdateIntegrationTime();

// Reads from the active camera's section: IndexFrameRate (10); IndexIntegrationTime (10), four numbers by slot, of
// which the first counts for all where they aren't four; gain and offset of the first channel from QVF1058_Gain0 (0)
// and QVF1058_DAC0 (128). Clears FrameRate and works out VoltsLow and VoltsHigh.
void LoadVideoSettings();

// The same from section Setup of a file (a calibration set): IndexFrameRate (10; a set without it takes its row from
// FrameRate), IntTime (10, for all slots), VideoGain1 (0), VideoOffset1 (128).
void LoadVideoSettings(std::string_view file);

// Writes what is in force. Section Setup of the file: FrameRate (Hz), IndexFrameRate, IntTime (of the first slot),
// VideoGain1 to VideoGain4, VideoOffset1 to VideoOffset4. The active camera's section of camera.ini: the same of the
// first channel, fFrameRate, and the head's registers (delays, biases, flips, window). Registers that no turn-on has
// read yet keep their keys.
void SaveVideoSettings(std::string_view file);

// VoltsLow and VoltsHigh, the volts at DisplayLow and DisplayHigh, for a gain index (limited to 0 to 15) and an offset:
// (counts - ADoffset) x VoltsPerCountVsGain[gain] - (offset - 128) x VoltsOffset, in double, rounded once to single.
void SetVoltsRange(std::int32_t gain, std::int32_t offset);

}  // namespace kelvo
