#include "output/printed_page.h"

#include "platform/files.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <sstream>

namespace kelvo {

namespace {

constexpr std::uint32_t kWhite = 0xFFFFFF;
constexpr std::uint32_t kMixed = 0xFFFFFFFF;
constexpr int kRim = 4;  // where blocks meet within a dot, and a viewer rounds

}  // namespace

std::uint32_t Dots::At(int x, int y) const
{
    return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
}

Dots DotsOfPage(const std::string& pdfPath, int dotsPerInch, int corner)
{
    const std::string stem = pdfPath + ".dots";
    const std::string side = std::to_string(corner);
    const std::string cut = corner > 0 ? " -x 0 -y 0 -W " + side + " -H " + side : "";
    const std::string command = "pdftoppm -singlefile -aa no -aaVector no -r " + std::to_string(dotsPerInch) + cut +
                                " '" + pdfPath + "' '" + stem + "'";
    if (std::system(command.c_str()) != 0) return {};
    const auto contents = ReadWholeFile(stem + ".ppm", std::size_t{1} << 30);
    if (!contents) return {};
    std::istringstream in(*contents);
    std::string kind;
    int most = 0;
    Dots dots;
    in >> kind >> dots.width >> dots.height >> most;
    in.get();
    const std::size_t count = static_cast<std::size_t>(dots.width) * static_cast<std::size_t>(dots.height);
    const auto start = static_cast<std::size_t>(in.tellg());
    if (kind != "P6" || most != 255 || contents->size() != start + 3 * count) return {};
    for (std::size_t i = start; i < contents->size(); i += 3) {
        const auto byte = [&](std::size_t k) { return std::uint32_t{static_cast<std::uint8_t>((*contents)[i + k])}; };
        dots.pixels.push_back(byte(0) << 16 | byte(1) << 8 | byte(2));
    }
    return dots;
}

Dots Inked(const Dots& page)
{
    int left = page.width;
    int top = page.height;
    int right = 0;
    int bottom = 0;
    for (int y = 0; y < page.height; ++y) {
        for (int x = 0; x < page.width; ++x) {
            if (page.At(x, y) == kWhite) continue;
            left = std::min(left, x);
            top = std::min(top, y);
            right = std::max(right, x + 1);
            bottom = std::max(bottom, y + 1);
        }
    }
    Dots inked{.width = std::max(right - left, 0), .height = std::max(bottom - top, 0), .pixels = {}};
    for (int y = top; y < bottom; ++y) {
        for (int x = left; x < right; ++x) inked.pixels.push_back(page.At(x, y));
    }
    return inked;
}

std::vector<std::uint32_t> Blocks(const Dots& dots, int across, int down)
{
    std::vector<std::uint32_t> colors;
    for (int row = 0; row < down; ++row) {
        for (int column = 0; column < across; ++column) {
            const int left = dots.width * column / across + kRim;
            const int right = dots.width * (column + 1) / across - kRim;
            const int top = dots.height * row / down + kRim;
            const int bottom = dots.height * (row + 1) / down - kRim;
            std::uint32_t color = right > left && bottom > top ? dots.At(left, top) : kMixed;
            for (int y = top; y < bottom; ++y) {
                for (int x = left; x < right; ++x) {
                    if (dots.At(x, y) != color) color = kMixed;
                }
            }
            colors.push_back(color);
        }
    }
    return colors;
}

}  // namespace kelvo
