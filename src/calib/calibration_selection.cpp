#include "calib/calibration_selection.h"

#include "calib/last_set.h"
#include "calib/set_description.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/directory.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "resources/help_contexts.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/windows_write.h"
#include "ui/dialog_frame.h"
#include "ui/file_lists.h"
#include "ui/select_file.h"
#include "ui/status.h"

#include <string>
#include <string_view>

namespace kelvo {

namespace {

constexpr std::int32_t kNoCamera = 999;
constexpr std::size_t kLongestSettings = std::size_t{16} << 20;

constexpr int kSets = 1472;
constexpr int kAnything = 1484;
constexpr int kCameraDescription = 1608;
constexpr int kAboutSet = 20301;  // of CAL_OPEN: what the selected file is

constexpr std::string_view kSetPattern = "*.cal";

// The dialogs start beside the settings; the working directory is another's business and comes back.
class KeptDirectory {
  public:
    KeptDirectory() : before_(CurrentDirectory()) { ChangeDirectory(DirectoryOf(IniFilePath)); }
    ~KeptDirectory()
    {
        if (!before_.empty()) ChangeDirectory(before_);
    }
    KeptDirectory(const KeptDirectory&) = delete;
    KeptDirectory& operator=(const KeptDirectory&) = delete;

  private:
    std::string before_;
};

void Open(HWND dialog)
{
    CheckDlgButton(dialog, kSets, true);
    SetDlgItemText(dialog, kCameraDescription, ActiveConfig.Description);
    OpenFileLists(dialog, kSetPattern);
    CentreDialog(dialog);
    FocusDlgItem(dialog, kNameToFile);
}

// Lists what is not the name of a file: a pattern, or a directory.
bool Listed(HWND dialog, const std::string& name)
{
    if (name.find_first_of("*?") != std::string::npos) {
        ListPattern(dialog, name);
        return true;
    }
    if (!DirectoryExists(name)) return false;
    ChangeDirectory(name);
    OpenFileLists(dialog, kSetPattern);
    return true;
}

bool NamesThisCamera()
{
    return GetPrivateProfileInt("Calibration", "DriverNumber", kNoCamera, FilePathBuf) == ActiveCamera;
}

bool IsForThisCamera(HWND dialog, const std::string& name)
{
    if (!FileExists(name)) {
        MessageBeep(Sound::kExclamation);
        MessageBox(dialog, "Failed to open file: " + name, kMessageCaption);
        return false;
    }
    write::windows.FilePathBuf = AbsolutePath(name);
    if (NamesThisCamera()) return true;
    // Settings that couldn't be read name no camera either: another try tells which it is.
    const bool readable = ReadWholeFile(FilePathBuf, kLongestSettings).has_value();
    if (readable && NamesThisCamera()) return true;
    MessageBeep(Sound::kExclamation);
    MessageBox(dialog,
               readable ? "The calibration file selected is not for this camera" : "Failed to read file: " + name,
               kMessageCaption);
    return false;
}

// The lists of the set take its name with endings of their own: a settings file of another ending could be one of them,
// or share them with the set that has the name.
bool MaySaveAs(HWND dialog, const std::string& name)
{
    std::string extension;
    SplitPath(name, nullptr, nullptr, nullptr, &extension);
    const std::string path = AbsolutePath(extension.empty() ? name + ".cal" : name);
    if (!IsCalFile(path)) {
        MessageBox(dialog, "The name of a calibration ends in .cal:\n" + path, kMessageCaption);
        return false;
    }
    if (!DirectoryExists(DirectoryOf(path))) {
        MessageBox(dialog, path + "\nPath does not exist.", kMessageCaption);
        return false;
    }
    write::windows.FilePathBuf = path;
    if (!FileExists(FilePathBuf)) return true;
    return MessageBox(dialog, "File already exists, replace it?", kMessageCaption, BoxIcon::kExclamation,
                      BoxButtons::kOkCancel, Button::kCancel) == Button::kOk;
}

// What is done with the name: true where it may be the answer, which then stands in FilePathBuf.
using TakeName = bool (*)(HWND dialog, const std::string& name);

template <TakeName take>
void Accept(HWND dialog)
{
    if (EnterSelectedDirectory(dialog)) return;
    const std::string name = GetDlgItemText(dialog, kNameToFile);
    if (!name.empty() && !Listed(dialog, name) && take(dialog, name)) EndDialog(dialog, 1);
}

template <TakeName take>
void AcceptSelected(HWND dialog)
{
    if (TakeSelectedFile(dialog)) Accept<take>(dialog);
}

template <FileDialogMode mode, TakeName take>
void Browse(HWND dialog)
{
    const bool named =
        BrowseForFile(dialog, {.mode = mode,
                               .title = mode == FileDialogMode::kOpen ? "Open File" : "Save File",
                               .filters = {{"Calibration Files (*.cal)", kSetPattern}, {"All Files (*.*)", "*.*"}},
                               .defaultExtension = "cal"});
    if (named) Accept<take>(dialog);
}

void OnSetSelected(HWND dialog)
{
    OnFileSelected(dialog);
    const int index = ListSelection(dialog, kFilesThatFit);
    const std::string name = index < 0 ? std::string() : ListItemText(dialog, kFilesThatFit, index);
    SetDlgItemText(dialog, kAboutSet, name.empty() ? std::string() : DescribeSet(InCurrentDirectory(name)));
}

void PickPattern(HWND dialog, int id)
{
    ChangePattern(dialog, id == kSets ? kSetPattern : "*.*");
}

template <FileDialogMode mode, TakeName take, DialogHandler onSelected>
constexpr DialogEntry kEntries[] = {
    {kBrowse, Browse<mode, take>},
    {kSets, PickPattern},
    {kAnything, PickPattern},
    {kFilesThatFit, onSelected, kSelectionChanged},
    {kFilesThatFit, AcceptSelected<take>, kDoubleClicked},
    {kDirectoriesBelow, OnDirectoryChosen, kDoubleClicked},
    {kIdOk, Accept<take>},
};

LRESULT fnCALOPENDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
constexpr DialogFrame kOpenFrame{.name = "CAL_OPEN",
                                 .procedure = fnCALOPENDlgProc,
                                 .open = Open,
                                 .entries = kEntries<FileDialogMode::kOpen, IsForThisCamera, OnSetSelected>,
                                 .helpContext = kHelpLoadCalibration};
LRESULT fnCALOPENDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kOpenFrame, dialog, message, wParam, lParam);
}

LRESULT fnCALSAVEDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
constexpr DialogFrame kSaveFrame{.name = "CAL_SAVE",
                                 .procedure = fnCALSAVEDlgProc,
                                 .open = Open,
                                 .entries = kEntries<FileDialogMode::kSave, MaySaveAs, OnFileSelected>,
                                 .helpContext = kHelpSaveCalibration};
LRESULT fnCALSAVEDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kSaveFrame, dialog, message, wParam, lParam);
}

int Choose(const DialogFrame& frame, HWND window)
{
    const KeptDirectory directory;
    return RunDialog(frame, window);
}

}  // namespace

int ChooseCalibrationToOpen(HWND window)
{
    const std::string statusBefore = StatusText;
    const int alignBefore = StatusAlign;
    StatusString(kLoadCalibrationHint, kLeftAligned);
    const int chosen = Choose(kOpenFrame, window);
    if (!chosen) StatusMessage(statusBefore, alignBefore);
    return chosen;
}

int ChooseCalibrationToSave(HWND window)
{
    if (CalType == 0) {
        MessageBox(window, "A calibration must be loaded\nin order to save it.", "Kelvo Message");
        return 0;
    }
    return Choose(kSaveFrame, window);
}

}  // namespace kelvo
