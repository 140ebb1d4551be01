// The help contexts: each is the number of a page, help/NUMBER.html. This is their one list; a context stands nowhere
// else as a number.
#pragma once

namespace kelvo {

constexpr int kHelpTurnOn = 41;
constexpr int kHelpHostRamCapture = 256;
constexpr int kHelpSaveImage = 257;
constexpr int kHelpLoadImage = 258;
constexpr int kHelpNameSequenceForSaving = 259;
constexpr int kHelpSaveSequence = 260;
constexpr int kHelpContinuousSave = 264;
constexpr int kHelpNameSequenceToLoad = 265;
constexpr int kHelpLoadNext = 266;
constexpr int kHelpLoadLast = 267;
constexpr int kHelpExit = 268;
constexpr int kHelpDisplaySetup = 288;
constexpr int kHelpVideoSetup = 289;
constexpr int kHelpImageSetup = 290;
constexpr int kHelpConfiguration = 291;
constexpr int kHelpNewCalibration = 320;
constexpr int kHelpUpdateCalibration = 321;
constexpr int kHelpSaveCalibration = 322;
constexpr int kHelpLoadCalibration = 323;
constexpr int kHelpViewStatistics = 324;
constexpr int kHelpFreeze = 352;
constexpr int kHelpReplaceBadPixels = 353;
constexpr int kHelpColorMaps = 354;
constexpr int kHelpImageCursor = 363;
constexpr int kHelpHistogram = 369;
constexpr int kHelpLinePlot = 370;
constexpr int kHelpImageMath = 372;
constexpr int kHelpSearch = 768;
constexpr int kHelpContents = 769;
constexpr int kHelpKeys = 770;
constexpr int kHelpTutorial = 771;
constexpr int kHelpOnHelp = 772;
constexpr int kHelpAbout = 773;
constexpr int kHelpHighSource = 1044;
constexpr int kHelpLowSource = 1045;
constexpr int kHelpOfDialogs = 1048;
constexpr int kHelpVoltageCalibration = 1056;
constexpr int kHelpLineAxis = 1058;
constexpr int kHelpHistogramSetup = 1060;

// Contexts of items that older menus had. Nothing in the menu leads there, but a command of that number still asks.
constexpr int kHelpOlder358 = 358;
constexpr int kHelpOlder361 = 361;
constexpr int kHelpOlder362 = 362;
constexpr int kHelpOlder375 = 375;
constexpr int kHelpOlder512 = 512;
constexpr int kHelpOlder513 = 513;

// What stands above the classic system.
constexpr int kHelpUnits = 2001;
constexpr int kHelpFileFormats = 2002;
constexpr int kHelpCommandLine = 2003;
constexpr int kHelpSaveBitmap = 2004;
constexpr int kHelpViewMenu = 2005;
constexpr int kHelpPanel = 2006;
constexpr int kHelpFrameAccount = 2007;
constexpr int kHelpColorScale = 2008;
constexpr int kHelpSaturation = 2009;
constexpr int kHelpBench = 2010;
constexpr int kHelpLiveVideo = 2011;
constexpr int kHelpAdvancedVideo = 2012;
constexpr int kHelpExternalClock = 2013;
constexpr int kHelpCalibrationReport = 2014;
constexpr int kHelpTriggeredSave = 2022;
constexpr int kHelpRecorder = 2023;
constexpr int kHelpApplyCalibration = 2030;
constexpr int kHelpFrameGraph = 2040;
constexpr int kHelpDifference = 2220;
constexpr int kHelpNoise = 2230;
constexpr int kHelpTraces = 2240;
constexpr int kHelpPrint = 2180;
constexpr int kHelpExport = 2200;
constexpr int kHelpGlossary = 2080;
constexpr int kHelpCommunicationsLog = 2081;
constexpr int kHelpBoardFaults = 2082;
constexpr int kHelpUndo = 2050;
constexpr int kHelpPlaying = 2051;
constexpr int kHelpRecorded = 2060;
constexpr int kHelpSaveTiff = 2117;
constexpr int kHelpScripts = 2250;
constexpr int kHelpUserFunctions = 2118;
constexpr int kHelpRegions = 2210;
constexpr int kHelpCameras = 2260;
constexpr int kHelpSupport = 2270;

// No page stands for these: help shows the contents instead. They belong to older menus.
constexpr int kHelpWithoutPage[] = {
    kHelpOlder358, kHelpOlder361, kHelpOlder362, kHelpOlder375, kHelpOlder512, kHelpOlder513,
};

}  // namespace kelvo
