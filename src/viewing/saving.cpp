#include "viewing/saving.h"

#include "acquire/averaging.h"
#include "config/settings.h"
#include "grabber/frame_size.h"
#include "imagefile/header.h"
#include "platform/box.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/status.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace kelvo {

std::int32_t FramesToAverageImage = 1;
std::int32_t FramesToAverageSeq = 1;
std::int32_t SeqNumber = 0;
std::int32_t SeqNumberStart = 0;

namespace {

constexpr std::uint32_t kNoGrabberMode = 0x20;
constexpr std::uint32_t kLiveWithoutGrabberMode = 0xA0;
constexpr std::size_t kHeaderWords = sizeof(ImageHeaderRecord) / 2;
constexpr std::size_t kMostNameCharacters = 8;  // of stem and number, as file names once had
// A frame may lie behind others that a full disk has swallowed, but not anywhere.
constexpr std::int64_t kWidestGap = std::numeric_limits<std::int32_t>::max();

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

std::size_t ValuesOnView()
{
    if (!ViewingFile) return CameraFrameValues();
    const Point size = FrameSizeOnView();
    return static_cast<std::size_t>(std::max(size.x, 0)) * static_cast<std::size_t>(std::max(size.y, 0));
}

// False where the buffer doesn't hold what the header says.
bool CopyFrameOnView(std::span<std::int16_t> counts)
{
    const std::span<const std::int16_t> pixels = ImageBufferPixels(ImageHeader.ImageHeaderDataOffset);
    if (pixels.size() < counts.size()) return false;
    std::copy_n(pixels.begin(), counts.size(), counts.begin());
    return true;
}

// False where AverageFrames would hand back its block as it stands, a picture that never was on the screen: there is no
// grabber, or, frozen, no frame of the camera's size has come yet.
bool CameraHasPicture(std::uint32_t mode)
{
    const std::size_t values = CameraFrameValues();
    return (mode & kTakeNewFrames) && values > 0 && (LiveVideo || RawFrame.size() >= values);
}

bool GatherFrame(std::span<std::int16_t> counts, std::uint32_t frames, std::uint32_t mode)
{
    if (ViewingFile) return CopyFrameOnView(counts);
    if (!CameraHasPicture(mode)) return false;
    const Point size = FrameSizeOnView();
    return AverageFrames(counts, {}, frames, 0, 0, size.x - 1, size.y - 1, mode) != 0;
}

std::uint32_t ImageMode()
{
    constexpr std::uint32_t common = kAverage16 | kShowProgress;
    if (GrabberPresent && !ViewingFile) return common | kTakeNewFrames;
    return common | (LiveVideo ? kLiveWithoutGrabberMode : kNoGrabberMode);
}

std::uint32_t SequenceMode()
{
    const std::uint32_t source = GrabberPresent && !ViewingFile ? kTakeNewFrames : kNoGrabberMode;
    const bool live = !ViewingFile && LiveVideo;
    return kAverage16 | kShowProgress | source | (live ? kPlainFrame : 0);
}

// ---- The header

void BuildHeaderOfCamera()
{
    const Point size = FrameSizeOnView();
    ImageHeaderRecord record;
    ImageHeader = *BuildImageHeader(&record, 0, 0, 0, 0, size.x - 1, size.y - 1);
}

// True if all 512 bytes were written. The record in memory stays in native order.
bool WriteHeader(File& file, ImageHeaderRecord record)
{
    const std::span<std::byte> bytes = std::as_writable_bytes(std::span(&record, 1));
    if (record.ByteSwap == 0) SwapHeaderBytes(bytes, kHeaderWords);
    return file.Write(bytes) == bytes.size();
}

// Bytes written. In a byte-swapped file counts is swapped in place.
std::size_t WriteCounts(File& file, std::span<std::int16_t> counts)
{
    const std::span<std::byte> bytes = std::as_writable_bytes(counts);
    if (ImageHeader.ByteSwap == 0) SwapDataBytes(bytes, counts.size());
    return file.Write(bytes);
}

// ---- Save image

int RefuseImage(std::optional<NewFile>& file, const char* text)
{
    file.reset();  // nothing is left of it before the operator reads why
    Tell(text);
    return 0;
}

// The disk filled up among the pixels. A new file stays as far as it came; one that stood before is worth more whole.
void KeepCutImage(NewFile& file, bool replacing)
{
    if (!replacing) file.Keep();
}

int WriteImage(std::optional<NewFile>& file, std::span<std::int16_t> counts, bool replacing)
{
    if (!file || !WriteHeader(file->Contents(), ImageHeader)) {
        return RefuseImage(file, "Failure writing header for image file");
    }
    const bool whole = WriteCounts(file->Contents(), counts) == counts.size_bytes();
    if (whole && file->Keep()) return 1;
    if (!whole) KeepCutImage(*file, replacing);
    file.reset();
    TellWriteError();
    return whole ? 0 : 1;  // what was written and not kept is gone
}

// ---- Save sequence

std::int32_t RefuseSequence(const char* text)
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

// Where a frame of a sequence goes: to a file of its own, or into the multi-frame file.
struct SequenceFile {
    std::string path;
    std::optional<NewFile> own;
    std::optional<File> shared;
    bool replacing = false;  // of its own: another file stands under the name
    bool wasEmpty = true;    // before this frame

