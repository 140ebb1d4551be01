// Failures of the machine that can't be had on demand, made for tests and scripts: "register status class",
// "create status window", "no mouse", "load dialog NAME", ... A fault stays until it is taken off.
#pragma once

#include <string_view>

namespace kelvo {

void SetFault(std::string_view name, bool on);
bool FaultIsSet(std::string_view name);

// Takes all faults off.
void ClearFaults();

}  // namespace kelvo
