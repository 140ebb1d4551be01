// What the journal beside a recorded sequence (imagefile/frames_file.h) tells while the sequence is on view: each
// frame's true time and number, its marks, what is missing and why. A file that is still being recorded is shown as far
// as it came; nothing here keeps its writer from going on. Whatever lies beside a sequence as its journal, the picture
// is shown.
#pragma once

#include "imagefile/frames_file.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

// Before the operator opens a file. A recording whose journal wasn't closed, and that nobody records any more, is
// offered to be made whole: "NAME wasn't closed when it was recorded." with Yes, No and Cancel. Yes checks each frame
// (imagefile/recovery.h), which Escape stops, and tells in a box where not all could be had back; No shows the file as
// it is, and isn't asked again in this run. False: the file isn't to be opened; the operator cancelled, or was told
// that a recording that has just begun has no frame yet.
bool MayViewRecording(std::string_view path);

// A frame of a file has come on view: it stands in ImageBuffer, ImageHeader describes it. Reads the journal of a file
// that is another one than before, reads on in one that grows, and has the status line tell of the frame.
void FollowRecording(std::string_view path, std::uint32_t frame);

// A file on view that has something as its journal.
struct RecordedFile {
    std::string path;
    FramesFile journal;
    std::string complaint;    // what is wrong with the journal: "its journal is damaged"; empty: nothing
    bool isUsable = false;    // it belongs to this file: its records count
    bool grows = false;       // the file is being recorded
    std::int64_t frames = 0;  // of the file, when the journal was read
    std::vector<FrameGap> gaps;
    FrameGap behindLast;  // lost when the last frame had been recorded; beforeFrame is one behind it
};
// Of the file on view; null: it has no journal.
const RecordedFile* RecordedFileOnView();
// What the journal says of a frame of the file on view, from 0; null: nothing.
const FrameRecord* RecordOnView(std::uint32_t frame);

// The file on view grows: its frames are counted anew, and the journal is read on. True where there are more than
// before; false for a file that doesn't grow.
bool LookAgain();

// "no gaps", "2 gaps, 11 frames lost", "being recorded, no gaps", or what is wrong with the journal.
std::string SummaryOf(const RecordedFile& recorded);
// The same for a button: "No gaps", "2 gaps"; "None lost" where frames were left out on purpose alone.
std::string ShortSummaryOf(const RecordedFile& recorded);
// "mark 2", "trigger", "10 lost by the board before it": what is special about a frame; empty: nothing. gaps: of its
// file.
std::string WordsOf(const FrameRecord& record, std::size_t frame, const std::vector<FrameGap>& gaps);
// "Sat Nov 21 12:04:01.123 2026", local time; empty where the record has none.
std::string TimeOf(const FrameRecord& record);

// Nothing is known, nothing was asked.
void ResetRecordedView();

}  // namespace kelvo
