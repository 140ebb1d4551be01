#include "badpixel/geometry_dialog_list.h"

#include "platform/files.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace kelvo {

namespace {

constexpr std::size_t kLongestFile = std::size_t{1} << 26;
constexpr std::int64_t kPixelsALine = 10;

bool IsOnArray(const PixelPair& pair, const CameraConfig& config)
{
    return pair.row >= 0 && pair.row < config.Vactive && pair.column >= 0 && pair.column <= config.Hactive;
}

std::int64_t MostLines(const CameraConfig& config)
{
    return std::int64_t{std::max(config.Vactive, 0)} * std::max(config.Hactive, 0) / kPixelsALine;
}

std::string WithoutBlanks(std::string_view text)
{
    std::string rest(text);
    std::erase(rest, ' ');
    return rest;
}

}  // namespace

std::optional<EditableBadList> ReadEditableBadList(const std::string& path, const CameraConfig& config)
{
    std::optional<std::string> contents = ReadWholeFile(path, kLongestFile);
    if (!contents) return std::nullopt;
    LineReader reader(std::move(*contents), kLongestPairLine);
    EditableBadList list;
    std::string line;
    while (NextPairLine(reader, line)) {
        const std::optional<PixelPair> pair = ScanPixelPair(line);
        if (!pair || !IsOnArray(*pair, config)) continue;
        list.isTooLong = std::cmp_greater_equal(list.pairs.size(), MostLines(config));
        if (list.isTooLong) break;
        list.pairs.push_back(*pair);
    }
    return list;
}

std::optional<std::size_t> FindPair(std::span<const PixelPair> lines, std::string_view typed)
{
    const std::string wanted = WithoutBlanks(typed);
    if (wanted.empty()) return std::nullopt;
    const auto found = std::ranges::find_if(
        lines, [&](const PixelPair& line) { return WithoutBlanks(PixelPairText(line)).starts_with(wanted); });
    if (found == lines.end()) return std::nullopt;
    return static_cast<std::size_t>(found - lines.begin());
}

std::optional<ListWithPair> InsertPair(std::span<const PixelPair> lines, const PixelPair& added)
{
    if (lines.empty()) return std::nullopt;
    const auto goesBehind = [&](std::size_t i) {
        if (i + 1 == lines.size()) return true;
        const PixelPair& next = lines[i + 1];
        const bool betweenColumns =
            added.row == lines[i].row && added.column > lines[i].column && added.column < next.column;
        return added.row < next.row || betweenColumns;
    };
    std::size_t line = 0;
    while (!goesBehind(line)) ++line;
    ListWithPair result{
        .lines = {lines.begin(), lines.end()}, .fileLines = {lines.begin(), lines.end()}, .place = line + 1};
    const auto offset = static_cast<std::ptrdiff_t>(line);
    result.lines.insert(result.lines.begin() + offset + 1, added);
    result.fileLines.insert(result.fileLines.begin() + offset, added);
    return result;
}

std::string BadListText(std::span<const PixelPair> lines)
{
    std::string text;
    for (const PixelPair& pair : lines) text += PixelPairText(pair) + '\n';
    return text;
}

}  // namespace kelvo
