#include "record/buffer_file.h"

#include "display/display_pipeline.h"
#include "grabber/frame_size.h"
#include "grabber/host_frames_write.h"
#include "head/camera_head.h"
#include "imagefile/frame_file.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "state/camera_config.h"
#include "state/frame_state.h"
#include "viewing/stored_view.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

namespace kelvo {

namespace {

constexpr std::size_t kHeaderBytes = sizeof(ImageHeaderRecord);
constexpr std::size_t kMostLetters = 12;
constexpr std::size_t kSkipPlace = 24;  // behind Frames, in the reserved area

struct Rectangle {
    std::int64_t top = 0;
    std::int64_t left = 0;
    std::int64_t bottom = 0;
    std::int64_t right = 0;
    std::int64_t Rows() const { return bottom + 1 - top; }
    std::int64_t Columns() const { return right + 1 - left; }
    friend bool operator==(const Rectangle&, const Rectangle&) = default;
};

// A frame as it lies in the store or in a file: where it stands among the camera's rows and columns.
Rectangle FrameInStore()
{
    const std::int64_t top = FpaSerialWord.RowStart;
    const std::int64_t left = FpaSerialWord.ColStart;
    return {top, left, top + ActiveConfig.Vroi - 1, left + ActiveConfig.Hroi - 1};
}

Rectangle FrameInFile(const ImageHeaderRecord& header)
{
    // A header may say one size and another rectangle: the frames have the size.
    return {header.TopRow, header.LeftColumn,
            std::min<std::int64_t>(header.BottomRow, std::int64_t{header.TopRow} + header.ImageHeight - 1),
            std::min<std::int64_t>(header.RightColumn, std::int64_t{header.LeftColumn} + header.ImageWidth - 1)};
}

bool Holds(const Rectangle& frame, const Rectangle& part)
{
    return part.top >= frame.top && part.left >= frame.left && part.bottom <= frame.bottom && part.right <= frame.right;
}

// 1, or the code of the first thing that is wrong by itself.
int CheckOrder(std::int32_t first, std::int32_t last, const Rectangle& rectangle)
{
    if (first > last) return kBufferRange;
    if (rectangle.top > rectangle.bottom || rectangle.left > rectangle.right) return kBufferRectangleOrder;
    if (rectangle.top < 0 || rectangle.left < 0) return kBufferRectangleNegative;
    return 1;
}

int CheckStore(std::int32_t first, std::int32_t last, const Rectangle& rectangle)
{
    if (!Holds(FrameInStore(), rectangle)) return kBufferRectangleOutside;
    if (HostFrames.empty() || HostFrames.front().size() != CameraFrameValues()) return kBufferRange;
    const std::int64_t slots = UsableHostFrames();
    return first >= 0 && last < slots ? 1 : kBufferRange;
}

int CheckFile(const ImageHeaderRecord& header, std::int32_t first, std::int32_t last, const Rectangle& rectangle)
{
    if (first < 0 || last >= static_cast<std::int64_t>(header.FrameCount)) return kBufferRange;
    return Holds(FrameInFile(header), rectangle) ? 1 : kBufferRectangleOutside;
}

// Copies the rows of a rectangle from one frame to another, each frame with its own place and row length.
void CopyRows(const Rectangle& part, std::span<const std::int16_t> source, const Rectangle& sourceFrame,
              std::int64_t sourceColumns, std::span<std::int16_t> target, const Rectangle& targetFrame,
              std::int64_t targetColumns)
{
    const auto columns = static_cast<std::size_t>(part.Columns());
    for (std::int64_t row = part.top; row <= part.bottom; ++row) {
        const std::int64_t from = (row - sourceFrame.top) * sourceColumns + part.left - sourceFrame.left;
        const std::int64_t to = (row - targetFrame.top) * targetColumns + part.left - targetFrame.left;
        std::ranges::copy(source.subspan(static_cast<std::size_t>(from), columns),
                          target.subspan(static_cast<std::size_t>(to), columns).begin());
    }
}

void Swap(std::span<std::int16_t> counts)
{
    SwapDataBytes(std::as_writable_bytes(counts), counts.size());
}

// ---- The header

// Frames and Skip of each letter.
void PutComposition(ImageHeaderRecord& header, std::string_view composition, std::span<const SubSeqRecord> list)
{
    header.Reserved64.fill(0);
    std::size_t letters = 0;
    for (const char letter : composition) {
        const std::optional<std::size_t> index = SubSequenceOf(letter);
        if (!index || *index >= list.size() || letters == kMostLetters) continue;
        const auto put = [&](std::size_t place, std::int32_t number) {
            const auto word = static_cast<std::uint16_t>(number);
            std::memcpy(header.Reserved64.data() + place + 2 * letters, &word, sizeof word);
        };
        put(0, list[*index].Frames);
        put(kSkipPlace, list[*index].Skip);
        ++letters;
    }
}

ImageHeaderRecord HeaderFor(std::int32_t first, std::int32_t last, const Rectangle& rectangle)
{
    const HeaderKeeper keeper;
    ImageHeaderRecord header;
    BuildImageHeader(&header, first, last, static_cast<std::int32_t>(rectangle.left),
                     static_cast<std::int32_t>(rectangle.top), static_cast<std::int32_t>(rectangle.right),
                     static_cast<std::int32_t>(rectangle.bottom));
    return header;
}

bool WriteHeader(File& file, ImageHeaderRecord header)
{
    const std::span<std::byte> bytes = std::as_writable_bytes(std::span(&header, 1));
    if (header.ByteSwap == 0) SwapHeaderBytes(bytes, kHeaderBytes / 2);
    return file.Write(bytes) == bytes.size();
}

bool HasFramesOfABuffer(const ImageHeaderRecord& header)
{
    return header.ImageWidth > 0 && header.ImageHeight > 0 && header.SampleBytes == sizeof(std::int16_t) &&
           (header.HeaderVersion < kFirstVersionWithFrameHeaders || header.ImageHeaderDataOffset == 0);
}

std::optional<ImageHeaderRecord> ReadHeader(File& file)
{
    ImageHeaderRecord header;
    const std::span<std::byte> bytes = std::as_writable_bytes(std::span(&header, 1));
    if (file.Read(bytes) < bytes.size() || DeclaresSpiff(header)) return std::nullopt;
    if (header.ByteSwap == 0) SwapHeaderBytes(bytes, kHeaderBytes / 2);
    if (!HasFramesOfABuffer(header)) return std::nullopt;
    header.ImageHeaderDataOffset = 0;
    const std::int64_t frames = (file.Length() - static_cast<std::int64_t>(kHeaderBytes)) / FrameRecordBytes(header);
    header.FrameCount = static_cast<std::uint32_t>(std::clamp<std::int64_t>(frames, 0, kMostHostFrames));
    return header;
}

// ---- Saving

// The frames of a range, whole or a rectangle of each, on their way to a file.
class FrameSaver {
  public:
    FrameSaver(const Rectangle& rectangle, bool swapped)
        : rectangle_(rectangle), swapped_(swapped), isPart_(rectangle != FrameInStore())
    {
    }

