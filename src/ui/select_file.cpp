#include "ui/select_file.h"

#include "platform/box.h"
#include "platform/directory.h"
#include "platform/files.h"
#include "platform/text.h"
#include "state/state_registry.h"
#include "state/windows.h"
#include "ui/select_file_write.h"
#include "ui/status.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace kelvo {

namespace write {
FileChoiceVariables fileChoice;
}

constinit const std::string& LastFileDirectory = write::fileChoice.LastFileDirectory;
constinit const std::string& FirstFileDirectory = write::fileChoice.FirstFileDirectory;
constinit const int& FileDialogTemplate = write::fileChoice.FileDialogTemplate;

namespace {

// The whole paths of the last SelectFile that returned 1: names with blanks stay whole here.
std::vector<std::string> SelectedPaths;

std::string JoinedLines(const std::vector<std::string>& texts)
{
    std::string joined;
    for (const std::string& text : texts) joined += text + '\n';
    return joined;
}

const StateNames kStateNames{
    Named("LastFileDirectory", LastFileDirectory),
    {"CurrentDirectory", [] { return StateValue{CurrentDirectory()}; }},
    {"SelectedPaths", [] { return StateValue{JoinedLines(SelectedPaths)}; }},
};

constexpr FileFilter kImages{"Image Files (*.img)", "*.img"};
constexpr FileFilter kSequences{"Sequence Files (*.seq)", "*.seq"};
constexpr FileFilter kBuffers{"BufferBoard Files (*.buf)", "*.buf"};
constexpr FileFilter kDeviations{"StdDev Files (*.sdv)", "*.sdv"};
constexpr FileFilter kRealTimeDisk{"RealTimeDisk Files (*.buf)", "*.buf"};
constexpr FileFilter kBitmaps{"Bitmap Files (*.bmp)", "*.bmp"};
constexpr FileFilter kPages{"Portable Documents (*.pdf)", "*.pdf"};
constexpr FileFilter kAll{"All Files (*.*)", "*.*"};
constexpr FileFilter kKelvo{"All Kelvo files (*.img *.seq *.buf *.sdv *.flt)", "*.img *.seq *.buf *.sdv *.flt"};
constexpr FileFilter kGraphics{"Portable Network Graphics (*.png)", "*.png"};
constexpr FileFilter kTiff{"TIFF Files (*.tif)", "*.tif"};

struct ModeTexts {
    std::string_view title;
    std::string_view status;
    FileDialogMode dialog;
};
constexpr ModeTexts kModes[] = {
    {"Save File", "Enter filename to save image file to", FileDialogMode::kSave},
    {"Open File", "Select image file to view", FileDialogMode::kOpen},
    {"Open Multiple Files", "Select multiple image files to analyze", FileDialogMode::kOpenMany},
};

// Shows a hint, and the line that stood before when the dialog is done.
class StatusHint {
  public:
    explicit StatusHint(std::string_view text)
    {
        align_ = GetStatusText(text_);
        StatusMessage(text, 0);
    }
    ~StatusHint() { StatusMessage(text_, align_); }
    StatusHint(const StatusHint&) = delete;
    StatusHint& operator=(const StatusHint&) = delete;

  private:
    std::string text_;
    int align_ = 0;
};

std::string WithoutLastCharacter(std::string text)
{
    if (text.size() > 1) text.pop_back();  // the root directory is its own separator
    return text;
}

// Several names in one text: the folder, then the names, parted by blanks; a single choice stands as its whole path.
std::string JoinSelection(const std::vector<std::string>& paths)
{
    if (paths.size() == 1) return paths.front();
    std::string joined = WithoutLastCharacter(DirectoryOf(paths.front()));
    for (const std::string& path : paths) joined += " " + FileNameOf(path);
    return joined;
}

// A directory and those above it, as far as they aren't there; the innermost first.
std::vector<std::string> MissingDirectories(std::string path)
{
    std::vector<std::string> missing;
    while (!path.empty() && !DirectoryExists(path)) {
        missing.push_back(path);
        path.resize(path.find_last_of('/') == std::string::npos ? 0 : path.find_last_of('/'));
    }
    return missing;
}

// Where the dialog opens. What is to be saved gets a folder that is there.
class OpeningDirectory {
  public:
    explicit OpeningDirectory(FileDialogMode mode) : path_(LastFileDirectory)
    {
        if (!path_.empty()) return;
        if (mode == FileDialogMode::kSave) path_ = forSaving_.emplace().Path();
        const bool there = !FirstFileDirectory.empty() && DirectoryExists(FirstFileDirectory);
        if (path_.empty()) path_ = there ? FirstFileDirectory : DefaultDir;
        if (FirstFileDirectory.empty()) write::fileChoice.LastFileDirectory = path_;
    }
    const std::string& Path() const { return path_; }
    void Keep()
    {
        if (forSaving_) forSaving_->Keep();
    }

