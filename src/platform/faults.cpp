#include "platform/faults.h"

#include <map>
#include <set>
#include <string>

namespace kelvo {

namespace {

std::set<std::string, std::less<>>& Faults()
{
    static std::set<std::string, std::less<>> faults;
    return faults;
}

// Faults that come once, with the questions until then.
std::map<std::string, int, std::less<>>& FaultsToCome()
{
    static std::map<std::string, int, std::less<>> faults;
    return faults;
}

int watchers = 0;  // NoFaults that stand

bool ComesNow(std::string_view name)
{
    const auto fault = FaultsToCome().find(name);
    if (fault == FaultsToCome().end() || --fault->second > 0) return false;
    FaultsToCome().erase(fault);
    return true;
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

void SetFaultOnce(std::string_view name, int n)
{
    FaultsToCome().insert_or_assign(std::string(name), n);
    if (n <= 0) FaultsToCome().erase(FaultsToCome().find(name));
}

int QuestionsUntilFault(std::string_view name)
{
    const auto fault = FaultsToCome().find(name);
    return fault == FaultsToCome().end() ? 0 : fault->second;
}

bool FaultIsSet(std::string_view name)
{
    return watchers == 0 && (ComesNow(name) || Faults().contains(name));
}

NoFaults::NoFaults()
{
    ++watchers;
}

NoFaults::~NoFaults()
{
    --watchers;
}

void ClearFaults()
{
    Faults().clear();
    FaultsToCome().clear();
}

}  // namespace kelvo
