#include "export/bad_detectors.h"

#include "calib/set_reader.h"
#include "calib/unsaved_set.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "state/cal_settings.h"
#include "state/cal_state.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace kelvo {

namespace {

using Map = std::vector<std::uint8_t>;

constexpr std::size_t kLongestList = std::size_t{64} << 20;
constexpr std::size_t kLongestLine = 79;
constexpr float kNoGain = 0.001F;

// Of a line "row,column".
void MarkLine(std::string_view line, std::size_t columns, Map& map)
{
    const std::size_t comma = line.find(',');
    if (comma == std::string_view::npos) return;
    const std::int64_t row = ScanDecimal(line).value_or(-1);
    const std::int64_t column = ScanDecimal(line.substr(comma + 1)).value_or(-1);
    const auto rows = static_cast<std::int64_t>(map.size() / columns);
    const bool isPixel = row >= 0 && row < rows && column >= 0 && column < static_cast<std::int64_t>(columns);
    if (isPixel) map[static_cast<std::size_t>(row) * columns + static_cast<std::size_t>(column)] = 1;
}

bool MarkListed(const std::string& path, std::size_t columns, Map& map)
{
    std::optional<std::string> contents = ReadWholeFile(path, kLongestList);
    if (!contents) return false;
    LineReader lines(std::move(*contents), kLongestLine);
    while (!lines.AtEnd()) MarkLine(lines.Next().value_or(""), columns, map);
    return true;
}

void MarkWithoutGain(const CalibrationSet& set, Map& map)
{
    const std::vector<std::uint32_t>& decom = set.decom.entries;
    const std::vector<float>& gains = set.gains.entries;
    for (std::size_t i = 0; i < std::min(map.size(), decom.size()); ++i) {
        if (decom[i] < gains.size() && std::fabs(gains[decom[i]]) <= kNoGain) map[i] = 1;
    }
}

}  // namespace

std::optional<std::vector<std::uint8_t>> BadDetectorsOfSet(const std::string& calPath, std::size_t columns,
                                                           std::size_t rows)
{
    Map map;
    if (!FileExists(calPath) || !AllocateBlock(map, columns * rows)) return std::nullopt;
    const CalibrationSet set = ReadSet(AbsolutePath(calPath), map.size());
    const std::string list = set.badDetFile.value_or("");
    if (!list.empty() && !MarkListed(InSetDirectory(calPath, list), columns, map)) return std::nullopt;
    if (set.type == 2) MarkWithoutGain(set, map);
    return map;
}

std::optional<std::vector<std::uint8_t>> BadDetectorsInForce(std::size_t columns, std::size_t rows)
{
    Map map;
    if (CalType == 0 || !AllocateBlock(map, columns * rows)) return std::nullopt;
    if (const UnsavedSet* const unsaved = SetWithoutFiles()) {
        const BadDetMap& list = unsaved->badDetectors;
        std::ranges::transform(list.begin(), list.begin() + std::min(std::ssize(list), std::ssize(map)), map.begin(),
                               [](std::uint8_t bad) -> std::uint8_t { return bad == 0 ? 0 : 1; });
        return map;
    }
    if (!CalSettings.BadDetFile.empty() && !MarkListed(CalSettings.BadDetFile, columns, map)) return std::nullopt;
    return map;
}

}  // namespace kelvo
