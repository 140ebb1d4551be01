// An image file: its header, and records of it, turned into counts.
#include "imagefile/frame_file.h"
#include "imagefile/header.h"
#include "reset/reset.h"
#include "state/frame_state_write.h"
#include "temp_file.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace {

constexpr std::uint32_t kFrames[] = {0, 1, 0x7FFFFFFF, 0xFFFFFFFF};

void ReadRecord(kelvo::File& file, const kelvo::ImageHeaderRecord& header, std::int32_t headerBytes,
                std::uint32_t frame)
{
    std::vector<std::uint8_t> record;
    const kelvo::FrameRead read = kelvo::ReadFrameRecord(file, header, headerBytes, frame, record);
    if (read != kelvo::FrameRead::kComplete) return;
    if (record.size() > static_cast<std::size_t>(file.Length())) __builtin_trap();
    std::vector<std::uint8_t> counts(record.size());
    kelvo::FloatRecordToCounts(record, header, counts);
    kelvo::SwapRecordWords(counts, header);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kelvo::ResetModules();
    static kelvo::FuzzFile input;
    const std::string& path = input.Put(data, size);
    kelvo::write::frames.SteppingFrames = 1;  // what can't be opened only beeps
    kelvo::ImageHeaderRecord header;
    if (size < sizeof header) return 0;
    const std::int32_t headerBytes = kelvo::ReadImageHeader(path, header);
    if (headerBytes != 512 && headerBytes != 1024) __builtin_trap();
    if (header.FrameCount == 0) __builtin_trap();

    std::optional<kelvo::File> file = kelvo::File::Open(path, kelvo::FileMode::kRead);
    if (!file) __builtin_trap();
    for (const std::uint32_t frame : kFrames) ReadRecord(*file, header, headerBytes, frame);
    ReadRecord(*file, header, headerBytes, header.FrameCount - 1);
    return 0;
}
