#include "platform/file_dialog.h"

#include "platform/application.h"
#include "platform/box.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/operator_acts.h"
#include "platform/qt_window.h"
#include "platform/text.h"
#include "platform/transcript.h"

#include <QAbstractFileIconProvider>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QSplitter>
#include <QToolButton>
#include <QTreeView>

#include <algorithm>
#include <array>
#include <utility>

namespace kelvo {

namespace {

constexpr std::int32_t kDialogFailure = 0xFFFF;
constexpr QSize kDialogSize(780, 500);
constexpr int kSideWidth = 130;
constexpr std::array<int, 4> kColumnWidths = {260, 80, 90, 170};  // name, size, type, date

bool IsPattern(std::string_view name)
{
    return name.find_first_of("*?") != std::string_view::npos;
}

// --- Names --------------------------------------------------------------------------------------------------------

std::string DirectoryOf(std::string_view path)
{
    const std::size_t separator = path.find_last_of('/');
    return separator == std::string_view::npos ? std::string() : std::string(path.substr(0, separator + 1));
}

std::string WithExtension(const std::string& path, std::string_view extension, bool opening)
{
    std::string drive;
    std::string directory;
    std::string name;
    std::string present;
    SplitPath(path, &drive, &directory, &name, &present);
    // An existing file without an extension stays reachable by its name.
    if (extension.empty() || !present.empty() || (opening && FileExists(path))) return path;
    return path + "." + std::string(extension);
}

// What the operator typed as a whole path. Separators, drive letters and letter case as platform/files.h takes them.
std::string WholePath(const QDir& directory, const std::string& typed)
{
    if (typed == "~" || typed.starts_with("~/")) return FromQPath(QDir::homePath()) + typed.substr(1);
    const bool absolute = typed.starts_with('/') || typed.starts_with('\\') || (typed.size() > 1 && typed[1] == ':');
    const std::string path = absolute ? typed : FromQPath(directory.absolutePath()) + "/" + typed;
    return ResolvePath(path);
}

// "a.img" or "\"a.img\" \"b.img\"", as the name field shows one file and several.
std::vector<std::string> TypedNames(const QString& text)
{
    if (!text.contains(QLatin1Char('"'))) {
        return text.isEmpty() ? std::vector<std::string>() : std::vector<std::string>{FromQPath(text)};
    }
    std::vector<std::string> names;
    const QStringList parts = text.split(QLatin1Char('"'));
    for (qsizetype i = 1; i < parts.size(); i += 2) {
        if (!parts[i].isEmpty()) names.push_back(FromQPath(parts[i]));
    }
    return names;
}

// --- Questions ----------------------------------------------------------------------------------------------------

bool DirectoryIsThere(HWND owner, const FileDialogRequest& request, const std::string& path)
{
    const std::string directory = DirectoryOf(path);
    if (directory.empty() || DirectoryExists(directory)) return true;
    MessageBox(owner, path + "\nPath does not exist.\nPlease verify the correct path was given.", request.title);
    return false;
}

bool FileIsThere(HWND owner, const FileDialogRequest& request, const std::string& path)
{
    if (FileExists(path)) return true;
    MessageBox(owner, path + "\nFile not found.\nPlease verify the correct file name was given.", request.title);
    return false;
}

bool MayReplace(HWND owner, const FileDialogRequest& request, const std::string& path)
{
    if (!FileExists(path)) return true;
    return MessageBox(owner, path + " already exists.\nDo you want to replace it?", request.title,
                      BoxIcon::kExclamation, BoxButtons::kYesNo, Button::kNo) == Button::kYes;
}

bool Accepted(const FileDialogRequest& request, const std::string& path)
{
    const bool saving = request.mode == FileDialogMode::kSave;
    if (!saving && !FileIsThere(request.owner, request, path)) return false;
    if (request.accept) return request.accept(path);
    return !saving || MayReplace(request.owner, request, path);
}

// The paths with their extensions; empty if the operator was told, or decided, that they won't do.
std::vector<std::string> CheckedPaths(const FileDialogRequest& request, std::vector<std::string> paths)
{
    const bool saving = request.mode == FileDialogMode::kSave;
    for (std::string& path : paths) {
        path = ResolvePath(WithExtension(path, request.defaultExtension, !saving));
        if (!DirectoryIsThere(request.owner, request, path) || !Accepted(request, path)) return {};
    }
    return paths;
}

// --- The dialog ---------------------------------------------------------------------------------------------------

// The toolkit takes patterns from the brackets of a filter's text. Its own dialog compares without regard to case and
// the texts are put back over it; a desktop's dialog gets both cases.
QString ToolkitFilter(const FileFilter& filter, bool native)
{
    const std::string_view text = filter.text.substr(0, filter.text.find(" ("));
    std::string pattern = filter.pattern == "*.*" ? "*" : std::string(filter.pattern);
    if (native && UpperAscii(pattern) != pattern) pattern.append(1, ' ').append(UpperAscii(filter.pattern));
    return ToQString(text) + QStringLiteral(" (") + ToQString(pattern) + QStringLiteral(")");
}

// Line icons in place of the toolkit's own.
class LineIconProvider : public QAbstractFileIconProvider {
  public:
    QIcon icon(IconType type) const override
    {
        return IconNamed(type == File ? "file" : type == Computer ? "computer" : "folder");
    }
    QIcon icon(const QFileInfo& info) const override { return icon(info.isDir() ? Folder : File); }
};

void SetButtonIcons(const QFileDialog& dialog)
{
    constexpr std::pair<const char*, std::string_view> kIcons[] = {
        {"backButton", "left"},           {"forwardButton", "right"}, {"toParentButton", "up"},
        {"newFolderButton", "newfolder"}, {"listModeButton", "grid"}, {"detailModeButton", "list"}};
    for (const auto& [name, icon] : kIcons) {
        if (auto* button = dialog.findChild<QToolButton*>(QLatin1String(name))) button->setIcon(IconNamed(icon));
    }
}

class FileDialog : public QFileDialog {
  public:
    FileDialog(QWidget* parent, const FileDialogRequest& request)
        : QFileDialog(parent), request_(request), native_(!RunsOffscreen() && !IdleHookIsSet())
    {
        setOption(DontUseNativeDialog, !native_);
        setOption(DontConfirmOverwrite, true);
        setWindowTitle(ToQString(request.title));
        setAcceptMode(request.mode == FileDialogMode::kSave ? AcceptSave : AcceptOpen);
        setFileMode(ToolkitMode());
        SetFilters();
        setDirectory(request.directory.empty() ? QDir::currentPath() : ToQPath(ResolvePath(request.directory)));
        if (!OfferedName().empty()) selectFile(ToQPath(OfferedName()));
        if (NameField() != nullptr) ArrangeOwn();  // also where the desktop has no dialog of its own
        setWindowModality(parent != nullptr ? Qt::WindowModal : Qt::ApplicationModal);
    }

