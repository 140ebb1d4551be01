#include "pixel/bad_pixels.h"

#include "platform/box.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "shell/windows.h"

#include <string>
#include <utility>

namespace kelvo {

namespace {

constexpr std::size_t kLongestFile = std::size_t{1} << 26;
constexpr std::size_t kLongestLine = 79;
constexpr int kMostLineBoxes = 20;
constexpr std::string_view kReadTitle = "ReadBadPixelFile() Error";
constexpr std::string_view kBlanks = " \t\n\v\f\r";

struct Pixel {
    std::int32_t row = 0;
    std::int32_t column = 0;
};

struct Region {
    std::int32_t rows = 0;
    std::int32_t columns = 0;

    bool Holds(Pixel pixel) const
    {
        return pixel.row >= 0 && pixel.column >= 0 && pixel.row < rows && pixel.column < columns;
    }
    // In 64 bits: row and column may be any number that a line holds.
    std::int64_t IndexOf(Pixel pixel) const { return std::int64_t{pixel.row} * columns + pixel.column; }
};

Region RegionOf(const CameraConfig& config)
{
    return {.rows = config.Vroi, .columns = config.Hroi};
}

// "%d,%d": blanks before either number, none before the comma; what follows doesn't matter.
std::optional<Pixel> ScanPixel(std::string_view line)
{
    const std::optional<std::int32_t> row = ScanDecimal(line);
    if (!row) return std::nullopt;
    line.remove_prefix(line.find_first_not_of(kBlanks));
    const std::size_t comma = line.find_first_not_of("0123456789", 1);
    if (comma == std::string_view::npos || line[comma] != ',') return std::nullopt;
    const std::optional<std::int32_t> column = ScanDecimal(line.substr(comma + 1));
    if (!column) return std::nullopt;
    return Pixel{.row = *row, .column = *column};
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
        const std::optional<Pixel> pixel = ScanPixel(line);
        if (!pixel || !region_.Holds(*pixel)) complaints_.Tell(index_ + 1, line);
        // The warning is no more than that. A line without a pair marks the pixel before it again, which stands marked.
        if (pixel) Mark(*pixel);
    }
    void Close() const { complaints_.Close(); }

  private:
    // A pixel outside the region has no place in the map, whatever its index comes to.
    void Mark(Pixel pixel)
    {
        index_ = region_.IndexOf(pixel);
        if (region_.Holds(pixel) && std::cmp_less(index_, badMap_.size()))
            badMap_[static_cast<std::size_t>(index_)] = 1;
    }

    BadDetMap& badMap_;
    Region region_;
    LineComplaints complaints_;
    std::int64_t index_ = 0;  // the last one that a line gave
};

bool NextLine(LineReader& reader, std::string& line)
{
    const std::optional<std::string> next = reader.Next();
    if (!next) return false;
    line = *next;
    return true;
}

bool LoadMarks(std::string_view path, BadDetMap& badMap, const Region& region, std::string_view title)
{
    std::optional<std::string> contents = ReadWholeFile(path, kLongestFile);
    if (!contents) {
        MessageBox(hWndMain, "Could not open file " + std::string(path), title);
        return false;
    }
    LineReader reader(std::move(*contents), kLongestLine);
    Marker marker(badMap, region, title);
    std::string line;
    while (NextLine(reader, line)) marker.TakeLine(line);
    marker.Close();
    return true;
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
            if (badMap[index] != 0) lines += Format("%4d,%4d\n", row, column);
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

}  // namespace kelvo
