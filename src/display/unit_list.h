// The Units lists: control 1256 of the panel and of the dialogs that have one. Each holds the units that the frame on
// view can be read in, with the unit's index as the item's data.
#pragma once

#include "platform/types.h"

#include <cstdint>

namespace kelvo {

// DisplayUnit, and the panel's list shows it.
void SetDisplayUnit(std::int32_t unit);
// After a change of what is on view: DisplayUnit becomes what PickAvailableUnit gives for it.
void KeepUnitAvailable();
// Fills the list of a window that opens around DisplayUnit, which becomes what is selected there.
void ShowUnits(HWND window);
// The operator chose in the list of window: DisplayUnit is the choice.
void TakeUnit(HWND window);

// unit if the frame on view can be read in it, otherwise the lowest index that it can be read in, or -1 if there is
// none. The panel's list is refilled around the present DisplayUnit, not around the result: who stores the result and
// needs the list to agree calls FillUnitCombo.
std::int32_t PickAvailableUnit(std::int32_t unit);

// Refills the list of window, then the panel's if that is another, with "Temperature (\xB0" "C)" or the name alone, and
// selects unit, or the first item where it isn't offered. A list that doesn't exist (no panel yet) is passed over.
// Gives the index selected, -1 if no unit is offered.
std::int32_t FillUnitCombo(HWND window, std::int32_t unit);

// A change of the selection in the list of window: the panel's list follows. Gives the index selected.
std::int32_t OnUnitCombo(HWND window);

}  // namespace kelvo
