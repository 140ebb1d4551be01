#include "ui/file_lists.h"

#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/directory.h"
#include "platform/files.h"
#include "platform/text.h"
#include "ui/select_file.h"

#include <iterator>
#include <vector>

namespace kelvo {

namespace {

std::string patternShown;
std::vector<std::string> directoriesShown;  // the file system's own bytes

void ShowFiles(HWND dialog, std::string_view pattern)
{
    patternShown = pattern;
    ListClear(dialog, kFilesThatFit);
    for (const std::string& name : FilesOf(patternShown)) ListAdd(dialog, kFilesThatFit, name);
}

void ShowDirectories(HWND dialog)
{
    SetDlgItemText(dialog, kDirectoryOfFiles, CurrentDirectory());
    ListClear(dialog, kDirectoriesBelow);
    directoriesShown = Subdirectories();
    for (const std::string& name : directoriesShown) ListAdd(dialog, kDirectoriesBelow, "[" + name + "]");
}

}  // namespace

void OpenFileLists(HWND dialog, std::string_view pattern)
{
    SetDlgItemText(dialog, kNameToFile, pattern);
    ShowDirectories(dialog);
    ShowFiles(dialog, pattern);
}

void ChangePattern(HWND dialog, std::string_view pattern)
{
    if (GetDlgItemText(dialog, kNameToFile).find('*') != std::string::npos) {
        SetDlgItemText(dialog, kNameToFile, pattern);
    }
    ShowFiles(dialog, pattern);
}

bool EnterSelectedDirectory(HWND dialog)
{
    const int index = ListSelection(dialog, kDirectoriesBelow);
    if (index < 0 || index >= std::ssize(directoriesShown)) return false;
    if (!ChangeDirectory(directoriesShown[static_cast<std::size_t>(index)])) MessageBeep(Sound::kDefault);
    ShowDirectories(dialog);
    ShowFiles(dialog, patternShown);
    return true;
}

bool TakeSelectedFile(HWND dialog)
{
    const int index = ListSelection(dialog, kFilesThatFit);
    if (index < 0) return false;
    SetDlgItemText(dialog, kNameToFile, ListItemText(dialog, kFilesThatFit, index));
    return true;
}

void OnFileSelected(HWND dialog)
{
    TakeSelectedFile(dialog);
}

void OnDirectoryChosen(HWND dialog)
{
    EnterSelectedDirectory(dialog);
}

void ListPattern(HWND dialog, const std::string& pattern)
{
    std::string drive;
    std::string directory;
    std::string stem;
    std::string extension;
    SplitPath(pattern, &drive, &directory, &stem, &extension);
    if (!directory.empty() && ChangeDirectory(drive + directory)) ShowDirectories(dialog);
    ShowFiles(dialog, stem + extension);
    SetDlgItemText(dialog, kNameToFile, patternShown);
}

bool BrowseForFile(HWND dialog, const Browsing& browsing)
{
    const std::string named = GetDlgItemText(dialog, kNameToFile);
    const bool isPattern = named.find_first_of("*?") != std::string::npos;
    FileDialogRequest request{.owner = dialog,
                              .mode = browsing.mode,
                              .title = browsing.title,
                              .filters = browsing.filters,
                              .directory = CurrentDirectory(),
                              .name = isPattern ? std::string() : named,
                              .defaultExtension = browsing.defaultExtension};
    if (browsing.mode == FileDialogMode::kSave) request.accept = [](const std::string&) { return true; };
    const FileDialogResult result = RunFileDialog(request);
    if (result.error != 0) TellFileDialogError(result.error);
    if (result.paths.empty()) return false;

    const std::string& path = result.paths.front();
    const std::string directory = DirectoryOf(path);
    const bool entered = ChangeDirectory(directory);
    if (entered) {
        ShowDirectories(dialog);
        ShowFiles(dialog, patternShown);
    }
    SetDlgItemText(dialog, kNameToFile, entered ? path.substr(directory.size()) : path);
    return true;
}

std::string InCurrentDirectory(std::string_view name)
{
    std::string path = CurrentDirectory();
    if (!path.ends_with('/')) path += '/';
    return path.append(name);
}

void ResetFileLists()
{
    patternShown.clear();
    directoriesShown.clear();
}

}  // namespace kelvo
