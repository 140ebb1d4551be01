#include "pixel/bad_marks.h"

#include "pixel/pixel_pair.h"
#include "pixel/unsaved_set.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "state/cal_settings.h"
#include "state/cal_state.h"
#include "state/camera_config.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kelvo {

namespace {

constexpr std::int32_t kGainsAndOffsets = 2;  // CalType
constexpr std::size_t kLongestList = std::size_t{64} << 20;

// What is amiss with a line of a list for frames of columns x rows; else it marks its pixel.
std::string MarkLine(BadDetMap& map, std::int32_t columns, std::int32_t rows, std::string_view line)
{
    if (Trimmed(line).empty()) return {};
    const std::optional<PixelPair> pair = ScanPixelPair(line);
    if (!pair) return "isn't a list of bad detectors: \"" + std::string(Trimmed(line)) + "\".";
    if (pair->row < 0 || pair->column < 0 || pair->row >= rows || pair->column >= columns) {
        return Format("lists row %d, column %d, which lies outside of a frame of %d x %d.", pair->row, pair->column,
                      columns, rows);
    }
    map[static_cast<std::size_t>(pair->row) * static_cast<std::size_t>(columns) +
        static_cast<std::size_t>(pair->column)] = 1;
    return {};
}

}  // namespace

bool HasNoGain(float gain)
{
    return !(std::fabs(gain) > kNullGain);
}

void MarkWithoutGain(BadDetMap& map, std::span<const float> gains, std::span<const std::uint32_t> decomList)
{
    for (std::size_t i = 0; i < std::min(map.size(), decomList.size()); ++i) {
        const std::size_t detector = decomList[i];
        if (detector < gains.size() && HasNoGain(gains[detector])) map[i] = 1;
    }
}

ListMarks MarkListed(BadDetMap& map, std::int32_t columns, const std::string& path)
{
    std::optional<std::string> contents = ReadWholeFile(path, kLongestList);
    if (!contents) return {.isRead = false, .amiss = FileNameOf(path) + " can't be read."};
    const auto rows = static_cast<std::int32_t>(map.size() / static_cast<std::size_t>(std::max(columns, 1)));
    LineReader reader(std::move(*contents), kLongestPairLine);
    ListMarks marks;
    std::string line;
    while (NextPairLine(reader, line)) {
        const std::string ofLine = MarkLine(map, columns, rows, line);
        if (marks.amiss.empty() && !ofLine.empty()) marks.amiss = FileNameOf(path) + ' ' + ofLine;
    }
    return marks;
}

std::optional<BadDetMap> ListedInForce(std::string& why)
{
    why.clear();
    if (ActiveConfig.Hroi <= 0 || ActiveConfig.Vroi <= 0) return std::nullopt;
    BadDetMap map;
    if (!AllocateBlock(map, static_cast<std::size_t>(std::int64_t{ActiveConfig.Hroi} * ActiveConfig.Vroi))) {
        why = "There is no memory for the list of bad detectors.";
        return std::nullopt;
    }
    if (const UnsavedSet* const unsaved = SetWithoutFiles()) {
        std::copy_n(unsaved->badDetectors.begin(), std::min(unsaved->badDetectors.size(), map.size()), map.begin());
        return map;
    }
    const std::string& path = CalSettings.BadDetFile;
    if (path.empty()) return map;
    if (!FileExists(path)) return std::nullopt;
    const ListMarks marks = MarkListed(map, ActiveConfig.Hroi, path);
    if (marks.isRead) return map;  // lines that name no pixel were told when the list was put in force
    why = marks.amiss;
    return std::nullopt;
}

std::optional<BadDetMap> BadDetectorsInForce(std::string& why)
{
    std::optional<BadDetMap> map = ListedInForce(why);
    if (map && CalType == kGainsAndOffsets) MarkWithoutGain(*map, GainList, DecomList);
    return map;
}

}  // namespace kelvo
