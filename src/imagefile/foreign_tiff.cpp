#include "imagefile/foreign_tiff.h"

#include "platform/memory.h"
#include "platform/text.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr std::uint16_t kSampleBits = 16;
constexpr std::int64_t kSampleBytes = 2;
constexpr tmsize_t kMostOfOneBlock = 0x7FFFFFFF;
// No compression that holds images makes them smaller than this; a file that claims more is made to fill the memory.
constexpr std::int64_t kMostExpansion = 4096;

// ---- the file as libtiff reads it

struct Source {
    File file;
    std::int64_t position = 0;
};

Source& SourceOf(thandle_t handle)
{
    return *static_cast<Source*>(handle);
}

tmsize_t ReadSource(thandle_t handle, void* destination, tmsize_t bytes)
{
    if (bytes <= 0) return 0;
    Source& source = SourceOf(handle);
    const std::span block(static_cast<std::byte*>(destination), static_cast<std::size_t>(bytes));
    const auto read = static_cast<std::int64_t>(source.file.ReadAt(source.position, block));
    source.position += read;
    return read;
}

tmsize_t WriteSource(thandle_t /*handle*/, void* /*bytes*/, tmsize_t /*count*/)
{
    return -1;
}

toff_t SeekSource(thandle_t handle, toff_t offset, int whence)
{
    constexpr toff_t kFailed = ~toff_t{0};
    Source& source = SourceOf(handle);
    std::int64_t from = 0;
    if (whence == SEEK_CUR) from = source.position;
    if (whence == SEEK_END) from = source.file.Length();
    std::int64_t place = 0;
    if (__builtin_add_overflow(from, static_cast<std::int64_t>(offset), &place) || place < 0) return kFailed;
    source.position = place;
    return static_cast<toff_t>(place);
}

int CloseSource(thandle_t /*handle*/)
{
    return 0;
}

toff_t LengthOfSource(thandle_t handle)
{
    return static_cast<toff_t>(SourceOf(handle).file.Length());
}

// The reasons are found by what fails; libtiff's own words would go to the error stream.
int KeepSilent(TIFF* /*tiff*/, void* /*data*/, const char* /*module*/, const char* /*format*/, va_list /*values*/)
{
    return 1;
}

