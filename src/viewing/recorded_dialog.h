// The dialog RECORDED: what is missing in the recorded sequence on view, its marks, and what was written down when it
// was recorded.
#pragma once

#include "platform/types.h"
#include "viewing/recorded_view.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kelvo {

// Stops playing and opens the dialog beside the picture, from which the frames of gaps and marks can be shown.
// "There is no recorded sequence on view." where the file on view has no journal.
void ShowGapsAndMarks();

// A line of its lists, and the frame to which it leads.
struct RecordedLine {
    std::string text;
    std::int64_t frame = -1;  // none
    friend bool operator==(const RecordedLine&, const RecordedLine&) = default;
};
// "number 101: 2 missing, 2 lost by the board; before frame 100, 12:04:01.123", and at the end what is missing behind
// the last frame.
std::vector<RecordedLine> GapLines(const RecordedFile& recorded);
// "frame 40: trigger, 12:04:00.523"
std::vector<RecordedLine> MarkLines(const RecordedFile& recorded);
// How the recording ended: "It was stopped by the operator."
std::string EndOf(const RecordedFile& recorded);
// What the journal's head says, a line each: "Camera: InSb 320 x 256".
std::string HeadTextOf(const RecordedFile& recorded);

LRESULT fnRECORDEDDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

}  // namespace kelvo
