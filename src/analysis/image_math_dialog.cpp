#include "analysis/image_math_dialog.h"

#include "analysis/image_math.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "resources/help_contexts.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/select_file.h"
#include "ui/status.h"
#include "viewing/written_note.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

namespace {

constexpr const char* kSection = "ImageMath";
constexpr std::size_t kMostConstantCharacters = 9;

struct Field {
    int id;
    const char* key;
    int browsed;  // the file name that Browse fills after this field was left
};
constexpr Field kConstants[] = {
    {kMathConstant1, "Constant1", kMathFrame1},
    {kMathConstant2, "Constant2", kMathFrame2},
    {kMathConstant3, "Constant3", kMathResult},
};
constexpr Field kNames[] = {
    {kMathFrame1, "Frame1", kMathFrame1},
    {kMathFrame2, "Frame2", kMathFrame2},
    {kMathResult, "Result", kMathResult},
};

int BrowseField = kMathFrame1;

// Of the last run that went through.
struct Written {
    std::string path;
    std::uint32_t frames = 0;
    std::int64_t wrapped = 0;
};
Written written;

// ---- Opening

// Infinities and what is no number can't be reckoned with.
std::optional<float> ScanConstant(std::string_view text)
{
    const std::optional<float> number = ScanFloat(text.substr(0, kMostConstantCharacters));
    return number && std::isfinite(*number) ? number : std::nullopt;
}

void ShowConstant(HWND dialog, int id, float value)
{
    SetDlgItemText(dialog, id, Format("%.3f", double{value}));
}

void Open(HWND dialog)
{
    for (const Field& field : kConstants) {
        const std::string text = GetPrivateProfileString(kSection, field.key, "0.0", IniFilePath);
        ShowConstant(dialog, field.id, ScanConstant(text).value_or(0.0F));
    }
    for (const Field& field : kNames) {
        SetDlgItemText(dialog, field.id, GetPrivateProfileString(kSection, field.key, "", IniFilePath));
    }
    BrowseField = kMathFrame1;
    CentreDialog(dialog);
    FocusDlgItem(dialog, kMathConstant1);
}

// Left, or typed in: then it is the one that is left for the button.
void NoteWorked(HWND /*dialog*/, int id)
{
    for (const Field& field : kConstants) {
        if (field.id == id) BrowseField = field.browsed;
    }
    for (const Field& field : kNames) {
        if (field.id == id) BrowseField = field.browsed;
    }
}

void Browse(HWND dialog)
{
    const int field = BrowseField;
    std::string path = "*.img";
    if (SelectFile(dialog, path, kSelectToOpen)) SetDlgItemText(dialog, field, path);
    BrowseField = field;
}

// ---- Ok

void Tell(HWND dialog, std::string_view text, std::string_view caption)
{
    MessageBeep(Sound::kExclamation);
    MessageBox(dialog, text, caption);
}

bool Refuse(HWND dialog, std::string_view text, std::string_view caption, int field)
{
    Tell(dialog, text, caption);
    FocusDlgItem(dialog, field);
    return false;
}

bool Ask(HWND dialog, std::string_view question, std::string_view caption, Button usual)
{
    return MessageBox(dialog, question, caption, BoxIcon::kQuestion, BoxButtons::kYesNo, usual) == Button::kYes;
}

bool ReadConstants(HWND dialog, Weights& weights)
{
    const std::array<float*, 3> values = {&weights.c1, &weights.c2, &weights.c3};
    for (std::size_t i = 0; i < values.size(); ++i) {
        const int id = kConstants[i].id;
        const std::optional<float> value = ScanConstant(GetDlgItemText(dialog, id));
        if (!value) {
            Tell(dialog, Format("Invalid constant %zu", i + 1), kMessageCaption);
            ShowConstant(dialog, id, 0.0F);
            FocusDlgItem(dialog, id);
            return false;
        }
        *values[i] = *value;
    }
    return true;
}

bool IsImageName(const std::string& path)
{
    std::string extension;
    SplitPath(path, nullptr, nullptr, nullptr, &extension);
    return std::ranges::any_of(std::array{".img", ".seq", ".buf"},
                               [&](const char* known) { return EqualIgnoringCase(extension, known); });
}

bool ResultWillDo(HWND dialog, ImageMath& math)
{
    constexpr const char* kInvalid = "Invalid result file name!";
    if (Trimmed(math.result).empty()) return Refuse(dialog, kInvalid, kResultCaption, kMathResult);
    if (!IsImageName(math.result) && Ask(dialog, "Add .img as file extension?", "Add Extension?", Button::kYes)) {
        math.result += ".img";
    }
    if (ResultIsSource(math)) return Refuse(dialog, kInvalid, kResultCaption, kMathResult);
    const bool exists = FileExists(math.result);
    if (!ResultCanBeWritten(math.result)) {
        return Refuse(dialog, "Unable to create result file!", kResultCaption, kMathResult);
    }
    if (!exists || Ask(dialog, "Result file already exists!\nWrite over it?", "Overwrite file?", Button::kNo)) {
        return true;
    }
    FocusDlgItem(dialog, kMathResult);
    return false;
}

void TellFailure(HWND dialog, const ImageMathFailure& failure)
{
    if (failure.isStop) {
        MessageBox(dialog, failure.text, failure.caption, BoxIcon::kInformation);
        return;
    }
    Tell(dialog, failure.text, failure.caption);
    if (failure.namesResult) FocusDlgItem(dialog, kMathResult);
}

void Accept(HWND dialog)
{
    ImageMath math;
    if (!ReadConstants(dialog, math.weights)) return;
    math.frame1 = GetDlgItemText(dialog, kMathFrame1);
    math.frame2 = GetDlgItemText(dialog, kMathFrame2);
    math.result = GetDlgItemText(dialog, kMathResult);
    if (!ResultWillDo(dialog, math)) return;
    const ImageMathOutcome outcome = RunImageMath(math);
    if (outcome.failure) return TellFailure(dialog, *outcome.failure);
    written = {.path = math.result, .frames = outcome.frames, .wrapped = outcome.wrapped};
    EndDialog(dialog, 1);
}

void TellWritten()
{
    if (written.wrapped == 0) {
        NoteSavedFile(written.path, written.frames);
    } else {
        const auto count = static_cast<long long>(written.wrapped);
        StatusNote(Format("%lld sample%s wrapped", count, count == 1 ? "" : "s"));
    }
}

constexpr DialogEntry kEntries[] = {
    {kMathConstant1, NoteWorked, kEditFocusLost},
    {kMathFrame1, NoteWorked, kEditFocusLost},
    {kMathConstant2, NoteWorked, kEditFocusLost},
    {kMathFrame2, NoteWorked, kEditFocusLost},
    {kMathConstant3, NoteWorked, kEditFocusLost},
    {kMathResult, NoteWorked, kEditFocusLost},
    {kMathConstant1, NoteWorked, kEditChanged},
    {kMathFrame1, NoteWorked, kEditChanged},
    {kMathConstant2, NoteWorked, kEditChanged},
    {kMathFrame2, NoteWorked, kEditChanged},
    {kMathConstant3, NoteWorked, kEditChanged},
    {kMathResult, NoteWorked, kEditChanged},
    {kMathBrowse, Browse},
    {kIdOk, Accept},
};
constexpr DialogFrame kFrame{
    .name = "IMGMATH", .procedure = fnIMGMATHDlgProc, .open = Open, .entries = kEntries, .helpContext = kHelpImageMath};

}  // namespace

std::int32_t ImageMathDialog(HWND window)
{
    const bool done = RunDialog(kFrame, window) == 1;
    if (done) TellWritten();
    return done ? 1 : 0;
}

LRESULT fnIMGMATHDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

void ResetImageMathDialog()
{
    BrowseField = kMathFrame1;
    written = {};
}

}  // namespace kelvo
