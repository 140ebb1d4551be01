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
    return LastSave() ? CommandEnd::kLeaveStatus : CommandEnd::kResetStatus;
}

bool AskForName(int fileTemplate, std::int32_t mode)
{
    write::fileChoice.FileDialogTemplate = fileTemplate;
    write::saveDialog.SaveDialogMode = mode;
    return SaveDialog(hWndMain) != 0;
}

template <typename Result>
Result Noted(Result result)
{
    if (const std::optional<SavedFile>& saved = LastSave()) NoteSavedFile(saved->path, saved->frames);
    return result;
}

}  // namespace

bool AskForImageName()
{
    return AskForName(kImageTemplate, kSaveImages);
}

int SaveNamedImage()
{
    const Hourglass hourglass;
    return Noted(SaveImage(FilePathBuf, static_cast<std::uint32_t>(FramesToAverageImage)));
}

bool AskForSequenceName()
{
    return AskForName(kSequenceTemplate, kSaveSequences);
}

std::int32_t SaveNextImage()
{
    const Hourglass hourglass;
    return Noted(SaveSequence(SeqFilePath, write::saving.SeqNumber, static_cast<std::uint32_t>(FramesToAverageSeq)));
}

CommandEnd SaveImageFile()
{
    StopPlaying();
    if (!AskForImageName()) return CommandEnd::kLeaveStatus;
    SaveNamedImage();
    return EndOfSave();
}

CommandEnd NameSequence()
{
    if (!AskForSequenceName()) return CommandEnd::kLeaveStatus;
    NameSequenceForSaving(FilePathBuf);
    return CommandEnd::kResetStatus;
}

CommandEnd SaveNextOfSequence()
{
    StopPlaying();
    SaveNextImage();
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
