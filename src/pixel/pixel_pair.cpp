#include "pixel/pixel_pair.h"

#include "platform/text.h"

namespace kelvo {

namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";

}  // namespace

bool NextPairLine(LineReader& reader, std::string& line)
{
    const std::optional<std::string> next = reader.Next();
    if (!next) return false;
    line = *next;
    return true;
}

std::optional<PixelPair> ScanPixelPair(std::string_view line)
{
    const std::optional<std::int32_t> row = ScanDecimal(line);
    if (!row) return std::nullopt;
    line.remove_prefix(line.find_first_not_of(kBlanks));
    const std::size_t comma = line.find_first_not_of("0123456789", 1);
    if (comma == std::string_view::npos || line[comma] != ',') return std::nullopt;
    const std::optional<std::int32_t> column = ScanDecimal(line.substr(comma + 1));
    if (!column) return std::nullopt;
    return PixelPair{.row = *row, .column = *column};
}

std::string PixelPairText(const PixelPair& pair)
{
    return Format("%4d,%4d", pair.row, pair.column);
}

}  // namespace kelvo
