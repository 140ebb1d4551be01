#include "imagefile/fits_reader.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <span>

namespace kelvo {

namespace {

constexpr std::size_t kBlockBytes = 2880;
constexpr std::size_t kCardBytes = 80;
constexpr std::size_t kKeywordBytes = 8;
constexpr std::size_t kValueColumn = 10;
constexpr int kMostBlocks = 1000;
constexpr double kUnsignedZero = 32768;
constexpr const char* kUnreadable = "has a header that can't be read";

// The cards that have a value, as it stands: a text without its quotes, all else without blanks and comment.
using FitsCards = std::map<std::string, std::string, std::less<>>;

std::string ValueOf(std::string_view field)
{
    field = Trimmed(field);
    if (!field.starts_with('\'')) return std::string(Trimmed(field.substr(0, field.find('/'))));
    std::string text;
    for (std::size_t i = 1; i < field.size(); ++i) {
        const bool isDoubled = field[i] == '\'' && i + 1 < field.size() && field[i + 1] == '\'';
        if (field[i] == '\'' && !isDoubled) break;
        text += field[i];
        i += isDoubled ? 1 : 0;
    }
    return std::string(Trimmed(text));
}

// The first of two cards of a name counts. True at END.
bool AddCard(std::string_view card, FitsCards& cards)
{
    const std::string_view keyword = Trimmed(card.substr(0, kKeywordBytes));
    if (keyword == "END") return true;
    if (card.substr(kKeywordBytes, 2) == "= ")
        cards.try_emplace(std::string(keyword), ValueOf(card.substr(kValueColumn)));
    return false;
}

// The cards up to END, and where the blocks of the header end. nullopt with why.
struct FitsHead {
    FitsCards cards;
    std::int64_t bytes = 0;
};
std::optional<FitsHead> ReadCards(const File& file, std::string& why)
{
    FitsHead head;
    std::array<char, kBlockBytes> block{};
    for (int blocks = 0; blocks < kMostBlocks; ++blocks) {
        const std::size_t read = file.ReadAt(head.bytes, std::as_writable_bytes(std::span(block)));
        const std::string_view text(block.data(), read);
        why = "isn't a FITS file";
        if (blocks == 0 && !text.starts_with(kFitsMagic)) return std::nullopt;
        why = "is cut short";
        if (read < kBlockBytes) return std::nullopt;
        head.bytes += std::int64_t{kBlockBytes};
        for (std::size_t card = 0; card < kBlockBytes; card += kCardBytes) {
            if (AddCard(text.substr(card, kCardBytes), head.cards)) return head;
        }
    }
    why = kUnreadable;
    return std::nullopt;
}

// The exponent of a double has a letter of its own, "1.5D3".
std::optional<double> NumberOf(std::string text)
{
    if (text.starts_with('+')) text.erase(0, 1);
    std::ranges::replace(text, 'D', 'E');
    double number = 0;
    const auto [behind, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isOne = fault == std::errc() && behind == text.data() + text.size() && std::isfinite(number);
    return isOne ? std::optional(number) : std::nullopt;
}

// A card's number; without the card its usual value. nullopt where what stands there is none.
std::optional<double> NumberAt(const FitsCards& cards, std::string_view keyword, double usual)
{
    const auto found = cards.find(keyword);
    return found == cards.end() ? std::optional(usual) : NumberOf(found->second);
}

// The same of a card that has to be there, of a whole number from 0 on.
std::optional<std::int64_t> CountAt(const FitsCards& cards, std::string_view keyword)
{
    constexpr double kMost = 9e15;  // doubles have them exactly
    const std::optional<double> number = NumberAt(cards, keyword, -1);
    if (!number || *number < 0 || *number > kMost || *number != std::floor(*number)) return std::nullopt;
    return static_cast<std::int64_t>(*number);
}

std::string WhyNotCounts(const FitsCards& cards)
{
    const std::optional<double> bits = NumberAt(cards, "BITPIX", 0);
    const std::optional<std::int64_t> dimensions = CountAt(cards, "NAXIS");
    if (!bits || !dimensions) return kUnreadable;
    if (*dimensions == 0) return "holds no image in its first part";
    if (*bits == -32 || *bits == -64) return "holds floats";
    if (*bits == 8 || *bits == 32 || *bits == 64) return Format("holds samples of %d bits", static_cast<int>(*bits));
    if (*bits != 16) return kUnreadable;
    if (*dimensions == 2 || *dimensions == 3) return {};
    return Format("has %lld dimension%s", static_cast<long long>(*dimensions), *dimensions == 1 ? "" : "s");
}

// nullopt where a side can't be read.
std::optional<ForeignLayout> LayoutOf(const FitsHead& head)
{
    const bool isCube = CountAt(head.cards, "NAXIS") == 3;
    const std::optional<std::int64_t> columns = CountAt(head.cards, "NAXIS1");
    const std::optional<std::int64_t> rows = CountAt(head.cards, "NAXIS2");
    const std::optional<std::int64_t> frames = isCube ? CountAt(head.cards, "NAXIS3") : 1;
    if (!columns || !rows || !frames) return std::nullopt;
    ForeignLayout layout{.frames = *frames,
                         .rows = *rows,
                         .columns = *columns,
                         .dataPosition = head.bytes,
                         .samples = ForeignSamples::kSigned,
                         .isBigEndian = true};
    const auto order = head.cards.find("ROWORDER");
    layout.isBottomUp = order != head.cards.end() && EqualIgnoringCase(order->second, "BOTTOM-UP");
    constexpr double kMsPerSecond = 1000;
    constexpr double kLongestExposure = 1e9;  // seconds; what is longer, or negative, is none
    const double exposure = NumberAt(head.cards, "EXPTIME", 0).value_or(0);
    if (exposure >= 0 && exposure <= kLongestExposure) layout.integrationMs = exposure * kMsPerSecond;
    return layout;
}

}  // namespace

std::optional<ForeignLayout> ReadFitsHead(const File& file, std::string& why)
{
    const std::optional<FitsHead> head = ReadCards(file, why);
    if (!head) return std::nullopt;
    const auto simple = head->cards.find("SIMPLE");
    why = kUnreadable;
    if (simple == head->cards.end() || simple->second != "T") return std::nullopt;
    why = WhyNotCounts(head->cards);
    if (!why.empty()) return std::nullopt;
    std::optional<ForeignLayout> layout = LayoutOf(*head);
    const std::optional<double> zero = NumberAt(head->cards, "BZERO", 0);
    const std::optional<double> scale = NumberAt(head->cards, "BSCALE", 1);
    why = kUnreadable;
    if (!layout || !zero || !scale) return std::nullopt;
    why = "holds values that aren't counts (BSCALE or BZERO)";
    if (*scale != 1 || (*zero != 0 && *zero != kUnsignedZero)) return std::nullopt;
    if (*zero == kUnsignedZero) layout->samples = ForeignSamples::kBiased;
    why = WhyNotInTheFile(*layout, file.Length());
    if (!why.empty()) return std::nullopt;
    return layout;
}

}  // namespace kelvo
