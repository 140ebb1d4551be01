#include "platform/profile_text.h"

#include "platform/text.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace kelvo {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// The value's text without blanks and one pair of quotation marks around it.
std::string_view Unquoted(std::string_view value)
{
    value = Trimmed(value);
    const bool quoted =
        value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front();
    return quoted ? value.substr(1, value.size() - 2) : value;
}

// What would end the line early in the file becomes a blank.
std::string OnOneLine(std::string_view text)
{
    std::string line(text);
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r' || c == '\0'; }, ' ');
    return line;
}

// A value that reading would strip is written in quotation marks.
std::string AsWritten(std::string_view value)
{
    std::string line = OnOneLine(value);
    return Unquoted(line) == line ? line : '"' + line + '"';
}

std::string LineEndOf(std::string_view contents)
{
    const std::size_t newline = contents.find('\n');
    return newline != std::string_view::npos && newline > 0 && contents[newline - 1] == '\r' ? "\r\n" : "\n";
}

bool IsBlank(std::string_view line)
{
    return Trimmed(line).empty();
}

std::string_view WithoutBlankEnd(std::string_view text)
{
    return text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
}

// Names that would read back as others can't be written.
bool CanStandAsSection(std::string_view name)
{
    return OnOneLine(name) == name && name.find(']') == std::string_view::npos;
}

bool CanStandAsKey(std::string_view name)
{
    return !name.empty() && OnOneLine(name) == name && name.find('=') == std::string_view::npos &&
           !name.starts_with(';') && !name.starts_with('[');
}

// Where a key is, or would be added.
struct Place {
    std::vector<ProfileLine> keyLines;     // all lines of that key, the one that counts first
    std::optional<std::size_t> insertion;  // end of the section's last line that isn't blank; nullopt: no such section
};

Place Find(std::string_view contents, std::string_view section, std::string_view key)
{
    Place place;
    bool inside = false;
    bool first = true;  // new keys go to the first section of that name
    ProfileScanner scanner(contents);
    for (ProfileLine line; scanner.Next(line);) {
        if (line.kind == ProfileLine::Kind::kSection) {
            first = first && !inside;
            inside = EqualIgnoringCase(line.name, section);
        }
        if (!inside) continue;
        if (first && !IsBlank(contents.substr(line.start, line.next - line.start))) place.insertion = line.next;
        if (line.kind == ProfileLine::Kind::kKey && EqualIgnoringCase(line.name, key)) {
            place.keyLines.push_back(line);
        }
    }
    return place;
}

std::string WithoutLines(std::string_view contents, const std::vector<ProfileLine>& lines)
{
    std::string result;
    std::size_t at = 0;
    for (const ProfileLine& line : lines) {
        result += contents.substr(at, line.start - at);
        at = line.next;
    }
    return result += contents.substr(at);
}

// New lines in the middle of a text: the line before them gets its end if it lacks one.
std::string WithLinesAt(std::string_view contents, std::size_t at, std::string_view lines, std::string_view lineEnd)
{
    std::string result(contents.substr(0, at));
    if (at > 0 && result.back() != '\n') result += lineEnd;
    result += lines;
    return result += contents.substr(at);
}

std::string WithNewSection(std::string_view contents, std::string_view section, std::string_view keyLine,
                           const std::string& lineEnd)
{
    const std::size_t newline = contents.find_last_not_of(" \t\r\n");
    const bool endsInBlankLine =
        contents.empty() || newline == std::string_view::npos ||
        std::count(contents.begin() + static_cast<std::ptrdiff_t>(newline), contents.end(), '\n') > 1;
    const std::string header = '[' + std::string(section) + ']' + lineEnd;
    return WithLinesAt(contents, contents.size(), (endsInBlankLine ? "" : lineEnd) + header + std::string(keyLine),
                       lineEnd);
}

}  // namespace

