#include "display/color_map.h"

#include "platform/box.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "resources/ids.h"
#include "state/display_state_write.h"
#include "state/windows.h"
#include "ui/menu_state.h"

#include <array>
#include <optional>
#include <string>

namespace kelvo {

namespace {

std::uint32_t generation = 0;

constexpr std::size_t kPaletteLineLength = 40;
constexpr int kPaletteLines = 256;
// The first line and 256 more, each at most 40 characters and a CR: nothing behind that is ever looked at.
constexpr std::size_t kPaletteReach = (kPaletteLines + 1) * (kPaletteLineLength + 1);

bool IsSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// One decimal number off the front of text as scanf reads it; only its low 8 bits matter.
std::optional<std::uint8_t> TakeNumber(std::string_view& text)
{
    std::size_t at = 0;
    while (at < text.size() && IsSpace(text[at])) ++at;
    bool negative = false;
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) negative = text[at++] == '-';

    const std::size_t firstDigit = at;
    unsigned value = 0;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
        value = value * 10 + static_cast<unsigned>(text[at] - '0');
    }
    if (at == firstDigit) return std::nullopt;
    text.remove_prefix(at);
    return static_cast<std::uint8_t>(negative ? 0U - value : value);
}

// The line up to a zero byte, where a text ends.
std::string_view TextOf(const std::string& line)
{
    return std::string_view(line).substr(0, line.find('\0'));
}

bool EnsureColorMap()
{
    if (!ColorMap.empty()) return true;
    if (!AllocateBlock(write::display.ColorMap, kColorMapBytes)) {
        MessageBox(hWndMain, "Failure to allocate LUT memory!", kMessageCaption);
        return false;
    }
    for (std::size_t i = 0; i < kColorMapBytes; ++i)
        write::display.ColorMap[i] = static_cast<std::uint8_t>(i % kColorMapEntries);
    return true;
}

void FillGray(bool inverted)
{
    for (std::size_t i = 0; i < kColorMapBytes; ++i) {
        const std::size_t gray = i % kColorMapEntries;
        write::display.ColorMap[i] = static_cast<std::uint8_t>(inverted ? kColorMapEntries - 1 - gray : gray);
    }
}

std::optional<std::string> PaletteFileText()
{
    std::optional<File> file = File::Open(DefaultDir + "/MATROX.PAL", FileMode::kRead);
    if (!file) return std::nullopt;
    std::string contents(kPaletteReach, '\0');
    contents.resize(file->Read(std::as_writable_bytes(std::span(contents))));
    return contents;
}

bool FillFromPaletteFile()
{
    const std::optional<std::string> contents = PaletteFileText();
    if (!contents) {
        MessageBox(hWndMain, "Could not open file MATROX.PAL", kMessageCaption, BoxIcon::kInformation);
        return false;
    }
    for (int bad = ReadPalette(*contents, write::display.ColorMap); bad > 0; --bad) {
        MessageBox(hWndMain, "Bad values in file MATROX.PAL", kMessageCaption);
    }
    return true;
}

bool FillColorMap(int id)
{
    switch (id) {
        case kNormalGray:
            FillGray(false);
            return true;
        case kInvertedGray:
            FillGray(true);
            return true;
        case kNormalColor:
            return FillFromPaletteFile();
        default:
            return false;
    }
}

}  // namespace

void SetColorMap(int id)
{
    if (!EnsureColorMap()) return;
    ++generation;
    if (FillColorMap(id)) ShowColorMapInMenu(id);
}

void NextColorMap()
{
    switch (ImageColor) {
        case kNormalGray:
            write::display.ImageColor = kInvertedGray;
            break;
        case kInvertedGray:
            write::display.ImageColor = kNormalColor;
            break;
        case kNormalColor:
            write::display.ImageColor = kNormalGray;
            break;
        default:
            break;
    }
}

std::span<const std::uint8_t> ReadyColorMap()
{
    if (ColorMap.empty()) SetColorMap(ImageColor);
    return ColorMap;
}

std::uint32_t ColorMapGeneration()
{
    return generation;
}

int ReadPalette(std::string_view contents, std::span<std::uint8_t> map)
{
    LineReader lines(std::string(contents.substr(0, kPaletteReach)), kPaletteLineLength);
    lines.Next();

    std::array<std::uint8_t, 3> color{};  // red, green, blue
    std::size_t entry = 0;
    int badLines = 0;
    for (int attempt = 0; attempt < kPaletteLines; ++attempt) {
        const std::optional<std::string> line = lines.Next();
        if (!line) break;
        std::string_view text = TextOf(*line);
        if (text.empty() || text == "\n" || text == "\r\n") continue;

        bool complete = true;
        for (std::uint8_t& part : color) {
            const std::optional<std::uint8_t> number = complete ? TakeNumber(text) : std::nullopt;
            complete = number.has_value();
            if (complete) part = *number;
        }
        if (!complete) ++badLines;

        map[kRedPlane + entry] = color[0];
        map[kGreenPlane + entry] = color[1];
        map[kBluePlane + entry] = color[2];
        ++entry;
    }
    return badLines;
}

void ResetColorMap()
{
    write::display.ColorMap.clear();
    ++generation;
}

}  // namespace kelvo
