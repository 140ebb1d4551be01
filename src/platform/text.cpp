#include "platform/text.h"

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>

namespace kelvo {

namespace {

constexpr std::string_view kWhiteSpace = " \t\r\n";
constexpr std::string_view kSeparators = "/\\";

constexpr bool IsLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

constexpr bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

constexpr char Upper(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

constexpr char Lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// The value of a digit in any base up to 16, or 16 for what is none.
constexpr std::uint32_t DigitValue(char c)
{
    if (IsDigit(c)) return static_cast<std::uint32_t>(c - '0');
    const char lower = Lower(c);
    if (lower >= 'a' && lower <= 'f') return static_cast<std::uint32_t>(lower - 'a' + 10);
    return 16;
}

// What the scan conversions skip: a little more than Trimmed takes off.
std::string_view WithoutLeadingSpace(std::string_view text)
{
    const std::size_t start = text.find_first_not_of(" \t\r\n\v\f");
    return start == std::string_view::npos ? std::string_view() : text.substr(start);
}

// Takes a sign off the front; true for minus.
bool TakeSign(std::string_view& text)
{
    if (text.empty() || (text.front() != '-' && text.front() != '+')) return false;
    const bool negative = text.front() == '-';
    text.remove_prefix(1);
    return negative;
}

bool StartsHexadecimal(std::string_view text)
{
    return text.size() > 2 && text[0] == '0' && Lower(text[1]) == 'x' && DigitValue(text[2]) < 16;
}

// Digits of a base at the front, wrapping at 32 bits; nullopt where none stands.
std::optional<std::uint32_t> Digits(std::string_view text, std::uint32_t base)
{
    if (text.empty() || DigitValue(text.front()) >= base) return std::nullopt;
    std::uint32_t value = 0;
    for (const char c : text) {
        const std::uint32_t digit = DigitValue(c);
        if (digit >= base) break;
        value = value * base + digit;
    }
    return value;
}

enum class Base { kDecimal, kHexadecimal, kByPrefix };

std::optional<std::uint32_t> ScanNumber(std::string_view text, Base base)
{
    text = WithoutLeadingSpace(text);
    const bool negative = TakeSign(text);
    std::uint32_t radix = base == Base::kHexadecimal ? 16 : 10;
    if (base != Base::kDecimal && StartsHexadecimal(text)) {
        text.remove_prefix(2);
        radix = 16;
    } else if (base == Base::kByPrefix && text.starts_with('0')) {
        radix = 8;
    }
    const auto value = Digits(text, radix);
    if (!value) return std::nullopt;
    return negative ? 0U - *value : *value;
}

std::optional<std::int32_t> AsSigned(std::optional<std::uint32_t> value)
{
    if (!value) return std::nullopt;
    return static_cast<std::int32_t>(*value);
}

std::size_t DigitRun(std::string_view text, std::size_t start)
{
    std::size_t end = start;
    while (end < text.size() && IsDigit(text[end])) ++end;
    return end - start;
}

// Length of the decimal number at the front of a text: sign, digits with at most one point, exponent. 0: none there.
std::size_t DecimalNumberLength(std::string_view text)
{
    std::size_t at = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
    std::size_t digits = DigitRun(text, at);
    at += digits;
    if (at < text.size() && text[at] == '.') {
        const std::size_t fraction = DigitRun(text, at + 1);
        digits += fraction;
        at += 1 + fraction;
    }
    if (digits == 0) return 0;
    if (at < text.size() && Lower(text[at]) == 'e') {
        std::size_t exponent = at + 1;
        if (exponent < text.size() && (text[exponent] == '-' || text[exponent] == '+')) ++exponent;
        if (const std::size_t count = DigitRun(text, exponent)) at = exponent + count;
    }
    return at;
}

locale_t PlainLocale()
{
    static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
    return plain;
}

bool IsContinuation(std::string_view bytes, std::size_t at, unsigned low = 0x80, unsigned high = 0xBF)
{
    if (at >= bytes.size()) return false;
    const auto byte = static_cast<unsigned char>(bytes[at]);
    return byte >= low && byte <= high;
}

// Length of the well-formed UTF-8 sequence of two or more bytes at a position, 0 where there is none. Overlong forms,
// surrogates and values above U+10FFFF are none.
std::size_t Utf8SequenceLength(std::string_view bytes, std::size_t at)
{
    const auto lead = static_cast<unsigned char>(bytes[at]);
    if (lead >= 0xC2 && lead <= 0xDF) return IsContinuation(bytes, at + 1) ? 2 : 0;
    if (lead >= 0xE0 && lead <= 0xEF) {
        const unsigned low = lead == 0xE0 ? 0xA0 : 0x80;
        const unsigned high = lead == 0xED ? 0x9F : 0xBF;
        return IsContinuation(bytes, at + 1, low, high) && IsContinuation(bytes, at + 2) ? 3 : 0;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        const unsigned low = lead == 0xF0 ? 0x90 : 0x80;
        const unsigned high = lead == 0xF4 ? 0x8F : 0xBF;
        const bool whole =
            IsContinuation(bytes, at + 1, low, high) && IsContinuation(bytes, at + 2) && IsContinuation(bytes, at + 3);
        return whole ? 4 : 0;
    }
    return 0;
}

void AppendLatin1(std::string& text, char byte)
{
    const auto code = static_cast<unsigned char>(byte);
    text += static_cast<char>(0xC0U | (code >> 6));
    text += static_cast<char>(0x80U | (code & 0x3FU));
}

bool IsSeparator(char c)
{
    return kSeparators.find(c) != std::string_view::npos;
}

void Give(std::string* output, std::string_view value)
{
    if (output) *output = value;
}

}  // namespace

std::string Format(const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    if (length > 0) std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    return text;
}

std::string UpperAscii(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), Upper);
    return result;
}

