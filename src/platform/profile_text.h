// The text of a profile file, taken apart and put together: what stands under the files of platform/profile.h. All of
// it takes any bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

// What GetPrivateProfileString and WritePrivateProfileString do, on the file's contents.
std::string ProfileText(std::string_view contents, std::string_view section, std::string_view key,
                        std::string_view defaultValue);
std::string WithProfileKey(std::string_view contents, std::string_view section, std::string_view key,
                           const std::string_view* value);  // null deletes the key
// The value as it stands, quotation marks and all, and back again. nullopt: the key is missing.
std::optional<std::string> RawProfileText(std::string_view contents, std::string_view section, std::string_view key);
std::string WithRawProfileKey(std::string_view contents, std::string_view section, std::string_view key,
                              std::string_view rawValue);
// Where the key's line begins; nullopt: the key is missing.
std::optional<std::size_t> ProfileKeyPlace(std::string_view contents, std::string_view section, std::string_view key);

// The white space at the end of a text without the section, with which a section that is added can be taken off
// again; nullopt: the section stands there.
std::optional<std::string> EndWithoutSection(std::string_view contents, std::string_view section);
// Takes a section off that holds nothing but blank lines; the text ends as given then, if the section was its last.
std::string WithoutEmptySection(std::string_view contents, std::string_view section, std::string_view end);

// One line of a profile file; views and positions into its contents.
struct ProfileLine {
    enum class Kind { kOther, kSection, kKey };
    Kind kind = Kind::kOther;
    std::size_t start = 0;       // first byte of the line
    std::size_t next = 0;        // first byte of the next one
    std::string_view name;       // of the section or the key, blanks taken off
    std::string_view rawValue;   // as it stands, blanks taken off
    std::string_view value;      // and one pair of quotation marks
    std::size_t valueStart = 0;  // of rawValue
};

// Goes through the lines in order. Any bytes are a profile; lines that are neither section nor key are kOther.
class ProfileScanner {
  public:
    explicit ProfileScanner(std::string_view contents) : contents_(contents) {}
    bool Next(ProfileLine& line);  // false at the end

  private:
    std::string_view contents_;
    std::size_t position_ = 0;
};

// A default as reading gives it: trailing blanks taken off.
std::string_view ProfileDefault(std::string_view defaultValue);

// The value's number as GetPrivateProfileInt reads it.
std::int32_t ProfileInt(std::string_view value);

}  // namespace kelvo
