// Ranges of recorded sequences put one behind the other into a new file, their journals with them: what cutting and
// joining have in common. Frame numbers inside the file (FrameNum) follow the new place, what the board told stays.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

namespace kelvo {

struct FrameRange {
    std::string path;
    std::int64_t first = 0;
    std::int64_t end = -1;  // one behind the last; below 0: to the end
};

// Writes out, a name that nothing bears yet, with the header of the first source. The sources have the same frames,
// and where they aren't raw the same temperatures with the same counts; either all or none of them have a journal,
// which was closed. Each frame is held against its checksum on the way. The reason where that fails ("x.seq is being
// recorded"): then nothing stands under out's names. progress is told how many frames of how many are done.
std::optional<std::string> CopyFrames(std::span<const FrameRange> sources, const std::string& out,
                                      const std::function<void(std::int64_t done, std::int64_t all)>& progress);

}  // namespace kelvo
