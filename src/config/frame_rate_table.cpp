#include "config/frame_rate_table.h"

#include "platform/text.h"

namespace kelvo {

FrameRateRow FrameRateRowAt(std::int32_t /*index*/)
{
    return {};
}

void ScanFrameRate(const FrameRateRow& row, float& rate)
{
    const std::string_view field(row.RateText.data(), row.RateText.size());
    rate = ScanFloat(field.substr(0, field.find('\0'))).value_or(rate);
}

}  // namespace kelvo
