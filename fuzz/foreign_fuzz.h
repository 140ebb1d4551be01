// Any bytes as a file of another program: frames that can be read, each to its last pixel, or a reason.
#pragma once

#include "imagefile/foreign_frames.h"
#include "reset/reset.h"
#include "temp_file.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

inline int FuzzForeign(ForeignKind kind, const std::uint8_t* data, std::size_t size)
{
    ResetModules();
    static FuzzFile input;
    const std::string& path = input.Put(data, size);
    std::string why;
    // What a few bytes unpack to may be much: a look at the first frames is enough.
    constexpr std::int64_t kMostFrames = 16;
    const auto goesOn = [](std::int64_t frame, std::int64_t /*frames*/) { return frame < kMostFrames; };
    std::optional<ForeignFrames> frames = ForeignFrames::Open(path, kind, why, goesOn);
    if (!frames) {
        if (why.empty()) __builtin_trap();
        return 0;
    }
    if (frames->Pixels() == 0 || frames->Frames() <= 0) __builtin_trap();
    if (frames->Header().ImageWidth <= 0 || frames->Header().ImageHeight <= 0) __builtin_trap();
    std::vector<std::int16_t> counts(frames->Pixels());
    for (const std::int64_t frame : {std::int64_t{0}, frames->Frames() - 1}) {
        if (!frames->ReadCounts(frame, counts, why)) __builtin_trap();  // all were read before
    }
    if (frames->ReadCounts(-1, counts, why) || frames->ReadCounts(frames->Frames(), counts, why)) __builtin_trap();
    return 0;
}

}  // namespace kelvo