bool ProfileScanner::Next(ProfileLine& line)
{
    if (position_ >= contents_.size()) return false;
    line = ProfileLine();
    line.start = position_;
    const std::size_t newline = contents_.find('\n', position_);
    line.next = newline == std::string_view::npos ? contents_.size() : newline + 1;
    position_ = line.next;

    std::string_view text = contents_.substr(line.start, line.next - line.start);
    if (line.start == 0 && text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
    text = Trimmed(text);
    if (text.starts_with(';')) return true;
    if (text.starts_with('[')) {
        const std::size_t close = text.find(']');
        if (close == std::string_view::npos) return true;
        line.kind = ProfileLine::Kind::kSection;
        line.name = Trimmed(text.substr(1, close - 1));
    } else if (const std::size_t equals = text.find('='); equals != std::string_view::npos) {
        line.kind = ProfileLine::Kind::kKey;
        line.name = Trimmed(text.substr(0, equals));
        line.rawValue = Trimmed(text.substr(equals + 1));
        line.value = Unquoted(line.rawValue);
        // An empty value begins right behind the equals sign, or behind the blanks that follow it.
        line.valueStart = static_cast<std::size_t>(
            (line.rawValue.empty() ? text.data() + equals + 1 : line.rawValue.data()) - contents_.data());
    }
    return true;
}

std::string ProfileText(std::string_view contents, std::string_view section, std::string_view key,
                        std::string_view defaultValue)
{
    const Place place = Find(contents, Trimmed(section), Trimmed(key));
    return std::string(place.keyLines.empty() ? ProfileDefault(defaultValue) : place.keyLines.front().value);
}

std::string_view ProfileDefault(std::string_view defaultValue)
{
    const std::size_t last = defaultValue.find_last_not_of(" \t");
    return last == std::string_view::npos ? std::string_view() : defaultValue.substr(0, last + 1);
}

std::int32_t ProfileInt(std::string_view value)
{
    std::string_view digits = Trimmed(value);
    const bool negative = digits.starts_with('-');
    if (negative || digits.starts_with('+')) digits.remove_prefix(1);
    if (digits.empty() || digits.front() < '0' || digits.front() > '9') return 0;
    const bool hexadecimal = digits.starts_with("0x") || digits.starts_with("0X");
    const auto magnitude =
        hexadecimal ? ScanHex(digits).value_or(0) : static_cast<std::uint32_t>(ScanDecimal(digits).value_or(0));
    return static_cast<std::int32_t>(negative ? 0U - magnitude : magnitude);
}

std::string WithProfileKey(std::string_view contents, std::string_view section, std::string_view key,
                           const std::string_view* value)
{
    if (value) return WithRawProfileKey(contents, section, key, AsWritten(*value));
    const std::string_view wantedSection = Trimmed(section);
    const std::string_view wantedKey = Trimmed(key);
    if (!CanStandAsSection(wantedSection) || !CanStandAsKey(wantedKey)) return std::string(contents);
    return WithoutLines(contents, Find(contents, wantedSection, wantedKey).keyLines);
}

std::optional<std::string> RawProfileText(std::string_view contents, std::string_view section, std::string_view key)
{
    const Place place = Find(contents, Trimmed(section), Trimmed(key));
    if (place.keyLines.empty()) return std::nullopt;
    return std::string(place.keyLines.front().rawValue);
}

std::optional<std::size_t> ProfileKeyPlace(std::string_view contents, std::string_view section, std::string_view key)
{
    const Place place = Find(contents, Trimmed(section), Trimmed(key));
    if (place.keyLines.empty()) return std::nullopt;
    return place.keyLines.front().start;
}

std::optional<std::string> EndWithoutSection(std::string_view contents, std::string_view section)
{
    if (Find(contents, Trimmed(section), {}).insertion) return std::nullopt;
    return std::string(contents.substr(WithoutBlankEnd(contents).size()));
}

std::string WithoutEmptySection(std::string_view contents, std::string_view section, std::string_view end)
{
    std::optional<std::size_t> header;
    ProfileScanner scanner(contents);
    for (ProfileLine line; scanner.Next(line);) {
        const bool isSection = line.kind == ProfileLine::Kind::kSection;
        if (!header) {
            if (isSection && EqualIgnoringCase(line.name, Trimmed(section))) header = line.start;
        } else if (isSection) {
            return std::string(contents.substr(0, *header)).append(contents.substr(line.start));
        } else if (!IsBlank(contents.substr(line.start, line.next - line.start))) {
            return std::string(contents);
        }
    }
    if (!header) return std::string(contents);
    return std::string(WithoutBlankEnd(contents.substr(0, *header))).append(end);
}

std::string WithRawProfileKey(std::string_view contents, std::string_view section, std::string_view key,
                              std::string_view rawValue)
{
    const std::string_view wantedSection = Trimmed(section);
    const std::string_view wantedKey = Trimmed(key);
    if (!CanStandAsSection(wantedSection) || !CanStandAsKey(wantedKey)) return std::string(contents);
    const Place place = Find(contents, wantedSection, wantedKey);
    if (!place.keyLines.empty()) {
        const ProfileLine& line = place.keyLines.front();
        std::string result(contents.substr(0, line.valueStart));
        result += rawValue;
        return result += contents.substr(line.valueStart + line.rawValue.size());
    }
    const std::string lineEnd = LineEndOf(contents);
    const std::string keyLine = std::string(wantedKey) + '=' + std::string(rawValue) + lineEnd;
    if (place.insertion) return WithLinesAt(contents, *place.insertion, keyLine, lineEnd);
    return WithNewSection(contents, wantedSection, keyLine, lineEnd);
}

}  // namespace kelvo
