// Failures of the machine that can't be had on demand, made for tests and scripts: "register status class",
// "create status window", "no mouse", "load dialog NAME", ... A fault stays until it is taken off, or comes once, at
// the n-th time that the machine is asked.
#pragma once

#include <string_view>

namespace kelvo {

void SetFault(std::string_view name, bool on);
// The n-th question for the fault from now finds it, once (1: the next). 0: none does.
void SetFaultOnce(std::string_view name, int n);
// How many more questions there are until a fault that comes once; 0: it has come, or none was ordered.
int QuestionsUntilFault(std::string_view name);

// The machine asks at each step that can fail.
bool FaultIsSet(std::string_view name);

// While one stands nothing fails and nothing is counted: for what watches the machine and isn't part of it.
class NoFaults {
  public:
    NoFaults();
    ~NoFaults();
    NoFaults(const NoFaults&) = delete;
    NoFaults& operator=(const NoFaults&) = delete;
};

// Takes all faults off.
void ClearFaults();

}  // namespace kelvo
