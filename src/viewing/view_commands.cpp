#include "viewing/view_commands.h"

#include "platform/files.h"
#include "platform/window.h"
#include "resources/ids.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "ui/recent_files.h"
#include "ui/select_file_write.h"
#include "viewing/playback.h"
#include "viewing/recorded_view.h"
#include "viewing/viewing.h"

#include <algorithm>

namespace kelvo {

namespace {

CommandEnd AfterLoad(int shown)
{
    if (shown) AddRecentFile(ViewFilePath);
    return CommandEnd::kResetStatus;
}

}  // namespace

CommandEnd LoadImageFile()
{
    StopPlaying();
    write::fileChoice.FileDialogTemplate = kImageTemplate;
    write::frames.SteppingFrames = 0;
    std::string path = "*.img";
    if (!SelectFile(hWndMain, path, kSelectToOpen)) return CommandEnd::kLeaveStatus;
    return AfterLoad(MayViewRecording(path) ? ViewImage(path, 0) : 0);
}

CommandEnd NameSequenceForLoading()
{
    StopPlaying();
    write::fileChoice.FileDialogTemplate = kSequenceTemplate;
    std::string path = "*.seq";
    if (!SelectFile(hWndMain, path, kSelectToOpen)) return CommandEnd::kLeaveStatus;
    return AfterLoad(MayViewRecording(path) ? ViewSequence(path) : 0);
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
