// The marks that are drawn into a frame, pixel by pixel.
#include "pixel/region_marks.h"

#include "imagefile/header_write.h"
#include "platform/memory.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::Each;
using testing::ElementsAreArray;

constexpr std::int32_t kColumns = 7;
constexpr std::int32_t kRows = 6;
constexpr std::int16_t kCount = 100;
constexpr std::int16_t kHigh = 16383;

class Marks : public testing::Test {
  protected:
    Marks()
    {
        write::camera.ActiveConfig.Hroi = kColumns;
        write::camera.ActiveConfig.Vroi = kRows;
        write::display.DisplayHigh = kHigh;
        write::cal.DecomList.resize(kColumns * kRows);
        std::iota(write::cal.DecomList.begin(), write::cal.DecomList.end(), 0U);
    }
    static void View(std::int32_t columns, std::int32_t rows)
    {
        write::frames.ViewingFile = 1;
        write::file.ImageHeader.ImageWidth = static_cast<std::int16_t>(columns);
        write::file.ImageHeader.ImageHeight = static_cast<std::int16_t>(rows);
    }
    // The frame as a drawing: x where it was written 0, o where it was written DisplayHigh.
    std::vector<std::string> Drawing() const
    {
        std::vector<std::string> rows;
        for (std::size_t i = 0; i < frame.size(); ++i) {
            if (i % kColumns == 0) rows.emplace_back();
            rows.back() += frame[i] == 0 ? 'x' : frame[i] == kHigh ? 'o' : frame[i] == kCount ? '.' : '?';
        }
        return rows;
    }
    std::vector<std::int16_t> frame = std::vector<std::int16_t>(kColumns * kRows, kCount);
};

class RectangleMark : public Marks {};
class CrossMark : public Marks {};
class LineMark : public Marks {};

const std::vector<std::string> kInTheMiddle = {".......",  //
                                               ".......",  //
                                               "..xxxx.",  //
                                               "..x..x.",  //
                                               "..xxxx.",  //
                                               "......."};

const std::vector<std::string> kWithEdgeAstray = {".......",  //
                                                  ".x.....",  //
                                                  ".xxxxx.",  //
                                                  ".xx....",  //
                                                  "..xxxx.",  //
                                                  "......."};

TEST_F(RectangleMark, LiesOnePixelOutsideTheRectangle)
{
    EXPECT_EQ(MarkRectangle(frame, 3, 3, 4, 3), 1);
    EXPECT_THAT(Drawing(), ElementsAreArray(kInTheMiddle));
}

TEST_F(RectangleMark, IsNotDrawnAtRowOrColumnZero)
{
    EXPECT_EQ(MarkRectangle(frame, 1, 1, 2, 2), 1);
    EXPECT_THAT(Drawing(), ElementsAreArray({"...x...",  //
                                             "...x...",  //
                                             "...x...",  //
                                             "xxxx...",  //
                                             ".......",  //
                                             "......."}));
}

TEST_F(RectangleMark, IsHeldToTheFrame)
{
    EXPECT_EQ(MarkRectangle(frame, 0, 0, kColumns - 1, kRows - 1), 1);
    EXPECT_THAT(Drawing(), ElementsAreArray({"......x",  //
                                             "......x",  //
                                             "......x",  //
                                             "......x",  //
                                             "......x",  //
                                             "xxxxxxx"}));
}

TEST_F(RectangleMark, StaysInItsBlockWhateverTheRectangle)
{
    for (const std::int32_t far : {-2147483647, -9, 9, 2147483647}) {
        for (const std::int32_t near : {-3, 2, 40}) {
            EXPECT_EQ(MarkRectangle(frame, far, near, near, far), 1);
            EXPECT_EQ(MarkRectangle(frame, near, far, far, near), 1);
        }
    }
}

TEST_F(RectangleMark, InReadoutOrderGoesThroughTheTable)
{
    // Readout from the last pixel to the first.
    std::ranges::reverse(write::cal.DecomList);
    EXPECT_EQ(MarkRectangle(frame, 3, 3, 4, 3, FrameOrder::kReadout), 1);
    std::ranges::reverse(frame);
    EXPECT_THAT(Drawing(), ElementsAreArray(kInTheMiddle));
}

