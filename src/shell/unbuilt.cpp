#include "shell/unbuilt.h"

#include "platform/box.h"
#include "platform/faults.h"
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
    return FaultIsSet("a head answers") ? 1 : 0;
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

void SignalExternalThread() {}

}  // namespace kelvo
