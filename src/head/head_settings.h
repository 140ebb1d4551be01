// The head's keys in the section of the active camera. A key that is missing gives the default named here; bytes keep
// the low 8 bits of what stands there.
#pragma once

#include "head/head_records.h"
#include "state/camera_config.h"

#include <cstddef>
#include <cstdint>

namespace kelvo {

std::int32_t HeadKey(const char* key, std::int32_t defaultValue);
// Written as "%d".
void WriteHeadKey(const char* key, std::int32_t value);

// The registers' addresses on the wire.
std::int32_t DacRegister();                // QVF1058_DACReg, 112
std::int32_t GainRegister();               // QVF1058_GainReg, 96
std::int32_t BiasEnableRegister();         // QVF1058_BiasEnableReg, 128
std::int32_t DacSetting(std::size_t dac);  // QVF1058_DAC0 to QVF1058_DAC7, 128

// The timing keys, and what follows from them: the clock index of IndexFrameRate, and the frame size from Vactive and
// Hactive. HeadModel must be known: it has its own start delays. The integration counters stay.
void ReadTimingKeys(HeadTimingRecord& timing, const CameraConfig& config);
// The serial word's keys, and the window's ends from Vactive and Hactive.
void ReadSerialWordKeys(FpaSerialWordRecord& word, const CameraConfig& config);

}  // namespace kelvo
