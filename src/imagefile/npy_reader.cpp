#include "imagefile/npy_reader.h"

#include "platform/text.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kelvo {

namespace {

constexpr std::size_t kMostHeaderBytes = 65536;
constexpr const char* kUnreadable = "has a header that can't be read";

// What the head says, as Python writes it: {'descr': '<i2', 'fortran_order': False, 'shape': (3, 4, 5), }.
struct NpyHead {
    std::optional<std::string> descr;  // empty: a list of fields
    std::optional<bool> isFortran;
    std::optional<std::vector<std::int64_t>> shape;
};

// A cursor over that text. Each function takes what it is named after, or nothing and gives false or nullopt.
class PythonText {
  public:
    explicit PythonText(std::string_view text) : rest_(text) {}

    bool Take(char c)
    {
        SkipBlanks();
        if (rest_.empty() || rest_.front() != c) return false;
        rest_.remove_prefix(1);
        return true;
    }
    bool IsAt(char c)
    {
        SkipBlanks();
        return !rest_.empty() && rest_.front() == c;
    }
    bool AtEnd()
    {
        SkipBlanks();
        return rest_.empty();
    }
    bool TakeWord(std::string_view word)
    {
        SkipBlanks();
        if (!rest_.starts_with(word)) return false;
        rest_.remove_prefix(word.size());
        return true;
    }
    std::optional<std::string> TakeString()
    {
        SkipBlanks();
        if (rest_.empty() || (rest_.front() != '\'' && rest_.front() != '"')) return std::nullopt;
        const std::size_t end = rest_.find(rest_.front(), 1);
        if (end == std::string_view::npos) return std::nullopt;
        std::string text(rest_.substr(1, end - 1));
        rest_.remove_prefix(end + 1);
        return text;
    }
    std::optional<std::int64_t> TakeNumber()
    {
        SkipBlanks();
        std::int64_t number = 0;
        const char* const end = rest_.data() + rest_.size();
        const auto [behind, fault] = std::from_chars(rest_.data(), end, number);
        if (fault != std::errc() || number < 0) return std::nullopt;
        rest_.remove_prefix(static_cast<std::size_t>(behind - rest_.data()));
        return number;
    }

  private:
    void SkipBlanks()
    {
        const std::size_t first = rest_.find_first_not_of(" \t\r\n");
        rest_.remove_prefix(first == std::string_view::npos ? rest_.size() : first);
    }