TEST_F(RectangleMark, InAnImageIsDirectButForTheRightEdge)
{
    std::ranges::reverse(write::cal.DecomList);
    EXPECT_EQ(MarkRectangle(frame, 3, 3, 4, 3), 1);
    // The right edge at column 5, rows 2 to 4, stands where the table sends it: column 1, rows 3 to 1.
    EXPECT_THAT(Drawing(), ElementsAreArray(kWithEdgeAstray));
}

TEST_F(RectangleMark, GoesToItsOwnPlacesBeyondTheTable)
{
    write::cal.DecomList.resize(3 * kColumns);
    EXPECT_EQ(MarkRectangle(frame, 3, 3, 4, 3, FrameOrder::kReadout), 1);
    EXPECT_THAT(Drawing(), ElementsAreArray(kInTheMiddle));
}

TEST_F(RectangleMark, IsNotWrittenWhereTheTableLeadsOutOfTheFrame)
{
    std::ranges::fill(write::cal.DecomList, static_cast<std::uint32_t>(kColumns * kRows));
    EXPECT_EQ(MarkRectangle(frame, 3, 3, 4, 3, FrameOrder::kReadout), 1);
    EXPECT_THAT(frame, Each(kCount));
}

TEST_F(RectangleMark, BeginsAtRowAndColumnZeroWhereTheRectangleBeginsBeforeThem)
{
    EXPECT_EQ(MarkRectangle(frame, -5, -5, 1, 0), 1);
    EXPECT_THAT(Drawing(), ElementsAreArray({"..x....",  //
                                             "xxx....",  //
                                             ".......",  //
                                             ".......",  //
                                             ".......",  //
                                             "......."}));
}

TEST_F(RectangleMark, LeftOfTheFrameOrAboveItIsNotWritten)
{
    EXPECT_EQ(MarkRectangle(frame, -9, 0, -3, 2), 1);
    EXPECT_EQ(MarkRectangle(frame, 0, -9, 2, -3), 1);
    EXPECT_EQ(MarkRectangle(frame, -9, -9, -3, -3), 1);
    EXPECT_THAT(frame, Each(kCount));
}

TEST_F(RectangleMark, LiveKeepsTheFrameWithoutMarks)
{
    frame[20] = 55;
    const std::vector<std::int16_t> before = frame;
    EXPECT_EQ(MarkRectangle(frame, 3, 3, 4, 3), 1);
    EXPECT_THAT(ImageBufferPixels(0), ElementsAreArray(before));
}

TEST_F(RectangleMark, OfAStoredFrameIsDirectButForTheRightEdge)
{
    View(kColumns, kRows);
    std::ranges::reverse(write::cal.DecomList);
    EXPECT_EQ(MarkRectangle(frame, 3, 3, 4, 3), 1);
    EXPECT_THAT(Drawing(), ElementsAreArray(kWithEdgeAstray));
    EXPECT_TRUE(ImageBuffer.empty()) << "the stored frame is there already";
}

TEST_F(RectangleMark, OfAStoredFrameNeedsNoTable)
{
    View(kColumns, kRows);
    write::cal.DecomList.clear();
    EXPECT_EQ(MarkRectangle(frame, 3, 3, 4, 3), 1);
    EXPECT_THAT(Drawing(), ElementsAreArray(kInTheMiddle));
}

TEST_F(RectangleMark, RefusesABlockSmallerThanAFrame)
{
    frame.pop_back();
    const std::vector<std::int16_t> before = frame;
    EXPECT_EQ(MarkRectangle(frame, 3, 3, 4, 3), 0);
    EXPECT_EQ(frame, before);
    View(kColumns, kRows);
    EXPECT_EQ(MarkRectangle(frame, 3, 3, 4, 3), 0);
    EXPECT_EQ(frame, before);
}

TEST_F(RectangleMark, DrawsNothingWithoutMemoryForTheCopy)
{
    const std::vector<std::int16_t> before = frame;
    FailAllocation(1);
    EXPECT_EQ(MarkRectangle(frame, 3, 3, 4, 3), 0);
    EXPECT_EQ(frame, before);
}

