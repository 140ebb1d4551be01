// The rectangle that is drawn into a frame, pixel by pixel.
#include "pixel/region_marks.h"

#include "imagefile/header_write.h"
#include "platform/memory.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/frame_state_write.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAreArray;

constexpr std::int32_t kColumns = 7;
constexpr std::int32_t kRows = 6;
constexpr std::int16_t kCount = 100;

class RectangleMark : public testing::Test {
  protected:
    RectangleMark()
    {
        write::camera.ActiveConfig.Hroi = kColumns;
        write::camera.ActiveConfig.Vroi = kRows;
        write::cal.DecomList.resize(kColumns * kRows);
        std::iota(write::cal.DecomList.begin(), write::cal.DecomList.end(), 0U);
    }
    static void View(std::int32_t columns, std::int32_t rows)
    {
        write::frames.ViewingFile = 1;
        write::file.ImageHeader.ImageWidth = static_cast<std::int16_t>(columns);
        write::file.ImageHeader.ImageHeight = static_cast<std::int16_t>(rows);
    }
    // The frame as a drawing, x where it was written 0.
    std::vector<std::string> Drawing() const
    {
        std::vector<std::string> rows;
        for (std::size_t i = 0; i < frame.size(); ++i) {
            if (i % kColumns == 0) rows.emplace_back();
            rows.back() += frame[i] == 0 ? 'x' : frame[i] == kCount ? '.' : '?';
        }
        return rows;
    }
    std::vector<std::int16_t> frame = std::vector<std::int16_t>(kColumns * kRows, kCount);
};

const std::vector<std::string> kInTheMiddle = {".......",  //
                                               ".......",  //
                                               "..xxxx.",  //
                                               "..x..x.",  //
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

TEST_F(RectangleMark, LiveGoesThroughTheTable)
{
    // Readout from the last pixel to the first.
    std::ranges::reverse(write::cal.DecomList);
    EXPECT_EQ(MarkRectangle(frame, 3, 3, 4, 3), 1);
    std::ranges::reverse(frame);
    EXPECT_THAT(Drawing(), ElementsAreArray(kInTheMiddle));
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
    // The right edge at column 5, rows 2 to 4, stands where the table sends it: column 1, rows 3 to 1.
    EXPECT_THAT(Drawing(), ElementsAreArray({".......",  //
                                             ".x.....",  //
                                             ".xxxxx.",  //
                                             ".xx....",  //
                                             "..xxxx.",  //
                                             "......."}));
    EXPECT_TRUE(ImageBuffer.empty()) << "the stored frame is there already";
}

TEST_F(RectangleMark, OfAStoredFrameNeedsNoTable)
{
    View(kColumns, kRows);
    write::cal.DecomList.clear();
    EXPECT_EQ(MarkRectangle(frame, 3, 3, 4, 3), 1);
    EXPECT_EQ(frame[2 * kColumns + 2], 0);
    EXPECT_EQ(frame[3 * kColumns + 5], kCount) << "the right edge finds no place";
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

}  // namespace
}  // namespace kelvo
