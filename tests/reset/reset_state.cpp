#include "reset/reset_state.h"

#include "resources/ids.h"
#include "state/buffer_state.h"
#include "state/cal_settings.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/head_state.h"
#include "state/windows.h"

namespace kelvo {

void ResetState()
{
    // buffer_state
    HostFrameBytes = 0;
    AveragingCapacity = 0;
    FramesInBuffer = 0;
    BufferFirstFrame = 0;
    BufferLastFrame = 0;
    BufferRectTop = 0;
    BufferRectLeft = 0;
    BufferRectBottom = 0;
    BufferRectRight = 0;
    PeriodicUpdates = 1;
    // cal_settings
    CalSettings = {};
    CalSettings2 = {};
    ReplaceNoisy = 1;
    CalDone = 0;
    BadDetCount = 0;
    // cal_state
    CalType = 0;
    DecomList = {};
    OffsetList = {};
    GainList = {};
    IntensityCold = 0;
    IntensityHot = 0;
    TemperatureCold = -999.0F;
    TemperatureHot = -999.0F;
    CalibrationListsVersion = 0;
    // camera_config
    ActiveConfig = {};
    ActiveCamera = 0;
    nCommPort = 0;
    numBufFrames = 0;
    VoltsOffset = 0;
    ADoffset = 0;
    VoltsPerCountVsGain = {};
    IndexFrameRate = 0;
    // display_state
    Contrast = 16;
    Brightness = 580;
    ResetContrast = 16;
    ResetBrightness = 580;
    ImageColor = kNormalGray;
    GrayScale = kLinearScale;
    GrayColorBar = 1;
    TempScale = 0;
    TempHisto = 0;
    ColorBarShown = 0;
    MirrorHoriz = 0;
    MirrorVert = 0;
    RotateCCW = 0;
    SubstBadPixels = 1;
    SubstBadPixels2 = 1;
    MirrorHoriz2 = 0;
    MirrorVert2 = 0;
    DisplayLow = 0;
    DisplayHigh = 0;
    DisplayUnit = 0;
    Xpan = 0;
    Ypan = 0;
    DisplayLut = {};
    ColorMap = {};
    ViewScaleGain = 1.0F;
    ViewScaleOffset = 0.0F;
    // frame_state
    CameraOn = 0;
    LiveVideo = 0;
    ViewingFile = 0;
    DisplayEnabled = 1;
    GrabberPresent = 0;
    RawFrame = {};
    LiveFrame = {};
    ImageBuffer = {};
    SteppingFrames = 0;
    LoadName = {};
    CurrentFrame = 0;
    LastFrame = 0;
    CursorX = 0;
    CursorY = 0;
    CursorValue = 0;
    ImageCursorOn = 0;
    // head_state
    FirstSetupPending = 0;
    FrameRate = 0;
    VideoGain = {};
    VideoOffset = {};
    VoltsLow = 0;
    VoltsHigh = 0;
    IntegrationSetting = 0;
    IntegrationMsecInForce = 0;
    // windows
    hWndMain = nullptr;
    hWndStatus = nullptr;
    hDlgPanel = nullptr;
    ClientWidth = 0;
    ClientHeight = 0;
    TextHeight = 0;
    ViewWidth = 0;
    ViewHeight = 0;
    DefaultDir = {};
    IniFilePath = {};
    CameraFilePath = {};
    BuffBrdFilePath = {};
    SeqFilePath = {};
    HelpFilePath = {};
    FilePathBuf = {};
    ViewFilePath = {};
    CnfFilePath = {};
    HelpMode = 0;
}

}  // namespace kelvo
