// Control numbers of the window RECORDER.
#pragma once

namespace kelvo {

constexpr int kRecLamp = 21000;  // RecorderStateText
constexpr int kRecStart = 21001;
constexpr int kRecStop = 21002;
constexpr int kRecTrigger = 21003;
constexpr int kRecMark = 21004;
constexpr int kRecMessage = 21005;  // why it didn't start, or the verdict

// Now.
constexpr int kRecFrames = 21010;
constexpr int kRecLost = 21011;
constexpr int kRecTime = 21012;
constexpr int kRecEvent = 21013;
constexpr int kRecMarks = 21014;
constexpr int kRecRing = 21015;
constexpr int kRecLeft = 21016;
constexpr int kRecFile = 21017;

// The files.
constexpr int kRecDirectory = 21020;
constexpr int kRecBrowse = 21021;
constexpr int kRecName = 21022;
constexpr int kRecNameExample = 21023;
constexpr int kRecSample = 21024;
constexpr int kRecComment = 21025;
constexpr int kRecPixels = 21026;  // in the order of RecordPixels
constexpr int kRecSplitGigabytes = 21027;
constexpr int kRecSplitMinutes = 21028;
constexpr int kRecSync = 21029;  // s

// How long.
constexpr int kRecLength = 21030;
constexpr int kRecLengthUnit = 21031;  // in the order of RecordLength
constexpr int kRecInterval = 21032;    // s
constexpr int kRecStartTime = 21033;

// The trigger.
constexpr int kRecTriggerKind = 21040;  // in the order of RecordTrigger
constexpr int kRecPre = 21041;
constexpr int kRecPreUnit = 21042;  // seconds, frames
constexpr int kRecEvents = 21043;
constexpr int kRecLeftColumn = 21044;
constexpr int kRecTopRow = 21045;
constexpr int kRecRightColumn = 21046;
constexpr int kRecBottomRow = 21047;
constexpr int kRecMeanLow = 21048;
constexpr int kRecMeanHigh = 21049;
constexpr int kRecMeanNow = 21050;
constexpr int kRecRegion = 21051;      // the names of the view's regions
constexpr int kRecRegionPass = 21052;  // in the order of RegionPass
constexpr int kRecRegionLevel = 21053;

// Before.
constexpr int kRecRingSize = 21060;  // MB; 0: by the memory that is available
constexpr int kRecRingHolds = 21061;
constexpr int kRecWriteRate = 21062;
constexpr int kRecMeasure = 21063;
constexpr int kRecNeeded = 21064;
constexpr int kRecRoom = 21065;
constexpr int kRecWarning = 21066;  // why it won't do; empty: it will

}  // namespace kelvo
