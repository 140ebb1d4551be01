// What is known of the open board: its modules, the frame on it, and the offset of its counts.
#pragma once

#include "grabber/copm2.h"

#include <cstdint>
#include <vector>

namespace kelvo {

// Handles of the board's modules; 0 before init_itex. The computing modules are looked up and not used further.
extern const BoardModule& IcpModule;
extern const BoardModule& AcqModule;
extern const BoardModule& CmpModule;
extern const BoardModule& CmClu;
extern const BoardModule& CmMmp;
extern const BoardModule& CmHf;
extern const BoardModule& CmPa;
extern const BoardModule& CmMem;
extern const BoardFrame& FrameA;        // the frame on the board
extern const std::int32_t& FramePitch;  // Hroi rounded up to a multiple of 32
extern const std::int32_t& FrameRows;   // Vroi
extern const std::int32_t& DataOffset;  // counts added to each raw value; key DataOffset of the camera section
extern const std::vector<std::uint8_t>& VideoCopy;  // Hroi x Vroi, filled by nothing

// A raw value with DataOffset added, without limiting.
inline std::int16_t WithDataOffset(std::int16_t raw)
{
    return static_cast<std::int16_t>(static_cast<std::uint32_t>(raw) + static_cast<std::uint32_t>(DataOffset));
}

}  // namespace kelvo
