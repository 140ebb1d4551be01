#include "dibapi32/dibapi32.h"

#include "platform/box.h"
#include "platform/memory.h"
#include "platform/png.h"
#include "platform/pointer.h"
#include "platform/window.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string>

namespace kelvo {

namespace {

constexpr std::uint32_t kBlack = 0;
constexpr std::size_t kRoomForHeaderAndTable = 40 + 256 * 4;

// ---- making

int StoredDepth(int requestedBits)
{
    if (requestedBits < 2) return 1;
    if (requestedBits < 5) return 4;
    if (requestedBits < 9) return 8;
    if (requestedBits < 25) return 24;
    return 4;
}

Dib NewBlock(std::int64_t sizeBytes)
{
    auto dib = std::make_shared<DibBlock>();
    if (!AllocateBlock(dib->bytes, static_cast<std::size_t>(sizeBytes))) return nullptr;
    return dib;
}

// Whether rows of that length may be had at all: a product of three sides that stays far inside 64 bits.
bool RowsFit(std::int64_t rowBytes, std::int64_t height)
{
    constexpr std::int64_t kMostBytes = std::int64_t{1} << 31;
    return rowBytes >= 0 && height >= 0 && (rowBytes == 0 || height <= kMostBytes / rowBytes);
}

// The header and the size of a bitmap that is to be made.
struct NewDib {
    BitmapInfoHeader header;
    std::int64_t sizeBytes = 0;
};

std::optional<NewDib> FormOf(int width, int height, int bits)
{
    const std::int64_t rowBytes = DibRowBytes(bits, width);
    if (width < 0 || height < 0 || !RowsFit(rowBytes, height)) return std::nullopt;
    NewDib made;
    made.header.biSize = kInfoHeaderBytes;
    made.header.biWidth = width;
    made.header.biHeight = height;
    made.header.biPlanes = 1;
    made.header.biBitCount = static_cast<std::uint16_t>(StoredDepth(bits));
    const auto tableBytes = static_cast<std::int64_t>(ColorsOfDepth(made.header.biBitCount) * kInfoTableEntryBytes);
    made.sizeBytes = std::int64_t{kInfoHeaderBytes} + tableBytes + rowBytes * height;
    return made;
}

bool SameHeader(const BitmapInfoHeader& a, const BitmapInfoHeader& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;  // packed: every byte counts
}

// ---- the rows of a bitmap

// Plain rows that lie inside their block as a whole.
struct DibRows {
    int width = 0;
    int height = 0;
    int bits = 0;
    std::ptrdiff_t rowBytes = 0;
    bool topDown = false;
    std::span<const std::uint8_t> bytes;

