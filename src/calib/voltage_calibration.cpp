#include "calib/voltage_calibration.h"

#include "acquire/averaging.h"
#include "display/unit_list.h"
#include "grabber/frame_size.h"
#include "head/camera_head.h"
#include "head/head_transaction.h"
#include "head/video_settings.h"
#include "pixel/unity_coefficients.h"
#include "platform/box.h"
#include "platform/clock.h"
#include "platform/interrupt.h"
#include "platform/memory.h"
#include "platform/pointer.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "platform/window.h"
#include "resources/help_contexts.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/frame_state.h"
#include "state/head_state_write.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/status.h"
#include "video/video.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

namespace {

using Signals = std::array<float, kGainSteps>;

constexpr std::int32_t kNeutralOffset = 128;
constexpr std::int32_t kOffsetSteps = 15;
constexpr std::size_t kOffsetGain = 2;  // at which the offset's steps are measured
constexpr std::int64_t kSettleMs = 500;
constexpr float kMostVolts = 0.51F;  // a little more than the operator is told
constexpr std::size_t kVoltageCharacters = 19;
constexpr const char* kCaption = "Oscilloscope Voltage Calibration";
constexpr const char* kWaitsForVoltage = " Apply DC voltage to input channels; Enter voltage value; Press OK";

// Between the two phases of the dialog.
Signals ZeroSignal{};
bool measured = false;  // in this run

// --- One signal -----------------------------------------------------------------------------------------------------

// False where the head missed it, which is told.
bool SetAllChannels(std::int32_t offset, std::int32_t gain)
{
    const HeadHearing hearing;
    write::head.VideoGain.fill(gain);
    write::head.VideoOffset.fill(offset);
    SetVideoGain(gain);
    SetVideoOffset(offset);
    hearing.TellIfUnheard(hWndMain, "Gain and offset may not be those that were to be measured.");
    return !hearing.MissedSomething();
}

struct Rectangle {
    std::int32_t columns = 0;
    std::int32_t rows = 0;
    std::uint32_t mode = 0;
};

// The whole active frame of the board.
Rectangle MeasuredRectangle()
{
    if (GrabberPresent)
        return {ActiveConfig.Hactive, ActiveConfig.Vactive, kAverage16 | kTakeNewFrames | kNewFramesOnly};
    return {ActiveConfig.Hroi, ActiveConfig.Vroi, kAverage16 | kWithoutBoard | kPlainFrame};
}

float FailWithoutFrame()
{
    MessageBeep(Sound::kExclamation);
    MessageBox(hWndMain, "Video Data Acquisition Failed, Hardware error", "GetCalVoltSignal() Error");
    return kNoCalVoltSignal;
}

// Of the samples that the camera's frame has; the active frame may be larger.
float MeanOf(std::span<const std::int16_t> samples)
{
    const double sum = std::accumulate(samples.begin(), samples.end(), 0.0);
    return static_cast<float>(sum / static_cast<double>(samples.size()));
}

// --- A run over all gains -------------------------------------------------------------------------------------------

enum class Measured { kAll, kStopped, kFailed };

// tell shows the step; take keeps a gain's signal and says whether it will do.
template <typename Tell, typename Take>
Measured MeasureGains(Tell tell, Take take)
{
    for (std::size_t gain = 0; gain < kGainSteps; ++gain) {
        if (EscapeCame()) return Measured::kStopped;
        const auto index = static_cast<std::int32_t>(gain);
        StatusMessage(tell(index), kLeftAligned);
        const float signal = GetCalVoltSignal(kNeutralOffset, index);
        if (signal == kNoCalVoltSignal || !take(gain, signal)) return Measured::kFailed;
    }
    return Measured::kAll;
}

void TellError(HWND owner, std::string_view text)
{
    MessageBeep(Sound::kExclamation);
    MessageBox(owner, text, "ERROR!");
}

// --- 0 V ------------------------------------------------------------------------------------------------------------

bool MeasureZero()
{
    StatusMessage(" Measuring signal at zero volts DC", kLeftAligned);
    const Measured result =
        MeasureGains([](std::int32_t gain) { return Format(" Measuring signal at 0 VDC and Gain=%d", gain); },
                     [](std::size_t gain, float signal) {
                         ZeroSignal[gain] = signal;
                         return true;
                     });
    if (result == Measured::kFailed) TellError(hWndMain, "Unable to get signal - try again.");
    return result == Measured::kAll;
}

void WaitForVoltage(HWND dialog)
{
    StatusMessage(kWaitsForVoltage, kLeftAligned);
    FocusDlgItem(dialog, kInputVoltage);
}

void Open(HWND dialog)
{
    StatusMessage(" Set input voltage on all channels to zero volts DC", kLeftAligned);
    const Button answer = MessageBox(hWndMain, "Set all channel inputs to 0 volts DC.\n\n     Press OK.", kCaption,
                                     BoxIcon::kInformation, BoxButtons::kOkCancel);
    if (answer != Button::kOk || !MeasureZero()) {
        CancelDialog(dialog);
        return;
    }
    CentreDialog(dialog);
    WaitForVoltage(dialog);
}

// --- A voltage ------------------------------------------------------------------------------------------------------

struct Results {
    float voltsPerOffset = 0;
    Signals voltsPerCount{};
};

std::optional<float> ReadVoltage(HWND dialog)
{
    const std::optional<float> volts = ScanFloat(GetDlgItemText(dialog, kInputVoltage).substr(0, kVoltageCharacters));
    if (volts && *volts >= -kMostVolts && *volts <= kMostVolts) return volts;
    MessageBeep(Sound::kExclamation);
    MessageBox(dialog, "DC voltage must be between -0.5 V and +0.5 V.", "Warning");
    FocusDlgItem(dialog, kInputVoltage);
    return std::nullopt;
}

bool MeasureVoltsPerCount(HWND dialog, float volts, Results& results)
{
    const Measured result = MeasureGains(
        [volts](std::int32_t gain) {
            return Format(" Measuring signal at %.3f VDC and Gain=%d", static_cast<double>(volts), gain);
        },
        [&](std::size_t gain, float signal) {
            const std::optional<float> perCount = VoltsPerCountOf(volts, signal, ZeroSignal[gain]);
            if (perCount) results.voltsPerCount[gain] = *perCount;
            return perCount.has_value();
        });
    if (result == Measured::kFailed) TellError(dialog, "Unable to get signal at gain & offset - try again.");
    return result == Measured::kAll;
}

// The first of the two signals isn't looked at: what it spoils is seen in the results.
bool MeasureVoltsPerOffset(HWND dialog, float volts, Results& results)
{
    constexpr auto kGain = static_cast<std::int32_t>(kOffsetGain);
    const std::int32_t delta = volts <= 0.0F ? -kOffsetSteps : kOffsetSteps;
    const float signal = GetCalVoltSignal(kNeutralOffset, kGain);
    const float shifted = GetCalVoltSignal(kNeutralOffset + delta, kGain);
    if (shifted == kNoCalVoltSignal) {
        TellError(dialog, "Unable to get signal at gain=2 & offset=128 \xB1 15 - try again.");
        return false;
    }
    results.voltsPerOffset = VoltsPerStepOf(signal, shifted, results.voltsPerCount[kOffsetGain], delta);
    return true;
}

// The last value is that of gain 0, whatever its label says: operators compare it with what they have noted.
bool OperatorTakes(HWND dialog, const Results& results)
{
    const std::string text =
        Format("ADoffset[2] = %f counts\nVolt/Offset = %f\nVolt/CountAtGain[2] = %f",
               static_cast<double>(ZeroSignal[kOffsetGain]), static_cast<double>(results.voltsPerOffset),
               static_cast<double>(results.voltsPerCount[0]));
    return MessageBox(dialog, text, "Voltage calibration results", BoxIcon::kQuestion, BoxButtons::kYesNo) ==
           Button::kYes;
}

// A key of its own names the section, not the camera that is active.
std::int32_t CameraOfTheKeys()
{
    return GetPrivateProfileInt("Setup", "CameraNum", 1, IniFilePath);
}

std::string WhereElseItIsKept()
{
    const std::int32_t camera = CameraOfTheKeys();
    if (camera == ActiveCamera) return {};
    return Format("; the voltages are kept in Camera.%d, as CameraNum says, not in Camera.%d", camera, ActiveCamera);
}

void TakeOver(const Results& results)
{
    write::camera.VoltsOffset = results.voltsPerOffset;
    write::camera.VoltsPerCountVsGain = results.voltsPerCount;
    write::camera.ADoffset = CountsAtZeroOf(ZeroSignal);
    SaveVoltageCalibration();
}

void Accept(HWND dialog)
{
    const std::optional<float> volts = ReadVoltage(dialog);
    if (!volts) return;
    Results results;
    if (MeasureVoltsPerCount(dialog, *volts, results) && MeasureVoltsPerOffset(dialog, *volts, results) &&
        OperatorTakes(dialog, results)) {
        TakeOver(results);
        EndDialog(dialog, 1);
        return;
    }
    WaitForVoltage(dialog);
}

constexpr DialogEntry kEntries[] = {{kIdOk, Accept}};
constexpr DialogFrame kFrame{.name = "CALVOLT",
                             .procedure = fnCALVOLTDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpVoltageCalibration};

// Gain and offset as they were before the run, in the settings and on the head.
class FormerLevels {
  public:
    FormerLevels() : gain_(VideoGain), offset_(VideoOffset) {}
    ~FormerLevels()
    {
        if (!measured) return;
        const HeadHearing hearing;
        write::head.VideoGain = gain_;
        write::head.VideoOffset = offset_;
        SetVideoGain(gain_[0]);
        SetVideoOffset(offset_[0]);
        CloseLinkAfterUse();
        SetVoltsRange(gain_[0], offset_[0]);
        hearing.TellIfUnheard(hWndMain, "Its gain and offset may not be those of before.");
    }
    FormerLevels(const FormerLevels&) = delete;
    FormerLevels& operator=(const FormerLevels&) = delete;

