#include "usermodule/user_calls.h"

#include "platform/box.h"
#include "platform/dialog.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "viewing/playback.h"
#include "viewing/save_commands.h"
#include "viewing/sequence_naming.h"

#include <utility>

namespace kelvo {

namespace {

constexpr int kAnswered = 1;
constexpr int kLine1 = 1790;
constexpr int kLine2 = 1792;
constexpr int kAnswer = 1798;

struct Response {
    std::string_view line1;
    std::string_view line2;
    std::string answer;
};
Response* response = nullptr;  // while its dialog is open

void Open(HWND dialog)
{
    SetDlgItemText(dialog, kLine1, response->line1);
    SetDlgItemText(dialog, kLine2, response->line2);
    SetDlgItemText(dialog, kAnswer, response->answer);
    FocusDlgItem(dialog, kAnswer);
}

void Accept(HWND dialog)
{
    response->answer = GetDlgItemText(dialog, kAnswer);  // the field takes 80 characters
    EndDialog(dialog, kAnswered);
}

LRESULT GetUserResponseDlg(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
constexpr DialogEntry kEntries[] = {{kIdOk, Accept}};
constexpr DialogFrame kFrame{.name = "USERRESP", .procedure = GetUserResponseDlg, .open = Open, .entries = kEntries};
LRESULT GetUserResponseDlg(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

std::string TwoLines(std::string_view text1, std::string_view text2)
{
    return std::string(text1).append(1, '\n').append(text2);
}

constexpr SequenceNameRefusals kRefusals{
    .digitsAlone = "A sequence name must contain at least\none none numeric letter",
    .tooLong = "A sequence name must be 7 or less\ncharacters long"};

}  // namespace

int GetUserResponse(std::string_view line1, std::string_view line2, std::string& answer)
{
    Response asked{.line1 = line1, .line2 = line2, .answer = answer};
    Response* const outer = std::exchange(response, &asked);
    const int result = RunDialog(kFrame, hWndMain);
    response = outer;
    if (result == kAnswered) answer = asked.answer;
    return result;
}

void UserErrorBox(std::string_view text1, std::string_view text2)
{
    MessageBeep(Sound::kExclamation);
    MessageBox(hWndMain, TwoLines(text1, text2), "User Error Message Box", BoxIcon::kStop);
}

int UserMessage(std::string_view text1, std::string_view text2)
{
    return static_cast<int>(MessageBox(hWndMain, TwoLines(text1, text2), "Kelvo user message", BoxIcon::kNone));
}

bool UserQuestion(std::string_view text1, std::string_view text2)
{
    return MessageBox(hWndMain, TwoLines(text1, text2), "User Message Box", BoxIcon::kQuestion,
                      BoxButtons::kOkCancel) != Button::kCancel;
}

int UserImageSave()
{
    StopPlaying();
    return AskForImageName() ? SaveNamedImage() : 1;
}

int UserSequenceSave()
{
    StopPlaying();
    return SaveNextImage() != 0 ? 1 : 0;
}

int UserSequenceName()
{
    return AskForSequenceName() ? NameSequenceForSaving(FilePathBuf, kRefusals) : 1;
}

}  // namespace kelvo
