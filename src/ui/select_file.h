// File selection: the two operations that put the standard file dialogs in front of the operator, one for all that
// handles images, one for the coefficient files. Each chooses its filter list by what the caller asks for, says on the
// status line what to do, and gives back a path. The status line shows its earlier text again after every outcome.
#pragma once

#include "platform/file_dialog.h"
#include "platform/types.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

// The folder last used, for the life of the process. Empty at start: then the first dialog opens in the program's
// directory. With a closing separator after a single choice to open or save, without one after a selection of several.
extern const std::string& LastFileDirectory;

// The purpose of a save: which texts and patterns the save dialogs take.
constexpr int kImageTemplate = 1468;
constexpr int kSequenceTemplate = 1470;
extern const int& FileDialogTemplate;

constexpr int kSelectToSave = 0;
constexpr int kSelectToOpen = 1;
constexpr int kSelectSeveral = 2;

// path holds the pattern ("*.img"), which is offered as the filter, with no name in the field; on return with 1 the
// chosen name, with 0 nothing (cancelled, or the dialog itself failed: box "GetOpenFileName returned Error #%ld" under
// "WARNING"). A choice of several gives the folder and the names parted by blanks. Blocks.
int SelectFile(HWND window, std::string& path, int mode);

constexpr int kBadDetectorFiles = 2;
constexpr int kStatisticsFiles = 3;

// The same use of path for coefficient files; any other kind shows all files. Always 0: an empty path means that the
// operator cancelled. Remembers no folder.
int SelectStatisticsFile(HWND window, std::string& path, int kind);

// The directory that stands in a path, with its drive and its closing separator; empty before a name alone.
std::string DirectoryOf(std::string_view path);

// The filter list of a pattern, the pattern's own pair first, and its default extension. Any case; a pattern that isn't
// in the table gets the list of all files and "img".
struct FilterList {
    std::vector<FileFilter> filters;
    std::string_view defaultExtension;
};
FilterList FiltersFor(std::string_view pattern);

// No directory remembered and nothing selected.
void ResetSelectFile();

}  // namespace kelvo
