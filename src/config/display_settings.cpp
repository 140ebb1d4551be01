#include "config/display_settings.h"

#include "config/display_settings_write.h"
#include "platform/profile.h"
#include "resources/ids.h"
#include "state/camera_config.h"
#include "state/display_state_write.h"
#include "state/windows.h"

#include <algorithm>

namespace kelvo {

namespace write {
OpticsVariables optics;
}

constinit const std::string& OpticsFile = write::optics.OpticsFile;

namespace {

constexpr const char* kDisplay = "Display";

struct IntegerKey {
    const char* key;
    std::int32_t* value;
    std::int32_t defaultValue;
};

constexpr IntegerKey kIntegerKeys[] = {
    {"GrayColorBar", &write::display.GrayColorBar, 1}, {"TempScale", &write::display.TempScale, 0},
    {"TempHisto", &write::display.TempHisto, 0},       {"Contrast", &write::display.Contrast, 16},
    {"Brightness", &write::display.Brightness, 580},   {"MirrorHoriz", &write::display.MirrorHoriz, 0},
    {"MirrorVert", &write::display.MirrorVert, 0},     {"RotateCCW", &write::display.RotateCCW, 0},
};

constexpr IntegerKey kSecondCameraKeys[] = {
    {"SubstBadPixels2", &write::display.SubstBadPixels2, 1},
    {"MirrorHoriz2", &write::display.MirrorHoriz2, 0},
    {"MirrorVert2", &write::display.MirrorVert2, 0},
};

std::int32_t DisplayInteger(const char* key, std::int32_t defaultValue)
{
    return GetPrivateProfileInt(kDisplay, key, defaultValue, IniFilePath);
}

std::int16_t ChoiceAmong(std::int32_t first, std::int32_t last, const char* key)
{
    return static_cast<std::int16_t>(std::clamp(DisplayInteger(key, first), first, last));
}

template <typename Keys>
void ReadIntegers(const Keys& keys)
{
    for (const IntegerKey& each : keys) *each.value = DisplayInteger(each.key, each.defaultValue);
}

void ReadPan()
{
    const std::string section = ActiveCameraSection();
    write::display.Xpan = GetPrivateProfileInt(section, "Xpan", 0, CameraFilePath);
    write::display.Ypan = GetPrivateProfileInt(section, "Ypan", 0, CameraFilePath);
}

}  // namespace

void ReadDisplaySettings()
{
    write::display.ImageColor = ChoiceAmong(kNormalGray, kNormalColor, "ImageColor");
    write::display.GrayScale = ChoiceAmong(kLinearScale, kLogScale, "GrayScale");
    ReadIntegers(kIntegerKeys);
    if (TempScale == 1) write::display.GrayColorBar = 1;  // the scale is drawn along the bar
    write::optics.OpticsFile = GetPrivateProfileString(kDisplay, "OpticsFile", "", IniFilePath);
    if (ActiveConfig.DualCamera != 0) ReadIntegers(kSecondCameraKeys);
    ReadPan();
    write::display.ResetContrast = Contrast;
    write::display.ResetBrightness = Brightness;
    write::display.DisplayUnit = 0;
    write::display.SubstBadPixels = 1;
}

void ResetDisplaySettings()
{
    write::optics.OpticsFile.clear();
}

}  // namespace kelvo
