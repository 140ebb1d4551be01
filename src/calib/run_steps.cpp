#include "calib/run_steps.h"

#include "display/unit_list.h"
#include "display/units.h"
#include "head/video_settings.h"
#include "pixel/coefficient_lists.h"
#include "platform/box.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "state/cal_settings.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/status.h"
#include "video/video.h"

#include <algorithm>

namespace kelvo {

namespace {

// A set that doesn't say of which camera it is can't be loaded; the settings may leave it to the default.
void NameCamera()
{
    if (HasProfileKey("Setup", "ActiveCamera", IniFilePath)) return;
    WritePrivateProfileString("Setup", "ActiveCamera", std::to_string(ActiveCamera), IniFilePath);
}

}  // namespace

bool StartLiveVideo()
{
    if (!LiveVideo) ToggleFreeze(LiveVideo);
    return LiveVideo != 0;
}

bool SaveOffsets(std::string_view path, std::span<const std::int16_t> offsets)
{
    // Two offsets a word: an odd last one isn't stored.
    return SaveList(path, BytesOf(offsets), offsets.size() / 2) != 0;
}

bool SaveGains(std::string_view path, std::span<const float> gains)
{
    return SaveList(path, BytesOf(gains), gains.size()) != 0;
}

void SaveNoise(const std::string& path, std::span<const std::int16_t> noiseList)
{
    StatusMessage("Saving pixel noise file...", kLeftAligned);
    const auto* const bytes = reinterpret_cast<const char*>(noiseList.data());
    if (ReplaceFile(path, {bytes, noiseList.size_bytes()})) return;
    MessageBeep(Sound::kExclamation);
    MessageBox(hWndMain, path, "Noise File Storage Failure");
}

void WriteCalKey(const char* key, std::string_view value)
{
    WritePrivateProfileString("Calibration", key, value, IniFilePath);
}

void WriteCalFileKey(const char* key, std::string_view path)
{
    std::string name;
    std::string extension;
    SplitPath(path, nullptr, nullptr, &name, &extension);
    WriteCalKey(key, name + extension);
}

bool AcceptOffsetRange(HWND window)
{
    return MessageBox(window, "Some OFFSET coefficients out of range!\nDo you wish to continue ?",
                      "Warning!  Continue?", BoxIcon::kQuestion, BoxButtons::kYesNo) == Button::kYes;
}

void CompleteSet(HWND window, SetReplacement& files, const std::string& calPath, bool listsAreSaved)
{
    NameCamera();
    SaveVideoSettings(IniFilePath);
    if (listsAreSaved && CopySettingsTo(calPath) && files.Commit()) return;
    files.RollBack();
    // What stands on the disk is another calibration: it must not be taken for the files of this one.
    for (std::string* const path : {&CalSettings.CalFile, &CalSettings.GainFile, &CalSettings.OffsetFile,
                                    &CalSettings.DecomFile, &CalSettings.BadDetFile}) {
        path->clear();
    }
    MessageBox(window,
               "The calibration is in force, but its files couldn't be saved.\nThe former ones stand:\n" + calPath,
               "Kelvo File Error!");
}

void ShowDegrees()
{
    DisplayUnit = kUnitCelsius;
    FillUnitCombo(hDlgPanel, DisplayUnit);
    StatusString(kIdleHint, kLeftAligned);
}

}  // namespace kelvo
