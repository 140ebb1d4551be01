// Colour maps: the palette reader on texts, the maps and their menu items.
#include "display/color_map.h"

#include "platform/memory.h"
#include "platform/menu.h"
#include "resources/ids.h"
#include "state/display_state_write.h"
#include "state/windows.h"
#include "support/picture_fixture.h"
#include "support/shipped_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <fstream>
#include <sstream>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

struct Read {
    std::vector<std::uint8_t> map;
    int badLines;
    std::array<int, 3> Color(std::size_t entry) const
    {
        return {map[kRedPlane + entry], map[kGreenPlane + entry], map[kBluePlane + entry]};
    }
};

Read ReadText(const std::string& text)
{
    Read read{std::vector<std::uint8_t>(kColorMapBytes, 77), 0};
    read.badLines = ReadPalette(text, read.map);
    return read;
}

TEST(PaletteText, LinesReadRedGreenBlueAfterTheFirst)
{
    const Read read = ReadText("1 2 3\n10 20 30\n40 50 60\n");
    EXPECT_THAT(read.Color(0), ElementsAre(10, 20, 30));
    EXPECT_THAT(read.Color(1), ElementsAre(40, 50, 60));
    EXPECT_EQ(read.map[kBluePlane], 30);
    EXPECT_EQ(read.badLines, 0);
}

TEST(PaletteText, FewerLinesLeaveTheRestOfTheMap)
{
    const Read read = ReadText("first\n10 20 30\n");
    EXPECT_THAT(read.Color(1), ElementsAre(77, 77, 77));
    EXPECT_THAT(read.Color(255), ElementsAre(77, 77, 77));
    EXPECT_EQ(read.badLines, 0);
}

TEST(PaletteText, AnEmptyTextChangesNothing)
{
    EXPECT_THAT(ReadText("").map, testing::Each(77));
    EXPECT_THAT(ReadText("only the first line").map, testing::Each(77));
}

TEST(PaletteText, EmptyLinesTakeNoEntryButCount)
{
    std::string text = "first\n\n\n";
    for (int i = 0; i < 256; ++i) text += std::to_string(i) + " 0 0\n";
    const Read read = ReadText(text);
    EXPECT_THAT(read.Color(0), ElementsAre(0, 0, 0));
    EXPECT_THAT(read.Color(253), ElementsAre(253, 0, 0));
    EXPECT_THAT(read.Color(254), ElementsAre(77, 77, 77));  // two of 256 lines were empty
}

TEST(PaletteText, MissingNumbersAreThoseOfTheLineBefore)
{
    const Read read = ReadText("first\n5\n10 20 30\n40 50\nx 1 2\n7 y 9\n");
    EXPECT_THAT(read.Color(0), ElementsAre(5, 0, 0));
    EXPECT_THAT(read.Color(1), ElementsAre(10, 20, 30));
    EXPECT_THAT(read.Color(2), ElementsAre(40, 50, 30));
    EXPECT_THAT(read.Color(3), ElementsAre(40, 50, 30));
    EXPECT_THAT(read.Color(4), ElementsAre(7, 50, 30));
    EXPECT_EQ(read.badLines, 4);
}

TEST(PaletteText, ALineHoldsFortyCharactersWithItsNewline)
{
    // 39 characters and the newline are one line; a 40th goes with the newline left over as a line of its own.
    const std::string pad(30, ' ');
    const Read fits = ReadText("first\n1 2 3" + pad + "    \n4 5 6\n");
    EXPECT_THAT(fits.Color(1), ElementsAre(4, 5, 6));
    const Read over = ReadText("first\n1 2 3" + pad + "     \n4 5 6\n");
    EXPECT_THAT(over.Color(1), ElementsAre(4, 5, 6));
    // 41 characters: the last one is a line with one number.
    const Read longer = ReadText("first\n1 2 3" + pad + "     9\n4 5 6\n");
    EXPECT_THAT(longer.Color(1), ElementsAre(9, 2, 3));
    EXPECT_THAT(longer.Color(2), ElementsAre(4, 5, 6));
    EXPECT_EQ(longer.badLines, 1);
}

