// Module state by its name, for operator scripts: state("CalType") reads the variable of that name, at the moment of
// asking. A module registers its own names in the .cpp that defines the variables, before main():
//
//     const StateNames kStateNames{Named("Contrast", Contrast), Named("Brightness", Brightness)};
//
// so that a program that has the variables has their names too.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

namespace kelvo {

// monostate: there is no value now; a script sees nil. Texts are the system's bytes.
using StateValue = std::variant<std::monostate, std::int64_t, double, std::string, std::vector<double>>;

// A name that stands already is replaced.
void RegisterState(std::string_view name, std::function<StateValue()> read);

// nullopt: no such name.
std::optional<StateValue> ReadState(std::string_view name);

// All registered names, in order.
std::vector<std::string> AllStateNames();

// Registered names that the given one may have meant, nearest first, at most five: the same letters in another case, a
// name that begins with it or holds it, or one that is a slip or two of the pen away.
std::vector<std::string> NearStateNames(std::string_view name);

struct StateName {
    std::string_view name;
    std::function<StateValue()> read;
};

// A variable read as it stands; it must live as long as the program.
template <typename T>
StateName Named(std::string_view name, const T& variable)
{
    return {name, [&variable]() -> StateValue {
                if constexpr (std::is_integral_v<T> || std::is_enum_v<T>) {
                    return static_cast<std::int64_t>(variable);
                } else if constexpr (std::is_floating_point_v<T>) {
                    return static_cast<double>(variable);
                } else if constexpr (std::is_convertible_v<const T&, std::string_view>) {
                    return std::string(std::string_view(variable));
                } else {
                    return std::vector<double>(std::begin(variable), std::end(variable));
                }
            }};
}

// What a block of bytes holds, as a text that is another one for other bytes: for lists too long to be read entry by
// entry.
std::string DigestOf(std::span<const std::byte> bytes);

template <typename T>
StateName Digest(std::string_view name, const std::vector<T>& list)
{
    return {name, [&list]() -> StateValue { return DigestOf(std::as_bytes(std::span(list))); }};
}

template <typename T>
void RegisterVariable(std::string_view name, const T& variable)
{
    RegisterState(name, Named(name, variable).read);
}

// The names of a module, registered as the object is made.
class StateNames {
  public:
    StateNames(std::initializer_list<StateName> names);
};

}  // namespace kelvo
