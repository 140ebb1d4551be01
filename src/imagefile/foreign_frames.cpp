#include "imagefile/foreign_frames.h"

#include "imagefile/fits_reader.h"
#include "imagefile/npy_reader.h"
#include "platform/memory.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <ctime>
#include <limits>
#include <utility>

namespace kelvo {

namespace {

constexpr std::uint16_t kSignBit = 0x8000;  // 32768: taken away or added, modulo 16 bits

struct KindOfName {
    std::string_view extension;
    ForeignKind kind;
};
constexpr KindOfName kNames[] = {{".tif", ForeignKind::kTiff},  {".tiff", ForeignKind::kTiff},
                                 {".fits", ForeignKind::kFits}, {".fit", ForeignKind::kFits},
                                 {".fts", ForeignKind::kFits},  {".npy", ForeignKind::kNpy}};

struct KindOfContents {
    std::string_view magic;
    ForeignKind kind;
};
constexpr KindOfContents kContents[] = {
    {kNpyMagic, ForeignKind::kNpy},        {kFitsMagic, ForeignKind::kFits},      {{"II\x2A\0", 4}, ForeignKind::kTiff},
    {{"MM\0\x2A", 4}, ForeignKind::kTiff}, {{"II\x2B\0", 4}, ForeignKind::kTiff}, {{"MM\0\x2B", 4}, ForeignKind::kTiff},
};

// HeaderFill1 and HeaderFill2.
bool BeginsAsImageFile(std::string_view front)
{
    constexpr std::size_t kFillPlace = 8;
    return front.size() >= kFillPlace + 4 && front.substr(kFillPlace, 4) == "\xFF\xFF\xFF\xFF";
}

std::optional<std::pair<std::variant<File, ForeignTiff>, ForeignLayout>> OpenSource(File file, ForeignKind kind,
                                                                                    std::string& why,
                                                                                    const ForeignFrames::GoesOn& goesOn)
{
    if (kind == ForeignKind::kTiff) {
        const auto countsOn = [&goesOn] { return !goesOn || goesOn(0, 1); };
        std::optional<ForeignTiff> tiff = ForeignTiff::Open(std::move(file), why, countsOn);
        if (!tiff) return std::nullopt;
        const ForeignLayout layout = tiff->Layout();
        return std::pair(std::variant<File, ForeignTiff>(std::move(*tiff)), layout);
    }
    const std::optional<ForeignLayout> layout =
        kind == ForeignKind::kFits ? ReadFitsHead(file, why) : ReadNpyHead(file, why);
    if (!layout) return std::nullopt;
    return std::pair(std::variant<File, ForeignTiff>(std::move(file)), *layout);
}

void SetTime(std::optional<std::time_t> time, ImageHeaderRecord& header)
{
    std::tm parts{};
    if (!time || !localtime_r(&*time, &parts)) return;
    header.Year = static_cast<std::int16_t>(parts.tm_year % 100);
    header.Month = static_cast<std::int16_t>(parts.tm_mon + 1);
    header.Day = static_cast<std::int16_t>(parts.tm_mday);
    header.Hour = static_cast<std::int16_t>(parts.tm_hour);
    header.Minute = static_cast<std::int16_t>(parts.tm_min);
    header.Second = static_cast<std::int16_t>(parts.tm_sec);
}

// The range of a converter that gives such counts: of 14 bits, as contrast follows best, or of all that a count can be.
std::int16_t DisplayHighFor(int highest)
{
    constexpr std::int16_t kFourteenBits = 16383;
    return highest <= kFourteenBits ? kFourteenBits : std::numeric_limits<std::int16_t>::max();
}

ImageHeaderRecord HeaderOf(const ForeignLayout& layout, int highest)
{
    constexpr std::uint16_t kFill = 0xFFFF;
    ImageHeaderRecord header;
    header.ByteSwap = kFill;
    header.HeaderFill1 = kFill;
    header.HeaderFill2 = kFill;
    header.ImageWidth = static_cast<std::int16_t>(layout.columns);
    header.ImageHeight = static_cast<std::int16_t>(layout.rows);
    header.SampleBytes = 2;
    header.DataType = 1;
    header.IntensityCold = kUncalibratedIntensity;
    header.TemperatureCold = kUncalibratedTemperature;
    header.IntensityHot = kUncalibratedIntensity;
    header.TemperatureHot = kUncalibratedTemperature;
    header.UnitScale = 1.0F;
    header.HeaderVersion = kFirstVersionWithFrameHeaders;
    header.FrameCount = static_cast<std::uint32_t>(layout.frames);
    header.BottomRow = static_cast<std::int16_t>(layout.rows - 1);
    header.RightColumn = static_cast<std::int16_t>(layout.columns - 1);
    header.FramesAveraged = 1;
    header.IntegrationMsec = static_cast<float>(layout.integrationMs);
    header.DisplayLow = 0;
    header.DisplayHigh = DisplayHighFor(highest);
    return header;
}

}  // namespace

std::optional<ForeignKind> ForeignKindOf(std::string_view path)
{
    std::string extension;
    SplitPath(path, nullptr, nullptr, nullptr, &extension);
    const auto* const named = std::ranges::find_if(
        kNames, [&extension](const KindOfName& row) { return EqualIgnoringCase(row.extension, extension); });
    if (named == std::end(kNames)) return std::nullopt;
    std::array<char, 12> block{};
    const std::optional<File> file = File::Open(path, FileMode::kRead);
    const std::size_t read = file ? file->ReadAt(0, std::as_writable_bytes(std::span(block))) : 0;
    const std::string_view front(block.data(), read);
    for (const KindOfContents& row : kContents) {
        if (front.starts_with(row.magic)) return row.kind;
    }
    if (BeginsAsImageFile(front)) return std::nullopt;
    return named->kind;
}

std::optional<ForeignFrames> ForeignFrames::Open(std::string_view path, ForeignKind kind, std::string& why,
                                                 const GoesOn& goesOn)
{
    std::optional<File> file = File::Open(path, FileMode::kRead);
    if (!file) {
        why = "can't be opened";
        return std::nullopt;
    }
    auto source = OpenSource(std::move(*file), kind, why, goesOn);
    if (!source) return std::nullopt;
    ForeignFrames frames(std::move(source->first), source->second);
    if (!AllocateBlock(frames.words_, frames.Pixels())) {
        why = "needs more memory than is left";
        return std::nullopt;
    }
    const std::optional<int> highest = frames.FindHighest(goesOn, why);
    if (!highest) return std::nullopt;
    frames.isLowered_ = *highest > std::numeric_limits<std::int16_t>::max();
    frames.header_ = HeaderOf(frames.layout_, frames.isLowered_ ? *highest - kSignBit : *highest);
    SetTime(FileModificationTime(path), frames.header_);
    return frames;
}

std::optional<int> ForeignFrames::FindHighest(const GoesOn& goesOn, std::string& why)
{
    const bool hasSigns = layout_.samples == ForeignSamples::kSigned;
    int highest = std::numeric_limits<std::int16_t>::min();
    for (std::int64_t frame = 0; frame < layout_.frames; ++frame) {
        if (goesOn && !goesOn(frame, layout_.frames)) {
            why = kNotLookedThrough;
            return std::nullopt;
        }
        if (!ReadWords(frame, why)) return std::nullopt;
        // With its sign bit turned round, a value with a sign has its place among those without.
        const std::uint16_t turned = hasSigns ? kSignBit : std::uint16_t{0};
        std::uint16_t most = 0;
        for (const std::uint16_t word : words_) most = std::max(most, static_cast<std::uint16_t>(word ^ turned));
        highest = std::max(highest, int{most} - int{turned});
    }
    return highest;
}

bool ForeignFrames::Lower()
{
    constexpr int kBelowAll = -1;
    if (isLowered_) return true;
    if (!CanBeLowered()) return false;
    isLowered_ = true;
    header_.DisplayHigh = DisplayHighFor(kBelowAll);
    return true;
}

bool ForeignFrames::ReadWords(std::int64_t frame, std::string& why)
{
    if (ForeignTiff* const tiff = std::get_if<ForeignTiff>(&source_)) return tiff->ReadFrame(frame, words_, why);
    const std::span<std::byte> bytes = std::as_writable_bytes(std::span(words_));
    const std::int64_t position = layout_.dataPosition + frame * ForeignFrameBytes(layout_);
    if (std::get<File>(source_).ReadAt(position, bytes) != bytes.size()) {
        why = "can't be read";
        return false;
    }
    if (layout_.isBigEndian) SwapDataBytes(bytes, words_.size());
    if (layout_.samples == ForeignSamples::kBiased) {
        for (std::uint16_t& word : words_) word ^= kSignBit;
    }
    return true;
}

bool ForeignFrames::ReadCounts(std::int64_t frame, std::span<std::int16_t> counts, std::string& why)
{
    if (frame < 0 || frame >= layout_.frames || counts.size() < Pixels()) {
        why = "has no such frame";
        return false;
    }
    if (!ReadWords(frame, why)) return false;
    const std::uint16_t change = isLowered_ ? kSignBit : std::uint16_t{0};
    const std::size_t columns = Columns();
    for (std::size_t row = 0; row < Rows(); ++row) {
        const std::size_t from = layout_.isBottomUp ? Rows() - 1 - row : row;
        const std::span<const std::uint16_t> words = std::span(words_).subspan(from * columns, columns);
        std::ranges::transform(words, counts.begin() + static_cast<std::ptrdiff_t>(row * columns),
                               [change](std::uint16_t word) {
                                   return std::bit_cast<std::int16_t>(static_cast<std::uint16_t>(word ^ change));
                               });
    }
    return true;
}

std::string ForeignFrames::Changes() const
{
    std::string changes;
    if (isLowered_) changes = "less 32768";
    if (layout_.isBottomUp) changes += (changes.empty() ? "" : ", ") + std::string("rows turned");
    return changes;
}

}  // namespace kelvo
