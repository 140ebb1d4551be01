#include "platform/user_words.h"

#include "platform/qt_window.h"
#include "platform/text.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <system_error>

namespace kelvo {

namespace {

constexpr std::string_view kHome = "~";
constexpr std::string_view kLogin = "USER";
constexpr std::string_view kName = "NAME";
constexpr std::string_view kHost = "HOST";
constexpr std::size_t kShortestAnywhere = 4;  // characters; shorter ones stand within too many words
constexpr std::size_t kShortestPartOfAName = 3;
constexpr std::array<std::string_view, 2> kOwnWords = {"kelvo", "camera"};

std::string Environment(const char* name)
{
    const char* const value = std::getenv(name);
    return value ? value : "";
}

struct Account {
    std::string login;
    std::string home;
    std::vector<std::string> fields;  // full name, room, telephones, as far as they are told
};

std::vector<std::string> PartsOf(std::string_view text, std::string_view separators)
{
    std::vector<std::string> parts;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of(separators), text.size());
        if (const std::string_view part = Trimmed(text.substr(0, end)); !part.empty()) parts.emplace_back(part);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

Account AccountOfProcess()
{
    constexpr std::size_t kLongest = std::size_t{1} << 16;
    passwd entry{};
    passwd* found = nullptr;
    std::vector<char> room(kLongest);
    if (getpwuid_r(getuid(), &entry, room.data(), room.size(), &found) != 0 || !found) return {};
    const auto text = [](const char* value) { return std::string(value ? value : ""); };
    return {.login = text(found->pw_name), .home = text(found->pw_dir), .fields = PartsOf(text(found->pw_gecos), ",")};
}

std::string HostName()
{
    constexpr std::size_t kLongest = 256;
    std::array<char, kLongest + 1> name{};
    return gethostname(name.data(), kLongest) == 0 ? std::string(name.data()) : std::string();
}

class WordList {
  public:
    // Both encodings, each word once. Letters beyond ASCII stand in the case of the account, in capitals or small.
    void Add(std::string_view word, std::string_view instead)
    {
        const auto isThis = [&](std::string_view own) { return EqualIgnoringCase(own, word); };
        if (word.empty() || std::ranges::any_of(kOwnWords, isThis)) return;
        AddBytes(std::string(word), instead);
        const QString text = ToQString(word);
        for (const QString& written : {text, text.toUpper(), text.toLower()}) {
            AddBytes(written.toStdString(), instead);
            const QByteArray latin1 = written.toLatin1();
            if (QString::fromLatin1(latin1) == written) AddBytes(latin1.toStdString(), instead);
        }
    }

    void AddHome(std::string home)
    {
        while (home.ends_with('/')) home.pop_back();
        if (home.size() <= 1) return;  // the root is nobody's
        Add(home, kHome);
        std::error_code unknown;
        const std::filesystem::path real = std::filesystem::canonical(home, unknown);
        if (!unknown) Add(real.string(), kHome);
    }

    void AddField(const std::string& field)
    {
        if (field.size() < kShortestPartOfAName) return;
        Add(field, kName);
        for (const std::string& part : PartsOf(field, " .-")) {
            if (part.size() >= kShortestPartOfAName) Add(part, kName);
        }
    }

    void AddHost(const std::string& name)
    {
        Add(name, kHost);
        Add(name.substr(0, name.find('.')), kHost);
    }

    std::vector<UserWord> LongerFirst()
    {
        std::ranges::stable_sort(words_, std::ranges::greater(), [](const UserWord& word) { return word.word.size(); });
        return words_;
    }

  private:
    void AddBytes(std::string word, std::string_view instead)
    {
        const auto isThis = [&](const UserWord& known) { return EqualIgnoringCase(known.word, word); };
        if (std::ranges::any_of(words_, isThis)) return;
        words_.push_back({.word = std::move(word), .instead = std::string(instead)});
    }

    std::vector<UserWord> words_;
};

bool IsLetterOrDigit(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    constexpr unsigned char kFirstBeyondAscii = 0x80;
    return byte >= kFirstBeyondAscii || (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Characters of UTF-8; of Latin-1 at least as many as there are.
std::size_t Characters(std::string_view word)
{
    constexpr int kContinues = 0x80;
    constexpr int kMask = 0xC0;
    return static_cast<std::size_t>(
        std::ranges::count_if(word, [](char c) { return (static_cast<unsigned char>(c) & kMask) != kContinues; }));
}

bool StandsAt(std::string_view text, std::size_t place, const UserWord& word)
{
    const std::string_view candidate = text.substr(place, word.word.size());
    if (!EqualIgnoringCase(candidate, word.word)) return false;
    if (Characters(word.word) >= kShortestAnywhere) return true;
    const std::size_t end = place + candidate.size();
    return (place == 0 || !IsLetterOrDigit(text[place - 1])) && (end == text.size() || !IsLetterOrDigit(text[end]));
}

const UserWord* WordAt(std::string_view text, std::size_t place, std::span<const UserWord> words)
{
    const auto found = std::ranges::find_if(words, [&](const UserWord& word) { return StandsAt(text, place, word); });
    return found == words.end() ? nullptr : &*found;
}

bool IsSeparator(char c)
{
    return c == '/' || c == '\\';
}

std::size_t BehindSeparators(std::string_view text, std::size_t place)
{
    while (place < text.size() && IsSeparator(text[place])) ++place;
    return place;
}

// Where the owner's name begins behind "/home/" and its kin; place is that of a separator.
std::optional<std::size_t> OwnerBehind(std::string_view text, std::size_t place)
{
    constexpr std::array<std::string_view, 4> kParents = {"home", "users", "media", "documents and settings"};
    const std::size_t name = BehindSeparators(text, place);
    for (const std::string_view parent : kParents) {
        const std::size_t end = name + parent.size();
        if (!EqualIgnoringCase(text.substr(name, parent.size()), parent)) continue;
        if (end < text.size() && IsSeparator(text[end])) return BehindSeparators(text, end);
    }
    return std::nullopt;
}

std::string WithoutWords(std::string_view text, std::span<const UserWord> words)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t place = 0; place < text.size();) {
        if (const UserWord* const word = WordAt(text, place, words)) {
            result += word->instead;
            place += word->word.size();
        } else {
            result += text[place++];
        }
    }
    return result;
}

std::string WithoutOwners(std::string_view text)
{
    constexpr std::string_view kEnds = "/\\\"'<>|;,\t\r\n ";
    std::string result;
    result.reserve(text.size());
    for (std::size_t place = 0; place < text.size();) {
        const std::optional<std::size_t> owner = IsSeparator(text[place]) ? OwnerBehind(text, place) : std::nullopt;
        const std::size_t end = owner ? std::min(text.find_first_of(kEnds, *owner), text.size()) : 0;
        if (!owner || end == *owner) {
            result += text[place++];
            continue;
        }
        result += text.substr(place, *owner - place);
        result += kLogin;
        place = end;
    }
    return result;
}

}  // namespace

std::vector<UserWord> UserWords()
{
    const Account account = AccountOfProcess();
    WordList words;
    words.AddHome(account.home);
    words.AddHome(Environment("HOME"));
    for (const std::string& login : {account.login, Environment("USER"), Environment("LOGNAME")}) {
        words.Add(login, kLogin);
    }
    for (const std::string& field : account.fields) words.AddField(field);
    words.AddHost(HostName());
    return words.LongerFirst();
}

std::string WithoutUserWords(std::string_view text, std::span<const UserWord> words)
{
    return WithoutOwners(WithoutWords(text, words));
}

}  // namespace kelvo
