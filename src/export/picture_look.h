// How counts look on the screen at a moment: contrast, brightness and colors in force, as a value. Pictures and videos
// that leave the program are made with one, so that a change meanwhile doesn't show in the midst of them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace kelvo {

class PictureLook {
  public:
    // nullopt where memory for the tables is refused.
    static std::optional<PictureLook> OnView();

    // Three bytes a count: red, green, blue. rgb has three times as many as counts.
    void Fill(std::span<const std::int16_t> counts, std::span<std::uint8_t> rgb) const;

  private:
    PictureLook() = default;
    std::array<std::uint8_t, 65536> grays_{};  // of each 16-bit pattern
    std::array<std::array<std::uint8_t, 3>, 256> colors_{};
};

}  // namespace kelvo
