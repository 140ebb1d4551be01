#include "export/picture_look.h"

#include "display/color_map.h"
#include "display/display_pipeline.h"
#include "display/gray_lookup.h"
#include "state/display_state.h"

#include <algorithm>

namespace kelvo {

std::optional<PictureLook> PictureLook::OnView()
{
    EnsureDisplayLut();
    const std::span<const std::uint8_t> map = ReadyColorMap();
    if (DisplayLut.empty() || map.size() < kColorMapBytes) return std::nullopt;
    PictureLook look;
    FillGrayTable(look.grays_, DisplayLut);
    for (std::size_t gray = 0; gray < kColorMapEntries; ++gray) {
        look.colors_.at(gray) = {map[kRedPlane + gray], map[kGreenPlane + gray], map[kBluePlane + gray]};
    }
    return look;
}

void PictureLook::Fill(std::span<const std::int16_t> counts, std::span<std::uint8_t> rgb) const
{
    auto out = rgb.begin();
    for (const std::int16_t count : counts) {
        out = std::ranges::copy(colors_[grays_[static_cast<std::uint16_t>(count)]], out).out;
    }
}

}  // namespace kelvo
