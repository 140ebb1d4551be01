#include "shell/support_dialog.h"

#include "platform/archive.h"
#include "platform/box.h"
#include "platform/clock.h"
#include "platform/dialog.h"
#include "platform/file_dialog.h"
#include "platform/files.h"
#include "platform/pointer.h"
#include "platform/text.h"
#include "resources/dialog_ids.h"
#include "resources/help_contexts.h"
#include "shell/support_bundle.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/select_file.h"
#include "ui/status.h"
#include "viewing/written_note.h"

#include <array>
#include <cstddef>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

namespace {

constexpr int kWritten = 1;

// While the dialog is open: what is shown is what is written.
std::vector<NamedText> files;
std::string written;

void ShowChosen(HWND dialog)
{
    const int chosen = ListSelection(dialog, kSupportList);
    if (chosen < 0) return;
    SetDlgItemText(dialog, kSupportText, files.at(static_cast<std::size_t>(chosen)).text);
}

void Open(HWND dialog)
{
    std::size_t bytes = 0;
    for (const NamedText& file : files) {
        ListAdd(dialog, kSupportList, file.name);
        bytes += file.text.size();
    }
    SetDlgItemText(dialog, kSupportSize, Format("%zu files, %zu kB", files.size(), (bytes + 999) / 1000));
    ListSelect(dialog, kSupportList, 0);
    ShowChosen(dialog);
    FocusDlgItem(dialog, kSupportList);
}

// "kelvo-support-20261123-1504.zip", by local time.
std::string NameOfToday()
{
    const std::time_t now = WallClockSeconds();
    std::tm local{};
    localtime_r(&now, &local);
    std::array<char, 64> name{};
    std::strftime(name.data(), name.size(), "kelvo-support-%Y%m%d-%H%M.zip", &local);
    return name.data();
}

std::string AskForName(HWND dialog, const std::string& directory)
{
    const FileDialogResult chosen =
        RunFileDialog({.owner = dialog,
                       .mode = FileDialogMode::kSave,
                       .title = "Save support files",
                       .filters = {{"Zip archives (*.zip)", "*.zip"}, {"All Files (*.*)", "*.*"}},
                       .directory = directory,
                       .name = NameOfToday(),
                       .defaultExtension = "zip"});
    if (chosen.error != 0) TellFileDialogError(chosen.error);
    return chosen.paths.empty() ? std::string() : chosen.paths.front();
}

bool WriteFiles(const std::string& path)
{
    const Hourglass hourglass;
    const std::optional<std::string> archive = ZipOf(files, WallClockSeconds());
    return archive && ReplaceFile(path, *archive);
}

void Save(HWND dialog)
{
    DirectoryForSaving directory;
    const std::string path = AskForName(dialog, directory.Path());
    if (path.empty()) return;
    if (!WriteFiles(path)) {
        MessageBox(dialog, "Unable to write the support files to\n" + path, kMessageCaption, BoxIcon::kExclamation);
        return;
    }
    directory.Keep();
    written = path;
    EndDialog(dialog, kWritten);
}

constexpr DialogEntry kEntries[] = {{kIdOk, Save}, {kSupportList, ShowChosen, kSelectionChanged}};
constexpr DialogFrame kFrame{
    .name = "SUPPORT", .procedure = fnSUPPORTDlgProc, .open = Open, .entries = kEntries, .helpContext = kHelpSupport};

}  // namespace

CommandEnd SaveSupportFiles()
{
    {
        const Hourglass hourglass;
        files = GatherSupportFiles();
    }
    const int result = RunDialog(kFrame, hWndMain);
    files.clear();
    return result == kWritten ? NoteSavedArchive(written) : CommandEnd::kResetStatus;
}

LRESULT fnSUPPORTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

}  // namespace kelvo
