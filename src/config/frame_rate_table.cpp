#include "config/frame_rate_table.h"

#include "platform/text.h"

#include <string_view>

namespace kelvo {

std::vector<FrameRateRow> FrameRateTable;

FrameRateRow FrameRateRowAt(std::int32_t index)
{
    if (index < 0 || static_cast<std::size_t>(index) >= FrameRateTable.size()) return {};
    return FrameRateTable[static_cast<std::size_t>(index)];
}

void ScanFrameRate(const FrameRateRow& row, float& rate)
{
    const std::string_view field(row.RateText.data(), row.RateText.size());
    rate = ScanFloat(field.substr(0, field.find('\0'))).value_or(rate);
}

void ResetFrameRateTable()
{
    FrameRateTable.clear();
}

}  // namespace kelvo
