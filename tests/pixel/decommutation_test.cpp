// Tables of the readout orders against readouts that are written channel by channel, and against tables worked by hand.
#include "pixel/decommutation.h"

#include "platform/memory.h"
#include "state/windows_write.h"
#include "support/shown.h"
#include "support/temp_directory.h"
#include "ui/status.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <numeric>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

CameraConfig Camera(std::int32_t scheme, std::int32_t rows, std::int32_t columns)
{
    CameraConfig config;
    config.DecomScheme = scheme;
    config.Vroi = rows;
    config.Hroi = columns;
    return config;
}

DecomTable TableOf(const CameraConfig& config, std::int32_t shift = 0)
{
    return BuildDecomList(config, shift).value_or(DecomTable{});
}

DecomTable PlainTable(std::size_t count)
{
    DecomTable table(count);
    std::iota(table.begin(), table.end(), 0U);
    return table;
}

// What each channel delivers, in time: image pixels as row x columns + column.
using Channel = std::vector<std::uint32_t>;

Channel PartOfLine(std::uint32_t row, std::uint32_t columns, std::uint32_t part, std::uint32_t parts)
{
    Channel channel(columns / parts);
    std::iota(channel.begin(), channel.end(), row * columns + part * (columns / parts));
    return channel;
}

// The converter takes one sample of each channel in turn.
void TakeTurns(Channel& raw, const std::vector<Channel>& channels)
{
    for (std::size_t i = 0; i < channels.front().size(); ++i) {
        for (const Channel& channel : channels) raw.push_back(channel[i]);
    }
}

Channel LineParts(std::uint32_t rows, std::uint32_t columns, const std::vector<std::uint32_t>& parts)
{
    Channel raw;
    for (std::uint32_t row = 0; row < rows; ++row) {
        std::vector<Channel> channels;
        for (const std::uint32_t part : parts) {
            channels.push_back(PartOfLine(row, columns, part, static_cast<std::uint32_t>(parts.size())));
        }
        TakeTurns(raw, channels);
    }
    return raw;
}

Channel LinePairs(std::uint32_t rows, std::uint32_t columns)
{
    Channel raw;
    for (std::uint32_t row = 0; row < rows; row += 2) {
        TakeTurns(raw, {PartOfLine(row, columns, 0, 1), PartOfLine(row + 1, columns, 0, 1)});
    }
    return raw;
}

// 256 lines: at each moment one column, line 127 first, then 128, 126, 129, ...; a line starts (line mod 4) columns
// late.
Channel FromTheMiddle(std::uint32_t columns)
{
    Channel raw;
    const auto send = [&](std::uint32_t row, std::uint32_t moment) {
        raw.push_back(row * columns + (moment + columns - row % 4) % columns);
    };
    for (std::uint32_t moment = 0; moment < columns; ++moment) {
        for (std::uint32_t step = 0; step < 128; ++step) {
            send(127 - step, moment);
            send(128 + step, moment);
        }
    }
    return raw;
}

// Through the table each image pixel finds itself.
void ExpectImageOf(const CameraConfig& config, const Channel& raw)
{
    const DecomTable table = TableOf(config);
    ASSERT_EQ(table.size(), raw.size()) << config.DecomScheme;
    DecomTable image;
    for (const std::uint32_t sample : table) image.push_back(raw.at(sample));
    EXPECT_EQ(image, PlainTable(raw.size())) << config.DecomScheme;
}

constexpr std::uint32_t kRows = 12;
constexpr std::uint32_t kColumns = 16;

TEST(Decommutation, OneChannelSendsLineByLine)
{
    for (const std::int32_t scheme : {2, 12}) {
        ExpectImageOf(Camera(scheme, kRows, kColumns), LineParts(kRows, kColumns, {0}));
    }
}

TEST(Decommutation, TwoChannelsInterleaveLineHalves)
{
    for (const std::int32_t scheme : {1, 4}) {
        ExpectImageOf(Camera(scheme, kRows, kColumns), LineParts(kRows, kColumns, {0, 1}));
    }
}

TEST(Decommutation, ExchangedChannelsHaveTheLeftHalfOnOddSamples)
{
    ExpectImageOf(Camera(5, kRows, kColumns), LineParts(kRows, kColumns, {1, 0}));
}

TEST(Decommutation, TwoLinesInterleaveSampleBySample)
{
    ExpectImageOf(Camera(6, kRows, kColumns), LinePairs(kRows, kColumns));
}

