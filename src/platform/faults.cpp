#include "platform/faults.h"

#include <set>
#include <string>

namespace kelvo {

namespace {

std::set<std::string, std::less<>>& Faults()
{
    static std::set<std::string, std::less<>> faults;
    return faults;
}

}  // namespace

void SetFault(std::string_view name, bool on)
{
    if (on) {
        Faults().emplace(name);
    } else if (const auto fault = Faults().find(name); fault != Faults().end()) {
        Faults().erase(fault);
    }
}

bool FaultIsSet(std::string_view name)
{
    return Faults().contains(name);
}

void ClearFaults()
{
    Faults().clear();
}

}  // namespace kelvo