struct CloseTiff {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffHandle = std::unique_ptr<TIFF, CloseTiff>;

TiffHandle OpenTiff(Source& source)
{
    TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
    if (!options) return nullptr;
    TIFFOpenOptionsSetMaxSingleMemAlloc(options, kMostOfOneBlock);
    TIFFOpenOptionsSetErrorHandlerExtR(options, KeepSilent, nullptr);
    TIFFOpenOptionsSetWarningHandlerExtR(options, KeepSilent, nullptr);
    TiffHandle tiff(TIFFClientOpenExt("", "rm", &source, ReadSource, WriteSource, SeekSource, CloseSource,
                                      LengthOfSource, nullptr, nullptr, options));
    TIFFOpenOptionsFree(options);
    return tiff;
}

bool LooksLikeTiff(const File& file)
{
    std::array<char, 4> front{};
    if (file.ReadAt(0, std::as_writable_bytes(std::span(front))) < front.size()) return false;
    const std::string_view magic(front.data(), front.size());
    constexpr std::string_view kMagics[] = {{"II\x2A\0", 4}, {"MM\0\x2A", 4}, {"II\x2B\0", 4}, {"MM\0\x2B", 4}};
    return std::ranges::find(kMagics, magic) != std::end(kMagics);
}

// ---- the page that libtiff stands at

template <typename T>
T TagOr(TIFF* tiff, std::uint32_t tag, T otherwise)
{
    T value{};
    return TIFFGetField(tiff, tag, &value) == 1 ? value : otherwise;
}

std::string WhyNotCounts(TIFF* tiff)
{
    const auto samples = TagOr<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    const auto bits = TagOr<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    const auto format = TagOr<std::uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    const auto meaning = TagOr<std::uint16_t>(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    const auto orientation = TagOr<std::uint16_t>(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    const auto compression = TagOr<std::uint16_t>(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    if (samples != 1) return Format("holds %d planes", int{samples});
    if (format == SAMPLEFORMAT_IEEEFP) return "holds floats";
    if (format == SAMPLEFORMAT_COMPLEXINT || format == SAMPLEFORMAT_COMPLEXIEEEFP) return "holds complex numbers";
    if (bits != kSampleBits) return Format("holds samples of %d bit%s", int{bits}, bits == 1 ? "" : "s");
    if (meaning != PHOTOMETRIC_MINISBLACK && meaning != PHOTOMETRIC_MINISWHITE) return "holds colors";
    if (orientation != ORIENTATION_TOPLEFT && orientation != ORIENTATION_BOTLEFT) return "is stored mirrored or turned";
    if (!TIFFIsCODECConfigured(compression)) return "is compressed in a way that isn't known here";
    return {};
}

// What Kelvo saves for other programs are counts with their sign, and names no format.
bool IsKelvosOwn(TIFF* tiff)
{
    const char* make = nullptr;
    return TIFFGetField(tiff, TIFFTAG_MAKE, &make) == 1 && make && std::string_view(make) == "Kelvo";
}

bool HasSigns(TIFF* tiff)
{
    std::uint16_t format = 0;
    if (TIFFGetField(tiff, TIFFTAG_SAMPLEFORMAT, &format) != 1) return IsKelvosOwn(tiff);
    return format == SAMPLEFORMAT_INT;
}

ForeignLayout LayoutOfPage(TIFF* tiff)
{
    const auto orientation = TagOr<std::uint16_t>(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    return {.frames = 1,
            .rows = TagOr<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH, 0),
            .columns = TagOr<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH, 0),
            .samples = HasSigns(tiff) ? ForeignSamples::kSigned : ForeignSamples::kUnsigned,
            .isBottomUp = orientation == ORIENTATION_BOTLEFT};
}

bool AreAlike(const ForeignLayout& a, const ForeignLayout& b)
{
    return a.rows == b.rows && a.columns == b.columns && a.samples == b.samples && a.isBottomUp == b.isBottomUp;
}

// Empty, or why the page's samples can't all be there: each strip or tile lies in the file, and has its place there.
std::string WhyNotInTheFile(TIFF* tiff, std::uint64_t fileBytes)
{
    const std::uint32_t blocks = TIFFIsTiled(tiff) ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
    if (blocks == 0 || blocks > fileBytes) return "is damaged";
    for (std::uint32_t block = 0; block < blocks; ++block) {
        const std::uint64_t place = TIFFGetStrileOffset(tiff, block);
        if (place > fileBytes || TIFFGetStrileByteCount(tiff, block) > fileBytes - place) return "is cut short";
    }
    return {};
}

constexpr const char* kUnreadable = "can't be read";
constexpr const char* kNoMemory = "needs more memory than is left";

bool ReadStrips(TIFF* tiff, const ForeignLayout& layout, std::span<std::uint16_t> words)
{
    const std::int64_t inStrip =
        std::min(layout.rows, std::int64_t{TagOr<std::uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP, 0xFFFFFFFF)});
    if (inStrip <= 0) return false;
    std::uint32_t strip = 0;
    for (std::int64_t row = 0; row < layout.rows; row += inStrip, ++strip) {
        const std::int64_t rows = std::min(inStrip, layout.rows - row);
        const std::int64_t bytes = rows * layout.columns * kSampleBytes;
        std::uint16_t* const place = words.data() + row * layout.columns;
        if (strip >= TIFFNumberOfStrips(tiff) || TIFFReadEncodedStrip(tiff, strip, place, bytes) != bytes) return false;
    }
    return true;
}

struct TileSize {
    std::int64_t columns = 0;
    std::int64_t rows = 0;
    std::int64_t Bytes() const { return columns * rows * kSampleBytes; }
};

// A tile's part of the picture; what lies beyond the right and lower edges is filling.
void CopyTile(std::span<const std::uint16_t> tile, const TileSize& size, std::int64_t column, std::int64_t row,
              const ForeignLayout& layout, std::span<std::uint16_t> words)
{
    const std::int64_t columns = std::min(size.columns, layout.columns - column);
    const std::int64_t rows = std::min(size.rows, layout.rows - row);
    for (std::int64_t y = 0; y < rows; ++y) {
        const std::uint16_t* const from = tile.data() + y * size.columns;
        std::copy_n(from, columns, words.data() + (row + y) * layout.columns + column);
    }
}

bool ReadTiles(TIFF* tiff, const ForeignLayout& layout, std::span<std::uint16_t> words, std::string& why)
{
    const TileSize size{TagOr<std::uint32_t>(tiff, TIFFTAG_TILEWIDTH, 0),
                        TagOr<std::uint32_t>(tiff, TIFFTAG_TILELENGTH, 0)};
    constexpr std::int64_t kMostTileSide = 65536;
    if (size.columns <= 0 || size.rows <= 0 || size.columns > kMostTileSide || size.rows > kMostTileSide) return false;
    if (TIFFTileSize(tiff) != size.Bytes()) return false;
    std::vector<std::uint16_t> tile;
    if (!AllocateBlock(tile, static_cast<std::size_t>(size.columns * size.rows))) {
        why = kNoMemory;
        return false;
    }
    std::uint32_t number = 0;
    for (std::int64_t row = 0; row < layout.rows; row += size.rows) {
        for (std::int64_t column = 0; column < layout.columns; column += size.columns, ++number) {
            const bool isThere = number < TIFFNumberOfTiles(tiff);
            if (!isThere || TIFFReadEncodedTile(tiff, number, tile.data(), size.Bytes()) != size.Bytes()) return false;
            CopyTile(tile, size, column, row, layout, words);
        }
    }
    return true;
}

}  // namespace

// ---- all pages

// Stands still in memory: libtiff keeps the address of its source.
class ForeignTiff::Pages {
  public:
    explicit Pages(File file) : source_{std::move(file)} {}

