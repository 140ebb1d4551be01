// The integration table, row by row by hand.
#include "head/integration_table.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>

namespace kelvo {
namespace {

// An InSb head whose window fills the frame.
struct Camera {
    Camera(int cols, int rows)
    {
        timing.HeadModel = kInSbHead;
        timing.TimingCols = static_cast<std::int16_t>(cols);
        timing.TimingRows = static_cast<std::int16_t>(rows);
        word.ColEnd = cols - 1;
        word.RowEnd = rows - 1;
    }
    IntegrationCounters At(int index) const { return LookUpIntegration(index, word, timing); }

    HeadTimingRecord timing;
    FpaSerialWordRecord word;
};

struct Row {
    int index;
    int lines;
    int cols;
    bool inTable;
};

void ExpectRows(const Camera& camera, std::initializer_list<Row> rows)
{
    for (const Row& row : rows) {
        const IntegrationCounters counters = camera.At(row.index);
        EXPECT_EQ(counters.lines, row.lines) << row.index;
        EXPECT_EQ(counters.cols, row.cols) << row.index;
        EXPECT_EQ(counters.inTable, row.inTable) << row.index;
    }
}

// At 320 x 256: W = 320 / 4 - 1 = 79, N = (256 - 16) / 4 = 60, Split1 = 180, Split2 = 255, Total = 79 + 75 + 180 = 334.
// The height 255 / 4 x 4 = 252; half the width 319 / 2 = 159; a quarter 319 / 4 = 79.
TEST(IntegrationTable, ThreeRegionsAt320By256)
{
    ExpectRows(Camera(320, 256), {
                                     {0, 254, 318, true},  // 2 + 252; 2 x 159
                                     {1, 254, 159, true},
                                     {2, 254, 0, true},
                                     {3, 250, 318, true},
                                     {10, 242, 159, true},  // 254 - 3 x 4; (2 - 1) x 159
                                     {179, 18, 0, true},    // 254 - 59 x 4
                                     {180, 15, 316, true},  // 4 x 79
                                     {184, 15, 0, true},
                                     {185, 14, 316, true},
                                     {254, 1, 0, true},    // 15 - 74 / 5
                                     {255, 0, 316, true},  // (334 - 255) x 4
                                     {333, 0, 4, true},
                                 });
}

TEST(IntegrationTable, TheIndexAtTotalIsNoTimeAtAll)
{
    const Camera camera(320, 256);
    ExpectRows(camera, {{334, 0, 0, true}, {335, 0, 0, false}});  // -4 is clamped
    EXPECT_EQ(IntegrationMsec(camera.At(334), camera.timing, 48.828125F), 0.0);
}

// N is at most 252: beyond 1024 rows the coarse steps end early.
TEST(IntegrationTable, CoarseStepsEndAt252)
{
    const Camera camera(320, 1100);          // N would be 271; Split1 = 756
    ExpectRows(camera, {{755, 94, 0, true},  // 2 + 274 x 4 - 251 x 4
                        {756, 15, 316, true}});
}

// Fewer than 16 rows: N = (8 - 16) / 4 = -2, Split1 = -6, Split2 = 69, Total = 79 + 75 - 6 = 148.
TEST(IntegrationTable, AWindowOfFewRowsIsBoundedByTheClamps)
{
    ExpectRows(Camera(320, 8), {
                                   {0, 7, 237, false},  // 15 - 6 / 5 = 14, above 7; (4 - 1) x 79
                                   {39, 6, 316, true},  // 15 - 45 / 5
                                   {68, 1, 0, true},    // 15 - 74 / 5
                                   {69, 0, 316, true},  // (148 - 69) x 4
                                   {147, 0, 4, true},
                                   {148, 0, 0, true},
                                   {149, 0, 0, false},
                               });
}

// Before the serial word is known its window is one pixel: N = -15 / 4 = -3, Split1 = -9, Split2 = 66.
TEST(IntegrationTable, WithoutAWindowOnlyWholeLinesCome)
{
    Camera camera(320, 256);
    camera.word = {};
    ExpectRows(camera, {{10, 12, 0, true}, {11, 11, 0, true}});  // 15 - 19 / 5, 15 - 20 / 5
}

TEST(IntegrationTable, EachClampEndsTheTable)
{
    Camera camera(320, 256);
    camera.timing.TimingCols = 100;
    camera.timing.TimingRows = 100;
    ExpectRows(camera, {{0, 99, 99, false},    // both above
                        {2, 99, 0, false},     // lines above
                        {180, 15, 99, false},  // columns above
                        {184, 15, 0, true}});
    ExpectRows(Camera(320, 256), {{5000, 0, 0, false}});  // (334 - 5000) x 4 < 0
}

TEST(IntegrationTable, AFrameWithoutSizeHoldsNoIndex)
{
    const Camera camera(0, 0);
    EXPECT_FALSE(camera.At(0).inTable);
    EXPECT_FALSE(camera.At(70).inTable);
    EXPECT_EQ(IntegrationMsec(camera.At(0), camera.timing, 50.0F), 0.0);
}

TEST(IntegrationTable, AHostileWindowStaysBounded)
{
    Camera camera(320, 256);
    camera.word.ColStart = camera.word.RowStart = INT32_MIN;
    camera.word.ColEnd = camera.word.RowEnd = INT32_MAX;
    for (const int index : {0, 1, 700, 900, INT32_MAX, INT32_MIN}) {
        const IntegrationCounters counters = camera.At(index);
        EXPECT_GE(counters.lines, 0);
        EXPECT_LE(counters.lines, 255);
        EXPECT_GE(counters.cols, 0);
        EXPECT_LE(counters.cols, 319);
    }
}

TEST(IntegrationTable, TimeIsTheShareOfTheFramePeriod)
{
    const Camera camera(320, 256);
    // (242 x 320 + 159) x 1000 / (256 x 320 x 48.828125) = 77599000 / 4000000
    EXPECT_DOUBLE_EQ(IntegrationMsec(camera.At(10), camera.timing, 48.828125F), 19.39975);
    EXPECT_DOUBLE_EQ(IntegrationMsec(camera.At(333), camera.timing, 48.828125F), 0.001);  // 4 x 1000 / 4000000
    EXPECT_EQ(IntegrationMsec(camera.At(10), camera.timing, 0), 0.0);
}

}  // namespace
}  // namespace kelvo
