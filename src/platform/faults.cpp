#include "platform/faults.h"

#include <map>
#include <mutex>
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

std::mutex mutex;  // the thread that captures asks too

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
    const std::scoped_lock lock(mutex);
    if (on) {
        Faults().emplace(name);
    } else if (const auto fault = Faults().find(name); fault != Faults().end()) {
        Faults().erase(fault);
    }
}

void SetFaultOnce(std::string_view name, int n)
{
    const std::scoped_lock lock(mutex);
    FaultsToCome().insert_or_assign(std::string(name), n);
    if (n <= 0) FaultsToCome().erase(FaultsToCome().find(name));
}

int QuestionsUntilFault(std::string_view name)
{
    const std::scoped_lock lock(mutex);
    const auto fault = FaultsToCome().find(name);
    return fault == FaultsToCome().end() ? 0 : fault->second;
}

bool FaultIsSet(std::string_view name)
{
    const std::scoped_lock lock(mutex);
    return watchers == 0 && (ComesNow(name) || Faults().contains(name));
}

NoFaults::NoFaults()
{
    const std::scoped_lock lock(mutex);
    ++watchers;
}

NoFaults::~NoFaults()
{
    const std::scoped_lock lock(mutex);
    --watchers;
}

void ClearFaults()
{
    const std::scoped_lock lock(mutex);
    Faults().clear();
    FaultsToCome().clear();
}

}  // namespace kelvo
