// The settings of the recorder as fields of the window RECORDER: filling them, and reading what the operator typed.
#pragma once

#include "platform/types.h"
#include "record/recorder_settings.h"

#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

void ShowRecorderSettings(HWND dialog, const RecorderSettings& settings);

struct FieldRefusal {
    int control = 0;
    std::string why;  // "One frame each: please enter a number from 0 to 1e+09."
};
// Reads all fields into settings. A field without a sensible value leaves its setting as it was; the first of them is
// told. Fields that the choices make meaningless are read only where they make sense.
std::optional<FieldRefusal> ReadRecorderForm(HWND dialog, RecorderSettings& settings);

// After a choice in the lists of lengths or of pre-triggers: the number beside it is that of settings in the new unit.
void ShowLengthOf(HWND dialog, const RecorderSettings& settings);
void ShowPreTriggerOf(HWND dialog, const RecorderSettings& settings);

// Fills the list of regions with the view's and chooses that one; a chosen one that isn't there any more is listed too.
void ListRecorderRegions(HWND dialog, std::string_view chosen);

// Greys what the choices make meaningless; with canChange false, everything.
void EnableRecorderFields(HWND dialog, bool canChange);

}  // namespace kelvo
