#include "platform/profile.h"

#include "platform/box.h"
#include "platform/file_as_read.h"
#include "platform/files.h"
#include "platform/profile_text.h"
#include "platform/text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>
#include <optional>
#include <unordered_map>
#include <vector>

namespace kelvo {

namespace {

// Far above any settings file; a larger one is none, and is neither read nor replaced.
constexpr std::size_t kLargestProfile = std::size_t{16} << 20;

struct Edit {
    std::string section;
    std::string key;
    std::optional<std::string> value;         // nullopt deletes the key
    bool isRaw = false;                       // value stands in the file as it is
    std::optional<std::string> fileEnd = {};  // a section that becomes empty goes, and the file ends so
};

struct Profile {
    FileAsRead file;
    int readError = 0;   // the file stands but can't be read: it must not be replaced by one of ours
    std::string onDisk;  // its contents when it was last read
    std::vector<Edit> edits;
    bool told = false;  // the operator knows that it can't be written
    int holders = 0;    // while there is one it isn't read again

    std::string current;                                  // onDisk with the edits
    std::unordered_map<std::string, std::string> values;  // of current, by IndexKey
};

// By resolved, absolute path.
std::map<std::string, Profile>& Profiles()
{
    static std::map<std::string, Profile> profiles;
    return profiles;
}

// A newline can stand in neither name.
std::string IndexKey(std::string_view section, std::string_view key)
{
    return LowerAscii(Trimmed(section)) + '\n' + LowerAscii(Trimmed(key));
}

std::unordered_map<std::string, std::string> IndexOf(std::string_view contents)
{
    std::unordered_map<std::string, std::string> values;
    std::string_view section;
    bool inSection = false;  // lines above the first section are nobody's
    ProfileScanner scanner(contents);
    for (ProfileLine line; scanner.Next(line);) {
        if (line.kind == ProfileLine::Kind::kSection) {
            section = line.name;
            inSection = true;
        } else if (line.kind == ProfileLine::Kind::kKey && inSection) {
            values.try_emplace(IndexKey(section, line.name), line.value);
        }
    }
    return values;
}

std::string WithEdit(std::string_view contents, const Edit& edit)
{
    if (!edit.value) {
        std::string text = WithProfileKey(contents, edit.section, edit.key, nullptr);
        return edit.fileEnd ? WithoutEmptySection(text, edit.section, *edit.fileEnd) : text;
    }
    if (edit.isRaw) return WithRawProfileKey(contents, edit.section, edit.key, *edit.value);
    const std::string_view value = *edit.value;
    return WithProfileKey(contents, edit.section, edit.key, &value);
}

void Reindex(Profile& profile)
{
    profile.current = profile.onDisk;
    for (const Edit& edit : profile.edits) profile.current = WithEdit(profile.current, edit);
    profile.values = IndexOf(profile.current);
}

// Takes over what the disk holds, with the pending edits on top.
void Refresh(const std::string& path, Profile& profile)
{
    if (profile.holders > 0) return;
    if (profile.file.IsStill(path)) return;
    profile.file = FileAsRead::Of(path);
    auto contents = ReadWholeFile(path, kLargestProfile);
    const int reason = errno;
    profile.readError = contents || reason == ENOENT || reason == ENOTDIR ? 0 : reason;
    // One that couldn't be read is tried again each time: its pending values wait for it.
    if (profile.readError != 0) profile.file = {};
    if (contents && *contents == profile.onDisk) return;
    profile.onDisk = contents ? std::move(*contents) : std::string();
    Reindex(profile);
}

Profile& ProfileOf(std::string_view file)
{
    const std::string path = AbsolutePath(file);
    Profile& profile = Profiles()[path];
    Refresh(path, profile);
    return profile;
}

const std::string* ValueOf(std::string_view section, std::string_view key, std::string_view file)
{
    const Profile& profile = ProfileOf(file);
    const auto value = profile.values.find(IndexKey(section, key));
    return value == profile.values.end() ? nullptr : &value->second;
}

void AddEdit(Edit edit, std::string_view file)
{
    Profile& profile = ProfileOf(file);
    const std::string name = IndexKey(edit.section, edit.key);
    profile.current = WithEdit(profile.current, edit);
    profile.values = IndexOf(profile.current);
    // Many changes of one key leave one edit, however long the disk can't be written.
    std::erase_if(profile.edits, [&](const Edit& earlier) { return IndexKey(earlier.section, earlier.key) == name; });
    profile.edits.push_back(std::move(edit));
}

// 0, or the reason why the file couldn't be written.
int Write(const std::string& path, Profile& profile)
{
    Refresh(path, profile);
    if (profile.readError != 0) return profile.readError;
    if (profile.current != profile.onDisk) {
        if (!ReplaceFile(path, profile.current)) return errno != 0 ? errno : EIO;
        profile.onDisk = profile.current;
        profile.file = {};
    }
    profile.edits.clear();
    return 0;
}

}  // namespace

std::int32_t GetPrivateProfileInt(std::string_view section, std::string_view key, std::int32_t defaultValue,
                                  std::string_view file)
{
    const std::string* value = ValueOf(section, key, file);
    return value ? ProfileInt(*value) : defaultValue;
}

std::string GetPrivateProfileString(std::string_view section, std::string_view key, std::string_view defaultValue,
                                    std::string_view file)
{
    const std::string* value = ValueOf(section, key, file);
    return value ? *value : std::string(ProfileDefault(defaultValue));
}

bool HasProfileKey(std::string_view section, std::string_view key, std::string_view file)
{
    return ValueOf(section, key, file) != nullptr;
}

HeldProfile::HeldProfile(std::string_view file) : path_(AbsolutePath(file))
{
    Profile& profile = Profiles()[path_];
    Refresh(path_, profile);
    ++profile.holders;
}

HeldProfile::~HeldProfile()
{
    const auto held = Profiles().find(path_);
    if (held != Profiles().end() && held->second.holders > 0) --held->second.holders;
}

void WritePrivateProfileString(std::string_view section, std::string_view key, std::string_view value,
                               std::string_view file)
{
    AddEdit({std::string(section), std::string(key), std::string(value)}, file);
}

void DeleteProfileKey(std::string_view section, std::string_view key, std::string_view file)
{
    AddEdit({std::string(section), std::string(key), std::nullopt}, file);
}

bool operator==(const KeptProfileKey& a, const KeptProfileKey& b)
{
    return a.file == b.file && a.section == b.section && a.key == b.key && a.rawValue == b.rawValue;
}

KeptProfileKey KeepProfileKey(std::string_view section, std::string_view key, std::string_view file)
{
    const std::string& contents = ProfileOf(file).current;
    return {.file = std::string(file),
            .section = std::string(section),
            .key = std::string(key),
            .rawValue = RawProfileText(contents, section, key),
            .fileEnd = EndWithoutSection(contents, section),
            .place = ProfileKeyPlace(contents, section, key).value_or(0)};
}

void PutBackProfileKey(const KeptProfileKey& kept)
{
    if (KeepProfileKey(kept.section, kept.key, kept.file) == kept) return;
    AddEdit({kept.section, kept.key, kept.rawValue, true, kept.fileEnd}, kept.file);
}

void PutBackProfileKeys(std::vector<KeptProfileKey> kept)
{
    std::ranges::stable_sort(kept, {}, &KeptProfileKey::place);
    for (const KeptProfileKey& key : kept) PutBackProfileKey(key);
}

bool FlushProfiles()
{
    bool allWritten = true;
    std::vector<std::string> messages;
    for (auto& [path, profile] : Profiles()) {
        if (profile.edits.empty()) continue;
        const int reason = Write(path, profile);
        allWritten = allWritten && reason == 0;
        if (reason != 0 && !profile.told) {
            messages.push_back(Format("Unable to write settings file\n%s\n%s", path.c_str(), std::strerror(reason)));
        }
        profile.told = reason != 0;
    }
    // Only now: while a box stands, other events are handled, and more may be written.
    for (const std::string& message : messages) MessageBox(nullptr, message, kMessageCaption);
    return allWritten;
}

bool ProfilesPending()
{
    return std::any_of(Profiles().begin(), Profiles().end(),
                       [](const auto& profile) { return !profile.second.edits.empty(); });
}

void ForgetProfile(std::string_view file)
{
    Profiles().erase(AbsolutePath(file));
}

void ForgetProfiles()
{
    Profiles().clear();
}

}  // namespace kelvo