  private:
    std::array<std::int32_t, 4> gain_;
    std::array<std::int32_t, 4> offset_;
};

}  // namespace

float GetCalVoltSignal(std::int32_t offset, std::int32_t gain)
{
    const Hourglass hourglass;
    measured = true;
    if (!SetAllChannels(offset, gain)) return kNoCalVoltSignal;
    DelayMs(kSettleMs);
    const Rectangle frame = MeasuredRectangle();
    const std::int64_t values = RectangleValues(0, 0, frame.columns - 1, frame.rows - 1);
    std::vector<std::int16_t> samples;
    if (values < 1 || !AllocateBlock(samples, static_cast<std::size_t>(values))) {
        MessageBox(hWndMain, "Failure to allocate video memory!", kMessageCaption);
        ResetUnityGainOffset(ActiveConfig);
        return kNoCalVoltSignal;
    }
    write::cal.CalType = 0;
    RestartGrab();
    if (!AverageFrames(std::span(samples), {}, 1, 0, 0, frame.columns - 1, frame.rows - 1, frame.mode)) {
        return FailWithoutFrame();
    }
    const std::size_t there = std::min(samples.size(), CameraFrameValues());
    return there == 0 ? FailWithoutFrame() : MeanOf(std::span(samples).first(there));
}

std::int32_t RunVoltageCalibration(HWND window)
{
    const std::string statusBefore = StatusText;
    const int alignBefore = StatusAlign;
    measured = false;
    std::int32_t result = 0;
    {
        const FormerLevels levels;
        result = RunDialog(kFrame, window);
    }
    if (!measured) {
        StatusMessage(statusBefore, alignBefore);
        return result;
    }
    KeepUnitAvailable();
    StatusNote(" The camera is uncalibrated now: Calibration, Load previous... brings a calibration back" +
               (result == 1 ? WhereElseItIsKept() : std::string()));
    return result;
}

