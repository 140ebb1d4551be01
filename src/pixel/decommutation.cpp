#include "pixel/decommutation.h"

#include "platform/box.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "state/head_state.h"
#include "state/windows.h"
#include "ui/status.h"

#include <algorithm>
#include <utility>

namespace kelvo {

namespace {

// A camera section may hold any numbers: what is made of them is reckoned in 64 bits.
using Index = std::int64_t;

constexpr std::int32_t kTwoChannelLines = 1;
constexpr std::int32_t kOneChannel = 2;
constexpr std::int32_t kNoReadout = 3;
constexpr std::int32_t kLineHalves = 4;
constexpr std::int32_t kLineHalvesExchanged = 5;
constexpr std::int32_t kLinePairs = 6;
constexpr std::int32_t kLineQuarters = 7;
constexpr std::int32_t kFromTheMiddle = 8;
constexpr std::int32_t kEverySecond = 10;
constexpr std::int32_t kEverySecondKept = 11;
constexpr std::int32_t kLineCounter = 12;
constexpr Index kUncountedSamples = 6;  // by which the line counter's lines are shorter

struct Region {
    Index rows = 0;
    Index columns = 0;
    Index Count() const { return rows * columns; }
};

Region RegionOf(const CameraConfig& config)
{
    return {.rows = std::max(config.Vroi, 0), .columns = std::max(config.Hroi, 0)};
}

// A late readout turns the two channels of a line around.
std::int32_t SchemeAtShift(std::int32_t scheme, std::int32_t shift)
{
    if (shift % 2 == 0) return scheme;
    if (scheme == kLineHalves) return kLineHalvesExchanged;
    return scheme == kLineHalvesExchanged ? kLineHalves : scheme;
}

std::int32_t FewestColumns(std::int32_t scheme)
{
    if (scheme == kLineHalves || scheme == kLineHalvesExchanged) return 2;
    return scheme == kLineQuarters ? 4 : 1;
}

// Fills a table, once. Each way gives false where a source stays negative.
class TableBuilder {
  public:
    TableBuilder(DecomTable& table, const CameraConfig& config, std::int32_t shift)
        : table_(table),
          rows_(config.Vroi),
          columns_(config.Hroi),
          count_(std::ssize(table)),
          firstRow_(config.Vstart),
          lineDelay_(config.Hdelay),
          imageDelay_(config.Idelay),
          walkDelay_(config.CalDelay),
          shift_(shift)
    {
    }

    bool Build(std::int32_t scheme)
    {
        const Index H = columns_;
        const Index V = rows_;
        const Index D = lineDelay_ + shift_;
        switch (scheme) {
            case kTwoChannelLines:
                return TwoPassesALine();
            case kOneChannel:
                return Gather(1, [=](Index a, Index c) { return D + c + H * a; });
            case kNoReadout:
                return true;
            case kLineHalves:
                return Gather(1, [=](Index a, Index c) { return D + a * H + c % (H / 2) * 2 + c / (H / 2); });
            case kLineHalvesExchanged:
                return Gather(1, [=](Index a, Index c) { return D + a * H + c % (H / 2) * 2 + (1 - c / (H / 2)); });
            case kLinePairs:
                return Gather(
                    1, [=, this](Index a, Index c) { return shift_ + a / 2 * 2 * H + (c + lineDelay_) * 2 + a % 2; });
            case kLineQuarters:
                return Gather(1, [=](Index a, Index c) { return D + a * H + c % (H / 4) * 4 + c / (H / 4); });
            case kFromTheMiddle:
                // For an array of 256 lines: the constants don't follow the region's rows.
                return Gather(1, [=, this](Index a, Index c) {
                    const Index t = (c + lineDelay_) % H * V + a % 4 * V + shift_;
                    return a < V / 2 ? t + 254 - 2 * a : t + 2 * a - 255;
                });
            case kEverySecond:
            case kEverySecondKept:  // takes no part in the shift, both of them
                return Gather(scheme == kEverySecond ? 1 : 2,
                              [=, this](Index a, Index c) { return lineDelay_ + a * H + 2 * c; });
            default:
                return Walk();
        }
    }

  private:
    void Put(Index position, Index sample)
    {
        if (position < 0 || position >= count_) return;
        table_[static_cast<std::size_t>(position)] = static_cast<std::uint32_t>(sample);
    }

    // source gives the sample of column c in line a of the array.
    template <typename Source>
    bool Gather(Index columnStep, Source source)
    {
        for (Index row = 0; row < rows_; ++row) {
            for (Index column = 0; column < columns_; ++column) {
                const Index sample = PositionRule::Wrap(source(row + firstRow_, column), count_);
                if (sample < 0) return false;
                Put(PositionRule::Wrap(row * columns_ + column * columnStep + imageDelay_, count_), sample);
            }
        }
        return true;
    }

    // Even samples of a line, then its odd ones; a late readout has them the other way round.
    bool TwoPassesALine()
    {
        const Index firstPass = shift_ % 2 == 0 ? 0 : 1;
        Index position = walkDelay_;
        for (Index row = 0; row < rows_; ++row) {
            const Index line = row * columns_ + shift_;
            if (!Pass(line + firstPass, position) || !Pass(line + 1 - firstPass, position)) return false;
        }
        return true;
    }
    bool Pass(Index source, Index& position)
    {
        for (Index i = 0; i < columns_ / 2; ++i, source += 2) {
            const Index sample = source % count_;
            if (sample < 0) return false;
            Put(position, sample);
            position = (position + 1) % count_;
        }
        return true;
    }

