#include "viewing/bitmap_command.h"

#include "dibapi32/dibapi32.h"
#include "display/display_pipeline.h"
#include "display/frame_bitmap.h"
#include "grabber/board_state.h"
#include "grabber/correction.h"
#include "grabber/frame_size.h"
#include "grabber/host_frames.h"
#include "imagefile/frame_file.h"
#include "imagefile/header.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "platform/window.h"
#include "resources/dialog_ids.h"
#include "resources/help_contexts.h"
#include "state/camera_config.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/select_file.h"
#include "video/video.h"
#include "viewing/stored_view.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace kelvo {

namespace {

// What of the file on view is saved: an inclusive rectangle, and frames from first to last.
struct Selection {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;
    std::uint32_t first = 0;
    std::uint32_t last = 0;
};

Selection selection;  // the dialog's working copy
WrittenBitmaps written;

std::uint32_t FramesSelected()
{
    return selection.last - selection.first + 1;
}

// A header may claim more frames than the fields of the dialog can name.
std::uint32_t LastFrameOnView()
{
    return std::min<std::uint32_t>(ImageHeader.FrameCount - 1, std::numeric_limits<std::int32_t>::max());
}

std::uint32_t FrameOnView()
{
    return SteppingFrames && LoadName == ViewFilePath ? std::min(CurrentFrame, LastFrameOnView()) : 0;
}

void ShowSelection(HWND dialog)
{
    SetDlgItemInt(dialog, kFramesLeft, selection.left);
    SetDlgItemInt(dialog, kFramesTop, selection.top);
    SetDlgItemInt(dialog, kFramesRight, selection.right);
    SetDlgItemInt(dialog, kFramesBottom, selection.bottom);
    SetDlgItemInt(dialog, kFramesFirst, static_cast<int>(selection.first));
    SetDlgItemInt(dialog, kFramesLast, static_cast<int>(selection.last));
}

// A number within its range; otherwise the range in a box, and the focus on the field.
bool ReadField(HWND dialog, int id, std::string_view name, std::int32_t minimum, std::int32_t maximum,
               std::int32_t& value)
{
    const auto number = ScanDecimal(GetDlgItemText(dialog, id));
    if (number && *number >= minimum && *number <= maximum) {
        value = *number;
        return true;
    }
    RefuseField(
        dialog, id,
        Format("%.*s must be a number from %d to %d.", static_cast<int>(name.size()), name.data(), minimum, maximum));
    return false;
}

bool ReadSelection(HWND dialog)
{
    Selection read;
    std::int32_t first = 0;
    std::int32_t last = 0;
    const auto lastFrame = static_cast<std::int32_t>(LastFrameOnView());
    if (!ReadField(dialog, kFramesLeft, "Left", 0, ImageHeader.ImageWidth - 1, read.left) ||
        !ReadField(dialog, kFramesTop, "Top", 0, ImageHeader.ImageHeight - 1, read.top) ||
        !ReadField(dialog, kFramesRight, "Right", read.left, ImageHeader.ImageWidth - 1, read.right) ||
        !ReadField(dialog, kFramesBottom, "Bottom", read.top, ImageHeader.ImageHeight - 1, read.bottom) ||
        !ReadField(dialog, kFramesFirst, "First frame", 0, lastFrame, first) ||
        !ReadField(dialog, kFramesLast, "Last frame", first, lastFrame, last)) {
        return false;
    }
    read.first = static_cast<std::uint32_t>(first);
    read.last = static_cast<std::uint32_t>(last);
    selection = read;
    return true;
}

void AcceptSelection(HWND dialog)
{
    if (ReadSelection(dialog)) EndDialog(dialog, 1);
}

LRESULT fnFRAMESDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
constexpr DialogEntry kEntries[] = {{kIdOk, AcceptSelection}};
constexpr DialogFrame kFrame{.name = "FRAMES",
                             .procedure = fnFRAMESDlgProc,
                             .open = ShowSelection,
                             .entries = kEntries,
                             .helpContext = kHelpSaveBitmap};
LRESULT fnFRAMESDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

bool AskForSelection()
{
    return RunDialog(kFrame, hWndMain) == 1;
}

// A picture as counts in image order.
struct Picture {
    std::span<const std::int16_t> pixels;
    std::int32_t width = 0;
    std::int32_t height = 0;
};

Picture PictureOnView()
{
    return {.pixels = ImageBufferPixels(ImageHeader.ImageHeaderDataOffset),
            .width = ImageHeader.ImageWidth,
            .height = ImageHeader.ImageHeight};
}

// The rectangle alone, row by row: the bitmap's rows then follow each other without a gap. Empty where there is no
// memory for it, or the picture doesn't hold what its header says.
std::vector<std::int16_t> CutRectangle(const Picture& picture)
{
    const auto width = static_cast<std::size_t>(picture.width);
    const auto columns = static_cast<std::size_t>(selection.right + 1 - selection.left);
    const auto rows = static_cast<std::size_t>(selection.bottom + 1 - selection.top);
    std::vector<std::int16_t> cut;
    if (picture.pixels.empty() || picture.pixels.size() < width * static_cast<std::size_t>(picture.height)) return cut;
    if (!AllocateBlock(cut, columns * rows)) return cut;
    for (std::size_t row = 0; row < rows; ++row) {
        const auto first = static_cast<std::size_t>(selection.top) + row;
        const auto line = picture.pixels.subspan(first * width + static_cast<std::size_t>(selection.left), columns);
        std::ranges::copy(line, cut.begin() + static_cast<std::ptrdiff_t>(row * columns));
    }
    return cut;
}

Dib MakeSelectionBitmap(const Picture& picture)
{
    const std::vector<std::int16_t> cut = CutRectangle(picture);
    if (cut.empty()) return {};
    const FrameRect whole{0, 0, selection.right - selection.left, selection.bottom - selection.top};
    return MakeFrameBitmap(cut, &whole);
}

void TellNoVideoMemory()
{
    MessageBox(hWndMain, "Failure to allocate video memory!", kMessageCaption);
}

bool IsPng(std::string_view path)
{
    std::string extension;
    SplitPath(path, nullptr, nullptr, nullptr, &extension);
    return EqualIgnoringCase(extension, ".png");
}

bool WriteBitmap(const Dib& bitmap, const std::string& path)
{
    const int error = IsPng(path) ? SavePng(bitmap, path) : SaveDib(bitmap, path);
    if (error != 0) {
        DibError(error);
        return false;
    }
    written.paths.push_back(path);
    return true;
}

// Leaves room in the name for the digits of the range.
std::string WithRoomForDigits(const std::string& path)
{
    std::string drive;
    std::string directory;
    std::string name;
    std::string extension;
    SplitPath(path, &drive, &directory, &name, &extension);
    const double digits = std::floor(std::log10(static_cast<double>(selection.last - selection.first)));
    name.resize(std::min(name.size(), static_cast<std::size_t>(254 - digits)));
    return MakePath(drive, directory, name, extension);
}

// Asks once about all files of the range that are there.
bool AgreeToReplaceRange(const std::string& chosen)
{
    const std::string path = WithRoomForDigits(chosen);
    std::uint32_t there = 0;
    std::string first;
    for (std::uint32_t frame = selection.first; frame <= selection.last; ++frame) {
        const std::string target = BitmapFileName(path, selection.first, selection.last, frame);
        if (FileExists(target) && there++ == 0) first = target;
    }
    if (there == 0) return true;
    const std::string text = Format("%u of the %u files exist already, the first of them:\n", there, FramesSelected()) +
                             first + "\n\nDo you want to replace them?";
    return MessageBox(hWndMain, text, "Save File", BoxIcon::kExclamation, BoxButtons::kYesNo, Button::kNo) ==
           Button::kYes;
}

std::string AskForName()
{
    written.wanted = FramesSelected();
    std::string path = "*.bmp";
    if (written.wanted == 1) return SelectFile(hWndMain, path, kSelectToSave) ? path : std::string();
    return SelectFile(hWndMain, path, kSelectToSave, AgreeToReplaceRange) ? WithRoomForDigits(path) : std::string();
}

// The file on view read beside it, frame by frame: what the operator looks at stays.
class FramesOfFile {
  public:
    // False after a box.
    bool Read(std::uint32_t frame)
    {
        const std::string path(ViewFilePath);
        std::optional<File> file = File::Open(path, FileMode::kRead);
        if (!file) {
            MessageBox(hWndMain, "Failed to open file\n" + path, "Read File Error");
            return false;
        }
        ImageHeaderRecord header;
        const std::int32_t headerBytes = ReadImageHeader(path, header);
        if (headerBytes < 0) return false;
        const bool same = header.ImageWidth == ImageHeader.ImageWidth &&
                          header.ImageHeight == ImageHeader.ImageHeight &&
                          header.SampleBytes == ImageHeader.SampleBytes &&
                          header.ImageHeaderDataOffset == ImageHeader.ImageHeaderDataOffset;
        switch (same ? ReadFrameRecord(*file, header, headerBytes, frame, record_) : FrameRead::kShort) {
            case FrameRead::kNoMemory:
                TellNoViewMemory();
                return false;
            case FrameRead::kShort:
                MessageBox(hWndMain, "Failed to read entire file\n" + path, kMessageCaption, BoxIcon::kInformation);
                return false;
            case FrameRead::kComplete:
                break;
        }
        return MakeCounts(header);
    }
    Picture Shown() const
    {
        const auto prefix = static_cast<std::size_t>(ImageHeader.ImageHeaderDataOffset) & ~std::size_t{1};
        const std::size_t pixels = PixelCount(ImageHeader);
        if (counts_.size() < prefix / 2 + pixels) return {};
        return {.pixels = std::span(counts_).subspan(prefix / 2, pixels),
                .width = ImageHeader.ImageWidth,
                .height = ImageHeader.ImageHeight};
    }

