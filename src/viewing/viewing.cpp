#include "viewing/viewing.h"

#include "display/display_pipeline.h"
#include "display/unit_list.h"
#include "display/units.h"
#include "imagefile/frame_file.h"
#include "imagefile/header_write.h"
#include "imagefile/sequence_names.h"
#include "platform/box.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/menu.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows_write.h"
#include "video/video.h"
#include "viewing/coefficient_view.h"
#include "viewing/fitted_contrast.h"
#include "viewing/recorded_view.h"
#include "viewing/stored_view.h"

#include <algorithm>
#include <optional>

namespace kelvo {

namespace {

constexpr int kReplayMenuItem = 153;  // a menu of a customer may hold it: checked, each load starts the live timer

void TellShortRead(std::string_view path)
{
    MessageBox(hWndMain, "Failed to read entire file\n" + std::string(path), kMessageCaption, BoxIcon::kInformation);
    FreeImageBuffer();
}

std::optional<File> OpenToView(std::string_view path)
{
    std::optional<File> file = File::Open(path, FileMode::kRead);
    if (file) return file;
    if (SteppingFrames) {
        MessageBeep(Sound::kInformation);
    } else {
        MessageBox(hWndMain, "Failed to open file\n" + std::string(path), "Read File Error");
    }
    return file;
}

// A file of floats goes through a block of its own; what is on view are counts.
FrameRead ReadFloatRecord(File& file, std::int32_t headerSize, std::uint32_t frame)
{
    std::vector<std::uint8_t> scratch;
    const std::int64_t bytes = FrameRecordBytes(ImageHeader);
    const FrameRead read = ReadFrameRecord(file, ImageHeader, headerSize, frame, scratch);
    if (read == FrameRead::kNoMemory) FreeImageBuffer();
    if (read != FrameRead::kComplete) return read;
    if (!EnsureBlock(write::frames.ImageBuffer, static_cast<std::size_t>(bytes))) return FrameRead::kNoMemory;
    write::display.ViewScaleGain = 1.0F;
    write::display.ViewScaleOffset = 0.0F;
    FloatRecordToCounts(scratch, ImageHeader, write::frames.ImageBuffer);
    write::file.ImageHeader.DataType = 8;
    SetDisplayUnit(kUnitValue);
    return FrameRead::kComplete;
}

// Leaves the record's 16-bit form in ImageBuffer.
FrameRead ReadRecord(File& file, std::int32_t headerSize, std::uint32_t frame)
{
    if (ImageHeader.SampleBytes == 4) return ReadFloatRecord(file, headerSize, frame);
    const FrameRead read = ReadFrameRecord(file, ImageHeader, headerSize, frame, write::frames.ImageBuffer);
    if (read == FrameRead::kComplete && (DisplayUnit == kUnitCelsius || DisplayUnit == kUnitDeviationCelsius)) {
        SetDisplayUnit(kUnitCelsius);
    }
    return read;
}

}  // namespace

int ViewImage(std::string_view path, std::uint32_t frame)
{
    // The result doesn't count: a coefficient file goes on to be read as an image file, as it always has.
    if (IsCoefficientFile(path)) ViewCoefficientFile(path);

    HeaderKeeper header;
    const std::int32_t headerSize = ReadImageHeader(path, write::file.ImageHeader);
    if (headerSize < 0) return 0;
    if (ImageHeader.SampleBytes != 2 && ImageHeader.SampleBytes != 4) {
        MessageBox(hWndMain, Format("Invalid data sample size: %d bytes per sample", ImageHeader.SampleBytes),
                   "Use different function to read this image file.");
        return 0;
    }
    std::optional<File> file = OpenToView(path);
    if (!file) return 0;

    TakeCursorOff();
    if (SteppingFrames) write::frames.LastFrame = ImageHeader.FrameCount - 1;
    FreezeLiveVideo();

    switch (ReadRecord(*file, headerSize, frame)) {
        case FrameRead::kNoMemory:
            TellNoViewMemory();
            return 0;
        case FrameRead::kShort:
            TellShortRead(path);
            return 0;
        case FrameRead::kComplete:
            break;
    }
    if (ImageHeader.ByteSwap == 0) SwapRecordWords(write::frames.ImageBuffer, ImageHeader);
    header.KeepNew();

    const bool another = !ViewingFile || path != ViewFilePath;
    if (!ViewingFile) RefreshPicture();
    write::frames.ViewingFile = 1;
    BuildDisplayLut(Contrast, Brightness);  // for the file's own range; draws the frame
    if (another) FitUnseenPicture(BadPixelsOnView());
    PutCursorBack();

    write::windows.ViewFilePath = path;
    FollowRecording(path, frame);
    KeepUnitAvailable();
    const std::optional<MenuItemState> replay = hWndMain ? GetMenuItem(hWndMain, kReplayMenuItem) : std::nullopt;
    if (replay && replay->checked) SetTimer(hWndMain, kLiveTimer, 0);
    return 1;
}

std::vector<std::int16_t> GetImageRectFromFile(std::string_view path, std::uint32_t frame, std::int32_t left,
                                               std::int32_t top, std::int32_t right, std::int32_t bottom)
{
    constexpr std::string_view kCaption = "GetImageRectFromFile() Error!";
    const std::int32_t headerSize = ReadImageHeader(path, write::file.ImageHeader);
    if (headerSize < 0) return {};
    std::optional<File> file = File::Open(path, FileMode::kRead);
    if (!file) {
        MessageBox(hWndMain, "Failed to open file\n" + std::string(path), kCaption);
        return {};
    }
    const std::int64_t width = ImageHeader.ImageWidth;
    const std::int64_t height = ImageHeader.ImageHeight;
    if (ImageHeader.SampleBytes != 2 || left < 0 || top < 0 || right < left || bottom < top || right >= width ||
        bottom >= height) {
        MessageBox(hWndMain, "Failed to read entire region of array\n" + std::string(path), kCaption,
                   BoxIcon::kInformation);
        return {};
    }
    const std::uint32_t frameCount = ImageHeader.FrameCount;  // the packed field is read, never referred to
    const std::int64_t i = std::min(frame, frameCount);
    const std::int64_t position = i * ImageHeader.ImageHeaderDataOffset + headerSize +
                                  (i * width * height + top * width) * ImageHeader.SampleBytes;
    std::vector<std::int16_t> rows;
    if (!AllocateBlock(rows, static_cast<std::size_t>((bottom + 1 - top) * width))) {
        MessageBox(hWndMain, "Failure to allocate or lock memory!", kCaption);
        return {};
    }
    const std::span bytes = std::as_writable_bytes(std::span(rows));
    if (!file->Seek(position) || file->Read(bytes) != bytes.size()) {
        MessageBox(hWndMain, "Failed to read entire region of array\n" + std::string(path), kCaption,
                   BoxIcon::kInformation);
        return {};
    }
    std::size_t kept = 0;
    for (std::size_t n = 0; n < rows.size(); ++n) {
        const std::int64_t column = static_cast<std::int64_t>(n) % width;
        if (column >= left && column <= right) rows[kept++] = rows[n];
    }
    rows.resize(kept);
    if (ImageHeader.ByteSwap == 0) SwapDataBytes(std::as_writable_bytes(std::span(rows)), kept);
    return rows;
}

int ViewSequence(std::string_view path)
{
    ImageHeaderRecord header = ImageHeader;
    if (ReadImageHeader(path, header) < 0) return 0;
    write::frames.LoadName = path;
    write::frames.LastFrame = header.FrameCount - 1;
    write::frames.CurrentFrame = static_cast<std::uint32_t>(-1);  // before the first
    return LoadNext();
}

namespace {

// Steps LoadName to another numbered file. False after a beep: there is none, the name stays.
bool StepName(std::optional<std::string> (*step)(std::string_view))
{
    const std::optional<std::string> stepped = step(LoadName);
    if (!stepped) {
        MessageBeep(Sound::kInformation);
        return false;
    }
    write::frames.LoadName = *stepped;
    return true;
}

// Shows the frame, or falls back to the file last shown, from which the next step starts.
int ViewOrFallBack()
{
    if (ViewImage(LoadName, CurrentFrame)) return 1;
    write::frames.LoadName = ViewFilePath;
    return 0;
}

}  // namespace

int LoadNext()
{
    if (LoadName.empty()) return 0;
    write::frames.SteppingFrames = 1;
    if (CurrentFrame == LastFrame && LoadName == ViewFilePath) LookAgain();
    ++write::frames.CurrentFrame;
    if (CurrentFrame <= LastFrame && ViewImage(LoadName, CurrentFrame)) return 1;
    if (!StepName(NextSequencePath)) return 0;
    write::frames.CurrentFrame = 0;
    return ViewOrFallBack();
}

int LoadLast()
{
    if (LoadName.empty()) {
        MessageBeep(Sound::kInformation);
        return 0;
    }
    write::frames.SteppingFrames = 1;
    if (CurrentFrame != 0) {
        --write::frames.CurrentFrame;
        if (ViewImage(LoadName, CurrentFrame)) return 1;
    }
    StepName(PreviousSequencePath);
    ImageHeaderRecord header = ImageHeader;
    // After a beep it is the same file again, and its last frame is shown.
    if (ReadImageHeader(LoadName, header) < 0) header = ImageHeader;
    write::frames.CurrentFrame = header.FrameCount - 1;
    return ViewOrFallBack();
}

int GoToFrame(std::uint32_t frame)
{
    write::frames.SteppingFrames = 1;
    write::frames.CurrentFrame = std::min(frame, LastFrame);
    return ViewOrFallBack();
}

}  // namespace kelvo
