#include "calib/orientation.h"

#include "config/frame_rate_table.h"
#include "pixel/bad_pixels.h"
#include "pixel/coefficient_lists.h"
#include "pixel/decommutation.h"
#include "pixel/unity_coefficients.h"
#include "pixel/unsaved_set.h"
#include "platform/box.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/pointer.h"
#include "platform/profile.h"
#include "state/cal_settings.h"
#include "state/cal_state.h"
#include "state/display_state_write.h"
#include "state/frame_state.h"
#include "state/head_state.h"
#include "state/windows.h"
#include "ui/menu_state.h"
#include "ui/status.h"
#include "video/video.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <span>
#include <string>

namespace kelvo {

namespace {

std::span<const std::uint8_t> BytesOf(const DecomTable& table)
{
    return {reinterpret_cast<const std::uint8_t*>(table.data()), table.size() * sizeof(DecomTable::value_type)};
}

// A set that has no files yet has its list in memory.
bool MarkListed(std::string_view badDetFile, BadDetMap& map, const CameraConfig& config)
{
    const UnsavedSet* const unsaved = SetWithoutFiles();
    if (!unsaved) return LoadBadDetFile(badDetFile, map, config) != 0;
    std::copy_n(unsaved->badDetectors.begin(), std::min(map.size(), unsaved->badDetectors.size()), map.begin());
    return true;
}

bool ReplaceListed(DecomTable& table, std::string_view badDetFile, const CameraConfig& config)
{
    StatusMessage("Loading bad pixel substitution file", kLeftAligned);
    BadDetMap map;
    if (!AllocateBlock(map, table.size())) {
        MessageBox(hWndMain, "Failure to allocate memory", kMessageCaption);
        return false;
    }
    if (!MarkListed(badDetFile, map, config)) return false;
    StatusMessage("Calculating pixel substitution", kLeftAligned);
    return ReplaceBadDet(table, map, config) != 0;
}

void InstallTable(const DecomTable& table)
{
    if (!DownloadCoefficients(kDecomKind, BytesOf(table))) {
        MessageBox(hWndMain, "Hardware Timeout Error, Download of Decommutation List", kMessageCaption);
    }
    SaveList(DecomTempPath(), BytesOf(table), table.size());
}

void WriteSubstituteKey(const std::string& file)
{
    WritePrivateProfileString("Display", "SubstBadPixels", std::to_string(SubstBadPixels), file);
}

// The set's own table follows the one in force.
void KeepTableInSet()
{
    if (CalSettings.DecomFile.empty() || SetWithoutFiles()) return;
    if (SaveTableInForce(CalSettings.DecomFile)) return;
    MessageBox(hWndMain, "Could not save file: " + CalSettings.DecomFile, kMessageCaption);
}

void RebuildForSet()
{
    if (RebuildTable(ActiveConfig)) {
        KeepTableInSet();
    } else {
        write::display.SubstBadPixels = SubstBadPixels ? 0 : 1;
    }
}

}  // namespace

Orientation OrientationInForce()
{
    return {.mirrorHoriz = MirrorHoriz, .mirrorVert = MirrorVert, .rotateCcw = RotateCCW};
}

DecomTable PlacesShown(const Orientation& orientation, const CameraConfig& config)
{
    const std::int64_t pixels = std::int64_t{config.Hroi} * config.Vroi;
    DecomTable places;
    if (config.Hroi <= 0 || config.Vroi <= 0 || !AllocateBlock(places, static_cast<std::size_t>(pixels))) return {};
    std::iota(places.begin(), places.end(), 0U);
    if (!ReorderDecomList(places, config, orientation.mirrorHoriz, orientation.mirrorVert, orientation.rotateCcw)) {
        return {};
    }
    return places;
}

std::int32_t SetImageOrientation(std::int32_t substitute, std::int32_t mirrorHoriz, std::int32_t mirrorVert,
                                 std::int32_t rotateCcw, std::string_view badDetFile, const CameraConfig& config,
                                 std::int32_t readoutShift)
{
    if (!CameraOn) {
        MessageBox(hWndMain, "Camera should be on.", kMessageCaption);
        return 0;
    }
    std::optional<DecomTable> table = BuildDecomList(config, readoutShift);
    if (!table) return 0;
    const bool replaces = substitute && CalType && !badDetFile.empty();
    if (replaces && !ReplaceListed(*table, badDetFile, config)) return 0;
    StatusMessage("Setting Image orientation", kLeftAligned);
    if (!ReorderDecomList(*table, config, mirrorHoriz, mirrorVert, rotateCcw)) return 0;
    InstallTable(*table);
    // A frozen picture follows its table at once: what is saved of it goes through the new one.
    if (!LiveVideo && !ViewingFile) RefreshLiveFrame();
    ShowReplacementInMenu(substitute != 0);
    return 1;
}

std::int32_t RebuildTable(const CameraConfig& config)
{
    return SetImageOrientation(SubstBadPixels, MirrorHoriz, MirrorVert, RotateCCW, CalSettings.BadDetFile, config,
                               FrameRateRowAt(IndexFrameRate).ReadoutShift);
}

bool SaveTableInForce(std::string_view path)
{
    const std::span<const std::uint8_t> bytes = BytesOf(DecomList);
    return ReplaceFile(path, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

std::int32_t SetCommutationOrder()
{
    const Hourglass hourglass;
    if (!ResetUnityGainOffset(ActiveConfig)) return 0;
    StatusMessage("Setting pixel commutation order...", kLeftAligned);
    SetImageOrientation(SubstBadPixels, 0, 0, 0, CalSettings.BadDetFile, ActiveConfig,
                        FrameRateRowAt(IndexFrameRate).ReadoutShift);
    return 1;
}

void ToggleBadPixelReplacement(HWND /*window*/)
{
    if (ActiveConfig.DualCamera) return;
    const Hourglass hourglass;
    write::display.SubstBadPixels = SubstBadPixels ? 0 : 1;
    if (CalType) RebuildForSet();
    ShowReplacementInMenu(SubstBadPixels != 0);
    WriteSubstituteKey(IniFilePath);
    if (CalType && !CalSettings.CalFile.empty() && !SetWithoutFiles()) WriteSubstituteKey(CalSettings.CalFile);
}

}  // namespace kelvo