  private:
    // As a frame on view is made of its record.
    bool MakeCounts(const ImageHeaderRecord& header)
    {
        if (!AllocateBlock(counts_, record_.size() / 2)) {
            TellNoViewMemory();
            return false;
        }
        const auto bytes = std::as_writable_bytes(std::span(counts_));
        const std::span<std::uint8_t> block(reinterpret_cast<std::uint8_t*>(bytes.data()), bytes.size());
        if (header.SampleBytes == 4) {
            FloatRecordToCounts(record_, header, block);
        } else {
            std::copy_n(record_.begin(), block.size(), block.begin());
        }
        if (header.ByteSwap == 0) SwapRecordWords(block, header);
        return true;
    }

    std::vector<std::uint8_t> record_;
    std::vector<std::int16_t> counts_;
};

bool SaveStoredFrames()
{
    const bool several = ImageHeader.FrameCount > 1;
    selection = {.left = 0,
                 .top = 0,
                 .right = ImageHeader.ImageWidth - 1,
                 .bottom = ImageHeader.ImageHeight - 1,
                 .first = several ? FrameOnView() : 0,
                 .last = several ? FrameOnView() : 0};
    if (several && !AskForSelection()) return false;

    FramesOfFile frames;
    std::string path;
    for (std::uint32_t frame = selection.first; frame <= selection.last; ++frame) {
        if (several && !frames.Read(frame)) return false;
        const Dib bitmap = MakeSelectionBitmap(several ? frames.Shown() : PictureOnView());
        if (!bitmap) {
            TellNoVideoMemory();
            return false;
        }
        PaintBitmap(bitmap, hWndMain);
        if (frame == selection.first) path = AskForName();
        if (path.empty()) return false;
        if (!WriteBitmap(bitmap, BitmapFileName(path, selection.first, selection.last, frame))) return false;
    }
    return true;
}

// The camera's frame as the screen shows it, a new one, the frozen one or a stored burst's that replay shows, but
// without the image cursor. False: there is no picture.
bool TakeCameraFrame(std::vector<std::int16_t>& frame)
{
    const std::size_t values = CameraFrameValues();
    if (const auto replayed = ReplayedFrame(); !replayed.empty() && replayed.size() == frame.size()) {
        std::ranges::copy(replayed, frame.begin());
        return true;
    }
    if (!GrabberPresent || values == 0 || !RefreshLiveFrame() || LiveFrame.size() != values) return false;
    CorrectLiveFrame(std::span(RawFrame).first(values), frame, DataOffset, {});
    return true;
}

bool SaveCameraFrame()
{
    std::vector<std::int16_t> frame;
    if (!AllocateBlock(frame, CameraFrameValues())) {
        TellNoVideoMemory();
        return false;
    }
    if (!TakeCameraFrame(frame)) {
        MessageBox(hWndMain, "Video Data Acquisition Failed, Hardware error", kMessageCaption);
        return false;
    }
    const Picture picture{.pixels = frame, .width = ActiveConfig.Hroi, .height = ActiveConfig.Vroi};
    // What the detector reads may be a part of the frame, never more than it.
    selection = {.left = 0,
                 .top = 0,
                 .right = std::clamp(ActiveConfig.Hactive, 1, picture.width) - 1,
                 .bottom = std::clamp(ActiveConfig.Vactive, 1, picture.height) - 1,
                 .first = 0,
                 .last = 0};
    EnsureDisplayLut();
    const Dib bitmap = MakeSelectionBitmap(picture);
    if (!bitmap) {
        TellNoVideoMemory();
        return false;
    }
    const std::string path = AskForName();
    return !path.empty() && WriteBitmap(bitmap, path);
}

}  // namespace

std::string BitmapFileName(std::string_view path, std::uint32_t first, std::uint32_t last, std::uint32_t frame)
{
    const std::uint32_t span = last - first;
    if (span == 0) return std::string(path);
    std::string drive;
    std::string directory;
    std::string name;
    SplitPath(path, &drive, &directory, &name, nullptr);
    const int digits = span >= 1000 ? 4 : span >= 100 ? 3 : span >= 10 ? 2 : 1;
    return Format("%s%s%s%.*u%s", drive.c_str(), directory.c_str(), name.c_str(), digits, frame - first,
                  IsPng(path) ? ".png" : ".bmp");
}

int SaveBitmapCommand()
{
    written = {};
    const bool saved = ViewingFile ? SaveStoredFrames() : SaveCameraFrame();
    InvalidateRect(hWndMain, nullptr, true);
    return saved ? 1 : 0;
}

const WrittenBitmaps& LastBitmaps()
{
    return written;
}

void ResetBitmapCommand()
{
    written = {};
}

}  // namespace kelvo