    // Null: it couldn't be opened.
    File* Contents()
    {
        if (own) return &own->Contents();
        return shared ? &*shared : nullptr;
    }
    bool Finish()
    {
        if (own) return own->Keep();
        return shared && shared->Close();
    }
};

void OpenMultiFrameFile(SequenceFile& file)
{
    file.shared = File::Open(file.path, FileMode::kReadWrite);
    // A file that stands there and can't be written is not to be cut to nothing.
    if (!file.shared && !FileExists(file.path)) file.shared = File::Open(file.path, FileMode::kCreate);
    file.wasEmpty = !file.shared || file.shared->Length() == 0;
}

// False: the operator keeps the file that stands there.
bool OpenOwnFile(SequenceFile& file)
{
    file.replacing = FileExists(file.path);
    if (file.replacing && !AgreeToReplace(file.path)) return false;
    file.own = NewFile::Begin(file.path);
    return true;
}

// Frames of a record's size behind 512 bytes.
std::int64_t WholeFrames(const ImageHeaderRecord& header, std::int64_t fileBytes)
{
    const auto behindHeader = fileBytes - static_cast<std::int64_t>(sizeof(ImageHeaderRecord));
    const std::int64_t recordBytes = FrameRecordBytes(header);
    return recordBytes > 0 && behindHeader > 0 ? behindHeader / recordBytes : 0;
}

// Where the last frame that the record counts begins.
std::int64_t PositionOfLastFrame(const ImageHeaderRecord& header)
{
    const std::int64_t frames = header.FrameCount;
    const std::int64_t frameBytes = std::int64_t{header.ImageWidth} * header.ImageHeight * header.SampleBytes;
    return frameBytes * (frames - 1) + std::int64_t{sizeof(ImageHeaderRecord)} + frames * header.ImageHeaderDataOffset;
}

bool LastFrameCanStand(const ImageHeaderRecord& header, std::int64_t fileBytes)
{
    const std::int64_t position = PositionOfLastFrame(header);
    return position >= std::int64_t{sizeof(ImageHeaderRecord)} && position <= fileBytes + kWidestGap;
}

bool DescribesFrames(const ImageHeaderRecord& header)
{
    const auto within = [](std::int32_t value, std::int32_t most) { return value > 0 && value <= most; };
    return within(header.ImageWidth, kMaxImageSide) && within(header.ImageHeight, kMaxImageSide) &&
           within(header.SampleBytes, 4) && header.ImageHeaderDataOffset >= 0;
}

// The header of a multi-frame file that has frames, with one frame more, into ImageHeader. It is taken as the bytes
// stand, whatever the frame in hand measures; false where no frame could be put where it says.
bool TakeHeaderOfFile(File& file)
{
    ImageHeaderRecord record;
    const std::span<std::byte> bytes = std::as_writable_bytes(std::span(&record, 1));
    if (!file.Seek(0) || file.Read(bytes) < bytes.size() || !DescribesFrames(record)) return false;
    // A writer that was stopped may have left more frames than it had counted.
    const std::int64_t frames = std::max<std::int64_t>(record.FrameCount, WholeFrames(record, file.Length())) + 1;
    if (frames > std::numeric_limits<std::uint32_t>::max()) return false;
    record.FrameCount = static_cast<std::uint32_t>(frames);
    if (!LastFrameCanStand(record, file.Length())) return false;
    ImageHeader = record;
    return true;
}

// False: no frame can be put where the header says; ImageHeader is as it was.
bool PrepareSequenceHeader(File& file, bool isEmpty)
{
    if (ViewingFile) {
        ImageHeaderRecord record = ImageHeader;
        record.FrameCount = record.FrameCount + 1;
        if (!LastFrameCanStand(record, file.Length())) return false;
        ImageHeader = record;
        return true;
    }
    if (!isEmpty) return TakeHeaderOfFile(file);
    BuildHeaderOfCamera();
    return true;
}

// Nothing of this frame is left: a file that began with it goes, one that had frames stays.
void Drop(SequenceFile& file)
{
    const bool began = file.shared && file.wasEmpty && FileExists(file.path);
    file.own.reset();
    file.shared.reset();
    if (began) DeleteFileNamed(file.path);
}

std::int32_t EndWithoutHeader(SequenceFile& file, const ImageHeaderRecord& before)
{
    file.own.reset();  // a multi-frame file is never deleted for this
    file.shared.reset();
    if (ViewingFile) ImageHeader = before;
    Tell("Failure writing header for image file\nDisk Full ??");
    return 0;
}

// The disk filled up among the pixels.
std::int32_t EndCutFrame(SequenceFile& file, File& contents, std::size_t written)
{
    const auto result = static_cast<std::int32_t>(written);
    const std::uint32_t frames = ImageHeader.FrameCount;
    if (frames <= 1) {
        Drop(file);
        TellWriteError();
        return result;
    }
    ImageHeader.FrameCount = frames - 1;
    // It lands behind the partial frame, where the file stands; readers count frames by the length.
    const bool headerWritten = WriteHeader(contents, ImageHeader);
    if (file.own && !file.replacing) file.own->Keep();
    file.own.reset();
    file.shared.reset();
    if (!headerWritten) {
        Tell("Failure writing header for image update file\nDisk full ??");
        return 0;
    }
    TellWriteError();
    return result;
}

std::int32_t WriteSequenceFrame(SequenceFile& file, File& contents, std::span<std::int16_t> counts,
                                std::uint32_t framesAveraged, std::int32_t& sequenceNumber)
{
    const ImageHeaderRecord before = ImageHeader;
    if (!PrepareSequenceHeader(contents, file.wasEmpty)) {
        file.own.reset();
        file.shared.reset();
        return RefuseSequenceFile(file.path, "\nSaveSequence: Unable to read existing image header!");
    }
    ImageHeader.FramesAveraged = static_cast<std::int16_t>(framesAveraged);
    if (!contents.Seek(0) || !WriteHeader(contents, ImageHeader)) return EndWithoutHeader(file, before);
    contents.Seek(PositionOfLastFrame(ImageHeader));
    const std::size_t written = WriteCounts(contents, counts);
    if (written != counts.size_bytes()) return EndCutFrame(file, contents, written);
    if (!file.Finish()) {
        file.own.reset();
        if (ViewingFile) ImageHeader = before;
        TellWriteError();
        return 0;
    }
    if (!MultiFrame) ++sequenceNumber;
    return 1;
}

}  // namespace