    std::string_view rest_;
};

std::optional<std::vector<std::int64_t>> TakeShape(PythonText& text)
{
    if (!text.Take('(')) return std::nullopt;
    std::vector<std::int64_t> shape;
    while (!text.Take(')')) {
        const std::optional<std::int64_t> side = text.TakeNumber();
        if (!side) return std::nullopt;
        shape.push_back(*side);
        if (!text.Take(',') && !text.IsAt(')')) return std::nullopt;
    }
    return shape;
}

std::optional<bool> TakeTruth(PythonText& text)
{
    if (text.TakeWord("True")) return true;
    if (text.TakeWord("False")) return false;
    return std::nullopt;
}

// One "key: value". False where it isn't one of the three, or stands twice.
bool TakeEntry(PythonText& text, NpyHead& head)
{
    const std::optional<std::string> key = text.TakeString();
    if (!key || !text.Take(':')) return false;
    if (*key == "descr" && !head.descr) return (head.descr = text.TakeString()).has_value();
    if (*key == "fortran_order" && !head.isFortran) return (head.isFortran = TakeTruth(text)).has_value();
    if (*key == "shape" && !head.shape) return (head.shape = TakeShape(text)).has_value();
    return false;
}

std::optional<NpyHead> ParseHead(std::string_view header)
{
    PythonText text(header);
    NpyHead head;
    if (!text.Take('{')) return std::nullopt;
    while (!text.Take('}')) {
        if (!TakeEntry(text, head)) return std::nullopt;
        if (!text.Take(',') && !text.IsAt('}')) return std::nullopt;
    }
    const bool isWhole = head.descr && head.isFortran && head.shape && text.AtEnd();
    return isWhole ? std::optional(head) : std::nullopt;
}

// The fields of a record are told by a list in place of a string.
bool DescribesRecords(std::string_view header)
{
    const std::size_t descr = header.find("'descr'");
    if (descr == std::string_view::npos) return false;
    PythonText text(header.substr(descr + std::string_view("'descr'").size()));
    return text.Take(':') && text.IsAt('[');
}

// '<i2': byte order, kind and bytes.
std::string WhyNotCounts(std::string_view descr)
{
    if (descr.size() < 3) return kUnreadable;
    const std::string_view kindAndBytes = descr.substr(1);
    if (kindAndBytes == "i2" || kindAndBytes == "u2") {
        return descr.front() == '<' || descr.front() == '>' ? std::string() : kUnreadable;
    }
    const char kind = kindAndBytes.front();
    if (kind == 'f') return "holds floats";
    if (kind == 'c') return "holds complex numbers";
    if (kind != 'i' && kind != 'u') return "holds what aren't numbers";
    int bytes = 0;
    const char* const end = kindAndBytes.data() + kindAndBytes.size();
    const auto [behind, fault] = std::from_chars(kindAndBytes.data() + 1, end, bytes);
    if (fault != std::errc() || behind != end || bytes < 1 || bytes > 16) return kUnreadable;
    return Format("holds samples of %d bits", 8 * bytes);
}

ForeignLayout LayoutOf(const std::string& descr, const std::vector<std::int64_t>& shape, std::int64_t dataPosition)
{
    const std::size_t last = shape.size() - 1;
    return {.frames = shape.size() == 3 ? shape.front() : 1,
            .rows = shape[last - 1],
            .columns = shape[last],
            .dataPosition = dataPosition,
            .samples = descr[1] == 'u' ? ForeignSamples::kUnsigned : ForeignSamples::kSigned,
            .isBigEndian = descr.front() == '>'};
}

// The text of the head, and where the samples begin. nullopt with why.
struct HeaderText {
    std::string text;
    std::int64_t dataPosition = 0;
};
std::optional<HeaderText> ReadHeaderText(const File& file, std::string& why)
{
    constexpr std::size_t kShortHead = 10;  // magic, version, a length of 16 bits; of 32 bits from version 2 on
    constexpr std::size_t kLongHead = 12;
    std::array<std::byte, kLongHead> front{};
    const std::size_t read = file.ReadAt(0, front);
    why = "isn't a NumPy file";
    if (read < kNpyMagic.size()) return std::nullopt;
    for (std::size_t i = 0; i < kNpyMagic.size(); ++i) {
        if (front[i] != static_cast<std::byte>(kNpyMagic[i])) return std::nullopt;
    }
    why = "is cut short";
    if (read < kShortHead) return std::nullopt;
    const auto version = std::to_integer<int>(front[6]);
    why = kUnreadable;
    if (version < 1 || version > 3) return std::nullopt;
    const std::size_t before = version == 1 ? kShortHead : kLongHead;
    std::size_t bytes = 0;
    for (std::size_t i = before; i-- > 8;) bytes = 256 * bytes + std::to_integer<std::size_t>(front[i]);
    if (bytes > kMostHeaderBytes) return std::nullopt;
    HeaderText header{std::string(bytes, '\0'), static_cast<std::int64_t>(before + bytes)};
    why = "is cut short";
    const std::span<std::byte> text = std::as_writable_bytes(std::span(header.text));
    if (file.ReadAt(static_cast<std::int64_t>(before), text) < bytes) return std::nullopt;
    return header;
}

}  // namespace

std::optional<ForeignLayout> ReadNpyHead(const File& file, std::string& why)
{
    const std::optional<HeaderText> header = ReadHeaderText(file, why);
    if (!header) return std::nullopt;
    const std::optional<NpyHead> head = ParseHead(header->text);
    why = DescribesRecords(header->text) ? "holds records" : kUnreadable;
    if (!head || !head->descr || !head->isFortran || !head->shape) return std::nullopt;
    why = WhyNotCounts(*head->descr);
    if (!why.empty()) return std::nullopt;
    const std::size_t dimensions = head->shape->size();
    if (dimensions != 2 && dimensions != 3) {
        why = Format("has %zu dimension%s", dimensions, dimensions == 1 ? "" : "s");
        return std::nullopt;
    }
    why = "is stored in Fortran order";
    if (*head->isFortran) return std::nullopt;
    const ForeignLayout layout = LayoutOf(*head->descr, *head->shape, header->dataPosition);
    why = WhyNotInTheFile(layout, file.Length());
    if (!why.empty()) return std::nullopt;
    return layout;
}

}  // namespace kelvo
