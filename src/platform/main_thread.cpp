#include "platform/main_thread.h"

#include <QCoreApplication>
#include <QMetaObject>

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

void RunOnMainThread(std::function<void()> action)
{
    if (qApp) QMetaObject::invokeMethod(qApp, std::move(action), Qt::QueuedConnection);
}

std::uint32_t RegisterWindowMessage(std::string_view name)
{
    constexpr std::uint32_t kFirstNamed = 0xC000;
    static std::vector<std::string> names;
    const auto found = std::ranges::find(names, name);
    const auto index = std::distance(names.begin(), found);
    if (found == names.end()) names.emplace_back(name);
    return kFirstNamed + static_cast<std::uint32_t>(index);
}

}  // namespace kelvo
