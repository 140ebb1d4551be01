#include "regions/bad_detectors.h"

#include "calib/set_reader.h"
#include "grabber/frame_size.h"
#include "pixel/pixel_pair.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "state/frame_state.h"
#include "state/state_registry.h"
#include "viewing/fitted_contrast.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kelvo {

namespace {

constexpr float kDeadGain = 0.001F;  // pixel/bad_pixels.h, IdentifyBadDet
constexpr std::size_t kLongestList = std::size_t{1} << 26;

struct Choice {
    std::int32_t leaveOut = 0;
    std::string set;
};
Choice choice;

// The chosen set as it was read for a size of frame, or why it couldn't be.
struct ReadForView {
    std::string set;
    Point size{};
    BadDetMap map;
    std::string why;
};
std::optional<ReadForView> readSet;
BadDetMap onView;

std::string NameOf(const std::string& path)
{
    std::string name;
    std::string extension;
    SplitPath(path, nullptr, nullptr, &name, &extension);
    return name + extension;
}

bool MarkListed(BadDetMap& map, const std::string& path, std::int32_t columns, std::int32_t rows, std::string& why)
{
    std::optional<std::string> contents = ReadWholeFile(path, kLongestList);
    if (!contents) {
        why = NameOf(path) + " can't be read.";
        return false;
    }
    LineReader reader(std::move(*contents), kLongestPairLine);
    std::string line;
    while (NextPairLine(reader, line)) {
        if (Trimmed(line).empty()) continue;
        const std::optional<PixelPair> pair = ScanPixelPair(line);
        if (!pair) {
            why = NameOf(path) + " isn't a list of bad detectors: \"" + std::string(Trimmed(line)) + "\".";
            return false;
        }
        if (pair->row < 0 || pair->column < 0 || pair->row >= rows || pair->column >= columns) {
            why = Format("%s lists row %d, column %d, which lies outside of a frame of %d x %d.", NameOf(path).c_str(),
                         pair->row, pair->column, columns, rows);
            return false;
        }
        map[static_cast<std::size_t>(pair->row) * static_cast<std::size_t>(columns) +
            static_cast<std::size_t>(pair->column)] = 1;
    }
    return true;
}

bool MarkByGain(BadDetMap& map, const CalibrationSet& set, std::string& why)
{
    const std::optional<File> gains = File::Open(set.gains.path, FileMode::kRead);
    const bool fits = gains && std::cmp_equal(gains->Length(), map.size() * sizeof(float));
    if (gains && !fits) {
        why = NameOf(set.gains.path) + " was made for frames of another size.";
        return false;
    }
    if (set.gains.read != ListRead::kComplete || set.decom.read != ListRead::kComplete) {
        why = NameOf(set.gains.read == ListRead::kComplete ? set.decom.path : set.gains.path) + " can't be read.";
        return false;
    }
    for (std::size_t i = 0; i < map.size(); ++i) {
        if (std::fabs(set.gains.entries[set.decom.entries[i]]) <= kDeadGain) map[i] = 1;
    }
    return true;
}

const ReadForView& SetForView(const std::string& path)
{
    const Point size = FrameSizeOnView();
    if (!readSet || readSet->set != path || readSet->size != size) {
        readSet = {.set = path, .size = size, .map = {}, .why = {}};
        if (std::optional<BadDetMap> map = BadDetectorsOfSet(path, size.x, size.y, readSet->why)) {
            readSet->map = std::move(*map);
        }
    }
    return *readSet;
}

const StateNames kStateNames{Named("LeaveBadDetectorsOut", choice.leaveOut), Named("BadDetectorSet", choice.set)};

}  // namespace

constinit const std::int32_t& LeaveBadDetectorsOut = choice.leaveOut;
constinit const std::string& BadDetectorSet = choice.set;

std::optional<BadDetMap> BadDetectorsOfSet(const std::string& calPath, std::int32_t columns, std::int32_t rows,
                                           std::string& why)
{
    if (columns <= 0 || rows <= 0) {
        why = "There is no frame.";
        return std::nullopt;
    }
    if (!FileExists(calPath)) {
        why = NameOf(calPath) + " can't be opened.";
        return std::nullopt;
    }
    BadDetMap map;
    const std::size_t pixels = static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows);
    const bool hasRoom = AllocateBlock(map, pixels);
    const CalibrationSet set = hasRoom ? ReadSet(calPath, pixels) : CalibrationSet{};
    if (!hasRoom || set.memoryRefused) {
        why = "There is no memory for the set " + NameOf(calPath) + ".";
        return std::nullopt;
    }
    if (!MarkByGain(map, set, why)) return std::nullopt;
    if (set.badDetFile && !set.badDetFile->empty() &&
        !MarkListed(map, InSetDirectory(calPath, *set.badDetFile), columns, rows, why)) {
        return std::nullopt;
    }
    return map;
}

void ChooseBadDetectors(bool leaveOut)
{
    choice.leaveOut = leaveOut ? 1 : 0;
}

bool NameBadDetectorSet(const std::string& calPath, std::string& why)
{
    readSet.reset();
    const std::string reason = !calPath.empty() && ViewingFile ? SetForView(calPath).why : "";
    if (!reason.empty()) {
        why = reason;
        return false;
    }
    choice.set = calPath;
    return true;
}

const BadDetMap& BadDetectorsOnView()
{
    static const BadDetMap kNone;
    if (!LeaveBadDetectorsOut) return kNone;
    if (!ViewingFile) {
        onView = BadPixelsOnView();
        return onView;
    }
    return BadDetectorSet.empty() ? kNone : SetForView(BadDetectorSet).map;
}

std::string WhyNoneIsLeftOut()
{
    if (!LeaveBadDetectorsOut || !ViewingFile) return {};
    if (BadDetectorSet.empty()) return "A file doesn't tell of bad detectors: name the set that it was made with.";
    return SetForView(BadDetectorSet).why;
}

std::size_t BadDetectorsIn(const BadDetMap& map)
{
    return map.size() - static_cast<std::size_t>(std::ranges::count(map, std::uint8_t{0}));
}

void ResetBadDetectors()
{
    choice = {};
    readSet.reset();
    BadDetMap().swap(onView);
}

}  // namespace kelvo