    // Whole frames in native order go straight from the store.
    bool Prepare()
    {
        if (!isPart_ && !swapped_) return true;
        return AllocateBlock(work_, static_cast<std::size_t>(rectangle_.Rows() * rectangle_.Columns()));
    }

    bool Write(File& file, std::span<const std::int16_t> frame)
    {
        const std::span<const std::byte> bytes = std::as_bytes(Packed(frame));
        return file.Write(bytes) == bytes.size();
    }

  private:
    std::span<const std::int16_t> Packed(std::span<const std::int16_t> frame)
    {
        if (work_.empty()) return frame;
        CopyRows(rectangle_, frame, FrameInStore(), ActiveConfig.Hroi, work_, rectangle_, rectangle_.Columns());
        if (swapped_) Swap(work_);
        return work_;
    }

    Rectangle rectangle_;
    bool swapped_;
    bool isPart_;
    std::vector<std::int16_t> work_;
};

int WriteFrames(File& file, FrameSaver& saver, std::int32_t first, std::int32_t last)
{
    for (std::int32_t frame = first; frame <= last; ++frame) {
        if (!saver.Write(file, HostFrames[static_cast<std::size_t>(frame)])) return kBufferFrameWrite;
    }
    return 1;
}

// ---- Loading

bool ReadFrame(File& file, std::int64_t position, std::span<std::int16_t> frame)
{
    const std::span<std::byte> bytes = std::as_writable_bytes(frame);
    return file.Seek(position) && file.Read(bytes) == bytes.size();
}

// The slots' pictures are drawn over live or frozen video, not over a file's.
void ShowArrived(std::int32_t slot)
{
    if (!ViewingFile && DisplayEnabled) DrawFrame(HostFrames[static_cast<std::size_t>(slot)]);
}

int ReadFrames(File& file, const ImageHeaderRecord& header, std::int32_t first, std::int32_t last,
               const Rectangle& rectangle)
{
    const std::size_t values = PixelCount(header);
    const auto frameBytes = static_cast<std::int64_t>(values * sizeof(std::int16_t));
    std::vector<std::int16_t> frame;
    if (!AllocateBlock(frame, values)) return kBufferFrameRead;
    for (std::int32_t number = first; number <= last; ++number) {
        const std::int64_t position = static_cast<std::int64_t>(kHeaderBytes) + number * frameBytes;
        if (!ReadFrame(file, position, frame)) return kBufferFrameRead;
        if (header.ByteSwap == 0) Swap(frame);
        CopyRows(rectangle, frame, FrameInFile(header), header.ImageWidth,
                 write::hostFrames.HostFrames[static_cast<std::size_t>(number)], FrameInStore(), ActiveConfig.Hroi);
        ShowArrived(number);
    }
    return 1;
}

}  // namespace

std::optional<ImageHeaderRecord> ReadBufferHeader(std::string_view path)
{
    std::optional<File> file = File::Open(path, FileMode::kRead);
    return file ? ReadHeader(*file) : std::nullopt;
}

int SaveBufferFile(std::string_view path, std::int32_t first, std::int32_t last, std::int32_t top, std::int32_t left,
                   std::int32_t bottom, std::int32_t right, std::string_view composition,
                   std::span<const SubSeqRecord> list)
{
    const Rectangle rectangle{top, left, bottom, right};
    if (const int code = CheckOrder(first, last, rectangle); code < 0) return code;
    if (const int code = CheckStore(first, last, rectangle); code < 0) return code;
    ImageHeaderRecord header = HeaderFor(first, last, rectangle);
    PutComposition(header, composition, list);
    FrameSaver saver(rectangle, header.ByteSwap == 0);
    if (!saver.Prepare()) return kBufferFrameWrite;

    std::optional<NewFile> file = NewFile::Begin(path);
    if (!file) return kBufferNoFile;
    if (!WriteHeader(file->Contents(), header)) return kBufferHeaderWrite;
    if (const int code = WriteFrames(file->Contents(), saver, first, last); code < 0) return code;
    return file->Keep() ? 1 : kBufferFrameWrite;
}

int LoadBufferFile(std::string_view path, std::int32_t first, std::int32_t last, std::int32_t top, std::int32_t left,
                   std::int32_t bottom, std::int32_t right)
{
    const Rectangle rectangle{top, left, bottom, right};
    if (const int code = CheckOrder(first, last, rectangle); code < 0) return code;
    std::optional<File> file = File::Open(path, FileMode::kRead);
    if (!file) return kBufferNoFile;
    const std::optional<ImageHeaderRecord> header = ReadHeader(*file);
    if (!header) return kBufferHeaderRead;
    if (const int code = CheckFile(*header, first, last, rectangle); code < 0) return code;
    if (const int code = CheckStore(first, last, rectangle); code < 0) return code;
    return ReadFrames(*file, *header, first, last, rectangle);
}

}  // namespace kelvo
