// The video set-up: frame rate, integration time, gain and offset of the head, and the keys that keep them.
#pragma once

#include "config/camera_config.h"
#include "platform/types.h"

#include <string_view>

namespace kelvo {

// Reads from the active camera's section: IndexFrameRate (10); IndexIntegrationTime (10), four numbers by slot, of
// which the first counts for all where they aren't four; gain and offset of the first channel from QVF1058_Gain0 (0)
// and QVF1058_DAC0 (128). Clears FrameRate and works out VoltsLow and VoltsHigh.
void LoadVideoSettings();

// Sends the integration time, offset and gain in force to the head, and starts the grab again where live video is what
// the operator sees. Opens the link if it is closed, and closes it again unless CommPortAlwaysOpen keeps it; where it
// can't be opened nothing is sent, after the link's boxes. 1.
int VideoSetupDialog(HWND parent);

// The same from section Setup of a file (a calibration set): IndexFrameRate (10; a set without it takes its row from
// FrameRate), IntTime (10, for all slots), VideoGain1 (0), VideoOffset1 (128).
void LoadVideoSettings(std::string_view file);

// Writes what is in force: section Setup of the file, and the active camera's section of camera.ini.
void SaveVideoSettings(std::string_view file);

// CalType 0, the full range of counts, the plain table, gain 1 and the unity offset in the active tables. 1, or 0 after
// a box where the table or the gains failed.
int ResetUnityGainOffset(const CameraConfig& config);

}  // namespace kelvo