TEST(PaletteText, ALongFirstLineRunsOnAsColors)
{
    const Read read = ReadText(std::string(40, '#') + "1 2 3\n4 5 6\n");
    EXPECT_THAT(read.Color(0), ElementsAre(1, 2, 3));
    EXPECT_THAT(read.Color(1), ElementsAre(4, 5, 6));
}

TEST(PaletteText, CarriageReturnsBelongToTheNewline)
{
    const Read read = ReadText("first\r\n1 2 3\r\n\r\n4 5 6\r\n");
    EXPECT_THAT(read.Color(0), ElementsAre(1, 2, 3));
    EXPECT_THAT(read.Color(1), ElementsAre(4, 5, 6));
    EXPECT_EQ(read.badLines, 0);
}

TEST(PaletteText, NumbersAreTakenByTheirLowByte)
{
    const Read read = ReadText("first\n256 -1 +300\n99999999999999999999999999 0 1\n");
    EXPECT_THAT(read.Color(0), ElementsAre(0, 255, 44));
    EXPECT_EQ(read.badLines, 0);
}

TEST(PaletteText, AZeroByteEndsALine)
{
    const Read read = ReadText(std::string("first\n1 2\0 3\n4 5 6\n", 19));
    EXPECT_THAT(read.Color(0), ElementsAre(1, 2, 0));
    EXPECT_THAT(read.Color(1), ElementsAre(4, 5, 6));
}

TEST(PaletteText, MoreThan256LinesAreNotRead)
{
    std::string text = "first\n";
    for (int i = 0; i < 300; ++i) text += "1 2 3\n";
    EXPECT_THAT(ReadText(text + "bad\n").Color(255), ElementsAre(1, 2, 3));
    EXPECT_EQ(ReadText(text + "bad\n").badLines, 0);
}

// CIELAB lightness of an sRGB colour: the published formulas, D65.
double Lightness(double red, double green, double blue)
{
    const auto linear = [](double c) {
        return c <= 0.04045 * 255 ? c / 255 / 12.92 : std::pow((c / 255 + 0.055) / 1.055, 2.4);
    };
    const double y = 0.2126 * linear(red) + 0.7152 * linear(green) + 0.0722 * linear(blue);
    return y > 216.0 / 24389 ? 116 * std::cbrt(y) - 16 : y * 24389 / 27;
}

TEST(ShippedPalette, LightnessRisesEvenlyFromDarkToBright)
{
    std::ifstream file(ShippedFile("MATROX.PAL"));
    std::stringstream text;
    text << file.rdbuf();
    const Read read = ReadText(text.str());
    ASSERT_EQ(read.badLines, 0);
    std::vector<double> lightness;
    for (std::size_t i = 0; i < kColorMapEntries; ++i) {
        lightness.push_back(Lightness(read.map[kRedPlane + i], read.map[kGreenPlane + i], read.map[kBluePlane + i]));
    }
    EXPECT_LT(lightness.front(), 6);
    EXPECT_GT(lightness.back(), 95);
    const double step = (lightness.back() - lightness.front()) / 255;
    for (std::size_t i = 1; i < lightness.size(); ++i) {
        EXPECT_GT(lightness[i], lightness[i - 1]) << i;
        EXPECT_NEAR(lightness[i], lightness.front() + step * static_cast<double>(i), 0.2) << i;
    }
}

class ColorMaps : public PictureTest {
  protected:
    std::array<bool, 3> Checked()
    {
        return {GetMenuItem(hWndMain, 143)->checked, GetMenuItem(hWndMain, 144)->checked,
                GetMenuItem(hWndMain, 145)->checked};
    }
    void WritePalette(const std::string& text) { PutFile(directory / "MATROX.PAL", text); }
};

TEST_F(ColorMaps, NormalGrayIsTheGrayValueInEachPlane)
{
    SetColorMap(kNormalGray);
    ASSERT_THAT(ColorMap, SizeIs(768));
    for (std::size_t i = 0; i < 768; ++i) ASSERT_EQ(ColorMap[i], i % 256);
    EXPECT_THAT(Checked(), ElementsAre(true, false, false));
}

