#include "pixel/bad_pixels.h"

#include "pixel/bad_pixels_write.h"
#include "pixel/decommutation.h"
#include "pixel/good_neighbours.h"
#include "pixel/pixel_pair.h"
#include "pixel/search_pattern.h"
#include "platform/box.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "state/cal_settings_write.h"
#include "state/display_state.h"
#include "state/state_registry.h"
#include "state/windows.h"
#include "ui/status.h"

#include <algorithm>
#include <string>
#include <utility>

namespace kelvo {

namespace write {
BadPixelVariables badPixels;
}

constinit const BadDetMap& BadDetList = write::badPixels.BadDetList;
constinit const std::vector<std::uint32_t>& ReplacedPixels = write::badPixels.ReplacedPixels;

namespace {

const StateNames kStateNames{
    Named("ReplacedPixels", ReplacedPixels),
};

constexpr std::size_t kLongestFile = std::size_t{1} << 26;
constexpr int kMostLineBoxes = 20;
constexpr int kMostBeeps = 20;
constexpr std::string_view kIdentifyTitle = "IdentifyBadDet() Error";
constexpr std::string_view kReadTitle = "ReadBadPixelFile() Error";

struct Region {
    std::int32_t rows = 0;
    std::int32_t columns = 0;

    bool Holds(PixelPair pixel) const
    {
        return pixel.row >= 0 && pixel.column >= 0 && pixel.row < rows && pixel.column < columns;
    }
    // In 64 bits: row and column may be any number that a line holds.
    std::int64_t IndexOf(PixelPair pixel) const { return std::int64_t{pixel.row} * columns + pixel.column; }
    std::size_t Count() const
    {
        return static_cast<std::size_t>(std::max(rows, 0)) * static_cast<std::size_t>(std::max(columns, 0));
    }
};

Region RegionOf(const CameraConfig& config)
{
    return {.rows = config.Vroi, .columns = config.Hroi};
}

// Tells of bad lines one by one, and of a flood of them in one word.
class LineComplaints {
  public:
    explicit LineComplaints(std::string_view title) : title_(title) {}

    void Tell(std::int64_t number, const std::string& line)
    {
        if (++count_ > kMostLineBoxes) return;
        MessageBox(hWndMain, "Line #" + std::to_string(number) + " ignored,\"" + line + "\"", title_);
    }
    void Close() const
    {
        const int untold = count_ - kMostLineBoxes;
        if (untold > 0) MessageBox(hWndMain, Format("%d more lines ignored.", untold), title_);
    }

  private:
    std::string_view title_;
    int count_ = 0;
};

// Takes a list line by line. A line without a pair counts for the pair before it again, which is told, and told once
// more where that pair lies outside. A pair outside the region has no place in the map, whatever its index comes to.
class Marker {
  public:
    Marker(BadDetMap& badMap, const Region& region, std::string_view title)
        : badMap_(badMap), region_(region), complaints_(title)
    {
    }

    void TakeLine(std::string line)
    {
        if (line.ends_with('\n')) line.pop_back();
        if (line.empty()) return;
        const std::optional<PixelPair> scanned = ScanPixelPair(line);
        if (scanned) {
            pixel_ = scanned;
        } else {
            complaints_.Tell(index_ + 1, line);
        }
        if (pixel_) Mark(*pixel_, line);
    }
    void Close() const { complaints_.Close(); }

  private:
    void Mark(const PixelPair& pixel, const std::string& line)
    {
        const bool inside = region_.Holds(pixel);
        if (!inside) complaints_.Tell(index_ + 1, line);
        index_ = region_.IndexOf(pixel);
        if (inside && std::cmp_less(index_, badMap_.size())) badMap_[static_cast<std::size_t>(index_)] = 1;
    }

