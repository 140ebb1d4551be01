// The colour map: which colour each of the 256 gray values takes on the screen.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace kelvo {

constexpr std::size_t kColorMapEntries = 256;
constexpr std::size_t kColorMapBytes = 3 * kColorMapEntries;
// ColorMap's planes.
constexpr std::size_t kBluePlane = 0;
constexpr std::size_t kGreenPlane = kColorMapEntries;
constexpr std::size_t kRedPlane = 2 * kColorMapEntries;

// Fills ColorMap and checks the menu item of the map, 143 to 145; the picture takes the new colours when it is next
// drawn. id: 1230 gray, 1231 inverted gray, 1232 the colours of MATROX.PAL in DefaultDir; any other does nothing.
// The operator sees "Failure to allocate LUT memory!" where memory is refused, "Could not open file MATROX.PAL" where
// the file can't be read (map and menu then stay as they were), and "Bad values in file MATROX.PAL" for each line of it
// without three numbers. A map that is made here for the first time starts as gray.
void SetColorMap(int id);

// ImageColor goes on to the next map: gray, inverted gray, colour, gray. Any other value stays. SetColorMap follows.
void NextColorMap();

// The map in force, made from ImageColor if there is none yet. Empty only where memory is refused.
std::span<const std::uint8_t> ReadyColorMap();

// Counts the fillings of ColorMap: whoever keeps something made from it compares.
std::uint32_t ColorMapGeneration();

// Reads a palette text into a map of 768 bytes: the first line is a comment, then up to 256 lines "red green blue",
// each number taken by its low 8 bits. A line holds at most 40 characters with its newline (CR LF is one); what goes
// beyond is the next line. Empty lines count as read but take no entry. Where fewer than three numbers stand, the
// missing ones are those of the line before (0 at first). Entries without a line stay. Returns the lines with fewer
// than three numbers.
int ReadPalette(std::string_view contents, std::span<std::uint8_t> map);

// No map; what was made of the last one is out of date.
void ResetColorMap();

}  // namespace kelvo
