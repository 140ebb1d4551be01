#include "batch/json_object.h"

#include "platform/text.h"
#include "platform/transcript.h"

#include <array>
#include <charconv>
#include <cmath>

namespace kelvo {

namespace {

template <typename Real>
std::string Shortest(Real value)
{
    std::array<char, 64> digits{};
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    return error == std::errc() ? std::string(digits.data(), end) : std::string();
}

}  // namespace

std::string ShortestText(double value)
{
    return Shortest(value);
}

std::string ShortestText(float value)
{
    return Shortest(value);
}

JsonObject& JsonObject::Raw(std::string_view key, std::string_view json)
{
    if (!fields_.empty()) fields_ += ',';
    fields_ += JsonString(key);
    fields_ += ':';
    fields_ += json;
    return *this;
}

JsonObject& JsonObject::Text(std::string_view key, std::string_view value)
{
    return Raw(key, JsonString(ToUtf8(value)));
}

JsonObject& JsonObject::Whole(std::string_view key, std::int64_t value)
{
    return Raw(key, std::to_string(value));
}

JsonObject& JsonObject::Number(std::string_view key, double value)
{
    return Raw(key, std::isfinite(value) ? ShortestText(value) : "null");
}

JsonObject& JsonObject::Single(std::string_view key, float value)
{
    return Raw(key, std::isfinite(value) ? ShortestText(value) : "null");
}

JsonObject& JsonObject::Truth(std::string_view key, bool value)
{
    return Raw(key, value ? "true" : "false");
}

}  // namespace kelvo