TEST(Decommutation, FourChannelsInterleaveLineQuarters)
{
    ExpectImageOf(Camera(7, kRows, kColumns), LineParts(kRows, kColumns, {0, 1, 2, 3}));
    EXPECT_THAT(TableOf(Camera(7, 1, 8)), ElementsAre(0, 4, 1, 5, 2, 6, 3, 7));
}

TEST(Decommutation, AnArrayOf256LinesReadsFromItsMiddleOutward)
{
    ExpectImageOf(Camera(8, 256, 40), FromTheMiddle(40));
    ExpectImageOf(Camera(8, 256, 320), FromTheMiddle(320));
}

TEST(Decommutation, TheConstantsOfTheMiddleDontFollowTheRows)
{
    // Two lines of two columns, samples modulo 4. Line 0 is above the middle: t + 254, with t = 2 c. Line 1:
    // t + 2 - 255, with t = 2 c + 2, which is -251 and -249: below minus the count even after it was added once.
    EXPECT_EQ(BuildDecomList(Camera(8, 2, 2), 0), std::nullopt);
    CameraConfig config = Camera(8, 2, 2);
    config.Vstart = 130;  // t = 2 c + (130 mod 4) 2 = 2 c + 4: 2 c + 4 + 260 - 255 = 2 c + 9; line 131: 2 c + 13
    EXPECT_THAT(TableOf(config), ElementsAre(1, 3, 1, 3));
}

TEST(Decommutation, AnyOtherSchemeIsThePlainSequentialWalk)
{
    for (const std::int32_t scheme : {9, 0, 13, -1, -7, 1000}) {
        EXPECT_EQ(TableOf(Camera(scheme, 3, 5)), PlainTable(15)) << scheme;
    }
}

TEST(Decommutation, SchemeThreeShowsRawSampleZeroEverywhere)
{
    const DecomTable table = TableOf(Camera(3, 4, 5));
    EXPECT_EQ(table.size(), 20U);
    EXPECT_THAT(table, Each(0U));
}

TEST(Decommutation, EverySecondSample)
{
    EXPECT_THAT(TableOf(Camera(10, 2, 4)), ElementsAre(0, 2, 4, 6, 4, 6, 0, 2));
    CameraConfig config = Camera(10, 2, 4);
    config.Hdelay = 1;
    config.Vstart = 1;
    config.Idelay = -1;  // pixel i goes to i - 1, the first to the end; its sample is 5 + 4 r + 2 c
    EXPECT_THAT(TableOf(config), ElementsAre(7, 1, 3, 1, 3, 5, 7, 5));
}

TEST(Decommutation, EverySecondSampleAtEvenPositionsLeavesTheOddOnes)
{
    EXPECT_THAT(TableOf(Camera(11, 2, 4)), ElementsAre(0, 0, 2, 0, 4, 0, 6, 0));
    CameraConfig config = Camera(11, 2, 4);
    config.Idelay = 1;
    EXPECT_THAT(TableOf(config), ElementsAre(0, 0, 0, 2, 0, 4, 0, 6));
    EXPECT_THAT(TableOf(Camera(11, 1, 3)), ElementsAre(0, 1, 2));  // the doubled column wraps onto position 1
}

TEST(Decommutation, TheSamplesOfEverySecondIgnoreTheReadoutShift)
{
    for (const std::int32_t scheme : {10, 11}) {
        EXPECT_EQ(TableOf(Camera(scheme, 2, 4), 3), TableOf(Camera(scheme, 2, 4), 0)) << scheme;
    }
}

TEST(Decommutation, AnOddWidthPutsTheLastColumnBehindTheHalves)
{
    EXPECT_THAT(TableOf(Camera(4, 1, 5)), ElementsAre(0, 2, 1, 3, 2));
    EXPECT_THAT(TableOf(Camera(5, 1, 5)), ElementsAre(1, 3, 0, 2, 4));  // the last is sample -1, wrapped
    EXPECT_THAT(TableOf(Camera(1, 2, 5)), ElementsAre(0, 2, 1, 3, 5, 7, 6, 8, 0, 0));
}

TEST(Decommutation, AnOddNumberOfRowsWrapsTheLastLineOfPairs)
{
    EXPECT_THAT(TableOf(Camera(6, 3, 2)), ElementsAre(0, 2, 1, 3, 4, 0));
    CameraConfig config = Camera(6, 2, 2);
    config.Vstart = 1;
    EXPECT_THAT(TableOf(config), ElementsAre(1, 3, 0, 2));
}

