#include "state/cal_settings_write.h"

namespace kelvo {

namespace write {
constinit CalSettingsVariables calSet;
}

constinit const CalSettingsRecord& CalSettings = write::calSet.CalSettings;
constinit const CalSettingsRecord& CalSettings2 = write::calSet.CalSettings2;
constinit const std::int32_t& ReplaceNoisy = write::calSet.ReplaceNoisy;
constinit const std::int32_t& CalDone = write::calSet.CalDone;
constinit const std::int32_t& BadDetCount = write::calSet.BadDetCount;

void ResetCalSettings()
{
    write::calSet = {};
}

}  // namespace kelvo
