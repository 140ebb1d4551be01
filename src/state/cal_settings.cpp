#include "state/cal_settings.h"

#include "state/cal_settings_write.h"
#include "state/state_registry.h"

namespace kelvo {

namespace write {
CalSettingsVariables calSet;
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

namespace {

const StateNames kStateNames{
    Named("CalSettings.CalFile", CalSettings.CalFile),
    Named("CalSettings.GainFile", CalSettings.GainFile),
    Named("CalSettings.OffsetFile", CalSettings.OffsetFile),
    Named("CalSettings.DecomFile", CalSettings.DecomFile),
    Named("CalSettings.BadDetFile", CalSettings.BadDetFile),
    Named("CalSettings.NumFrames", CalSettings.NumFrames),
    Named("CalSettings.ChosenType", CalSettings.ChosenType),
    Named("CalSettings.NumSources", CalSettings.NumSources),
    Named("CalSettings.EmissivityCold", CalSettings.EmissivityCold),
    Named("CalSettings.EmissivityHot", CalSettings.EmissivityHot),
    Named("ReplaceNoisy", ReplaceNoisy),
    Named("BadDetCount", BadDetCount),
};

}  // namespace

}  // namespace kelvo
