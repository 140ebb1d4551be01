// The string table of the status line: the numbers of its texts. This is their one list; a number of it stands nowhere
// else. The texts themselves are status.cpp's.
#pragma once

namespace kelvo {

inline constexpr int kStartHint = 0;
inline constexpr int kIdleHint =
    1;  // stands while nothing goes on; with a file on view it is replaced by its description
inline constexpr int kExitCameraOnHint = 2;
inline constexpr int kExitCameraOffHint = 3;
inline constexpr int kLowSourceHint = 4;
inline constexpr int kHighSourceHint = 5;
inline constexpr int kTurnOffHint = 6;
inline constexpr int kGoOnHint = 7;
inline constexpr int kSaveImageHint = 16;
inline constexpr int kNameSequenceHint = 17;
inline constexpr int kSaveAnyHint = 18;
inline constexpr int kSaveBufferHint = 19;
inline constexpr int kViewImageHint = 20;
inline constexpr int kViewSequenceHint = 21;
inline constexpr int kViewFileHint = 22;
inline constexpr int kViewBufferHint = 23;
inline constexpr int kLoadCalibrationHint = 24;
inline constexpr int kLoadBadDetectorsHint = 25;
inline constexpr int kGainStatisticsHint = 26;
inline constexpr int kOffsetStatisticsHint = 27;
inline constexpr int kLoadBufferHint = 28;
inline constexpr int kStoreBufferHint = 29;
inline constexpr int kFillBufferHint = 30;
inline constexpr int kGraphBufferHint = 31;
inline constexpr int kGraphFileHint = 32;
inline constexpr int kContinuousSaveHint = 33;
inline constexpr int kHostRamHint = 103;
inline constexpr int kDisplaySetupHint = 120;
inline constexpr int kVideoSetupHint = 121;
inline constexpr int kImageSetupHint = 122;
inline constexpr int kConfigurationHint = 123;
inline constexpr int kCalibrationHint = 130;
inline constexpr int kTurnOnHint = 169;
inline constexpr int kAboutHint = 196;

}  // namespace kelvo