TEST_F(ColorMaps, InvertedGrayRunsDown)
{
    SetColorMap(kInvertedGray);
    for (std::size_t i = 0; i < 768; ++i) ASSERT_EQ(ColorMap[i], 255 - i % 256);
    EXPECT_THAT(Checked(), ElementsAre(false, true, false));
}

TEST_F(ColorMaps, ColorComesFromTheFile)
{
    WritePalette("first\n200 100 50\n");
    SetColorMap(kNormalColor);
    EXPECT_EQ(ColorMap[kRedPlane], 200);
    EXPECT_EQ(ColorMap[kGreenPlane], 100);
    EXPECT_EQ(ColorMap[kBluePlane], 50);
    EXPECT_THAT(Checked(), ElementsAre(false, false, true));
    EXPECT_THAT(op->Boxes(), SizeIs(0));
}

TEST_F(ColorMaps, AShortFileLeavesTheRestOfTheMapInForce)
{
    WritePalette("first\n200 100 50\n");
    SetColorMap(kInvertedGray);
    SetColorMap(kNormalColor);
    EXPECT_EQ(ColorMap[kRedPlane], 200);
    EXPECT_EQ(ColorMap[kRedPlane + 1], 254);
    EXPECT_EQ(ColorMap[kBluePlane + 255], 0);
}

TEST_F(ColorMaps, AMissingFileIsToldAndChangesNothing)
{
    SetColorMap(kInvertedGray);
    const std::vector<std::uint8_t> before = ColorMap;
    SetColorMap(kNormalColor);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Could not open file MATROX.PAL");
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
    EXPECT_EQ(op->Boxes()[0].icon, "information");
    EXPECT_EQ(ColorMap, before);
    EXPECT_THAT(Checked(), ElementsAre(false, true, false));
}

TEST_F(ColorMaps, EachBadLineIsTold)
{
    WritePalette("first\n1 2 3\nx\n4 5 6\n7 8\n");
    SetColorMap(kNormalColor);
    ASSERT_THAT(op->Boxes(), SizeIs(2));
    for (const TestOperator::Box& box : op->Boxes()) {
        EXPECT_EQ(box.text, "Bad values in file MATROX.PAL");
        EXPECT_EQ(box.caption, "Kelvo message");
    }
    EXPECT_EQ(ColorMap[kRedPlane + 3], 7);
    EXPECT_THAT(Checked(), ElementsAre(false, false, true));
}

TEST_F(ColorMaps, RefusedMemoryIsTold)
{
    FailAllocation(1);
    SetColorMap(kNormalGray);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Failure to allocate LUT memory!");
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
    EXPECT_TRUE(ColorMap.empty());
}

TEST_F(ColorMaps, AnotherNumberDoesNothing)
{
    SetColorMap(kInvertedGray);
    const std::vector<std::uint8_t> before = ColorMap;
    SetColorMap(1233);
    EXPECT_EQ(ColorMap, before);
    EXPECT_THAT(Checked(), ElementsAre(false, true, false));
    EXPECT_THAT(op->Boxes(), SizeIs(0));
}

TEST_F(ColorMaps, TheFirstMapWithoutItsFileIsGray)
{
    write::display.ImageColor = kNormalColor;
    EXPECT_EQ(ReadyColorMap()[kRedPlane + 100], 100);
    EXPECT_THAT(op->Boxes(), SizeIs(1));
    ReadyColorMap();
    EXPECT_THAT(op->Boxes(), SizeIs(1));  // told once
}

TEST(NextColorMap, GoesRound)
{
    write::display.ImageColor = kNormalGray;
    NextColorMap();
    EXPECT_EQ(ImageColor, kInvertedGray);
    NextColorMap();
    EXPECT_EQ(ImageColor, kNormalColor);
    NextColorMap();
    EXPECT_EQ(ImageColor, kNormalGray);
    write::display.ImageColor = 5;
    NextColorMap();
    EXPECT_EQ(ImageColor, 5);
}

}  // namespace
}  // namespace kelvo
