// Numbers of the commands, as menu, accelerators, panel and scripts name them; command_list.h tells the rest of each.
// From 2000 on: what stands above the classic system.
#pragma once

namespace kelvo {

constexpr int kCmdHostRamCapture = 103;
constexpr int kCmdSaveImage = 106;
constexpr int kCmdLoadImage = 107;
constexpr int kCmdNameSequenceForSaving = 108;
constexpr int kCmdSaveSequence = 109;
constexpr int kCmdContinuousSave = 110;
constexpr int kCmdTriggeredSave = 112;
constexpr int kCmdNameSequenceToLoad = 113;
constexpr int kCmdLoadNext = 114;
constexpr int kCmdLoadLast = 115;
constexpr int kCmdSaveBitmap = 116;
constexpr int kCmdPrintBitmap = 117;
constexpr int kCmdPrinterSetup = 118;
constexpr int kCmdExit = 119;
constexpr int kCmdDisplaySetup = 120;
constexpr int kCmdVideoSetup = 121;
constexpr int kCmdImageSetup = 122;
constexpr int kCmdConfiguration = 123;
constexpr int kCmdDialogHelp = 124;  // Shift+F10 or the middle button in a dialog
constexpr int kCmdSaveTiff8 = 125;
constexpr int kCmdSaveTiff16 = 126;
constexpr int kCmdNewCalibration = 130;
constexpr int kCmdUpdateCalibration = 131;
constexpr int kCmdSaveCalibration = 132;
constexpr int kCmdLoadCalibration = 133;
constexpr int kCmdApplyCalibration = 134;
constexpr int kCmdViewStatistics = 135;
constexpr int kCmdFreeze = 140;
constexpr int kCmdReplaceBadPixels = 141;
constexpr int kCmdNormalGray = 143;
constexpr int kCmdInvertedGray = 144;
constexpr int kCmdNormalColor = 145;
constexpr int kCmdImageCursor = 151;
constexpr int kCmdTrackball = 155;
constexpr int kCmdNextColorMap = 156;
constexpr int kCmdHistogram = 160;
constexpr int kCmdLinePlot = 161;
constexpr int kCmdImageMath = 162;
constexpr int kCmdTurnOn = 169;
constexpr int kCmdHelpContents = 190;
constexpr int kCmdHelpSearch = 191;
constexpr int kCmdHelpKeys = 192;
constexpr int kCmdHelpOnHelp = 193;
constexpr int kCmdDesktopTutorial = 194;
constexpr int kCmdKelvoTutorial = 195;
constexpr int kCmdAbout = 196;
// How the picture moves (video/zoom_pan.h).
constexpr int kCmdZoomIn = 200;
constexpr int kCmdZoomOut = 201;
constexpr int kCmdPanRight = 202;
constexpr int kCmdPanLeft = 203;
constexpr int kCmdPanUp = 204;
constexpr int kCmdPanDown = 205;
constexpr int kCmdPanPageRight = 206;
constexpr int kCmdPanPageLeft = 207;
constexpr int kCmdPanPageUp = 208;
constexpr int kCmdPanPageDown = 209;
constexpr int kCmdOffsetRight = 210;
constexpr int kCmdOffsetLeft = 211;
constexpr int kCmdOffsetUp = 212;
constexpr int kCmdOffsetDown = 213;
constexpr int kCmdOffsetPageRight = 214;
constexpr int kCmdOffsetPageLeft = 215;
constexpr int kCmdOffsetPageUp = 216;
constexpr int kCmdOffsetPageDown = 217;
constexpr int kCmdZoomPanFirst = kCmdZoomIn;
constexpr int kCmdZoomPanLast = kCmdOffsetPageDown;

constexpr int kCmdNoUserFunction = 180;  // holds the place of user-written functions in their menu
constexpr int kCmdUserFirst = 900;
constexpr int kCmdUserLast = 999;

constexpr int kCmdViewGoToFrame = 2000;
constexpr int kCmdViewPlay = 2001;
constexpr int kCmdViewStop = 2002;
constexpr int kCmdViewCopyPicture = 2003;
constexpr int kCmdViewFitContrast = 2004;
constexpr int kCmdViewFrameAccount = 2006;
constexpr int kCmdViewColorScale = 2007;
constexpr int kCmdViewSaturation = 2008;
constexpr int kCmdBench = 2009;
constexpr int kCmdViewFit = 2040;
constexpr int kCmdViewOneToOne = 2041;
constexpr int kCmdViewCentre = 2042;
constexpr int kCmdViewKeepFitted = 2043;
constexpr int kCmdThemeDesktop = 2044;
constexpr int kCmdThemeLight = 2045;
constexpr int kCmdThemeDark = 2046;
constexpr int kCmdUndo = 2050;
constexpr int kCmdRedo = 2051;
constexpr int kCmdViewPlayOrStop = 2052;
constexpr int kCmdViewBackwards = 2053;
constexpr int kCmdViewLoop = 2054;
constexpr int kCmdViewFaster = 2055;
constexpr int kCmdViewSlower = 2056;
constexpr int kCmdViewGaps = 2057;
constexpr int kCmdCalibrationReport = 2070;
constexpr int kCmdVoltageCalibration = 2071;
constexpr int kCmdRecorder = 2060;
constexpr int kCmdRecorderTrigger = 2061;
constexpr int kCmdRecorderMark = 2062;
constexpr int kCmdScriptWindow = 2251;
constexpr int kCmdScriptStop = 2252;
constexpr int kCmdScriptRecord = 2253;
constexpr int kCmdScriptFirst = 2300;  // to 2363; 2364 tells of more
constexpr int kScriptCount = 64;
constexpr int kCmdCameras = 2260;
constexpr int kCmdDifference = 2220;
constexpr int kCmdNoise = 2230;
constexpr int kCmdExport = 2200;
constexpr int kCmdViewRegions = 2210;
constexpr int kCmdRegionRemove = 2211;
constexpr int kCmdRegionWider = 2212;
constexpr int kCmdRegionNarrower = 2213;
constexpr int kCmdTraces = 2240;
constexpr int kCmdSupportFiles = 2270;
constexpr int kCmdRecentFirst = 2100;  // to 2109
constexpr int kRecentFileCount = 10;

// Controls of the panel and the display dialog that other modules write.
constexpr int kPanelDisplayBox = 1013;
constexpr int kPanelZoomBar = 310;
constexpr int kPanelZoomText = 311;
constexpr int kPanelPanText = 313;
constexpr int kPanelBrightnessText = 316;
constexpr int kPanelContrastText = 317;
constexpr int kPanelRecorder = 21090;
constexpr int kUnitList = 1256;

// Colour maps and gray scales, as settings store them.
constexpr int kNormalGray = 1230;
constexpr int kInvertedGray = 1231;
constexpr int kNormalColor = 1232;
constexpr int kLinearScale = 1238;
constexpr int kLogScale = 1239;

}  // namespace kelvo
