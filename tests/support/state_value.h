// Module state by its name, as scripts read it: for what a module keeps to itself.
#pragma once

#include "state/state_registry.h"

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

// Of a name that doesn't stand, or has another type, a value that no state has.
inline std::int64_t StateNumber(std::string_view name)
{
    const auto value = ReadState(name);
    const auto* const number = value ? std::get_if<std::int64_t>(&*value) : nullptr;
    return number ? *number : std::numeric_limits<std::int64_t>::min();
}
inline double StateReal(std::string_view name)
{
    const auto value = ReadState(name);
    const auto* const number = value ? std::get_if<double>(&*value) : nullptr;
    return number ? *number : -1e300;
}
inline std::string StateText(std::string_view name)
{
    const auto value = ReadState(name);
    const auto* const text = value ? std::get_if<std::string>(&*value) : nullptr;
    return text ? *text : "no text";
}
inline std::vector<double> StateList(std::string_view name)
{
    const auto value = ReadState(name);
    const auto* const list = value ? std::get_if<std::vector<double>>(&*value) : nullptr;
    return list ? *list : std::vector<double>{-1e300};
}

}  // namespace kelvo
