#include "calib/former_calibration.h"

#include "calib/run_steps.h"
#include "display/display_pipeline.h"
#include "pixel/coefficient_lists.h"
#include "pixel/decommutation.h"
#include "platform/menu.h"
#include "platform/profile.h"
#include "resources/ids.h"
#include "state/cal_state_write.h"
#include "state/display_state_write.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/menu_state.h"
#include "video/video.h"

#include <span>
#include <utility>

namespace kelvo {

namespace {

constexpr const char* kSection = "Display";
constexpr const char* kKey = "SubstBadPixels";

std::optional<std::string> SubstitutionKey()
{
    if (!HasProfileKey(kSection, kKey, IniFilePath)) return std::nullopt;
    return GetPrivateProfileString(kSection, kKey, "", IniFilePath);
}

bool ReplacementIsChecked()
{
    if (!hWndMain) return false;
    const auto item = GetMenuItem(hWndMain, kCmdReplaceBadPixels);
    return item && item->checked;
}

void KeepLimits(const CalSettingsRecord& chosen, CalSettingsRecord& record)
{
    record.NumFrames = chosen.NumFrames;
    record.GainAcceptanceRange = chosen.GainAcceptanceRange;
    record.MinOffset = chosen.MinOffset;
    record.MaxOffset = chosen.MaxOffset;
    record.AllowedNoiseLevel = chosen.AllowedNoiseLevel;
}

}  // namespace

FormerCalibration::FormerCalibration()
    : calType_(CalType),
      intensityCold_(IntensityCold),
      intensityHot_(IntensityHot),
      temperatureCold_(TemperatureCold),
      temperatureHot_(TemperatureHot),
      settings_(write::calSet),
      substBadPixels_(SubstBadPixels),
      substKey_(SubstitutionKey()),
      replacementChecked_(ReplacementIsChecked()),
      displayLow_(DisplayLow),
      displayHigh_(DisplayHigh)
{
}

void FormerCalibration::TakeTables()
{
    if (!IsCalibration() || hasTables_) return;
    hasTables_ = true;
    decomList_ = std::exchange(write::cal.DecomList, {});
    offsetList_ = std::exchange(write::cal.OffsetList, {});
    gainList_ = std::exchange(write::cal.GainList, {});
    CalibrationListsChanged();
}

void FormerCalibration::PutBackChoices() const
{
    const CalSettingsRecord& former = settings_.CalSettings;
    write::calSet.CalSettings.BadDetFile = former.BadDetFile;
    write::calSet.CalSettings.NumSources = former.NumSources;
    write::calSet.CalSettings.ChosenType = former.ChosenType;
    write::calSet.ReplaceNoisy = settings_.ReplaceNoisy;
    PutBackSubstitution();
}

void FormerCalibration::PutBackSubstitution() const
{
    write::display.SubstBadPixels = substBadPixels_;
    if (SubstitutionKey() != substKey_) {
        if (substKey_) {
            WritePrivateProfileString(kSection, kKey, *substKey_, IniFilePath);
        } else {
            DeleteProfileKey(kSection, kKey, IniFilePath);
        }
    }
    if (ReplacementIsChecked() != replacementChecked_) ShowReplacementInMenu(replacementChecked_);
}

void FormerCalibration::PutBackTables()
{
    write::cal.DecomList = std::move(decomList_);
    write::cal.OffsetList = std::move(offsetList_);
    write::cal.GainList = std::move(gainList_);
    CalibrationListsChanged();
    SaveList(DecomTempPath(), BytesOf(std::span<const std::uint32_t>(DecomList)), DecomList.size());
}

void FormerCalibration::PutBack()
{
    KeepLimits(CalSettings, settings_.CalSettings);
    write::calSet = settings_;
    PutBackSubstitution();
    const bool hadOtherTables = std::exchange(hasTables_, false);
    if (hadOtherTables) PutBackTables();
    write::cal.IntensityCold = intensityCold_;
    write::cal.IntensityHot = intensityHot_;
    write::cal.TemperatureCold = temperatureCold_;
    write::cal.TemperatureHot = temperatureHot_;
    write::cal.CalType = calType_;
    if (DisplayLow != displayLow_ || DisplayHigh != displayHigh_) {
        write::display.DisplayLow = displayLow_;
        write::display.DisplayHigh = displayHigh_;
        BuildDisplayLut(Contrast, Brightness);
    }
    if (hadOtherTables && !LiveVideo && !ViewingFile) RefreshLiveFrame();
}

}  // namespace kelvo