    BadDetMap& badMap_;
    Region region_;
    LineComplaints complaints_;
    std::optional<PixelPair> pixel_;  // of the last line that scanned
    std::int64_t index_ = 0;          // the last one that a line gave
};

bool LoadMarks(std::string_view path, BadDetMap& badMap, const Region& region, std::string_view title)
{
    std::optional<std::string> contents = ReadWholeFile(path, kLongestFile);
    if (!contents) {
        MessageBox(hWndMain, "Could not open file " + std::string(path), title);
        return false;
    }
    LineReader reader(std::move(*contents), kLongestPairLine);
    Marker marker(badMap, region, title);
    std::string line;
    while (NextPairLine(reader, line)) marker.TakeLine(line);
    marker.Close();
    return true;
}

bool IsNullGain(float gain)
{
    return gain >= -kNullGain && gain <= kNullGain;
}

// Each error beeps, a flood of them doesn't.
class ErrorCount {
  public:
    void Add()
    {
        if (++count_ <= kMostBeeps) MessageBeep(Sound::kExclamation);
    }
    void Tell(std::string_view what) const
    {
        if (count_ != 0) MessageBox(hWndMain, std::to_string(count_) + std::string(what), kIdentifyTitle);
    }

  private:
    std::int64_t count_ = 0;
};

// Reads the gain of each image pixel through the table; entry 0 answers where the way there is broken.
class GainOfPixel {
  public:
    GainOfPixel(std::span<const float> gainList, std::span<const std::uint32_t> decomList, const CameraConfig& config)
        : gainList_(gainList), decomList_(decomList), rule_(PositionRuleOf(config)), count_(RegionOf(config).Count())
    {
    }

    float At(const PixelPair& pixel) { return GainAt(DetectorOf(pixel)); }
    void TellErrors() const
    {
        indexErrors_.Tell(" invalid decommutation index errors!");
        addressErrors_.Tell(" invalid decommutation addresses.");
    }

  private:
    std::size_t DetectorOf(const PixelPair& pixel)
    {
        const std::int64_t position = rule_.InTable(pixel.row, pixel.column);
        if (position < 0 || std::cmp_greater_equal(position, decomList_.size())) {
            indexErrors_.Add();
            return 0;
        }
        const std::size_t detector = decomList_[static_cast<std::size_t>(position)];
        if (detector <= count_) return detector;
        addressErrors_.Add();
        return 0;
    }
    float GainAt(std::size_t detector) const
    {
        return gainList_[detector < std::min(count_, gainList_.size()) ? detector : 0];
    }