    // Ends the dialog if the names stand up to its questions.
    void TakePaths(const std::vector<std::string>& paths)
    {
        if (paths.empty() || asking_) return;
        asking_ = true;
        std::vector<std::string> checked = CheckedPaths(request_, paths);
        asking_ = false;
        if (checked.empty()) return;
        chosen_ = std::move(checked);
        done(Accepted);
    }

    // As if typed: names without a directory lie in the one that is shown.
    bool Choose(const std::vector<std::string>& names)
    {
        if (names.empty() || (names.size() > 1 && request_.mode != FileDialogMode::kOpenMany)) return false;
        Take(names);
        return true;
    }

    FrontFileDialog Describe() const
    {
        FrontFileDialog front;
        front.title = request_.title;
        for (const FileFilter& filter : request_.filters) front.filters.emplace_back(filter.text);
        front.directory = FromQPath(directory().absolutePath());
        const auto* field = NameField();
        front.name = field != nullptr ? FromQPath(field->text()) : OfferedName();
        return front;
    }

    bool Native() const { return native_; }
    const std::vector<std::string>& Chosen() const { return chosen_; }

    void accept() override
    {
        const auto* field = NameField();
        if (native_ || field == nullptr) {
            QFileDialog::accept();
            return;
        }
        const std::vector<std::string> names = TypedNames(field->text());
        Take(names);
    }

    void reject() override
    {
        if (!QuitPosted()) TellOperatorAct({.kind = OperatorAct::Kind::kCancel});
        QFileDialog::reject();
    }

  private:
    void Take(const std::vector<std::string>& names)
    {
        if (names.empty() || asking_) return;
        const std::vector<std::string> paths = WholePaths(names);
        TellOperatorAct({.kind = OperatorAct::Kind::kChoose, .paths = paths});
        if (!Listed(names)) TakePaths(paths);
    }

    // A pattern is the filter's business.
    std::string OfferedName() const { return IsPattern(request_.name) ? std::string() : request_.name; }

