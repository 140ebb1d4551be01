#include "platform/json_text.h"

#include "platform/json.h"
#include "platform/text.h"
#include "platform/transcript.h"

#include <array>
#include <charconv>
#include <cmath>

namespace kelvo {

namespace {

template <typename Number>
std::string Shortest(Number value)
{
    std::array<char, 64> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value);
    return {text.data(), end.ptr};
}

// Code points behind ASCII as \uXXXX, in two halves where they have more than 16 bits. utf8 is valid.
std::string AsciiOf(std::string_view utf8)
{
    std::string ascii;
    for (std::size_t i = 0; i < utf8.size();) {
        const auto lead = static_cast<std::uint8_t>(utf8[i]);
        if (lead < 0x80) {
            ascii += utf8[i++];
            continue;
        }
        const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
        std::uint32_t point = lead & (0x7FU >> length);
        for (std::size_t k = 1; k < length && i + k < utf8.size(); ++k) {
            point = point << 6U | (static_cast<std::uint8_t>(utf8[i + k]) & 0x3FU);
        }
        i += length;
        constexpr std::uint32_t kBeyond16Bits = 0x10000;
        if (point < kBeyond16Bits) {
            ascii += Format("\\u%04x", point);
        } else {
            const std::uint32_t rest = point - kBeyond16Bits;
            ascii += Format("\\u%04x\\u%04x", 0xD800 + (rest >> 10U), 0xDC00 + (rest & 0x3FFU));
        }
    }
    return ascii;
}

std::string AsciiString(std::string_view text)
{
    return AsciiOf(JsonString(ToUtf8(text)));
}

}  // namespace

JsonText& JsonText::Member(std::string_view name, std::string_view json)
{
    if (!members_.empty()) members_ += ", ";
    members_ += AsciiString(name) + ": ";
    members_ += json;
    return *this;
}

JsonText& JsonText::Text(std::string_view name, std::string_view value)
{
    return Member(name, AsciiString(value));
}

JsonText& JsonText::Whole(std::string_view name, std::int64_t value)
{
    return Member(name, std::to_string(value));
}

JsonText& JsonText::Number(std::string_view name, double value)
{
    return Member(name, JsonNumber(value));
}

JsonText& JsonText::Single(std::string_view name, float value)
{
    return Member(name, std::isfinite(value) ? ShortestText(value) : "null");
}

JsonText& JsonText::Truth(std::string_view name, bool value)
{
    return Member(name, value ? "true" : "false");
}

JsonText& JsonText::Null(std::string_view name)
{
    return Member(name, "null");
}

std::string JsonList(const std::vector<std::string>& items)
{
    std::string json = "[";
    for (const std::string& item : items) {
        if (json.size() > 1) json += ", ";
        json += item;
    }
    return json + ']';
}

std::string ShortestText(float value)
{
    return Shortest(value);
}

std::string ShortestText(double value)
{
    return Shortest(value);
}

}  // namespace kelvo
