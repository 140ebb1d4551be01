#include "head/camera_head.h"

#include "head/camera_head_write.h"
#include "head/camera_report.h"
#include "head/head_frames.h"
#include "head/head_settings.h"
#include "head/head_transaction.h"
#include "head/integration_table.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "state/camera_config.h"
#include "state/frame_state_write.h"
#include "state/head_state_write.h"
#include "state/state_registry.h"
#include "state/windows.h"

#include <algorithm>
#include <string>

namespace kelvo {

namespace write {
RegisterVariables registers;
}

constinit const HeadTimingRecord& HeadTiming = write::registers.HeadTiming;
constinit const FpaSerialWordRecord& FpaSerialWord = write::registers.FpaSerialWord;

namespace {

const StateNames kStateNames{
    Named("IndexIntegrationTime", IndexIntegrationTime),
    Named("HeadTiming.HeadModel", HeadTiming.HeadModel),
    Named("HeadTiming.MasterClockMinIndex", HeadTiming.MasterClockMinIndex),
    Named("HeadTiming.MasterClockMaxIndex", HeadTiming.MasterClockMaxIndex),
    Named("HeadTiming.MasterClockIndex", HeadTiming.MasterClockIndex),
    Named("HeadTiming.MasterClockFrequency", HeadTiming.MasterClockFrequency),
    Named("HeadTiming.TimingRows", HeadTiming.TimingRows),
    Named("HeadTiming.TimingCols", HeadTiming.TimingCols),
    Named("HeadTiming.IntegrationLines", HeadTiming.IntegrationLines),
    Named("HeadTiming.IntegrationCols", HeadTiming.IntegrationCols),
    Named("HeadTiming.AdDelay", HeadTiming.AdDelay),
    Named("HeadTiming.LineStartDelay", HeadTiming.LineStartDelay),
    Named("HeadTiming.FrameStartDelay", HeadTiming.FrameStartDelay),
    Named("HeadTiming.SuperframeMode", HeadTiming.SuperframeMode),
    Named("HeadTiming.TimingTestMode", HeadTiming.TimingTestMode),
    Named("FpaSerialWord.DetBias", FpaSerialWord.DetBias),
    Named("FpaSerialWord.PedBias", FpaSerialWord.PedBias),
    Named("FpaSerialWord.ColGain", FpaSerialWord.ColGain),
    Named("FpaSerialWord.SerialBitsB", FpaSerialWord.SerialBitsB),
    Named("FpaSerialWord.FlipCols", FpaSerialWord.FlipCols),
    Named("FpaSerialWord.FlipRows", FpaSerialWord.FlipRows),
    Named("FpaSerialWord.FastFrame", FpaSerialWord.FastFrame),
    Named("FpaSerialWord.ColStart", FpaSerialWord.ColStart),
    Named("FpaSerialWord.ColEnd", FpaSerialWord.ColEnd),
    Named("FpaSerialWord.RowStart", FpaSerialWord.RowStart),
    Named("FpaSerialWord.RowEnd", FpaSerialWord.RowEnd),
};

constexpr int kIntegrationCombo = 626;

// What was sent last. Valid only while the camera is on: without it every comparison counts as a change.
HeadTimingRecord sentTiming;
FpaSerialWordRecord sentSerialWord;

// The order in which turn-off sets the DACs.
constexpr std::array<std::size_t, kDacCount> kTurnOffDacs = {0, 1, 2, 4, 3, 5, 6, 7};
constexpr std::int32_t kMidScale = 128;

bool OpenLinkOrTell()
{
    if (LinkIsReady()) return true;
    MessageBox(hWndMain, "Comm2 didnt initialize!", "Comm Error");
    return false;
}

bool ValidSlot(std::int32_t slot)
{
    return slot >= 0 && slot < static_cast<std::int32_t>(kIntegrationSlots);
}

// Hz, of the head's crystal divided as whole numbers.
std::int32_t PixelClock(const HeadTimingRecord& timing, std::int32_t clockIndex)
{
    const std::int64_t divider = std::int64_t{2} * clockIndex + 2;
    if (divider == 0) return 0;
    const auto clock = static_cast<std::int32_t>(timing.MasterClockFrequency / divider);
    return timing.HeadModel == kHgCdTeHead ? clock / 4 : clock;
}

// Frames a second at a clock index; 0 while the frame has no size.
float FrameRateAt(const HeadTimingRecord& timing, std::int32_t clockIndex)
{
    const std::int32_t pixels = timing.TimingCols * timing.TimingRows;
    if (pixels == 0) return 0;
    return static_cast<float>(static_cast<double>(PixelClock(timing, clockIndex)) / pixels);
}

std::uint8_t LimitedClockIndex(std::int32_t index)
{
    const std::int64_t clockIndex = std::int64_t{index} + HeadTiming.MasterClockMinIndex;
    return clockIndex < HeadTiming.MasterClockMaxIndex ? static_cast<std::uint8_t>(clockIndex)
                                                       : HeadTiming.MasterClockMaxIndex;
}

bool DelaysAreSent(const HeadTimingRecord& record)
{
    return record.FrameStartDelay == sentTiming.FrameStartDelay && record.LineStartDelay == sentTiming.LineStartDelay &&
           record.AdDelay == sentTiming.AdDelay && CameraOn == 1;
}

bool SendFrameSize(const HeadTimingRecord& record)
{
    const bool sent = record.TimingRows == sentTiming.TimingRows && record.TimingCols == sentTiming.TimingCols;
    return (sent && CameraOn) || SendFrame(FrameSizeFrame(record));
}

bool SendIntegration(const HeadTimingRecord& record)
{
    const bool sent = record.IntegrationCols[0] == sentTiming.IntegrationCols[0] &&
                      record.IntegrationLines[0] == sentTiming.IntegrationLines[0];
    return (sent && CameraOn) || SendFrame(IntegrationFrame(record, 0));
}

// A changed AdDelay sends the frame too, which doesn't carry it on this head.
bool SendStartDelays(const HeadTimingRecord& record)
{
    return DelaysAreSent(record) || SendFrame(StartDelayFrame(record));
}

// Plain values against the encoded ones that were kept: an unchanged word is usually sent again, which does no harm.
bool BiasesAreSent(const FpaSerialWordRecord& plain)
{
    const FpaSerialWordRecord& sent = sentSerialWord;
    return plain.SerialBitA == sent.SerialBitA && plain.DetBias == sent.DetBias && plain.PedBias == sent.PedBias &&
           plain.ColGain == sent.ColGain && plain.SerialBitsB == sent.SerialBitsB && plain.FlipCols == sent.FlipCols &&
           plain.FlipRows == sent.FlipRows && plain.FastFrame == sent.FastFrame && CameraOn == 1;
}

// PedBias is looked at here as well, though no column field depends on it.
bool ColumnsAreSent(const FpaSerialWordRecord& plain)
{
    return plain.ColStart == sentSerialWord.ColStart && plain.ColEnd == sentSerialWord.ColEnd &&
           plain.PedBias == sentSerialWord.PedBias && CameraOn == 1;
}

// As many decimals as the operator can tell apart; from a second on whole milliseconds.
std::string IntegrationText(double milliseconds)
{
    if (milliseconds < 0.1) return Format("%.5f", milliseconds);
    if (milliseconds < 1) return Format("%.4f", milliseconds);
    if (milliseconds < 10) return Format("%.3f", milliseconds);
    if (milliseconds < 100) return Format("%.2f", milliseconds);
    if (milliseconds < 1000) return Format("%.1f", milliseconds);
    return Format("%d", static_cast<std::int32_t>(std::min(milliseconds, 2147483647.0)));
}

void ListTimesOfTable(HWND dialog, float frameRate)
{
    ListClear(dialog, kIntegrationCombo);
    const std::int32_t most = HeadTiming.TimingRows * HeadTiming.TimingCols / 4;
    for (std::int32_t i = 0; i < most; ++i) {
        const double milliseconds = IntegrationTimeMsec(frameRate, i);
        if (milliseconds <= 0) return;
        ListAdd(dialog, kIntegrationCombo, IntegrationText(milliseconds));
    }
}

}  // namespace

std::size_t SlotInUse()
{
    return static_cast<std::size_t>(std::clamp(IntegrationSlot, 0, static_cast<std::int32_t>(kIntegrationSlots) - 1));
}

double IntegrationTimeMsec(float frameRate, std::int32_t setting)
{
    if (HeadTiming.HeadModel == kHgCdTeHead) {
        if (setting != 0) return -1;
        return frameRate > 0 ? 1000.0 / (static_cast<double>(frameRate) * 32.0) : 0;
    }
    if (HeadTiming.HeadModel == 0) return 0;
    const IntegrationCounters counters = LookUpIntegration(setting, FpaSerialWord, HeadTiming);
    return counters.inTable ? IntegrationMsec(counters, HeadTiming, frameRate) : -1;
}

void UpdateIntegrationInForce()
{
    const float rateHz = ReckonedRate();
    TakeReckonedIntegration(rateHz > 0 ? IntegrationTimeMsec(rateHz, IntegrationSetting) : 0);
}

void SetFrameRate(float rateHz)
{
    TakeReckonedRate(rateHz);
    UpdateIntegrationInForce();
}

std::int32_t IntegrationFromIndex(std::int32_t index, std::int16_t& lines, std::int16_t& cols)
{
    if (HeadTiming.HeadModel == kHgCdTeHead) {
        if (ValidSlot(IntegrationSlot))
            write::head.IndexIntegrationTime.at(static_cast<std::size_t>(IntegrationSlot)) = 0;
        return 1;
    }
    const IntegrationCounters counters = LookUpIntegration(index, FpaSerialWord, HeadTiming);
    lines = counters.lines;
    cols = counters.cols;
    return counters.inTable ? 1 : 0;
}

std::int32_t LoadHeadTiming(HeadTimingRecord& record)
{
    if (record.MasterClockIndex != sentTiming.MasterClockIndex || !CameraOn) {
        SetFrameRateIndex(record.MasterClockIndex - record.MasterClockMinIndex);
    }
    if (record.HeadModel == kHgCdTeHead) return 1;  // its clock frame carried all; nothing is kept of it
    const bool sent = SendFrameSize(record) && SendIntegration(record) && SendStartDelays(record);
    AskCamera();
    if (sent) sentTiming = record;
    return sent ? 1 : 0;
}

std::int32_t LoadFpaSerialWord(FpaSerialWordRecord record)
{
    const FpaSerialWordRecord encoded = EncodedSerialWord(record);
    if (!BiasesAreSent(record) && !SendFrame(SerialBiasFrame(encoded))) return 0;
    if (!ColumnsAreSent(record) && !SendFrame(SerialColumnFrame(encoded))) return 0;
    const bool sent = SendFrame(SerialRowFrame(encoded));
    AskCamera();
    if (sent) sentSerialWord = encoded;
    return sent ? 1 : 0;
}

std::int32_t SetHeadWindow(std::int32_t colStart, std::int32_t rowStart, std::int32_t colEnd, std::int32_t rowEnd)
{
    const std::int64_t blankCols = std::int64_t{ActiveConfig.Htotal} - ActiveConfig.Hactive;
    const std::int64_t blankRows = std::int64_t{ActiveConfig.Vtotal} - ActiveConfig.Vactive;
    write::registers.HeadTiming.TimingCols = static_cast<std::int16_t>(std::int64_t{colEnd} + 1 + blankCols - colStart);
    write::registers.HeadTiming.TimingRows = static_cast<std::int16_t>(std::int64_t{rowEnd} + 1 + blankRows - rowStart);
    const std::int32_t timingLoaded = LoadHeadTiming(write::registers.HeadTiming);
    write::registers.FpaSerialWord.ColStart = colStart;
    write::registers.FpaSerialWord.ColEnd = colEnd;
    write::registers.FpaSerialWord.RowStart = rowStart;
    write::registers.FpaSerialWord.RowEnd = rowEnd;
    UpdateIntegrationInForce();
    return LoadFpaSerialWord(FpaSerialWord) && timingLoaded ? 1 : 0;
}

float FrameRateAtClock(std::int32_t clockIndex)
{
    return FrameRateAt(HeadTiming, clockIndex);
}

void SetFrameRateIndex(std::int32_t index)
{
    write::registers.HeadTiming.MasterClockIndex = LimitedClockIndex(index);
    SetFrameRate(FrameRateAt(HeadTiming, HeadTiming.MasterClockIndex));
    WritePrivateProfileString(ActiveCameraSection(), "fFrameRate", Format("%f", static_cast<double>(ReckonedRate())),
                              CameraFilePath);
    write::head.IndexFrameRate = index;
    WriteHeadKey("IndexFrameRate", index);  // what was asked for, not what the clock could do
    if (!OpenLinkOrTell()) return;
    if (HeadTiming.HeadModel == kInSbHead || HeadTiming.HeadModel == kHgCdTeHead) SendFrame(ClockFrame(HeadTiming));
    AskCamera();
}

void SetVideoOffset(std::int32_t value)
{
    if (!OpenLinkOrTell()) return;
    const std::int32_t counts = std::clamp(value, 0, 255);
    SendFrame({static_cast<std::uint8_t>(DacRegister()), 1, static_cast<std::uint8_t>(counts), 0});
    WriteHeadKey("QVF1058_DAC0", counts);
}

void SetVideoGain(std::int32_t index)
{
    if (!OpenLinkOrTell()) return;
    WriteHeadKey("QVF1058_Gain0", index);
    SendFrame(GainFrame(GainRegister(), index));
}

std::int32_t SetIntegrationIndex(std::int32_t index, std::int32_t slot)
{
    if (!ValidSlot(slot)) return 0;
    const auto place = static_cast<std::size_t>(slot);
    if (HeadTiming.HeadModel == kHgCdTeHead) {
        write::head.IndexIntegrationTime.at(place) = 0;
        write::head.IntegrationSetting = 0;
        UpdateIntegrationInForce();
        return slot;
    }
    if (slot == IntegrationSlot) write::head.IntegrationSetting = index;
    UpdateIntegrationInForce();
    // Beyond the table the shortest or longest counters are sent.
    IntegrationFromIndex(index, write::registers.HeadTiming.IntegrationLines.at(place),
                         write::registers.HeadTiming.IntegrationCols.at(place));
    const bool sent = SendFrame(IntegrationFrame(HeadTiming, place));
    AskCamera();
    return sent ? 1 : 0;
}

void FillIntegrationCombo(HWND dialog, std::int32_t frameRateIndex, std::int32_t integrationIndex)
{
    const auto clockIndex = static_cast<std::int32_t>(std::int64_t{frameRateIndex} + HeadTiming.MasterClockMinIndex);
    ListTimesOfTable(dialog, FrameRateAt(HeadTiming, clockIndex));
    ListSelect(dialog, kIntegrationCombo, std::min(integrationIndex, ListCount(dialog, kIntegrationCombo) - 1));
    SetIntegrationIndex(integrationIndex, IntegrationSlot);
    if (HeadTiming.HeadModel == kHgCdTeHead) EnableDlgItem(dialog, kIntegrationCombo, false);
}

void TurnCameraHeadOff()
{
    if (!LinkIsReady()) return;
    if (HeadTiming.HeadModel == kInSbHead) SendFrame(kClocksOffFrame);
    SendFrame(BiasEnableFrame(BiasEnableRegister(), false));
    const std::int32_t dacReg = DacRegister();
    for (const std::size_t dac : kTurnOffDacs) SendFrame(DacFrame(dacReg, dac, kMidScale));
    write::frames.CameraOn = 0;
}

void ResetCameraHead()
{
    write::registers.HeadTiming = {};
    write::registers.FpaSerialWord = {};
    write::head.IndexIntegrationTime = {};
    write::head.IntegrationSlot = 0;
    sentTiming = {};
    sentSerialWord = {};
}

}  // namespace kelvo
