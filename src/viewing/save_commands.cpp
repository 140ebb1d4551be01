#include "viewing/save_commands.h"

#include "platform/pointer.h"
#include "state/windows.h"
#include "ui/select_file_write.h"
#include "ui/status.h"
#include "viewing/bitmap_command.h"
#include "viewing/playback.h"
#include "viewing/save_dialog_write.h"
#include "viewing/saving_write.h"
#include "viewing/sequence_naming.h"
#include "viewing/written_note.h"

#include <cstdint>
#include <optional>

namespace kelvo {

namespace {

// A save that failed has told it.
CommandEnd EndOfSave()
{
    const std::optional<SavedFile>& saved = LastSave();
    return saved ? NoteSavedFile(saved->path, saved->frames) : CommandEnd::kResetStatus;
}

}  // namespace

CommandEnd SaveImageFile()
{
    StopPlaying();
    write::fileChoice.FileDialogTemplate = kImageTemplate;
    write::saveDialog.SaveDialogMode = kSaveImages;
    if (!SaveDialog(hWndMain)) return CommandEnd::kLeaveStatus;
    const Hourglass hourglass;
    SaveImage(FilePathBuf, static_cast<std::uint32_t>(FramesToAverageImage));
    return EndOfSave();
}

CommandEnd NameSequence()
{
    write::fileChoice.FileDialogTemplate = kSequenceTemplate;
    write::saveDialog.SaveDialogMode = kSaveSequences;
    if (!SaveDialog(hWndMain)) return CommandEnd::kLeaveStatus;
    NameSequenceForSaving(FilePathBuf);
    return CommandEnd::kResetStatus;
}

CommandEnd SaveNextOfSequence()
{
    StopPlaying();
    const Hourglass hourglass;
    SaveSequence(SeqFilePath, write::saving.SeqNumber, static_cast<std::uint32_t>(FramesToAverageSeq));
    return EndOfSave();
}

CommandEnd SaveBitmap()
{
    StopPlaying();
    SaveBitmapCommand();
    const WrittenBitmaps& last = LastBitmaps();
    if (!last.paths.empty()) return NoteSavedBitmaps(last.paths, last.wanted);
    // What an earlier save wrote would read as what this one did.
    return StatusNoteStands() ? CommandEnd::kResetStatus : CommandEnd::kLeaveStatus;
}

}  // namespace kelvo
