#include "support/tiff_reader.h"

#include <stdexcept>

namespace kelvo {

namespace {

class Bytes {
  public:
    explicit Bytes(const std::string& file) : file_(file) {}
    std::uint32_t Number(std::size_t at, std::size_t bytes) const
    {
        std::uint32_t value = 0;
        for (std::size_t i = bytes; i-- > 0;) value = value << 8 | static_cast<std::uint8_t>(file_.at(at + i));
        return value;
    }
    std::string Text(std::size_t at, std::size_t bytes) const
    {
        if (at + bytes > file_.size()) throw std::out_of_range("text");
        return file_.substr(at, bytes);
    }

  private:
    const std::string& file_;
};

TiffField ReadField(const Bytes& bytes, std::size_t entry)
{
    const std::map<std::uint32_t, std::size_t> sizes = {{1, 1}, {2, 1}, {3, 2}, {4, 4}, {5, 8}};
    TiffField field{.type = bytes.Number(entry + 2, 2), .values = {}, .text = {}};
    const std::uint32_t count = bytes.Number(entry + 4, 4);
    const std::size_t size = sizes.at(field.type);
    const std::size_t place = size * count <= 4 ? entry + 8 : bytes.Number(entry + 8, 4);
    if (field.type == 2) {
        field.text = bytes.Text(place, count);
        return field;
    }
    const std::size_t part = size == 8 ? 4 : size;
    for (std::size_t i = 0; i < count * (size / part); ++i)
        field.values.push_back(bytes.Number(place + i * part, part));
    return field;
}

std::uint32_t Single(const TiffPicture& picture, std::uint32_t tag, std::uint32_t otherwise)
{
    const auto found = picture.fields.find(tag);
    return found == picture.fields.end() ? otherwise : found->second.values.at(0);
}

void ReadSamples(const Bytes& bytes, TiffPicture& picture)
{
    const std::uint32_t rowsPerStrip = Single(picture, 278, picture.height);
    const std::size_t size = picture.bits / 8;
    const auto& offsets = picture.fields.at(273).values;
    const auto& counts = picture.fields.at(279).values;
    for (std::uint32_t row = 0, strip = 0; row < picture.height; row += rowsPerStrip, ++strip) {
        const std::uint32_t rows = std::min(rowsPerStrip, picture.height - row);
        const std::size_t needed = std::size_t{rows} * picture.width * size;
        if (counts.at(strip) < needed) throw std::out_of_range("strip " + std::to_string(strip) + " is short");
        for (std::size_t i = 0; i < needed; i += size)
            picture.samples.push_back(bytes.Number(offsets.at(strip) + i, size));
    }
}

void Read(const Bytes& bytes, TiffPicture& picture)
{
    if (bytes.Text(0, 2) != "II" || bytes.Number(2, 2) != 42) throw std::out_of_range("no TIFF file");
    const std::size_t directory = bytes.Number(4, 4);
    std::uint32_t last = 0;
    for (std::uint32_t i = 0; i < bytes.Number(directory, 2); ++i) {
        const std::size_t entry = directory + 2 + 12 * i;
        const std::uint32_t tag = bytes.Number(entry, 2);
        if (tag <= last) throw std::out_of_range("the tags don't rise");
        last = tag;
        picture.fields[tag] = ReadField(bytes, entry);
    }
    picture.width = Single(picture, 256, 0);
    picture.height = Single(picture, 257, 0);
    picture.bits = Single(picture, 258, 1);
    if (Single(picture, 259, 1) != 1 || Single(picture, 277, 1) != 1 || Single(picture, 262, 99) != 1)
        throw std::out_of_range("not gray and plain");
    const auto described = picture.fields.find(270);
    if (described != picture.fields.end()) picture.description = described->second.text.c_str();
    ReadSamples(bytes, picture);
}

}  // namespace

TiffPicture ReadTiff(const std::string& file)
{
    TiffPicture picture;
    try {
        Read(Bytes(file), picture);
    } catch (const std::out_of_range& fault) {
        picture.error = std::string("unreadable: ") + fault.what();
    }
    return picture;
}

}  // namespace kelvo