  private:
    std::optional<DirectoryForSaving> forSaving_;
    std::string path_;
};

FilterList FiltersOfDialog(std::string_view pattern, FileDialogMode mode)
{
    FilterList list = FiltersFor(pattern);
    if (mode != FileDialogMode::kSave) list.filters.push_back(kKelvo);
    if (mode == FileDialogMode::kSave && EqualIgnoringCase(pattern, "*.bmp")) list.filters.push_back(kGraphics);
    if (mode == FileDialogMode::kSave && EqualIgnoringCase(pattern, "*.tif")) {
        list.filters.push_back(kTiff);
        list.defaultExtension = "tif";
    }
    return list;
}

}  // namespace

DirectoryForSaving::DirectoryForSaving() : path_(FirstFileDirectory)
{
    made_ = MissingDirectories(path_);
    if (!made_.empty()) MakeDirectories(path_);
    if (path_.empty() || !DirectoryExists(path_)) path_ = DefaultDir;
}

DirectoryForSaving::~DirectoryForSaving()
{
    for (const std::string& directory : made_) RemoveEmptyDirectory(directory);
}

void TellFileDialogError(std::int32_t error)
{
    MessageBeep(Sound::kStop);
    MessageBox(hWndMain, Format("GetOpenFileName returned Error #%ld", static_cast<long>(error)), "WARNING",
               BoxIcon::kStop);
}

std::string DirectoryOf(std::string_view path)
{
    std::string drive;
    std::string directory;
    SplitPath(path, &drive, &directory, nullptr, nullptr);
    return drive + directory;
}

FilterList FiltersFor(std::string_view pattern)
{
    struct Row {
        std::string_view pattern;
        FilterList list;
    };
    static const Row rows[] = {
        {"*.img", {{kImages, kSequences, kBuffers, kDeviations, kAll}, "img"}},
        {"*.seq", {{kSequences, kImages, kBuffers, kDeviations, kAll}, "seq"}},
        {"*.buf", {{kBuffers, kImages, kSequences, kDeviations, kAll}, "buf"}},
        {"*.rtd", {{kRealTimeDisk, kAll}, "buf"}},
        {"*.sdv", {{kDeviations, kImages, kSequences, kBuffers, kAll}, "sdv"}},
        {"*.bmp", {{kBitmaps, kAll}, "bmp"}},
        {"*.pdf", {{kPages, kAll}, "pdf"}},
    };
    for (const Row& row : rows) {
        if (EqualIgnoringCase(row.pattern, pattern)) return row.list;
    }
    return {{kAll, kImages, kSequences, kBuffers}, "img"};
}

int SelectFile(HWND window, std::string& path, int mode, std::function<bool(const std::string&)> accept,
               std::span<const FileFilter> others)
{
    const ModeTexts& texts = kModes[std::clamp(mode, 0, 2)];
    FilterList list = FiltersOfDialog(path, texts.dialog);
    list.filters.insert(list.filters.end(), others.begin(), others.end());
    OpeningDirectory opening(texts.dialog);
    const StatusHint hint(texts.status);
    const FileDialogResult result = RunFileDialog({.owner = window,
                                                   .mode = texts.dialog,
                                                   .title = texts.title,
                                                   .filters = list.filters,
                                                   .directory = opening.Path(),
                                                   .name = path,
                                                   .defaultExtension = list.defaultExtension,
                                                   .accept = std::move(accept)});
    if (result.paths.empty()) {
        path.clear();
        if (result.error != 0) TellFileDialogError(result.error);
        return 0;
    }
    opening.Keep();
    SelectedPaths = result.paths;
    if (texts.dialog == FileDialogMode::kOpenMany) {
        path = JoinSelection(result.paths);
        write::fileChoice.LastFileDirectory = WithoutLastCharacter(DirectoryOf(result.paths.front()));
    } else {
        path = result.paths.front();
        write::fileChoice.LastFileDirectory = DirectoryOf(path);
    }
    return 1;
}

int SelectStatisticsFile(HWND window, std::string& path, int kind)
{
    constexpr FileFilter kBadPixels{"Bad pixel files (*.bad)", "*.bad"};
    FileDialogRequest request{.owner = window,
                              .mode = FileDialogMode::kOpen,
                              .title = "Select a file",
                              .filters = {{"All files (*.*)", "*.*"}},
                              .directory = {},
                              .name = "*.*",
                              .defaultExtension = {}};
    std::string_view status = "Select a file";
    if (kind == kBadDetectorFiles) {
        request.title = "Select bad detector file";
        request.filters = {kBadPixels};
        request.name = "*.bad";
        status = "Select a bad detector file";
    } else if (kind == kStatisticsFiles) {
        request.title = "View statistics of selected file";
        request.filters = {{"Gain files (*.gai)", "*.gai"},
                           {"Offset files (*.off)", "*.off"},
                           {"Noise files (*.noi)", "*.noi"},
                           kBadPixels,
                           {"Calib. ini files (*.cal)", "*.cal"}};
        request.name = "*.gai";
        status = "Select a calibration statistics file to view";
    }
    const StatusHint hint(status);
    const FileDialogResult result = RunFileDialog(request);
    path = result.paths.empty() ? std::string() : result.paths.front();
    return 0;
}

void ResetSelectFile()
{
    write::fileChoice.LastFileDirectory.clear();
    write::fileChoice.FirstFileDirectory.clear();
    write::fileChoice.FileDialogTemplate = kImageTemplate;
    SelectedPaths.clear();
}

}  // namespace kelvo
