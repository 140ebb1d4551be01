#include "pixel/unity_coefficients.h"

#include "config/frame_rate_table.h"
#include "pixel/coefficient_lists.h"
#include "pixel/decommutation.h"
#include "platform/box.h"
#include "state/cal_state_write.h"
#include "state/display_state_write.h"
#include "state/head_state.h"
#include "state/windows.h"
#include "ui/status.h"

#include <optional>
#include <span>
#include <string_view>

namespace kelvo {

namespace {

constexpr std::int32_t kFullScale = 0x3FFF;  // of the head's 14 bits

std::span<const std::uint8_t> BytesOf(const DecomTable& table)
{
    return {reinterpret_cast<const std::uint8_t*>(table.data()), table.size() * sizeof(DecomTable::value_type)};
}

void Tell(std::string_view text)
{
    MessageBox(hWndMain, text, kMessageCaption);
}

bool InstallTable(const DecomTable& table, bool tellSteps)
{
    if (LoadActiveList(kDecomKind, BytesOf(table))) return true;
    if (tellSteps) StatusMessage("Decommutation download to RAM failed", kLeftAligned);
    Tell("Hardware Timeout Error, Download of Decommutation List");
    return false;
}

}  // namespace

bool InstallDecommutation(const CameraConfig& config, std::int32_t mirrorHoriz, std::int32_t mirrorVert,
                          std::int32_t rotateCcw, bool tellSteps)
{
    const auto step = [&](std::string_view text) {
        if (tellSteps) StatusMessage(text, kLeftAligned);
    };
    step("Initialize decommutation array");
    std::optional<DecomTable> table = BuildDecomList(config, FrameRateRowAt(IndexFrameRate).ReadoutShift);
    if (!table) return false;
    step("Reorder decommutation memory");
    if (!ReorderDecomList(*table, config, mirrorHoriz, mirrorVert, rotateCcw)) return false;
    step("Download decommutation memory to RAM");
    if (!InstallTable(*table, tellSteps)) return false;
    SaveList(DecomTempPath(), BytesOf(*table), table->size());
    return true;
}

int ResetUnityGainOffset(const CameraConfig& config)
{
    write::cal.CalType = 0;
    write::display.DisplayLow = 0;
    write::display.DisplayHigh = kFullScale;
    write::cal.DecomList.clear();
    CalibrationListsChanged();
    const bool tableStands = InstallDecommutation(config, 0, 0, 0, false);
    const auto pixels = static_cast<std::int32_t>(PixelsOf(config));
    const bool gainsStand = FillActiveList(kGainKind, 0, pixels, 1) != 0;
    if (!gainsStand) Tell("Error, Download of Gain Coefficients");
    if (!FillActiveList(kOffsetKind, 0, pixels, 2.0 * config.UnityOffset)) {
        Tell("Error, Download of Offset Coefficients");
    }
    return tableStands && gainsStand ? 1 : 0;
}

}  // namespace kelvo