TEST(Decommutation, AnOddReadoutShiftExchangesTheChannels)
{
    EXPECT_THAT(TableOf(Camera(4, 1, 4), 1), ElementsAre(2, 0, 1, 3));
    EXPECT_THAT(TableOf(Camera(5, 1, 4), 1), ElementsAre(1, 3, 2, 0));
    EXPECT_THAT(TableOf(Camera(4, 1, 4), -1), ElementsAre(0, 2, 3, 1));
    EXPECT_THAT(TableOf(Camera(4, 1, 4), 2), ElementsAre(2, 0, 3, 1));
    EXPECT_THAT(TableOf(Camera(1, 1, 4), 1), ElementsAre(2, 0, 1, 3));
    EXPECT_THAT(TableOf(Camera(1, 1, 4), 2), ElementsAre(2, 0, 3, 1));
}

TEST(Decommutation, TheReadoutShiftMovesTheSamplesOfTheOtherSchemes)
{
    EXPECT_THAT(TableOf(Camera(2, 1, 4), 1), ElementsAre(1, 2, 3, 0));
    EXPECT_THAT(TableOf(Camera(6, 2, 2), 1), ElementsAre(1, 3, 2, 0));
    EXPECT_THAT(TableOf(Camera(7, 1, 4), 1), ElementsAre(1, 2, 3, 0));
    EXPECT_THAT(TableOf(Camera(0, 1, 4), 1), ElementsAre(3, 0, 1, 2));  // the walk starts one position on
}

TEST(Decommutation, DelaysWrapAroundTheFrame)
{
    CameraConfig config = Camera(2, 1, 4);
    config.Idelay = -1;
    EXPECT_THAT(TableOf(config), ElementsAre(1, 2, 3, 0));
    config.Idelay = 9;
    EXPECT_THAT(TableOf(config), ElementsAre(3, 0, 1, 2));
    config.Idelay = 0;
    config.Hdelay = -1;
    EXPECT_THAT(TableOf(config), ElementsAre(3, 0, 1, 2));
    config.Hdelay = 6;
    EXPECT_THAT(TableOf(config), ElementsAre(2, 3, 0, 1));
}

