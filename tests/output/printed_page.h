// A page as a viewer shows it: the PDF is turned into dots by other tools than the program's (poppler-utils).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kelvo {

struct Dots {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;  // 0x00RRGGBB
    std::uint32_t At(int x, int y) const;
};

// The page at so many dots an inch, without smoothing: all of it, or the square of that many dots in its upper left
// corner. Empty where it can't be read.
Dots DotsOfPage(const std::string& pdfPath, int dotsPerInch, int corner = 0);

// What of the page isn't white, cut out.
Dots Inked(const Dots& page);

// The colour of each block where the dots are that many blocks across and down, row by row from the top. A block in
// which the dots, but for those on its rim, aren't of one colour gives 0xFFFFFFFF.
std::vector<std::uint32_t> Blocks(const Dots& dots, int across, int down);

}  // namespace kelvo
