// The journal of a recorded sequence: read, its gaps told, and put together again.
#include "imagefile/frames_file.h"
#include "reset/reset.h"
#include "temp_file.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kelvo::ResetModules();
    static kelvo::FuzzFile input;
    const std::string& path = input.Put(data, size);
    const kelvo::FramesFile file = kelvo::ReadFramesFile(path);
    const kelvo::FramesFile salvaged = kelvo::SalvageFramesFile(path);
    if (salvaged.fault != file.fault || salvaged.records.size() < file.records.size()) __builtin_trap();
    if (!std::equal(file.records.begin(), file.records.end(), salvaged.records.begin())) __builtin_trap();
    if (salvaged.records.size() * sizeof(kelvo::FrameRecord) > size) __builtin_trap();
    if (file.fault != kelvo::FramesFault::kNone) return 0;
    if (file.records.size() * sizeof(kelvo::FrameRecord) > size) __builtin_trap();
    kelvo::FramesFile half = file;
    half.closing.reset();
    kelvo::ReadOn(path, static_cast<std::int64_t>(file.records.size() / 2), half);
    if (half.records != file.records || half.closing != file.closing) __builtin_trap();
    const std::vector<kelvo::FrameGap> gaps = kelvo::GapsOf(file.records);
    if (gaps.size() > file.records.size()) __builtin_trap();
    const std::vector<std::byte> again = kelvo::FramesFileBytes(file.head, file.records, file.closing);
    static kelvo::FuzzFile second;
    const kelvo::FramesFile copy =
        kelvo::ReadFramesFile(second.Put(reinterpret_cast<const std::uint8_t*>(again.data()), again.size()));
    if (copy.head != file.head || copy.records != file.records || copy.closing != file.closing) __builtin_trap();
    return 0;
}