TEST(Decommutation, ADestinationThatStaysNegativeIsDropped)
{
    CameraConfig config = Camera(2, 1, 4);
    config.Idelay = -5;
    EXPECT_THAT(TableOf(config), ElementsAre(1, 2, 3, 0));  // position 3 was to have sample 0, and holds none
    config.Hdelay = 1;
    EXPECT_THAT(TableOf(config), ElementsAre(2, 3, 0, 0));
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST(Decommutation, ASourceThatStaysNegativeIsRefusedWithTheTable)
{
    CameraConfig config = Camera(2, 1, 4);
    config.Hdelay = -5;
    EXPECT_EQ(BuildDecomList(config, 0), std::nullopt);
    EXPECT_EQ(BuildDecomList(Camera(1, 1, 4), -2), std::nullopt);
    const std::vector<ShownBox> boxes = BoxesShown();
    ASSERT_EQ(boxes.size(), 2U);
    EXPECT_EQ(boxes[0].caption, "Kelvo message");
    EXPECT_EQ(boxes[0].text,
              "The readout order can't be built: a width or a delay of the camera's section is out of\n"
              "range (DecomScheme=2, Hroi=4, Vstart=0, Hdelay=-5).");
}

TEST(Decommutation, LinesTooShortForTheirChannelsAreRefused)
{
    for (const CameraConfig& config : {Camera(4, 3, 1), Camera(5, 3, 1), Camera(7, 3, 3)}) {
        EXPECT_EQ(BuildDecomList(config, 0), std::nullopt) << config.DecomScheme;
    }
    EXPECT_EQ(BoxesShown().size(), 3U);
    EXPECT_THAT(BuildDecomList(Camera(4, 1, 2), 0), Optional(ElementsAre(0, 1)));
    EXPECT_THAT(BuildDecomList(Camera(7, 1, 4), 0), Optional(ElementsAre(0, 1, 2, 3)));
}

TEST(Decommutation, TheWalkStartsAtItsDelay)
{
    CameraConfig config = Camera(0, 1, 4);
    config.CalDelay = 2;
    EXPECT_THAT(TableOf(config), ElementsAre(2, 3, 0, 1));
    config.CalDelay = -1;
    EXPECT_THAT(TableOf(config), ElementsAre(1, 2, 3, 0));
    config.DecomScheme = 1;
    config.CalDelay = 1;
    EXPECT_THAT(TableOf(config), ElementsAre(3, 0, 2, 1));
}

// Tables of 4 lines of 8 columns, reckoned apart from this code: no delay is 0, and all of them go together.
struct WorkedTable {
    std::int32_t scheme;
    DecomTable table;
};

CameraConfig Delayed(std::int32_t scheme, std::int32_t vstart, std::int32_t hdelay, std::int32_t idelay,
                     std::int32_t calDelay)
{
    CameraConfig config = Camera(scheme, 4, 8);
    config.Vstart = vstart;
    config.Hdelay = hdelay;
    config.Idelay = idelay;
    config.CalDelay = calDelay;
    return config;
}
TEST(Decommutation, EveryDelayCountsTogetherWithAnOddShift)
{
    const WorkedTable kWorked[] = {
        {1, {2,  27, 29, 31, 1,  4,  6,  8,  10, 3,  5,  7,  9,  12, 14, 16,
             18, 11, 13, 15, 17, 20, 22, 24, 26, 19, 21, 23, 25, 28, 30, 0}},
        {2, {10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25,
             26, 27, 28, 29, 30, 31, 0,  1,  2,  3,  4,  5,  6,  7,  8,  9}},
        {4, {7,  9,  11, 14, 16, 18, 20, 13, 15, 17, 19, 22, 24, 26, 28, 21,
             23, 25, 27, 30, 0,  2,  4,  29, 31, 1,  3,  6,  8,  10, 12, 5}},
        {5, {8,  10, 12, 13, 15, 17, 19, 14, 16, 18, 20, 21, 23, 25, 27, 22,
             24, 26, 28, 29, 31, 1,  3,  30, 0,  2,  4,  5,  7,  9,  11, 6}},
        {6, {17, 19, 21, 8,  10, 12, 14, 16, 18, 20, 22, 23, 25, 27, 29, 31,
             1,  3,  5,  24, 26, 28, 30, 0,  2,  4,  6,  7,  9,  11, 13, 15}},
        {7, {11, 8,  12, 13, 17, 14, 18, 15, 19, 16, 20, 21, 25, 22, 26, 23,
             27, 24, 28, 29, 1,  30, 2,  31, 3,  0,  4,  5,  9,  6,  10, 7}},
        {9, {24, 25, 26, 27, 28, 29, 30, 31, 0,  1,  2,  3,  4,  5,  6,  7,
             8,  9,  10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23}},
        {10, {12, 14, 16, 10, 12, 14, 16, 18, 20, 22, 24, 18, 20, 22, 24, 26,
              28, 30, 0,  26, 28, 30, 0,  2,  4,  6,  8,  2,  4,  6,  8,  10}},
        {11,
         {0, 8, 0, 10, 0, 12, 0, 14, 0, 16, 0, 18, 0, 20, 0, 22, 0, 24, 0, 26, 0, 28, 0, 30, 0, 0, 0, 2, 0, 4, 0, 6}},
        {12, {24, 25, 26, 27, 28, 29, 30, 31, 0,  1,  2,  3,  4,  5,  6,  7,
              8,  9,  10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23}},
    };
    for (const WorkedTable& worked : kWorked) {
        EXPECT_EQ(TableOf(Delayed(worked.scheme, 1, 2, 3, 5), 3), worked.table) << worked.scheme;
    }
}

TEST(Decommutation, NegativeDelaysCountTogetherWithANegativeShift)
{
    const WorkedTable kWorked[] = {
        {2, {8,  9,  10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23,
             24, 25, 26, 27, 28, 29, 30, 31, 0,  1,  2,  3,  4,  5,  6,  7}},
        {4, {11, 13, 6,  8,  10, 12, 15, 17, 19, 21, 14, 16, 18, 20, 23, 25,
             27, 29, 22, 24, 26, 28, 31, 1,  3,  5,  30, 0,  2,  4,  7,  9}},
        {5, {10, 12, 7,  9,  11, 13, 14, 16, 18, 20, 15, 17, 19, 21, 22, 24,
             26, 28, 23, 25, 27, 29, 30, 0,  2,  4,  31, 1,  3,  5,  6,  8}},
        {6, {2,  4,  6,  8,  10, 12, 13, 15, 17, 19, 21, 23, 25, 27, 14, 16,
             18, 20, 22, 24, 26, 28, 29, 31, 1,  3,  5,  7,  9,  11, 30, 0}},
        {7, {7,  11, 8,  12, 9,  13, 14, 18, 15, 19, 16, 20, 17, 21, 22, 26,
             23, 27, 24, 28, 25, 29, 30, 2,  31, 3,  0,  4,  1,  5,  6,  10}},
        {9, {4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15, 16, 17, 18, 19,
             20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 0,  1,  2,  3}},
        {10, {11, 13, 15, 17, 19, 21, 15, 17, 19, 21, 23, 25, 27, 29, 23, 25,
              27, 29, 31, 1,  3,  5,  31, 1,  3,  5,  7,  9,  11, 13, 7,  9}},
        {11,
         {9, 0, 11, 0, 13, 0, 15, 0, 17, 0, 19, 0, 21, 0, 23, 0, 25, 0, 27, 0, 29, 0, 31, 0, 1, 0, 3, 0, 5, 0, 7, 0}},
        {12, {4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15, 16, 17, 18, 19,
              20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 0,  1,  2,  3}},
    };
    for (const WorkedTable& worked : kWorked) {
        EXPECT_EQ(TableOf(Delayed(worked.scheme, 1, -1, -2, -3), -1), worked.table) << worked.scheme;
    }
}

// The wanted table is made from the one without delays, which the readout itself bears out: the line starts one column
// and two samples late, the image three pixels on.
TEST(Decommutation, ReadingFromTheMiddleTakesItsDelays)
{
    constexpr std::uint32_t kWidth = 40;
    constexpr std::uint32_t kCount = 256 * kWidth;
    const DecomTable plain = TableOf(Camera(8, 256, kWidth));
    CameraConfig config = Camera(8, 256, kWidth);
    config.Hdelay = 1;
    config.Idelay = 3;
    DecomTable expected(kCount);
    for (std::uint32_t i = 0; i < kCount; ++i) {
        const std::uint32_t nextColumn = i / kWidth * kWidth + (i % kWidth + 1) % kWidth;
        expected[(i + 3) % kCount] = (plain[nextColumn] + 2) % kCount;
    }
    EXPECT_EQ(TableOf(config, 2), expected);
}

TEST(Decommutation, AWalkDelayOfTheWholeFrameOrMoreLosesTheFirstStore)
{
    CameraConfig config = Camera(0, 1, 4);
    config.CalDelay = 6;  // sample 0 falls past the table; sample 1 goes to (6 + 1) mod 4
    EXPECT_THAT(TableOf(config), ElementsAre(2, 3, 0, 1));
    config.CalDelay = 5;
    EXPECT_THAT(TableOf(config), ElementsAre(3, 0, 1, 2));
    config.DecomScheme = 1;
    config.CalDelay = 4;
    EXPECT_THAT(TableOf(config), ElementsAre(0, 2, 1, 3));
    config.CalDelay = 2147483647;  // 2147483648 mod 4 is 0
    EXPECT_THAT(TableOf(config), ElementsAre(2, 1, 3, 0));
}

TEST(Decommutation, AWalkDelayFarBelowZeroLosesStoresUntilItReachesTheTable)
{
    CameraConfig config = Camera(0, 1, 4);
    config.CalDelay = -9;  // -9 + 4 leaves -1 as remainder
    EXPECT_THAT(TableOf(config), ElementsAre(1, 2, 3, 0));
    config.DecomScheme = 1;
    config.CalDelay = -2;  // not wrapped before the first store
    EXPECT_THAT(TableOf(config), ElementsAre(1, 3, 0, 0));
}

TEST(Decommutation, ExtremeCameraSectionsStayInsideTheTable)
{
    constexpr std::int32_t kExtremes[] = {-2147483647 - 1, -1, 0, 1, 2147483647};
    for (std::int32_t scheme = -1; scheme <= 13; ++scheme) {
        for (const std::int32_t extreme : kExtremes) {
            for (const std::int32_t shift : kExtremes) {
                CameraConfig config = Camera(scheme, 5, 7);
                config.Vstart = config.Hdelay = config.Idelay = config.CalDelay = extreme;
                auto table = BuildDecomList(config, shift);
                if (!table) continue;
                EXPECT_EQ(table->size(), 35U);
                EXPECT_TRUE(DecomEntriesLieInFrame(*table, config)) << scheme << ' ' << extreme << ' ' << shift;
                EXPECT_EQ(ReorderDecomList(*table, config, 1, 1, 1), 1);
                EXPECT_TRUE(DecomEntriesLieInFrame(*table, config)) << scheme << ' ' << extreme << ' ' << shift;
            }
        }
    }
}

TEST(Decommutation, WithoutMemoryForTheTableIsTold)
{
    const ShownBox refused{.caption = "Kelvo message", .text = "Failure to Lock Decommuation list in Memory"};
    FailAllocation(1);
    EXPECT_EQ(BuildDecomList(Camera(2, 2, 2), 0), std::nullopt);
    EXPECT_EQ(BuildDecomList(Camera(2, 0, 5), 0), std::nullopt);
    EXPECT_EQ(BuildDecomList(Camera(2, -3, 5), 0), std::nullopt);
    EXPECT_EQ(BuildDecomList(Camera(2, 2147483647, 2147483647), 0), std::nullopt);
    EXPECT_THAT(BoxesShown(), ElementsAre(refused, refused, refused, refused));
}

DecomTable Reordered(const CameraConfig& config, DecomTable list, int rows, int columns, int left)
{
    EXPECT_EQ(ReorderDecomList(list, config, rows, columns, left), 1);
    return list;
}

TEST(Reordering, HorizontalMirrorReversesRowsAndVerticalMirrorColumns)
{
    const CameraConfig config = Camera(2, 2, 3);
    EXPECT_THAT(Reordered(config, PlainTable(6), 1, 0, 0), ElementsAre(3, 4, 5, 0, 1, 2));
    EXPECT_THAT(Reordered(config, PlainTable(6), 0, 1, 0), ElementsAre(2, 1, 0, 5, 4, 3));
}

TEST(Reordering, ASquareTurnsToTheLeft)
{
    EXPECT_THAT(Reordered(Camera(2, 2, 2), PlainTable(4), 0, 0, 1), ElementsAre(1, 3, 0, 2));
    EXPECT_THAT(Reordered(Camera(2, 3, 3), PlainTable(9), 0, 0, 1), ElementsAre(2, 5, 8, 1, 4, 7, 0, 3, 6));
}

TEST(Reordering, GoesRowsColumnsThenRotation)
{
    const CameraConfig config = Camera(2, 2, 2);
    EXPECT_THAT(Reordered(config, PlainTable(4), 1, 0, 1), ElementsAre(3, 1, 2, 0));  // rotated first: 0 2 1 3
    EXPECT_THAT(Reordered(config, PlainTable(4), 0, 1, 1), ElementsAre(0, 2, 1, 3));  // rotated first: 3 1 2 0
    EXPECT_THAT(Reordered(config, PlainTable(4), 1, 1, 1), ElementsAre(2, 0, 3, 1));
    // One row on four: the rotation folds, and what it folds depends on the mirror before it.
    EXPECT_THAT(Reordered(Camera(2, 1, 2), {7, 8}, 0, 1, 1), ElementsAre(7, 7));
}

TEST(Reordering, ANonSquareRotationFoldsInsideTheTable)
{
    EXPECT_THAT(Reordered(Camera(2, 1, 2), {7, 8}, 0, 0, 1), ElementsAre(8, 8));
    // Two rows of one: both pixels keep row 0, as columns 0 and 1.
    EXPECT_THAT(Reordered(Camera(2, 2, 1), {7, 8}, 0, 0, 1), ElementsAre(7, 8));
    // Without a wrap pixel (0, 0) goes past the table and is dropped.
    EXPECT_THAT(Reordered(Camera(3, 1, 2), {7, 8}, 0, 0, 1), ElementsAre(8, 8));
}

// A turned table of a region that isn't square folds onto itself. Each row: the scheme, rows, columns, image delay, and
// the table 0, 1, 2, ... as the eight orientations leave it: none, rows, columns, both, and the same turned to the
// left.
struct WorkedTurns {
    std::int32_t scheme, rows, columns, idelay;
    std::vector<DecomTable> tables;
};

TEST(Reordering, FoldsRegionsThatArentSquareInEveryOrientation)
{
    const WorkedTurns kWorked[] = {
        {2,
         2,
         3,
         0,
         {{0, 1, 2, 3, 4, 5},
          {3, 4, 5, 0, 1, 2},
          {2, 1, 0, 5, 4, 3},
          {5, 4, 3, 2, 1, 0},
          {2, 5, 2, 1, 4, 5},
          {5, 2, 5, 4, 1, 2},
          {0, 3, 0, 1, 4, 3},
          {3, 0, 3, 4, 1, 0}}},
        {2,
         3,
         2,
         0,
         {{0, 1, 2, 3, 4, 5},
          {4, 5, 2, 3, 0, 1},
          {1, 0, 3, 2, 5, 4},
          {5, 4, 3, 2, 1, 0},
          {1, 3, 5, 2, 4, 5},
          {5, 3, 1, 2, 0, 1},
          {0, 2, 4, 3, 5, 4},
          {4, 2, 0, 3, 1, 0}}},
        {2,
         2,
         3,
         1,
         {{0, 1, 2, 3, 4, 5},
          {3, 4, 5, 0, 1, 2},
          {4, 3, 2, 1, 0, 5},
          {1, 0, 5, 4, 3, 2},
          {0, 3, 0, 3, 2, 5},
          {3, 0, 3, 0, 5, 2},
          {4, 1, 4, 1, 2, 5},
          {1, 4, 1, 4, 5, 2}}},
        {3,
         2,
         3,
         1,
         {{0, 1, 2, 3, 4, 5},
          {3, 4, 5, 0, 1, 2},
          {2, 1, 0, 5, 4, 3},
          {5, 4, 3, 2, 1, 0},
          {2, 5, 2, 1, 4, 5},
          {5, 2, 5, 4, 1, 2},
          {0, 3, 0, 1, 4, 3},
          {3, 0, 3, 4, 1, 0}}},
        {3,
         3,
         2,
         0,
         {{0, 1, 2, 3, 4, 5},
          {4, 5, 2, 3, 0, 1},
          {1, 0, 3, 2, 5, 4},
          {5, 4, 3, 2, 1, 0},
          {1, 3, 5, 2, 4, 5},
          {5, 3, 1, 2, 0, 1},
          {0, 2, 4, 3, 5, 4},
          {4, 2, 0, 3, 1, 0}}},
        {10,
         2,
         3,
         -1,
         {{0, 1, 2, 3, 4, 5},
          {3, 4, 5, 0, 1, 2},
          {0, 5, 4, 3, 2, 1},
          {3, 2, 1, 0, 5, 4},
          {4, 1, 0, 3, 4, 1},
          {1, 4, 3, 0, 1, 4},
          {2, 5, 0, 3, 2, 5},
          {5, 2, 3, 0, 5, 2}}},
        {11,
         2,
         4,
         1,
         {{0, 1, 2, 3, 4, 5, 6, 7},
          {0, 5, 2, 7, 4, 1, 6, 3},
          {0, 7, 2, 5, 4, 3, 6, 1},
          {0, 3, 2, 1, 4, 7, 6, 5},
          {0, 7, 2, 3, 4, 5, 6, 1},
          {0, 3, 2, 7, 4, 1, 6, 5},
          {0, 1, 2, 5, 4, 3, 6, 7},
          {0, 5, 2, 1, 4, 7, 6, 3}}},
        {12,
         2,
         8,
         1,
         {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15},
          {0, 3, 4, 5, 6, 7, 8, 9, 10, 7, 8, 11, 12, 13, 14, 15},
          {0, 8, 7, 10, 9, 8, 7, 6, 5, 4, 3, 11, 12, 13, 14, 15},
          {0, 10, 9, 8, 7, 10, 9, 8, 7, 6, 5, 11, 12, 13, 14, 15},
          {3, 8, 10, 7, 9, 6, 8, 5, 7, 4, 6, 3, 5, 2, 4, 1},
          {5, 10, 8, 9, 7, 8, 10, 7, 9, 6, 8, 5, 7, 4, 6, 3},
          {10, 5, 3, 6, 4, 7, 5, 8, 6, 9, 7, 10, 8, 7, 9, 8},
          {8, 7, 5, 8, 6, 9, 7, 10, 8, 7, 9, 8, 10, 9, 7, 10}}},
    };
    for (const WorkedTurns& worked : kWorked) {
        CameraConfig config = Camera(worked.scheme, worked.rows, worked.columns);
        config.Idelay = worked.idelay;
        const DecomTable plain = PlainTable(static_cast<std::size_t>(worked.rows * worked.columns));
        for (std::size_t i = 0; i < worked.tables.size(); ++i) {
            EXPECT_EQ(Reordered(config, plain, (i & 1) != 0, (i & 2) != 0, (i & 4) != 0), worked.tables[i])
                << worked.scheme << ' ' << worked.rows << " x " << worked.columns << ", orientation " << i;
        }
    }
}

