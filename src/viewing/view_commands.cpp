#include "viewing/view_commands.h"

#include "platform/files.h"
#include "platform/window.h"
#include "resources/ids.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "ui/recent_files.h"
#include "ui/select_file_write.h"
#include "viewing/foreign_view.h"
#include "viewing/playback.h"
#include "viewing/recorded_view.h"
#include "viewing/viewing.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace kelvo {

namespace {

constexpr FileFilter kForeign[] = {
    {"TIFF, FITS and NumPy files (*.tif *.tiff *.fits *.fit *.fts *.npy)", "*.tif *.tiff *.fits *.fit *.fts *.npy"}};

// The file that the operator chose comes on view by show. Of a file of another program the copy does, and the file
// itself is the one that was opened.
CommandEnd ShowChosen(const std::string& path, int (*show)(std::string_view file))
{
    const std::optional<std::string> file = FileToShow(path);
    const bool isShown = file && MayViewRecording(*file) && show(*file);
    if (isShown) AddRecentFile(*file == path ? ViewFilePath : path);
    return CommandEnd::kResetStatus;
}

}  // namespace

CommandEnd LoadImageFile()
{
    StopPlaying();
    write::fileChoice.FileDialogTemplate = kImageTemplate;
    write::frames.SteppingFrames = 0;
    std::string path = "*.img";
    if (!SelectFile(hWndMain, path, kSelectToOpen, nullptr, kForeign)) return CommandEnd::kLeaveStatus;
    return ShowChosen(path, [](std::string_view file) { return ViewImage(file, 0); });
}

CommandEnd NameSequenceForLoading()
{
    StopPlaying();
    write::fileChoice.FileDialogTemplate = kSequenceTemplate;
    std::string path = "*.seq";
    if (!SelectFile(hWndMain, path, kSelectToOpen, nullptr, kForeign)) return CommandEnd::kLeaveStatus;
    return ShowChosen(path, ViewSequence);
}

CommandEnd NextFrame()
{
    StopPlaying();
    if (LoadName.empty()) {
        SendMessage(hWndMain, WM_COMMAND, kCmdNameSequenceToLoad, 0);
        return CommandEnd::kLeaveStatus;
    }
    LoadNext();
    return CommandEnd::kResetStatus;
}

CommandEnd PreviousFrame()
{
    StopPlaying();
    LoadLast();
    return CommandEnd::kResetStatus;
}

void OpenStoredFiles(const std::vector<std::string>& paths)
{
    if (paths.empty()) return;
    // Added from the last to the second, they stand in their order behind the first.
    for (std::size_t i = paths.size() - 1; i > 0; --i) {
        if (FileExists(paths[i])) AddRecentFile(paths[i]);
    }
    OpenStoredFile(paths.front());
}

CommandEnd OpenRecentFile(std::size_t place)
{
    if (place < RecentFiles().size()) OpenStoredFile(std::string(RecentFiles()[place]));
    return CommandEnd::kResetStatus;
}

}  // namespace kelvo
