// The settings files: section Setup of kelvo.ini and the Camera.N sections of camera.ini, read into the globals and the
// record that bear the keys' names. Each feature reads its own section; this is what all of them stand on.
//
// No read can fail and none shows a message. A missing key gives the default named here. A malformed number gives 0
// where the key is an integer, and keeps the value that the variable had where it is a text that is scanned
// (hexadecimal, decimal text or float keys). Values are taken as they stand: readers that need a range see to it
// themselves.
#pragma once

#include "state/camera_config.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace kelvo {

// Keys of section Setup of kelvo.ini. ByteSwap, IrigEnable and SpiffHeader live with the header that takes them
// (imagefile/header.h), ActiveCamera with the camera's record.
extern const std::int16_t& NumGrayLevels;  // read and stored; nothing depends on it
// Section Save: 1 saves several frames in one file.
extern const std::int32_t& MultiFrame;

// XPGBoard (0), ActiveCamera (2), MultiFrame (0), ByteSwap ("0xffff", hexadecimal), IrigEnable (0), IrigAddress (736)
// and SpiffHeaderIdentity (18290). Clears CameraOn and ViewingFile. A key IRIGTime, as IrigEnable was called before, is
// taken over once: deleted from the file, with IrigEnable=1 in its place.
void ReadSetupKeys();

// NumGrayLevels (256).
void ReadNumGrayLevels();

// Reads section Camera.<number> into record and the globals of state/camera_config.h; clears Xpan and Ypan, sets
// ViewWidth and ViewHeight from the client size, CnfFilePath where cnfFile names a file (more than 4 characters, in
// DefaultDir), and FrameRate where the frame rate table tells one. What the conditions leave out keeps its old value:
// - full 0 reads only what the head's timing needs;
// - IntInc 0: none of IntDelay, IntMinDuration, IntMaxDuration, IntDivisor, IntOffset;
// - full with DualCamera: none of UnityGain, UnityOffset, ZeroOffset.
// NumChannels is never left above NumOutputs.
void ReadCameraConfig(std::int32_t number, int full, CameraConfig& record);

// The record of section Camera.<number> of a camera.ini, and nothing else: what ReadCameraConfig with full leaves in
// one that was empty, but for TimingFile. nullopt: the file has no such section, or none with a region (Vroi and Hroi).
std::optional<CameraConfig> CameraRecordOf(std::int32_t number, std::string_view cameraFile);

// What the exit keeps: Contrast and Brightness in section Display of kelvo.ini, as the operator chose them
// (state/contrast_fit.h); Xzoom, Xoffset, Yzoom and Yoffset in the active camera's section.
void SaveDisplayState();

// What belongs to this module, as before ReadSetupKeys.
void ResetSettings();

}  // namespace kelvo
