#include "state/state_registry.h"

#include "platform/text.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <utility>

namespace kelvo {

namespace {

using Registry = std::map<std::string, std::function<StateValue()>, std::less<>>;

// Made at first use: modules register before main().
Registry& Names()
{
    static Registry names;
    return names;
}

// How many letters must be changed, put in or left out to turn one text into the other.
std::size_t EditDistance(std::string_view a, std::string_view b)
{
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t above = row[j + 1];
            row[j + 1] = std::min({above + 1, row[j] + 1, diagonal + (a[i] == b[j] ? 0U : 1U)});
            diagonal = above;
        }
    }
    return row.back();
}

constexpr std::size_t kNotNear = 1000;
constexpr std::size_t kMostSlips = 2;
constexpr std::size_t kMostNearNames = 5;

// 0: the same but for case; then slips of the pen; then names that hold the text.
std::size_t Distance(std::string_view asked, std::string_view name)
{
    const std::string a = LowerAscii(asked);
    const std::string b = LowerAscii(name);
    const std::size_t slips = EditDistance(a, b);
    if (slips <= kMostSlips && slips < b.size()) return slips;
    if (a.size() >= 3 && (b.find(a) != std::string::npos || a.find(b) != std::string::npos)) return kMostSlips + 1;
    return kNotNear;
}

}  // namespace

void RegisterState(std::string_view name, std::function<StateValue()> read)
{
    Names().insert_or_assign(std::string(name), std::move(read));
}

StateNames::StateNames(std::initializer_list<StateName> names)
{
    for (const StateName& name : names) RegisterState(name.name, name.read);
}

std::string DigestOf(std::span<const std::byte> bytes)
{
    // FNV-1a, 64 bits: draft-eastlake-fnv.
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const std::byte byte : bytes) {
        hash ^= std::to_integer<std::uint64_t>(byte);
        hash *= 0x100000001B3;
    }
    return Format("%zu bytes, %016llx", bytes.size(), static_cast<unsigned long long>(hash));
}

std::optional<StateValue> ReadState(std::string_view name)
{
    const auto found = Names().find(name);
    if (found == Names().end()) return std::nullopt;
    return found->second();
}

std::vector<std::string> AllStateNames()
{
    std::vector<std::string> names;
    for (const auto& [name, read] : Names()) names.push_back(name);
    return names;
}

std::vector<std::string> NearStateNames(std::string_view name)
{
    std::vector<std::pair<std::size_t, std::string>> near;
    for (const auto& [known, read] : Names()) {
        const std::size_t distance = Distance(name, known);
        if (distance < kNotNear) near.emplace_back(distance, known);
    }
    std::sort(near.begin(), near.end());
    if (near.size() > kMostNearNames) near.resize(kMostNearNames);

    std::vector<std::string> names;
    names.reserve(near.size());
    for (auto& [distance, known] : near) names.push_back(std::move(known));
    return names;
}

}  // namespace kelvo
