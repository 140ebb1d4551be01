#include "config/frame_rate_table.h"

#include "config/frame_rate_table_write.h"
#include "platform/text.h"

#include <string_view>

namespace kelvo {

namespace write {
FrameRateVariables rates;
}

constinit const std::vector<FrameRateRow>& FrameRateTable = write::rates.FrameRateTable;

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
    write::rates.FrameRateTable.clear();
}

}  // namespace kelvo