TEST_F(CrossMark, LeavesItsCentreAndKeepsItsCount)
{
    frame[2 * kColumns + 3] = 77;
    EXPECT_EQ(MarkCross(frame, 3, 2), 1);
    EXPECT_EQ(CrossCentreValue, 77);
    frame[2 * kColumns + 3] = kCount;
    // Column 0 and row 0 are never reached; the frame ends the others.
    EXPECT_THAT(Drawing(), ElementsAreArray({".......",  //
                                             "...x...",  //
                                             ".xx.xxx",  //
                                             "...x...",  //
                                             "...x...",  //
                                             "...x..."}));
    ResetRegionMarks();
    EXPECT_EQ(CrossCentreValue, 0);
}

TEST_F(CrossMark, HasArmsOfFivePixels)
{
    constexpr std::int32_t kSide = 20;
    View(kSide, kSide);
    frame.assign(kSide * kSide, kCount);
    EXPECT_EQ(MarkCross(frame, 10, 10), 1);
    for (std::int32_t y = 0; y < kSide; ++y) {
        for (std::int32_t x = 0; x < kSide; ++x) {
            const bool row = y == 10 && x != 10 && x > 4 && x < 16;
            const bool column = x == 10 && y != 10 && y > 4 && y < 16;
            EXPECT_EQ(frame[static_cast<std::size_t>(y * kSide + x)], row || column ? 0 : kCount) << x << ", " << y;
        }
    }
}

TEST_F(CrossMark, EndsItsArmDownwardAtTheRowOfTheWidth)
{
    View(3, 14);
    EXPECT_EQ(MarkCross(frame, 1, 1), 1);
    EXPECT_EQ(frame[2 * 3 + 1], 0);
    EXPECT_EQ(frame[3 * 3 + 1], kCount) << "row 3 is the frame's width";
}

TEST_F(CrossMark, OutsideTheFrameIsNotWrittenAndReadsZero)
{
    frame.assign(frame.size(), kCount);
    EXPECT_EQ(MarkCross(frame, 3, 2), 1);
    EXPECT_EQ(CrossCentreValue, kCount);
    const std::vector<std::int16_t> before = frame;
    for (const std::int32_t far : {-2147483647 - 1, -40, 40, 2147483647}) {
        EXPECT_EQ(MarkCross(frame, far, far), 1);
        EXPECT_EQ(CrossCentreValue, 0);
        EXPECT_EQ(MarkCross(frame, far, 3), 1);
        EXPECT_EQ(MarkCross(frame, 3, far), 1);
    }
    EXPECT_EQ(frame, before);
}

TEST_F(CrossMark, RefusesABlockSmallerThanAFrame)
{
    frame.pop_back();
    EXPECT_EQ(MarkCross(frame, 3, 2), 0);
    EXPECT_THAT(frame, Each(kCount));
}

TEST_F(LineMark, DarkensAboveAndBelowAFlatLine)
{
    EXPECT_EQ(MarkLine(frame, 1, 2, 5, 2), 1);
    const std::vector<std::string> drawing = {".......",  //
                                              ".xxxxx.",  //
                                              "o.....o",  //
                                              ".xxxxx.",  //
                                              ".......",  //
                                              "......."};
    EXPECT_THAT(Drawing(), ElementsAreArray(drawing));
    frame.assign(frame.size(), kCount);
    EXPECT_EQ(MarkLine(frame, 5, 2, 1, 2), 1);
    EXPECT_THAT(Drawing(), ElementsAreArray(drawing)) << "from right to left";
}

TEST_F(LineMark, DarkensLeftAndRightOfAnUprightLine)
{
    EXPECT_EQ(MarkLine(frame, 3, 4, 3, 1), 1);
    EXPECT_THAT(Drawing(), ElementsAreArray({"...o...",  //
                                             "..x.x..",  //
                                             "..x.x..",  //
                                             "..x.x..",  //
                                             "..x.x..",  //
                                             "...o..."}));
}

TEST_F(LineMark, FollowsTheTruncatedRowOfASlantedLine)
{
    // Slope 2 / 4: rows 1, 1, 2, 2, 3.
    EXPECT_EQ(MarkLine(frame, 1, 1, 5, 3), 1);
    EXPECT_THAT(Drawing(), ElementsAreArray({".xx....",  //
                                             "o..xx..",  //
                                             ".xx..x.",  //
                                             "...xx.o",  //
                                             ".....x.",  //
                                             "......."}));
}

