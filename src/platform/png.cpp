#include "platform/png.h"

#include "platform/memory.h"

#include <png.h>

#include <cstdlib>
#include <vector>

namespace kelvo {

namespace {

constexpr std::size_t kMostColors = 256;

bool IsWhole(const IndexedPicture& picture)
{
    const auto height = static_cast<std::size_t>(picture.height);
    const auto rowBytes = static_cast<std::size_t>(std::abs(picture.rowBytes));
    return picture.width > 0 && picture.height > 0 && rowBytes >= static_cast<std::size_t>(picture.width) &&
           picture.pixels.size() / height >= rowBytes && !picture.colors.empty() &&
           picture.colors.size() <= kMostColors;
}

}  // namespace

std::optional<std::string> PngOf(const IndexedPicture& picture)
{
    if (!IsWhole(picture)) return std::string();
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_RGB_COLORMAP;
    image.colormap_entries = static_cast<png_uint_32>(picture.colors.size());

    std::vector<char> bytes;
    if (!AllocateBlock(bytes, PNG_IMAGE_PNG_SIZE_MAX(image))) return std::nullopt;
    png_alloc_size_t size = bytes.size();
    const int written = png_image_write_to_memory(&image, bytes.data(), &size, 0, picture.pixels.data(),
                                                  static_cast<png_int_32>(picture.rowBytes), picture.colors.data());
    return std::string(bytes.data(), written ? size : 0);
}

}  // namespace kelvo
