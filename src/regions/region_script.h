// Regions as operator scripts have them: tables by the names of a .regions file, and the figures of one.
#pragma once

#include "script/script.h"

#include <string>
#include <vector>

namespace kelvo {

// The view's regions: name, shape, x1, y1, x2, y2, emissivity, reflected (°C; none for a black body), selected.
std::vector<ScriptFields> RegionsForScript();
// Others in their place; empty, or why they can't be: a field that makes no sense, or what SetRegions says. Fields that
// are missing are as Region begins; selected is passed over.
std::string SetRegionsFromScript(const std::vector<ScriptFields>& tables);

// Of the frame on view. In counts: pixels, left_out, mean, deviation, min, min_x, min_y, max, max_x, max_y, saturated,
// outside (both nil where they aren't known); in the unit on view, with the emissivity: unit (its name, "\xB0" "C"),
// unit_mean, unit_deviation, unit_min, unit_max; emissivity_applies. Of no pixels the figures are nil. Nothing, with
// the reason in why: no frame, no region of that name, a table that makes no sense.
ScriptFields StatsOfNamed(const std::string& name, std::string& why);
ScriptFields StatsOfTable(const ScriptFields& table, std::string& why);

}  // namespace kelvo
