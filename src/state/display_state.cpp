#include "state/display_state.h"

#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/state_registry.h"

namespace kelvo {

namespace write {
DisplayStateVariables display;
}

constinit const std::int32_t& Contrast = write::display.Contrast;
constinit const std::int32_t& Brightness = write::display.Brightness;
constinit const std::int32_t& LevelsAreFitted = write::display.LevelsAreFitted;
constinit const std::int32_t& ResetContrast = write::display.ResetContrast;
constinit const std::int32_t& ResetBrightness = write::display.ResetBrightness;
constinit const std::int16_t& ImageColor = write::display.ImageColor;
constinit const std::int16_t& GrayScale = write::display.GrayScale;
constinit const std::int32_t& GrayColorBar = write::display.GrayColorBar;
constinit const std::int32_t& TempScale = write::display.TempScale;
constinit const std::int32_t& TempHisto = write::display.TempHisto;
constinit const std::int32_t& ColorBarShown = write::display.ColorBarShown;
constinit const std::int32_t& MirrorHoriz = write::display.MirrorHoriz;
constinit const std::int32_t& MirrorVert = write::display.MirrorVert;
constinit const std::int32_t& RotateCCW = write::display.RotateCCW;
constinit const std::int32_t& SubstBadPixels = write::display.SubstBadPixels;
constinit const std::int32_t& SubstBadPixels2 = write::display.SubstBadPixels2;
constinit const std::int32_t& MirrorHoriz2 = write::display.MirrorHoriz2;
constinit const std::int32_t& MirrorVert2 = write::display.MirrorVert2;
constinit const std::int32_t& DisplayLow = write::display.DisplayLow;
constinit const std::int32_t& DisplayHigh = write::display.DisplayHigh;
constinit const std::int32_t& DisplayUnit = write::display.DisplayUnit;
constinit const std::int32_t& Xpan = write::display.Xpan;
constinit const std::int32_t& Ypan = write::display.Ypan;
constinit const std::vector<std::uint8_t>& DisplayLut = write::display.DisplayLut;
constinit const std::vector<std::uint8_t>& ColorMap = write::display.ColorMap;
constinit const float& ViewScaleGain = write::display.ViewScaleGain;
constinit const float& ViewScaleOffset = write::display.ViewScaleOffset;
constinit const std::int32_t& Xzoom = write::camera.ActiveConfig.Xzoom;
constinit const std::int32_t& Yzoom = write::camera.ActiveConfig.Yzoom;
constinit const std::int32_t& Xoffset = write::camera.ActiveConfig.Xoffset;
constinit const std::int32_t& Yoffset = write::camera.ActiveConfig.Yoffset;

void ResetDisplayState()
{
    write::display = {};
}

namespace {

const StateNames kStateNames{
    Named("Contrast", Contrast),
    Named("Brightness", Brightness),
    Named("LevelsAreFitted", LevelsAreFitted),
    Named("ResetContrast", ResetContrast),
    Named("ResetBrightness", ResetBrightness),
    Named("ImageColor", ImageColor),
    Named("GrayScale", GrayScale),
    Named("GrayColorBar", GrayColorBar),
    Named("TempScale", TempScale),
    Named("TempHisto", TempHisto),
    Named("MirrorHoriz", MirrorHoriz),
    Named("MirrorVert", MirrorVert),
    Named("RotateCCW", RotateCCW),
    Named("SubstBadPixels", SubstBadPixels),
    Named("DisplayLow", DisplayLow),
    Named("DisplayHigh", DisplayHigh),
    Named("DisplayUnit", DisplayUnit),
    Named("Xzoom", Xzoom),
    Named("Yzoom", Yzoom),
    Named("Xpan", Xpan),
    Named("Ypan", Ypan),
    Named("Xoffset", Xoffset),
    Named("Yoffset", Yoffset),
    Named("ViewScaleGain", ViewScaleGain),
    Named("ViewScaleOffset", ViewScaleOffset),
    Named("DisplayLut", DisplayLut),
    Named("ColorMap", ColorMap),
};

}  // namespace

}  // namespace kelvo