TEST(Reordering, PositionsThatItDoesntReachKeepTheirEntries)
{
    EXPECT_THAT(Reordered(Camera(11, 1, 4), {10, 11, 12, 13}, 0, 1, 0), ElementsAre(12, 11, 10, 13));
}

TEST(Reordering, WorksOnPositionsMovedByTheImageDelay)
{
    CameraConfig config = Camera(2, 1, 3);
    config.Idelay = 1;  // pixels 0, 1, 2 stand at 1, 2, 0
    EXPECT_THAT(Reordered(config, {7, 8, 9}, 0, 1, 0), ElementsAre(8, 7, 9));
}

TEST(Reordering, WithoutAnyFlagNeedsNoScratchMemory)
{
    DecomTable list = {4, 3, 2, 1};
    FailAllocation(1);
    EXPECT_EQ(ReorderDecomList(list, Camera(2, 2, 2), 0, 0, 0), 1);
    EXPECT_THAT(list, ElementsAre(4, 3, 2, 1));
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST(Reordering, WithoutScratchMemoryLeavesTheListUnchanged)
{
    DecomTable list = {4, 3, 2, 1};
    FailAllocation(1);
    EXPECT_EQ(ReorderDecomList(list, Camera(2, 2, 2), 1, 0, 0), 0);
    EXPECT_THAT(list, ElementsAre(4, 3, 2, 1));
    EXPECT_THAT(BoxesShown(), ElementsAre(ShownBox{.caption = "Kelvo message",
                                                   .text = "Failure to allocate and lock Temporary memory!"}));
}

TEST(Position, DependsOnTheScheme)
{
    CameraConfig config = Camera(2, 3, 8);
    config.Idelay = 5;
    EXPECT_EQ(DecomPosition(config, 1, 2), 15);
    EXPECT_EQ(DecomPosition(config, 2, 7), 4);  // 28 wraps
    config.DecomScheme = 3;
    EXPECT_EQ(DecomPosition(config, 2, 7), 23);
    EXPECT_EQ(DecomPosition(config, 3, 0), -1);
    config.DecomScheme = 10;
    EXPECT_EQ(DecomPosition(config, 1, 2), 15);
    config.DecomScheme = 11;
    EXPECT_EQ(DecomPosition(config, 1, 2), 17);
    config.DecomScheme = 12;
    EXPECT_EQ(DecomPosition(config, 2, 3), 12);
    config.DecomScheme = 2;
    config.Idelay = -30;
    EXPECT_EQ(DecomPosition(config, 0, 0), -1);
    EXPECT_EQ(DecomPosition(config, 0, 7), 1);
}

class LoadedTable : public testing::Test {
  protected:
    LoadedTable() { SetDefaultDir(directory.Path()); }
    void PutTable(const DecomTable& entries, std::size_t bytes)
    {
        PutFile(directory / "DECOM.TMP", {reinterpret_cast<const char*>(entries.data()), bytes});
    }
    const ShownBox unread{.caption = "Kelvo message", .text = "Failed to read file:\nDECOM.TMP"};
    TempDirectory directory;
};

TEST_F(LoadedTable, IsThatOfDecomTmp)
{
    PutTable({3, 2, 1, 0, 77}, 20);  // what follows the frame doesn't matter
    EXPECT_THAT(LoadDecomList(Camera(2, 2, 2)), Optional(ElementsAre(3, 2, 1, 0)));
    EXPECT_EQ(StatusText, " Getting Decommutation Array...");
    EXPECT_THAT(BoxesShown(), IsEmpty());
    EXPECT_THAT(BeepsHeard(), IsEmpty());
}

TEST_F(LoadedTable, IsBuiltWhereDecomTmpCantBeOpened)
{
    EXPECT_THAT(LoadDecomList(Camera(4, 1, 4)), Optional(ElementsAre(0, 2, 1, 3)));
    EXPECT_EQ(BeepsHeard().size(), 1U);
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST_F(LoadedTable, ThatIsShortIsTold)
{
    PutTable({3, 2, 1, 0}, 15);
    EXPECT_EQ(LoadDecomList(Camera(2, 2, 2)), std::nullopt);
    EXPECT_THAT(BoxesShown(), ElementsAre(unread));
    EXPECT_EQ(BeepsHeard().size(), 1U);
}

TEST_F(LoadedTable, WithEntriesOutsideTheFrameCountsAsUnread)
{
    PutTable({3, 2, 1, 4}, 16);
    EXPECT_EQ(LoadDecomList(Camera(2, 2, 2)), std::nullopt);
    EXPECT_THAT(BoxesShown(), ElementsAre(unread));
}

TEST_F(LoadedTable, WithoutMemoryIsTold)
{
    PutTable({3, 2, 1, 0}, 16);
    FailAllocation(1);
    EXPECT_EQ(LoadDecomList(Camera(2, 2, 2)), std::nullopt);
    EXPECT_THAT(BoxesShown(),
                ElementsAre(ShownBox{.caption = "Kelvo message", .text = "Failure to allocate Decommutation memory!"}));
}

}  // namespace
}  // namespace kelvo
