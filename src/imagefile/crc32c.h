// CRC-32C, the checksum of recorded frames: the Castagnoli polynomial 0x1EDC6F41 bit-reversed, begun with and inverted
// by 0xFFFFFFFF, as iSCSI (RFC 3720, appendix B.4) and many file systems use it. "123456789" gives 0xE3069283.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kelvo {

// Of bytes; with the checksum of what stands before them, of both together. By the processor's own instruction where it
// has one, which is looked up at run time.
std::uint32_t Crc32c(std::span<const std::byte> bytes, std::uint32_t before = 0);

// The same by a table: what the instruction is held against.
std::uint32_t Crc32cByTable(std::span<const std::byte> bytes, std::uint32_t before = 0);

}  // namespace kelvo
