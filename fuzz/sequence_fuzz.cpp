// A recorded sequence with frame headers, as what repairs it finds it.
#include "imagefile/recovery.h"
#include "imagefile/sequence_file.h"
#include "reset/reset.h"
#include "temp_file.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kelvo::ResetModules();
    static kelvo::FuzzFile input;
    const std::string& path = input.Put(data, size);
    {
        std::optional<kelvo::SequenceFile> file = kelvo::SequenceFile::Open(path, kelvo::FileMode::kRead);
        if (!file) return 0;
        if (file->FrameBytes() <= 0 || file->Frames() < 0) __builtin_trap();
        if (file->Frames() * file->FrameBytes() > static_cast<std::int64_t>(size)) __builtin_trap();
        // No more memory than the file covers.
        std::vector<std::byte> frame(file->Frames() > 0 ? static_cast<std::size_t>(file->FrameBytes()) : 0);
        if (file->ReadFrame(file->Frames(), frame) || file->ReadFrame(-1, frame)) __builtin_trap();
        if (file->Frames() > 0 && !file->ReadFrame(file->Frames() - 1, frame)) __builtin_trap();
    }
    if (kelvo::RecoverSequence(path, false).outcome == kelvo::Recovery::kFailed) __builtin_trap();
    if (kelvo::RecoverSequence(path, true).outcome != kelvo::Recovery::kClean) __builtin_trap();
    return 0;
}
