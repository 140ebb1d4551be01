// A buffer file of any bytes, loaded into a small store: whole, and a rectangle of it. Each pixel that arrives is held
// against the bytes where the format has it, and the rest of the store stays.
#include "grabber/host_frames_write.h"
#include "head/camera_head_write.h"
#include "quiet_boxes.h"
#include "record/buffer_file.h"
#include "reset/reset.h"
#include "state/camera_config_write.h"
#include "temp_file.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kelvo {
namespace {

constexpr std::int32_t kColumns = 4;
constexpr std::int32_t kRows = 3;
constexpr std::int32_t kSlots = 5;
constexpr std::int16_t kBefore = 0x5A5A;

void Require(bool holds)
{
    if (!holds) __builtin_trap();
}

// The store lies where the file's frames do, so that all of them can be loaded.
void MakeStore(const ImageHeaderRecord& header)
{
    write::camera.ActiveConfig.Hroi = kColumns;
    write::camera.ActiveConfig.Vroi = kRows;
    write::camera.numBufFrames = kSlots;
    write::registers.FpaSerialWord.RowStart = header.TopRow;
    write::registers.FpaSerialWord.ColStart = header.LeftColumn;
    const std::vector<std::int16_t> frame(std::size_t{kColumns} * kRows, kBefore);
    write::hostFrames.HostFrames.assign(kSlots, frame);
    write::hostFrames.HostFramesAllocated = 1;
}

// Rows and columns of the picture, from 0, inclusive.
struct Part {
    std::int32_t top, left, bottom, right;
    bool Has(std::int32_t row, std::int32_t column) const
    {
        return row >= top && row <= bottom && column >= left && column <= right;
    }
};

std::int16_t CountInFile(std::span<const std::uint8_t> bytes, const ImageHeaderRecord& header, std::int32_t frame,
                         std::int32_t row, std::int32_t column)
{
    const std::int64_t pixel = (std::int64_t{frame} * header.ImageHeight + row) * header.ImageWidth + column;
    const auto at = static_cast<std::size_t>(512 + 2 * pixel);
    Require(at + 1 < bytes.size());
    const bool swapped = bytes[0] == 0 && bytes[1] == 0;
    const int low = bytes[at + (swapped ? 1 : 0)];
    const int high = bytes[at + (swapped ? 0 : 1)];
    return static_cast<std::int16_t>(low | high << 8);
}

void ExpectStore(std::span<const std::uint8_t> bytes, const ImageHeaderRecord& header, std::int32_t frames,
                 const Part& part)
{
    for (std::int32_t slot = 0; slot < kSlots; ++slot) {
        for (std::int32_t row = 0; row < kRows; ++row) {
            for (std::int32_t column = 0; column < kColumns; ++column) {
                const bool arrived = slot < frames && part.Has(row, column);
                const std::int16_t expected = arrived ? CountInFile(bytes, header, slot, row, column) : kBefore;
                Require(ReadBufferPixel(slot, row, column) == expected);
            }
        }
    }
}

void Load(const std::string& path, std::span<const std::uint8_t> bytes, const ImageHeaderRecord& header,
          const Part& part)
{
    MakeStore(header);
    const std::uint32_t count = header.FrameCount;  // it lies at an odd place: nothing refers to it
    const auto frames = static_cast<std::int32_t>(std::min<std::uint32_t>(count, kSlots));
    const int code = LoadBufferFile(path, 0, frames - 1, header.TopRow + part.top, header.LeftColumn + part.left,
                                    header.TopRow + part.bottom, header.LeftColumn + part.right);
    Require(code == 1 || (code <= kBufferRectangleOutside && code >= kBufferFrameWrite));
    ExpectStore(bytes, header, code == 1 ? frames : 0, part);
}

void TryAll(const std::string& path, std::span<const std::uint8_t> bytes)
{
    const std::optional<ImageHeaderRecord> header = ReadBufferHeader(path);
    MakeStore(header.value_or(ImageHeaderRecord()));
    if (!header) {
        Require(LoadBufferFile(path, 0, 0, 0, 0, 0, 0) < 0);
        return ExpectStore(bytes, {}, 0, {});
    }
    const std::int64_t frameBytes = std::int64_t{2} * header->ImageWidth * header->ImageHeight;
    Require(frameBytes > 0 && 512 + header->FrameCount * frameBytes <= static_cast<std::int64_t>(bytes.size()));
    Require(LoadBufferFile(path, 0, static_cast<std::int32_t>(header->FrameCount), header->TopRow, header->LeftColumn,
                           header->TopRow, header->LeftColumn) < 0);
    Load(path, bytes, *header, {0, 0, kRows - 1, kColumns - 1});
    Load(path, bytes, *header, {1, 1, kRows - 1, kColumns - 2});
    Load(path, bytes, *header, {0, 0, 0, 0});
}

}  // namespace
}  // namespace kelvo

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    return kelvo::QuietBoxes();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kelvo::ResetModules();
    static kelvo::FuzzFile input;
    kelvo::TryAll(input.Put(data, size), {data, size});
    return 0;
}
