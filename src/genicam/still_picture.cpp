#include "genicam/still_picture.h"

#include <algorithm>

namespace kelvo {

std::optional<StillPicture> MakeStillPicture(std::span<const std::uint8_t> bytes, const PixelFormat& format,
                                             std::int32_t columns, std::int32_t rows)
{
    constexpr std::int32_t kWhite = 255;
    if (columns < 1 || rows < 1) return std::nullopt;
    const std::size_t pixels = static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows);
    if (bytes.size() < BytesOfPixels(format, pixels)) return std::nullopt;
    std::vector<std::int16_t> counts(pixels);
    if (!UnpackPixels(format, DefaultCountRule(format.bits), bytes, counts)) return std::nullopt;

    const auto [darkest, brightest] = std::ranges::minmax(counts);
    const std::int32_t span = std::max(brightest - darkest, 1);
    StillPicture picture{.columns = columns, .rows = rows, .gray = std::vector<std::uint8_t>(pixels)};
    std::ranges::transform(counts, picture.gray.begin(), [black = darkest, span](std::int16_t count) {
        return static_cast<std::uint8_t>((count - black) * kWhite / span);
    });
    return picture;
}

}  // namespace kelvo