int SaveImage(const std::string& path, std::uint32_t framesToAverage)
{
    const bool replacing = FileExists(path);
    if (replacing && !AgreeToReplace(path)) return 0;
    std::optional<NewFile> file = NewFile::Begin(path);
    if (!file) {
        Beep();
        Tell(path + "\nOpen file failure on Save Image");
    }
    StatusMessage("Collecting image to save", kCentred);
    std::vector<std::int16_t> counts;
    if (!AllocateBlock(counts, ValuesOnView())) {
        return RefuseImage(file, "Failure to allocate or lock video memory!");
    }
    if (!GatherFrame(counts, framesToAverage, ImageMode())) {
        return RefuseImage(file, "Video Data Acquisition Failed, Hardware error");
    }
    StatusMessage(" Writing image to file", kCentred);
    if (!ViewingFile) BuildHeaderOfCamera();
    ImageHeader.FramesAveraged = static_cast<std::int16_t>(framesToAverage);
    return WriteImage(file, counts, replacing);
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
    const bool live = !ViewingFile && LiveVideo;
    const std::uint32_t frames = live ? framesToAverage : 1;
    if (!AgreeToSaveStill(SequenceFilePath(basePath, sequenceNumber))) return -1;

    StatusMessage("Collecting image to save", kCentred);
    std::vector<std::int16_t> counts;
    if (!AllocateBlock(counts, ValuesOnView())) return RefuseSequence("Failure to allocate memory!");
    if (!GatherFrame(counts, frames, SequenceMode())) return RefuseSequence("Unable to get image data!");

    StatusMessage("Saving image to file", kCentred);
    sequenceNumber = std::max(sequenceNumber, 0);
    if (DigitsOf(sequenceNumber) + StemLength(basePath) > kMostNameCharacters) {
        return RefuseSequenceFile(basePath,
                                  Format("\nSequence number, %d, too large for given base filename", sequenceNumber));
    }

    SequenceFile file;
    file.path = SequenceFilePath(basePath, sequenceNumber);
    if (MultiFrame) {
        OpenMultiFrameFile(file);
    } else if (!OpenOwnFile(file)) {
        ++sequenceNumber;  // the next press offers the next number
        return -1;
    }
    File* const contents = file.Contents();
    if (!contents) return RefuseSequenceFile(file.path, "\nSaveSequence: Open file failure");
    return WriteSequenceFrame(file, *contents, counts, frames, sequenceNumber);
}

void ResetSaving()
{
    FramesToAverageImage = 1;
    FramesToAverageSeq = 1;
    SeqNumber = 0;
    SeqNumberStart = 0;
}

}  // namespace kelvo
