// File selection: the two operations that put the standard file dialogs in front of the operator, one for all that
// handles images, one for the coefficient files. Each chooses its filter list by what the caller asks for, says on the
// status line what to do, and gives back a path. The status line shows its earlier text again after every outcome.
#pragma once

#include "platform/file_dialog.h"
#include "platform/types.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

// The folder last used, for the life of the process. Empty at start. With a closing separator after a single choice to
// open or save, without one after a selection of several.
extern const std::string& LastFileDirectory;
// The folder for what the operator saves, which the first dialog offers; to open, once it is there. Empty: the
// program's directory.
extern const std::string& FirstFileDirectory;

// FirstFileDirectory for a dialog that saves: made where it is missing, with those above it, and taken away again where
// nothing came of it.
class DirectoryForSaving {
  public:
    DirectoryForSaving();
    ~DirectoryForSaving();
    DirectoryForSaving(const DirectoryForSaving&) = delete;
    DirectoryForSaving& operator=(const DirectoryForSaving&) = delete;
    // The program's directory where it can't be made.
    const std::string& Path() const { return path_; }
    void Keep() { made_.clear(); }

  private:
    std::string path_;
    std::vector<std::string> made_;  // from the innermost up
};

// The purpose of a save: which texts and patterns the save dialogs take.
constexpr int kImageTemplate = 1468;
constexpr int kSequenceTemplate = 1470;
extern const int& FileDialogTemplate;

constexpr int kSelectToSave = 0;
constexpr int kSelectToOpen = 1;
constexpr int kSelectSeveral = 2;

// path holds the pattern ("*.img"), which is offered as the filter, with no name in the field; on return with 1 the
// chosen name, with 0 nothing (cancelled, or the dialog itself failed: TellFileDialogError). To open, all of Kelvo's
// own kinds together are one more filter, behind those of the pattern; to save a bitmap, portable network graphics; to
// save "*.tif", TIFF files, and a bare name gets that extension. accept, if given, asks about a name to save to in
// place of the question about replacing; others: kinds that the caller knows beside those of the pattern. A choice of
// several gives the folder and the names parted by blanks. Blocks.
int SelectFile(HWND window, std::string& path, int mode, std::function<bool(const std::string&)> accept = nullptr,
               std::span<const FileFilter> others = {});

// "GetOpenFileName returned Error #%ld" under "WARNING", with a sound.
void TellFileDialogError(std::int32_t error);

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
