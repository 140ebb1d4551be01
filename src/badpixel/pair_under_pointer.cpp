#include "badpixel/pair_under_pointer.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

namespace kelvo {

namespace {

using LinesByNumber = std::unordered_map<std::uint32_t, std::size_t>;

// Those of the picture, the nearest first.
std::vector<Point> PixelsWithinReach(Point pixel, const CameraConfig& config)
{
    const auto squareTo = [pixel](Point at) {
        return (at.x - pixel.x) * (at.x - pixel.x) + (at.y - pixel.y) * (at.y - pixel.y);
    };
    std::vector<Point> near;
    for (int y = std::max(pixel.y - kPairReach, 0); y <= std::min(pixel.y + kPairReach, config.Vroi - 1); ++y) {
        for (int x = std::max(pixel.x - kPairReach, 0); x <= std::min(pixel.x + kPairReach, config.Hroi - 1); ++x) {
            if (squareTo({x, y}) <= kPairReach * kPairReach) near.push_back({x, y});
        }
    }
    std::ranges::stable_sort(near, {}, squareTo);
    return near;
}

std::size_t IndexOf(Point pixel, const CameraConfig& config)
{
    return static_cast<std::size_t>(pixel.y) * static_cast<std::size_t>(config.Hroi) +
           static_cast<std::size_t>(pixel.x);
}

// The first line at each place in the table, before orientation.
LinesByNumber LinesByPlace(std::span<const PixelPair> lines, const CameraConfig& config)
{
    LinesByNumber byPlace;
    for (std::size_t line = 0; line < lines.size(); ++line) {
        const PixelPair& pair = lines[line];
        const bool inside = pair.row >= 0 && pair.row < config.Vroi && pair.column >= 0 && pair.column < config.Hroi;
        const std::int64_t place = inside ? DecomPosition(config, pair.row, pair.column) : -1;
        if (place >= 0) byPlace.emplace(static_cast<std::uint32_t>(place), line);
    }
    return byPlace;
}

// The first line whose bad pixel shows each sample: a neighbour's.
LinesByNumber LinesBySample(const LinesByNumber& byPlace, std::span<const std::uint32_t> shown,
                            std::span<const std::uint32_t> table)
{
    LinesByNumber bySample;
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const auto found = byPlace.find(shown[i]);
        if (found == byPlace.end()) continue;
        const auto [entry, isNew] = bySample.emplace(table[i], found->second);
        if (!isNew) entry->second = std::min(entry->second, found->second);
    }
    return bySample;
}

}  // namespace

std::optional<PairAtPixel> PairNear(Point pixel, std::span<const PixelPair> lines, std::span<const std::uint32_t> shown,
                                    std::span<const std::uint32_t> table, const CameraConfig& config)
{
    const std::vector<Point> near = PixelsWithinReach(pixel, config);
    if (near.empty() || IndexOf({config.Hroi - 1, config.Vroi - 1}, config) + 1 != shown.size()) return std::nullopt;
    const LinesByNumber byPlace = LinesByPlace(lines, config);
    for (const Point at : near) {
        const auto found = byPlace.find(shown[IndexOf(at, config)]);
        if (found != byPlace.end()) return PairAtPixel{.line = found->second, .answers = std::nullopt};
    }
    if (table.size() != shown.size()) return std::nullopt;
    const LinesByNumber bySample = LinesBySample(byPlace, shown, table);
    for (const Point at : near) {
        const auto found = bySample.find(table[IndexOf(at, config)]);
        if (found != bySample.end()) return PairAtPixel{.line = found->second, .answers = at};
    }
    return std::nullopt;
}

}  // namespace kelvo
