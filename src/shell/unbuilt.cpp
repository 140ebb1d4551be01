#include "shell/unbuilt.h"

#include "platform/box.h"
#include "shell/windows.h"

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
    return 0;
}

int ResetBoardState()
{
    return 1;
}

int TurnCameraOn(const char* /*argument*/, int /*flag*/)
{
    return 0;
}

int TurnOnDialog()
{
    TellNotAvailable();
    return 0;
}

void CloseCommLink() {}
void SignalExternalThread() {}
void ExitBoard() {}

}  // namespace kelvo
