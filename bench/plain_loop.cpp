#include "plain_loop.h"

void PlainLoop(const std::uint32_t* decom, const std::int16_t* offset, const float* gain, std::int32_t dataOffset,
               const std::int16_t* raw, const std::uint8_t* table, std::size_t pixels, std::int16_t* frame,
               std::uint8_t* grays)
{
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::uint32_t d = decom[i];
        const int value = dataOffset + raw[d] - offset[d];
        const auto count = static_cast<std::int16_t>(static_cast<int>(value / static_cast<double>(gain[d])));
        frame[i] = count;
        grays[i] = table[static_cast<std::uint16_t>(count)];
    }
}
