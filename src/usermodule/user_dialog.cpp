#include "usermodule/user_dialog.h"

#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/window.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/status.h"
#include "usermodule/user_functions.h"
#include "usermodule/user_menu.h"

#include <algorithm>
#include <array>
#include <string>

namespace kelvo {

namespace {

constexpr int kRan = 1;
constexpr std::size_t kParms = 4;
constexpr std::array<int, kParms> kPrompts = {1790, 1792, 1794, 1796};
constexpr std::array<int, kParms> kFields = {1798, 1800, 1810, 1820};
constexpr int kFieldThatIsRead = 1820;

std::int32_t idInFront = 0;  // of the command whose dialog opens or stands
std::array<std::string, kParms> parms;

std::array<std::string_view, kParms> PromptsOf(const UserRecord& record)
{
    return {record.Parm1, record.Parm2, record.Parm3, record.Parm4};
}

void Refuse(HWND dialog, std::string_view text, std::string_view caption)
{
    MessageBox(hWndMain, text, caption);
    EndDialog(dialog, 0);
}

void RunFunction(HWND dialog)
{
    UserDispatch(idInFront, parms[0], parms[1], parms[2], parms[3]);
    EndDialog(dialog, kRan);
}

// Whether there is one.
bool ShowPrompts(HWND dialog, const UserRecord& record)
{
    const auto prompts = PromptsOf(record);
    for (std::size_t i = 0; i < kParms; ++i) {
        SetDlgItemText(dialog, kPrompts.at(i), prompts.at(i));
        EnableDlgItem(dialog, kFields.at(i), !prompts.at(i).empty());
    }
    return std::ranges::any_of(prompts, [](std::string_view prompt) { return !prompt.empty(); });
}

void Open(HWND dialog)
{
    if (UserMenuDefined == 0) {
        Refuse(dialog, "User dropdown menu not defined.", "QVF Vantir");
        return;
    }
    const auto* const record = std::ranges::find(UserTable, idInFront, &UserRecord::ParmId);
    if (record == UserTable.end()) {
        Refuse(dialog, "User Menu ID's in SetUserMenuName() & SetUserParmNames() don't match.",
               "User Software Module Error");
        return;
    }
    parms.fill({});
    SetWindowText(dialog, record->Title);
    if (!ShowPrompts(dialog, *record)) RunFunction(dialog);
}

void Accept(HWND dialog)
{
    parms.fill(GetDlgItemText(dialog, kFieldThatIsRead));  // the field takes 40 characters
    RunFunction(dialog);
}

LRESULT fnUSERDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
constexpr DialogEntry kEntries[] = {{kIdOk, Accept}};
constexpr DialogFrame kFrame{.name = "USERDLG", .procedure = fnUSERDlgProc, .open = Open, .entries = kEntries};
LRESULT fnUSERDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

}  // namespace

int RunUserModule(int id)
{
    if (std::ranges::find(UserTable, id, &UserRecord::MenuId) == UserTable.end()) {
        MessageBox(hWndMain, "Error in User Menu ID number(s).", "User Software Module Error");
        return 0;
    }
    idInFront = id;
    return RunDialog(kFrame, hWndMain);
}

CommandEnd UserCommand(int id)
{
    if (StatusNoteStands()) StatusString(kIdleHint, kLeftAligned);  // what an earlier command told
    RunUserModule(id);
    return StatusNoteStands() ? CommandEnd::kLeaveStatus : CommandEnd::kResetStatus;
}

}  // namespace kelvo
