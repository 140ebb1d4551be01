#include "record/buffer_file_dialogs.h"

#include "imagefile/header.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/text.h"
#include "record/buffer_file.h"
#include "resources/help_contexts.h"
#include "state/buffer_state_write.h"
#include "state/camera_config.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/status.h"

#include <cstdint>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kelvo {

namespace {

constexpr int kFileName = 1370;
constexpr int kFirstFrame = 1371;
constexpr int kLastFrame = 1372;
constexpr int kTop = 1374;
constexpr int kLeft = 1375;
constexpr int kBottom = 1376;
constexpr int kRight = 1377;
constexpr int kLoadAt = 1614;

// What the dialogs ask for.
struct Transfer {
    std::int32_t first = 0;
    std::int32_t last = 0;
    std::int32_t top = 0;
    std::int32_t left = 0;
    std::int32_t bottom = 0;
    std::int32_t right = 0;
    std::int32_t loadAt = 0;
};

Transfer asked;    // what stands in the fields, as far as it was a number
Transfer largest;  // what there is: the fields of the start
std::int32_t lastSlot = 0;

struct Field {
    int id;
    std::int32_t Transfer::*value;
    const std::int32_t* most;   // the largest number
    const char* hint;           // on the status line while it has the focus, before the largest number
    std::string_view noNumber;  // where the text isn't one
};

constexpr std::string_view kStartRefused = "Start frame must be 0 to # of frames in buffer.";
constexpr std::string_view kEndRefused = "End Frame must be greater than or equal to Start Frame.";

const Field kLoadFields[] = {
    {kFirstFrame, &Transfer::first, &largest.last, "Start Frame range 0 - ", kStartRefused},
    {kLastFrame, &Transfer::last, &largest.last, "End Frame range 0 - ", kEndRefused},
    {kTop, &Transfer::top, &largest.bottom, "Upper row range 0 - ", "Upper row must be an integer."},
    {kLeft, &Transfer::left, &largest.right, "Upper Column range 0 - ", "Left column must be an integer."},
    {kBottom, &Transfer::bottom, &largest.bottom, "Lower Row range 1 - ", "Lower row must be an integer."},
    {kRight, &Transfer::right, &largest.right, "Lower right col range 1 - ", "Right column must be an integer."},
    // The text of the field before it: operators know it so.
    {kLoadAt, &Transfer::loadAt, &lastSlot, "Starting Image frame range 0 - ", "Right column must be an integer."},
};
const Field kSaveFields[] = {
    {kFirstFrame, &Transfer::first, &largest.last, "Start Frame Range:0 to ", kStartRefused},
    {kLastFrame, &Transfer::last, &largest.last, "End Frame Range:0 to ", kEndRefused},
    {kTop, &Transfer::top, &largest.bottom, "Upper left Row Range:0 to ", "Upper row is an invalid number."},
    {kLeft, &Transfer::left, &largest.right, "Upper Left Column Range:0 to ", "Left column is an invalid number."},
    {kBottom, &Transfer::bottom, &largest.bottom, "Lower Right Row Range:0 to ", "Lower row is an invalid number."},
    {kRight, &Transfer::right, &largest.right, "Lower Right Column Range:0 to ", "Right column is an invalid number."},
};

bool loads = false;  // which of the two is open
std::span<const Field> Fields()
{
    return loads ? std::span<const Field>(kLoadFields) : std::span<const Field>(kSaveFields);
}

void ShowField(HWND dialog, const Field& field)
{
    SetDlgItemInt(dialog, field.id, asked.*field.value);
}

void ShowFields(HWND dialog)
{
    for (const Field& field : Fields()) ShowField(dialog, field);
}

void ShowHint(HWND /*dialog*/, int id)
{
    for (const Field& field : Fields()) {
        if (field.id != id) continue;
        StatusMessage(Format("%s%d", field.hint, *field.most), kLeftAligned);
    }
}

// ---- Ok

bool ReadField(HWND dialog, const Field& field)
{
    const std::optional<std::int32_t> number = ScanDecimal(GetDlgItemText(dialog, field.id));
    if (number) {
        asked.*field.value = *number;
        return true;
    }
    ShowField(dialog, field);
    MessageBox(dialog, field.noNumber, "Not a valid Number");
    FocusDlgItem(dialog, field.id);
    return false;
}

bool ReadFields(HWND dialog)
{
    for (const Field& field : Fields()) {
        if (!ReadField(dialog, field)) return false;
    }
    return true;
}

struct Pair {
    std::int32_t Transfer::*low;
    std::int32_t Transfer::*high;
    int lowId;
    std::string_view refused;
};
constexpr Pair kPairs[] = {
    {&Transfer::top, &Transfer::bottom, kTop, "Upper row must be a # less than the lower row."},
    {&Transfer::left, &Transfer::right, kLeft, "Left column must be a # less than the right column."},
    {&Transfer::first, &Transfer::last, kFirstFrame, kEndRefused},
};

// In order, and inside what there is; otherwise both are reset.
bool CheckPair(HWND dialog, const Pair& pair)
{
    const bool inOrder = asked.*pair.low <= asked.*pair.high;
    if (inOrder && asked.*pair.low >= largest.*pair.low && asked.*pair.high <= largest.*pair.high) return true;
    asked.*pair.low = largest.*pair.low;
    asked.*pair.high = largest.*pair.high;
    ShowFields(dialog);
    RefuseField(dialog, pair.lowId, pair.refused);
    return false;
}

bool CheckPairs(HWND dialog)
{
    for (const Pair& pair : kPairs) {
        if (!CheckPair(dialog, pair)) return false;
    }
    return true;
}

void TakeOver()
{
    write::buffer.BufferFirstFrame = asked.first;
    write::buffer.BufferLastFrame = asked.last;
    write::buffer.BufferRectTop = asked.top;
    write::buffer.BufferRectLeft = asked.left;
    write::buffer.BufferRectBottom = asked.bottom;
    write::buffer.BufferRectRight = asked.right;
    if (loads) write::buffer.BufferLoadAt = asked.loadAt;
}

void End(HWND dialog, int result)
{
    StatusString(kIdleHint, kLeftAligned);
    EndDialog(dialog, result);
}

// ---- Opening

bool ReadLargestOfFile(HWND dialog)
{
    ImageHeaderRecord plain;
    if (ReadImageHeader(FilePathBuf, plain) < 0) return false;
    const std::optional<ImageHeaderRecord> header = ReadBufferHeader(FilePathBuf);
    if (!header) {
        MessageBox(dialog, "Error reading Image File Header\n" + FilePathBuf, kMessageCaption);
        return false;
    }
    largest = {.first = 0,
               .last = static_cast<std::int32_t>(header->FrameCount) - 1,
               .top = header->TopRow,
               .left = header->LeftColumn,
               .bottom = header->BottomRow,
               .right = header->RightColumn};
    return true;
}

bool ReadLargestOfStore(HWND dialog)
{
    largest = {.first = BufferFirstFrame,
               .last = BufferLastFrame,
               .top = BufferRectTop,
               .left = BufferRectLeft,
               .bottom = BufferRectBottom,
               .right = BufferRectRight};
    if (BufferLastFrame + 1 > 0) return true;
    MessageBox(dialog, "No frames stored in buffer.", "QVF Vantir");
    return false;
}

void Open(HWND dialog)
{
    if (!(loads ? ReadLargestOfFile(dialog) : ReadLargestOfStore(dialog))) {
        End(dialog, 0);
        return;
    }
    asked = largest;
    lastSlot = numBufFrames - 1;
    SetDlgItemText(dialog, kFileName, FilePathBuf);
    ShowFields(dialog);
    CentreDialog(dialog);
    StatusString(loads ? kLoadBufferHint : kStoreBufferHint, kLeftAligned);
    FocusDlgItem(dialog, kFirstFrame);
}

void Accept(HWND dialog)
{
    if (!ReadFields(dialog)) return;
    // The file may have changed since the dialog opened.
    if (loads && !ReadLargestOfFile(dialog)) return;
    if (!CheckPairs(dialog)) return;
    TakeOver();
    End(dialog, 1);
}

void Cancel(HWND dialog)
{
    End(dialog, 0);
}

constexpr DialogEntry kEntries[] = {
    {kFirstFrame, ShowHint, kEditFocus},
    {kLastFrame, ShowHint, kEditFocus},
    {kTop, ShowHint, kEditFocus},
    {kLeft, ShowHint, kEditFocus},
    {kBottom, ShowHint, kEditFocus},
    {kRight, ShowHint, kEditFocus},
    {kLoadAt, ShowHint, kEditFocus},
    {kIdOk, Accept},
    {kIdCancel, Cancel},
};

LRESULT fnBUF_LOADDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
LRESULT fnBUF_SAVEDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
constexpr DialogFrame kLoadFrame{.name = "BUF_LOAD",
                                 .procedure = fnBUF_LOADDlgProc,
                                 .open = Open,
                                 .entries = kEntries,
                                 .helpContext = kHelpHostRamCapture};
constexpr DialogFrame kSaveFrame{.name = "BUF_SAVE",
                                 .procedure = fnBUF_SAVEDlgProc,
                                 .open = Open,
                                 .entries = kEntries,
                                 .helpContext = kHelpHostRamCapture};
LRESULT fnBUF_LOADDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kLoadFrame, dialog, message, wParam, lParam);
}
LRESULT fnBUF_SAVEDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kSaveFrame, dialog, message, wParam, lParam);
}

}  // namespace

int BufferLoadDialog(HWND parent)
{
    loads = true;
    return RunDialog(kLoadFrame, parent);
}

int BufferSaveDialog(HWND parent)
{
    loads = false;
    return RunDialog(kSaveFrame, parent);
}

}  // namespace kelvo