    // A directory is entered, and a pattern shows what fits it: neither names a file.
    bool Listed(const std::vector<std::string>& names)
    {
        if (names.size() != 1) return false;
        const std::string path = WholePaths(names).front();
        if (DirectoryExists(path)) {
            setDirectory(ToQPath(path));
            return true;
        }
        const std::string directory = DirectoryOf(path);
        const std::string pattern = path.substr(directory.size());
        if (!IsPattern(pattern) || FileExists(path)) return false;
        if (DirectoryExists(directory)) setDirectory(ToQPath(directory));
        setNameFilter(ToQString(pattern));
        return true;
    }

    // Whether a file exists is asked by us, so that the toolkit may not refuse it first.
    FileMode ToolkitMode() const
    {
        if (request_.mode == FileDialogMode::kOpenMany) return ExistingFiles;
        return native_ && request_.mode == FileDialogMode::kOpen ? ExistingFile : AnyFile;
    }

    void ArrangeOwn()
    {
        SetButtonIcons(*this);
        setIconProvider(&iconProvider_);
        resize(kDialogSize);
        if (auto* splitter = findChild<QSplitter*>()) {
            splitter->setSizes({kSideWidth, kDialogSize.width() - kSideWidth});
        }
        const auto* table = findChild<QTreeView*>(QStringLiteral("treeView"));
        if (table == nullptr) return;
        for (int column = 0; column < static_cast<int>(kColumnWidths.size()); ++column) {
            table->header()->resizeSection(column, kColumnWidths.at(static_cast<std::size_t>(column)));
        }
    }

    void SetFilters()
    {
        QStringList filters;
        for (const FileFilter& filter : request_.filters) filters << ToolkitFilter(filter, native_);
        setNameFilters(filters);
        auto* list = native_ ? nullptr : findChild<QComboBox*>(QStringLiteral("fileTypeCombo"));
        for (int i = 0; list != nullptr && i < list->count(); ++i) {
            list->setItemText(i, ToQString(request_.filters[static_cast<std::size_t>(i)].text));
        }
    }

    QLineEdit* NameField() const { return findChild<QLineEdit*>(QStringLiteral("fileNameEdit")); }

    std::vector<std::string> WholePaths(const std::vector<std::string>& names) const
    {
        std::vector<std::string> paths(names.size());
        std::transform(names.begin(), names.end(), paths.begin(),
                       [this](const std::string& name) { return WholePath(directory(), name); });
        return paths;
    }

    const FileDialogRequest& request_;
    LineIconProvider iconProvider_;
    const bool native_;
    bool asking_ = false;
    std::vector<std::string> chosen_;
};

// A desktop's dialog is gone before its names can be looked at: it comes back with the next attempt.
std::vector<std::string> RunNative(FileDialog& dialog, const FileDialogRequest& request)
{
    while (!QuitPosted() && dialog.exec() == QDialog::Accepted) {
        const QStringList selected = dialog.selectedFiles();
        std::vector<std::string> paths(static_cast<std::size_t>(selected.size()));
        std::transform(selected.begin(), selected.end(), paths.begin(), FromQPath);
        TellOperatorAct({.kind = OperatorAct::Kind::kChoose, .paths = paths});
        std::vector<std::string> checked = CheckedPaths(request, std::move(paths));
        if (!checked.empty()) return checked;
    }
    return {};
}

ModalEntry EntryOf(FileDialog& dialog)
{
    ModalEntry entry;
    entry.widget = &dialog;
    entry.file = [&dialog] { return dialog.Describe(); };
    entry.chooseFiles = [&dialog](const std::vector<std::string>& names) { return dialog.Choose(names); };
    entry.cancelFiles = [&dialog] { dialog.reject(); };
    return entry;
}

}  // namespace

FileDialogResult RunFileDialog(const FileDialogRequest& request)
{
    if (FaultIsSet("file dialog")) return {{}, kDialogFailure};

    FileDialog dialog(OwnerWidget(request.owner), request);
    const FrontFileDialog shown = dialog.Describe();
    Transcribe(
        "file",
        {{"title", shown.title}, {"filters", shown.filters}, {"directory", shown.directory}, {"name", shown.name}});
    FileDialogResult result;
    {
        const ModalScope inFront(EntryOf(dialog));
        if (dialog.Native()) {
            result.paths = RunNative(dialog, request);
        } else if (!QuitPosted() && dialog.exec() == QDialog::Accepted) {
            result.paths = dialog.Chosen();
        }
    }
    Transcribe("chosen", {{"paths", result.paths}});
    return result;
}

}  // namespace kelvo
