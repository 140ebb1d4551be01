// Profile files (.ini): sections in square brackets, key=value lines. Names are compared without regard to ASCII case;
// all other lines, comments and the order stay as they are. A file is read once and kept; it is read again when it
// changed on the disk.
//
// Writes are gathered and land together: the writes of one command reach the disk at the latest a second later and at
// exit, each file whole or not at all (ReplaceFile). Reads see pending writes at once. A failed write is kept and tried
// again; the operator is told once per file. A file above 16 MB, or one that stands and can't be read, gives the
// defaults and is never replaced.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

// Decimal with an optional sign, or hexadecimal after 0x; reading stops at the first character that fits neither
// ("12abc" is 12). A key that is missing gives the default; one with no number gives 0. 32 bits, wrapping.
std::int32_t GetPrivateProfileInt(std::string_view section, std::string_view key, std::int32_t defaultValue,
                                  std::string_view file);

// The value with blanks and one pair of quotation marks (" or ') taken off its ends; the default, with trailing blanks
// taken off, if the key is missing. A key that stands with no value gives an empty text.
std::string GetPrivateProfileString(std::string_view section, std::string_view key, std::string_view defaultValue,
                                    std::string_view file);

bool HasProfileKey(std::string_view section, std::string_view key, std::string_view file);

// All keys of a file are of one moment as long as this lives, whatever the disk does meanwhile: a set of values that
// belong together.
class HeldProfile {
  public:
    explicit HeldProfile(std::string_view file);
    HeldProfile(const HeldProfile&) = delete;
    HeldProfile& operator=(const HeldProfile&) = delete;
    ~HeldProfile();

  private:
    std::string path_;
};

// Replaces the key's value, or adds the key at the end of its section, or adds the section at the end of the file. The
// section's blank lines at its end stay behind the new key. Line ends follow the file's first line (CR LF or LF). A
// value that reading would strip (outer blanks or quotation marks) is written in quotation marks; line ends in it
// become blanks. A name that can't stand in a file (a key with "=", a section with "]") changes nothing.
void WritePrivateProfileString(std::string_view section, std::string_view key, std::string_view value,
                               std::string_view file);
void DeleteProfileKey(std::string_view section, std::string_view key, std::string_view file);

// A key as it stands in its file, to be put back later.
struct KeptProfileKey {
    std::string file;
    std::string section;
    std::string key;
    std::optional<std::string> rawValue;  // with its quotation marks; nullopt: the key is missing
    std::optional<std::string> fileEnd;   // how the file ended while the section was missing; nullopt: it stands
    std::size_t place = 0;                // of the key among the others of its file
    // The same value of the same key, wherever it stands.
    friend bool operator==(const KeptProfileKey& a, const KeptProfileKey& b);
};
KeptProfileKey KeepProfileKey(std::string_view section, std::string_view key, std::string_view file);
// The line is what it was, byte for byte; a key that was missing goes, and with the last key of a section that was
// missing the section. One that stands so already isn't written.
void PutBackProfileKey(const KeptProfileKey& kept);
// Several, in the order in which they stood in their files.
void PutBackProfileKeys(std::vector<KeptProfileKey> kept);

// Writes what is pending to the disk. False if a file couldn't be written: the error box has been shown (once per
// file), the values stay pending.
bool FlushProfiles();
bool ProfilesPending();

// Forgets pending writes and everything read of the file: after another program part replaced it as a whole.
void ForgetProfile(std::string_view file);

// The same of every file.
void ForgetProfiles();

}  // namespace kelvo
