// Section Display of kelvo.ini, and the pan of the active camera's section: how the picture is shown at start.
#pragma once

#include <string>

namespace kelvo {

// Key OpticsFile (empty): stored and not used further.
extern const std::string& OpticsFile;

// Reads into state/display_state.h: ImageColor (1230) and GrayScale (1238), both limited to their ids; GrayColorBar
// (1), forced to 1 by a TempScale (0) of 1; TempHisto (0); Contrast (16) and Brightness (580), kept as ResetContrast
// and ResetBrightness too; MirrorHoriz, MirrorVert and RotateCCW (0); Xpan and Ypan (0) from the active camera's
// section; with DualCamera, SubstBadPixels2 (1), MirrorHoriz2 and MirrorVert2 (0), which otherwise keep their values.
// Sets DisplayUnit to 0 and SubstBadPixels to 1. After ReadSetupKeys and ReadCameraConfig, which clears the pan.
void ReadDisplaySettings();
inline constexpr auto& ReadDisplayKeys = ReadDisplaySettings;

// As before ReadDisplayKeys.
void ResetDisplaySettings();

}  // namespace kelvo
