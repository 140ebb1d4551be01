#include "pixel/bad_pixels.h"

#include "platform/memory.h"
#include "support/shown.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace kelvo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

CameraConfig Region(std::int32_t rows, std::int32_t columns)
{
    CameraConfig config;
    config.Vroi = rows;
    config.Hroi = columns;
    return config;
}

ShownBox Ignored(int number, const std::string& line)
{
    return {.caption = "Kelvo message", .text = "Line #" + std::to_string(number) + " ignored,\"" + line + "\""};
}

class BadDetectorList : public ::testing::Test {
  protected:
    // The map of 3 rows and 4 columns that a list makes, one character a pixel.
    std::string Marks(std::string_view lines)
    {
        PutFile(path, lines);
        EXPECT_EQ(LoadBadDetFile(path, map, Region(3, 4)), 1);
        std::string marks;
        for (const std::uint8_t mark : map) marks += mark != 0 ? 'x' : '.';
        return marks;
    }

    TempDirectory directory;
    std::string path = directory / "list.bad";
    BadDetMap map = BadDetMap(12, 0);
};

TEST_F(BadDetectorList, MarksRowThenColumn)
{
    EXPECT_EQ(Marks("0,0\n1,2\n2,3\n"), "x.....x....x");
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST_F(BadDetectorList, ReadsItsOwnBlanks)
{
    EXPECT_EQ(Marks("   1,   2\n   2,   0\n"), "......x.x...");
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST_F(BadDetectorList, TakesEveryKindOfLineEnd)
{
    EXPECT_EQ(Marks("0,1\r\n\r\n\n1,1\r\n2,1"), ".x...x...x..");
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST_F(BadDetectorList, IgnoresWhatFollowsTheSecondField)
{
    EXPECT_EQ(Marks("0,1,9 dead\n"), ".x..........");
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST_F(BadDetectorList, KeepsMarksThatStand)
{
    map[4] = 1;
    EXPECT_EQ(Marks("0,0\n"), "x...x.......");
}

TEST_F(BadDetectorList, WarnsOfALineWithOneFieldAndMarksThePixelBeforeItAgain)
{
    EXPECT_EQ(Marks("1,1\n2\n"), ".....x......");
    EXPECT_THAT(BoxesShown(), ElementsAre(Ignored(6, "2")));  // the pixel before has index 5
}

TEST_F(BadDetectorList, NumbersItsWarningsFromOneAndByTheLastIndex)
{
    EXPECT_EQ(Marks("row,col\n0,3\nx\n2,0\n1;1\n"), "...x....x...");
    EXPECT_THAT(BoxesShown(), ElementsAre(Ignored(1, "row,col"), Ignored(4, "x"), Ignored(9, "1;1")));
}

TEST_F(BadDetectorList, APixelBeyondItsRowIsntMarkedThoughItsIndexLiesInTheMap)
{
    EXPECT_EQ(Marks("0,4\n1,-1\n"), "............");  // indices 4 and 3: pixels of the rows beside them
    EXPECT_THAT(BoxesShown(), ElementsAre(Ignored(1, "0,4"), Ignored(5, "1,-1")));
}

TEST_F(BadDetectorList, ALineWithOneFieldBeforeTheFirstPixelMarksNothing)
{
    EXPECT_EQ(Marks("2\n"), "............");
    EXPECT_THAT(BoxesShown(), ElementsAre(Ignored(1, "2")));
}

TEST_F(BadDetectorList, ALineWithOneFieldKeepsRowAndColumnOfThePixelBefore)
{
    // Were the row taken over, pixel 2,1 (index 9) would be marked.
    EXPECT_EQ(Marks("0,1\n2\n0,0\nx\n"), "xx..........");
    EXPECT_THAT(BoxesShown(), ElementsAre(Ignored(2, "2"), Ignored(1, "x")));
}

TEST_F(BadDetectorList, NeverMarksOutsideTheMap)
{
    EXPECT_EQ(Marks("3,0\n-1,0\n2147483647,2147483647\n-2147483648,0\n2,4\n"), "............");
    EXPECT_THAT(BoxesShown(),
                ElementsAre(Ignored(1, "3,0"), Ignored(13, "-1,0"), Ignored(-3, "2147483647,2147483647"),
                            ShownBox{.caption = "Kelvo message", .text = "Line #10737418236 ignored,\"-2147483648,0\""},
                            ShownBox{.caption = "Kelvo message", .text = "Line #-8589934591 ignored,\"2,4\""}));
}

TEST_F(BadDetectorList, IsBoundedByTheMapGiven)
{
    map.resize(3);
    EXPECT_EQ(Marks("0,2\n2,3\n"), "..x");
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST_F(BadDetectorList, ReadsLongLinesInPieces)
{
    // 79 characters end within the blanks; the rest is a line of its own.
    const std::string line = "0,1" + std::string(76, ' ') + "2,2\n";
    EXPECT_EQ(Marks(line), ".x........x.");
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST_F(BadDetectorList, TellsOfManyBadLinesInOneClosingBox)
{
    std::string lines;
    for (int i = 0; i < 1000; ++i) lines += "x\n";
    EXPECT_EQ(Marks(lines + "0,0\n"), "x...........");
    const std::vector<ShownBox> boxes = BoxesShown();
    ASSERT_EQ(boxes.size(), 21U);
    EXPECT_EQ(boxes[19], Ignored(1, "x"));
    EXPECT_EQ(boxes[20], (ShownBox{.caption = "Kelvo message", .text = "980 more lines ignored."}));
}

TEST_F(BadDetectorList, TellsOfTwentyBadLinesOneByOne)
{
    std::string lines;
    for (int i = 0; i < 20; ++i) lines += "x\n";
    EXPECT_EQ(Marks(lines), "............");
    EXPECT_EQ(BoxesShown().size(), 20U);
}

TEST_F(BadDetectorList, ThatIsMissingIsTold)
{
    EXPECT_EQ(LoadBadDetFile(directory / "missing.bad", map, Region(3, 4)), 0);
    EXPECT_THAT(BoxesShown(), ElementsAre(ShownBox{.caption = "Kelvo message",
                                                   .text = "Could not open file " + (directory / "missing.bad")}));
}

TEST_F(BadDetectorList, IsWrittenRowMajorInFourColumns)
{
    map = {0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7};
    EXPECT_EQ(WriteBadDetFile(path, map, Region(3, 4)), 1);
    EXPECT_EQ(FileContents(path), "   0,   1\n   2,   3\n");
}

TEST_F(BadDetectorList, ThatCannotBeSavedIsTold)
{
    const std::string nowhere = directory / "none/list.bad";
    EXPECT_EQ(WriteBadDetFile(nowhere, map, Region(3, 4)), 0);
    EXPECT_THAT(BoxesShown(),
                ElementsAre(ShownBox{.caption = "Kelvo message", .text = "Could not save file: " + nowhere}));
}

TEST_F(BadDetectorList, IsReadIntoAMapOfItsOwn)
{
    PutFile(path, "1,0\nx\n");
    const std::optional<BadDetMap> read = ReadBadPixelFile(path, 2, 2);
    EXPECT_EQ(read, (BadDetMap{0, 0, 1, 0}));
    EXPECT_THAT(BoxesShown(),
                ElementsAre(ShownBox{.caption = "ReadBadPixelFile() Error", .text = "Line #3 ignored,\"x\""}));
}

TEST_F(BadDetectorList, WithoutMemoryForItsMapIsTold)
{
    PutFile(path, "1,0\n");
    const ShownBox refused = {.caption = "ReadBadPixelFile() Error", .text = "Memory allocation failure!"};
    FailAllocation(1);
    EXPECT_FALSE(ReadBadPixelFile(path, 2, 2));
    EXPECT_FALSE(ReadBadPixelFile(path, -2, 2));
    EXPECT_FALSE(ReadBadPixelFile(path, 2147483647, 2147483647));
    EXPECT_THAT(BoxesShown(), ElementsAre(refused, refused, refused));
}

TEST_F(BadDetectorList, ThatIsMissingGivesNoMapOfItsOwn)
{
    EXPECT_FALSE(ReadBadPixelFile(directory / "missing.bad", 2, 2));
    EXPECT_THAT(BoxesShown(), ElementsAre(ShownBox{.caption = "ReadBadPixelFile() Error",
                                                   .text = "Could not open file " + (directory / "missing.bad")}));
}

}  // namespace
}  // namespace kelvo
