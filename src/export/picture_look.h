// Which color a count has, as a value: contrast, brightness and colors in force at a moment, or a range that was asked
// for. Pictures and videos that leave the program are made with one, so that a change meanwhile doesn't show in the
// midst of them.
#pragma once

#include "display/lookup_table.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace kelvo {

class PictureLook {
  public:
    // As the screen shows counts. nullopt where memory for the tables is refused.
    static std::optional<PictureLook> OnView();
    // The counts of a range, which lies within 16 bits, spread as the screen's lookup table spreads its own, in the
    // colors of a map (display/color_map.h): the first color below low, the last one from high on.
    static std::optional<PictureLook> Over(CountRange spread, std::span<const std::uint8_t> map);

    CountRange Spread() const { return spread_; }
    std::uint32_t ColorOfGray(std::uint8_t gray) const { return colors_[gray]; }  // 0x00RRGGBB
    std::uint32_t ColorOf(std::int16_t count) const { return colors_[grays_[static_cast<std::uint16_t>(count)]]; }

  private:
    PictureLook() = default;
    void TakeColors(std::span<const std::uint8_t> map);

    CountRange spread_;
    std::array<std::uint8_t, 65536> grays_{};  // of each 16-bit pattern
    std::array<std::uint32_t, 256> colors_{};
};

}  // namespace kelvo
