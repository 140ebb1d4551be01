// Choosing the .cal file to load or to save as.
#include "calib/calibration.h"
#include "calib/last_set.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/directory.h"
#include "platform/files.h"
#include "platform/help.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "platform/window.h"
#include "resources/help_contexts.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/windows.h"
#include "ui/file_lists.h"
#include "ui/status.h"

#include <string>
#include <string_view>

namespace kelvo {

namespace {

constexpr std::int32_t kNoCamera = 999;

constexpr int kSets = 1472;
constexpr int kAnything = 1484;
constexpr int kCameraDescription = 1608;

constexpr std::string_view kSetPattern = "*.cal";

// The dialogs start beside the settings; the working directory is another's business and comes back.
class KeptDirectory {
  public:
    KeptDirectory() : before_(CurrentDirectory())
    {
        std::string drive;
        std::string directory;
        SplitPath(IniFilePath, &drive, &directory, nullptr, nullptr);
        ChangeDirectory(drive + directory);
    }
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

bool IsForThisCamera(HWND dialog, const std::string& name)
{
    if (!FileExists(name)) {
        MessageBeep(Sound::kExclamation);
        MessageBox(dialog, "Failed to open file: " + name, kMessageCaption);
        return false;
    }
    FilePathBuf = AbsolutePath(name);
    if (GetPrivateProfileInt("Calibration", "DriverNumber", kNoCamera, FilePathBuf) == ActiveCamera) return true;
    MessageBeep(Sound::kExclamation);
    MessageBox(dialog, "The calibration file selected is not for this camera", kMessageCaption);
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
    std::string drive;
    std::string directory;
    SplitPath(path, &drive, &directory, nullptr, nullptr);
    if (!DirectoryExists(drive + directory)) {
        MessageBox(dialog, path + "\nPath does not exist.", kMessageCaption);
        return false;
    }
    FilePathBuf = path;
    if (!FileExists(FilePathBuf)) return true;
    return MessageBox(dialog, "File already exists, replace it?", kMessageCaption, BoxIcon::kExclamation,
                      BoxButtons::kOkCancel, Button::kCancel) == Button::kOk;
}

// True when the dialog is done.
bool Accept(HWND dialog, bool (*take)(HWND, const std::string&))
{
    if (EnterSelectedDirectory(dialog)) return false;
    const std::string name = GetDlgItemText(dialog, kNameToFile);
    return !name.empty() && !Listed(dialog, name) && take(dialog, name);
}

LRESULT RunControl(HWND dialog, int id, int notification, bool (*take)(HWND, const std::string&), int help)
{
    switch (id) {
        case kIdOk:
            if (Accept(dialog, take)) EndDialog(dialog, 1);
            return 1;
        case kIdCancel:
            EndDialog(dialog, 0);
            return 1;
        case kIdHelp:
            ShowHelpContext(help);
            return 1;
        case kSets:
        case kAnything:
            ChangePattern(dialog, id == kSets ? kSetPattern : "*.*");
            return 1;
        case kFilesThatFit:
            if (TakeSelectedFile(dialog) && notification == kDoubleClicked && Accept(dialog, take))
                EndDialog(dialog, 1);
            return 1;
        case kDirectoriesBelow:
            if (notification == kDoubleClicked) EnterSelectedDirectory(dialog);
            return 1;
        default:
            return 0;
    }
}

LRESULT fnCALOPENDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM /*lParam*/)
{
    if (message == WM_INITDIALOG) Open(dialog);
    if (message != WM_COMMAND) return message == WM_INITDIALOG;
    return RunControl(dialog, LowWord(wParam), HighWord(wParam), IsForThisCamera, kHelpLoadCalibration);
}

LRESULT fnCALSAVEDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM /*lParam*/)
{
    if (message == WM_INITDIALOG) Open(dialog);
    if (message != WM_COMMAND) return message == WM_INITDIALOG;
    return RunControl(dialog, LowWord(wParam), HighWord(wParam), MaySaveAs, kHelpSaveCalibration);
}

int Choose(std::string_view name, HWND window, DialogProc procedure)
{
    const KeptDirectory directory;
    return ShowDialog(name, window, procedure);
}

}  // namespace

int ChooseCalibrationToOpen(HWND window)
{
    const std::string statusBefore = StatusText;
    const int alignBefore = StatusAlign;
    StatusString(kLoadCalibrationHint, kLeftAligned);
    const int chosen = Choose("CAL_OPEN", window, fnCALOPENDlgProc);
    if (!chosen) StatusMessage(statusBefore, alignBefore);
    return chosen;
}

int ChooseCalibrationToSave(HWND window)
{
    if (CalType == 0) {
        MessageBox(window, "A calibration must be loaded\nin order to save it.", "Kelvo Message");
        return 0;
    }
    return Choose("CAL_SAVE", window, fnCALSAVEDlgProc);
}

}  // namespace kelvo