    bool Walk()
    {
        Index position = walkDelay_ + shift_;
        if (position < 0) position = (position + count_) % count_;
        for (Index i = 0; i < count_; ++i) {
            Put(position, i);
            position = (position + 1) % count_;
        }
        return true;
    }

    DecomTable& table_;
    Index rows_;
    Index columns_;
    Index count_;
    Index firstRow_;
    Index lineDelay_;
    Index imageDelay_;
    Index walkDelay_;
    Index shift_;
};

// One pass of a reordering: each pixel's entry goes where target puts the pixel.
template <typename Target>
void MoveEntries(DecomTable& list, DecomTable& scratch, const Region& region, const PositionRule& rule, Target target)
{
    for (Index row = 0; row < region.rows; ++row) {
        for (Index column = 0; column < region.columns; ++column) {
            const auto [toRow, toColumn] = target(row, column);
            const Index from = rule.Of(row, column);
            const Index to = rule.Of(toRow, toColumn);
            if (!rule.Holds(from) || !rule.Holds(to)) continue;
            scratch[static_cast<std::size_t>(to)] = list[static_cast<std::size_t>(from)];
        }
    }
    list = scratch;
}

bool Refuse(std::string_view text)
{
    MessageBox(hWndMain, text, kMessageCaption);
    return false;
}

bool ReadEntries(File& file, DecomTable& list)
{
    const auto bytes = std::as_writable_bytes(std::span(list));
    return file.Read(bytes) == bytes.size();
}

std::optional<DecomTable> BuildForRateInForce(const CameraConfig& config)
{
    MessageBeep(Sound::kExclamation);
    return BuildDecomList(config, FrameRateRowAt(IndexFrameRate).ReadoutShift);
}

}  // namespace

std::optional<DecomTable> BuildDecomList(const CameraConfig& config, std::int32_t readoutShift)
{
    DecomTable table;
    const auto count = static_cast<std::size_t>(RegionOf(config).Count());
    if (count == 0 || !AllocateBlock(table, count)) {
        Refuse("Failure to Lock Decommuation list in Memory");
        return std::nullopt;
    }
    const std::int32_t scheme = SchemeAtShift(config.DecomScheme, readoutShift);
    const bool channelsFit = config.Hroi >= FewestColumns(scheme);
    if (!channelsFit || !TableBuilder(table, config, readoutShift).Build(scheme)) {
        Refuse(
            Format("The readout order can't be built: a width or a delay of the camera's section is out of\n"
                   "range (DecomScheme=%d, Hroi=%d, Vstart=%d, Hdelay=%d).",
                   config.DecomScheme, config.Hroi, config.Vstart, config.Hdelay));
        return std::nullopt;
    }
    return table;
}

std::int32_t ReorderDecomList(DecomTable& list, const CameraConfig& config, std::int32_t mirrorHoriz,
                              std::int32_t mirrorVert, std::int32_t rotateCcw)
{
    if (!mirrorHoriz && !mirrorVert && !rotateCcw) return 1;
    const Region region = RegionOf(config);
    PositionRule rule = PositionRuleOf(config);
    DecomTable scratch;
    if (std::cmp_less(list.size(), rule.count) || !AllocateBlock(scratch, list.size())) {
        return Refuse("Failure to allocate and lock Temporary memory!") ? 1 : 0;
    }
    std::ranges::copy(list, scratch.begin());
    using Place = std::pair<Index, Index>;
    if (mirrorHoriz) {
        MoveEntries(list, scratch, region, rule, [&](Index r, Index c) { return Place(region.rows - 1 - r, c); });
    }
    if (mirrorVert) {
        MoveEntries(list, scratch, region, rule, [&](Index r, Index c) { return Place(r, region.columns - 1 - c); });
    }
    if (rotateCcw) {
        MoveEntries(list, scratch, region, rule, [&](Index r, Index c) { return Place(region.columns - 1 - c, r); });
    }
    return 1;
}

PositionRule PositionRuleOf(const CameraConfig& config)
{
    const Region region = RegionOf(config);
    PositionRule rule{.count = region.Count(), .rowStep = region.columns, .columnStep = 1, .start = config.Idelay};
    if (config.DecomScheme == kEverySecondKept) rule.columnStep = 2;
    if (config.DecomScheme == kLineCounter) rule.rowStep -= kUncountedSamples;
    if (config.DecomScheme == kNoReadout) {
        rule.start = 0;
        rule.wraps = false;
    }
    return rule;
}

std::int64_t DecomPosition(const CameraConfig& config, std::int32_t row, std::int32_t column)
{
    return PositionRuleOf(config).InTable(row, column);
}

std::string DecomTempPath()
{
    return DefaultDir + "/DECOM.TMP";
}

bool DecomEntriesLieInFrame(std::span<const std::uint32_t> list, const CameraConfig& config)
{
    const Index count = RegionOf(config).Count();
    return std::ranges::all_of(list, [count](std::uint32_t entry) { return std::cmp_less(entry, count); });
}

std::optional<DecomTable> LoadDecomList(const CameraConfig& config)
{
    StatusMessage(" Getting Decommutation Array...", kLeftAligned);
    const auto count = static_cast<std::size_t>(RegionOf(config).Count());
    DecomTable list;
    if (count == 0 || !AllocateBlock(list, count)) {
        Refuse("Failure to allocate Decommutation memory!");
        return std::nullopt;
    }
    std::optional<File> file = File::Open(DecomTempPath(), FileMode::kRead);
    if (!file) return BuildForRateInForce(config);
    if (!ReadEntries(*file, list) || !DecomEntriesLieInFrame(list, config)) {
        MessageBeep(Sound::kExclamation);
        Refuse("Failed to read file:\nDECOM.TMP");
        return std::nullopt;
    }
    return list;
}

}  // namespace kelvo
