#include "state/cal_settings.h"

#include "state/state_registry.h"

namespace kelvo {

CalSettingsRecord CalSettings;
CalSettingsRecord CalSettings2;
std::int32_t ReplaceNoisy = 1;
std::int32_t CalDone = 0;
std::int32_t BadDetCount = 0;

namespace {

const StateNames kStateNames{
    Named("CalSettings.CalFile", CalSettings.CalFile),
    Named("CalSettings.GainFile", CalSettings.GainFile),
    Named("CalSettings.OffsetFile", CalSettings.OffsetFile),
    Named("CalSettings.DecomFile", CalSettings.DecomFile),
    Named("CalSettings.BadDetFile", CalSettings.BadDetFile),
    Named("CalSettings.NumFrames", CalSettings.NumFrames),
    Named("CalSettings.ChosenType", CalSettings.ChosenType),
    Named("ReplaceNoisy", ReplaceNoisy),
    Named("BadDetCount", BadDetCount),
};

}  // namespace

}  // namespace kelvo