    std::span<const float> gainList_;
    std::span<const std::uint32_t> decomList_;
    PositionRule rule_;
    std::size_t count_;
    ErrorCount indexErrors_;
    ErrorCount addressErrors_;
};

bool MarkBadPixels(std::span<const float> gainList, std::span<const std::uint32_t> decomList)
{
    if (!CalSettings.BadDetFile.empty()) {
        StatusMessage("Loading pixel substitution file...", kLeftAligned);
        if (!LoadBadDetFile(CalSettings.BadDetFile, write::badPixels.BadDetList, ActiveConfig)) return false;
    }
    StatusMessage("Calculating pixel substitution...", kLeftAligned);
    write::calSet.BadDetCount = IdentifyBadDet(write::badPixels.BadDetList, gainList, decomList, ActiveConfig);
    return BadDetCount >= 0;
}

bool SaveBadPixels()
{
    std::string drive;
    std::string directory;
    std::string name;
    SplitPath(CalSettings.CalFile, &drive, &directory, &name, nullptr);
    write::calSet.CalSettings.BadDetFile = MakePath(drive, directory, name, ".bad");
    StatusMessage("Saving pixel substitution file...", kLeftAligned);
    return WriteBadDetFile(CalSettings.BadDetFile, BadDetList, ActiveConfig) != 0;
}

}  // namespace

int LoadBadDetFile(std::string_view path, BadDetMap& badMap, const CameraConfig& config)
{
    return LoadMarks(path, badMap, RegionOf(config), kMessageCaption) ? 1 : 0;
}

int WriteBadDetFile(std::string_view path, const BadDetMap& badMap, const CameraConfig& config)
{
    const Region region = RegionOf(config);
    std::string lines;
    std::size_t index = 0;
    for (std::int32_t row = 0; row < region.rows; ++row) {
        for (std::int32_t column = 0; column < region.columns && index < badMap.size(); ++column, ++index) {
            if (badMap[index] != 0) lines += PixelPairText({.row = row, .column = column}) + '\n';
        }
    }
    if (ReplaceFile(path, lines)) return 1;
    MessageBox(hWndMain, "Could not save file: " + std::string(path), kMessageCaption);
    return 0;
}

std::optional<BadDetMap> ReadBadPixelFile(std::string_view path, std::int32_t width, std::int32_t height)
{
    BadDetMap map;
    const bool positive = width > 0 && height > 0;
    if (!positive || !AllocateBlock(map, static_cast<std::size_t>(width) * static_cast<std::size_t>(height))) {
        MessageBox(hWndMain, "Memory allocation failure!", kReadTitle);
        return std::nullopt;
    }
    if (!LoadMarks(path, map, {.rows = height, .columns = width}, kReadTitle)) return std::nullopt;
    return map;
}

std::int32_t IdentifyBadDet(BadDetMap& badMap, std::span<const float> gainList,
                            std::span<const std::uint32_t> decomList, const CameraConfig& config)
{
    const Region region = RegionOf(config);
    if (gainList.empty() || badMap.size() < region.Count()) return 0;
    GainOfPixel gains(gainList, decomList, config);
    std::int32_t marked = 0;
    std::size_t index = 0;
    for (std::int32_t row = 0; row < region.rows; ++row) {
        for (std::int32_t column = 0; column < region.columns; ++column, ++index) {
            if (!IsNullGain(gains.At({.row = row, .column = column}))) continue;
            badMap[index] = 1;
            ++marked;
        }
    }
    gains.TellErrors();
    return marked;
}

int ReplaceBadDet(std::span<std::uint32_t> decomList, const BadDetMap& badMap, const CameraConfig& config)
{
    const std::optional<SearchPattern> pattern = ReadSearchPattern(CalSettings.PRSfile);
    if (!pattern) return 0;
    if (pattern->rows.empty()) return 1;
    const Region region = RegionOf(config);
    write::badPixels.ReplacedPixels.clear();
    write::calSet.BadDetCount = 0;
    const std::size_t count = region.Count();
    if (count == 0 || decomList.size() < count || badMap.size() < count) return 1;
    // The map isn't changed as pixels are repaired: a repaired pixel never answers for another.
    for (const PixelAnswer& answer : FindGoodNeighbours(badMap, region.rows, region.columns, *pattern)) {
        decomList[answer.bad] = decomList[answer.source];
        write::badPixels.ReplacedPixels.push_back(answer.bad);
    }
    write::calSet.BadDetCount = static_cast<std::int32_t>(ReplacedPixels.size());
    return 1;
}

int SubstituteBadPixels(std::span<const float> gainList, std::span<std::uint32_t> decomList, bool* listIsSaved)
{
    if (listIsSaved) *listIsSaved = true;
    if (!SubstBadPixels) {
        write::calSet.CalSettings.BadDetFile.clear();
        return 1;
    }
    StatusMessage("Performing bad pixel substitution...", kLeftAligned);
    if (!AllocateBlock(write::badPixels.BadDetList, RegionOf(ActiveConfig).Count())) {
        MessageBox(hWndMain, "Failure to allocate memory for bad detector list", kMessageCaption);
        return 0;
    }
    if (!MarkBadPixels(gainList, decomList) || !ReplaceBadDet(decomList, BadDetList, ActiveConfig)) {
        BadDetMap().swap(write::badPixels.BadDetList);
        return 0;
    }
    const bool saved = SaveBadPixels();
    if (listIsSaved) *listIsSaved = saved;
    return 1;
}

void ResetBadPixels()
{
    write::badPixels.BadDetList.clear();
    write::badPixels.ReplacedPixels.clear();
}

}  // namespace kelvo
