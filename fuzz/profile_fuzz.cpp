// Profile files of any bytes: reading ends, and a written key reads back while every other key stays.
//
// The input is key '\n' value '\n' contents.
#include "platform/profile_text.h"
#include "platform/text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using namespace kelvo;

constexpr std::string_view kSection = "S";

void Require(bool holds)
{
    if (!holds) std::abort();
}

std::string_view TakeLine(std::string_view& text)
{
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

bool CanBeWritten(std::string_view key)
{
    return !key.empty() && key.find_first_of(std::string_view("=\n\r\0", 4)) == std::string_view::npos &&
           !key.starts_with(';') && !key.starts_with('[');
}

// Every other key of the file reads as before.
void RequireOthersKept(std::string_view before, std::string_view after, std::string_view key)
{
    ProfileScanner scanner(before);
    std::string_view section;
    ProfileLine line;
    for (int keys = 0; keys < 20 && scanner.Next(line);) {
        if (line.kind == ProfileLine::Kind::kSection) section = line.name;
        if (line.kind != ProfileLine::Kind::kKey) continue;
        ++keys;
        if (EqualIgnoringCase(section, kSection) && EqualIgnoringCase(line.name, key)) continue;
        Require(ProfileText(before, section, line.name, "") == ProfileText(after, section, line.name, ""));
    }
}

void RequireLinesCoverText(std::string_view contents)
{
    ProfileScanner scanner(contents);
    std::size_t end = 0;
    for (ProfileLine line; scanner.Next(line);) {
        Require(line.start == end && line.next > line.start);
        end = line.next;
    }
    Require(end == contents.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::string_view key = Trimmed(TakeLine(input));
    const std::string_view value = TakeLine(input);
    RequireLinesCoverText(input);
    ProfileInt(value);

    const std::string written = WithProfileKey(input, kSection, key, &value);
    RequireOthersKept(input, written, key);
    if (!CanBeWritten(key)) {
        Require(written == input);
        return 0;
    }
    std::string expected(value);
    std::replace_if(
        expected.begin(), expected.end(), [](char c) { return c == '\r' || c == '\0'; }, ' ');
    Require(ProfileText(written, kSection, key, "missing") == expected);
    Require(WithProfileKey(written, kSection, key, &value) == written);

    const std::string deleted = WithProfileKey(written, kSection, key, nullptr);
    RequireOthersKept(input, deleted, key);
    Require(ProfileText(deleted, kSection, key, "missing") == "missing");
    return 0;
}
