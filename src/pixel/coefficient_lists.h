// The active tables: DecomList, OffsetList, GainList (state/cal_state.h), each of Vroi x Hroi entries, and lists on
// disk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace kelvo {

constexpr std::int32_t kOffsetKind = 1;
constexpr std::int32_t kGainKind = 2;
constexpr std::int32_t kDecomKind = 8;

// Installs a whole list, given as the bytes of its entries: 1; 0 where memory is refused, for another kind, or, after
// the box "Global Memory would not lock", where the list holds less than the table. DecomList is made anew where it is
// smaller than the frame; the other two keep the size that they were made with. A gain of exactly 0 is installed as
// 0.1, so that no frame divides by zero; the caller's list keeps its zero.
std::int32_t DownloadCoefficients(std::int32_t kind, std::span<const std::uint8_t> list);

// Writes one value into entries first to count - 1, making the table at first use; entries outside it are left out. 1;
// 0 for another kind or where memory is refused.
std::int32_t FillCoefficients(std::int32_t kind, std::int32_t first, std::int32_t count, double value);

// The same two by the names that the camera head's clients know.
inline std::int32_t LoadActiveList(std::int32_t type, std::span<const std::uint8_t> source)
{
    return DownloadCoefficients(type, source);
}
inline std::int32_t FillActiveList(std::int32_t type, std::int32_t first, std::int32_t last, double value)
{
    return FillCoefficients(type, first, last, value);
}

// How the reading of a list ended.
enum class ListRead {
    kComplete,
    kNoList,     // there is no memory to read into
    kNotOpened,  // the file can't be opened
    kNotRead,    // it is short, or isn't what it should be
};

// Reads count 32-bit words of a file, raw bytes, little-endian, to the start of list, no more than it holds. Nothing is
// told. After kNotRead list may hold part of the file.
ListRead ReadList(std::string_view path, std::span<std::uint8_t> list, std::size_t count);
// Tells what failed in the words of LoadList; nothing after kComplete.
void TellListRead(ListRead read, std::string_view path);

// count 32-bit words as raw bytes, little-endian. SaveList writes a whole file or none. 1, or 0 after a box:
// "Failed to open file: %s" (SaveList: under "Kelvo File Error!"), "Failed to save file: %s", "Failed to read file:
// %s", and for LoadList into no list "Failure to lock memory!". A list smaller than count is told and the count cut to
// it: "Allocated memory is smaller than ROI Pixels" and "lStatus=%ld,ROIPixels=%ld" (words there are, words wanted);
// LoadList: "... ROI PIxels" alone.
int SaveList(std::string_view path, std::span<const std::uint8_t> list, std::size_t count);
int LoadList(std::string_view path, std::span<std::uint8_t> list, std::size_t count);

}  // namespace kelvo
