#include "calib/unsaved_lists.h"

#include "calib/last_set.h"
#include "calib/run_steps.h"
#include "platform/files.h"
#include "state/cal_state.h"
#include "state/camera_config.h"

#include <span>
#include <string_view>

namespace kelvo {

namespace {

template <typename Entry>
bool WriteEntries(const std::string& calPath, std::string_view extension, const std::vector<Entry>& entries)
{
    const std::span<const std::uint8_t> bytes = BytesOf(std::span(entries));
    return ReplaceFile(SetFile(calPath, extension), {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

bool Gone(const std::string& path)
{
    return !FileExists(path) || DeleteFileNamed(path);
}

bool WriteNoise(const UnsavedSet& set, const std::string& path)
{
    return set.noise.empty() ? Gone(path) : ReplaceFile(path, set.noise);
}

bool WriteBadDetectors(const UnsavedSet& set, const std::string& path)
{
    return set.badDetectors.empty() ? Gone(path) : WriteBadDetFile(path, set.badDetectors, ActiveConfig) != 0;
}

}  // namespace

bool WriteUnsavedLists(const UnsavedSet& set, const std::string& calPath)
{
    return WriteEntries(calPath, ".gai", set.gains) && WriteEntries(calPath, ".off", set.offsets) &&
           WriteNoise(set, SetFile(calPath, ".noi")) && WriteEntries(calPath, ".dcm", DecomList) &&
           WriteBadDetectors(set, SetFile(calPath, ".bad"));
}

}  // namespace kelvo
