// JSON as a value: what files and reports that other programs read too are made of. Texts are UTF-8;
// platform/transcript.h writes one (JsonString).
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kelvo {

struct JsonValue;
using JsonArray = std::vector<JsonValue>;
using JsonObject = std::map<std::string, JsonValue, std::less<>>;

struct JsonValue {
    std::variant<std::monostate, bool, double, std::string, JsonArray, JsonObject> value;  // monostate: null

    // nullptr where the value is of another kind.
    const bool* Bool() const { return std::get_if<bool>(&value); }
    const double* Number() const { return std::get_if<double>(&value); }
    const std::string* Text() const { return std::get_if<std::string>(&value); }
    const JsonArray* Array() const { return std::get_if<JsonArray>(&value); }
    const JsonObject* Object() const { return std::get_if<JsonObject>(&value); }
    // The member of an object; nullptr also where the value is none.
    const JsonValue* Member(std::string_view name) const;
};

// A whole text, whose outermost value is an array or an object. Of two members of one name the last counts. nullopt
// with the reason in why: "line 3: unterminated string".
std::optional<JsonValue> ReadJson(std::string_view text, std::string& why);

// The shortest number that is read back as the same double; "null" of what is no finite number.
std::string JsonNumber(double number);

}  // namespace kelvo
