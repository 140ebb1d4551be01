#include "shell/unbuilt.h"

#include "grabber/board.h"
#include "grabber/frame_account.h"
#include "platform/box.h"
#include "platform/faults.h"
#include "shell/windows.h"
#include "simcam/bench_window.h"

namespace kelvo {

void TellNotAvailable()
{
    MessageBox(hWndMain, "This command is not available in this version of Kelvo.", kMessageCaption,
               BoxIcon::kInformation);
}

void LoadVideoSettings() {}
void LoadCalibrationSettings() {}
void ReadGraphicsKeys() {}
void InitUserModules() {}
void RegisterExternalSignal() {}
void BuildTiffTemplate() {}

int IdentifyCameraHead()
{
    return FaultIsSet("a head answers") ? 1 : 0;
}

int ResetBoardState()
{
    return 1;
}

int TurnCameraOn(const char* /*argument*/, int /*flag*/)
{
    return FaultIsSet("the camera turns on") ? 1 : 0;
}

int TurnOnDialog()
{
    TellNotAvailable();
    return 0;
}

void CloseCommLink() {}
void FrameSizeChanged() {}

const FrameAccount& CurrentFrameAccount()
{
    static const FrameAccount none;
    return none;
}

void ClearFrameAccount() {}
void AccountHeldUp() {}

void OpenBenchWindow(HWND /*owner*/)
{
    TellNotAvailable();
}
void SignalExternalThread() {}
void ExitBoard() {}

}  // namespace kelvo
