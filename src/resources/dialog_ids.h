// Control numbers of the dialogs that came after the classic ones: ABOUT, ACCOUNT, BENCH, FILEBENCH, FRAMES, GOTOFRAME,
// PLAYBAR and RECORDED.
#pragma once

namespace kelvo {

constexpr int kAboutVersion = 1001;     // "Version 2.20"
constexpr int kAboutTotal = 1002;       // "Total = %lu kB"
constexpr int kAboutContiguous = 1003;  // "Contiguous = %lu kB"
constexpr int kAboutResources = 1004;   // "Free System Resources = %d%%"
constexpr int kAboutClock = 1005;
constexpr int kAboutProgram = 1006;  // "Kelvo 1.2.3, with Qt 6.4.2"
constexpr int kAboutData = 1007;     // "Data directory: %s"

// Pixels and frame numbers, both ends included.
constexpr int kFramesLeft = 1001;
constexpr int kFramesTop = 1002;
constexpr int kFramesRight = 1003;
constexpr int kFramesBottom = 1004;
constexpr int kFramesFirst = 1005;
constexpr int kFramesLast = 1006;

// The play bar. The windows in the picture's lower corners leave it that many logical pixels above the status line.
constexpr int kPlayBarRoom = 40;
constexpr int kPlayButton = 20200;
constexpr int kPlayPosition = 20201;
constexpr int kPlayFrame = 20202;  // "frame 19 of 75"
constexpr int kPlaySpeed = 20203;
constexpr int kPlayBackwards = 20204;
constexpr int kPlayLoop = 20205;
constexpr int kPlayGaps = 21100;   // "2 gaps...", of a recorded sequence alone
constexpr int kPlayTicks = 21107;  // below the slider: where gaps and marks are

constexpr int kGoToFrameNumber = 1001;
constexpr int kGoToFrameRange = 1002;  // "0 to 119"

constexpr int kRecordedSummary = 21101;  // "312 frames, 2 gaps, 11 frames lost"
constexpr int kRecordedEnd = 21102;      // "It was stopped by the operator."
constexpr int kRecordedGaps = 21103;     // a line each
constexpr int kRecordedMarks = 21104;    // a line each
constexpr int kRecordedTexts = 21105;    // what the journal's head says
constexpr int kRecordedShow = 21106;     // brings the frame of the line that is chosen on view

// The radio buttons stand in the order of SimSource.
constexpr int kBenchLow = 1001;
constexpr int kBenchHigh = 1002;
constexpr int kBenchScene = 1003;
constexpr int kBenchRaw = 1004;
constexpr int kBenchLowDegrees = 1011;  // whole degrees Celsius
constexpr int kBenchHighDegrees = 1012;
constexpr int kBenchLoad = 1013;
constexpr int kBenchFile = 1014;     // the recording's name
constexpr int kBenchColumns = 1015;  // 0: as the file's name tells
constexpr int kBenchRows = 1016;
constexpr int kBenchVolts = 20901;
constexpr int kBenchInputVolts = 20902;  // volts, three decimals
constexpr int kBenchRate = 1021;
constexpr int kBenchIntegration = 1022;
constexpr int kBenchClocks = 1023;
constexpr int kBenchTrigger = 20800;        // one pulse
constexpr int kBenchTriggerPeriod = 20801;  // ms; 0: none
constexpr int kBenchTriggersTaken = 20802;
constexpr int kBenchSync = 20803;  // "high; pulses: 3"

// By source, in the order of FileSource: the button of the first one, the text and the button of its file behind it.
constexpr int kFileBenchSource = 1001;
constexpr int kFileBenchFile = 1011;
constexpr int kFileBenchLoad = 1021;
constexpr int kFileBenchSize = 1031;   // "320 x 256 at 50.00 Hz", of the recording in front
constexpr int kFileBenchFrame = 1032;  // "12 of 30"
constexpr int kFileBenchLost = 1033;   // frames
constexpr int kFileBenchAgain = 1034;

constexpr int kAccountDelivered = 1001;
constexpr int kAccountShown = 1002;
constexpr int kAccountLost = 1003;
constexpr int kAccountMissed = 1004;
constexpr int kAccountDeliveredRate = 1005;  // "100.0 Hz"
constexpr int kAccountShownRate = 1006;
constexpr int kAccountReset = 1007;
constexpr int kAccountUsed = 1008;

constexpr int kSupportList = 22701;
constexpr int kSupportText = 22702;
constexpr int kSupportSize = 22703;  // "9 files, 42 kB"

constexpr int kScriptState = 22501;  // "measure.lua: running"
constexpr int kScriptText = 22502;
constexpr int kScriptStop = 22503;
constexpr int kScriptSave = 22504;
constexpr int kScriptClose = 22505;  // not 2: Escape stops a script first

}  // namespace kelvo
