#include "regions/bad_detectors.h"

#include "calib/set_bad_detectors.h"
#include "grabber/frame_size.h"
#include "pixel/bad_marks.h"
#include "platform/file_as_read.h"
#include "platform/files.h"
#include "state/frame_state.h"
#include "state/state_registry.h"
#include "viewing/fitted_contrast.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

struct Choice {
    std::int32_t leaveOut = 0;
    std::string set;
};
Choice choice;

struct SetFile {
    std::string path;
    FileAsRead file;
};

// The chosen set as it was read for a size of frame, or why it couldn't be.
struct ReadForView {
    std::string set;
    Point size{};
    std::vector<SetFile> files{};  // that say which are bad
    BadDetMap map{};
    std::string why{};
};
std::optional<ReadForView> readSet;
BadDetMap onView;

bool IsUnchanged(const SetFile& of)
{
    return of.file.IsStill(ResolvePath(of.path));
}

ReadForView ReadForFrames(const std::string& path, const Point& size)
{
    ReadForView read{.set = path, .size = size};
    const auto note = [&read](const std::string& file) {
        read.files.push_back({file, FileAsRead::Of(ResolvePath(file))});
    };
    note(path);
    const std::int64_t pixels = std::int64_t{size.x} * size.y;
    const CalibrationSet set = ReadSet(path, static_cast<std::size_t>(std::max<std::int64_t>(pixels, 0)));
    note(set.gains.path);
    note(set.decom.path);
    if (const std::string list = set.badDetFile.value_or(""); !list.empty()) note(InSetDirectory(path, list));
    std::optional<BadDetMap> map = BadDetectorsOfSet(set, size.x, size.y, read.why);
    if (map) read.map = std::move(*map);
    return read;
}

const ReadForView& SetForView(const std::string& path)
{
    const Point size = FrameSizeOnView();
    const bool isRead =
        readSet && readSet->set == path && readSet->size == size && std::ranges::all_of(readSet->files, IsUnchanged);
    if (!isRead) readSet = ReadForFrames(path, size);
    return *readSet;
}

const StateNames kStateNames{Named("LeaveBadDetectorsOut", choice.leaveOut), Named("BadDetectorSet", choice.set)};

}  // namespace

constinit const std::int32_t& LeaveBadDetectorsOut = choice.leaveOut;
constinit const std::string& BadDetectorSet = choice.set;

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
    if (!LeaveBadDetectorsOut || !(ViewingFile || CameraOn)) return {};
    if (!ViewingFile) {
        std::string why;
        const bool isKnown = ListedInForce(why).has_value();
        return isKnown || !why.empty() ? why : std::string(kNoListInForce);
    }
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
