#include "calib/set_bad_detectors.h"

#include "platform/files.h"
#include "platform/memory.h"
#include "platform/text.h"

#include <utility>

namespace kelvo {

namespace {

constexpr std::int32_t kGainsAndOffsets = 2;

std::string NoMemoryFor(const CalibrationSet& set)
{
    return "There is no memory for the set " + FileNameOf(set.calPath) + ".";
}

// Nothing else in a set says for how many pixels it is.
std::string WhyNotOfThatSize(const std::string& listPath, std::size_t pixels, std::size_t entryBytes)
{
    const std::optional<File> list = File::Open(listPath, FileMode::kRead);
    const bool isOther = list && !std::cmp_equal(list->Length(), pixels * entryBytes);
    return isOther ? FileNameOf(listPath) + " was made for frames of another size." : "";
}

std::string WhyNotTheGains(const CalibrationSet& set, std::size_t pixels)
{
    if (std::string other = WhyNotOfThatSize(set.gains.path, pixels, sizeof(float)); !other.empty()) return other;
    if (set.gains.read != ListRead::kComplete) return FileNameOf(set.gains.path) + " can't be read.";
    return set.decom.read == ListRead::kComplete ? "" : FileNameOf(set.decom.path) + " can't be read.";
}

}  // namespace

std::optional<BadDetMap> BadDetectorsOfSet(const CalibrationSet& set, std::int32_t columns, std::int32_t rows,
                                           std::string& why)
{
    if (columns <= 0 || rows <= 0) {
        why = "There is no frame.";
        return std::nullopt;
    }
    if (set.memoryRefused) {
        why = NoMemoryFor(set);
        return std::nullopt;
    }
    if (!set.typeText) {
        why = FileNameOf(set.calPath) + (FileExists(set.calPath) ? " can't be read." : " can't be opened.");
        return std::nullopt;
    }
    BadDetMap map;
    const std::size_t pixels = static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows);
    if (!AllocateBlock(map, pixels)) {
        why = NoMemoryFor(set);
        return std::nullopt;
    }
    const bool hasGains = set.type == kGainsAndOffsets;
    std::string amiss =
        hasGains ? WhyNotTheGains(set, pixels) : WhyNotOfThatSize(set.decom.path, pixels, sizeof(std::uint32_t));
    if (amiss.empty() && hasGains) MarkWithoutGain(map, set.gains.entries, set.decom.entries);
    if (amiss.empty() && set.badDetFile && !set.badDetFile->empty()) {
        amiss = MarkListed(map, columns, InSetDirectory(set.calPath, *set.badDetFile)).amiss;
    }
    if (amiss.empty()) return map;
    why = std::move(amiss);
    return std::nullopt;
}

std::optional<BadDetMap> BadDetectorsOfSet(const std::string& calPath, std::int32_t columns, std::int32_t rows,
                                           std::string& why)
{
    const std::int64_t pixels = std::int64_t{columns} * rows;
    const bool isFrame = columns > 0 && rows > 0;
    return BadDetectorsOfSet(isFrame ? ReadSet(calPath, static_cast<std::size_t>(pixels)) : CalibrationSet(), columns,
                             rows, why);
}

bool TellsBadDetectors(const CalibrationSet& set)
{
    const bool hasGains = set.type != kGainsAndOffsets || (FileExists(set.gains.path) && FileExists(set.decom.path));
    const std::string list = set.badDetFile.value_or("");
    return hasGains && (list.empty() || FileExists(InSetDirectory(set.calPath, list)));
}

}  // namespace kelvo
