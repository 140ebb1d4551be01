#include "shell/desktop_commands.h"

#include "platform/application.h"
#include "platform/box.h"
#include "platform/help.h"
#include "platform/pointer.h"
#include "resources/help_contexts.h"
#include "state/windows.h"

namespace kelvo {

void ShowKeysHelp()
{
    ShowHelpContext(kHelpKeys);
}

void ShowTutorial()
{
    ShowHelpContext(kHelpTutorial);
}

void SearchHelp()
{
    ShowHelpSearch("");
}

void ShowDialogHelp()
{
    ShowHelpContext(kHelpOfDialogs);
}

void OpenPrinterSetup()
{
    bool opened = false;
    {
        const Hourglass hourglass;
        opened = OpenDesktopTool("printers");
    }
    if (opened) return;
    MessageBox(hWndMain, "This desktop has no printer settings that Kelvo knows.", kMessageCaption,
               BoxIcon::kInformation);
}

}  // namespace kelvo
