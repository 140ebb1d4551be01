#include "head/program_head.h"

#include "head/active_camera.h"
#include "head/camera_head_write.h"
#include "head/comm_link_write.h"
#include "head/head_frames.h"
#include "head/head_settings.h"
#include "head/head_transaction.h"
#include "platform/box.h"
#include "platform/pointer.h"
#include "state/camera_config_write.h"
#include "state/head_state.h"
#include "state/windows.h"
#include "ui/status.h"

#include <array>
#include <string>

namespace kelvo {

namespace {

// Offset first, since it can stop the sequence; the last one is checked byte by byte.
constexpr std::size_t kFirstDac = 0;
constexpr std::array<std::size_t, 6> kMiddleDacs = {1, 5, 6, 7, 3, 4};
constexpr std::size_t kLastDac = 2;

void ReadSectionAfresh()
{
    ReadActiveCamera();
    write::camera.ActiveConfig.NumOutputs = 1;
    write::camera.ActiveConfig.NumChannels = 1;
}

// What the description promises against what answered. True: the operator lets it go on.
bool ConfigurationFitsHead()
{
    const bool expectsHgCdTe = ActiveConfig.Description.find("J108") != std::string::npos;
    const char* question = nullptr;
    if (!expectsHgCdTe && HeadTiming.HeadModel == kHgCdTeHead) {
        question = "Your camera head has a 64x64 HgCdTe focalplane.  Your software configuration may be incorrect!";
    } else if (expectsHgCdTe && HeadTiming.HeadModel == kInSbHead) {
        question = "Your camera head has an InSb focalplane.  Your software configuration may be incorrect!";
    }
    if (!question) return true;
    return MessageBox(hWndMain, question, "Stop startup procedure?", BoxIcon::kQuestion, BoxButtons::kYesNo) !=
           Button::kYes;
}

// The counters come from the window of the serial word as it stood before its keys are read, which is no window at all
// at the first turn-on of a run. The right ones reach the head when the video set-up sets the integration time.
void ReadTiming()
{
    ReadTimingKeys(write::registers.HeadTiming, ActiveConfig);
    for (std::size_t slot = 0; slot < kIntegrationSlots; ++slot) {
        IntegrationFromIndex(IndexIntegrationTime.at(slot), write::registers.HeadTiming.IntegrationLines.at(slot),
                             write::registers.HeadTiming.IntegrationCols.at(slot));
    }
}

bool LoadTiming()
{
    StatusMessage("  Setting Camera Head timing", kLeftAligned);
    ReadTiming();
    if (LoadHeadTiming(write::registers.HeadTiming)) return true;
    MessageBox(hWndMain, "Unable to communicate with camera head!", "Load timing error!");
    return false;
}

// The last DAC goes without echo mode, so that a head that answers anything but its own frame is noticed. After a
// failure the mode stays off.
bool LoadLastDac(std::int32_t dacReg)
{
    write::link.CommEchoMode = 0;
    if (!HeadRepeats(DacFrame(dacReg, kLastDac, DacSetting(kLastDac)))) return false;
    write::link.CommEchoMode = 1;
    return true;
}

bool LoadDacs()
{
    StatusMessage("  Initializing Camera Head DACs", kLeftAligned);
    const std::int32_t dacReg = DacRegister();
    if (!SendFrame(DacFrame(dacReg, kFirstDac, DacSetting(kFirstDac)))) return false;
    for (const std::size_t dac : kMiddleDacs) SendFrame(DacFrame(dacReg, dac, DacSetting(dac)));
    return LoadLastDac(dacReg);
}

bool EnableBiases()
{
    StatusMessage("  Enabling Camera Head biases and DACs", kLeftAligned);
    return SendFrame(BiasEnableFrame(BiasEnableRegister(), true));
}

bool StartClocks()
{
    StatusMessage("  Turning on Camera Head clocks", kLeftAligned);
    return SendFrame(kClocksOnFrame);
}

// A refused word leaves the focal plane as it was, which is no reason to give up.
void LoadSerialWord()
{
    StatusMessage("  Setting Camera Head FPA serial command word", kLeftAligned);
    ReadSerialWordKeys(write::registers.FpaSerialWord, ActiveConfig);
    LoadFpaSerialWord(FpaSerialWord);
}

bool StartFocalPlane()
{
    if (HeadTiming.HeadModel != kInSbHead) return true;
    if (!StartClocks()) return false;
    LoadSerialWord();
    return true;
}

bool Programmed()
{
    if (!ConfigurationFitsHead()) return false;
    write::link.CommEchoMode = 1;
    SetPointer(Pointer::kHourglass);  // stays where the sequence fails
    if (!LoadTiming() || !LoadDacs() || !EnableBiases() || !StartFocalPlane()) return false;
    SetVideoGain(VideoGain[0]);
    SetVideoOffset(VideoOffset[0]);
    SetPointer(Pointer::kArrow);
    return true;
}

}  // namespace

std::int32_t LoadCameraHead()
{
    ReadSectionAfresh();
    const bool programmed = Programmed();
    UpdateIntegrationInForce();  // the section gave another timing, whatever the head took of it
    return programmed ? 1 : 0;
}

}  // namespace kelvo
