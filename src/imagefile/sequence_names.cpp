#include "imagefile/sequence_names.h"

#include "platform/text.h"

namespace kelvo {

namespace {

bool IsDigit(int character)
{
    return character >= '0' && character <= '9';
}

// The last characters of a name; where the name is too short, a character that is no digit.
struct Ending {
    std::size_t length = 0;
    char last = '\0';
    char second = '\0';
    char third = '\0';
};

Ending EndingOf(std::string_view name)
{
    const auto fromEnd = [name](std::size_t n) { return n <= name.size() ? name[name.size() - n] : '\0'; };
    return {.length = name.size(), .last = fromEnd(1), .second = fromEnd(2), .third = fromEnd(3)};
}

// The name with its last count characters taken off and others put there.
std::string WithEnding(std::string_view name, std::size_t count, const std::string& ending)
{
    return std::string(name.substr(0, name.size() - count)) + ending;
}

char Up(char character)
{
    return static_cast<char>(character + 1);
}

char Down(char character)
{
    return static_cast<char>(character - 1);
}

bool AboveOne(char character)
{
    return IsDigit(character) && character > '1';
}

std::optional<std::string> InPath(std::string_view path, std::optional<std::string> (*step)(std::string_view))
{
    std::string drive;
    std::string directory;
    std::string name;
    std::string extension;
    SplitPath(path, &drive, &directory, &name, &extension);
    const std::optional<std::string> stepped = step(name);
    if (!stepped) return std::nullopt;
    return MakePath(drive, directory, *stepped, extension);
}

}  // namespace

std::optional<std::string> NextSequenceName(std::string_view name)
{
    const Ending end = EndingOf(name);
    if (end.length == 0) return std::nullopt;

    // What counts is the character that would come out: "/" becomes "0".
    if (IsDigit(end.last + 1)) return WithEnding(name, 1, {Up(end.last)});
    if (end.length <= 2 && end.last == '9') return WithEnding(name, 1, "10");
    if (!IsDigit(end.second)) return WithEnding(name, 1, "10");
    if (end.second != '9') return WithEnding(name, 2, {Up(end.second), '0'});
    if (end.length <= 3) return WithEnding(name, 2, "10");
    if (!IsDigit(end.third)) return WithEnding(name, 2, "10");
    if (end.third != '9') return WithEnding(name, 3, {Up(end.third), '0', '0'});
    return std::nullopt;
}

std::optional<std::string> PreviousSequenceName(std::string_view name)
{
    const Ending end = EndingOf(name);
    if (end.length == 0) return std::nullopt;

    // As above: ":" becomes "9".
    if (IsDigit(end.last - 1)) return WithEnding(name, 1, {Down(end.last)});
    if (end.length <= 2) return std::nullopt;
    if (AboveOne(end.second)) return WithEnding(name, 2, {Down(end.second), '9'});
    if (end.second == '1') return WithEnding(name, 2, "9");
    if (end.length <= 3) return std::nullopt;
    if (AboveOne(end.third)) return WithEnding(name, 3, {Down(end.third), '9', '9'});
    if (end.third == '1') return WithEnding(name, 3, "99");
    return std::nullopt;
}

std::optional<std::string> NextSequencePath(std::string_view path)
{
    return InPath(path, NextSequenceName);
}

std::optional<std::string> PreviousSequencePath(std::string_view path)
{
    return InPath(path, PreviousSequenceName);
}

}  // namespace kelvo
