#include "display/unit_list.h"

#include "display/units.h"
#include "platform/dialog.h"
#include "resources/ids.h"
#include "state/display_state_write.h"
#include "state/windows.h"

#include <string>
#include <vector>

namespace kelvo {

namespace {

std::vector<std::int32_t> AvailableUnits()
{
    std::vector<std::int32_t> units;
    for (std::int32_t unit = 0; unit < kUnitCount; ++unit) {
        if (IsUnitAvailable(unit)) units.push_back(unit);
    }
    return units;
}

std::string ItemText(std::int32_t unit)
{
    std::string name;
    std::string unitText;
    GetUnitName(unit, name, unitText);
    return unitText.empty() ? name : name + " (" + unitText + ")";
}

std::int32_t FillList(HWND window, std::int32_t unit)
{
    if (window) ListClear(window, kUnitList);
    int selection = 0;
    std::int32_t chosen = -1;
    for (const std::int32_t offered : AvailableUnits()) {
        const int item = window ? ListAdd(window, kUnitList, ItemText(offered), offered) : 0;
        if (chosen >= 0 && offered != unit) continue;
        selection = item;
        chosen = offered;
    }
    if (window) ListSelect(window, kUnitList, selection);
    return chosen;
}

}  // namespace

std::int32_t PickAvailableUnit(std::int32_t unit)
{
    std::int32_t picked = unit;
    if (!IsUnitAvailable(unit)) {
        const std::vector<std::int32_t> units = AvailableUnits();
        picked = units.empty() ? -1 : units.front();
    }
    FillUnitCombo(hDlgPanel, DisplayUnit);
    return picked;
}

std::int32_t FillUnitCombo(HWND window, std::int32_t unit)
{
    if (window != hDlgPanel) FillList(window, unit);
    return FillList(hDlgPanel, unit);
}

std::int32_t OnUnitCombo(HWND window)
{
    const std::intptr_t data = ListItemData(window, kUnitList, ListSelection(window, kUnitList));
    const auto unit = static_cast<std::int32_t>(data & 0xFFFF);
    FillUnitCombo(hDlgPanel, unit);
    return unit;
}

void SetDisplayUnit(std::int32_t unit)
{
    write::display.DisplayUnit = unit;
    FillUnitCombo(hDlgPanel, unit);
}

void KeepUnitAvailable()
{
    write::display.DisplayUnit = PickAvailableUnit(DisplayUnit);
}

void ShowUnits(HWND window)
{
    write::display.DisplayUnit = FillUnitCombo(window, DisplayUnit);
}

void TakeUnit(HWND window)
{
    write::display.DisplayUnit = OnUnitCombo(window);
}

}  // namespace kelvo
