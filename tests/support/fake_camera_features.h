// The feature list of the fake camera: what a GenICam camera calls its settings, and at which register each stands.
#pragma once

#include "support/fake_camera.h"

#include <cstdint>
#include <span>
#include <string>

namespace kelvo {

// Registers of ours, where neither GigE Vision nor Aravis's fake camera has any.
constexpr std::uint32_t kFakeBlackLevelRegister = 0x4000;
constexpr std::uint32_t kFakeReverseXRegister = 0x4004;
constexpr std::uint32_t kFakeReverseYRegister = 0x4008;
constexpr std::uint32_t kFakeTestPatternRegister = 0x400C;
// Texts of 32 bytes, as GigE Vision places them.
constexpr std::uint32_t kFakeVendorRegister = 0x48;
constexpr std::uint32_t kFakeModelRegister = 0x68;

constexpr double kFakeLowestRateHz = 2;
constexpr double kFakeHighestRateHz = 200;

// As the standard's XML, for a sensor of so many columns and rows.
std::string FakeCameraFeatures(std::uint32_t columns, std::uint32_t rows, std::span<const FakePixelFormat> formats);

}  // namespace kelvo