    const std::uint8_t* FromTop(int row) const
    {
        const int stored = topDown ? row : height - 1 - row;
        return bytes.data() + stored * rowBytes;
    }
};

std::optional<DibRows> PlainRows(const Dib& dib)
{
    if (!dib) return std::nullopt;
    const DibBlock& block = *dib;
    const std::uint32_t compression = HasCoreHeader(block) ? 0 : DibInfo(block).biCompression;
    const int bits = DibBitCount(block);
    const bool plain = compression == 0 && (bits == 1 || bits == 4 || bits == 8 || bits == 24 || bits == 32);
    const std::int64_t height = DibHeight(block);
    if (!plain || DibWidth(block) <= 0 || height == 0 || height == INT32_MIN) return std::nullopt;

    DibRows rows;
    rows.width = DibWidth(block);
    rows.height = static_cast<int>(std::abs(height));
    rows.bits = bits;
    rows.rowBytes = DibRowBytes(bits, rows.width);
    rows.topDown = height < 0;
    rows.bytes = DibBits(block);
    if (!RowsFit(rows.rowBytes, rows.height)) return std::nullopt;
    if (rows.rowBytes * rows.height > static_cast<std::int64_t>(rows.bytes.size())) return std::nullopt;
    return rows;
}

using ColorTable = std::array<std::uint32_t, 256>;  // 0x00RRGGBB

std::uint32_t Rgb(std::uint32_t red, std::uint32_t green, std::uint32_t blue)
{
    return red << 16 | green << 8 | blue;
}

// Indexes that the table doesn't name show black.
ColorTable TableColors(const Dib& dib)
{
    ColorTable colors;
    colors.fill(kBlack);
    const DibBlock& block = *dib;
    const std::span<const std::uint8_t> table = DibPalette(block);
    const std::size_t entryBytes = HasCoreHeader(block) ? kCoreTableEntryBytes : kInfoTableEntryBytes;
    const std::size_t count = std::min(colors.size(), table.size() / entryBytes);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t* entry = table.data() + i * entryBytes;
        colors[i] = Rgb(entry[2], entry[1], entry[0]);
    }
    return colors;
}

std::uint32_t ColorAt(const DibRows& rows, const std::uint8_t* row, int column, const ColorTable& colors)
{
    switch (rows.bits) {
        case 1:
            return colors[row[column / 8] >> (7 - column % 8) & 1];
        case 4:
            return colors[row[column / 2] >> (column % 2 == 0 ? 4 : 0) & 15];
        case 8:
            return colors[row[column]];
        default: {
            const std::uint8_t* pixel = row + std::ptrdiff_t{column} * (rows.bits / 8);
            return Rgb(pixel[2], pixel[1], pixel[0]);
        }
    }
}

bool AllocatePicture(DeviceBitmap& picture, int width, int height)
{
    picture.width = width;
    picture.height = height;
    return AllocateBlock(picture.pixels, static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
}

std::optional<DeviceBitmap> PicturePart(const Dib& dib, const DibRows& rows, const Rect& part)
{
    DeviceBitmap picture;
    if (!AllocatePicture(picture, part.Width(), part.Height())) return std::nullopt;
    const ColorTable colors = TableColors(dib);
    std::size_t at = 0;
    for (int r = part.top; r < part.bottom; ++r) {
        const std::uint8_t* row = rows.FromTop(r);
        for (int c = part.left; c < part.right; ++c) picture.pixels[at++] = ColorAt(rows, row, c, colors);
    }
    return picture;
}

bool Inside(const Rect& part, int width, int height)
{
    return !part.Empty() && part.left >= 0 && part.top >= 0 && part.right <= width && part.bottom <= height;
}

std::optional<DeviceBitmap> PicturePart(const DeviceBitmap& whole, const Rect& part)
{
    DeviceBitmap picture;
    if (!Inside(part, whole.width, whole.height)) return std::nullopt;
    if (!AllocatePicture(picture, part.Width(), part.Height())) return std::nullopt;
    for (int r = 0; r < picture.height; ++r) {
        const auto row = whole.pixels.begin() + std::ptrdiff_t{part.top + r} * whole.width + part.left;
        std::copy_n(row, picture.width, picture.pixels.begin() + std::ptrdiff_t{r} * picture.width);
    }
    return picture;
}

bool StretchIndexed(HWND window, const Rect& destination, const Dib& dib, const DibRows& rows, const Rect& part)
{
    const ColorTable colors = TableColors(dib);
    const IndexedPixels pixels = {.firstRow = rows.FromTop(part.top) + part.left,
                                  .rowStride = rows.topDown ? rows.rowBytes : -rows.rowBytes,
                                  .width = part.Width(),
                                  .height = part.Height(),
                                  .colors = colors.data()};
    return StretchPixels(window, destination, pixels);
}

bool StretchColors(HWND window, const Rect& destination, const Dib& dib, const DibRows& rows, const Rect& part)
{
    const std::optional<DeviceBitmap> picture = PicturePart(dib, rows, part);
    return picture && StretchPixels(window, destination, *picture);
}

// ---- capturing

Rect Intersection(const Rect& a, const Rect& b)
{
    return {.left = std::max(a.left, b.left),
            .top = std::max(a.top, b.top),
            .right = std::min(a.right, b.right),
            .bottom = std::min(a.bottom, b.bottom)};
}

Rect OnScreen(HWND window, int area)
{
    if (area == kCaptureWindow) return GetWindowRect(window);
    const Rect client = GetClientRect(window);
    const Point topLeft = ClientToScreen(window, {.x = client.left, .y = client.top});
    const Point bottomRight = ClientToScreen(window, {.x = client.right, .y = client.bottom});
    return {.left = topLeft.x, .top = topLeft.y, .right = bottomRight.x, .bottom = bottomRight.y};
}

// Logical pixels of a window, as pixels of its picture.
Rect InPicture(const Rect& logical, const Rect& window, const DeviceBitmap& picture)
{
    const auto across = [&](int x) {
        return static_cast<int>(std::int64_t{x - window.left} * picture.width / window.Width());
    };
    const auto down = [&](int y) {
        return static_cast<int>(std::int64_t{y - window.top} * picture.height / window.Height());
    };
    return {.left = across(logical.left),
            .top = down(logical.top),
            .right = across(logical.right),
            .bottom = down(logical.bottom)};
}

// ---- files

template <typename Record>
bool ReadRecord(File& file, Record& record)
{
    return file.Read(std::as_writable_bytes(std::span(&record, 1))) == sizeof record;
}

bool ReadBytes(File& file, std::span<std::uint8_t> bytes)
{
    return file.Read(std::as_writable_bytes(bytes)) == bytes.size();
}

// Where the parts of a bitmap file lie, in 64 bits. Nothing is read before Fits holds.
struct FileLayout {
    std::int64_t tableStart = 0;
    std::int64_t tableBytes = 0;        // of the whole table
    std::int64_t tableBytesInFile = 0;  // fewer where the rows begin within it
    std::int64_t bitsStart = 0;
    std::int64_t bitsBytes = 0;

    bool Fits(std::int64_t fileBytes) const
    {
        return tableBytesInFile >= 0 && bitsBytes >= 0 && tableStart + tableBytesInFile <= fileBytes &&
               bitsStart + bitsBytes <= fileBytes;
    }
};

std::uint32_t TableColorsOf(const BitmapInfoHeader& header)
{
    if (header.biClrUsed != 0 || header.biBitCount == 24) return header.biClrUsed;
    // A shift counts modulo 32, as the processor does it: 32 bits give one colour.
    return 1U << (header.biBitCount & 31U);
}

// The mask clears bits 3 and 4 only; the division drops the three below. What comes out is the row padded to 32 bits.
std::int64_t BitsBytesOf(const BitmapInfoHeader& header)
{
    constexpr std::int64_t kRowMask = ~std::int64_t{0x18};
    if (header.biSizeImage != 0) return header.biSizeImage;
    if (header.biWidth < 0) return -1;
    const std::int64_t rowBytes = ((std::int64_t{header.biBitCount} * header.biWidth + 31) & kRowMask) / 8;
    const std::int64_t height = std::abs(std::int64_t{header.biHeight});
    return RowsFit(rowBytes, height) ? rowBytes * height : -1;
}

// A table that is cut by the rows: its whole entries. One that is larger than any byte can use isn't made up for.
std::int64_t TableBytesInFile(const FileLayout& layout)
{
    constexpr std::int64_t kMostColorsMadeUp = 256;
    constexpr auto kEntryBytes = std::int64_t{kInfoTableEntryBytes};
    const std::int64_t room = layout.bitsStart - layout.tableStart;
    if (room < 0 || room >= layout.tableBytes || layout.tableBytes > kMostColorsMadeUp * kEntryBytes) {
        return layout.tableBytes;
    }
    return room / kEntryBytes * kEntryBytes;
}

// The rows start where the file header says, or behind the table where it says nothing.
FileLayout LayoutOf(const BitmapFileHeader& fileHeader, const BitmapInfoHeader& header)
{
    FileLayout layout;
    layout.tableStart = std::int64_t{sizeof(BitmapFileHeader)} + header.biSize;
    layout.tableBytes = std::int64_t{TableColorsOf(header)} * std::int64_t{kInfoTableEntryBytes};
    layout.bitsStart = fileHeader.bfOffBits != 0 ? fileHeader.bfOffBits : layout.tableStart + layout.tableBytes;
    layout.bitsBytes = BitsBytesOf(header);
    layout.tableBytesInFile = TableBytesInFile(layout);
    return layout;
}

Dib ReadTableAndRows(File& file, const BitmapInfoHeader& header, const FileLayout& layout, DibBlock& block)
{
    if (!AllocateBlock(block.bytes,
                       kInfoHeaderBytes + static_cast<std::size_t>(layout.tableBytes + layout.bitsBytes))) {
        return nullptr;
    }
    SetDibInfo(block, header);
    const std::span<std::uint8_t> behindHeader = std::span(block.bytes).subspan(kInfoHeaderBytes);
    const auto tableBytes = static_cast<std::size_t>(layout.tableBytes);
    const auto inFile = static_cast<std::size_t>(layout.tableBytesInFile);
    if (!file.Seek(layout.tableStart) || !ReadBytes(file, behindHeader.first(inFile))) return nullptr;
    if (!file.Seek(layout.bitsStart) || !ReadBytes(file, behindHeader.subspan(tableBytes))) return nullptr;
    return std::make_shared<DibBlock>(std::move(block));
}

constexpr std::array<std::string_view, 22> kErrorTexts = {
    "Not a Windows DIB file!",
    "Couldn't allocate memory!",
    "Error reading file!",
    "Error locking memory!",
    "Error opening file!",
    "Error creating palette!",
    "Error getting a DC!",
    "Error creating Device Dependent Bitmap",
    "StretchBlt() failed!",
    "StretchDIBits() failed!",
    "SetDIBitsToDevice() failed!",
    "Printer: StartDoc failed!",
    "Printing: GetModuleHandle() couldn't find GDI!",
    "Printer: SetAbortProc failed!",
    "Printer: StartPage failed!",
    "Printer: NEWFRAME failed!",
    "Printer: EndPage failed!",
    "Printer: EndDoc failed!",
    "SetDIBits() failed!",
    "File Not Found!",
    "Invalid Handle",
    "General Error on call to DIB function",
};

}  // namespace

Dib CreateDIB(int width, int height, int bits)
{
    const std::optional<NewDib> made = FormOf(width, height, bits);
    if (!made) return nullptr;
    Dib dib = NewBlock(made->sizeBytes);
    if (dib) SetDibInfo(*dib, made->header);
    return dib;
}

bool ReadyDIB(Dib& dib, int width, int height, int bits)
{
    const std::optional<NewDib> wanted = FormOf(width, height, bits);
    if (!wanted) return false;
    const bool stands = dib && dib.use_count() == 1 && std::ssize(dib->bytes) == wanted->sizeBytes &&
                        SameHeader(DibInfo(*dib), wanted->header);
    if (stands) return true;
    Dib made = CreateDIB(width, height, bits);
    if (!made) return false;
    dib = std::move(made);
    return true;
}

int FreeDib(Dib& dib)
{
    dib.reset();
    return 0;
}

std::optional<DeviceBitmap> BitmapFromDib(const Dib& dib, const Palette* /*palette*/)
{
    const std::optional<DibRows> rows = PlainRows(dib);
    if (!rows) return std::nullopt;
    return PicturePart(dib, *rows, {.left = 0, .top = 0, .right = rows->width, .bottom = rows->height});
}

Dib DibFromBitmap(const DeviceBitmap& bitmap, const Palette* /*palette*/)
{
    constexpr int kPictureDepth = 24;
    if (bitmap.width <= 0 || bitmap.height <= 0) return nullptr;
    Dib dib = CreateDIB(bitmap.width, bitmap.height, kPictureDepth);
    if (!dib) return nullptr;
    BitmapInfoHeader header = DibInfo(*dib);
    const std::span<std::uint8_t> bits = DibBits(*dib);
    header.biSizeImage = static_cast<std::uint32_t>(bits.size());
    SetDibInfo(*dib, header);

    const std::int64_t rowBytes = DibRowBytes(kPictureDepth, bitmap.width);
    const std::uint32_t* color = bitmap.pixels.data();
    for (int r = bitmap.height - 1; r >= 0; --r) {
        std::uint8_t* pixel = bits.data() + r * rowBytes;
        for (int c = 0; c < bitmap.width; ++c, pixel += 3, ++color) {
            pixel[0] = static_cast<std::uint8_t>(*color);
            pixel[1] = static_cast<std::uint8_t>(*color >> 8);
            pixel[2] = static_cast<std::uint8_t>(*color >> 16);
        }
    }
    return dib;
}

int PaintDib(HWND window, const Rect& destination, const Dib& dib, const Rect& source, const Palette* /*palette*/)
{
    const std::optional<DibRows> rows = PlainRows(dib);
    if (!rows || !Inside(source, rows->width, rows->height)) return 0;
    const bool painted = rows->bits == 8 ? StretchIndexed(window, destination, dib, *rows, source)
                                         : StretchColors(window, destination, dib, *rows, source);
    return painted ? source.Height() : 0;
}

int PaintDeviceBitmap(HWND window, const Rect& destination, const DeviceBitmap& bitmap, const Rect& source,
                      const Palette* /*palette*/)
{
    const std::optional<DeviceBitmap> part = PicturePart(bitmap, source);
    return part && StretchPixels(window, destination, *part) ? source.Height() : 0;
}

std::optional<DeviceBitmap> CaptureWindowBitmap(HWND window, int area)
{
    if (!window || (area != kCaptureWindow && area != kCaptureClient)) return std::nullopt;
    const Rect whole = OnScreen(window, area);
    const Rect seen = Intersection(whole, ScreenRect());
    if (seen.Empty()) return std::nullopt;
    DeviceBitmap picture;
    if (!CaptureWindowPixels(window, area == kCaptureClient, picture)) return std::nullopt;
    if (seen == whole) return picture;
    return PicturePart(picture, InPicture(seen, whole, picture));
}

std::optional<DeviceBitmap> CaptureRectBitmap(const Rect& rectangle)
{
    const Rect seen = Intersection(rectangle, ScreenRect());
    DeviceBitmap picture;
    if (seen.Empty() || !CaptureScreenPixels(seen, picture)) return std::nullopt;
    return picture;
}

Dib CaptureWindowDib(HWND window, int area)
{
    const std::optional<DeviceBitmap> picture = CaptureWindowBitmap(window, area);
    return picture ? DibFromBitmap(*picture) : nullptr;
}

Dib CaptureRectDib(const Rect& rectangle)
{
    const std::optional<DeviceBitmap> picture = CaptureRectBitmap(rectangle);
    return picture ? DibFromBitmap(*picture) : nullptr;
}

Dib LoadDib(std::string_view path)
{
    const Hourglass hourglass;
    std::optional<File> file = File::Open(path, FileMode::kRead);
    if (!file) {
        DibError(kDibErrorNotFound);
        return nullptr;
    }
    return ReadDibFile(*file);
}

Dib ReadDibFile(File& file)
{
    DibBlock block;
    if (!AllocateBlock(block.bytes, kRoomForHeaderAndTable)) return nullptr;
    BitmapFileHeader fileHeader;
    BitmapInfoHeader header;
    if (!ReadRecord(file, fileHeader) || fileHeader.bfType != kBitmapFileType) return nullptr;
    if (!ReadRecord(file, header) || header.biSize < kInfoHeaderBytes) return nullptr;

    const FileLayout layout = LayoutOf(fileHeader, header);
    if (!layout.Fits(file.Length())) return nullptr;
    header.biSize = kInfoHeaderBytes;
    header.biClrUsed = TableColorsOf(header);
    header.biSizeImage = static_cast<std::uint32_t>(layout.bitsBytes);
    return ReadTableAndRows(file, header, layout, block);
}

int SaveDib(const Dib& dib, std::string_view path)
{
    if (!dib) return kDibErrorHandle;
    DibBlock& block = *dib;
    BitmapInfoHeader header = DibInfo(block);
    if (header.biSize != kInfoHeaderBytes) return ReplaceFile(path, "") ? 0 : kDibErrorOpen;

    const bool packed = header.biCompression == 1 || header.biCompression == 2;
    const std::int64_t height = std::abs(std::int64_t{header.biHeight});
    const std::int64_t rowBytes = DibRowBytes(header.biBitCount, header.biWidth);
    if (!packed && !RowsFit(rowBytes, height)) return kDibErrorGeneral;
    const std::int64_t pixelBytes = packed ? std::int64_t{header.biSizeImage} : rowBytes * height;
    const std::size_t written = kInfoHeaderBytes + DibPaletteBytes(block) + static_cast<std::size_t>(pixelBytes);
    if (written > block.bytes.size()) return kDibErrorGeneral;
    header.biSizeImage = static_cast<std::uint32_t>(pixelBytes);
    SetDibInfo(block, header);

    BitmapFileHeader fileHeader;
    fileHeader.bfType = kBitmapFileType;
    fileHeader.bfSize = static_cast<std::uint32_t>(sizeof fileHeader + written);
    fileHeader.bfOffBits = static_cast<std::uint32_t>(sizeof fileHeader + kInfoHeaderBytes + DibPaletteBytes(block));

    std::vector<std::uint8_t> contents;
    if (!AllocateBlock(contents, sizeof fileHeader + written)) return kDibErrorLock;
    std::memcpy(contents.data(), &fileHeader, sizeof fileHeader);
    std::memcpy(contents.data() + sizeof fileHeader, block.bytes.data(), written);
    const std::string_view text(reinterpret_cast<const char*>(contents.data()), contents.size());
    return ReplaceFile(path, text) ? 0 : kDibErrorOpen;
}

namespace {

constexpr int kIndexBits = 8;
constexpr int kColorBits = 24;

// Rows as they are read from the top.
std::ptrdiff_t RowStepOf(const BitmapInfoHeader& header)
{
    const auto bytes = static_cast<std::ptrdiff_t>(DibRowBytes(header.biBitCount, header.biWidth));
    return header.biHeight > 0 ? -bytes : bytes;
}

std::optional<std::string> PngOfColors(const DibBlock& block, const BitmapInfoHeader& header, int height)
{
    return PngOf(ColorPicture{
        .width = header.biWidth, .height = height, .rowBytes = RowStepOf(header), .pixels = DibBits(block)});
}

std::optional<std::string> PngOfIndices(const DibBlock& block, const BitmapInfoHeader& header, int height)
{
    IndexedPicture picture{.width = header.biWidth,
                           .height = height,
                           .rowBytes = RowStepOf(header),
                           .pixels = DibBits(block),
                           .colors = {}};
    const std::span<const std::uint8_t> table = DibPalette(block);
    for (std::size_t at = 0; at + kInfoTableEntryBytes <= table.size(); at += kInfoTableEntryBytes) {
        picture.colors.push_back({table[at + 2], table[at + 1], table[at]});
    }
    return PngOf(picture);
}

}  // namespace

int SavePng(const Dib& dib, std::string_view path)
{
    if (!dib) return kDibErrorHandle;
    const BitmapInfoHeader header = DibInfo(*dib);
    const bool isOfColors = header.biBitCount == kColorBits;
    const bool isPlain = header.biSize == kInfoHeaderBytes && header.biCompression == 0;
    if (!isPlain || (!isOfColors && header.biBitCount != kIndexBits)) return kDibErrorGeneral;
    const auto height = static_cast<int>(std::min(std::abs(std::int64_t{header.biHeight}), std::int64_t{INT32_MAX}));
    const std::optional<std::string> contents =
        isOfColors ? PngOfColors(*dib, header, height) : PngOfIndices(*dib, header, height);
    if (!contents) return kDibErrorLock;
    if (contents->empty()) return kDibErrorGeneral;
    return ReplaceFile(path, *contents) ? 0 : kDibErrorOpen;
}

std::string_view DibErrorText(int number)
{
    const bool known = number >= 0 && number < static_cast<int>(kErrorTexts.size());
    return known ? kErrorTexts[static_cast<std::size_t>(number)] : "Undefined Error!";
}

void DibError(int number)
{
    MessageBox(nullptr, DibErrorText(number), "Error", BoxIcon::kStop);
}

}  // namespace kelvo
