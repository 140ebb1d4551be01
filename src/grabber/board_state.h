// What is known of the open board: its modules, the frame on it, and the offset of its counts. Written by
// grabber/board.
#pragma once

#include "grabber/copm2.h"

#include <cstdint>
#include <vector>

namespace kelvo {

// Handles of the board's modules; 0 before init_itex. The computing modules are looked up and not used further.
extern BoardModule IcpModule;
extern BoardModule AcqModule;
extern BoardModule CmpModule;
extern BoardModule CmClu;
extern BoardModule CmMmp;
extern BoardModule CmHf;
extern BoardModule CmPa;
extern BoardModule CmMem;
extern BoardFrame FrameA;                    // the frame on the board
extern std::int32_t FramePitch;              // Hroi rounded up to a multiple of 32
extern std::int32_t FrameRows;               // Vroi
extern std::int32_t DataOffset;              // counts added to each raw value; key DataOffset of the camera section
extern std::vector<std::uint8_t> VideoCopy;  // Hroi x Vroi, filled by nothing

// A raw value with DataOffset added, without limiting.
inline std::int16_t WithDataOffset(std::int16_t raw)
{
    return static_cast<std::int16_t>(static_cast<std::uint32_t>(raw) + static_cast<std::uint32_t>(DataOffset));
}

}  // namespace kelvo
