#include "pixel/search_pattern.h"

#include "pixel/pixel_pair.h"
#include "platform/box.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "state/windows.h"

#include <string_view>
#include <utility>

namespace kelvo {

namespace {

constexpr std::size_t kLongestPattern = std::size_t{1} << 20;
constexpr std::string_view kMemoryTitle = "Memory Allocation Error";

// Saving into another directory makes that one current: a pattern that is named without a directory is then found
// beside the settings.
std::string PatternPath(const std::string& file)
{
    std::string directory;
    SplitPath(file, nullptr, &directory, nullptr, nullptr);
    const bool isPlain = directory.empty();
    return isPlain && !FileExists(file) ? DefaultDir + "/" + file : file;
}

class PatternFile {
  public:
    static std::optional<PatternFile> Open(const std::string& path)
    {
        std::optional<std::string> contents = ReadWholeFile(path, kLongestPattern);
        if (!contents) return std::nullopt;
        return PatternFile(std::move(*contents));
    }
    std::optional<PixelPair> NextStep()
    {
        std::string line;
        while (NextPairLine(lines_, line)) {
            if (const std::optional<PixelPair> step = ScanPixelPair(line)) return step;
        }
        return std::nullopt;
    }

  private:
    explicit PatternFile(std::string contents) : lines_(std::move(contents), kLongestPairLine) { lines_.Next(); }
    LineReader lines_;
};

std::size_t StepsOf(PatternFile file)
{
    std::size_t count = 0;
    while (file.NextStep()) ++count;
    return count;
}

std::nullopt_t Refuse(std::string_view text, std::string_view title)
{
    MessageBox(hWndMain, text, title);
    return std::nullopt;
}

}  // namespace

std::optional<SearchPattern> ReadSearchPattern(const std::string& file)
{
    const std::string path = PatternPath(file);
    std::optional<PatternFile> counted = PatternFile::Open(path);
    if (!counted) return Refuse("ReplaceBadDet(): Unable to open pixel replacement (.prs) file.", "File Error");
    const std::size_t count = StepsOf(std::move(*counted));
    SearchPattern pattern;
    if (count == 0) return pattern;
    if (!AllocateBlock(pattern.columns, count)) {
        return Refuse("ReplaceBadDet(): Unable to allocate global memory for search column.", kMemoryTitle);
    }
    if (!AllocateBlock(pattern.rows, count)) {
        return Refuse("ReplaceBadDet(): Unable to allocate global memory for search row.", kMemoryTitle);
    }
    std::optional<PatternFile> steps = PatternFile::Open(path);
    if (!steps || FaultIsSet("pattern file gone")) {
        return Refuse("Unable to open DetectorReplacementFile.", kMessageCaption);
    }
    std::size_t taken = 0;
    for (; taken < count; ++taken) {
        const std::optional<PixelPair> step = steps->NextStep();
        if (!step) break;
        pattern.columns[taken] = step->column;
        pattern.rows[taken] = step->row;
    }
    pattern.columns.resize(taken);
    pattern.rows.resize(taken);
    return pattern;
}

}  // namespace kelvo
