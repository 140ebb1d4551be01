#include "shell/support_bundle.h"

#include "platform/application.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/text.h"
#include "platform/transcript.h"
#include "platform/user_words.h"
#include "state/windows.h"

#include <sys/utsname.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <optional>
#include <span>
#include <string_view>
#include <system_error>
#include <utility>

namespace kelvo {

namespace {

std::string_view Unquoted(std::string_view value)
{
    const bool quoted = value.size() >= 2 && value.starts_with('"') && value.ends_with('"');
    return quoted ? value.substr(1, value.size() - 2) : value;
}

// "Debian GNU/Linux 12 (bookworm)", as the system calls itself.
std::string SystemName()
{
    constexpr std::size_t kLongest = std::size_t{1} << 16;
    constexpr std::string_view kKey = "PRETTY_NAME=";
    std::string_view rest;
    const std::optional<std::string> contents = ReadWholeFile("/etc/os-release", kLongest);
    if (contents) rest = *contents;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        const std::string_view line = rest.substr(0, end);
        if (line.starts_with(kKey)) return std::string(Unquoted(line.substr(kKey.size())));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return "unknown";
}

// Without the machine's own name, which uname tells too.
std::string Kernel()
{
    utsname names{};
    if (uname(&names) != 0) return "unknown";
    return Format("%s %s %s", static_cast<const char*>(names.sysname), static_cast<const char*>(names.release),
                  static_cast<const char*>(names.machine));
}

// As the C library looks for it.
std::string LocaleOfEnvironment()
{
    for (const char* const variable : {"LC_ALL", "LC_NUMERIC", "LANG"}) {
        const char* const value = std::getenv(variable);
        if (value && *value) return value;
    }
    return "C";
}

// In UTC, to the second: "2026-11-22T12:34:05Z".
std::string TimeNow()
{
    constexpr std::int64_t kNsPerSecond = 1'000'000'000;
    const std::string text = UtcText(std::int64_t{WallClockSeconds()} * kNsPerSecond);
    return text.substr(0, text.find('.')) + "Z";
}

std::string Versions()
{
#ifdef __clang__
    constexpr const char* kCompiler = __VERSION__;
#else
    constexpr const char* kCompiler = "GCC " __VERSION__;
#endif
    const std::array<std::pair<const char*, std::string>, 9> lines = {{
        {"Kelvo", KELVO_VERSION},
        {"Toolkit", ToolkitVersion()},
        {"Compiler", kCompiler},
        {"System", SystemName()},
        {"Kernel", Kernel()},
        {"Display", DisplayInUse()},
        {"Locale", LocaleOfEnvironment()},
        {"Data directory", DefaultDir},
        {"Time", TimeNow()},
    }};
    std::string text;
    for (const auto& [what, value] : lines) text.append(what).append(": ").append(value).append(1, '\n');
    return text;
}

std::string LatestOfTranscript()
{
    const std::vector<TranscriptLine>& lines = TranscriptLines();
    const std::size_t left = lines.size() - std::min(lines.size(), kSupportLines);
    std::string text;
    for (const TranscriptLine& line : std::span(lines).subspan(left)) text += TranscriptJson(line) + '\n';
    return text;
}

// nullopt where it can't be read. A file that was cut says so in its first line.
std::optional<std::string> EndOfFile(const std::string& path)
{
    std::optional<File> file = File::Open(path, FileMode::kRead);
    if (!file) return std::nullopt;
    const std::int64_t length = file->Length();
    const std::int64_t left = std::max<std::int64_t>(0, length - static_cast<std::int64_t>(kSupportBytes));
    std::string text(static_cast<std::size_t>(std::max<std::int64_t>(0, length - left)), '\0');
    text.resize(file->ReadAt(left, std::as_writable_bytes(std::span(text))));
    if (left > 0) text.insert(0, Format("(The first %lld bytes are left out.)\n", static_cast<long long>(left)));
    return text;
}

bool IsSettingsFile(const std::filesystem::directory_entry& entry)
{
    std::error_code unknown;
    const std::string ending = LowerAscii(entry.path().extension().string());
    return (ending == ".ini" || ending == ".cnf") && entry.is_regular_file(unknown);
}

std::vector<std::string> NamesOfSettingsFiles(const std::string& directory)
{
    std::vector<std::string> names;
    std::error_code error;
    std::filesystem::directory_iterator entry(directory, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        if (IsSettingsFile(*entry)) names.push_back(entry->path().filename().string());
    }
    std::ranges::sort(names);
    return names;
}

void AddSettingsAndLogs(std::vector<NamedText>& files, const std::string& directory)
{
    std::vector<std::string> names = NamesOfSettingsFiles(directory);
    names.insert(names.end(), {"CommLog.txt", "PreviousCommLog.txt"});
    for (std::string& name : names) {
        if (std::optional<std::string> text = EndOfFile((std::filesystem::path(directory) / name).string()))
            files.push_back({.name = std::move(name), .text = std::move(*text)});
    }
}

std::string PlainName(std::string name)
{
    std::ranges::replace_if(
        name, [](char c) { return c < ' ' || c > '~'; }, '_');
    return name;
}

// What another file is called already gets a number in front of it.
std::string NameOfItsOwn(const std::string& name, std::span<const NamedText> others)
{
    std::string own = name;
    for (int number = 2; std::ranges::find(others, own, &NamedText::name) != others.end(); ++number) {
        own = Format("%d-", number) + name;
    }
    return own;
}

}  // namespace

std::vector<NamedText> GatherSupportFiles()
{
    std::vector<NamedText> found = {{.name = "versions.txt", .text = Versions()},
                                    {.name = "transcript.jsonl", .text = LatestOfTranscript()}};
    AddSettingsAndLogs(found, DefaultDir);
    if (StateDir != DefaultDir) AddSettingsAndLogs(found, StateDir);
    const std::vector<UserWord> words = UserWords();
    std::vector<NamedText> files;
    files.reserve(found.size());
    for (const NamedText& file : found) {
        files.push_back({.name = NameOfItsOwn(PlainName(WithoutUserWords(file.name, words)), files),
                         .text = WithoutUserWords(file.text, words)});
    }
    return files;
}

}  // namespace kelvo
