#include "platform/png.h"

#include "platform/memory.h"
#include "platform/qt_window.h"

#include <QBuffer>
#include <QImage>
#include <QImageWriter>

#include <png.h>

#include <cstdlib>
#include <vector>

namespace kelvo {

namespace {

constexpr std::size_t kMostColors = 256;

// All rows lie in the pixels.
bool RowsFit(int width, int height, std::ptrdiff_t rowBytes, std::size_t pixelBytes, std::size_t bytes)
{
    if (width <= 0 || height <= 0) return false;
    const auto row = static_cast<std::size_t>(std::abs(rowBytes));
    return row >= static_cast<std::size_t>(width) * pixelBytes && bytes / static_cast<std::size_t>(height) >= row;
}

png_image ImageOf(int width, int height, png_uint_32 format)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = format;
    return image;
}

std::optional<std::string> Written(png_image& image, const std::uint8_t* pixels, std::ptrdiff_t rowBytes,
                                   const void* colors)
{
    std::vector<char> bytes;
    if (!AllocateBlock(bytes, PNG_IMAGE_PNG_SIZE_MAX(image))) return std::nullopt;
    png_alloc_size_t size = bytes.size();
    const int written =
        png_image_write_to_memory(&image, bytes.data(), &size, 0, pixels, static_cast<png_int_32>(rowBytes), colors);
    return std::string(bytes.data(), written ? size : 0);
}

}  // namespace

std::optional<std::string> PngOf(const IndexedPicture& picture)
{
    const bool hasColors = !picture.colors.empty() && picture.colors.size() <= kMostColors;
    if (!hasColors || !RowsFit(picture.width, picture.height, picture.rowBytes, 1, picture.pixels.size())) {
        return std::string();
    }
    png_image image = ImageOf(picture.width, picture.height, PNG_FORMAT_RGB_COLORMAP);
    image.colormap_entries = static_cast<png_uint_32>(picture.colors.size());
    return Written(image, picture.pixels.data(), picture.rowBytes, picture.colors.data());
}

std::optional<std::string> PngOf(const ColorPicture& picture)
{
    constexpr std::size_t kPixelBytes = 3;
    if (!RowsFit(picture.width, picture.height, picture.rowBytes, kPixelBytes, picture.pixels.size())) {
        return std::string();
    }
    png_image image = ImageOf(picture.width, picture.height, PNG_FORMAT_BGR);
    return Written(image, picture.pixels.data(), picture.rowBytes, nullptr);
}

std::optional<std::string> PngOf(const DeviceBitmap& picture, std::span<const PngText> texts)
{
    constexpr auto kPixelBytes = static_cast<std::ptrdiff_t>(sizeof(std::uint32_t));
    const std::ptrdiff_t rowBytes = kPixelBytes * picture.width;
    const std::size_t bytes = picture.pixels.size() * sizeof(std::uint32_t);
    if (!RowsFit(picture.width, picture.height, rowBytes, kPixelBytes, bytes)) return std::string();
    QImage image(reinterpret_cast<const uchar*>(picture.pixels.data()), picture.width, picture.height, rowBytes,
                 QImage::Format_RGB32);
    // Its own pixels: an image that is handed others keeps no texts.
    image = image.convertToFormat(QImage::Format_RGB888);
    if (image.isNull()) return std::nullopt;
    image.setDotsPerMeterX(0);  // a detector's pixels have no size on paper
    image.setDotsPerMeterY(0);
    for (const PngText& text : texts) image.setText(ToQString(text.keyword), ToQString(text.text));
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "png");
    if (!writer.write(image)) return std::nullopt;
    return buffer.data().toStdString();
}

}  // namespace kelvo