std::string LowerAscii(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), Lower);
    return result;
}

bool EqualIgnoringCase(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return Lower(x) == Lower(y); });
}

std::string_view Trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(kWhiteSpace);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

std::string ToUtf8(std::string_view bytes)
{
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t at = 0; at < bytes.size();) {
        if (static_cast<unsigned char>(bytes[at]) < 0x80) {
            text += bytes[at++];
        } else if (const std::size_t length = Utf8SequenceLength(bytes, at)) {
            text += bytes.substr(at, length);
            at += length;
        } else {
            AppendLatin1(text, bytes[at++]);
        }
    }
    return text;
}

std::optional<std::int32_t> ScanDecimal(std::string_view text)
{
    return AsSigned(ScanNumber(text, Base::kDecimal));
}

std::optional<std::int32_t> ScanInteger(std::string_view text)
{
    return AsSigned(ScanNumber(text, Base::kByPrefix));
}

std::optional<std::uint32_t> ScanHex(std::string_view text)
{
    return ScanNumber(text, Base::kHexadecimal);
}

std::optional<float> ScanFloat(std::string_view text)
{
    return TakeFloat(text);
}

std::optional<float> TakeFloat(std::string_view& text)
{
    const std::string_view start = WithoutLeadingSpace(text);
    const std::size_t length = DecimalNumberLength(start);
    if (length == 0) return std::nullopt;
    text = start.substr(length);
    return strtof_l(std::string(start.substr(0, length)).c_str(), nullptr, PlainLocale());
}

void FormatThousands(std::int32_t value, std::string& text)
{
    constexpr std::size_t kGroup = 3;
    text = Format("%d", value);
    const std::size_t sign = value < 0 ? 1 : 0;
    for (std::size_t at = text.size(); at > sign + kGroup;) {
        at -= kGroup;
        text.insert(at, ",");
    }
}

void SplitPath(std::string_view path, std::string* drive, std::string* directory, std::string* name,
               std::string* extension)
{
    const std::size_t driveEnd = path.size() >= 2 && IsLetter(path[0]) && path[1] == ':' ? 2 : 0;
    const std::size_t lastSeparator = path.find_last_of(kSeparators);
    const std::size_t nameStart = lastSeparator == std::string_view::npos ? driveEnd : lastSeparator + 1;
    const std::size_t lastPoint = path.rfind('.');
    const bool hasExtension = lastPoint != std::string_view::npos && lastPoint >= nameStart;
    const std::size_t nameEnd = hasExtension ? lastPoint : path.size();

    Give(drive, path.substr(0, driveEnd));
    Give(directory, path.substr(driveEnd, nameStart - driveEnd));
    Give(name, path.substr(nameStart, nameEnd - nameStart));
    Give(extension, path.substr(nameEnd));
}

std::string FileNameOf(std::string_view path)
{
    std::string name;
    std::string extension;
    SplitPath(path, nullptr, nullptr, &name, &extension);
    return name + extension;
}

std::string MakePath(std::string_view drive, std::string_view directory, std::string_view name,
                     std::string_view extension)
{
    std::string path(drive);
    if (!drive.empty() && !drive.ends_with(':')) path += ':';
    path += directory;
    if (!directory.empty() && !IsSeparator(directory.back())) path += '/';
    path += name;
    if (!extension.empty() && !extension.starts_with('.')) path += '.';
    path += extension;
    return path;
}

}  // namespace kelvo
