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
constexpr const char* kNoMemory = "No memory is left.";

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

bool MarkListed(const std::string& path, std::size_t columns, Map& map, std::string& why)
{
    if (!FileExists(path)) return false;
    std::optional<std::string> contents = ReadWholeFile(path, kLongestList);
    if (!contents) {
        why = "The list of bad detectors can't be read: " + path;
        return false;
    }
    LineReader lines(std::move(*contents), kLongestLine);
    while (!lines.AtEnd()) MarkLine(lines.Next().value_or(""), columns, map);
    return true;
}

// True where the set has gains that can't be read.
bool HasUnreadGains(const CalibrationSet& set)
{
    const auto isUnread = [](const auto& list) {
        return list.read != ListRead::kComplete && (list.name.empty() || FileExists(list.path));
    };
    return set.type == 2 && (isUnread(set.gains) || isUnread(set.decom));
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
                                                           std::size_t rows, std::string& why)
{
    Map map;
    why.clear();
    if (!FileExists(calPath)) return std::nullopt;
    const bool hasRoom = AllocateBlock(map, columns * rows);
    const CalibrationSet set = hasRoom ? ReadSet(AbsolutePath(calPath), map.size()) : CalibrationSet();
    if (!hasRoom || set.memoryRefused) {
        why = kNoMemory;
        return std::nullopt;
    }
    if (!set.typeText || HasUnreadGains(set)) {
        why = "The calibration set can't be read: " + calPath;
        return std::nullopt;
    }
    const std::string list = set.badDetFile.value_or("");
    if (!list.empty() && !MarkListed(InSetDirectory(calPath, list), columns, map, why)) return std::nullopt;
    if (set.type == 2) MarkWithoutGain(set, map);
    return map;
}

std::optional<std::vector<std::uint8_t>> BadDetectorsInForce(std::size_t columns, std::size_t rows, std::string& why)
{
    Map map;
    why.clear();
    if (CalType == 0) return std::nullopt;
    if (!AllocateBlock(map, columns * rows)) {
        why = kNoMemory;
        return std::nullopt;
    }
    if (const UnsavedSet* const unsaved = SetWithoutFiles()) {
        const BadDetMap& list = unsaved->badDetectors;
        std::ranges::transform(list.begin(), list.begin() + std::min(std::ssize(list), std::ssize(map)), map.begin(),
                               [](std::uint8_t bad) -> std::uint8_t { return bad == 0 ? 0 : 1; });
        return map;
    }
    if (!CalSettings.BadDetFile.empty() && !MarkListed(CalSettings.BadDetFile, columns, map, why)) return std::nullopt;
    return map;
}

}  // namespace kelvo
