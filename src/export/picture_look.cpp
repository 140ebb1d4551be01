#include "export/picture_look.h"

#include "display/color_map.h"
#include "display/display_pipeline.h"
#include "display/gray_lookup.h"
#include "display/scale_line.h"
#include "platform/memory.h"
#include "state/display_state.h"

#include <limits>
#include <vector>

namespace kelvo {

void PictureLook::TakeColors(std::span<const std::uint8_t> map)
{
    for (std::size_t gray = 0; gray < kColorMapEntries; ++gray) {
        colors_.at(gray) = std::uint32_t{map[kRedPlane + gray]} << 16 | std::uint32_t{map[kGreenPlane + gray]} << 8 |
                           map[kBluePlane + gray];
    }
}

std::optional<PictureLook> PictureLook::OnView()
{
    EnsureDisplayLut();
    const std::span<const std::uint8_t> map = ReadyColorMap();
    if (DisplayLut.empty() || map.size() < kColorMapBytes) return std::nullopt;
    PictureLook look;
    FillGrayTable(look.grays_, DisplayLut);
    look.TakeColors(map);
    look.spread_ = SpreadCountsOnView();
    return look;
}

std::optional<PictureLook> PictureLook::Over(CountRange spread, std::span<const std::uint8_t> map)
{
    constexpr std::int32_t kLowest = std::numeric_limits<std::int16_t>::min();
    constexpr std::int32_t kHighest = std::numeric_limits<std::int16_t>::max();
    std::vector<std::uint8_t> table;  // from the lowest count on
    if (map.size() < kColorMapBytes || !AllocateBlock(table, kLutEntries + 1)) return std::nullopt;
    const std::int64_t start = std::int64_t{spread.low} - kLowest;
    FillLut(table, {spread.Span(), start, start + spread.Span()}, {0, kHighest - kLowest});
    table.back() = std::numeric_limits<std::uint8_t>::max();  // one more than the screen's table has: white as its last
    PictureLook look;
    for (std::int32_t count = kLowest; count <= kHighest; ++count) {
        look.grays_.at(static_cast<std::uint16_t>(count)) = table[static_cast<std::size_t>(count - kLowest)];
    }
    look.TakeColors(map);
    look.spread_ = spread;
    return look;
}

}  // namespace kelvo
