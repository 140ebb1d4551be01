// Texts as the system holds them: bytes. The system's own texts are Latin-1, paths are the file system's own bytes, and
// both travel in std::string without being cut or converted until they meet the screen.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

// printf into a string of any length. The format is checked by the compiler.
[[gnu::format(printf, 1, 2)]] std::string Format(const char* format, ...);

// ASCII letters only: paths and profile names must not change under a locale.
std::string UpperAscii(std::string_view text);
std::string LowerAscii(std::string_view text);
bool EqualIgnoringCase(std::string_view a, std::string_view b);

// White space (blank, tab, CR, LF) off both ends.
std::string_view Trimmed(std::string_view text);

// The bytes as valid UTF-8, for the screen and the transcript: sequences that are UTF-8 stay, every other byte is read
// as Latin-1. The system's own high bytes (degree sign, superscript two, middle dot) never form UTF-8.
std::string ToUtf8(std::string_view bytes);

// What C's "%d", "%i" and "%x" read at the start of a text: white space skipped, a sign, digits; nullopt if no digit
// stands there. "%i" takes 0x for hexadecimal and a leading 0 for octal. Values beyond 32 bits keep their low 32 bits.
std::optional<std::int32_t> ScanDecimal(std::string_view text);
std::optional<std::int32_t> ScanInteger(std::string_view text);
std::optional<std::uint32_t> ScanHex(std::string_view text);
// "%f": nullopt where no number stands. Independent of the locale.
std::optional<float> ScanFloat(std::string_view text);
// The same, and takes what was read off the front of text; where no number stands text stays.
std::optional<float> TakeFloat(std::string_view& text);

// A number with a comma before its last 3, 6 and 9 digits where more digits stand before them: 1,234,567 and -123,456,
// but -123.
void FormatThousands(std::int32_t value, std::string& text);

// Any output may be null. drive is "c:" or empty; directory keeps its closing separator; extension keeps its point.
// Both separators count. SplitPath and MakePath are each other's inverse.
void SplitPath(std::string_view path, std::string* drive, std::string* directory, std::string* name,
               std::string* extension);
// Name and extension, without the directory.
std::string FileNameOf(std::string_view path);
// Adds a separator after the directory and a point before the extension where they lack one.
std::string MakePath(std::string_view drive, std::string_view directory, std::string_view name,
                     std::string_view extension);

}  // namespace kelvo
