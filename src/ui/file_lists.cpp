#include "ui/file_lists.h"

#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/directory.h"
#include "platform/files.h"
#include "platform/text.h"

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