TEST_F(LineMark, HasEndMarksInTheRowsOfItsEndPoints)
{
    // In single precision 5 x (1 / 5) and its like needn't reach the last row: the end mark doesn't go by them.
    for (std::int32_t dx = 2; dx < 200; ++dx) {
        View(dx + 3, dx + 3);
        frame.assign(static_cast<std::size_t>(dx + 3) * static_cast<std::size_t>(dx + 3), kCount);
        const std::int32_t row = dx - 1;
        EXPECT_EQ(MarkLine(frame, 1, 0, dx + 1, row), 1);
        EXPECT_EQ(frame[static_cast<std::size_t>(row * (dx + 3) + dx + 2)], kHigh) << dx;
        EXPECT_EQ(frame[0], kHigh);
    }
}

TEST_F(LineMark, OfFortyFiveDegreesDarkensLeftAndRight)
{
    EXPECT_EQ(MarkLine(frame, 4, 1, 2, 3), 1);
    EXPECT_THAT(Drawing(), ElementsAreArray({"....o..",  //
                                             "...x.x.",  //
                                             "..x.x..",  //
                                             ".x.x...",  //
                                             "..o....",  //
                                             "......."}));
}

TEST_F(LineMark, OfOnePointHasNoMarkBelow)
{
    EXPECT_EQ(MarkLine(frame, 3, 2, 3, 2), 1);
    EXPECT_THAT(Drawing(), ElementsAreArray({".......",  //
                                             "...x...",  //
                                             "..x.x..",  //
                                             ".......",  //
                                             ".......",  //
                                             "......."}));
}

TEST_F(LineMark, AtTheEdgeOfTheFrameWritesOnlyInside)
{
    EXPECT_EQ(MarkLine(frame, 0, 0, kColumns - 1, 0), 1);
    EXPECT_EQ(MarkLine(frame, 0, kRows - 1, 0, kRows - 1), 1);
    EXPECT_THAT(Drawing(), ElementsAreArray({".......",  //
                                             "xxxxxxx",  //
                                             ".......",  //
                                             ".......",  //
                                             "x......",  //
                                             ".x....."}));
}

TEST_F(LineMark, StaysInItsBlockWhateverThePoints)
{
    constexpr std::int32_t kPoints[] = {-2147483647 - 1, -2147483647, -9, 0, 3, 40, 2147483647};
    for (const std::int32_t x1 : kPoints) {
        for (const std::int32_t y1 : kPoints) {
            for (const std::int32_t x2 : kPoints) {
                for (const std::int32_t y2 : kPoints) EXPECT_EQ(MarkLine(frame, x1, y1, x2, y2), 1);
            }
        }
    }
}

TEST_F(LineMark, FromFarOutsideDarkensWhatIsInside)
{
    EXPECT_EQ(MarkLine(frame, -2147483647, 2, 2147483647, 2), 1);
    EXPECT_THAT(Drawing(), ElementsAreArray({".......",  //
                                             "xxxxxxx",  //
                                             ".......",  //
                                             "xxxxxxx",  //
                                             ".......",  //
                                             "......."}));
}

TEST_F(LineMark, LiveKeepsTheFrameWithoutMarks)
{
    frame[20] = 55;
    const std::vector<std::int16_t> before = frame;
    EXPECT_EQ(MarkLine(frame, 1, 2, 5, 2), 1);
    EXPECT_THAT(ImageBufferPixels(0), ElementsAreArray(before));
    View(kColumns, kRows);
    EXPECT_EQ(MarkLine(frame, 1, 2, 5, 4), 1);
    EXPECT_THAT(ImageBufferPixels(0), ElementsAreArray(before)) << "a stored frame isn't kept again";
}

TEST_F(LineMark, RefusesABlockSmallerThanAFrame)
{
    FailAllocation(1);
    EXPECT_EQ(MarkLine(frame, 1, 2, 5, 2), 0) << "no memory for the copy";
    frame.pop_back();
    EXPECT_EQ(MarkLine(frame, 1, 2, 5, 2), 0);
    EXPECT_THAT(frame, Each(kCount));
}

}  // namespace
}  // namespace kelvo
