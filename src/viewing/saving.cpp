#include "viewing/saving.h"

#include "acquire/averaging.h"
#include "config/settings.h"
#include "grabber/frame_size.h"
#include "imagefile/frame_writer.h"
#include "imagefile/header_write.h"
#include "platform/box.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "state/frame_state.h"
#include "state/state_registry.h"
#include "state/windows.h"
#include "ui/gather.h"
#include "ui/status.h"
#include "viewing/frame_to_save.h"
#include "viewing/saving_write.h"
#include "viewing/stored_view.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>
#include <vector>

namespace kelvo {

namespace write {
SavingVariables saving;
}

constinit const std::int32_t& FramesToAverageImage = write::saving.FramesToAverageImage;
constinit const std::int32_t& FramesToAverageSeq = write::saving.FramesToAverageSeq;
constinit const std::int32_t& SeqNumber = write::saving.SeqNumber;
constinit const std::int32_t& SeqNumberStart = write::saving.SeqNumberStart;

namespace {

const StateNames kStateNames{
    Named("FramesToAverageImage", FramesToAverageImage),
    Named("FramesToAverageSeq", FramesToAverageSeq),
    Named("SeqNumber", SeqNumber),
    Named("SeqNumberStart", SeqNumberStart),
};

constexpr std::size_t kMostNameCharacters = 8;  // of stem and number, as file names once had

std::optional<SavedFile> lastSave;

void Beep()
{
    MessageBeep(Sound::kDefault);
}

void Tell(const std::string& text)
{
    MessageBox(hWndMain, text, kMessageCaption);
}

void TellWriteError()
{
    Beep();
    MessageBox(hWndMain, "Error writing data to file!", "File Write Error");
}

bool AgreeToReplace(const std::string& path)
{
    return MessageBox(hWndMain, path + "\nFile already exists, replace it?", kMessageCaption, BoxIcon::kQuestion,
                      BoxButtons::kYesNo, Button::kNo) == Button::kYes;
}

// ---- The frame

std::uint32_t ImageMode()
{
    constexpr std::uint32_t common = kAverage16 | kShowProgress;
    if (GrabberPresent && !ViewingFile) return common | kTakeNewFrames;
    return common | kWithoutBoard | (LiveVideo ? kPlainFrame : 0);
}

std::uint32_t SequenceMode()
{
    const std::uint32_t source = GrabberPresent && !ViewingFile ? kTakeNewFrames : kWithoutBoard;
    const bool live = !ViewingFile && LiveVideo;
    return kAverage16 | kShowProgress | source | (live ? kPlainFrame : 0);
}

// ---- The header

ImageHeaderRecord HeaderOfCamera()
{
    const Point size = FrameSizeOnView();
    ImageHeaderRecord record;
    return *BuildImageHeader(&record, 0, 0, 0, 0, size.x - 1, size.y - 1);
}

// ---- Save image

int RefuseImage(std::optional<FrameWriter>& file, std::string_view text)
{
    file.reset();  // nothing is left of it before the operator reads why
    Tell(std::string(text));
    return 0;
}

// An image has nothing between its header and its counts, whatever the file has that its frame was taken of.
ImageHeaderRecord HeaderOfImage(const ImageHeaderRecord& header)
{
    ImageHeaderRecord record = header;
    record.ImageHeaderDataOffset = 0;
    return record;
}

int WriteImage(std::optional<FrameWriter>& file, const std::string& path, std::span<std::int16_t> counts,
               HeaderKeeper& former)
{
    constexpr const char* kNoHeader = "Failure writing header for image file";
    if (!file) return RefuseImage(file, kNoHeader);
    switch (file->WriteImage(HeaderOfImage(ImageHeader), counts).fault) {
        case FrameFault::kNone:
            if (!file->Keep()) break;  // what was written and not kept is gone
            former.KeepNew();
            lastSave = {.path = path, .frames = 1};
            return 1;
        case FrameFault::kCut:
            file->KeepCut();
            TellWriteError();
            return 1;
        default:
            return RefuseImage(file, kNoHeader);
    }
    TellWriteError();
    return 0;
}

// ---- Save sequence

std::int32_t RefuseSequence(std::string_view text)
{
    Beep();
    MessageBox(hWndMain, text, "Kelvo SaveSequence Error");
    return -1;
}

std::int32_t RefuseSequenceFile(const std::string& path, const std::string& text)
{
    Beep();
    Tell(path + text);
    return -1;
}

std::size_t DigitsOf(std::int32_t number)
{
    return number <= 0 ? 1 : static_cast<std::size_t>(std::log10(number)) + 1;
}

// What isn't live is saved only on purpose.
bool AgreeToSaveStill(const std::string& path)
{
    if (ViewingFile) {
        const std::string text = "YOU ARE VIEWING A FILE!\nIt will be saved as\n" + path + "\nDo you want to do this?";
        return MessageBox(hWndMain, text, kMessageCaption, BoxIcon::kQuestion, BoxButtons::kYesNo, Button::kNo) ==
               Button::kYes;
    }
    if (LiveVideo) return true;
    const std::string text = "IMAGE IS FROZEN!\nIt will be saved as \n" + path + "\nDo you want to do this?";
    return MessageBox(hWndMain, text, kMessageCaption, BoxIcon::kQuestion, BoxButtons::kOkCancel, Button::kCancel) ==
           Button::kOk;
}

std::size_t StemLength(const std::string& basePath)
{
    std::string stem;
    SplitPath(basePath, nullptr, nullptr, &stem, nullptr);
    return stem.size();
}

// The header for the frame in hand: that of a multi-frame file that has frames, of the file on view, or a new one.
// nullopt: no frame can be put where it says.
std::optional<ImageHeaderRecord> SequenceHeader(FrameWriter& file)
{
    if (MultiFrame && !file.BeganEmpty()) return file.ReadHeader();
    if (!ViewingFile) return HeaderOfCamera();
    ImageHeaderRecord record = ImageHeader;
    if (MultiFrame) return record;
    record.FrameCount = record.FrameCount + 1;
    return file.HasPlaceFor(record) ? std::optional(record) : std::nullopt;
}

std::int32_t EndWithoutHeader(const char* text)
{
    Tell(text);
    return 0;
}

// The disk filled up among the pixels. A first frame goes, and the file with it that it began.
std::int32_t EndCutFrame(FrameWriter& file, bool isFirst, const FrameWritten& written)
{
    if (isFirst) {
        file.Drop();
    } else {
        file.KeepCut();
    }
    TellWriteError();
    return static_cast<std::int32_t>(written.bytes);
}

// While a file is on view its header stays, but for the count of a numbered file that was made from it.
std::int32_t EndWholeFrame(FrameWriter& file, const std::string& path, const ImageHeaderRecord& header,
                           HeaderKeeper& former, std::int32_t& sequenceNumber)
{
    if (!file.Keep()) {
        TellWriteError();
        return 0;
    }
    lastSave = {.path = path, .frames = MultiFrame ? header.FrameCount : 1};
    if (!MultiFrame) ++sequenceNumber;
    if (ViewingFile && MultiFrame) return 1;
    write::file.ImageHeader = header;
    former.KeepNew();
    return 1;
}

std::int32_t WriteSequenceFrame(std::optional<FrameWriter>& file, const std::string& path,
                                std::span<std::int16_t> counts, std::uint32_t framesAveraged,
                                std::int32_t& sequenceNumber)
{
    constexpr const char* kNoHeader = "Failure writing header for image file\nDisk Full ??";
    constexpr const char* kNoUpdate = "Failure writing header for image update file\nDisk full ??";
    if (!file) return RefuseSequenceFile(path, "\nSaveSequence: Open file failure");
    HeaderKeeper former;
    std::optional<ImageHeaderRecord> header = SequenceHeader(*file);
    if (!header) {
        file.reset();
        return RefuseSequenceFile(path, "\nSaveSequence: Unable to read existing image header!");
    }
    header->FramesAveraged = static_cast<std::int16_t>(framesAveraged);
    const bool isFirst = MultiFrame ? file->BeganEmpty() : header->FrameCount <= 1;
    const FrameWritten written =
        MultiFrame ? file->AppendFrame(*header, counts) : file->WriteLastFrame(*header, counts);
    switch (written.fault) {
        case FrameFault::kNone:
            return EndWholeFrame(*file, path, *header, former, sequenceNumber);
        case FrameFault::kCut:
            return EndCutFrame(*file, isFirst, written);
        case FrameFault::kCutNoHeader:
            file->KeepCut();
            return EndWithoutHeader(kNoUpdate);
        case FrameFault::kNotCounted:
            if (isFirst) file->Drop();
            return EndWithoutHeader(isFirst ? kNoHeader : kNoUpdate);
        case FrameFault::kNoHeader:
            file.reset();  // a multi-frame file is never deleted for this
            return EndWithoutHeader(kNoHeader);
    }
    return 0;
}

}  // namespace

int SaveImage(const std::string& path, std::uint32_t framesToAverage)
{
    lastSave.reset();
    if (FileExists(path) && !AgreeToReplace(path)) return 0;
    std::optional<FrameWriter> file = FrameWriter::Create(path);
    if (!file) {
        Beep();
        Tell(path + "\nOpen file failure on Save Image");
    }
    StatusMessage("Collecting image to save", kCentred);
    std::vector<std::int16_t> counts;
    if (!AllocateBlock(counts, ValuesOnView())) {
        return RefuseImage(file, "Failure to allocate or lock video memory!");
    }
    if (!GatherFrameToSave(counts, framesToAverage, ImageMode())) {
        return RefuseImage(file, WhyNothingWasGathered("Video Data Acquisition Failed, Hardware error"));
    }
    StatusMessage(" Writing image to file", kCentred);
    HeaderKeeper former;
    if (!ViewingFile) write::file.ImageHeader = HeaderOfCamera();
    write::file.ImageHeader.FramesAveraged = static_cast<std::int16_t>(framesToAverage);
    return WriteImage(file, path, counts, former);
}

std::string SequenceFilePath(const std::string& basePath, std::int32_t number)
{
    std::string drive;
    std::string directory;
    std::string stem;
    std::string extension;
    SplitPath(basePath, &drive, &directory, &stem, &extension);
    return MakePath(drive, directory, Format("%s%d", stem.c_str(), std::max(number, 0)), extension);
}

std::int32_t SaveSequence(const std::string& basePath, std::int32_t& sequenceNumber, std::uint32_t framesToAverage)
{
    lastSave.reset();
    const bool live = !ViewingFile && LiveVideo;
    const std::uint32_t frames = live ? framesToAverage : 1;
    if (!AgreeToSaveStill(SequenceFilePath(basePath, sequenceNumber))) return -1;

    StatusMessage("Collecting image to save", kCentred);
    std::vector<std::int16_t> counts;
    if (!AllocateBlock(counts, ValuesOnView())) return RefuseSequence("Failure to allocate memory!");
    if (!GatherFrameToSave(counts, frames, SequenceMode()))
        return RefuseSequence(WhyNothingWasGathered("Unable to get image data!"));

    StatusMessage("Saving image to file", kCentred);
    sequenceNumber = std::max(sequenceNumber, 0);
    if (DigitsOf(sequenceNumber) + StemLength(basePath) > kMostNameCharacters) {
        return RefuseSequenceFile(basePath,
                                  Format("\nSequence number, %d, too large for given base filename", sequenceNumber));
    }

    const std::string path = SequenceFilePath(basePath, sequenceNumber);
    if (!MultiFrame && FileExists(path) && !AgreeToReplace(path)) {
        ++sequenceNumber;  // the next press offers the next number
        return -1;
    }
    std::optional<FrameWriter> file = MultiFrame ? FrameWriter::OpenInPlace(path) : FrameWriter::Create(path);
    return WriteSequenceFrame(file, path, counts, frames, sequenceNumber);
}

const std::optional<SavedFile>& LastSave()
{
    return lastSave;
}

void ResetSaving()
{
    lastSave.reset();
    write::saving.FramesToAverageImage = 1;
    write::saving.FramesToAverageSeq = 1;
    write::saving.SeqNumber = 0;
    write::saving.SeqNumberStart = 0;
}

}  // namespace kelvo