    // Empty, or the reason.
    std::string Open(const std::function<bool()>& goesOn);
    const ForeignLayout& Layout() const { return layout_; }
    bool ReadFrame(std::int64_t frame, std::span<std::uint16_t> words, std::string& why);

  private:
    std::string TakePage();
    std::string WhyTooMuch() const;
    bool GoTo(std::size_t page);

    Source source_;
    TiffHandle tiff_;
    ForeignLayout layout_;
    std::vector<std::uint64_t> places_;  // of each page's directory
    std::size_t at_ = 0;                 // the page that libtiff stands at
};

std::string ForeignTiff::Pages::Open(const std::function<bool()>& goesOn)
{
    if (!LooksLikeTiff(source_.file)) return "isn't a TIFF file";
    tiff_ = OpenTiff(source_);
    if (!tiff_ || TIFFSetDirectory(tiff_.get(), 0) != 1) return "is damaged";
    std::string why = TakePage();
    while (why.empty() && TIFFLastDirectory(tiff_.get()) == 0) {
        if (goesOn && !goesOn()) return kNotLookedThrough;
        // After a failure libtiff stands at a page that is half there.
        why = TIFFReadDirectory(tiff_.get()) == 1 ? TakePage() : "is damaged";
    }
    if (!why.empty()) return why;
    at_ = places_.size() - 1;
    layout_.frames = static_cast<std::int64_t>(places_.size());
    return WhyTooMuch();
}

std::string ForeignTiff::Pages::TakePage()
{
    std::string why = WhyNotCounts(tiff_.get());
    const ForeignLayout page = LayoutOfPage(tiff_.get());
    if (why.empty()) why = WhyNotAnImage(page);
    if (why.empty()) why = WhyNotInTheFile(tiff_.get(), static_cast<std::uint64_t>(source_.file.Length()));
    if (why.empty() && places_.empty()) layout_ = page;
    if (why.empty() && !AreAlike(page, layout_)) why = "holds pages of different kinds";
    places_.push_back(TIFFCurrentDirOffset(tiff_.get()));
    return why;
}

std::string ForeignTiff::Pages::WhyTooMuch() const
{
    std::string why = WhyNotAnImage(layout_);
    if (!why.empty()) return why;
    // A file has fewer than 2^55 bytes.
    const bool isTooMuch = layout_.frames * ForeignFrameBytes(layout_) > source_.file.Length() * kMostExpansion;
    return isTooMuch ? "claims more pixels than its bytes can hold" : "";
}

bool ForeignTiff::Pages::GoTo(std::size_t page)
{
    if (page == at_) return true;
    at_ = places_.size();  // nowhere, should it fail
    if (TIFFSetSubDirectory(tiff_.get(), places_[page]) != 1) return false;
    // The file may have been changed since it was opened.
    const bool isTheSame = WhyNotCounts(tiff_.get()).empty() && AreAlike(LayoutOfPage(tiff_.get()), layout_);
    if (isTheSame) at_ = page;
    return isTheSame;
}

bool ForeignTiff::Pages::ReadFrame(std::int64_t frame, std::span<std::uint16_t> words, std::string& why)
{
    why = kUnreadable;
    const bool hasPlace = std::cmp_greater_equal(words.size(), layout_.rows * layout_.columns);
    if (frame < 0 || frame >= layout_.frames || !hasPlace || !GoTo(static_cast<std::size_t>(frame))) return false;
    TIFF* const tiff = tiff_.get();
    return TIFFIsTiled(tiff) ? ReadTiles(tiff, layout_, words, why) : ReadStrips(tiff, layout_, words);
}

ForeignTiff::ForeignTiff(std::unique_ptr<Pages> pages) : pages_(std::move(pages)) {}
ForeignTiff::ForeignTiff(ForeignTiff&&) noexcept = default;
ForeignTiff& ForeignTiff::operator=(ForeignTiff&&) noexcept = default;
ForeignTiff::~ForeignTiff() = default;

std::optional<ForeignTiff> ForeignTiff::Open(File file, std::string& why, const std::function<bool()>& goesOn)
{
    auto pages = std::make_unique<Pages>(std::move(file));
    why = pages->Open(goesOn);
    if (!why.empty()) return std::nullopt;
    return ForeignTiff(std::move(pages));
}

const ForeignLayout& ForeignTiff::Layout() const
{
    return pages_->Layout();
}

bool ForeignTiff::ReadFrame(std::int64_t frame, std::span<std::uint16_t> words, std::string& why)
{
    return pages_->ReadFrame(frame, words, why);
}

}  // namespace kelvo
