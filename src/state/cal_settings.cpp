#include "state/cal_settings.h"

namespace kelvo {

CalSettingsRecord CalSettings;
CalSettingsRecord CalSettings2;
std::int32_t ReplaceNoisy = 1;
std::int32_t CalDone = 0;
std::int32_t BadDetCount = 0;

}  // namespace kelvo
