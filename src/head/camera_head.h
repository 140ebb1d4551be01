// The camera head's registers: frame rate, integration time, gain, offset, window, and the safe state. Frames of four
// bytes over the serial link: register, selector, two operands. identify_head.h finds the head, program_head.h programs
// it as a whole.
#pragma once

#include "head/comm_link.h"
#include "head/head_records.h"
#include "platform/types.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace kelvo {

extern const HeadTimingRecord& HeadTiming;
extern const FpaSerialWordRecord& FpaSerialWord;
std::size_t SlotInUse();  // IntegrationSlot as a place in IndexIntegrationTime, within it
// Variables that clients know by the keys' names stand in state/head_state.h (VideoGain, VideoOffset, FrameRate).

// The integration time in milliseconds at a frame rate (Hz, above 0) and index; -1 for an index beyond the table, 0
// until a head is known and its frame size is set. The head reports no time: this follows from its registers.
double IntegrationTimeMsec(float frameRate, std::int32_t index);
// The frame rate that follows from what the head was sent (Hz, 0: not known). FrameRate is that of the camera where it
// tells one (head/camera_report.h), otherwise this; the integration time in force follows.
void SetFrameRate(float rateHz);
// Works out IntegrationMsecInForce of state/head_state.h again. Whoever changes the timing, the serial word or
// IntegrationSetting calls it.
void UpdateIntegrationInForce();

// What sends a frame rate, a frame size, a window or an integration time asks the camera behind the board at once what
// became of it (AskCamera of head/camera_report.h).
std::int32_t LoadHeadTiming(HeadTimingRecord& record);
std::int32_t LoadFpaSerialWord(FpaSerialWordRecord record);
std::int32_t SetHeadWindow(std::int32_t colStart, std::int32_t rowStart, std::int32_t colEnd, std::int32_t rowEnd);
void SetFrameRateIndex(std::int32_t index);
// Hz at a clock index (MasterClockMinIndex + row of the frame rate list), not limited; 0 while the frame has no size.
float FrameRateAtClock(std::int32_t clockIndex);
void SetVideoOffset(std::int32_t value);  // counts of DAC 0, clamped to 0 to 255
void SetVideoGain(std::int32_t index);    // 1 to 14 by the table of codes; others pass through, clamped to 0 to 15
// The result of the write; on the HgCdTe head slot.
std::int32_t SetIntegrationIndex(std::int32_t index, std::int32_t slot);
// The counters of an index, clamped; 1, or 0 where a clamp was needed.
std::int32_t IntegrationFromIndex(std::int32_t index, std::int16_t& lines, std::int16_t& cols);
void FillIntegrationCombo(HWND dialog, std::int32_t frameRateIndex, std::int32_t integrationIndex);
// Puts the head in its safe state. Always goes through to its end; CameraOn is 0 after it (unless the link can't be
// opened).
void TurnCameraHeadOff();

// Nothing is known of a head, and nothing was sent.
void ResetCameraHead();

}  // namespace kelvo
