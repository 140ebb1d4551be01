#include "viewing/save_dialog.h"

#include "config/settings_write.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/directory.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "resources/help_contexts.h"
#include "state/camera_config.h"
#include "state/state_registry.h"
#include "state/windows_write.h"
#include "ui/dialog_frame.h"
#include "ui/file_lists.h"
#include "ui/select_file.h"
#include "viewing/save_dialog_write.h"
#include "viewing/saving_write.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

namespace write {
SaveDialogVariables saveDialog;
}

constinit const std::int32_t& SaveDialogMode = write::saveDialog.SaveDialogMode;
constinit const std::int32_t& SaveAverage = write::saveDialog.SaveAverage;
constinit const std::int32_t& SaveStdDev = write::saveDialog.SaveStdDev;

namespace {

const StateNames kStateNames{
    Named("SaveDialogMode", SaveDialogMode),
    Named("SaveAverage", SaveAverage),
    Named("SaveStdDev", SaveStdDev),
};

constexpr int kFramesToAverage = 1488;
constexpr int kBeginningNumber = 1486;
constexpr int kCamera1 = 1600;
constexpr int kCamera2 = 1602;
constexpr int kCameraDescription = 1608;
constexpr int kMultiFrame = 1784;
constexpr int kSaveAverage = 1002;
constexpr int kSaveStdDev = 1471;

constexpr std::int32_t kMostFrames = 1000;
constexpr std::int32_t kMostBeginningNumber = 9999;

struct Pattern {
    int radio;
    std::string_view pattern;
    std::string_view extension;  // what a name without one gets
};
constexpr Pattern kPatterns[] = {
    {kSaveImages, "*.img", ".img"},
    {kSaveSequences, "*.seq", ".seq"},
    {kSaveBuffers, "*.buf", ".buf"},
    {kSaveAnything, "*.*", ""},
};

const Pattern& PatternOf(int radio)
{
    const auto* const found = std::ranges::find(kPatterns, radio, &Pattern::radio);
    return found != std::end(kPatterns) ? *found : kPatterns[3];
}

std::string directoryAtOpening;  // for Cancel

// Until a name was taken, the dialog begins in the folder for what is saved, where there is one.
bool nameWasTaken = false;
std::optional<DirectoryForSaving> firstDirectory;

void Beep()
{
    MessageBeep(Sound::kDefault);
}

// ---- Opening

void EnableBufferBoxes(HWND dialog, bool enabled)
{
    for (const int id : {kSaveAverage, kSaveStdDev}) EnableDlgItem(dialog, id, enabled);
}

void EnableByMode(HWND dialog)
{
    EnableBufferBoxes(dialog, SaveDialogMode == kSaveBuffers);
    switch (SaveDialogMode) {
        case kSaveImages:
            for (const int id : {kMultiFrame, kBeginningNumber}) EnableDlgItem(dialog, id, false);
            break;
        case kSaveSequences:
            EnableDlgItem(dialog, kMultiFrame, true);
            CheckDlgButton(dialog, kMultiFrame, MultiFrame != 0);
            break;
        case kSaveBuffers:
            for (const int id : {kMultiFrame, kBeginningNumber, kFramesToAverage}) EnableDlgItem(dialog, id, false);
            for (const int id : {kSaveAverage, kSaveStdDev}) CheckDlgButton(dialog, id, false);
            break;
        default:
            break;
    }
}

void CheckPattern(HWND dialog, int radio)
{
    for (const Pattern& pattern : kPatterns) CheckDlgButton(dialog, pattern.radio, pattern.radio == radio);
}

void Open(HWND dialog)
{
    directoryAtOpening = CurrentDirectory();
    if (directoryAtOpening.empty()) {  // it has gone
        ChangeDirectory(DefaultDir);
        directoryAtOpening = CurrentDirectory();
    }
    if (firstDirectory) ChangeDirectory(firstDirectory->Path());
    const bool sequence = SaveDialogMode == kSaveSequences;
    SetDlgItemInt(dialog, kFramesToAverage, sequence ? FramesToAverageSeq : FramesToAverageImage);
    SetDlgItemInt(dialog, kBeginningNumber, SeqNumber);
    CheckRadioButton(dialog, kCamera1, kCamera2, kCamera1);
    SetDlgItemText(dialog, kCameraDescription, ActiveConfig.Description);
    EnableByMode(dialog);
    write::saveDialog.SaveAverage = 0;
    write::saveDialog.SaveStdDev = 0;

    const Pattern& pattern = PatternOf(SaveDialogMode);
    CheckPattern(dialog, pattern.radio);
    OpenFileLists(dialog, pattern.pattern);
    CentreDialog(dialog);
    FocusDlgItem(dialog, kNameToFile);
}

// ---- Ok

int RadioChecked(HWND dialog)
{
    for (const Pattern& pattern : kPatterns) {
        if (IsDlgButtonChecked(dialog, pattern.radio)) return pattern.radio;
    }
    return kSaveAnything;
}

// A whole number and nothing else. Values beyond 32 bits come back as the nearest.
std::optional<std::int32_t> WholeNumber(std::string_view text)
{
    text = Trimmed(text);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    if (text.empty() || text.find_first_not_of("0123456789") != std::string_view::npos) return std::nullopt;
    std::int64_t value = 0;
    for (const char digit : text) {
        value = std::min<std::int64_t>(10 * value + (digit - '0'), std::numeric_limits<std::int32_t>::max());
    }
    return static_cast<std::int32_t>(negative ? -value : value);
}

std::nullopt_t RefuseNumber(HWND dialog, int id, std::string_view text)
{
    Beep();
    RefuseField(dialog, id, text);
    return std::nullopt;
}

// The first text names another end than the range has; operators know both as they are.
std::optional<std::int32_t> ReadFramesToAverage(HWND dialog)
{
    const auto number = WholeNumber(GetDlgItemText(dialog, kFramesToAverage));
    if (!number) return RefuseNumber(dialog, kFramesToAverage, "0 <= Number of frames to average <= 9999");
    if (*number < 1 || *number > kMostFrames) {
        return RefuseNumber(dialog, kFramesToAverage, "1 <= Number of frames to average <= 1000");
    }
    return number;
}

std::optional<std::int32_t> ReadBeginningNumber(HWND dialog)
{
    const auto number = WholeNumber(GetDlgItemText(dialog, kBeginningNumber));
    if (!number || *number < 0 || *number > kMostBeginningNumber) {
        return RefuseNumber(dialog, kBeginningNumber, "0 <= Beginning sequence number <= 9999");
    }
    return number;
}

bool StoreNumbers(HWND dialog)
{
    const auto frames = ReadFramesToAverage(dialog);
    if (!frames) return false;
    if (SaveDialogMode != kSaveSequences) {
        write::saving.FramesToAverageImage = *frames;
        return true;
    }
    write::saving.FramesToAverageSeq = *frames;
    const auto number = ReadBeginningNumber(dialog);
    if (!number) return false;
    write::saving.SeqNumber = *number;
    write::saving.SeqNumberStart = *number;
    return true;
}

std::string WithExtension(std::string name, int radio)
{
    std::string extension;
    SplitPath(name, nullptr, nullptr, nullptr, &extension);
    return extension.size() < 2 ? name.append(PatternOf(radio).extension) : name;
}

// The one drive that old paths name is where the program's directory is; the machine has no others.
bool DriveCanBeSelected(std::string_view drive)
{
    return drive.empty() || EqualIgnoringCase(drive, "c:");
}

bool EnterOrMakeDirectory(HWND dialog, const std::string& directory)
{
    if (DirectoryExists(directory) && ChangeDirectory(directory)) return true;
    const Button answer =
        MessageBox(dialog, directory, "Create new directory?", BoxIcon::kQuestion, BoxButtons::kYesNo);
    if (answer != Button::kYes) return false;
    if (MakeDirectories(directory) && ChangeDirectory(directory)) return true;
    Beep();
    MessageBox(dialog, directory, "Unable to make new directory!");
    return false;
}

// The whole path of the name, with the working directory changed to its own; nullopt after a box.
std::optional<std::string> WholePath(HWND dialog, const std::string& name)
{
    std::string drive;
    std::string directory;
    std::string stem;
    std::string extension;
    SplitPath(name, &drive, &directory, &stem, &extension);
    if (drive.empty() && directory.empty()) return InCurrentDirectory(name);
    if (!DriveCanBeSelected(drive)) {
        Beep();
        MessageBox(dialog, "Invalid drive letter in name.", "File Error");
        return std::nullopt;
    }
    if (!directory.empty() && !EnterOrMakeDirectory(dialog, drive + directory)) return std::nullopt;
    return InCurrentDirectory(stem + extension);
}

// A name that begins so is taken in the current directory, not above it.
std::string WithoutParentPrefix(const std::string& name)
{
    constexpr std::string_view kParent = "..\\";
    return name.starts_with(kParent) ? InCurrentDirectory(std::string_view(name).substr(kParent.size())) : name;
}

bool AgreeToReplaceSequence(HWND dialog, const std::string& name)
{
    if (SaveDialogMode != kSaveSequences || !FileExists(name)) return true;
    return MessageBox(dialog, "File already exists, replace it?", kMessageCaption, BoxIcon::kQuestion,
                      BoxButtons::kOkCancel, Button::kCancel) == Button::kOk;
}

void Accept(HWND dialog)
{
    if (EnterSelectedDirectory(dialog)) return;
    std::string name = GetDlgItemText(dialog, kNameToFile);
    if (name.find('*') != std::string::npos) {
        ListPattern(dialog, name);
        return;
    }
    if (name.empty() || name.find('?') != std::string::npos) return;
    name = WithExtension(WithoutParentPrefix(name), RadioChecked(dialog));
    if (!AgreeToReplaceSequence(dialog, name)) return;
    const std::string before = CurrentDirectory();
    const auto path = WholePath(dialog, name);
    if (!path || !StoreNumbers(dialog)) {
        ChangeDirectory(before);  // the name in the field is meant from there
        return;
    }
    write::windows.FilePathBuf = *path;
    nameWasTaken = true;
    if (firstDirectory) firstDirectory->Keep();
    EndDialog(dialog, 1);
}

// The file selection as the pattern that is checked asks for; the rest of the dialog is still the operator's to fill.
void Browse(HWND dialog)
{
    const Pattern& pattern = PatternOf(RadioChecked(dialog));
    const FilterList list = FiltersFor(pattern.pattern);
    BrowseForFile(dialog, {.mode = FileDialogMode::kSave,
                           .title = "Save File",
                           .filters = list.filters,
                           .defaultExtension = pattern.extension.empty() ? "" : list.defaultExtension});
}

// ---- The procedure

void StoreMultiFrame(HWND dialog)
{
    write::settings.MultiFrame = IsDlgButtonChecked(dialog, kMultiFrame) ? 1 : 0;
    WritePrivateProfileString("Save", "MultiFrame", Format("%d", MultiFrame), IniFilePath);
}

// One of the two at most.
void PickBufferBox(HWND dialog, int id)
{
    const int other = id == kSaveAverage ? kSaveStdDev : kSaveAverage;
    if (IsDlgButtonChecked(dialog, id)) CheckDlgButton(dialog, other, false);
    write::saveDialog.SaveAverage = IsDlgButtonChecked(dialog, kSaveAverage) ? 1 : 0;
    write::saveDialog.SaveStdDev = IsDlgButtonChecked(dialog, kSaveStdDev) ? 1 : 0;
}

void PickPattern(HWND dialog, int id)
{
    ChangePattern(dialog, PatternOf(id).pattern);
}

void AcceptSelected(HWND dialog)
{
    TakeSelectedFile(dialog);
    Accept(dialog);
}

void Cancel(HWND dialog)
{
    ChangeDirectory(directoryAtOpening);
    EndDialog(dialog, 0);
}

constexpr DialogEntry kEntries[] = {
    {kSaveImages, PickPattern},
    {kSaveSequences, PickPattern},
    {kSaveAnything, PickPattern},
    {kSaveBuffers, PickPattern},
    {kBrowse, Browse},
    {kFilesThatFit, OnFileSelected, kSelectionChanged},
    {kFilesThatFit, AcceptSelected, kDoubleClicked},
    {kDirectoriesBelow, OnDirectoryChosen, kDoubleClicked},
    {kMultiFrame, StoreMultiFrame},
    {kSaveAverage, PickBufferBox},
    {kSaveStdDev, PickBufferBox},
    {kIdOk, Accept},
    {kIdCancel, Cancel},
};

LRESULT fnSAVEDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
constexpr DialogFrame kFrame{
    .name = "SAVE", .procedure = fnSAVEDlgProc, .open = Open, .entries = kEntries, .helpContext = kHelpSaveImage};
LRESULT fnSAVEDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

}  // namespace

int SaveDialog(HWND window)
{
    if (!nameWasTaken && !FirstFileDirectory.empty()) firstDirectory.emplace();
    const int result = RunDialog(kFrame, window);
    firstDirectory.reset();
    return result == 1 ? 1 : 0;
}

void ResetSaveDialog()
{
    write::saveDialog.SaveDialogMode = kSaveImages;
    write::saveDialog.SaveAverage = 0;
    write::saveDialog.SaveStdDev = 0;
    directoryAtOpening.clear();
    nameWasTaken = false;
}

}  // namespace kelvo
