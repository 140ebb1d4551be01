#include "config/display_settings.h"

#include "platform/profile.h"
#include "resources/ids.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/windows.h"

#include <algorithm>

namespace kelvo {

std::string OpticsFile;

namespace {

constexpr const char* kDisplay = "Display";

struct IntegerKey {
    const char* key;
    std::int32_t* value;
    std::int32_t defaultValue;
};

constexpr IntegerKey kIntegerKeys[] = {
    {"GrayColorBar", &GrayColorBar, 1}, {"TempScale", &TempScale, 0},     {"TempHisto", &TempHisto, 0},
    {"Contrast", &Contrast, 16},        {"Brightness", &Brightness, 580}, {"MirrorHoriz", &MirrorHoriz, 0},
    {"MirrorVert", &MirrorVert, 0},     {"RotateCCW", &RotateCCW, 0},
};

constexpr IntegerKey kSecondCameraKeys[] = {
    {"SubstBadPixels2", &SubstBadPixels2, 1},
    {"MirrorHoriz2", &MirrorHoriz2, 0},
    {"MirrorVert2", &MirrorVert2, 0},
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
    Xpan = GetPrivateProfileInt(section, "Xpan", 0, CameraFilePath);
    Ypan = GetPrivateProfileInt(section, "Ypan", 0, CameraFilePath);
}

}  // namespace

void ReadDisplaySettings()
{
    ImageColor = ChoiceAmong(kNormalGray, kNormalColor, "ImageColor");
    GrayScale = ChoiceAmong(kLinearScale, kLogScale, "GrayScale");
    ReadIntegers(kIntegerKeys);
    if (TempScale == 1) GrayColorBar = 1;  // the scale is drawn along the bar
    OpticsFile = GetPrivateProfileString(kDisplay, "OpticsFile", "", IniFilePath);
    if (ActiveConfig.DualCamera != 0) ReadIntegers(kSecondCameraKeys);
    ReadPan();
    ResetContrast = Contrast;
    ResetBrightness = Brightness;
    DisplayUnit = 0;
    SubstBadPixels = 1;
}

void ResetDisplaySettings()
{
    OpticsFile.clear();
}

}  // namespace kelvo
