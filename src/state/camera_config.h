// The active camera's record. Read from its Camera.N section; one global instance, passed by value to the list
// builders.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace kelvo {

// Field names are the keys' names. Before the first read all numbers are 0.
struct CameraConfig {
    std::string Description;
    std::int32_t Vtotal = 0;
    std::int32_t Htotal = 0;
    std::int32_t Vactive = 0;  // the video frame and line as the head delivers them
    std::int32_t Hactive = 0;
    std::int32_t Vroi = 0;  // rows and columns of every frame in host memory
    std::int32_t Hroi = 0;
    std::int32_t DualCamera = 0;
    std::int32_t Vstart = 0;
    std::int32_t Hdelay = 0;
    std::int32_t Idelay = 0;
    std::int32_t CalDelay = 0;
    std::int32_t LogCamera = 0;
    std::int32_t IntDelay = 0;
    std::int32_t IntMinDuration = 0;
    std::int32_t IntMaxDuration = 0;
    std::int32_t IntDivisor = 0;
    std::int32_t IntOffset = 0;
    std::int32_t IntInc = 0;
    std::int32_t IntMaxDuration2 = 0;
    std::int32_t IntDivisor2 = 0;
    std::int32_t IntOffset2 = 0;
    std::int32_t UnityGain = 0;
    std::int32_t UnityOffset = 0;
    std::int32_t ZeroOffset = 0;
    std::int32_t NumOutputs = 0;
    std::int32_t Xzoom = 0;
    std::int32_t Yzoom = 0;
    std::int32_t Xwindow = 0;
    std::int32_t YWindow = 0;
    std::int32_t Xoffset = 0;
    std::int32_t Yoffset = 0;
    std::int32_t DecomScheme = 0;
    std::int32_t OscilliscopeRes = 0;
    std::int32_t BufferCapture = 0;
    std::int32_t SyncDisplay = 0;
    std::string TimingFile;
    std::string Preconnect;
    std::uint16_t Sync1 = 0;
    std::uint16_t Sync2 = 0;
    std::uint16_t Sync3 = 0;
    std::int32_t SignalMultiplier = 0;
    float fPitch = 0;
    std::int32_t ADduration = 0;
    std::int32_t NumChannels = 0;
    std::int32_t JambSyncEnable = 0;
    std::int32_t JambAddress = 0;
    std::int32_t RAM0Value = 0;
    std::int32_t RAM0JambValue = 0;
};

// Of the section in force; numbers are taken as the file has them, so that readers which need a range see to it.
extern const CameraConfig& ActiveConfig;

// Vroi x Hroi, the pixels of a frame and the entries of each list; 0 where either isn't positive.
std::size_t PixelsOf(const CameraConfig& config);

// Values that the same reader takes beside the record.
extern const std::int32_t& ActiveCamera;                  // N of the section in force; 0 before the start
extern const std::int32_t& nCommPort;                     // the head's serial port: 2 is COM2
extern const std::int32_t& numBufFrames;                  // host frames wanted; 0: none
extern const float& VoltsOffset;                          // volts a step of DAC 0
extern const float& ADoffset;                             // counts at 0 V
extern const std::array<float, 16>& VoltsPerCountVsGain;  // by gain index

// "Camera.N" of the active camera.
std::string ActiveCameraSection();

}  // namespace kelvo