LRESULT fnCALVOLTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

void SaveVoltageCalibration()
{
    const std::string section = Format("Camera.%d", CameraOfTheKeys());
    const auto write = [&](const char* key, const std::string& value) {
        WritePrivateProfileString(section, key, value, CameraFilePath);
    };
    write("Volts/Offset", Format("%f", static_cast<double>(VoltsOffset)));
    write("A/Doffset", Format("%f", static_cast<double>(ADoffset)));
    std::string list;
    for (const float volts : VoltsPerCountVsGain) {
        if (!list.empty()) list += ',';
        list += Format("%f", static_cast<double>(volts));
    }
    write("VoltsPerCountVsGain", list);
}

std::optional<float> VoltsPerCountOf(float volts, float signal, float zeroSignal)
{
    const double difference = static_cast<double>(signal) - static_cast<double>(zeroSignal);
    const auto perCount = static_cast<float>(static_cast<double>(volts) / difference);
    if (!std::isfinite(perCount) || perCount == 0.0F) return std::nullopt;
    return perCount;
}

float VoltsPerStepOf(float signal, float shiftedSignal, float voltsPerCount, std::int32_t stepsBetween)
{
    const double difference = static_cast<double>(shiftedSignal) - static_cast<double>(signal);
    return static_cast<float>(difference * static_cast<double>(voltsPerCount) / stepsBetween);
}

float CountsAtZeroOf(std::span<const float, kGainSteps> zeroSignals)
{
    float sum = 0;
    for (const float signal : zeroSignals) sum += signal;
    return static_cast<float>(static_cast<double>(sum) / static_cast<double>(kGainSteps));
}

void ResetVoltageCalibration()
{
    ZeroSignal = {};
    measured = false;
}

}  // namespace kelvo
