// What the board gave, kept for a look at it afterwards: while the fault "keep frames" (platform/faults.h) is on, each
// frame that is read of the board's grab goes into a sequence in DefaultDir too, raw, in readout order. A new one
// begins whenever the modules are looked up, as each gathering of frames begins: kept1.seq, kept2.seq, ... A file of
// that name is written over. What can't be written is left out.
#pragma once

#include "platform/files.h"

#include <cstdint>
#include <optional>
#include <span>

namespace kelvo {

class KeptFrames {
  public:
    // The modules are looked up.
    void BeginNext();
    // One frame of columns x rows counts.
    void Keep(std::span<const std::int16_t> counts, std::int32_t columns, std::int32_t rows);

  private:
    std::optional<File> file_;
    std::int32_t number_ = 0;
};

}  // namespace kelvo
