#include "shell/desktop_commands.h"

#include "platform/application.h"
#include "platform/help.h"
#include "platform/pointer.h"
#include "resources/help_contexts.h"

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
    const Hourglass hourglass;
    OpenDesktopTool("printers");
}

}  // namespace kelvo
