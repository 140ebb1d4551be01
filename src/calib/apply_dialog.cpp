#include "calib/apply_dialog.h"

#include "calib/apply_calibration.h"
#include "imagefile/header.h"
#include "platform/box.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "resources/help_contexts.h"
#include "state/buffer_state.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/recent_files.h"
#include "ui/select_file.h"
#include "viewing/stored_view.h"
#include "viewing/viewing.h"

#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

namespace {

constexpr const char* kSection = "ApplyCal";
constexpr const char* kCalPathKey = "CalPath";

// The last run: its image is offered again as long as its result is what was viewed last.
struct LastRun {
    std::string imageName;
    std::string resultName;
};
LastRun lastRun;

int nameField = kApplyImageName;  // the one of the two that Browse fills: the last that was left
std::string endFrameOffered;      // as the dialog wrote it

// --- Opening --------------------------------------------------------------------------------------------------------

std::string ImageToOffer()
{
    if (FramesInBuffer > 0) return {};
    return !lastRun.imageName.empty() && ViewFilePath == lastRun.resultName ? lastRun.imageName : ViewFilePath;
}

void OfferEndFrame(HWND dialog, const std::string& imageName)
{
    endFrameOffered = Format("%d", CountImageFrames(imageName) - 1);
    SetDlgItemText(dialog, kApplyEndFrame, endFrameOffered);
}

void Open(HWND dialog)
{
    const std::string imageName = ImageToOffer();
    SetDlgItemText(dialog, kApplyImageName, imageName);
    SetDlgItemText(dialog, kApplyStartFrame, "0");
    OfferEndFrame(dialog, imageName);
    SetDlgItemText(dialog, kApplyCalName, GetPrivateProfileString(kSection, kCalPathKey, "last.cal", IniFilePath));
    SetDlgItemText(dialog, kApplyResultName, imageName);
    SetDlgItemText(dialog, kApplyResultStart, "0");
    nameField = kApplyImageName;
    CentreDialog(dialog);
    FocusDlgItem(dialog, kApplyImageName);
}

// Left, or typed in: then it is the one that is left for the button.
void NoteWorked(HWND /*dialog*/, int id)
{
    nameField = id;
}

// An end that the operator hasn't touched follows the image.
void Browse(HWND dialog)
{
    const int field = nameField;
    std::string path = field == kApplyCalName ? "*.cal" : "*.seq";
    if (!SelectFile(dialog, path, kSelectToOpen)) return;
    SetDlgItemText(dialog, field, path);
    if (field == kApplyImageName && GetDlgItemText(dialog, kApplyEndFrame) == endFrameOffered) {
        OfferEndFrame(dialog, path);
    }
}

// --- Ok -------------------------------------------------------------------------------------------------------------

// 0 for a text that is no number, after a box: the run goes on with it.
std::int32_t ReadNumber(HWND dialog, int field, std::string_view title)
{
    const std::string text = GetDlgItemText(dialog, field);
    const std::optional<std::int32_t> number = ScanDecimal(text);
    if (number) return *number;
    MessageBeep(Sound::kExclamation);
    MessageBox(dialog, text, title);
    if (field == kApplyStartFrame) SetDlgItemText(dialog, field, "0");
    FocusDlgItem(dialog, field);
    return 0;
}

// The result is the sequence on view from then on. One that can't be shown is told, and what was on view stays.
void ViewResult(const std::string& resultName, std::int32_t frame)
{
    write::frames.SteppingFrames = 0;  // what can't be opened is told in a box
    const auto number = static_cast<std::uint32_t>(frame);
    if (!ViewImage(resultName, number)) return;
    write::frames.LoadName = resultName;
    write::frames.CurrentFrame = number;
    write::frames.LastFrame = ImageHeader.FrameCount - 1;
    write::frames.SteppingFrames = 1;
    AddRecentFile(resultName);
}

void Accept(HWND dialog)
{
    const std::string imageName = GetDlgItemText(dialog, kApplyImageName);
    const std::int32_t startFrame = ReadNumber(dialog, kApplyStartFrame, "Invalid start frame value.");
    const std::int32_t endFrame = ReadNumber(dialog, kApplyEndFrame, "Invalid end frame value.");
    const std::string calName = GetDlgItemText(dialog, kApplyCalName);
    const std::string resultName = GetDlgItemText(dialog, kApplyResultName);
    const std::int32_t resultStart = ReadNumber(dialog, kApplyResultStart, "Invalid start result frame value.");

    HeaderKeeper header;
    if (!ApplyCalibration(dialog, imageName, calName, resultName, startFrame, endFrame, resultStart)) return;
    WritePrivateProfileString(kSection, kCalPathKey, calName, IniFilePath);
    lastRun = {imageName, resultName};
    if (!resultName.empty()) ViewResult(resultName, resultStart);
    if (ViewingFile && ViewFilePath == resultName) header.KeepNew();
    EndDialog(dialog, 1);
}

constexpr DialogEntry kEntries[] = {
    {kApplyImageName, NoteWorked, kEditFocusLost},
    {kApplyCalName, NoteWorked, kEditFocusLost},
    {kApplyImageName, NoteWorked, kEditChanged},
    {kApplyCalName, NoteWorked, kEditChanged},
    {kApplyBrowse, Browse},
    {kIdOk, Accept},
};
constexpr DialogFrame kFrame{.name = "APPLYCAL",
                             .procedure = fnAPPLYCALDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpApplyCalibration};

}  // namespace

std::int32_t ShowApplyCalDialog(HWND window)
{
    return RunDialog(kFrame, window);
}

LRESULT fnAPPLYCALDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

void ResetApplyDialog()
{
    lastRun = {};
    nameField = kApplyImageName;
    endFrameOffered.clear();
}

}  // namespace kelvo
