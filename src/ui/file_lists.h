// The lists of the dialogs in which the operator names a file: they show the working directory, and going into another
// one changes it.
//
// Controls: 1460 the name or a pattern, 1462 the directory, 1464 its files that fit the pattern, 1466 the directories
// in it, 20300 the button "Browse...". One such dialog is open at a time.
#pragma once

#include "platform/file_dialog.h"
#include "platform/types.h"

#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

inline constexpr int kNameToFile = 1460;
inline constexpr int kDirectoryOfFiles = 1462;
inline constexpr int kFilesThatFit = 1464;
inline constexpr int kDirectoriesBelow = 1466;

// Fills directory and lists; the name shows the pattern.
void OpenFileLists(HWND dialog, std::string_view pattern);
// The files of another pattern. The name shows it too, unless a name was typed.
void ChangePattern(HWND dialog, std::string_view pattern);
// Goes into the directory that is selected, with a beep where it may not be entered; false if none is.
bool EnterSelectedDirectory(HWND dialog);
// The selected file's name goes to the name; false if none is.
bool TakeSelectedFile(HWND dialog);
// The two as entries of a dialog's table (ui/dialog_frame.h): of the files a selection, of the directories a double
// click.
void OnFileSelected(HWND dialog);
void OnDirectoryChosen(HWND dialog);
// A pattern in the name's place: its files are listed, those of the directory that stands before it.
void ListPattern(HWND dialog, const std::string& pattern);
// "Browse...": the file selection in place of the lists, with what is named so far. A file chosen there stands in the
// name, and the working directory is its own; false where the operator cancels. Whether a file is replaced is asked by
// who takes the name.
inline constexpr int kBrowse = 20300;
struct Browsing {
    FileDialogMode mode = FileDialogMode::kOpen;
    std::string_view title;
    std::vector<FileFilter> filters;
    std::string_view defaultExtension;
};
bool BrowseForFile(HWND dialog, const Browsing& browsing);

// The whole path of a name in the working directory.
std::string InCurrentDirectory(std::string_view name);

// Nothing listed so far.
void ResetFileLists();

}  // namespace kelvo
