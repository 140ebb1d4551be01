#include "calib/set_description.h"

#include "calib/last_set.h"
#include "calib/set_reader.h"
#include "head/camera_head.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "state/camera_config.h"
#include "state/windows.h"

#include <array>
#include <ctime>

namespace kelvo {

namespace {

std::string WrittenAt(const std::string& calPath)
{
    const std::time_t time = FileModificationTime(calPath).value_or(0);
    std::tm local{};
    localtime_r(&time, &local);
    std::array<char, 32> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), "%d %b %Y, %H:%M", &local);
    return {text.data(), length};
}

std::string CameraOf(const CalibrationSet& set)
{
    const std::string section = Format("Camera.%d", set.camera);
    return GetPrivateProfileString(section, "Description", section, CameraFilePath);
}

std::string IntegrationOf(const CalibrationSet& set)
{
    const std::int32_t index = ScanDecimal(set.integrationTimes).value_or(0);
    const float rateHz = ScanFloat(GetPrivateProfileString("Setup", "FrameRate", "", set.calPath)).value_or(0.0F);
    const double msec = set.camera == ActiveCamera && rateHz > 0 ? IntegrationTimeMsec(rateHz, index) : 0;
    return msec > 0 ? Format("%.3f ms", msec) : Format("integration %d", index);
}

}  // namespace

std::string DescribeSet(const std::string& calPath)
{
    constexpr std::size_t kWithoutLists = 0;
    const CalibrationSet set = ReadSet(calPath, kWithoutLists);
    if (!IsCalFile(calPath) || set.camera == kCameraNotNamed) return "Not a calibration, or it can't be read.";
    return WrittenAt(calPath) + "    " + CameraOf(set) + "    " + IntegrationOf(set);
}

}  // namespace kelvo
